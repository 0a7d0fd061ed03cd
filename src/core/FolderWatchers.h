#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace tb {

// A watch on one folder; dropping it ends the watch and releases what the system holds for it.
class FolderWatch {
public:
    virtual ~FolderWatch() = default;
};

// Tells when the entries of a folder change: a file created, deleted or renamed in it, or the
// folder itself deleted or moved. Files growing in place and subfolders' contents are not
// reported. Reports arrive on the GUI thread, and a burst may come as one report or many.
class FolderWatchers {
public:
    virtual ~FolderWatchers() = default;
    // A folder that cannot be watched (missing, unreadable, out of watches) gives a watch that
    // never reports.
    virtual std::unique_ptr<FolderWatch> watch(const QString& folder, std::function<void()> onChange) = 0;
};

} // namespace tb
