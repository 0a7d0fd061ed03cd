#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QScreen;

namespace tb {

// One entry of the display list the settings offer.
struct ScreenInfo {
    int id = 0;
    QString name;
    bool operator==(const ScreenInfo&) const = default;
};

// The screens a show can play on, by a stable id. Id 0 is "the screen of the application's
// window"; every real screen gets a positive 31-bit id from its name and serial number, so a
// stored choice finds the same monitor after a restart or a re-plug.
class DisplayManager final : public QObject {
    Q_OBJECT
public:
    explicit DisplayManager(QObject* parent = nullptr);

    const QList<ScreenInfo>& availableScreens() const { return screens; }
    // The screen with that id, or nothing.
    QScreen* screen(int id) const;
    void refreshScreens();

    static int screenId(const QScreen* screen);
    // Manufacturer and model where the monitor reports them, else the output's name.
    static QString screenName(const QScreen* screen);

Q_SIGNALS:
    void availableScreensChanged();

private:
    QList<ScreenInfo> screens;
};

} // namespace tb
