#pragma once

#include <QImageIOHandler>
#include <QSize>

namespace tb {

// HEIC and AVIF through libheif. The picture's rotation and mirroring are applied; a scaled read
// uses an embedded thumbnail when one is large enough.
class HeifHandler final : public QImageIOHandler {
public:
    static bool canRead(QIODevice* device);

    bool canRead() const override;
    bool read(QImage* image) override;
    bool supportsOption(ImageOption option) const override;
    QVariant option(ImageOption option) const override;
    void setOption(ImageOption option, const QVariant& value) override;

private:
    QSize scaledSize;
};

} // namespace tb
