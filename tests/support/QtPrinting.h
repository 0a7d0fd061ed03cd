#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

// Failed checks print Qt strings as text rather than as bytes.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

inline void PrintTo(const QStringList& texts, std::ostream* out)
{
    *out << '{';
    for (qsizetype i = 0; i < texts.size(); ++i)
        *out << (i ? ", \"" : "\"") << texts[i].toStdString() << '"';
    *out << '}';
}
