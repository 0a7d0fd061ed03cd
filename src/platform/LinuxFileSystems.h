#pragma once

#include "core/FileSystems.h"

namespace tb {

// Network and user-space file systems by the kernel's file-system type (NFS, SMB/CIFS, FUSE, 9P,
// AFS, Ceph), and GVFS mounts by their place.
class LinuxFileSystems final : public FileSystems {
public:
    bool isNetworkPath(const QString& path) const override;
};

} // namespace tb
