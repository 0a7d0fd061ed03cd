#pragma once

#include "core/Logger.h"
#include "support/QtPrinting.h"

#include <QList>
#include <QMutex>
#include <QMutexLocker>
#include <QStringList>

namespace tb::test {

// Records what the shared logger is given while it is alive.
class LogCapture {
public:
    LogCapture()
        : id(Logger::shared().addListener([this](LogLevel level, const QString& message) {
              QMutexLocker lock(&mutex);
              entries.append({level, message});
          }))
    {
    }
    ~LogCapture() { Logger::shared().removeListener(id); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList messages(LogLevel level) const
    {
        QMutexLocker lock(&mutex);
        QStringList result;
        for (const auto& entry : entries)
            if (entry.first == level)
                result.append(entry.second);
        return result;
    }

    // Every message in order, whatever its level.
    QStringList all() const
    {
        QMutexLocker lock(&mutex);
        QStringList result;
        for (const auto& entry : entries)
            result.append(entry.second);
        return result;
    }

    bool contains(LogLevel level, const QString& message) const { return messages(level).contains(message); }

private:
    mutable QMutex mutex;
    QList<std::pair<LogLevel, QString>> entries;
    int id;
};

} // namespace tb::test
