#include "OverlayView.h"

#include "OverlayPictureProvider.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "media/Bookmark.h"
#include "media/SrgbConversion.h"

#include <QFileInfo>
#include <QImageReader>

#include <cmath>

namespace tb {

namespace {

bool isKey(const QString& key, const auto& setting) { return key == QLatin1String(setting.name); }

// At most maxWidth wide as shown, decoded at that size rather than in full and shrunk after.
std::optional<QImage> decode(const QString& path, int maxWidth)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize stored = reader.size();
    // The reader scales before it turns the picture upright.
    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize upright = turned ? stored.transposed() : stored;
    if (maxWidth > 0 && upright.width() > maxWidth) {
        const int height = std::max(1, int(std::lround(double(upright.height()) * maxWidth / upright.width())));
        reader.setScaledSize(turned ? QSize(height, maxWidth) : QSize(maxWidth, height));
    }
    QImage image = reader.read();
    if (image.isNull())
        return std::nullopt;
    // Formats that cannot tell their size before decoding.
    if (maxWidth > 0 && image.width() > maxWidth)
        image = image.scaledToWidth(maxWidth, Qt::SmoothTransformation);
    return SrgbConversion::toSrgb(std::move(image), reader);
}

} // namespace

OverlayView::OverlayView(SettingsStore& settings, int maxPictureWidth, QObject* parent)
    : QObject(parent), settings(settings), maxPictureWidth(maxPictureWidth), picture(std::make_shared<OverlayPicture>())
{
    readLiveSettings();
    connect(&settings, &SettingsStore::changed, this, &OverlayView::onSettingChanged);
}

OverlayView::~OverlayView() = default;

void OverlayView::onAppear()
{
    reloadPictureAndColour();
    Q_EMIT changed();
}

QQuickImageProvider* OverlayView::makeImageProvider() const { return new OverlayPictureProvider(picture); }

bool OverlayView::saveOverlayImage(SettingsStore& settings, const QString& filePath)
{
    QString error;
    const auto bookmark = Bookmark::create(filePath, &error);
    if (!bookmark) {
        logError(QStringLiteral("[Overlay] Failed to create bookmark: ") + error);
        return false;
    }
    settings.set(Settings::overlayImageBookmark, bookmark->toData());
    logInfo(QStringLiteral("[Overlay] Saved security-scoped bookmark for: ") + QFileInfo(filePath).fileName());
    return true;
}

std::optional<QImage> OverlayView::loadOverlayImage(SettingsStore& settings, int maxWidth)
{
    const auto data = settings.value(Settings::overlayImageBookmark);
    if (!data)
        return std::nullopt;
    BookmarkResolver resolver;
    const auto resolved = resolver.resolve(*data);
    if (const auto* reason = std::get_if<QString>(&resolved)) {
        logError(QStringLiteral("[Overlay] Failed to resolve bookmark: ") + *reason);
        return std::nullopt;
    }
    const auto& file = std::get<ResolvedBookmark>(resolved);
    // The picture found is shown; the bookmark is renewed only when the user chooses a picture.
    if (file.isStale)
        logWarning(QStringLiteral("[Overlay] Bookmark is stale, image may not be accessible"));
    if (!startAccessing(file.path)) {
        logError(QStringLiteral("[Overlay] Failed to access security-scoped resource"));
        return std::nullopt;
    }
    auto image = decode(file.path, maxWidth);
    if (!image) {
        logError(QStringLiteral("[Overlay] Failed to load image from URL"));
        return std::nullopt;
    }
    logInfo(QStringLiteral("[Overlay] Successfully loaded image: ") + QFileInfo(file.path).fileName());
    return image;
}

QSizeF OverlayView::pictureSize(double windowWidth, double widthFactor, double aspect)
{
    if (!(aspect > 0.0))
        return {};
    const double width = windowWidth * widthFactor;
    return {width, width / aspect};
}

QRectF OverlayView::markFrame(QSizeF window, QSizeF content, int alignment, double margin)
{
    const Qt::Alignment align(alignment);
    const double x = align.testFlag(Qt::AlignLeft)    ? margin
                     : align.testFlag(Qt::AlignRight) ? window.width() - margin - content.width()
                                                      : (window.width() - content.width()) / 2;
    const double y = align.testFlag(Qt::AlignTop)      ? margin
                     : align.testFlag(Qt::AlignBottom) ? window.height() - margin - content.height()
                                                       : (window.height() - content.height()) / 2;
    return {QPointF(x, y), content};
}

int OverlayView::alignmentFor(const QString& position)
{
    if (position == QLatin1String("topLeft"))
        return Qt::AlignTop | Qt::AlignLeft;
    if (position == QLatin1String("topRight"))
        return Qt::AlignTop | Qt::AlignRight;
    if (position == QLatin1String("bottomLeft"))
        return Qt::AlignBottom | Qt::AlignLeft;
    return Qt::AlignBottom | Qt::AlignRight;
}

double OverlayView::widthFactorFor(const QString& size)
{
    if (size == QLatin1String("small"))
        return 0.05;
    if (size == QLatin1String("large"))
        return 0.15;
    return 0.1;
}

QSizeF OverlayView::pictureSizeIn(double windowWidth, double widthFactor, double aspect) const
{
    return pictureSize(windowWidth, widthFactor, aspect);
}

QRectF OverlayView::frameIn(double windowWidth, double windowHeight, double contentWidth, double contentHeight,
                            int alignment, double margin) const
{
    return markFrame({windowWidth, windowHeight}, {contentWidth, contentHeight}, alignment, margin);
}

bool OverlayView::shown() const { return enabled && (isText() ? !overlayText.isEmpty() : hasPicture); }

QString OverlayView::pictureSource() const
{
    return hasPicture ? QStringLiteral("image://overlay/%1").arg(generation) : QString();
}

void OverlayView::readLiveSettings()
{
    using namespace Settings;
    enabled = settings.value(overlayEnabled);
    type = settings.value(overlayType);
    overlayText = settings.value(Settings::overlayText);
    family = settings.value(overlayFontFamily);
    size = settings.value(overlayFontSize);
    position = settings.value(overlayPosition);
    sizeName = settings.value(overlaySize);
    opacity = settings.value(overlayOpacity);
    edgeMargin = settings.value(overlayMargin);
}

void OverlayView::reloadPictureAndColour()
{
    colour = settings.loadColor(Settings::overlayFontColorData, Qt::white);
    // A text mark keeps the picture it had, for the show to go back to.
    if (isText())
        return;
    const auto image = loadOverlayImage(settings, maxPictureWidth);
    hasPicture = image.has_value();
    aspect = hasPicture ? double(image->width()) / image->height() : 0.0;
    picture->set(image.value_or(QImage()));
    if (hasPicture)
        ++generation;
}

void OverlayView::onSettingChanged(const QString& key)
{
    using namespace Settings;
    const bool wasEnabled = enabled;
    if (isKey(key, overlayEnabled)) {
        readLiveSettings();
        if (enabled && !wasEnabled)
            reloadPictureAndColour();
    } else if (isKey(key, overlayType) || isKey(key, Settings::overlayText) || isKey(key, overlayFontFamily) ||
               isKey(key, overlayFontSize) || isKey(key, overlayPosition) || isKey(key, overlaySize) ||
               isKey(key, overlayOpacity) || isKey(key, overlayMargin)) {
        readLiveSettings();
    } else {
        return;
    }
    Q_EMIT changed();
}

} // namespace tb
