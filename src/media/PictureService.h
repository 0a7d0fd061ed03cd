#pragma once

#include "ImageLoader.h"
#include "ThumbnailGenerator.h"
#include "VideoThumbnailGenerator.h"

namespace tb {

class FileSystems;
class ProcessMemory;
class SharedThumbnails;

// The program's one picture service: full pictures decoded no larger than the largest screen
// needs (with their own size and orientation), thumbnails by file and size, and clips' poster
// frames, each in its bounded cache. Thread-safe and blocking; owners reach it through a
// PictureClient, which decodes on threads of its own.
class PictureService {
public:
    explicit PictureService(QSize screenLimit = {}, const FileSystems* fileSystems = nullptr,
                            ProcessMemory* memory = nullptr, SharedThumbnails* shared = nullptr);

    std::optional<Picture> picture(const QUrl& url) { return pictures.loadImage(url); }
    std::optional<QImage> thumbnail(const QUrl& url, QSize displaySize, qreal pixelRatio = 1.0)
    {
        return thumbnails.generateThumbnail(url, displaySize, pixelRatio);
    }
    std::optional<QImage> posterFrame(const QUrl& url) { return posters.thumbnail(url); }
    // After a show: memory its pictures held goes back to the system.
    void releaseFreeMemory();

    ImageLoader pictures;
    ThumbnailGenerator thumbnails;
    VideoThumbnailGenerator posters;

private:
    ProcessMemory* memory;
};

} // namespace tb
