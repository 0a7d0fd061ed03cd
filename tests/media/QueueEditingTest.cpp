#include "media/QueueEditing.h"
#include "core/SettingsStore.h"
#include "media/FileIntake.h"
#include "support/ScriptedUserDialogs.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

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

TEST(QueueEditing, RemovingTheStartingItemClearsTheStartingPoint)
{
    QList<IdentifiableImage> queue{item(QStringLiteral("/a.jpg")), item(QStringLiteral("/b.jpg")),
                                   item(QStringLiteral("/c.jpg"))};
    std::optional<QUuid> start = queue[1].id();
    removeSelected(queue, {queue[0].id()}, start);
    EXPECT_EQ(queue.size(), 2);
    EXPECT_EQ(start, queue[0].id()) << "the pin stays with its item";
    removeSelected(queue, {queue[0].id(), queue[1].id()}, start);
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(start.has_value());
}

TEST(QueueEditing, ADropTakesFilesAndFoldersWithOneAnswerForAll)
{
    QTemporaryDir dir;
    for (const char* name : {"plain/a.jpg", "nested/b.jpg", "nested/inner/c.jpg", "loose.png"}) {
        QDir().mkpath(QFileInfo(dir.filePath(QString::fromLatin1(name))).path());
        QFile file(dir.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    SettingsStore settings(dir.filePath(QStringLiteral("settings.conf")));
    test::ScriptedUserDialogs dialogs;
    dialogs.questionAnswers = {QuestionAnswer{1, false}}; // "This Folder Only"
    QList<IdentifiableImage> queue;
    FileIntake intake(queue, settings, dialogs);
    intake.handleDrop({QUrl::fromLocalFile(dir.filePath(QStringLiteral("plain"))),
                       QUrl::fromLocalFile(dir.filePath(QStringLiteral("nested"))),
                       QUrl::fromLocalFile(dir.filePath(QStringLiteral("loose.png"))),
                       QUrl(QStringLiteral("https://example.invalid/remote.jpg"))});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !intake.isLoading(); }, 10000));
    QStringList added;
    for (const auto& image : queue)
        added.append(image.filename());
    added.sort();
    EXPECT_EQ(added, (QStringList{QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("loose.png")}))
        << "one answer for both folders: the inner folder is skipped";
    EXPECT_EQ(dialogs.prompts.size(), 1);
    EXPECT_EQ(intake.totalPhotosToBeAdded(), 0) << "a drop counts nothing ahead";
}
