#include "RelativePath.h"

#include <QDir>
#include <QStringList>

namespace tb {

QString relativePath(const QString& base, const QString& file)
{
    // The root is no component of its own here; both paths start at it, so it is always common.
    const QStringList from = QDir::cleanPath(base).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    const QStringList to = QDir::cleanPath(file).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    qsizetype common = 0;
    while (common < from.size() && common < to.size() && from.at(common) == to.at(common))
        ++common;

    QStringList parts;
    for (qsizetype i = common; i < from.size(); ++i)
        parts.append(QStringLiteral(".."));
    parts.append(to.mid(common));
    return parts.isEmpty() ? QStringLiteral(".") : parts.join(QLatin1Char('/'));
}

} // namespace tb
