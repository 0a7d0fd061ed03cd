#include "documents/SettingsBridge.h"
#include "core/SettingsStore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tb;

namespace {

struct BridgeFixture : ::testing::Test {
    QTemporaryDir dir;
    int stores = 0;
    std::unique_ptr<SettingsStore> makeStore()
    {
        return std::make_unique<SettingsStore>(dir.filePath(QStringLiteral("store%1.conf").arg(++stores)));
    }
};

// Every key the document bridge touches, set away from its default.
void fillWithNonDefaults(SettingsStore& store)
{
    using namespace Settings;
    store.set(slideshowDelay, 12.5);
    store.set(displayMode, 2);
    store.set(randomOrder, true);
    store.set(loopSlideshow, true);
    store.set(transitionType, QStringLiteral("Ken Burns"));
    store.set(imageScalingMode, QStringLiteral("Fill (may crop image edges)"));
    store.set(selectedDisplayID, 424242);
    store.set(isManualMode, true);
    store.set(crossfadeDuration, 4.0);
    store.set(overlayEnabled, true);
    store.set(overlayType, QStringLiteral("text"));
    store.set(overlayImageBookmark, QByteArray("bookmark-bytes"));
    store.set(overlayText, QStringLiteral("Summer, 2026"));
    store.set(overlayFontFamily, QStringLiteral("DejaVu Serif"));
    store.set(overlayFontSize, 48.0);
    store.saveColor(overlayFontColorData, QColor(10, 20, 30, 40));
    store.set(overlayPosition, QStringLiteral("topLeft"));
    store.set(overlaySize, QStringLiteral("large"));
    store.set(overlayOpacity, 0.3);
    store.set(overlayMargin, 55.0);
    store.set(syncGridTransitions, true);
    store.set(rememberFolderRecursion, true);
    store.set(folderRecursionDepth, 0);
}

} // namespace

TEST_F(BridgeFixture, SavingThenLoadingCarriesEverySettingIntoAnotherStore)
{
    auto original = makeStore();
    fillWithNonDefaults(*original);
    const SlideshowSettings saved = readSettingsForSaving(*original, QStringLiteral("Name (A-Z)"));
    EXPECT_EQ(saved.selectedSortOption, QStringLiteral("Name (A-Z)"));
    EXPECT_EQ(saved.includeSubdirectories, false);

    auto restored = makeStore();
    applyLoadedSettings(*restored, saved);
    EXPECT_EQ(readSettingsForSaving(*restored, QStringLiteral("Name (A-Z)")), saved);

    for (const char* key : {"slideshowDelay",      "displayMode",
                            "randomOrder",         "loopSlideshow",
                            "transitionType",      "imageScalingMode",
                            "selectedDisplayID",   "isManualMode",
                            "crossfadeDuration",   "overlayEnabled",
                            "overlayType",         "overlayImageBookmark",
                            "overlayText",         "overlayFontFamily",
                            "overlayFontSize",     "overlayFontColorData",
                            "overlayPosition",     "overlaySize",
                            "overlayOpacity",      "overlayMargin",
                            "syncGridTransitions", "rememberFolderRecursion",
                            "folderRecursionDepth"}) {
        const QString name = QString::fromLatin1(key);
        EXPECT_EQ(restored->stringForKey(name).value_or(QString()) + restored->dataForKey(name).value_or(QByteArray()),
                  original->stringForKey(name).value_or(QString()) + original->dataForKey(name).value_or(QByteArray()))
            << key;
        EXPECT_EQ(restored->doubleForKey(name), original->doubleForKey(name)) << key;
    }
}

TEST_F(BridgeFixture, AnUntouchedStoreIsSavedWithPlainReadsAndZeroSizesAsMissing)
{
    auto store = makeStore();
    const SlideshowSettings s = readSettingsForSaving(*store, QStringLiteral("Date"));
    EXPECT_EQ(s.slideshowDelay, 0.0) << "a never-set delay is saved as 0";
    EXPECT_EQ(s.transitionType, QStringLiteral("-"));
    EXPECT_EQ(s.imageScalingMode, QStringLiteral("Fit (maintain aspect ratio)"));
    EXPECT_EQ(s.crossfadeDuration, 1.0);
    EXPECT_EQ(s.isManualMode, false);
    EXPECT_EQ(s.overlayEnabled, false);
    EXPECT_EQ(s.syncGridTransitions, false);
    EXPECT_EQ(s.overlayType, std::nullopt);
    EXPECT_EQ(s.overlayFontSize, std::nullopt);
    EXPECT_EQ(s.overlayMargin, std::nullopt);

    store->set(Settings::overlayMargin, 0.0);
    store->set(Settings::overlayOpacity, 0.0);
    store->set(Settings::overlayFontSize, 0.0);
    store->set(Settings::crossfadeDuration, 0.0);
    const SlideshowSettings saved = readSettingsForSaving(*store, QString());
    EXPECT_EQ(saved.overlayMargin, std::nullopt);
    EXPECT_EQ(saved.crossfadeDuration, 1.0);

    // The document's delay of 0 is applied as it stands; the missing sizes come back as defaults.
    applyLoadedSettings(*store, saved);
    EXPECT_EQ(store->value(Settings::slideshowDelay), 0.0);
    EXPECT_EQ(store->value(Settings::overlayMargin), 20.0);
    EXPECT_EQ(store->value(Settings::overlayOpacity), 0.8);
    EXPECT_EQ(store->value(Settings::overlayFontSize), 24.0);
    EXPECT_EQ(store->value(Settings::crossfadeDuration), 1.0);
}

TEST_F(BridgeFixture, TheRememberedSubfolderAnswerTravelsOnlyWhenRemembered)
{
    auto store = makeStore();
    store->set(Settings::folderRecursionDepth, -1);
    EXPECT_EQ(readSettingsForSaving(*store, QString()).includeSubdirectories, std::nullopt)
        << "not remembered: not saved";
    store->set(Settings::rememberFolderRecursion, true);
    EXPECT_EQ(readSettingsForSaving(*store, QString()).includeSubdirectories, true);
    store->set(Settings::folderRecursionDepth, 3);
    EXPECT_EQ(readSettingsForSaving(*store, QString()).includeSubdirectories, false);

    // A document without the answer leaves the stored one alone.
    auto target = makeStore();
    target->set(Settings::rememberFolderRecursion, false);
    target->set(Settings::folderRecursionDepth, 0);
    SlideshowSettings document;
    applyLoadedSettings(*target, document);
    EXPECT_FALSE(target->value(Settings::rememberFolderRecursion));
    EXPECT_EQ(target->value(Settings::folderRecursionDepth), 0);

    document.includeSubdirectories = true;
    applyLoadedSettings(*target, document);
    EXPECT_TRUE(target->value(Settings::rememberFolderRecursion));
    EXPECT_EQ(target->value(Settings::folderRecursionDepth), -1);
    document.includeSubdirectories = false;
    applyLoadedSettings(*target, document);
    EXPECT_EQ(target->value(Settings::folderRecursionDepth), 0);
}

TEST_F(BridgeFixture, WhatADocumentLeavesOutKeepsTheStoresOwnOrFallsBackToTheDefault)
{
    auto store = makeStore();
    fillWithNonDefaults(*store);
    store->saveColor(Settings::backgroundColorData, Qt::darkBlue);
    store->set(Settings::startInWindowedMode, true);
    const SlideshowSettings saved = readSettingsForSaving(*store, QString());
    EXPECT_EQ(saved.backgroundColorData, std::nullopt) << "never saved";
    EXPECT_EQ(saved.startInWindowedMode, std::nullopt) << "never saved";

    SlideshowSettings document; // an old document: only the required fields
    document.transitionType = QStringLiteral("Cross-fade");
    applyLoadedSettings(*store, document);
    EXPECT_EQ(store->loadColor(Settings::backgroundColorData, Qt::black), QColor(Qt::darkBlue));
    EXPECT_EQ(store->value(Settings::overlayImageBookmark), QByteArray("bookmark-bytes"));
    EXPECT_EQ(store->loadColor(Settings::overlayFontColorData, Qt::white), QColor(10, 20, 30, 40));
    EXPECT_FALSE(store->value(Settings::startInWindowedMode));
    EXPECT_EQ(store->value(Settings::overlayText), QString()) << "other optional fields take their defaults";
    EXPECT_EQ(store->value(Settings::overlayPosition), QStringLiteral("bottomRight"));
    EXPECT_FALSE(store->value(Settings::isManualMode));

    document.backgroundColorData = SettingsStore::colorBytes(Qt::red);
    document.startInWindowedMode = true;
    applyLoadedSettings(*store, document);
    EXPECT_EQ(store->loadColor(Settings::backgroundColorData, Qt::black), QColor(Qt::red));
    EXPECT_TRUE(store->value(Settings::startInWindowedMode));

    // Clearing the overlay image removes the key, so the next save has no such field.
    store->remove(Settings::overlayImageBookmark);
    EXPECT_EQ(readSettingsForSaving(*store, QString()).overlayImageBookmark, std::nullopt);
}
