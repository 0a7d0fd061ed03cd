#pragma once

#include <QString>
#include <QStringList>

namespace tb {

enum class AlertStyle { Information, Warning, Critical };

// What the user answered to a question: the index of the pressed button in the list that was
// offered, and the state of the check box (false when none was shown). A question closed with
// Escape or the window's close button is dismissed, and answers with its last button.
struct QuestionAnswer {
    int button = 0;
    bool checkBoxChecked = false;
    bool dismissed = false;
};

struct OpenPanelOptions {
    QString title;
    QString message;
    QString prompt;          // the accept button's text; empty keeps the dialog's own
    QStringList nameFilters; // e.g. "Slideshows (*.slideshow)"; empty allows every file
    QString directory;
    bool allowsMultipleSelection = false;
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool canCreateDirectories = true; // false also keeps the user from renaming or deleting in it
};

struct SavePanelOptions {
    QString title;
    QString message;
    QString fileName; // proposed name
    QStringList nameFilters;
    QString defaultSuffix; // appended when the user types a name without one
    QString directory;
};

// Every question the program puts to the user goes through this interface, so logic can be
// tested with scripted answers. Calls are modal and made on the GUI thread.
class UserDialogs {
public:
    virtual ~UserDialogs() = default;

    // A modal message with the given buttons (at least one; the first is the default).
    // checkBoxText, when not empty, adds a check box below the text.
    virtual QuestionAnswer question(AlertStyle style, const QString& title, const QString& text,
                                    const QStringList& buttons, const QString& checkBoxText = {}) = 0;
    // Chosen paths; empty when the user cancelled.
    virtual QStringList openPanel(const OpenPanelOptions& options) = 0;
    // The chosen path; empty when the user cancelled.
    virtual QString savePanel(const SavePanelOptions& options) = 0;

    // A message with the single button "OK".
    void alert(AlertStyle style, const QString& title, const QString& text)
    {
        question(style, title, text, {QStringLiteral("OK")});
    }
};

} // namespace tb
