#include "Logger.h"

#include "core/Version.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QSysInfo>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <system_error>

namespace tb {

namespace {

QBasicMutex sharedMutex;
std::unique_ptr<Logger> sharedLogger; // — guarded by sharedMutex
// Lets every log call after the first skip the mutex.
std::atomic<Logger*> sharedInstance{nullptr};

const char* levelName(LogLevel level)
{
    switch (level) {
    case LogLevel::Info:
        return "INFO";
    case LogLevel::Warning:
        return "WARN";
    case LogLevel::Error:
        return "ERROR";
    }
    return "INFO";
}

std::string_view lastPathComponent(std::string_view path)
{
    const auto slash = path.find_last_of('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

} // namespace

Logger::Logger(std::optional<QString> appDataDirectory, ConsoleWriter consoleWriter) : console(std::move(consoleWriter))
{
    setupLogFile(appDataDirectory);
}

Logger& Logger::shared()
{
    if (Logger* logger = sharedInstance.load(std::memory_order_acquire))
        return *logger;
    QMutexLocker lock(&sharedMutex);
    if (!sharedLogger) {
        const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        sharedLogger = std::make_unique<Logger>(base.isEmpty() ? std::nullopt : std::optional<QString>(base));
        sharedInstance.store(sharedLogger.get(), std::memory_order_release);
    }
    return *sharedLogger;
}

bool Logger::installShared(std::unique_ptr<Logger> logger)
{
    QMutexLocker lock(&sharedMutex);
    if (sharedLogger)
        return false;
    sharedLogger = std::move(logger);
    sharedInstance.store(sharedLogger.get(), std::memory_order_release);
    return true;
}

void Logger::writeToStandardOutput(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void Logger::print(const QString& text) const { console(text.toUtf8() + '\n'); }

void Logger::setupLogFile(const std::optional<QString>& appDataDirectory)
{
    if (!appDataDirectory) {
        print(QStringLiteral("Failed to get Application Support directory"));
        return;
    }
    logsDir = QDir(*appDataDirectory).filePath(QStringLiteral("Tallowbrook/Logs"));
    print(QStringLiteral("Attempting to create/access logs directory at: ") + logsDir);

    auto reportSetupError = [this](const std::error_code& error, const QString& path) {
        print(QStringLiteral("Error during log setup: ") + QString::fromStdString(error.message()));
        print(QStringLiteral("Full error: %1 (%2 error %3) at %4")
                  .arg(QString::fromStdString(error.message()), QString::fromLatin1(error.category().name()))
                  .arg(error.value())
                  .arg(path));
    };

    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(logsDir.toStdString()), error);
    if (error) {
        reportSetupError(error, logsDir);
        return;
    }

    // The name carries no date: each start replaces the previous run's file.
    const QString filePath = QDir(logsDir).filePath(QStringLiteral("Tallowbrook_.log"));
    print(QStringLiteral("Creating log file at: ") + filePath);
    QFile::remove(filePath); // a fresh file, with a fresh birth time
    auto file = std::make_unique<QFile>(filePath);
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        print(QStringLiteral("Failed to create log file at: ") + filePath);
        return;
    }
    {
        QMutexLocker lock(&mutex);
        logFile = std::move(file);
    }
    print(QStringLiteral("Successfully opened log file for writing"));

    const char* version = appVersion[0] != '\0' ? appVersion : "Unknown";
    // The shared logger is still being built here, so these go through this instance directly.
    log(QStringLiteral("=== Tallowbrook Log Started ==="), __FILE__, __LINE__, LogLevel::Info);
    log(QStringLiteral("App Version: ") + QString::fromLatin1(version), __FILE__, __LINE__, LogLevel::Info);
    log(QStringLiteral("OS Version: ") + QSysInfo::prettyProductName(), __FILE__, __LINE__, LogLevel::Info);
}

void Logger::log(const QString& message, std::string_view sourceFile, int sourceLine, LogLevel level)
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    const std::string_view file = lastPathComponent(sourceFile);
    QByteArray line;
    line.reserve(48 + qsizetype(file.size()) + message.size() * 3);
    line += '[';
    line += stamp.toLatin1();
    line += "][";
    line += levelName(level);
    line += "][";
    line.append(file.data(), qsizetype(file.size()));
    line += ':';
    line += QByteArray::number(sourceLine);
    line += "] ";
    line += message.toUtf8();
    line += '\n';

    QMutexLocker lock(&mutex);
    if (logFile)
        logFile->write(line);
    // The console shows a blank line after each entry.
    console(line + '\n');
    for (const auto& [id, listener] : listeners)
        listener(level, message);
}

bool Logger::isWritingFile() const
{
    QMutexLocker lock(&mutex);
    return logFile != nullptr;
}

std::optional<QString> Logger::getLatestLogFile() const
{
    if (logsDir.isEmpty())
        return std::nullopt;
    // Hidden files are left out unless QDir::Hidden is asked for.
    QFileInfoList entries = QDir(logsDir).entryInfoList(QDir::Files | QDir::NoDotAndDotDot);
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [](const QFileInfo& info) { return info.suffix() != QLatin1String("log"); }),
                  entries.end());
    if (entries.isEmpty())
        return std::nullopt;
    // A file whose birth time the file system does not keep sorts as the distant past.
    auto born = [](const QFileInfo& info) {
        const QDateTime t = info.birthTime();
        return t.isValid() ? t.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min();
    };
    const auto newest = std::max_element(entries.begin(), entries.end(),
                                         [&](const QFileInfo& a, const QFileInfo& b) { return born(a) < born(b); });
    return newest->absoluteFilePath();
}

std::optional<QString> Logger::getLogContents() const
{
    const auto path = getLatestLogFile();
    if (!path)
        return std::nullopt;
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll());
}

int Logger::addListener(Listener listener)
{
    QMutexLocker lock(&mutex);
    listeners.emplace(++lastListenerId, std::move(listener));
    return lastListenerId;
}

void Logger::removeListener(int id)
{
    QMutexLocker lock(&mutex);
    listeners.erase(id);
}

void logInfo(const QString& message, SourceLocation where)
{
    Logger::shared().log(message, where.file, where.line, LogLevel::Info);
}

void logWarning(const QString& message, SourceLocation where)
{
    Logger::shared().log(message, where.file, where.line, LogLevel::Warning);
}

void logError(const QString& message, SourceLocation where)
{
    Logger::shared().log(message, where.file, where.line, LogLevel::Error);
}

void printLine(const QString& text) { Logger::writeToStandardOutput(text.toUtf8() + '\n'); }

} // namespace tb
