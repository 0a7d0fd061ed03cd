#pragma once

#include <QColor>
#include <QImage>
#include <QObject>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>

class QQuickImageProvider;

namespace tb {

class OverlayPicture;
class SettingsStore;

// The mark both players lay above the show: the user's picture or a line of text in a corner of
// the window (qml/Overlay.qml draws it). It follows the overlay settings while the show runs,
// except the picture and the text colour: those are read when the player appears and when the
// overlay is switched on, so a show does not decode the picture again for each change made in
// the settings.
class OverlayView : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool shown READ shown NOTIFY changed)
    Q_PROPERTY(bool isText READ isText NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString fontFamily READ fontFamily NOTIFY changed)
    Q_PROPERTY(double fontSize READ fontSize NOTIFY changed)
    Q_PROPERTY(QColor fontColor READ fontColor NOTIFY changed)
    Q_PROPERTY(double markOpacity READ markOpacity NOTIFY changed)
    Q_PROPERTY(double margin READ margin NOTIFY changed)
    Q_PROPERTY(int alignment READ alignment NOTIFY changed)
    Q_PROPERTY(double widthFactor READ widthFactor NOTIFY changed)
    Q_PROPERTY(double pictureAspect READ pictureAspect NOTIFY changed)
    Q_PROPERTY(QString pictureSource READ pictureSource NOTIFY changed)
public:
    // Pictures wider than maxPictureWidth are decoded at that width (the widest the mark can be
    // drawn, in device pixels).
    OverlayView(SettingsStore& settings, int maxPictureWidth, QObject* parent = nullptr);
    ~OverlayView() override;

    void onAppear();
    // The "overlay" image provider for the engine of the player's window, which takes it.
    QQuickImageProvider* makeImageProvider() const;

    // Remembers the chosen picture in the settings; false (and a log line) when it cannot.
    static bool saveOverlayImage(SettingsStore& settings, const QString& filePath);
    // The remembered picture, at most maxWidth wide (0: any width), or nothing.
    static std::optional<QImage> loadOverlayImage(SettingsStore& settings, int maxWidth);

    // The layout of the mark. A picture is a fraction of the whole window's width, its height
    // from its own proportions; the mark keeps `margin` from every edge and sits in the corner
    // `alignment` names, in a frame the size of the window.
    static QSizeF pictureSize(double windowWidth, double widthFactor, double aspect);
    static QRectF markFrame(QSizeF window, QSizeF content, int alignment, double margin);
    static int alignmentFor(const QString& position);
    static double widthFactorFor(const QString& size);
    // The same, for the scene.
    Q_INVOKABLE QSizeF pictureSizeIn(double windowWidth, double widthFactor, double aspect) const;
    Q_INVOKABLE QRectF frameIn(double windowWidth, double windowHeight, double contentWidth, double contentHeight,
                               int alignment, double margin) const;

    bool shown() const;
    bool isText() const { return type == QLatin1String("text"); }
    QString text() const { return overlayText; }
    QString fontFamily() const { return family; }
    double fontSize() const { return size; }
    QColor fontColor() const { return colour; }
    double markOpacity() const { return opacity; }
    double margin() const { return edgeMargin; }
    int alignment() const { return alignmentFor(position); }
    double widthFactor() const { return widthFactorFor(sizeName); }
    double pictureAspect() const { return aspect; }
    QString pictureSource() const;

Q_SIGNALS:
    void changed();

private:
    void readLiveSettings();
    void reloadPictureAndColour();
    void onSettingChanged(const QString& key);

    SettingsStore& settings;
    const int maxPictureWidth;
    std::shared_ptr<OverlayPicture> picture;
    bool hasPicture = false;
    double aspect = 0.0;
    int generation = 0;
    QColor colour = Qt::white;

    bool enabled = false;
    QString type;
    QString overlayText;
    QString family;
    double size = 0.0;
    QString position;
    QString sizeName;
    double opacity = 1.0;
    double edgeMargin = 0.0;
};

} // namespace tb
