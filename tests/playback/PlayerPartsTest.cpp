#include "core/ManualScheduler.h"
#include "playback/Countdown.h"
#include "playback/CursorHider.h"
#include "playback/PictureProvider.h"
#include "playback/SlidePresentation.h"
#include "playback/ViewHistory.h"
#include "support/PlaybackDoubles.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

TEST(ViewHistory, KeepsTheLastHundredAndDropsWhatCameAfterAStepBack)
{
    ViewHistory history;
    history.begin(0);
    for (int i = 1; i <= 100; ++i)
        history.record(i % 7);
    EXPECT_EQ(history.entries().size(), ViewHistory::limit) << "101 entries, the oldest dropped";
    EXPECT_EQ(history.position(), ViewHistory::limit - 1);
    EXPECT_TRUE(history.atEnd());

    EXPECT_EQ(history.back(), 99 % 7);
    EXPECT_EQ(history.back(), 98 % 7);
    EXPECT_EQ(history.forward(), 99 % 7);
    history.record(5);
    EXPECT_EQ(history.entries().size(), ViewHistory::limit) << "the entry after the position was replaced";
    EXPECT_EQ(history.entries().last(), 5);
    EXPECT_FALSE(history.forward());

    ViewHistory single;
    single.begin(3);
    EXPECT_FALSE(single.back()) << "no wrap at the start";
    EXPECT_EQ(single.viewed(), QSet<int>{3});
}

// The time left is read from a deadline: a pause between ticks keeps the exact time left, and
// the display ticks never add up to more or less than the clock.
TEST(Countdown, CountsAgainstTheClockAndStandsStillWhileFrozen)
{
    ManualScheduler scheduler;
    bool running = true;
    int changes = 0;
    Countdown countdown(
        scheduler, 3.0, [&] { return running; }, [&] { ++changes; });
    countdown.start();
    scheduler.advance(1.25);
    EXPECT_NEAR(countdown.remaining(), 1.8, 1e-9) << "the last tick was at 1.2 s";
    countdown.freeze();
    EXPECT_NEAR(countdown.remaining(), 1.75, 1e-9) << "a pause keeps the exact time left";
    scheduler.advance(10);
    EXPECT_NEAR(countdown.remaining(), 1.75, 1e-9);
    countdown.start();
    scheduler.advance(1);
    EXPECT_DOUBLE_EQ(countdown.remaining(), 3.0) << "a new item while frozen: full, and standing still";
    countdown.resume();
    scheduler.advance(2.5);
    EXPECT_NEAR(countdown.remaining(), 0.5, 1e-9);
    scheduler.advance(5);
    EXPECT_EQ(countdown.remaining(), 0.0);

    running = false;
    countdown.start();
    scheduler.advance(1);
    EXPECT_EQ(countdown.remaining(), 3.0) << "a show that is not running shows no progress";
    countdown.stop();
    EXPECT_EQ(scheduler.pendingCount(), 0);
    EXPECT_GT(changes, 20);
}

TEST(SlidePresentation, TheViewFollowsTheItemAndTheSettingsWithoutReadingTheFile)
{
    auto item = [](const char* name, bool isGif, bool isVideo) {
        return IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(QStringLiteral("/gone/") + name),
                                 QString::fromLatin1(name), QStringLiteral("/gone"), std::nullopt, isGif, isVideo,
                                 isVideo ? std::optional<double>(3.0) : std::nullopt);
    };
    const IdentifiableImage clip = item("c.mp4", false, true), gif = item("g.gif", true, false),
                            photo = item("p.jpg", false, false);
    struct Row {
        TransitionType transition;
        ImageScalingMode scaling;
        const char* clip;
        const char* gif;
        const char* photo;
    };
    SeededRandom random;
    for (const Row& row : {Row{TransitionType::kenBurns, ImageScalingMode::fit, "video", "gif", "kenBurns"},
                           Row{TransitionType::fade, ImageScalingMode::bestFit, "video", "gif", "bestFit"},
                           Row{TransitionType::none, ImageScalingMode::fill, "video", "gif", "fill"},
                           Row{TransitionType::none, ImageScalingMode::fit, "video", "gif", "fit"}}) {
        auto kind = [&](const IdentifiableImage* i) {
            return SlidePresentation::choose(i, row.transition, row.scaling, random).kind;
        };
        EXPECT_EQ(kind(&clip), QLatin1String(row.clip));
        EXPECT_EQ(kind(&gif), QLatin1String(row.gif));
        EXPECT_EQ(kind(&photo), QLatin1String(row.photo));
        EXPECT_EQ(kind(nullptr), QLatin1String("none"));
    }
    const SlidePresentation moving =
        SlidePresentation::choose(&photo, TransitionType::kenBurns, ImageScalingMode::fit, random);
    EXPECT_GE(moving.kenBurnsScale, 1.1);
    EXPECT_LE(moving.kenBurnsScale, 1.25);
    EXPECT_LE(std::abs(moving.kenBurnsOffset.x()), 30.0);
    EXPECT_LE(std::abs(moving.kenBurnsOffset.y()), 30.0);
    EXPECT_EQ(moving.source, PictureProvider::sourceFor(photo.url(), false));
    EXPECT_EQ(SlidePresentation::choose(&clip, TransitionType::none, ImageScalingMode::fit, random).source,
              PictureProvider::sourceFor(clip.url(), true))
        << "a clip shows its poster frame";
}

// The pointer hides after a second without input, comes back when it moves, and the hider leaves
// no hidden pointer or watching filter behind.
TEST(CursorHider, HidesAfterASecondWithoutInput)
{
    ManualScheduler scheduler;
    bool fullScreen = true;
    QWindow window;
    auto hider = std::make_unique<CursorHider>(scheduler, [&] { return fullScreen; });
    const auto send = [&](QEvent::Type type) {
        if (type == QEvent::KeyPress) {
            QKeyEvent key(type, Qt::Key_A, Qt::NoModifier);
            QCoreApplication::sendEvent(&window, &key);
        } else if (type == QEvent::MouseMove) {
            QMouseEvent move(type, QPointF(5, 5), QPointF(5, 5), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&window, &move);
        } else {
            QEvent other(type);
            QCoreApplication::sendEvent(&window, &other);
        }
    };
    const auto blank = [] {
        return QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::BlankCursor;
    };

    scheduler.advance(0.6);
    send(QEvent::KeyPress);
    scheduler.advance(0.6);
    EXPECT_FALSE(hider->isHidden()) << "a key restarts the second";
    send(QEvent::UpdateRequest);
    scheduler.advance(0.4);
    EXPECT_TRUE(hider->isHidden()) << "a repaint is not input";
    EXPECT_TRUE(blank());

    send(QEvent::MouseMove);
    EXPECT_FALSE(hider->isHidden());
    EXPECT_FALSE(blank());
    fullScreen = false;
    scheduler.advance(1.0);
    EXPECT_FALSE(hider->isHidden()) << "a windowed show keeps its pointer";

    fullScreen = true;
    send(QEvent::MouseMove);
    scheduler.advance(1.0);
    ASSERT_TRUE(hider->isHidden());
    hider.reset();
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(scheduler.pendingCount(), 0);
}
