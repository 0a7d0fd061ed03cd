#include "Bookmark.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <deque>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tb {

namespace {

// "TBBK": bytes without it were never a bookmark of ours.
constexpr quint32 magic = 0x5442424B;
// Raised when the layout changes; a version this build does not know reads as damaged.
constexpr quint8 currentVersion = 1;

QString systemText(int error) { return qt_error_string(error); }

qint64 modifiedMs(const struct stat& info)
{
    return qint64(info.st_mtim.tv_sec) * 1000 + qint64(info.st_mtim.tv_nsec / 1000000);
}

bool sameFile(const struct stat& info, const Bookmark& bookmark)
{
    return quint64(info.st_dev) == bookmark.device && quint64(info.st_ino) == bookmark.inode;
}

QString noLongerExists(const Bookmark& bookmark)
{
    return QStringLiteral("The file “%1” no longer exists.").arg(QDir::toNativeSeparators(bookmark.path));
}

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};

} // namespace

std::optional<Bookmark> Bookmark::create(const QString& filePath, QString* error)
{
    const QString path = QFileInfo(filePath).absoluteFilePath();
    const QByteArray name = QFile::encodeName(path);
    struct stat info {};
    if (filePath.isEmpty() || ::stat(name.constData(), &info) != 0) {
        const int reason = filePath.isEmpty() ? ENOENT : errno;
        if (error)
            *error = systemText(reason);
        return std::nullopt;
    }
    Bookmark bookmark;
    bookmark.path = path;
    bookmark.device = quint64(info.st_dev);
    bookmark.inode = quint64(info.st_ino);
    bookmark.size = qint64(info.st_size);
    bookmark.modifiedMs = tb::modifiedMs(info);
    return bookmark;
}

QByteArray Bookmark::toData() const
{
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_0);
    out << magic << currentVersion << path << device << inode << size << modifiedMs;
    return data;
}

std::optional<Bookmark> Bookmark::fromData(const QByteArray& data)
{
    QDataStream in(data);
    in.setVersion(QDataStream::Qt_6_0);
    quint32 readMagic = 0;
    quint8 version = 0;
    in >> readMagic >> version;
    if (in.status() != QDataStream::Ok || readMagic != magic || version != currentVersion)
        return std::nullopt;
    Bookmark bookmark;
    in >> bookmark.path >> bookmark.device >> bookmark.inode >> bookmark.size >> bookmark.modifiedMs;
    if (in.status() != QDataStream::Ok || !in.atEnd() || bookmark.path.isEmpty() ||
        !QDir::isAbsolutePath(bookmark.path))
        return std::nullopt;
    return bookmark;
}

std::variant<ResolvedBookmark, QString> BookmarkResolver::resolve(const QByteArray& data)
{
    const auto bookmark = Bookmark::fromData(data);
    if (!bookmark)
        return QStringLiteral("The saved reference to the file is damaged and cannot be read.");
    return resolve(*bookmark);
}

std::variant<ResolvedBookmark, QString> BookmarkResolver::resolve(const Bookmark& bookmark)
{
    const QByteArray name = QFile::encodeName(bookmark.path);
    struct stat info {};
    if (::stat(name.constData(), &info) == 0)
        return ResolvedBookmark{bookmark.path, !sameFile(info, bookmark)};
    // Only a path that is gone is worth a search; one we may not look at would not be found
    // anywhere nearby either.
    if (const int reason = errno; reason != ENOENT && reason != ENOTDIR)
        return QStringLiteral("The file “%1” cannot be reached: %2.")
            .arg(QDir::toNativeSeparators(bookmark.path), systemText(reason));

    // The parent of the file's folder ("/" stays "/").
    const QString root = QFileInfo(QFileInfo(bookmark.path).path()).path();
    const FileId id{bookmark.device, bookmark.inode};
    for (int attempt = 0; attempt < 2; ++attempt) {
        const Found& found = searchAround(root);
        const auto hit = found.find(id);
        if (hit == found.end())
            return noLongerExists(bookmark);
        // An earlier search of this load may be out of date by now: trust it only while the
        // file is still where it was seen, and otherwise look once more.
        if (::lstat(QFile::encodeName(hit->second).constData(), &info) == 0 && sameFile(info, bookmark))
            return ResolvedBookmark{hit->second, true};
        searched.remove(root);
    }
    return noLongerExists(bookmark);
}

const BookmarkResolver::Found& BookmarkResolver::searchAround(const QString& root)
{
    if (const auto known = searched.constFind(root); known != searched.constEnd())
        return *known;
    ++searchCount;
    Found& found = searched[root];

    struct stat rootInfo {};
    if (::stat(QFile::encodeName(root).constData(), &rootInfo) != 0 || !S_ISDIR(rootInfo.st_mode))
        return found;
    std::deque<std::pair<QByteArray, int>> folders{{QFile::encodeName(root), 0}};
    int visited = 0;
    while (!folders.empty() && visited < bounds.entries) {
        const auto [folder, depth] = folders.front();
        folders.pop_front();
        const std::unique_ptr<DIR, DirCloser> dir(::opendir(folder.constData()));
        if (!dir)
            continue; // unreadable folders are passed over
        while (const dirent* entry = ::readdir(dir.get())) {
            if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
                continue;
            if (++visited > bounds.entries)
                break;
            struct stat info {};
            if (::fstatat(::dirfd(dir.get()), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(info.st_mode))
                continue;
            const QByteArray path = folder.endsWith('/') ? folder + entry->d_name : folder + '/' + entry->d_name;
            if (S_ISDIR(info.st_mode)) {
                if (depth < bounds.depth && info.st_dev == rootInfo.st_dev)
                    folders.emplace_back(path, depth + 1);
            } else {
                // The nearest of several hard links wins.
                found.emplace(FileId{quint64(info.st_dev), quint64(info.st_ino)}, QFile::decodeName(path));
            }
        }
    }
    return found;
}

bool startAccessing(const QString& path) { return ::access(QFile::encodeName(path).constData(), R_OK) == 0; }

} // namespace tb
