#pragma once

#include "WholeFileHandler.h"

namespace tb {

// JPEG XL through libjxl: the first frame, oriented as the file says.
class JxlHandler final : public WholeFileHandler {
public:
    static bool canRead(QIODevice* device);
    bool canRead() const override;

protected:
    QSize headerSize(const QByteArray& data) const override;
    QImage decode(const QByteArray& data, const QSize& wanted) const override;
};

} // namespace tb
