#pragma once

#include <QString>

#include <optional>

namespace tb {

// Helpers for the analytics requests, which are kept as ready query strings ("a=1&b=2").

// Percent-encodes everything but letters, digits and "-._~": values carry JSON, whose & = + and
// spaces would otherwise split the query or change on the way.
QString escapedForQuery(const QString& text);

// "&key=value" with the value escaped.
QString queryPair(QLatin1String key, const QString& value);

// The decoded value of the first `key` in the query, or nothing.
std::optional<QString> queryValue(const QString& query, QLatin1String key);

// Removes the first "&key=value" from the query and gives back its decoded value, or nothing
// when the key is not there.
std::optional<QString> takeQueryValue(QString& query, QLatin1String key);

} // namespace tb
