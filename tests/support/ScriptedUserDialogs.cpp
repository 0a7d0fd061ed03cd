#include "ScriptedUserDialogs.h"

namespace tb::test {

QuestionAnswer ScriptedUserDialogs::question(AlertStyle style, const QString& title, const QString& text,
                                             const QStringList& buttons, const QString& checkBoxText)
{
    Prompt prompt;
    prompt.style = style;
    prompt.title = title;
    prompt.text = text;
    prompt.buttons = buttons;
    prompt.checkBoxText = checkBoxText;
    prompts.append(prompt);
    return questionAnswers.isEmpty() ? QuestionAnswer{} : questionAnswers.takeFirst();
}

QStringList ScriptedUserDialogs::openPanel(const OpenPanelOptions& options)
{
    Prompt prompt;
    prompt.kind = Kind::OpenPanel;
    prompt.title = options.title;
    prompt.text = options.message;
    prompt.open = options;
    prompts.append(prompt);
    return openAnswers.isEmpty() ? QStringList{} : openAnswers.takeFirst();
}

QString ScriptedUserDialogs::savePanel(const SavePanelOptions& options)
{
    Prompt prompt;
    prompt.kind = Kind::SavePanel;
    prompt.title = options.title;
    prompt.text = options.message;
    prompt.save = options;
    prompts.append(prompt);
    return saveAnswers.isEmpty() ? QString{} : saveAnswers.takeFirst();
}

} // namespace tb::test
