#pragma once

#include "core/UserDialogs.h"

#include <QList>

namespace tb::test {

// Records every prompt and answers from a script. With no answer scripted, a question is
// answered with its first button and the check box untouched, and a panel is cancelled.
class ScriptedUserDialogs final : public UserDialogs {
public:
    enum class Kind { Question, OpenPanel, SavePanel };
    struct Prompt {
        Kind kind = Kind::Question;
        AlertStyle style = AlertStyle::Information;
        QString title;
        QString text;
        QStringList buttons;
        QString checkBoxText;
        OpenPanelOptions open;
        SavePanelOptions save;
    };

    QuestionAnswer question(AlertStyle style, const QString& title, const QString& text, const QStringList& buttons,
                            const QString& checkBoxText = {}) override;
    QStringList openPanel(const OpenPanelOptions& options) override;
    QString savePanel(const SavePanelOptions& options) override;

    QList<Prompt> prompts;
    QList<QuestionAnswer> questionAnswers;
    QList<QStringList> openAnswers;
    QList<QString> saveAnswers;
};

} // namespace tb::test
