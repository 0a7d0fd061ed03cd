#include "ShellFixture.h"

#include "shell/QueueModel.h"
#include "shell/QueueTableModel.h"
#include "shell/QueueView.h"

#include <QAbstractItemModelTester>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace tb;
using namespace tb::test;

namespace {

struct QueueViewTest : ShellFixture {
    FakeCaches caches;
    Queue queue;
    std::unique_ptr<QueueModel> model;
    std::unique_ptr<QueueView> view;

    void show(int items)
    {
        queue.replaceAll(makeQueue(items));
        model = std::make_unique<QueueModel>(queue, caches);
        view = std::make_unique<QueueView>(*model, settings);
        view->resize(900, 600);
        view->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        QCoreApplication::processEvents();
    }
    QPoint centreOf(int row) { return view->visualRect(model->index(row)).center(); }
    // The queue's order as the first letters of its file names.
    QString order() const
    {
        QString letters;
        for (const auto& item : queue.items())
            letters += item.filename().left(1);
        return letters;
    }
};

} // namespace

TEST_F(QueueViewTest, TenThousandItemsAskOnlyForTheVisibleThumbnails)
{
    show(10000);
    ASSERT_TRUE(QTest::qWaitFor([this] { return model->thumbnailRequests() > 0; }, 5000));
    // These files do not exist: once every request has been tried, a cell drawn again does not
    // ask again for what failed. (The first layout may reflow once the scroll bar shows.)
    const auto settled = [&] {
        const int asked = model->thumbnailRequests();
        QCoreApplication::processEvents();
        return asked == model->thumbnailRequests() && caches.thumbnailRequests == asked;
    };
    ASSERT_TRUE(QTest::qWaitFor(settled, 5000));
    const int firstScreen = model->thumbnailRequests();
    EXPECT_LT(firstScreen, 60) << "a 900 × 600 grid shows about twenty cells";
    QCoreApplication::processEvents();
    view->viewport()->repaint();
    EXPECT_EQ(model->thumbnailRequests(), firstScreen);

    // The layout is made in batches; jump to the end once it reaches there.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum());
            return view->indexAt(QPoint(80, 80)).row() > 9900;
        },
        10000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return model->thumbnailRequests() > firstScreen; }, 5000));
    EXPECT_LT(model->thumbnailRequests(), 200) << "jumping to the end skips everything between";
}

TEST_F(QueueViewTest, ClicksSelectByTheQueuesRules)
{
    show(8);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, centreOf(0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, centreOf(2));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, centreOf(1));
    EXPECT_EQ(queue.selectedIds(), (QSet<QUuid>{queue.at(0).id(), queue.at(1).id(), queue.at(2).id()}));
    EXPECT_TRUE(model->index(1).data(QueueModel::IsSelectedRole).toBool());

    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, centreOf(1));
    EXPECT_TRUE(queue.selectedIds().isEmpty()) << "a plain click on a selected cell clears all";

    // Pressing on one cell and letting go over another is no click: a drag selects nothing.
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, centreOf(3));
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, centreOf(4));
    EXPECT_TRUE(queue.selectedIds().isEmpty());
}

// Columns of at least 150 points share the width, leaving no empty strip at the right.
TEST_F(QueueViewTest, ColumnsShareTheWidth)
{
    show(60); // enough rows for the scroll bar, which narrows the viewport
    for (int width : {900, 700, 1333}) {
        view->resize(width, 600);
        ASSERT_TRUE(QTest::qWaitFor([&] { return view->visualRect(model->index(59)).isValid(); }, 5000));
        QCoreApplication::processEvents();
        int columns = 0;
        while (view->visualRect(model->index(columns)).top() == view->visualRect(model->index(0)).top())
            ++columns;
        const int cell = view->gridSize().width();
        EXPECT_GE(cell, QueueModel::cellSide + 10);
        EXPECT_EQ(columns, (view->viewport()->width() - 1) / (QueueModel::cellSide + 10)) << "as many as fit";
        EXPECT_LE(view->viewport()->width() - columns * cell, columns) << "at most a point per column is left over";
    }
}

TEST_F(QueueViewTest, DroppingACellOnAnotherMovesItThere)
{
    show(4);
    const QUuid a = queue.at(0).id();
    auto dropOnto = [&](const QUuid& dragged, int row) {
        QMimeData mime;
        mime.setText(dragged.toString(QUuid::WithoutBraces));
        QDragEnterEvent enter(centreOf(row), Qt::MoveAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view->viewport(), &enter);
        QDragMoveEvent move(centreOf(row), Qt::MoveAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view->viewport(), &move);
        QDropEvent drop(QPointF(centreOf(row)), Qt::MoveAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view->viewport(), &drop);
    };
    const QString before = order();
    dropOnto(a, 2);
    const QString after = order();
    EXPECT_EQ(after, QString(before[1]) + before[2] + before[0] + before[3]) << "A onto C gives B, C, A, D";

    const int moved = int(queue.indexOf(a));
    EXPECT_TRUE(view->isMoving(model->index(moved))) << "the moved cell glides to its place";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !view->isMoving(model->index(moved)); }, 5000));
    EXPECT_FALSE(view->dropTarget().isValid()) << "the target's outline goes with the drop";

    // Hovering outlines the cell an item would land on.
    QMimeData hovering;
    hovering.setText(a.toString(QUuid::WithoutBraces));
    QDragEnterEvent enter(centreOf(3), Qt::MoveAction, &hovering, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view->viewport(), &enter);
    QDragMoveEvent over(centreOf(3), Qt::MoveAction, &hovering, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view->viewport(), &over);
    EXPECT_EQ(view->dropTarget(), model->index(3));
    QDragLeaveEvent away;
    QCoreApplication::sendEvent(view->viewport(), &away);
    EXPECT_FALSE(view->dropTarget().isValid());

    dropOnto(QUuid::createUuid(), 1);
    EXPECT_EQ(order(), after) << "an unknown id is lost";
}

// The grid and the table follow every kind of change without a reset, and stay consistent
// models throughout (the tester checks each signal against the rows it names).
TEST(QueueModels, FollowTheQueuesChangesRowByRow)
{
    Queue queue;
    FakeCaches caches;
    QueueModel grid(queue, caches);
    QueueTableModel table(queue);
    QAbstractItemModelTester gridCheck(&grid, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QAbstractItemModelTester tableCheck(&table, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy resets(&table, &QAbstractItemModel::modelReset);

    for (int batch = 0; batch < 3; ++batch)
        queue.append(makeQueue(50));
    queue.insert(1, makeQueue(2));
    const QUuid moved = queue.at(0).id();
    queue.move(moved, queue.at(100).id());
    queue.setStartingImageId(moved);
    QSet<QUuid> everyThird;
    for (int i = 0; i < queue.size(); i += 3)
        everyThird.insert(queue.at(i).id());
    queue.remove(everyThird);

    EXPECT_EQ(resets.size(), 0);
    ASSERT_EQ(grid.rowCount(), int(queue.size()));
    ASSERT_EQ(table.rowCount(), int(queue.size()));
    const int row = int(queue.indexOf(moved));
    ASSERT_GE(row, 0);
    EXPECT_EQ(grid.index(row).data(QueueModel::ItemIdRole).toUuid(), moved);
    EXPECT_TRUE(grid.index(row).data(QueueModel::IsStartRole).toBool());
    EXPECT_TRUE(table.index(row, 0).data().toString().startsWith(QStringLiteral("📌")));
}

// The grid's and the table's menus share this entry.
TEST(QueueMenus, TheStartingPointEntryPinsAndUnpins)
{
    Queue queue;
    queue.append(makeQueue(2));
    const QUuid first = queue.at(0).id();
    for (const char* expected : {"Start Slideshow Here", "Clear Starting Point"}) {
        QMenu menu;
        addStartingPointEntry(menu, queue, first);
        ASSERT_EQ(menu.actions().size(), 1);
        EXPECT_EQ(menu.actions()[0]->text(), QLatin1String(expected));
        menu.actions()[0]->trigger();
    }
    EXPECT_FALSE(queue.startingImageId()) << "pinned, then unpinned";
}
