#include "documents/DocumentCodec.h"
#include "support/QtPrinting.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace tb;

namespace {

// A small valid document, as text, for the tables to bend. Slashes appear in both forms.
const char* const validText = R"json({
  "version": "1.0",
  "metadata": {"createdDate": "2026-01-31T09:15:02Z", "appVersion": "0.3.0", "totalImages": 1,
               "totalAudioTracks": 1, "createdBy": "Tallowbrook for Linux"},
  "settings": {"slideshowDelay": 2.5, "gridOptionRaw": 0, "randomOrder": false, "loopSlideshow": true,
               "transitionType": "Cross-fade", "imageScalingMode": "Best Fit (no upscaling)",
               "selectedDisplayID": 0, "selectedSortOption": "-", "overlayFontColorData": "I0ZGRkZGRkZG"},
  "images": [{"id": "5C9A4C0E-7D0B-4E57-9D3C-3F0E3F8B2A11", "filename": "a.jpg",
              "originalPath": "\/home\/ann\/Shows\/pics\/a.jpg", "relativePath": "pics/a.jpg", "isGIF": false,
              "creationDate": "2026-01-30T08:00:00Z", "bookmarkData": "AAEC", "isVideo": false}],
  "audioTracks": [{"id": "0E7A1F4B-2C3D-4E5F-8A9B-0C1D2E3F4A5B", "filename": "song.mp3",
                   "originalPath": "/home/ann/song.mp3", "duration": 61.5}],
  "audioSettings": {"volume": 0.5, "isLooping": false, "currentTrackIndex": 0},
  "liveModeSettings": {"isActive": false, "newPhotosBehavior": "queue"}
})json";

QJsonObject validObject() { return QJsonDocument::fromJson(validText).object(); }

// The valid document with one change at a key path ("images.0.isGIF"); an undefined value removes
// the key.
QByteArray bent(const QString& path, const QJsonValue& value)
{
    const QStringList keys = path.split(QLatin1Char('.'));
    std::function<QJsonValue(QJsonValue, int)> set = [&](QJsonValue node, int depth) -> QJsonValue {
        const QString& key = keys[depth];
        const bool last = depth == keys.size() - 1;
        if (node.isArray()) {
            QJsonArray array = node.toArray();
            const int index = key.toInt();
            array[index] = last ? value : set(array[index], depth + 1);
            return array;
        }
        QJsonObject object = node.toObject();
        if (last && value.isUndefined())
            object.remove(key);
        else
            object[key] = last ? value : set(object[key], depth + 1);
        return object;
    };
    return QJsonDocument(set(validObject(), 0).toObject()).toJson();
}

QString errorOf(const QByteArray& json)
{
    const auto result = decodeSlideshowDocument(json);
    return std::holds_alternative<QString>(result) ? std::get<QString>(result) : QString();
}

} // namespace

TEST(DocumentCodec, UnreadableDocumentsNameWhatIsWrong)
{
    const std::pair<QByteArray, QString> cases[] = {
        {"", "The file is not JSON: illegal value at offset 0"},
        {"[1, 2]", "The file's top level is not a JSON object"},
        {bent("images", QJsonValue::Undefined), "images: the required key is missing"},
        {bent("images", QJsonValue::Null), "images: the required value is null"},
        {bent("settings.selectedDisplayID", 1.5), "settings.selectedDisplayID: expected a whole number"},
        {bent("version", 2.7), "version: expected a string"},
        {bent("images.0.isGIF", "false"), "images[0].isGIF: expected true or false"},
        {bent("images.0.bookmarkData", "not*base64"), "images[0].bookmarkData: expected base64 data"},
        {bent("images.0.creationDate", "yesterday"), "images[0].creationDate: expected an ISO 8601 date"},
        {bent("audioTracks.0.id", "track-one"), "audioTracks[0].id: expected a UUID"},
        {bent("metadata.totalImages", "1"), "metadata.totalImages: expected a whole number"},
        {bent("images.0", 3), "images[0]: expected an object"},
        {bent("audioSettings.volume", QJsonValue::Undefined), "audioSettings.volume: the required key is missing"},
        {bent("liveModeSettings.isActive", QJsonValue::Null), "liveModeSettings.isActive: the required value is null"},
    };
    for (const auto& [json, expected] : cases)
        EXPECT_EQ(errorOf(json), expected) << json.left(60).toStdString();
}

TEST(DocumentCodec, ReadersForgiveWhatTheFormatAllows)
{
    const QByteArray cases[] = {
        validText,
        bent("version", "9.9"),
        bent("images.0.isVideo", QJsonValue::Undefined),
        bent("images.0.relativePath", QJsonValue::Null),
        bent("settings.transitionType", "Dissolve"), // checked by type, not by meaning
        bent("settings.somethingNew", true),
        bent("liveModeSettings", QJsonValue::Undefined),
        bent("settings.gridOptionRaw", 2.0),
    };
    for (const QByteArray& json : cases) {
        const auto result = decodeSlideshowDocument(json);
        EXPECT_TRUE(std::holds_alternative<SlideshowDocument>(result)) << errorOf(json).toStdString() << "\n"
                                                                       << json.toStdString();
    }
    const auto document = std::get<SlideshowDocument>(decodeSlideshowDocument(validText));
    ASSERT_EQ(document.images.size(), 1);
    const SavedImageInfo& image = document.images[0];
    EXPECT_EQ(image.originalPath, QStringLiteral("/home/ann/Shows/pics/a.jpg")) << "escaped slashes";
    EXPECT_EQ(image.relativePath, QStringLiteral("pics/a.jpg")) << "plain slashes";
    EXPECT_EQ(image.bookmarkData, QByteArray("\x00\x01\x02", 3));
    EXPECT_EQ(image.creationDate, QDateTime(QDate(2026, 1, 30), QTime(8, 0), Qt::UTC));
    EXPECT_EQ(document.settings.overlayFontColorData, QByteArray("#FFFFFFFF"));
    EXPECT_FALSE(document.settings.isManualMode.has_value());
    EXPECT_EQ(document.audioTracks[0].duration, 61.5);
    ASSERT_TRUE(document.liveModeSettings);
    EXPECT_FALSE(document.liveModeSettings->watchedFolderPath);
    EXPECT_FALSE(std::get<SlideshowDocument>(decodeSlideshowDocument(bent("liveModeSettings", QJsonValue::Null)))
                     .liveModeSettings);
}

TEST(DocumentCodec, WritesSortedEscapedAndWithoutEmptyOptionals)
{
    auto document = std::get<SlideshowDocument>(decodeSlideshowDocument(validText));
    document.metadata.createdDate = QDateTime(QDate(2026, 1, 31), QTime(10, 15, 2, 640), Qt::OffsetFromUTC, 3600);
    document.settings.slideshowDelay = 3.0;
    document.images[0].bookmarkData = QByteArray("bookmark");
    document.images.append(document.images[0]);
    document.images[1].filename = QStringLiteral("b.jpg");
    document.audioTracks.clear(); // so an image's keys are the first of their names

    const QByteArray json = encodeSlideshowDocument(document);
    const QString text = QString::fromUtf8(json);
    EXPECT_FALSE(text.contains(QLatin1String("null")));
    EXPECT_FALSE(text.contains(QLatin1String("relativePath\": \"pics/a.jpg"))) << "slashes are escaped";
    EXPECT_TRUE(text.contains(QLatin1String("\"relativePath\": \"pics\\/a.jpg\"")));
    EXPECT_TRUE(text.contains(QLatin1String("\"createdDate\": \"2026-01-31T09:15:02Z\""))) << "UTC, whole seconds";
    EXPECT_TRUE(text.contains(QLatin1String("\"totalImages\": 1\n")));
    EXPECT_TRUE(text.contains(QLatin1String("\"slideshowDelay\": 3,"))) << "whole values are integers";
    EXPECT_TRUE(text.contains(QLatin1String("\"bookmarkData\": \"Ym9va21hcms=\"")));
    EXPECT_FALSE(text.contains(QLatin1String("watchedFolderPath")));
    EXPECT_FALSE(text.contains(QLatin1String("videoDuration")));
    // Keys sorted at every level: the root from audioSettings to version, an image's from
    // bookmarkData to relativePath.
    auto at = [&text](const char* key) {
        return text.indexOf(QLatin1Char('"') + QLatin1String(key) + QLatin1Char('"'));
    };
    const char* const rootOrder[] = {"audioSettings", "audioTracks", "images", "liveModeSettings",
                                     "metadata",      "settings",    "version"};
    for (size_t i = 1; i < std::size(rootOrder); ++i)
        EXPECT_LT(at(rootOrder[i - 1]), at(rootOrder[i])) << rootOrder[i];
    const char* const imageOrder[] = {"bookmarkData", "creationDate", "filename",     "id",
                                      "isGIF",        "isVideo",      "originalPath", "relativePath"};
    for (size_t i = 1; i < std::size(imageOrder); ++i)
        EXPECT_LT(at(imageOrder[i - 1]), at(imageOrder[i])) << imageOrder[i];

    // Read back, the same records in the same order (the date at its whole second, in UTC).
    auto readBack = std::get<SlideshowDocument>(decodeSlideshowDocument(json));
    EXPECT_EQ(readBack.metadata.createdDate, QDateTime(QDate(2026, 1, 31), QTime(9, 15, 2), Qt::UTC));
    readBack.metadata.createdDate = document.metadata.createdDate;
    EXPECT_EQ(readBack, document);
    EXPECT_EQ(encodeSlideshowDocument(readBack), json);
}
