#include "QtFolderWatchers.h"

#include "core/Logger.h"

#include <QFileSystemWatcher>

namespace tb {

namespace {

class QtFolderWatch final : public FolderWatch {
public:
    QtFolderWatch(const QString& folder, std::function<void()> onChange)
    {
        // A folder that is deleted or moved away reports once and then drops out of the watcher.
        QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, &watcher,
                         [onChange = std::move(onChange)] { onChange(); });
        if (!watcher.addPath(folder))
            logWarning(QStringLiteral("[Live Mode] The folder cannot be watched: ") + folder);
    }

private:
    QFileSystemWatcher watcher;
};

} // namespace

std::unique_ptr<FolderWatch> QtFolderWatchers::watch(const QString& folder, std::function<void()> onChange)
{
    return std::make_unique<QtFolderWatch>(folder, std::move(onChange));
}

} // namespace tb
