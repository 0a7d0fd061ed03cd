#include "PictureService.h"

#include "core/ProcessMemory.h"

namespace tb {

PictureService::PictureService(QSize screenLimit, const FileSystems* fileSystems, ProcessMemory* memory,
                               SharedThumbnails* shared)
    : pictures(screenLimit, fileSystems), thumbnails(memory, shared), memory(memory)
{
}

void PictureService::releaseFreeMemory()
{
    if (memory)
        memory->releaseFreeMemory();
}

} // namespace tb
