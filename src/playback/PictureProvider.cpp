#include "PictureProvider.h"

#include "media/PlaybackCaches.h"

#include <QCoreApplication>
#include <QImage>
#include <QPointer>
#include <QThread>
#include <QUrl>

namespace tb {

namespace {

class PictureResponse final : public QQuickImageResponse {
public:
    QQuickTextureFactory* textureFactory() const override
    {
        return QQuickTextureFactory::textureFactoryForImage(image);
    }
    QString errorString() const override { return image.isNull() ? QStringLiteral("No picture") : QString(); }

    void deliver(const QImage& result)
    {
        image = result;
        Q_EMIT finished();
    }

private:
    QImage image;
};

} // namespace

PictureProvider::PictureProvider(PlaybackCaches& caches) : caches(caches)
{
    // One decode per core at most; the show only ever needs the next picture or two.
    pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount()));
}

PictureProvider::~PictureProvider() { shutDown(); }

void PictureProvider::shutDown()
{
    pool.clear();
    pool.waitForDone();
}

QString PictureProvider::sourceFor(const QUrl& url, bool isVideo)
{
    return QStringLiteral("image://picture/") + (isVideo ? QStringLiteral("v/") : QStringLiteral("p/")) +
           QString::fromLatin1(url.toEncoded().toPercentEncoding());
}

QQuickImageResponse* PictureProvider::requestImageResponse(const QString& id, const QSize&)
{
    auto* response = new PictureResponse;
    const bool isVideo = id.startsWith(QLatin1String("v/"));
    const QUrl url = QUrl::fromEncoded(QByteArray::fromPercentEncoding(id.mid(2).toLatin1()));
    PlaybackCaches& source = caches;
    // QML keeps the response until it has emitted finished(), which may come from this thread.
    QThreadPool::globalInstance()->start(
        [response, url, isVideo, &source] { response->deliver(source.picture(url, isVideo).value_or(QImage())); });
    return response;
}

} // namespace tb
