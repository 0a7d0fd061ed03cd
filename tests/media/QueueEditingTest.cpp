#include "media/QueueEditing.h"
#include "TestPictures.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;

namespace {

IdentifiableImage item(const QString& path, std::optional<QDateTime> created = std::nullopt)
{
    return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(path), QFileInfo(path).fileName(),
                             QFileInfo(path).path(), created, false, false, std::nullopt);
}

QStringList names(const QList<IdentifiableImage>& images)
{
    QStringList list;
    for (const auto& image : images)
        list.append(image.url().toLocalFile());
    return list;
}

} // namespace

TEST(QueueEditing, SortsByFullPathInFileBrowserOrderAndByDateWithMissingDatesAsThePast)
{
    QList<IdentifiableImage> queue{item(QStringLiteral("/b/Image10.jpg")), item(QStringLiteral("/b/image9.jpg")),
                                   item(QStringLiteral("/a/z.jpg")), item(QStringLiteral("/b/Image1.jpg"))};
    sortImages(queue, QStringLiteral("Filename Ascending ↑"));
    EXPECT_EQ(names(queue), (QStringList{QStringLiteral("/a/z.jpg"), QStringLiteral("/b/Image1.jpg"),
                                         QStringLiteral("/b/image9.jpg"), QStringLiteral("/b/Image10.jpg")}));
    sortImages(queue, QStringLiteral("Filename Descending ↓"));
    EXPECT_EQ(names(queue).first(), QStringLiteral("/b/Image10.jpg"));
    const QStringList before = names(queue);
    sortImages(queue, QStringLiteral("-"));
    EXPECT_EQ(names(queue), before) << "\"-\" does not restore an earlier order";

    const QDateTime day = QDateTime(QDate(2025, 6, 1), QTime(12, 0));
    QList<IdentifiableImage> dated{item(QStringLiteral("/x/undated1.jpg")),
                                   item(QStringLiteral("/x/late.jpg"), day.addDays(1)),
                                   item(QStringLiteral("/x/undated2.jpg")), item(QStringLiteral("/x/early.jpg"), day)};
    sortImages(dated, QStringLiteral("Created Descending ↓"));
    EXPECT_EQ(names(dated), (QStringList{QStringLiteral("/x/late.jpg"), QStringLiteral("/x/early.jpg"),
                                         QStringLiteral("/x/undated1.jpg"), QStringLiteral("/x/undated2.jpg")}))
        << "missing dates last, in their order";
    sortImages(dated, QStringLiteral("Created Ascending ↑"));
    EXPECT_EQ(names(dated).first(), QStringLiteral("/x/undated1.jpg"));
    EXPECT_EQ(names(dated).last(), QStringLiteral("/x/late.jpg"));
}

// After live mode saw files go: only supported files still directly in the watched folder stay.
TEST(QueueEditing, ReconcilingWithTheFolderKeepsOnlyItsPresentFiles)
{
    QTemporaryDir dir;
    for (const char* name : {"kept.jpg", "notes.txt", "sub/deep.jpg"})
        test::writeBytes(dir.filePath(QString::fromLatin1(name)));
    Queue queue;
    queue.append({item(dir.filePath(QStringLiteral("gone.jpg"))), item(dir.filePath(QStringLiteral("kept.jpg"))),
                  item(dir.filePath(QStringLiteral("sub/deep.jpg"))), item(QStringLiteral("/elsewhere/kept.jpg"))});
    queue.setStartingImageId(queue.at(0).id());
    ASSERT_TRUE(reconcileWithFolder(queue, dir.path()));
    EXPECT_EQ(names(queue.items()), QStringList{dir.filePath(QStringLiteral("kept.jpg"))});
    EXPECT_FALSE(queue.startingImageId().has_value());

    queue.setStartingImageId(queue.at(0).id());
    EXPECT_FALSE(reconcileWithFolder(queue, dir.filePath(QStringLiteral("vanished"))));
    EXPECT_EQ(queue.size(), 1) << "an unreadable folder changes nothing";
    EXPECT_TRUE(queue.startingImageId().has_value());
}
