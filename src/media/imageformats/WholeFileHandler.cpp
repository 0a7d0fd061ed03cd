#include "WholeFileHandler.h"

#include "DecodeLimits.h"

#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QImage>
#include <QVariant>

namespace tb {

bool WholeFileHandler::read(QImage* image)
{
    const QImage decoded = decode(device()->readAll(), scaledSize);
    if (decoded.isNull())
        return false;
    *image = scaledTo(decoded, scaledSize);
    return !image->isNull();
}

QVariant WholeFileHandler::option(ImageOption option) const
{
    if (option != Size || !device())
        return {};
    // The header needs the file's structure; the reader's position is given back afterwards.
    const qint64 start = device()->pos();
    const QByteArray data = device()->readAll();
    device()->seek(start);
    const QSize size = headerSize(data);
    return size.isValid() ? QVariant(size) : QVariant();
}

void WholeFileHandler::setOption(ImageOption option, const QVariant& value)
{
    if (option == ScaledSize)
        scaledSize = value.toSize();
}

QString WholeFileHandler::fileName() const
{
    const auto* file = qobject_cast<const QFile*>(device());
    return file ? QFileInfo(file->fileName()).fileName() : QString();
}

} // namespace tb
