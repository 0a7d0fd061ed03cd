#include "ShellFixture.h"

#include "core/Logger.h"
#include "shell/DiagnosticsExport.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;
using test::ScriptedUserDialogs;

namespace {

struct ExportFixture : ::testing::Test {
    QTemporaryDir dir;
    ScriptedUserDialogs dialogs;
    test::RecordingRevealer revealer;
    std::unique_ptr<Logger> logger =
        std::make_unique<Logger>(dir.filePath(QStringLiteral("data")), [](const QByteArray&) {});
};

} // namespace

TEST_F(ExportFixture, SavesExactlyTheNewestLogAndOffersToShowIt)
{
    logger->log(QStringLiteral("something worth reporting"), __FILE__, __LINE__, LogLevel::Warning);
    const QString target = dir.filePath(QStringLiteral("out/Tallowbrook_logs.txt"));
    QDir().mkpath(dir.filePath(QStringLiteral("out")));
    dialogs.saveAnswers = {target};
    dialogs.questionAnswers = {QuestionAnswer{1, false}};

    exportDiagnosticLogs(*logger, dialogs, revealer);

    ASSERT_EQ(dialogs.prompts.size(), 2);
    const auto& panel = dialogs.prompts[0];
    EXPECT_EQ(panel.kind, ScriptedUserDialogs::Kind::SavePanel);
    EXPECT_EQ(panel.save.title, QStringLiteral("Save Diagnostic Logs"));
    EXPECT_EQ(panel.save.message, QStringLiteral("Choose where to save the diagnostic logs"));
    EXPECT_EQ(panel.save.fileName, QStringLiteral("Tallowbrook_logs.txt"));

    const auto& done = dialogs.prompts[1];
    EXPECT_EQ(done.style, AlertStyle::Information);
    EXPECT_EQ(done.title, QStringLiteral("Logs Exported Successfully"));
    EXPECT_EQ(done.text, QStringLiteral("The diagnostic logs have been saved to:\n") + target);
    EXPECT_EQ(done.buttons, (QStringList{QStringLiteral("OK"), QStringLiteral("Show in File Manager")}));
    EXPECT_EQ(revealer.revealed, QStringList{target});

    QFile saved(target);
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(saved.readAll()), *logger->getLogContents()) << "no header, nothing joined";
}

TEST_F(ExportFixture, WithoutALogOnlyTheWarningIsShown)
{
    // The logs folder cannot be made: the logger runs console-only.
    QFile blocker(dir.filePath(QStringLiteral("blocked")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    Logger consoleOnly(dir.filePath(QStringLiteral("blocked")), [](const QByteArray&) {});

    exportDiagnosticLogs(consoleOnly, dialogs, revealer);
    ASSERT_EQ(dialogs.prompts.size(), 1);
    EXPECT_EQ(dialogs.prompts[0].style, AlertStyle::Warning);
    EXPECT_EQ(dialogs.prompts[0].title, QStringLiteral("No Logs Available"));
    EXPECT_EQ(dialogs.prompts[0].text, QStringLiteral("No diagnostic logs were found."));
    EXPECT_EQ(dialogs.prompts[0].buttons, QStringList{QStringLiteral("OK")});
}

TEST_F(ExportFixture, CancellingThePanelEndsQuietlyAndOkDoesNotReveal)
{
    exportDiagnosticLogs(*logger, dialogs, revealer); // no save answer scripted: cancelled
    EXPECT_EQ(dialogs.prompts.size(), 1);

    dialogs.prompts.clear();
    dialogs.saveAnswers = {dir.filePath(QStringLiteral("logs.txt"))};
    exportDiagnosticLogs(*logger, dialogs, revealer); // the success alert answered with OK
    EXPECT_EQ(dialogs.prompts.size(), 2);
    EXPECT_TRUE(revealer.revealed.isEmpty());
}

TEST_F(ExportFixture, AFailedWriteIsLoggedAndShownAsCritical)
{
    test::LogCapture capture;
    dialogs.saveAnswers = {dir.filePath(QStringLiteral("no/such/folder/logs.txt"))};
    exportDiagnosticLogs(*logger, dialogs, revealer);

    ASSERT_EQ(dialogs.prompts.size(), 2);
    const auto& failure = dialogs.prompts[1];
    EXPECT_EQ(failure.style, AlertStyle::Critical);
    EXPECT_EQ(failure.title, QStringLiteral("Failed to Export Logs"));
    EXPECT_TRUE(failure.text.startsWith(QStringLiteral("An error occurred while saving the logs:\n")));
    EXPECT_GT(failure.text.size(), QStringLiteral("An error occurred while saving the logs:\n").size());

    const QStringList errors = capture.messages(LogLevel::Error);
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].startsWith(QStringLiteral("Failed to save logs: ")));
    EXPECT_TRUE(revealer.revealed.isEmpty());
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("no"))));
}
