#pragma once

#include "media/DecodeQueue.h"

#include <QQuickAsyncImageProvider>

#include <memory>

namespace tb {

class PictureCaches;

// Serves a show's pictures to QML from its share of the picture service, decoding on threads of
// its own so no frame waits on a decoder. A slide dropped before its picture is decoded
// withdraws the decode; at most a couple wait, the newest first. Ids are "p/<url>" for pictures
// and "v/<url>" for clips' posters; "cp/<url>" and "cv/<url>" are the same stretched to the
// size the scene asks for (a grid's cell).
class PictureProvider final : public QQuickAsyncImageProvider {
public:
    PictureProvider(PictureCaches& caches, int backlog);
    ~PictureProvider() override;

    // Drops waiting decodes, waits for those under way, and answers every later request with
    // no picture: decodes read the caches, which go with the window. The engine may delete the
    // provider late, on its own thread, so its window calls this when it goes.
    void shutDown();

    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

    static QString sourceFor(const QUrl& url, bool isVideo);
    static QString cellSourceFor(const QUrl& url, bool isVideo);

    // Two decodes at once, and two waiting: a show needs the picture it is turning to, and
    // perhaps the one after; anything older is no longer on its way to the screen.
    static constexpr int threads = 2;
    static constexpr int backlog = 2;
    // A grid's sync tick asks for every cell at once.
    static constexpr int cellBacklog = 9;

private:
    PictureCaches& caches;
    std::shared_ptr<DecodeQueue> decodes;
};

} // namespace tb
