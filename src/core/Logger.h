#pragma once

#include <QByteArray>
#include <QFile>
#include <QMutex>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

namespace tb {

enum class LogLevel { Info, Warning, Error };

// The diagnostics log: one plain text file, recreated at each start, with every line mirrored to
// standard output. Lines from several threads never interleave inside a line.
class Logger {
public:
    using ConsoleWriter = std::function<void(const QByteArray&)>;
    using Listener = std::function<void(LogLevel, const QString& message)>;

    // appDataDirectory is the per-user application data folder (~/.local/share); the log lives in
    // Tallowbrook/Logs below it. Without one, or when the file cannot be made, lines go to the
    // console only. Setting up prints its progress to the console and writes the opening lines.
    explicit Logger(std::optional<QString> appDataDirectory, ConsoleWriter console = writeToStandardOutput);
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // The process-wide logger, made at first use over the standard data location.
    static Logger& shared();
    // Makes `logger` the shared one; only before the first use of shared(). Returns false after.
    static bool installShared(std::unique_ptr<Logger> logger);

    void log(const QString& message, std::string_view sourceFile, int sourceLine, LogLevel level);

    // The newest *.log file of the logs folder, or nothing.
    std::optional<QString> getLatestLogFile() const;
    // The UTF-8 text of that file, or nothing when there is none or it cannot be read.
    std::optional<QString> getLogContents() const;

    QString logsDirectory() const { return logsDir; }
    bool isWritingFile() const;

    // Listeners see every message after it is written (tests, and nothing else for now). They
    // run on the logging thread under the logger's lock and must not log themselves.
    int addListener(Listener listener);
    void removeListener(int id);

    static void writeToStandardOutput(const QByteArray& bytes);

private:
    void setupLogFile(const std::optional<QString>& appDataDirectory);
    void print(const QString& text) const;

    ConsoleWriter console;
    QString logsDir;
    mutable QMutex mutex;
    std::unique_ptr<QFile> logFile;    // — guarded by mutex; absent when set-up failed
    std::map<int, Listener> listeners; // — guarded by mutex
    int lastListenerId = 0;
};

// The caller's file and line, filled in at the call site. (std::source_location would do, but
// clang 14 cannot use libstdc++'s; these builtins work in both compilers.)
struct SourceLocation {
    static constexpr SourceLocation current(const char* file = __builtin_FILE(), int line = __builtin_LINE())
    {
        return SourceLocation{file, line};
    }
    const char* file;
    int line;
};

void logInfo(const QString& message, SourceLocation where = SourceLocation::current());
void logWarning(const QString& message, SourceLocation where = SourceLocation::current());
void logError(const QString& message, SourceLocation where = SourceLocation::current());
// A progress line for whoever watches the console: standard output only, never the log file.
void printLine(const QString& text);

} // namespace tb
