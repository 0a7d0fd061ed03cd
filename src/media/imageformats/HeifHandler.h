#pragma once

#include "WholeFileHandler.h"

namespace tb {

// HEIC and AVIF through libheif. The picture's rotation and mirroring are applied; a scaled read
// uses an embedded thumbnail when one is large enough.
class HeifHandler final : public WholeFileHandler {
public:
    static bool canRead(QIODevice* device);
    bool canRead() const override;

protected:
    QSize headerSize(const QByteArray& data) const override;
    QImage decode(const QByteArray& data, const QSize& wanted) const override;
};

} // namespace tb
