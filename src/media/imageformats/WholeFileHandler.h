#pragma once

#include <QImageIOHandler>
#include <QSize>

namespace tb {

// The common part of the program's decoders: they take the whole file at once, answer the
// picture's size from its header, and honour a scaled read by decoding (what they can) and
// scaling to the exact size asked.
class WholeFileHandler : public QImageIOHandler {
public:
    bool read(QImage* image) final;
    bool supportsOption(ImageOption option) const final { return option == Size || option == ScaledSize; }
    QVariant option(ImageOption option) const final;
    void setOption(ImageOption option, const QVariant& value) final;

protected:
    // The upright size from the header; nothing when the data is not such a picture.
    virtual QSize headerSize(const QByteArray& data) const = 0;
    // The picture, as close to `wanted` (when valid) as the format allows cheaply.
    virtual QImage decode(const QByteArray& data, const QSize& wanted) const = 0;
    // The file's name for log lines; empty when the picture does not come from a file.
    QString fileName() const;

private:
    QSize scaledSize;
};

} // namespace tb
