#pragma once

#include <QMutex>
#include <QQuickItem>
#include <QVideoFrame>
#include <QVideoSink>

namespace tb {

// Draws a clip's frames where Qt Quick draws in software (no GPU, or OpenGL emulated on the CPU),
// where the stock VideoOutput draws nothing: each frame, converted to an image, is laid out with
// its aspect kept and centred. The player's MediaPlayer writes into `videoSink`.
class ClipFrameItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QVideoSink* videoSink READ videoSink CONSTANT)
    // Whether a frame arrived since the clip was set.
    Q_PROPERTY(bool hasFrame READ hasFrame NOTIFY hasFrameChanged)
public:
    explicit ClipFrameItem(QQuickItem* parent = nullptr);

    QVideoSink* videoSink() const { return sink; }
    bool hasFrame() const { return frameCount > 0; }

Q_SIGNALS:
    void hasFrameChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;

private:
    void take(const QVideoFrame& frame);

    QVideoSink* sink;
    QMutex mutex;
    QVideoFrame latest; // — guarded by mutex: the sink may deliver on a decoding thread
    bool fresh = false; // — guarded by mutex
    int frameCount = 0;
};

} // namespace tb
