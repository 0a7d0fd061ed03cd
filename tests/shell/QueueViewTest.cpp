#include "ShellFixture.h"

#include "shell/QueueModel.h"
#include "shell/QueueView.h"

#include <QMimeData>
#include <QScrollBar>
#include <QTest>

using namespace tb;
using namespace tb::test;

namespace {

struct QueueViewTest : ShellFixture {
    QList<IdentifiableImage> queue;
    std::unique_ptr<QueueModel> model;
    std::unique_ptr<QueueView> view;

    void show(int items)
    {
        queue = makeQueue(items);
        model = std::make_unique<QueueModel>(queue, caches);
        view = std::make_unique<QueueView>(*model, settings);
        view->resize(900, 600);
        view->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        QCoreApplication::processEvents();
    }
    QPoint centreOf(int row) { return view->visualRect(model->index(row)).center(); }
};

} // namespace

TEST_F(QueueViewTest, TenThousandItemsAskOnlyForTheVisibleThumbnails)
{
    show(10000);
    ASSERT_TRUE(QTest::qWaitFor([this] { return model->thumbnailRequests() > 0; }, 5000));
    const int firstScreen = model->thumbnailRequests();
    EXPECT_LT(firstScreen, 60) << "a 900 × 600 grid shows about twenty cells";
    // These files do not exist: a cell drawn again does not ask again for what failed.
    ASSERT_TRUE(QTest::qWaitFor([&] { return caches.thumbnailRequests == firstScreen; }, 5000));
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
    EXPECT_EQ(model->selection.selectedIds, (QSet<QUuid>{queue[0].id(), queue[1].id(), queue[2].id()}));
    EXPECT_TRUE(model->index(1).data(QueueModel::IsSelectedRole).toBool());

    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, centreOf(1));
    EXPECT_TRUE(model->selection.selectedIds.isEmpty()) << "a plain click on a selected cell clears all";
}

TEST_F(QueueViewTest, DroppingACellOnAnotherMovesItThere)
{
    show(4);
    const QUuid a = queue[0].id();
    auto dropOnto = [&](const QUuid& dragged, int row) {
        QMimeData mime;
        mime.setText(dragged.toString(QUuid::WithoutBraces));
        // As a drag arrives: enter, move, drop.
        QDragEnterEvent enter(centreOf(row), Qt::MoveAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view->viewport(), &enter);
        QDragMoveEvent move(centreOf(row), Qt::MoveAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view->viewport(), &move);
        QDropEvent drop(QPointF(centreOf(row)), Qt::MoveAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(view->viewport(), &drop);
    };
    QString before;
    for (const auto& item : queue)
        before += item.filename().left(1);
    dropOnto(a, 2);
    QString after;
    for (const auto& item : queue)
        after += item.filename().left(1);
    EXPECT_EQ(after, QString(before[1]) + before[2] + before[0] + before[3]) << "A onto C gives B, C, A, D";

    dropOnto(QUuid::createUuid(), 1);
    QString unchanged;
    for (const auto& item : queue)
        unchanged += item.filename().left(1);
    EXPECT_EQ(unchanged, after) << "an unknown id is lost";
}
