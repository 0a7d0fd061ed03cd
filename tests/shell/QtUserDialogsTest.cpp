#include "shell/QtUserDialogs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <functional>

using namespace tb;

namespace {

// Runs `act` on the modal dialog once its event loop is running. A posted call, not a timer:
// it is delivered by the dialog's own exec().
template <typename Dialog> void whenShown(std::function<void(Dialog*)> act)
{
    QMetaObject::invokeMethod(
        qApp,
        [act] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            act(dialog);
        },
        Qt::QueuedConnection);
}

QAbstractButton* buttonLabelled(QMessageBox* box, const QString& text)
{
    for (QAbstractButton* button : box->buttons())
        if (button->text() == text)
            return button;
    return nullptr;
}

bool canMakeFolders(QFileDialog* panel)
{
    const auto* button = panel->findChild<QToolButton*>(QStringLiteral("newFolderButton"));
    return button && button->isEnabled();
}

} // namespace

TEST(QtUserDialogs, QuestionReportsThePressedButtonAndTheCheckBox)
{
    QtUserDialogs dialogs;
    whenShown<QMessageBox>([](QMessageBox* box) {
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Include subfolders?"));
        EXPECT_EQ(box->text(), QStringLiteral("The folder has subfolders."));
        EXPECT_EQ(box->icon(), QMessageBox::Warning);
        ASSERT_NE(box->checkBox(), nullptr);
        EXPECT_EQ(box->checkBox()->text(), QStringLiteral("Remember my choice"));
        box->checkBox()->setChecked(true);
        buttonLabelled(box, QStringLiteral("This Folder Only"))->click();
    });
    const QuestionAnswer answer = dialogs.question(
        AlertStyle::Warning, QStringLiteral("Include subfolders?"), QStringLiteral("The folder has subfolders."),
        {QStringLiteral("Include All"), QStringLiteral("This Folder Only"), QStringLiteral("Cancel")},
        QStringLiteral("Remember my choice"));
    EXPECT_EQ(answer.button, 1);
    EXPECT_TRUE(answer.checkBoxChecked);
}

// Escape answers with the last button, but says it was a dismissal, not a choice.
TEST(QtUserDialogs, EscapeAnswersWithTheLastButtonAsADismissal)
{
    QtUserDialogs dialogs;
    const QStringList buttons{QStringLiteral("All Subfolders"), QStringLiteral("This Folder Only")};
    whenShown<QMessageBox>([](QMessageBox* box) {
        EXPECT_EQ(box->checkBox(), nullptr);
        QTest::keyClick(box, Qt::Key_Escape);
    });
    QuestionAnswer answer = dialogs.question(AlertStyle::Information, QStringLiteral("Include Subfolders?"),
                                             QStringLiteral("Which?"), buttons);
    EXPECT_EQ(answer.button, 1);
    EXPECT_TRUE(answer.dismissed);

    whenShown<QMessageBox>([](QMessageBox* box) { buttonLabelled(box, QStringLiteral("This Folder Only"))->click(); });
    answer = dialogs.question(AlertStyle::Information, QStringLiteral("Include Subfolders?"), QStringLiteral("Which?"),
                              buttons);
    EXPECT_EQ(answer.button, 1);
    EXPECT_FALSE(answer.dismissed);
}

TEST(QtUserDialogs, SavePanelShowsItsMessageAndReturnsTheChosenPath)
{
    QTemporaryDir dir;
    QtUserDialogs dialogs;
    whenShown<QFileDialog>([&dir](QFileDialog* panel) {
        EXPECT_EQ(panel->windowTitle(), QStringLiteral("Save Diagnostic Logs"));
        EXPECT_EQ(panel->acceptMode(), QFileDialog::AcceptSave);
        EXPECT_TRUE(canMakeFolders(panel));
        bool messageShown = false;
        for (QLabel* label : panel->findChildren<QLabel*>())
            messageShown |= label->text() == QStringLiteral("Choose where to save the diagnostic logs");
        EXPECT_TRUE(messageShown);
        panel->selectFile(dir.filePath(QStringLiteral("logs")));
        static_cast<QDialog*>(panel)->accept(); // QFileDialog hides accept() behind protected
    });
    SavePanelOptions options;
    options.title = QStringLiteral("Save Diagnostic Logs");
    options.message = QStringLiteral("Choose where to save the diagnostic logs");
    options.fileName = QStringLiteral("Tallowbrook_logs.txt");
    options.defaultSuffix = QStringLiteral("txt");
    options.directory = dir.path();
    EXPECT_EQ(dialogs.savePanel(options), dir.filePath(QStringLiteral("logs.txt")));

    whenShown<QFileDialog>([](QFileDialog* panel) {
        EXPECT_EQ(panel->labelText(QFileDialog::Accept), QStringLiteral("Select"));
        EXPECT_EQ(panel->fileMode(), QFileDialog::Directory);
        EXPECT_FALSE(canMakeFolders(panel)) << "this panel may not make folders";
        panel->reject();
    });
    OpenPanelOptions open;
    open.prompt = QStringLiteral("Select");
    open.canChooseFiles = false;
    open.canChooseDirectories = true;
    open.canCreateDirectories = false;
    EXPECT_EQ(dialogs.openPanel(open), QStringList{}) << "cancel gives nothing";
}

// One dialog for files and folders: "Open" takes a chosen folder with the files beside it, while
// a typed path ending in "/" only goes into the folder.
TEST(QtUserDialogs, OpenPanelChoosesFilesAndFoldersTogether)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("shots")));
    QFile(dir.filePath(QStringLiteral("a.png"))).open(QIODevice::WriteOnly);
    OpenPanelOptions options;
    options.title = QStringLiteral("Select files or folders");
    options.directory = dir.path();
    options.allowsMultipleSelection = options.canChooseFiles = options.canChooseDirectories = true;
    QtUserDialogs dialogs;

    whenShown<QFileDialog>([&dir](QFileDialog* panel) {
        auto* name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(name, nullptr);
        name->setText(QStringLiteral("shots/"));
        static_cast<QDialog*>(panel)->accept();
        EXPECT_TRUE(panel->isVisible()) << "a path ending in / only goes into the folder";
        EXPECT_EQ(QDir(panel->directory()).canonicalPath(),
                  QDir(dir.filePath(QStringLiteral("shots"))).canonicalPath());
        panel->setDirectory(dir.path());
        name->setText(QStringLiteral("\"a.png\" \"shots\""));
        static_cast<QDialog*>(panel)->accept();
    });
    QStringList chosen = dialogs.openPanel(options);
    chosen.sort();
    EXPECT_EQ(chosen, (QStringList{dir.filePath(QStringLiteral("a.png")), dir.filePath(QStringLiteral("shots"))}));

    whenShown<QFileDialog>([](QFileDialog* panel) {
        panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QStringLiteral("a.png"));
        static_cast<QDialog*>(panel)->accept();
    });
    EXPECT_EQ(dialogs.openPanel(options), QStringList{dir.filePath(QStringLiteral("a.png"))}) << "files alone";
}
