#include "LinuxProcessMemory.h"

#include <QFile>
#include <QList>

#include <malloc.h>
#include <unistd.h>

namespace tb {

std::optional<double> LinuxProcessMemory::residentMiB() const
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    bool ok = false;
    const qint64 pages = fields.size() > 1 ? fields[1].toLongLong(&ok) : 0;
    if (!ok)
        return std::nullopt;
    return double(pages) * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

// Pictures are decoded on several threads, each with its own malloc arena; without this the
// arenas keep their peak size long after the pictures are gone.
void LinuxProcessMemory::releaseFreeMemory() { malloc_trim(0); }

} // namespace tb
