#include "PictureService.h"

#include "core/ProcessMemory.h"

namespace tb {

PictureService::PictureService(QSize screenLimit, const FileSystems* fileSystems, ProcessMemory* memory)
    : pictures(screenLimit, fileSystems), thumbnails(memory), memory(memory)
{
}

void PictureService::releaseFreeMemory()
{
    if (memory)
        memory->releaseFreeMemory();
}

} // namespace tb
