#pragma once

#include <QString>

namespace tb {

// Shows a file selected in the desktop's file manager.
class FileRevealer {
public:
    virtual ~FileRevealer() = default;
    virtual void reveal(const QString& filePath) = 0;
};

} // namespace tb
