#include "ShellFixture.h"

#include "playback/PlayerWindow.h"
#include "playback/SessionControl.h"
#include "shell/ScreenPlayerPresenter.h"

#include <QTest>

using namespace tb;
using namespace tb::test;

namespace {

struct PresentationTest : ShellFixture {
    // Starts a windowed show of flat-coloured pictures and sizes its window to `box`.
    PlayerWindow* startShow(const QList<std::pair<QColor, QSize>>& pictures, QSize box)
    {
        ContentView& window = openWindow();
        int n = 0;
        for (const auto& [colour, size] : pictures)
            window.queue().append(
                {makeItem(QUrl::fromLocalFile(savePicture(QString::number(n++) + ".png", colour, size)))});
        settings.set(Settings::startInWindowedMode, true);
        settings.set(Settings::isManualMode, true);
        window.session().startCommand();
        PlayerWindow* player = window.presenter().currentWindow();
        player->resize(box);
        return player;
    }

    // Within a few levels: the software renderer may round a finished fade's last step.
    static bool shows(PlayerWindow* player, QColor colour)
    {
        const QColor c = at(player, 320, 240);
        return std::abs(c.red() - colour.red()) <= 3 && std::abs(c.green() - colour.green()) <= 3 &&
               std::abs(c.blue() - colour.blue()) <= 3;
    }

    static QColor at(PlayerWindow* player, int x, int y)
    {
        const QImage frame = player->grabWindow();
        return frame.isNull() ? QColor() : frame.pixelColor(x, y);
    }
};

} // namespace

// Best fit on the real window: a small picture keeps its size, a large one shrinks to fit.
TEST_F(PresentationTest, BestFitKeepsSmallPicturesAndShrinksLargeOnes)
{
    PlayerWindow* player = startShow({{Qt::red, QSize(100, 100)}, {Qt::blue, QSize(4000, 1000)}}, QSize(1000, 800));
    ASSERT_TRUE(QTest::qWaitFor([&] { return at(player, 500, 400) == QColor(Qt::red); }, 5000));
    EXPECT_EQ(at(player, 545, 400), QColor(Qt::red));
    EXPECT_EQ(at(player, 556, 400), QColor(Qt::black)) << "100 × 100 stays 100 × 100";
    EXPECT_EQ(at(player, 500, 456), QColor(Qt::black));

    QTest::keyClick(player, Qt::Key_Right);
    ASSERT_TRUE(QTest::qWaitFor([&] { return at(player, 500, 400) == QColor(Qt::blue); }, 5000));
    EXPECT_EQ(at(player, 5, 400), QColor(Qt::blue)) << "4000 × 1000 fills the width";
    EXPECT_EQ(at(player, 500, 400 - 120), QColor(Qt::blue));
    EXPECT_EQ(at(player, 500, 400 - 130), QColor(Qt::black)) << "and is 250 high";
}

TEST_F(PresentationTest, ACrossFadeShowsBothPicturesMixedMidway)
{
    settings.set(Settings::transitionType, QStringLiteral("Cross-fade"));
    settings.set(Settings::crossfadeDuration, 1.5);
    settings.set(Settings::imageScalingMode, QStringLiteral("Fit (maintain aspect ratio)"));
    PlayerWindow* player = startShow({{Qt::red, QSize(64, 48)}, {Qt::green, QSize(64, 48)}}, QSize(640, 480));
    ASSERT_TRUE(QTest::qWaitFor([&] { return shows(player, Qt::red); }, 5000))
        << at(player, 320, 240).name().toStdString();

    QTest::keyClick(player, Qt::Key_Right);
    const bool mixed = QTest::qWaitFor(
        [&] {
            const QColor c = at(player, 320, 240);
            return c.red() > 60 && c.green() > 60;
        },
        5000);
    EXPECT_TRUE(mixed) << "a frame with both pictures";
    EXPECT_TRUE(QTest::qWaitFor([&] { return shows(player, Qt::green); }, 5000))
        << at(player, 320, 240).name().toStdString();
}
