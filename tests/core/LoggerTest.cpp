#include "core/Logger.h"
#include "core/Version.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace tb;

namespace {

const QRegularExpression linePattern(
    QStringLiteral(R"(^\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\]\[(INFO|WARN|ERROR)\]\[([^\]:]+):(\d+)\] (.*)$)"));

struct LoggerFixture : ::testing::Test {
    QTemporaryDir dataHome;
    QByteArray console;
    QMutex consoleMutex;

    std::unique_ptr<Logger> makeLogger(std::optional<QString> base)
    {
        return std::make_unique<Logger>(base, [this](const QByteArray& bytes) {
            QMutexLocker lock(&consoleMutex);
            console += bytes;
        });
    }
    std::unique_ptr<Logger> makeLogger() { return makeLogger(dataHome.path()); }

    QString logPath() const { return dataHome.filePath(QStringLiteral("Tallowbrook/Logs/Tallowbrook_.log")); }

    QStringList fileLines() const
    {
        QFile file(logPath());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QString text = QString::fromUtf8(file.readAll());
        EXPECT_TRUE(text.endsWith(QLatin1Char('\n')));
        text.chop(1);
        return text.split(QLatin1Char('\n'));
    }
};

} // namespace

TEST_F(LoggerFixture, SetupPrintsItsStepsAndOpensTheFileWithThreeLines)
{
    auto logger = makeLogger();
    const QString dir = dataHome.filePath(QStringLiteral("Tallowbrook/Logs"));
    const QStringList consoleLines = QString::fromUtf8(console).split(QLatin1Char('\n'));
    ASSERT_GE(consoleLines.size(), 4);
    EXPECT_EQ(consoleLines[0], QStringLiteral("Attempting to create/access logs directory at: ") + dir);
    EXPECT_EQ(consoleLines[1], QStringLiteral("Creating log file at: ") + logPath());
    EXPECT_EQ(consoleLines[2], QStringLiteral("Successfully opened log file for writing"));

    const QStringList lines = fileLines();
    ASSERT_EQ(lines.size(), 3);
    const QStringList expected{QStringLiteral("=== Tallowbrook Log Started ==="),
                               QStringLiteral("App Version: ") + QString::fromLatin1(appVersion),
                               QStringLiteral("OS Version: ") + QSysInfo::prettyProductName()};
    for (int i = 0; i < 3; ++i) {
        const auto match = linePattern.match(lines[i]);
        ASSERT_TRUE(match.hasMatch()) << lines[i].toStdString();
        EXPECT_EQ(match.captured(1), QStringLiteral("INFO"));
        EXPECT_EQ(match.captured(4), expected[i]);
    }
    EXPECT_TRUE(logger->isWritingFile());
    EXPECT_EQ(logger->getLatestLogFile(), logPath());
}

TEST_F(LoggerFixture, LinesCarryStampLevelCallerFileAndLine)
{
    auto logger = makeLogger();
    console.clear();
    const int line = __LINE__ + 1;
    logger->log(QStringLiteral("héllo → wörld"), __FILE__, line, LogLevel::Warning);
    logger->log(QStringLiteral("first\nsecond"), "/deep/path/Other.cpp", 7, LogLevel::Error);

    const QStringList lines = fileLines();
    ASSERT_EQ(lines.size(), 6);
    const auto match = linePattern.match(lines[3]);
    ASSERT_TRUE(match.hasMatch()) << lines[3].toStdString();
    EXPECT_EQ(match.captured(1), QStringLiteral("WARN"));
    EXPECT_EQ(match.captured(2), QStringLiteral("LoggerTest.cpp"));
    EXPECT_EQ(match.captured(3).toInt(), line);
    EXPECT_EQ(match.captured(4), QStringLiteral("héllo → wörld"));

    // A message with a line feed is written as it stands, across two lines.
    EXPECT_TRUE(lines[4].endsWith(QStringLiteral("[ERROR][Other.cpp:7] first")));
    EXPECT_EQ(lines[5], QStringLiteral("second"));
    EXPECT_TRUE(QString::fromUtf8(console).endsWith(QStringLiteral("] first\nsecond\n\n")))
        << "the console shows a blank line after each entry";
    EXPECT_TRUE(QString::fromUtf8(console).contains(lines[3] + QStringLiteral("\n\n")));
}

TEST_F(LoggerFixture, EachStartReplacesTheEarlierFile)
{
    {
        auto first = makeLogger();
        first->log(QStringLiteral("from the first run"), __FILE__, __LINE__, LogLevel::Info);
    }
    auto second = makeLogger();
    second->log(QStringLiteral("from the second run"), __FILE__, __LINE__, LogLevel::Info);

    const QStringList files = QDir(dataHome.filePath(QStringLiteral("Tallowbrook/Logs"))).entryList(QDir::Files);
    EXPECT_EQ(files, QStringList{QStringLiteral("Tallowbrook_.log")});
    const QString text = *second->getLogContents();
    EXPECT_FALSE(text.contains(QStringLiteral("from the first run")));
    EXPECT_TRUE(text.contains(QStringLiteral("from the second run")));
    EXPECT_EQ(text.count(QStringLiteral("=== Tallowbrook Log Started ===")), 1);
}

TEST_F(LoggerFixture, AnUnusableFolderLeavesConsoleOnlyLogging)
{
    // A plain file where the Tallowbrook folder should be: creating the logs folder fails even
    // for root, who ignores permission bits.
    QFile blocker(dataHome.filePath(QStringLiteral("Tallowbrook")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();

    auto logger = makeLogger();
    EXPECT_TRUE(console.contains("Error during log setup: "));
    EXPECT_TRUE(console.contains("Full error: "));
    EXPECT_FALSE(console.contains("Successfully opened"));
    EXPECT_FALSE(logger->isWritingFile());

    logger->log(QStringLiteral("still heard"), __FILE__, __LINE__, LogLevel::Info);
    EXPECT_TRUE(console.contains("] still heard\n\n"));
    EXPECT_EQ(logger->getLatestLogFile(), std::nullopt);
    EXPECT_EQ(logger->getLogContents(), std::nullopt);

    console.clear();
    auto homeless = makeLogger(std::nullopt);
    EXPECT_EQ(console, QByteArray("Failed to get Application Support directory\n"));
    EXPECT_EQ(homeless->getLogContents(), std::nullopt);
}

TEST_F(LoggerFixture, NewestLogIgnoresOtherExtensionsAndHiddenFiles)
{
    auto logger = makeLogger();
    const QDir logs(dataHome.filePath(QStringLiteral("Tallowbrook/Logs")));
    for (const char* name : {"notes.txt", ".hidden.log", "old.log.bak", "archive.LOG"}) {
        QFile stray(logs.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(stray.open(QIODevice::WriteOnly));
    }
    EXPECT_EQ(logger->getLatestLogFile(), logPath());

    if (!QFileInfo(logPath()).birthTime().isValid())
        GTEST_SKIP() << "this file system keeps no birth times";
    // Birth times are compared in milliseconds: make the newer file until it is born later.
    const QString laterPath = logs.filePath(QStringLiteral("later.log"));
    const QDateTime logBorn = QFileInfo(logPath()).birthTime();
    for (int attempt = 0; attempt < 100000; ++attempt) {
        QFile::remove(laterPath);
        QFile later(laterPath);
        ASSERT_TRUE(later.open(QIODevice::WriteOnly));
        later.write("later");
        later.close();
        if (QFileInfo(laterPath).birthTime() > logBorn)
            break;
    }
    ASSERT_GT(QFileInfo(laterPath).birthTime(), logBorn);
    EXPECT_EQ(logger->getLatestLogFile(), logs.filePath(QStringLiteral("later.log")));
    EXPECT_EQ(logger->getLogContents(), QStringLiteral("later"));
}

TEST_F(LoggerFixture, LinesFromManyThreadsNeverInterleave)
{
    auto logger = makeLogger();
    constexpr int threads = 8;
    constexpr int perThread = 500;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&logger, t] {
            for (int i = 0; i < perThread; ++i)
                logger->log(QStringLiteral("thread %1 line %2 %3").arg(t).arg(i).arg(QString(40, QLatin1Char('x'))),
                            __FILE__, __LINE__, LogLevel::Info);
        });
    }
    for (auto& worker : workers)
        worker.join();

    const QStringList lines = fileLines();
    ASSERT_EQ(lines.size(), 3 + threads * perThread);
    QSet<QString> messages;
    for (const QString& line : lines) {
        const auto match = linePattern.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        messages.insert(match.captured(4));
    }
    EXPECT_EQ(messages.size(), 3 + threads * perThread) << "every message appears exactly once";
    EXPECT_EQ(QString::fromUtf8(console).count(QStringLiteral("\n\n")), 3 + threads * perThread);
}

TEST(SharedLogger, GlobalFunctionsReachTheSharedLoggerWithTheirLevels)
{
    test::LogCapture capture;
    logInfo(QStringLiteral("an info"));
    logWarning(QStringLiteral("a warning"));
    logError(QStringLiteral("an error"));
    EXPECT_EQ(capture.messages(LogLevel::Info), QStringList{QStringLiteral("an info")});
    EXPECT_EQ(capture.messages(LogLevel::Warning), QStringList{QStringLiteral("a warning")});
    EXPECT_EQ(capture.messages(LogLevel::Error), QStringList{QStringLiteral("an error")});

    const QString text = Logger::shared().getLogContents().value_or(QString());
    EXPECT_TRUE(
        QRegularExpression(QStringLiteral(R"(\]\[ERROR\]\[LoggerTest\.cpp:\d+\] an error\n)")).match(text).hasMatch());
}
