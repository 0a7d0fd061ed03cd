#pragma once

#include <QString>

namespace tb {

// What the program needs to know of the file systems it reads from.
class FileSystems {
public:
    virtual ~FileSystems() = default;
    // Whether a path lies on a network or user-space file system, where access may need the
    // user's permission and reads may be slow.
    virtual bool isNetworkPath(const QString& path) const = 0;
};

} // namespace tb
