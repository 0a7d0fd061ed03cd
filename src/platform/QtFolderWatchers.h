#pragma once

#include "core/FolderWatchers.h"

namespace tb {

// One QFileSystemWatcher per watch: inotify on Linux, so a watch costs one watch descriptor and
// reports within milliseconds; the descriptor goes with the watch.
class QtFolderWatchers final : public FolderWatchers {
public:
    std::unique_ptr<FolderWatch> watch(const QString& folder, std::function<void()> onChange) override;
};

} // namespace tb
