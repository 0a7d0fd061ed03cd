#include "export/ExportPlan.h"
#include "support/PlaybackDoubles.h"

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {
struct PlanRow {
    int images;
    double delay;
    TransitionType type;
    int soloFrames;
    int transitionFrames;
    int totalFrames;
    double videoDuration;
    const char* estimate;
};
} // namespace

TEST(FramePlan, FramesAndTheEstimateComeFromOneTimeline)
{
    const PlanRow rows[] = {
        {3, 5.0, TransitionType::fade, 126, 24, 3 * 126 + 2 * 24, 14.2, "14s"},
        {5, 5.0, TransitionType::none, 150, 0, 750, 25.0, "25s"},
        // A one-second delay leaves a solo of 0.19999999999999996 s: 5 frames, not 6.
        {2, 1.0, TransitionType::kenBurns, 5, 24, 34, 0.19999999999999996 * 2 + 0.8, "1s"},
        // A delay shorter than the transition still gives every picture 0.1 s of its own.
        {2, 0.5, TransitionType::fade, 3, 24, 30, 1.0, "1s"},
        {1, 5.0, TransitionType::fade, 126, 24, 126, 4.2, "4s"},
        {0, 5.0, TransitionType::fade, 126, 24, 0, 0.0, "0s"},
        {1000, 3.6, TransitionType::fade, 84, 24, 1000 * 84 + 999 * 24, 2.8 * 1000 + 0.8 * 999, "59m 59s"},
    };
    for (const PlanRow& row : rows) {
        const FramePlan plan(row.images, row.delay, row.type);
        SCOPED_TRACE(testing::Message() << row.images << " images, delay " << row.delay);
        EXPECT_EQ(plan.soloFrames, row.soloFrames);
        EXPECT_EQ(plan.transitionFrames, row.transitionFrames);
        EXPECT_EQ(plan.totalFrames, row.totalFrames);
        EXPECT_NEAR(plan.videoDuration, row.videoDuration, 1e-9);
        EXPECT_EQ(formatDuration(plan.videoDuration), QString::fromUtf8(row.estimate));
        const auto solos = plan.soloSpans();
        ASSERT_EQ(solos.size(), size_t(row.images));
        if (!solos.empty()) {
            EXPECT_EQ(solos.back().first + solos.back().count, row.totalFrames) << "the last picture ends the movie";
        }
    }
    const std::vector<FrameSpan> fades = {{0, 126}, {150, 126}, {300, 126}};
    EXPECT_EQ(FramePlan(3, 5.0, TransitionType::fade).soloSpans(), fades) << "each behind its picture's fade";
}

TEST(FramePlan, DurationsReadAsTheyAreRounded)
{
    const std::pair<double, const char*> rows[] = {
        {59.4, "59s"},   {59.5, "1m"},       {125.0, "2m 5s"},     {3599.6, "1h"},
        {3660, "1h 1m"}, {3605, "1h 0m 5s"}, {7322.0, "2h 2m 2s"}, {0.4, "0s"},
    };
    for (const auto& [seconds, text] : rows)
        EXPECT_EQ(formatDuration(seconds), QString::fromUtf8(text)) << seconds;
}

TEST(ExportPanelLines, WarningsAndTheSoundTrack)
{
    QList<IdentifiableImage> queue = makeQueue(2);
    queue.append(IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile("/c.mp4"), "c.mp4", "/", std::nullopt,
                                   false, true, 4.0));
    EXPECT_EQ(includedImages(queue).size(), 2);
    EXPECT_EQ(exportWarning(2, 1), QString::fromUtf8("1 video will be skipped — only images can be exported."));
    EXPECT_EQ(exportWarning(2, 3), QString::fromUtf8("3 videos will be skipped — only images can be exported."));
    EXPECT_EQ(exportWarning(0, 3),
              QString::fromUtf8("Cannot export — no images to include. Videos are not yet supported."));
    EXPECT_EQ(exportWarning(2, 0), QString());

    AudioTrack track = AudioTrack::fromFile(QUrl::fromLocalFile("/a.mp3"), 25.0);
    EXPECT_EQ(exportAudioLine({}, true), QStringLiteral("Audio: no tracks added"));
    EXPECT_EQ(exportAudioLine({track}, true), QString::fromUtf8("Audio: 1 track • 25.0s • Looping ON"));
    AudioTrack unknown = AudioTrack::fromFile(QUrl::fromLocalFile("/b.mp3"), std::nullopt);
    EXPECT_EQ(exportAudioLine({track, unknown}, false), QString::fromUtf8("Audio: 2 tracks • 25.0s"));
}

TEST(ExportOrder, TheSelectedPictureOpensTheMovieAndTheRestKeepsItsOrder)
{
    const QList<IdentifiableImage> queue = makeQueue(6);
    const auto names = [](const QList<IdentifiableImage>& items) {
        QStringList result;
        for (const IdentifiableImage& item : items)
            result.append(item.filename());
        return result;
    };
    SeededRandom random(4);
    EXPECT_EQ(names(makeExportOrder(queue, false, random, queue[3].id())),
              (QStringList{"3.jpg", "0.jpg", "1.jpg", "2.jpg", "4.jpg", "5.jpg"}))
        << "moved to the front, not swapped with the first";
    EXPECT_EQ(makeExportOrder(queue, false, random, QUuid::createUuid()).size(), 6);
    EXPECT_EQ(names(makeExportOrder(queue, false, random, std::nullopt)), names(queue));

    QSet<QStringList> shuffles;
    for (std::uint64_t seed = 1; seed <= 8; ++seed) {
        SeededRandom dice(seed);
        const QStringList order = names(makeExportOrder(queue, true, dice, queue[5].id()));
        EXPECT_EQ(order.first(), QStringLiteral("5.jpg"));
        EXPECT_EQ(QSet<QString>(order.cbegin(), order.cend()).size(), 6);
        shuffles.insert(order);
    }
    EXPECT_GT(shuffles.size(), 4) << "the rest is shuffled anew each time";
}
