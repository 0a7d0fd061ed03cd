#pragma once

#include <QImage>
#include <QMutex>
#include <QQuickImageProvider>

#include <memory>

namespace tb {

// The overlay's current picture. Its view replaces it on the GUI thread; the engine's provider
// reads it, perhaps from a loading thread and perhaps after the view has gone, so both hold it.
class OverlayPicture {
public:
    void set(const QImage& image);
    QImage get() const;

private:
    mutable QMutex mutex;
    QImage image; // — guarded by mutex
};

// Serves the overlay's picture as "image://overlay/<generation>", scaled smoothly to the size the
// scene asks for. The generation only makes each new picture a new address; any id gives the
// picture of now.
class OverlayPictureProvider final : public QQuickImageProvider {
public:
    explicit OverlayPictureProvider(std::shared_ptr<const OverlayPicture> picture);

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    std::shared_ptr<const OverlayPicture> picture;
};

} // namespace tb
