#include "LinuxFileSystems.h"

#include <QFile>
#include <QRegularExpression>

#include <sys/statfs.h>

namespace tb {

bool LinuxFileSystems::isNetworkPath(const QString& path) const
{
    static const QRegularExpression gvfs(QStringLiteral("^/run/user/\\d+/gvfs/"));
    if (gvfs.match(path).hasMatch())
        return true;
    struct statfs fs {};
    if (statfs(QFile::encodeName(path).constData(), &fs) != 0)
        return false;
    switch (static_cast<unsigned long>(fs.f_type)) {
    case 0x6969UL:     // NFS
    case 0x517BUL:     // SMB
    case 0xFF534D42UL: // CIFS
    case 0xFE534D42UL: // SMB2
    case 0x65735546UL: // FUSE
    case 0x01021997UL: // 9P
    case 0x5346414FUL: // AFS
    case 0x00C36400UL: // Ceph
        return true;
    default:
        return false;
    }
}

} // namespace tb
