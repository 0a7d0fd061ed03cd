#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tb::test {

// The sRGB colours Little CMS (its transicc tool) makes of `colours` taken in `profile`:
// relative colorimetric, clipped to sRGB's gamut, rounded. Nothing when transicc is missing or
// fails.
inline std::optional<QList<QColor>> lcmsToSrgb(const QByteArray& profile, const QList<QColor>& colours)
{
    QTemporaryFile file;
    if (!file.open() || file.write(profile) != profile.size() || !file.flush())
        return std::nullopt;
    QProcess transicc;
    transicc.start(QStringLiteral("transicc"), {QStringLiteral("-s"), QStringLiteral("-t1"),
                                                QStringLiteral("-i") + file.fileName(), QStringLiteral("-o*sRGB")});
    if (!transicc.waitForStarted())
        return std::nullopt;
    for (const QColor& colour : colours)
        transicc.write(
            QStringLiteral("%1 %2 %3\n").arg(colour.red()).arg(colour.green()).arg(colour.blue()).toLatin1());
    transicc.closeWriteChannel();
    if (!transicc.waitForFinished() || transicc.exitCode() != 0)
        return std::nullopt;
    static const QRegularExpression line(QStringLiteral("R=([-0-9.]+) G=([-0-9.]+) B=([-0-9.]+)"));
    QList<QColor> result;
    auto channel = [](const QString& text) { return std::clamp(int(std::lround(text.toDouble())), 0, 255); };
    for (auto match = line.globalMatch(QString::fromLatin1(transicc.readAllStandardOutput())); match.hasNext();) {
        const auto found = match.next();
        result.append(QColor(channel(found.captured(1)), channel(found.captured(2)), channel(found.captured(3))));
    }
    if (result.size() != colours.size())
        return std::nullopt;
    return result;
}

// The largest difference of the three channels, in steps of 1/255.
inline int channelDifference(QColor a, QColor b)
{
    return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
}

} // namespace tb::test
