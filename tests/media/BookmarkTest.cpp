#include "media/Bookmark.h"
#include "TestPictures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace tb;

namespace {

// Files under <tmp>/tree/shows: a search for a moved one starts at <tmp>/tree.
struct BookmarkTest : testing::Test {
    QTemporaryDir dir;

    QString at(const QString& relative) const { return dir.filePath(relative); }

    QByteArray make(const QString& relative)
    {
        const auto bookmark = Bookmark::create(test::writeBytes(at(relative), "twelve bytes"), nullptr);
        return bookmark ? bookmark->toData() : QByteArray();
    }

    void move(const QString& from, const QString& to)
    {
        QDir().mkpath(QFileInfo(at(to)).path());
        ASSERT_TRUE(QDir().rename(at(from), at(to))) << to.toStdString();
    }
};

std::pair<QString, bool> answer(const std::variant<ResolvedBookmark, QString>& result)
{
    if (const auto* file = std::get_if<ResolvedBookmark>(&result))
        return {file->path, file->isStale};
    return {QString(), false};
}

QString reason(const std::variant<ResolvedBookmark, QString>& result)
{
    return std::holds_alternative<QString>(result) ? std::get<QString>(result) : QString();
}

} // namespace

TEST_F(BookmarkTest, TheSameFileIsFreshAndAnotherFileAtItsPathIsStale)
{
    const QByteArray data = make(QStringLiteral("tree/shows/logo.png"));
    const auto bookmark = Bookmark::fromData(data);
    ASSERT_TRUE(bookmark);
    struct stat info {};
    ASSERT_EQ(::stat(QFile::encodeName(at(QStringLiteral("tree/shows/logo.png"))).constData(), &info), 0);
    EXPECT_EQ(std::tuple(bookmark->path, bookmark->device, bookmark->inode, bookmark->size),
              std::tuple(at(QStringLiteral("tree/shows/logo.png")), quint64(info.st_dev), quint64(info.st_ino), 12));

    BookmarkResolver resolver;
    EXPECT_EQ(answer(resolver.resolve(data)), std::pair(bookmark->path, false));
    // The old file lives on elsewhere, so the new one cannot reuse its inode.
    move(QStringLiteral("tree/shows/logo.png"), QStringLiteral("tree/kept.png"));
    make(QStringLiteral("tree/shows/logo.png"));
    EXPECT_EQ(answer(resolver.resolve(data)), std::pair(bookmark->path, true)) << "the path wins";
    EXPECT_EQ(resolver.searches(), 0);
}

TEST_F(BookmarkTest, AMovedFileIsFoundOnlyWithinTheSearchsBounds)
{
    const QStringList names{QStringLiteral("renamed"), QStringLiteral("deep"), QStringLiteral("toodeep"),
                            QStringLiteral("linked"),  QStringLiteral("away"), QStringLiteral("deleted")};
    QList<QByteArray> data;
    for (const QString& name : names)
        data.append(make(QStringLiteral("tree/shows/%1.png").arg(name)));
    move(QStringLiteral("tree/shows/renamed.png"), QStringLiteral("tree/other/new name.png"));
    move(QStringLiteral("tree/shows/deep.png"), QStringLiteral("tree/a/b/c/deep.png"));
    move(QStringLiteral("tree/shows/toodeep.png"), QStringLiteral("tree/a/b/c/d/toodeep.png"));
    move(QStringLiteral("tree/shows/linked.png"), QStringLiteral("outside/linked.png"));
    ASSERT_TRUE(QFile::link(at(QStringLiteral("outside")), at(QStringLiteral("tree/link"))));
    move(QStringLiteral("tree/shows/away.png"), QStringLiteral("away.png"));
    ASSERT_TRUE(QFile::remove(at(QStringLiteral("tree/shows/deleted.png"))));

    BookmarkResolver resolver;
    EXPECT_EQ(answer(resolver.resolve(data[0])), std::pair(at(QStringLiteral("tree/other/new name.png")), true));
    EXPECT_EQ(answer(resolver.resolve(data[1])), std::pair(at(QStringLiteral("tree/a/b/c/deep.png")), true));
    // Four folders down, behind a link, out of the tree, gone.
    for (int i = 2; i < names.size(); ++i)
        EXPECT_EQ(reason(resolver.resolve(data[i])), QStringLiteral("The file “%1” no longer exists.")
                                                         .arg(at(QStringLiteral("tree/shows/%1.png").arg(names[i]))));
    EXPECT_EQ(resolver.searches(), 1) << "items of one folder share one search";

    // A remembered search that is out of date is done again.
    move(QStringLiteral("tree/a/b/c/deep.png"), QStringLiteral("tree/again/deep.png"));
    EXPECT_EQ(answer(resolver.resolve(data[1])), std::pair(at(QStringLiteral("tree/again/deep.png")), true));
    EXPECT_EQ(resolver.searches(), 2);
}

TEST_F(BookmarkTest, TheSearchStopsAfterItsBudgetOfEntries)
{
    const QByteArray data = make(QStringLiteral("tree/shows/logo.png"));
    move(QStringLiteral("tree/shows/logo.png"), QStringLiteral("tree/sub/logo.png"));
    for (int i = 0; i < 25; ++i)
        make(QStringLiteral("tree/filler%1").arg(i));
    // The tree's own 27 entries come before anything inside its folders.
    EXPECT_FALSE(reason(BookmarkResolver({3, 20}).resolve(data)).isEmpty());
    EXPECT_TRUE(reason(BookmarkResolver({3, 40}).resolve(data)).isEmpty());
}

TEST_F(BookmarkTest, DamagedBytesFailCleanly)
{
    const QByteArray good = make(QStringLiteral("tree/shows/logo.png"));
    QList<QByteArray> damaged{QByteArray(), QByteArrayLiteral("not a bookmark at all"), good + '\0'};
    for (int length = 1; length < good.size(); ++length)
        damaged.append(good.left(length));
    for (int i = 0; i < 5; ++i) // the mark and the layout's version
        damaged.append(QByteArray(good).replace(i, 1, QByteArray(1, char(~good[i]))));
    QRandomGenerator random(7);
    for (int i = 0; i < 200; ++i) {
        QByteArray noise(int(random.bounded(64)), '\0');
        random.fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
        damaged.append(noise);
    }
    BookmarkResolver resolver;
    for (const QByteArray& bytes : damaged) {
        EXPECT_FALSE(Bookmark::fromData(bytes)) << bytes.toHex().toStdString();
        EXPECT_FALSE(reason(resolver.resolve(bytes)).isEmpty());
    }
}

TEST_F(BookmarkTest, CreationAndAccessAnswerForTheFileAsItIs)
{
    QString error;
    EXPECT_FALSE(Bookmark::create(at(QStringLiteral("missing.png")), &error));
    EXPECT_EQ(error, QStringLiteral("No such file or directory"));
    EXPECT_FALSE(startAccessing(at(QStringLiteral("missing.png"))));
    make(QStringLiteral("logo.png"));
    EXPECT_TRUE(startAccessing(at(QStringLiteral("logo.png"))));
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    ASSERT_EQ(::chmod(QFile::encodeName(at(QStringLiteral("logo.png"))).constData(), 0), 0);
    EXPECT_FALSE(startAccessing(at(QStringLiteral("logo.png"))));
}
