#include "core/SettingsStore.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;

namespace {

struct SettingsStoreFixture : ::testing::Test {
    QTemporaryDir dir;
    QString path() const { return dir.filePath(QStringLiteral("Tallowbrook.conf")); }
};

} // namespace

TEST_F(SettingsStoreFixture, AnEmptyStoreReadsAsEachReadersDefault)
{
    SettingsStore store(path());
    using namespace Settings;
    EXPECT_EQ(store.value(slideshowDelay), 3.0);
    EXPECT_EQ(store.value(displayMode), 0);
    EXPECT_FALSE(store.value(randomOrder));
    EXPECT_FALSE(store.value(loopSlideshow));
    EXPECT_EQ(store.value(transitionType), QStringLiteral("-"));
    EXPECT_EQ(store.value(imageScalingMode), QStringLiteral("Best Fit (no upscaling)"));
    EXPECT_FALSE(store.value(overlayEnabled));
    EXPECT_TRUE(store.value(useFadingTransition));
    EXPECT_EQ(store.value(folderRecursionDepth), -1);
    // One key, two readers: the main window and the Playback tab disagree on purpose.
    EXPECT_EQ(store.value(crossfadeDuration, mainWindowCrossfadeDuration), 2.0);
    EXPECT_EQ(store.value(crossfadeDuration), 1.0);
    EXPECT_EQ(store.loadColor(backgroundColorData, Qt::black), QColor(Qt::black));
    EXPECT_EQ(store.loadColor(overlayFontColorData, Qt::white), QColor(Qt::white));

    // Plain reads know no defaults.
    EXPECT_EQ(store.doubleForKey(QStringLiteral("slideshowDelay")), 0.0);
    EXPECT_EQ(store.integerForKey(QStringLiteral("folderRecursionDepth")), 0);
    EXPECT_FALSE(store.boolForKey(QStringLiteral("useFadingTransition")));
    EXPECT_EQ(store.stringForKey(QStringLiteral("transitionType")), std::nullopt);
    EXPECT_EQ(store.dataForKey(QStringLiteral("overlayImageBookmark")), std::nullopt);
}

TEST_F(SettingsStoreFixture, ValuesSurviveARestartWithTheirTypes)
{
    using namespace Settings;
    const QByteArray bookmark("\x00\x01\xff binary \n", 13);
    {
        SettingsStore store(path());
        store.set(slideshowDelay, 7.25);
        store.set(displayMode, 3);
        store.set(randomOrder, true);
        store.set(folderRecursionDepth, 0);
        store.set(overlayText, QStringLiteral("Hello, world = \"quoted\" ; ü"));
        store.set(overlayImageBookmark, bookmark);
        store.sync();
    }
    SettingsStore store(path());
    EXPECT_EQ(store.value(slideshowDelay), 7.25);
    EXPECT_EQ(store.doubleForKey(QStringLiteral("slideshowDelay")), 7.25);
    EXPECT_EQ(store.value(displayMode), 3);
    EXPECT_TRUE(store.value(randomOrder));
    EXPECT_TRUE(store.boolForKey(QStringLiteral("randomOrder")));
    EXPECT_EQ(store.value(folderRecursionDepth), 0) << "a stored 0 is not the absent -1";
    EXPECT_EQ(store.value(overlayText), QStringLiteral("Hello, world = \"quoted\" ; ü"));
    EXPECT_EQ(store.value(overlayImageBookmark), bookmark);
}

TEST_F(SettingsStoreFixture, UnreadableValuesFallBackToTheReadersDefault)
{
    SettingsStore store(path());
    store.setString(QStringLiteral("slideshowDelay"), QStringLiteral("soon"));
    store.setString(QStringLiteral("randomOrder"), QStringLiteral("maybe"));
    store.setString(QStringLiteral("displayMode"), QStringLiteral("2.9"));
    EXPECT_EQ(store.value(Settings::slideshowDelay), 3.0);
    EXPECT_EQ(store.doubleForKey(QStringLiteral("slideshowDelay")), 0.0);
    EXPECT_TRUE(store.value(Settings::randomOrder, true));
    EXPECT_EQ(store.value(Settings::displayMode), 2) << "a real number reads as its whole part";
    store.setDouble(QStringLiteral("transitionType"), 2.0);
    EXPECT_EQ(store.value(Settings::transitionType), QStringLiteral("-")) << "not a string";
}

TEST_F(SettingsStoreFixture, ChangedIsEmittedForEachRealChange)
{
    SettingsStore store(path());
    QSignalSpy spy(&store, &SettingsStore::changed);
    store.set(Settings::slideshowDelay, 5.0);
    store.set(Settings::slideshowDelay, 5.0); // same value: no change
    store.set(Settings::slideshowDelay, 6.0);
    store.remove(QStringLiteral("slideshowDelay"));
    store.remove(QStringLiteral("slideshowDelay"));           // already gone
    store.saveColor(Settings::backgroundColorData, QColor()); // invalid: nothing stored
    ASSERT_EQ(spy.count(), 3);
    for (const auto& args : spy)
        EXPECT_EQ(args.at(0).toString(), QStringLiteral("slideshowDelay"));
    EXPECT_FALSE(store.contains(QStringLiteral("backgroundColorData")));
}

TEST_F(SettingsStoreFixture, ColoursKeepTheirBytesAndBadBytesReadAsTheDefault)
{
    SettingsStore store(path());
    const QColor translucentRed(255, 0, 0, 128);
    store.saveColor(Settings::overlayFontColorData, translucentRed);
    EXPECT_EQ(store.value(Settings::overlayFontColorData), QByteArray("#80FF0000"));
    EXPECT_EQ(store.loadColor(Settings::overlayFontColorData, Qt::white), translucentRed);

    store.saveColor(Settings::overlayFontColorData, QColor());
    EXPECT_EQ(store.loadColor(Settings::overlayFontColorData, Qt::white), translucentRed)
        << "a colour that cannot be stored leaves the key as it was";

    for (const QByteArray& bad : {QByteArray("#80FF00"), QByteArray("80FF0000x"), QByteArray("#80FF00ZZ"),
                                  QByteArray("#+0FF0000"), QByteArray()}) {
        store.setData(QStringLiteral("backgroundColorData"), bad);
        EXPECT_EQ(store.loadColor(Settings::backgroundColorData, Qt::black), QColor(Qt::black)) << bad.constData();
    }
    EXPECT_EQ(SettingsStore::colorFromBytes("#ff00ff00"), QColor(0, 255, 0)) << "lower case reads too";
}
