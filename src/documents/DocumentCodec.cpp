#include "DocumentCodec.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>
#include <QUuid>

#include <cmath>
#include <limits>

namespace tb {

namespace {

// Writing

QString dateText(const QDateTime& date) { return date.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss'Z'")); }

QString base64(const QByteArray& data) { return QString::fromLatin1(data.toBase64()); }

template <typename T, typename Convert>
void put(QJsonObject& object, const char* key, const std::optional<T>& value, Convert convert)
{
    if (value)
        object.insert(QLatin1String(key), convert(*value));
}

template <typename T> void put(QJsonObject& object, const char* key, const std::optional<T>& value)
{
    if (value)
        object.insert(QLatin1String(key), *value);
}

QJsonObject encodeSettings(const SlideshowSettings& s)
{
    QJsonObject o{
        {QStringLiteral("slideshowDelay"), s.slideshowDelay},
        {QStringLiteral("gridOptionRaw"), s.gridOptionRaw},
        {QStringLiteral("randomOrder"), s.randomOrder},
        {QStringLiteral("loopSlideshow"), s.loopSlideshow},
        {QStringLiteral("transitionType"), s.transitionType},
        {QStringLiteral("imageScalingMode"), s.imageScalingMode},
        {QStringLiteral("selectedDisplayID"), s.selectedDisplayID},
        {QStringLiteral("selectedSortOption"), s.selectedSortOption},
    };
    put(o, "isManualMode", s.isManualMode);
    put(o, "crossfadeDuration", s.crossfadeDuration);
    put(o, "overlayEnabled", s.overlayEnabled);
    put(o, "overlayType", s.overlayType);
    put(o, "overlayImageBookmark", s.overlayImageBookmark, base64);
    put(o, "overlayText", s.overlayText);
    put(o, "overlayFontFamily", s.overlayFontFamily);
    put(o, "overlayFontSize", s.overlayFontSize);
    put(o, "overlayFontColorData", s.overlayFontColorData, base64);
    put(o, "overlayPosition", s.overlayPosition);
    put(o, "overlaySize", s.overlaySize);
    put(o, "overlayOpacity", s.overlayOpacity);
    put(o, "overlayMargin", s.overlayMargin);
    put(o, "backgroundColorData", s.backgroundColorData, base64);
    put(o, "startInWindowedMode", s.startInWindowedMode);
    put(o, "includeSubdirectories", s.includeSubdirectories);
    put(o, "syncGridTransitions", s.syncGridTransitions);
    return o;
}

QJsonObject encodeImage(const SavedImageInfo& image)
{
    QJsonObject o{
        {QStringLiteral("id"), image.id},
        {QStringLiteral("filename"), image.filename},
        {QStringLiteral("originalPath"), image.originalPath},
        {QStringLiteral("isGIF"), image.isGIF},
    };
    put(o, "relativePath", image.relativePath);
    put(o, "creationDate", image.creationDate, dateText);
    put(o, "bookmarkData", image.bookmarkData, base64);
    put(o, "isVideo", image.isVideo);
    put(o, "videoDuration", image.videoDuration);
    return o;
}

QJsonObject encodeTrack(const SavedAudioTrack& track)
{
    QJsonObject o{
        {QStringLiteral("id"), track.id},
        {QStringLiteral("filename"), track.filename},
        {QStringLiteral("originalPath"), track.originalPath},
    };
    put(o, "relativePath", track.relativePath);
    put(o, "duration", track.duration);
    put(o, "bookmarkData", track.bookmarkData, base64);
    return o;
}

// Reading: each read names the key's path in its error; the first error wins and later reads
// return defaults, so the decoder reads straight through and checks once at the end.

class Reader {
public:
    explicit Reader(QString& error) : error(error) {}

    QJsonValue required(const QJsonObject& object, const QString& path, const char* key)
    {
        const QJsonValue value = object.value(QLatin1String(key));
        if (value.isUndefined())
            fail(join(path, key), QStringLiteral("the required key is missing"));
        else if (value.isNull())
            fail(join(path, key), QStringLiteral("the required value is null"));
        return value;
    }

    QJsonObject object(const QJsonValue& value, const QString& path)
    {
        if (!value.isObject())
            fail(path, QStringLiteral("expected an object"));
        return value.toObject();
    }
    QJsonArray array(const QJsonValue& value, const QString& path)
    {
        if (!value.isArray())
            fail(path, QStringLiteral("expected an array"));
        return value.toArray();
    }
    QString string(const QJsonValue& value, const QString& path)
    {
        if (!value.isString())
            fail(path, QStringLiteral("expected a string"));
        return value.toString();
    }
    bool boolean(const QJsonValue& value, const QString& path)
    {
        if (!value.isBool())
            fail(path, QStringLiteral("expected true or false"));
        return value.toBool();
    }
    double real(const QJsonValue& value, const QString& path)
    {
        if (!value.isDouble())
            fail(path, QStringLiteral("expected a number"));
        return value.toDouble();
    }
    int whole(const QJsonValue& value, const QString& path)
    {
        const double number = value.toDouble();
        if (!value.isDouble() || std::trunc(number) != number || number < std::numeric_limits<int>::min() ||
            number > std::numeric_limits<int>::max()) {
            fail(path, QStringLiteral("expected a whole number"));
            return 0;
        }
        return int(number);
    }
    QByteArray data(const QJsonValue& value, const QString& path)
    {
        const auto decoded =
            QByteArray::fromBase64Encoding(string(value, path).toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            fail(path, QStringLiteral("expected base64 data"));
        return decoded.decoded;
    }
    QDateTime date(const QJsonValue& value, const QString& path)
    {
        const QDateTime date = QDateTime::fromString(string(value, path), Qt::ISODate);
        if (!date.isValid())
            fail(path, QStringLiteral("expected an ISO 8601 date"));
        return date.toUTC();
    }
    QString uuid(const QJsonValue& value, const QString& path)
    {
        const QString text = string(value, path);
        if (QUuid::fromString(text).isNull())
            fail(path, QStringLiteral("expected a UUID"));
        return text;
    }

    // An optional value: absent and null are both nothing.
    template <typename T, typename Read>
    std::optional<T> optional(const QJsonObject& object, const QString& path, const char* key, Read read)
    {
        const QJsonValue value = object.value(QLatin1String(key));
        if (value.isUndefined() || value.isNull())
            return std::nullopt;
        return (this->*read)(value, join(path, key));
    }

    template <typename T, typename Read>
    T field(const QJsonObject& object, const QString& path, const char* key, Read read)
    {
        const QJsonValue value = required(object, path, key);
        if (failed())
            return T();
        return (this->*read)(value, join(path, key));
    }

    bool failed() const { return !error.isEmpty(); }

    static QString join(const QString& path, const char* key)
    {
        return path.isEmpty() ? QLatin1String(key) : path + QLatin1Char('.') + QLatin1String(key);
    }

private:
    void fail(const QString& path, const QString& what)
    {
        if (error.isEmpty())
            error = path + QStringLiteral(": ") + what;
    }

    QString& error;
};

using R = Reader;

SlideshowSettings decodeSettings(Reader& r, const QJsonObject& o, const QString& p)
{
    SlideshowSettings s;
    s.slideshowDelay = r.field<double>(o, p, "slideshowDelay", &R::real);
    s.gridOptionRaw = r.field<int>(o, p, "gridOptionRaw", &R::whole);
    s.randomOrder = r.field<bool>(o, p, "randomOrder", &R::boolean);
    s.loopSlideshow = r.field<bool>(o, p, "loopSlideshow", &R::boolean);
    s.transitionType = r.field<QString>(o, p, "transitionType", &R::string);
    s.imageScalingMode = r.field<QString>(o, p, "imageScalingMode", &R::string);
    s.selectedDisplayID = r.field<int>(o, p, "selectedDisplayID", &R::whole);
    s.selectedSortOption = r.field<QString>(o, p, "selectedSortOption", &R::string);
    s.isManualMode = r.optional<bool>(o, p, "isManualMode", &R::boolean);
    s.crossfadeDuration = r.optional<double>(o, p, "crossfadeDuration", &R::real);
    s.overlayEnabled = r.optional<bool>(o, p, "overlayEnabled", &R::boolean);
    s.overlayType = r.optional<QString>(o, p, "overlayType", &R::string);
    s.overlayImageBookmark = r.optional<QByteArray>(o, p, "overlayImageBookmark", &R::data);
    s.overlayText = r.optional<QString>(o, p, "overlayText", &R::string);
    s.overlayFontFamily = r.optional<QString>(o, p, "overlayFontFamily", &R::string);
    s.overlayFontSize = r.optional<double>(o, p, "overlayFontSize", &R::real);
    s.overlayFontColorData = r.optional<QByteArray>(o, p, "overlayFontColorData", &R::data);
    s.overlayPosition = r.optional<QString>(o, p, "overlayPosition", &R::string);
    s.overlaySize = r.optional<QString>(o, p, "overlaySize", &R::string);
    s.overlayOpacity = r.optional<double>(o, p, "overlayOpacity", &R::real);
    s.overlayMargin = r.optional<double>(o, p, "overlayMargin", &R::real);
    s.backgroundColorData = r.optional<QByteArray>(o, p, "backgroundColorData", &R::data);
    s.startInWindowedMode = r.optional<bool>(o, p, "startInWindowedMode", &R::boolean);
    s.includeSubdirectories = r.optional<bool>(o, p, "includeSubdirectories", &R::boolean);
    s.syncGridTransitions = r.optional<bool>(o, p, "syncGridTransitions", &R::boolean);
    return s;
}

SavedImageInfo decodeImage(Reader& r, const QJsonObject& o, const QString& p)
{
    SavedImageInfo image;
    image.id = r.field<QString>(o, p, "id", &R::uuid);
    image.filename = r.field<QString>(o, p, "filename", &R::string);
    image.originalPath = r.field<QString>(o, p, "originalPath", &R::string);
    image.relativePath = r.optional<QString>(o, p, "relativePath", &R::string);
    image.isGIF = r.field<bool>(o, p, "isGIF", &R::boolean);
    image.creationDate = r.optional<QDateTime>(o, p, "creationDate", &R::date);
    image.bookmarkData = r.optional<QByteArray>(o, p, "bookmarkData", &R::data);
    image.isVideo = r.optional<bool>(o, p, "isVideo", &R::boolean);
    image.videoDuration = r.optional<double>(o, p, "videoDuration", &R::real);
    return image;
}

SavedAudioTrack decodeTrack(Reader& r, const QJsonObject& o, const QString& p)
{
    SavedAudioTrack track;
    track.id = r.field<QString>(o, p, "id", &R::uuid);
    track.filename = r.field<QString>(o, p, "filename", &R::string);
    track.originalPath = r.field<QString>(o, p, "originalPath", &R::string);
    track.relativePath = r.optional<QString>(o, p, "relativePath", &R::string);
    track.duration = r.optional<double>(o, p, "duration", &R::real);
    track.bookmarkData = r.optional<QByteArray>(o, p, "bookmarkData", &R::data);
    return track;
}

template <typename T, typename Decode>
QList<T> decodeList(Reader& r, const QJsonObject& root, const char* key, Decode decode)
{
    QList<T> list;
    const QJsonArray array = r.field<QJsonArray>(root, QString(), key, &R::array);
    for (qsizetype i = 0; i < array.size() && !r.failed(); ++i) {
        const QString path = QStringLiteral("%1[%2]").arg(QLatin1String(key)).arg(i);
        const QJsonObject object = r.object(array[i], path);
        if (!r.failed())
            list.append(decode(r, object, path));
    }
    return list;
}

} // namespace

QByteArray encodeSlideshowDocument(const SlideshowDocument& document)
{
    const SlideshowMetadata& m = document.metadata;
    QJsonArray images;
    for (const SavedImageInfo& image : document.images)
        images.append(encodeImage(image));
    QJsonArray tracks;
    for (const SavedAudioTrack& track : document.audioTracks)
        tracks.append(encodeTrack(track));
    // QJsonObject keeps its keys sorted, which is the order the format asks for.
    QJsonObject root{
        {QStringLiteral("version"), document.version},
        {QStringLiteral("metadata"), QJsonObject{{QStringLiteral("createdDate"), dateText(m.createdDate)},
                                                 {QStringLiteral("appVersion"), m.appVersion},
                                                 {QStringLiteral("totalImages"), m.totalImages},
                                                 {QStringLiteral("totalAudioTracks"), m.totalAudioTracks},
                                                 {QStringLiteral("createdBy"), m.createdBy}}},
        {QStringLiteral("settings"), encodeSettings(document.settings)},
        {QStringLiteral("images"), images},
        {QStringLiteral("audioTracks"), tracks},
        {QStringLiteral("audioSettings"),
         QJsonObject{{QStringLiteral("volume"), document.audioSettings.volume},
                     {QStringLiteral("isLooping"), document.audioSettings.isLooping},
                     {QStringLiteral("currentTrackIndex"), document.audioSettings.currentTrackIndex}}},
    };
    if (const auto& live = document.liveModeSettings) {
        QJsonObject o{{QStringLiteral("isActive"), live->isActive}};
        put(o, "watchedFolderPath", live->watchedFolderPath);
        put(o, "newPhotosBehavior", live->newPhotosBehavior);
        root.insert(QStringLiteral("liveModeSettings"), o);
    }
    QByteArray json = QJsonDocument(root).toJson(QJsonDocument::Indented);
    // Slashes are written escaped, as every earlier document has them. Outside strings JSON has
    // no slash, so every slash in the text is inside one.
    json.replace('/', QByteArrayLiteral("\\/"));
    return json;
}

std::variant<SlideshowDocument, QString> decodeSlideshowDocument(const QByteArray& json)
{
    QJsonParseError parseError;
    const QJsonDocument parsed = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return QStringLiteral("The file is not JSON: %1 at offset %2")
            .arg(parseError.errorString())
            .arg(parseError.offset);
    if (!parsed.isObject())
        return QStringLiteral("The file's top level is not a JSON object");
    const QJsonObject root = parsed.object();

    QString error;
    Reader r(error);
    SlideshowDocument document;
    document.version = r.field<QString>(root, QString(), "version", &R::string);
    const QJsonObject meta = r.field<QJsonObject>(root, QString(), "metadata", &R::object);
    if (!r.failed()) {
        const QString p = QStringLiteral("metadata");
        SlideshowMetadata& m = document.metadata;
        m.createdDate = r.field<QDateTime>(meta, p, "createdDate", &R::date);
        m.appVersion = r.field<QString>(meta, p, "appVersion", &R::string);
        m.totalImages = r.field<int>(meta, p, "totalImages", &R::whole);
        m.totalAudioTracks = r.field<int>(meta, p, "totalAudioTracks", &R::whole);
        m.createdBy = r.field<QString>(meta, p, "createdBy", &R::string);
    }
    const QJsonObject settings = r.field<QJsonObject>(root, QString(), "settings", &R::object);
    if (!r.failed())
        document.settings = decodeSettings(r, settings, QStringLiteral("settings"));
    if (!r.failed())
        document.images = decodeList<SavedImageInfo>(r, root, "images", decodeImage);
    if (!r.failed())
        document.audioTracks = decodeList<SavedAudioTrack>(r, root, "audioTracks", decodeTrack);
    const QJsonObject audio = r.field<QJsonObject>(root, QString(), "audioSettings", &R::object);
    if (!r.failed()) {
        const QString p = QStringLiteral("audioSettings");
        document.audioSettings.volume = r.field<double>(audio, p, "volume", &R::real);
        document.audioSettings.isLooping = r.field<bool>(audio, p, "isLooping", &R::boolean);
        document.audioSettings.currentTrackIndex = r.field<int>(audio, p, "currentTrackIndex", &R::whole);
    }
    const auto live = r.optional<QJsonObject>(root, QString(), "liveModeSettings", &R::object);
    if (live && !r.failed()) {
        const QString p = QStringLiteral("liveModeSettings");
        SavedLiveModeSettings settingsOfLive;
        settingsOfLive.isActive = r.field<bool>(*live, p, "isActive", &R::boolean);
        settingsOfLive.watchedFolderPath = r.optional<QString>(*live, p, "watchedFolderPath", &R::string);
        settingsOfLive.newPhotosBehavior = r.optional<QString>(*live, p, "newPhotosBehavior", &R::string);
        document.liveModeSettings = settingsOfLive;
    }
    if (r.failed())
        return error;
    return document;
}

} // namespace tb
