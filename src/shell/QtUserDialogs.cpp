#include "QtUserDialogs.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace tb {

namespace {

QMessageBox::Icon iconFor(AlertStyle style)
{
    switch (style) {
    case AlertStyle::Information:
        return QMessageBox::Information;
    case AlertStyle::Warning:
        return QMessageBox::Warning;
    case AlertStyle::Critical:
        return QMessageBox::Critical;
    }
    return QMessageBox::Information;
}

// QFileDialog has no message line; Qt's own dialog lays out in a grid, so add one below it.
void addMessage(QFileDialog& dialog, const QString& message)
{
    if (message.isEmpty())
        return;
    dialog.setAccessibleDescription(message);
    if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
        auto* label = new QLabel(message, &dialog);
        label->setWordWrap(true);
        grid->addWidget(label, grid->rowCount(), 0, 1, grid->columnCount());
    }
}

void setPrompt(QFileDialog& dialog, const QString& prompt)
{
    if (!prompt.isEmpty())
        dialog.setLabelText(QFileDialog::Accept, prompt);
}

void applyCommon(QFileDialog& dialog, const QString& title, const QStringList& nameFilters, const QString& directory)
{
    dialog.setOption(QFileDialog::DontUseNativeDialog, true);
    dialog.setWindowTitle(title);
    dialog.setAccessibleName(title);
    if (!nameFilters.isEmpty())
        dialog.setNameFilters(nameFilters);
    if (!directory.isEmpty())
        dialog.setDirectory(directory);
}

// Qt's dialog picks either files or one folder. This one picks both at once, as a file manager
// would: "Open" takes every selected entry, folders included, while a double-click or Enter in
// the list, or a typed path ending in "/", still goes into a folder.
class FilesAndFoldersDialog final : public QFileDialog {
public:
    using QFileDialog::QFileDialog;

    QStringList chosen;

protected:
    void accept() override
    {
        const QStringList files = selectedFiles();
        const auto* nameEdit = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        const bool goingInto = nameEdit && nameEdit->text().endsWith(QLatin1Char('/'));
        const bool allExist =
            std::all_of(files.begin(), files.end(), [](const QString& f) { return QFileInfo::exists(f); });
        const bool anyFolder =
            std::any_of(files.begin(), files.end(), [](const QString& f) { return QFileInfo(f).isDir(); });
        if (files.isEmpty() || goingInto || !allExist || !anyFolder) {
            QFileDialog::accept(); // files only, navigation, or Qt's own message for a missing name
            chosen = result() == QDialog::Accepted ? selectedFiles() : QStringList{};
            return;
        }
        chosen = files;
        QDialog::accept();
    }
};

} // namespace

QWidget* QtUserDialogs::owner() const { return parent ? parent : QApplication::activeWindow(); }

QuestionAnswer QtUserDialogs::question(AlertStyle style, const QString& title, const QString& text,
                                       const QStringList& buttons, const QString& checkBoxText)
{
    QMessageBox box(iconFor(style), title, text, QMessageBox::NoButton, owner());
    box.setAccessibleName(title);
    box.setAccessibleDescription(text);
    QList<QPushButton*> pushButtons;
    const QStringList labels = buttons.isEmpty() ? QStringList{QStringLiteral("OK")} : buttons;
    for (int i = 0; i < labels.size(); ++i) {
        // The first button is the default one; roles only decide the layout.
        QPushButton* button = box.addButton(labels[i], i == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
        button->setAccessibleName(labels[i]);
        pushButtons.append(button);
    }
    box.setDefaultButton(pushButtons.first());
    // Escape and the window's close button press this hidden one, so closing is told apart
    // from pressing the last button.
    QPushButton* dismiss = box.addButton(QMessageBox::Cancel);
    dismiss->hide();
    box.setEscapeButton(dismiss);
    if (!checkBoxText.isEmpty()) {
        auto* check = new QCheckBox(checkBoxText, &box);
        check->setAccessibleName(checkBoxText);
        box.setCheckBox(check);
    }
    box.exec();

    QuestionAnswer answer;
    // Closing the box with Escape or the title bar answers with the last button, as a cancel.
    const int pressed = int(pushButtons.indexOf(qobject_cast<QPushButton*>(box.clickedButton())));
    answer.button = pressed >= 0 ? pressed : int(pushButtons.size()) - 1;
    answer.dismissed = pressed < 0;
    answer.checkBoxChecked = box.checkBox() && box.checkBox()->isChecked();
    return answer;
}

QStringList QtUserDialogs::openPanel(const OpenPanelOptions& options)
{
    if (options.canChooseFiles && options.canChooseDirectories && options.allowsMultipleSelection) {
        FilesAndFoldersDialog dialog(owner());
        applyCommon(dialog, options.title, options.nameFilters, options.directory);
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
        // Qt's dialog has no switch for the new-folder button alone; read-only turns it off.
        dialog.setOption(QFileDialog::ReadOnly, !options.canCreateDirectories);
        dialog.setFileMode(QFileDialog::ExistingFiles);
        addMessage(dialog, options.message);
        setPrompt(dialog, options.prompt);
        if (dialog.exec() != QDialog::Accepted)
            return {};
        return dialog.chosen;
    }
    QFileDialog dialog(owner());
    applyCommon(dialog, options.title, options.nameFilters, options.directory);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setOption(QFileDialog::ReadOnly, !options.canCreateDirectories);
    if (options.canChooseDirectories && !options.canChooseFiles)
        dialog.setFileMode(QFileDialog::Directory);
    else
        dialog.setFileMode(options.allowsMultipleSelection ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    addMessage(dialog, options.message);
    setPrompt(dialog, options.prompt);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles();
}

QString QtUserDialogs::savePanel(const SavePanelOptions& options)
{
    QFileDialog dialog(owner());
    applyCommon(dialog, options.title, options.nameFilters, options.directory);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    if (!options.defaultSuffix.isEmpty())
        dialog.setDefaultSuffix(options.defaultSuffix);
    if (!options.fileName.isEmpty())
        dialog.selectFile(options.fileName);
    addMessage(dialog, options.message);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().first();
}

} // namespace tb
