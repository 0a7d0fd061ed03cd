#pragma once

#include <QQuickAsyncImageProvider>
#include <QThreadPool>

namespace tb {

class PlaybackCaches;

// Serves the player's pictures to QML from the picture caches, decoding on the thread pool so
// no frame waits on a decoder. Ids are "p/<url>" for pictures and "v/<url>" for clips' posters.
class PictureProvider final : public QQuickAsyncImageProvider {
public:
    explicit PictureProvider(PlaybackCaches& caches);
    ~PictureProvider() override;

    // Drops waiting decodes and waits for those under way: they read the caches. The engine
    // may delete the provider late, on its own thread, so its window calls this when it goes.
    void shutDown();

    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

    static QString sourceFor(const QUrl& url, bool isVideo);

private:
    PlaybackCaches& caches;
    QThreadPool pool;
};

} // namespace tb
