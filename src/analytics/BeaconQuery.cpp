#include "BeaconQuery.h"

#include <QUrl>

namespace tb {

QString escapedForQuery(const QString& text) { return QString::fromLatin1(QUrl::toPercentEncoding(text)); }

QString queryPair(QLatin1String key, const QString& value)
{
    return QLatin1Char('&') + QString(key) + QLatin1Char('=') + escapedForQuery(value);
}

std::optional<QString> queryValue(const QString& query, QLatin1String key)
{
    for (const QStringView pair : QStringView(query).split(QLatin1Char('&'))) {
        const qsizetype equals = pair.indexOf(QLatin1Char('='));
        if (equals >= 0 && pair.first(equals) == key)
            return QUrl::fromPercentEncoding(pair.sliced(equals + 1).toUtf8());
    }
    return std::nullopt;
}

std::optional<QString> takeQueryValue(QString& query, QLatin1String key)
{
    const QString marker = QLatin1Char('&') + QString(key) + QLatin1Char('=');
    const qsizetype start = query.indexOf(marker);
    if (start < 0)
        return std::nullopt;
    const qsizetype valueStart = start + marker.size();
    qsizetype end = query.indexOf(QLatin1Char('&'), valueStart);
    if (end < 0)
        end = query.size();
    const QString value = QUrl::fromPercentEncoding(query.mid(valueStart, end - valueStart).toUtf8());
    query.remove(start, end - start);
    return value;
}

} // namespace tb
