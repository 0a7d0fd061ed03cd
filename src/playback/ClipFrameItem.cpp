#include "ClipFrameItem.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <QVideoSink>

namespace tb {

ClipFrameItem::ClipFrameItem(QQuickItem* parent) : QQuickItem(parent), sink(new QVideoSink(this))
{
    setFlag(ItemHasContents, true);
    connect(sink, &QVideoSink::videoFrameChanged, this, &ClipFrameItem::take, Qt::DirectConnection);
}

void ClipFrameItem::take(const QVideoFrame& frame)
{
    {
        QMutexLocker lock(&mutex);
        latest = frame;
        fresh = true;
    }
    // Back on the item's thread: repaint, and say the first frame is there.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (frameCount++ == 0)
                Q_EMIT hasFrameChanged();
            update();
        },
        Qt::QueuedConnection);
}

QSGNode* ClipFrameItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*)
{
    auto* node = static_cast<QSGImageNode*>(old);
    QVideoFrame frame;
    bool changed = false;
    {
        QMutexLocker lock(&mutex);
        frame = latest;
        changed = fresh;
        fresh = false;
    }
    if (!frame.isValid()) {
        delete node;
        return nullptr;
    }
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
        changed = true;
    }
    if (changed) {
        // An ended clip keeps its last frame: the sink's last frame stays the latest.
        const QImage image = frame.toImage();
        if (image.isNull())
            return node;
        node->setTexture(window()->createTextureFromImage(image));
    }
    const QSizeF picture = node->texture()->textureSize();
    QSizeF fitted = picture.scaled(size(), Qt::KeepAspectRatio);
    node->setRect(QRectF(QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted));
    return node;
}

} // namespace tb
