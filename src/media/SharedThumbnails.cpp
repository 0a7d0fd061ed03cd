#include "SharedThumbnails.h"

#include "SrgbConversion.h"
#include "core/Logger.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <array>

namespace tb {

namespace {

struct SizeFolder {
    int size;
    const char* name;
};

constexpr std::array<SizeFolder, 4> sizeFolders{
    {{128, "normal"}, {256, "large"}, {512, "x-large"}, {1024, "xx-large"}}};
// x-large: the biggest folder we write into. Our thumbnails are queue-sized, and a screen-sized
// xx-large one would mean scaling up, which only passes blur on to every other program.
constexpr auto largestWritten = sizeFolders.begin() + 2;

// zlib level 3 rather than 6: a decoding thread writes each thumbnail, and at level 6 the
// writing cost a quarter of the grid's thumbnail rate for files a few percent smaller.
constexpr int pngQuality = 70;

const QString uriKey = QStringLiteral("Thumb::URI");
const QString mtimeKey = QStringLiteral("Thumb::MTime");
const QString sizeKey = QStringLiteral("Thumb::Size");
const QString originalWidthKey = QStringLiteral("Thumb::Image::Width");
const QString originalHeightKey = QStringLiteral("Thumb::Image::Height");

// What a thumbnail must agree with to belong to the file as it is now.
struct Source {
    QByteArray uri;
    qint64 modified = 0;
    qint64 size = 0;
};

std::optional<Source> describe(const QString& filePath)
{
    const QFileInfo info(filePath);
    if (!info.isFile() || !info.isReadable())
        return std::nullopt;
    return Source{QUrl::fromLocalFile(QDir::cleanPath(info.absoluteFilePath())).toEncoded(),
                  info.lastModified().toSecsSinceEpoch(), info.size()};
}

QString thumbnailName(const Source& source)
{
    return QString::fromLatin1(QCryptographicHash::hash(source.uri, QCryptographicHash::Md5).toHex()) +
           QStringLiteral(".png");
}

bool belongsTo(const QImage& thumbnail, const Source& source)
{
    bool isNumber = false;
    const qint64 modified = thumbnail.text(mtimeKey).toLongLong(&isNumber);
    return isNumber && modified == source.modified && thumbnail.text(uriKey) == QString::fromLatin1(source.uri);
}

std::optional<QImage> readValid(const QString& path, const Source& source, int longestSide)
{
    // The keys are read from the decoded image, not from QImageReader::text(): that splits each
    // key from its value at the first colon, so "Thumb::URI" would never be seen there.
    QImageReader reader(path, "png");
    // A thumbnail that keeps its photo's profile (other programs', and ours from before pictures
    // were brought to sRGB) is converted like the photo.
    const QImage thumbnail = SrgbConversion::toSrgb(reader.read(), reader);
    if (thumbnail.isNull() || !belongsTo(thumbnail, source))
        return std::nullopt;
    const int longer = std::max(thumbnail.width(), thumbnail.height());
    if (longer >= longestSide)
        return thumbnail;
    // Pictures smaller than a folder's size are kept at their own size; such a thumbnail is as
    // big as the picture allows when the picture's own size, if recorded, is no bigger.
    bool hasWidth = false;
    bool hasHeight = false;
    const int originalWidth = thumbnail.text(originalWidthKey).toInt(&hasWidth);
    const int originalHeight = thumbnail.text(originalHeightKey).toInt(&hasHeight);
    if (hasWidth && hasHeight && originalWidth > 0 && originalHeight > 0 &&
        std::max(originalWidth, originalHeight) <= longer)
        return thumbnail;
    return std::nullopt;
}

} // namespace

SharedThumbnails::SharedThumbnails(QString root)
    : root(root.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(root).absoluteFilePath()))
{
}

QString SharedThumbnails::defaultRoot()
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    return cache.isEmpty() ? QString() : cache + QStringLiteral("/thumbnails");
}

std::optional<QImage> SharedThumbnails::find(const QString& filePath, int longestSide) const
{
    const auto smallestFitting =
        std::find_if(sizeFolders.begin(), sizeFolders.end(),
                     [longestSide](const SizeFolder& folder) { return folder.size >= longestSide; });
    if (smallestFitting == sizeFolders.end() || root.isEmpty() || isInsideCache(filePath))
        return std::nullopt;
    const auto source = describe(filePath);
    if (!source)
        return std::nullopt;
    const QString name = thumbnailName(*source);
    for (auto folder = smallestFitting; folder != sizeFolders.end(); ++folder) {
        const QString path = root + QLatin1Char('/') + QLatin1String(folder->name) + QLatin1Char('/') + name;
        if (auto thumbnail = readValid(path, *source, longestSide))
            return thumbnail;
    }
    return std::nullopt;
}

void SharedThumbnails::store(const QString& filePath, const QImage& thumbnail)
{
    if (thumbnail.isNull() || root.isEmpty() || isInsideCache(filePath))
        return;
    const auto source = describe(filePath);
    if (!source)
        return;

    const int longer = std::max(thumbnail.width(), thumbnail.height());
    // Searching up to but not including the largest written folder leaves that folder as the
    // answer when none of the smaller ones is big enough.
    const auto folder = std::find_if(sizeFolders.begin(), largestWritten,
                                     [longer](const SizeFolder& candidate) { return candidate.size >= longer; });
    QImage image = longer > folder->size
                       ? thumbnail.scaled(folder->size, folder->size, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                       : thumbnail;
    image.setText(uriKey, QString::fromLatin1(source->uri));
    image.setText(mtimeKey, QString::number(source->modified));
    image.setText(sizeKey, QString::number(source->size));
    image.setText(QStringLiteral("Software"), QStringLiteral("Tallowbrook"));

    const QString folderPath = root + QLatin1Char('/') + QLatin1String(folder->name);
    if (!makeFolder(folderPath)) {
        warnOnce(QStringLiteral("Shared thumbnails are not written: cannot create ") + folderPath);
        return;
    }
    // Other readers must never see half a file, and other users must not see which pictures were
    // looked at: the temporary file is made owner-only before a byte is written.
    QSaveFile file(folderPath + QLatin1Char('/') + thumbnailName(*source));
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) ||
        !image.save(&file, "PNG", pngQuality) || !file.commit())
        warnOnce(QStringLiteral("Shared thumbnails are not written: cannot write into %1 (%2)")
                     .arg(folderPath, file.errorString()));
}

bool SharedThumbnails::isInsideCache(const QString& filePath) const
{
    const auto within = [](const QString& path, const QString& folder) {
        return !folder.isEmpty() && (path == folder || path.startsWith(folder + QLatin1Char('/')));
    };
    const QFileInfo info(filePath);
    if (within(QDir::cleanPath(info.absoluteFilePath()), root))
        return true;
    // The cache folder is often reached through a link (~/.cache kept on another disk).
    return within(info.canonicalFilePath(), QFileInfo(root).canonicalFilePath());
}

bool SharedThumbnails::makeFolder(const QString& folder) const
{
    // Only folders made here are narrowed to the owner; the user's own choice for an existing
    // folder is left alone.
    for (const QString& path : {root, folder}) {
        if (QFileInfo(path).isDir())
            continue;
        if (!QDir().mkpath(path) ||
            !QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner))
            return false;
    }
    return true;
}

void SharedThumbnails::warnOnce(const QString& reason)
{
    // Decoding threads store one thumbnail after another; a cache that cannot be written would
    // otherwise repeat itself for every picture in the queue.
    if (!warned.exchange(true))
        logWarning(reason);
}

} // namespace tb
