#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <map>
#include <optional>
#include <utility>
#include <variant>

namespace tb {

// Our lasting reference to a file the user chose (the overlay picture; documents' items). Settings
// keep its bytes as they are, documents carry them base64. Besides the path it remembers which
// file was there (device and inode), so a file renamed or moved nearby can still be found.
struct Bookmark {
    QString path; // absolute
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modifiedMs = 0; // since the epoch

    // The bookmark of the file as it is now, or nothing with the system's reason in `error`.
    static std::optional<Bookmark> create(const QString& filePath, QString* error);

    QByteArray toData() const;
    // Nothing for bytes that are not a bookmark of ours (empty, cut short, another program's).
    static std::optional<Bookmark> fromData(const QByteArray& data);
};

struct ResolvedBookmark {
    QString path;
    // The file found is not the one recorded at its path: moved there, or replaced.
    bool isStale = false;
};

// Finds the files of bookmarks. Make one per load (a document, the overlay) and resolve every
// bookmark of that load through it: the searches for moved files are remembered, so many items
// that moved out of one folder cost one search.
class BookmarkResolver {
public:
    // How far a search for a moved file goes. It starts at the parent of the recorded file's
    // folder (a folder renamed beside its siblings is found; "/" for a file in "/"), goes at most
    // three folders down, looks at no more than 20,000 entries, never follows a symbolic link and
    // never crosses into another file system. Folders are taken nearest first, so when the entry
    // budget runs out it is the farthest folders that go unseen. These bounds keep a search short
    // enough for the GUI thread.
    struct Bounds {
        int depth = 3;
        int entries = 20000;
    };

    BookmarkResolver() = default;
    explicit BookmarkResolver(Bounds bounds) : bounds(bounds) {}

    // The file, or a sentence for the user saying why it cannot be found.
    std::variant<ResolvedBookmark, QString> resolve(const QByteArray& data);
    std::variant<ResolvedBookmark, QString> resolve(const Bookmark& bookmark);

    // How many folder trees this resolver has searched.
    int searches() const { return searchCount; }

private:
    using FileId = std::pair<quint64, quint64>; // device, inode
    using Found = std::map<FileId, QString>;

    const Found& searchAround(const QString& root);

    Bounds bounds;
    QHash<QString, Found> searched; // by the folder each search started at
    int searchCount = 0;
};

// Whether the program may read the file now.
bool startAccessing(const QString& path);

} // namespace tb
