#pragma once

#include "core/FileRevealer.h"

namespace tb {

// Asks the desktop's file manager over D-Bus (org.freedesktop.FileManager1) to show the file
// selected; without such a service, opens the file's folder instead.
class LinuxFileRevealer final : public FileRevealer {
public:
    void reveal(const QString& filePath) override;
};

} // namespace tb
