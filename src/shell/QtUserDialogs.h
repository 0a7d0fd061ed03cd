#pragma once

#include "core/UserDialogs.h"

class QWidget;

namespace tb {

// The real dialogs: QMessageBox for questions and alerts, Qt's own QFileDialog for panels (the
// same look on every desktop, and reachable over the accessibility bus). An open panel that
// allows files and folders takes selected folders on "Open" beside the files.
// Without a parent, each dialog belongs to the window that is active when it opens.
class QtUserDialogs final : public UserDialogs {
public:
    explicit QtUserDialogs(QWidget* parent = nullptr) : parent(parent) {}

    QuestionAnswer question(AlertStyle style, const QString& title, const QString& text, const QStringList& buttons,
                            const QString& checkBoxText = {}) override;
    QStringList openPanel(const OpenPanelOptions& options) override;
    QString savePanel(const SavePanelOptions& options) override;

private:
    QWidget* owner() const;

    QWidget* parent;
};

} // namespace tb
