#pragma once

#include <QImageIOHandler>
#include <QSize>

namespace tb {

// JPEG XL through libjxl: the first frame, oriented as the file says.
class JxlHandler final : public QImageIOHandler {
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
