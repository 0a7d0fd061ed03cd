#include "media/Queue.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace tb;

namespace {

IdentifiableImage item(const QString& name)
{
    return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(QStringLiteral("/q/") + name), name,
                             QStringLiteral("/q"), std::nullopt, false, false, std::nullopt);
}

Queue& fill(Queue& queue, const QString& letters)
{
    QList<IdentifiableImage> items;
    for (QChar letter : letters)
        items.append(item(QString(letter)));
    queue.append(items);
    return queue;
}

QString order(const Queue& queue)
{
    QString letters;
    for (const auto& i : queue.items())
        letters += i.filename();
    return letters;
}

QList<QList<int>> ranges(const QSignalSpy& spy)
{
    QList<QList<int>> result;
    for (const auto& call : spy)
        result.append({call.at(0).toInt(), call.at(1).toInt()});
    return result;
}

} // namespace

// Views and a running show follow the queue by these announcements alone, so their rows must
// name exactly what changed.
TEST(Queue, AnnouncesEachChangeByItsRows)
{
    Queue queue;
    fill(queue, QStringLiteral("ABCDEF"));
    QSignalSpy inserted(&queue, &Queue::rowsInserted);
    QSignalSpy removed(&queue, &Queue::rowsRemoved);
    QSignalSpy moved(&queue, &Queue::rowMoved);

    queue.insert(2, {item(QStringLiteral("x")), item(QStringLiteral("y"))});
    EXPECT_EQ(order(queue), QStringLiteral("ABxyCDEF"));
    EXPECT_EQ(ranges(inserted), (QList<QList<int>>{{2, 3}}));

    queue.removeIf([](const IdentifiableImage& i) { return QStringLiteral("AxyEF").contains(i.filename()); });
    EXPECT_EQ(order(queue), QStringLiteral("BCD"));
    EXPECT_EQ(ranges(removed), (QList<QList<int>>{{6, 7}, {2, 3}, {0, 0}})) << "runs of neighbours, last first";

    EXPECT_TRUE(queue.move(queue.at(0).id(), queue.at(2).id()));
    EXPECT_EQ(order(queue), QStringLiteral("CDB")) << "a forward drag lands after its target";
    EXPECT_TRUE(queue.move(queue.at(2).id(), queue.at(0).id()));
    EXPECT_EQ(order(queue), QStringLiteral("BCD")) << "a backward drag lands before its target";
    EXPECT_EQ(ranges(moved), (QList<QList<int>>{{0, 2}, {2, 0}}));
    EXPECT_TRUE(queue.move(queue.at(1).id(), queue.at(1).id()));
    EXPECT_FALSE(queue.move(QUuid::createUuid(), queue.at(1).id()));
    EXPECT_EQ(moved.size(), 2) << "onto itself, or an unknown item, moves nothing";
}

TEST(Queue, TheSelectionAndThePinGoWithTheirItems)
{
    Queue queue;
    fill(queue, QStringLiteral("ABCD"));
    const QUuid a = queue.at(0).id(), b = queue.at(1).id(), c = queue.at(2).id();
    queue.click(a, false, false);
    queue.click(c, false, true);
    queue.setStartingImageId(c);
    QSignalSpy pin(&queue, &Queue::startingPointChanged);

    queue.remove({b});
    EXPECT_EQ(queue.startingImageId(), c) << "the pin stays while its item does";
    queue.remove({c});
    EXPECT_FALSE(queue.startingImageId());
    EXPECT_EQ(pin.size(), 1);
    EXPECT_EQ(queue.selectedIds(), QSet<QUuid>{a});
    EXPECT_FALSE(queue.lastSelectedId()) << "the anchor went with its item";

    queue.clear();
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_TRUE(queue.selectedIds().isEmpty());
}

// The grid's click rules are not the usual list-view ones.
TEST(Queue, ClicksFollowTheGridsOwnRules)
{
    Queue queue;
    fill(queue, QStringLiteral("ABCD"));
    const QUuid a = queue.at(0).id(), b = queue.at(1).id(), c = queue.at(2).id();

    queue.click(a, false, false);
    queue.click(c, true, false);
    queue.click(b, true, false);
    EXPECT_EQ(queue.selectedIds(), (QSet<QUuid>{a, b, c})) << "a shift-click only adds";
    EXPECT_EQ(queue.lastSelectedId(), a) << "and keeps its anchor";

    queue.click(b, false, false);
    EXPECT_TRUE(queue.selectedIds().isEmpty()) << "a plain click on a selected item clears all";
    EXPECT_FALSE(queue.lastSelectedId());

    queue.click(c, true, false);
    EXPECT_EQ(queue.selectedIds(), QSet<QUuid>{c}) << "shift without an anchor selects the one item";
    queue.click(c, false, true);
    EXPECT_TRUE(queue.selectedIds().isEmpty());
    EXPECT_EQ(queue.lastSelectedId(), c) << "ctrl taking an item out leaves the anchor";
}
