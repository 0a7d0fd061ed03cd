#include "PictureProvider.h"

#include "media/PictureCaches.h"

#include <QImage>
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

    // The engine no longer wants the picture: a decode that has not started never will. The
    // engine still waits for finished(), which the withdrawn job sends.
    void cancel() override
    {
        if (auto queue = decodes.lock())
            queue->withdraw(job);
    }

    // From the decoding thread, or from whoever withdrew the job; exactly once either way.
    // finished() is sent from the response's own thread: the engine deletes the response as
    // soon as it hears of it, which could be while an emit from another thread is still
    // unwinding. A response deleted first drops the queued call.
    void deliver(const QImage& result)
    {
        image = result;
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT finished(); }, Qt::QueuedConnection);
    }

    std::weak_ptr<DecodeQueue> decodes;
    DecodeQueue::JobId job = 0;

private:
    QImage image;
};

} // namespace

PictureProvider::PictureProvider(PictureCaches& caches, int backlog)
    : caches(caches), decodes(std::make_shared<DecodeQueue>(threads, backlog))
{
}

PictureProvider::~PictureProvider() { shutDown(); }

void PictureProvider::shutDown() { decodes->close(); }

QString PictureProvider::sourceFor(const QUrl& url, bool isVideo)
{
    return QStringLiteral("image://picture/") + (isVideo ? QStringLiteral("v/") : QStringLiteral("p/")) +
           QString::fromLatin1(url.toEncoded().toPercentEncoding());
}

QString PictureProvider::cellSourceFor(const QUrl& url, bool isVideo)
{
    return QStringLiteral("image://picture/") + (isVideo ? QStringLiteral("cv/") : QStringLiteral("cp/")) +
           QString::fromLatin1(url.toEncoded().toPercentEncoding());
}

QQuickImageResponse* PictureProvider::requestImageResponse(const QString& id, const QSize& requestedSize)
{
    auto* response = new PictureResponse;
    const bool cell = id.startsWith(QLatin1Char('c'));
    const QString rest = cell ? id.mid(1) : id;
    const bool isVideo = rest.startsWith(QLatin1String("v/"));
    const QUrl url = QUrl::fromEncoded(QByteArray::fromPercentEncoding(rest.mid(2).toLatin1()));
    PictureCaches& source = caches;
    // QML keeps the response until it has emitted finished(), which may come from any thread.
    response->decodes = decodes;
    response->job = decodes->submit(
        [response, url, isVideo, cell, requestedSize, &source] {
            // A cell is never decoded whole: without its size it waits for the next request.
            const auto image = !cell                     ? source.picture(url, isVideo)
                               : requestedSize.isEmpty() ? std::nullopt
                                                         : source.cellPicture(url, isVideo, requestedSize);
            response->deliver(image.value_or(QImage()));
        },
        [response] { response->deliver(QImage()); });
    return response;
}

} // namespace tb
