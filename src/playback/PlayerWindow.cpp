#include "PlayerWindow.h"

#include "ClipFrameItem.h"
#include "CursorHider.h"
#include "GlobalPointer.h"
#include "OverlayView.h"
#include "PictureProvider.h"
#include "ShowPlayer.h"
#include "core/Logger.h"
#include "media/PictureCaches.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQmlEngine>
#include <QScreen>

namespace tb {

PlayerWindow::PlayerWindow(ShowPlayer* player, std::unique_ptr<PictureCaches> pictures, int pictureBacklog,
                           SettingsStore& settings, QScreen* screen, bool windowed, bool floatOnTop)
    : pictures(std::move(pictures)),
      player(player),
      provider(nullptr),
      overlay(nullptr),
      targetScreen(screen),
      windowed(windowed)
{
    static const int registered = qmlRegisterType<ClipFrameItem>("Tallowbrook.Playback", 1, 0, "ClipFrames");
    Q_UNUSED(registered);
    player->setParent(this);
    setColor(Qt::black);
    setTitle(QStringLiteral("Tallowbrook Slideshow"));
    setFlag(Qt::WindowStaysOnTopHint, floatOnTop);
    setResizeMode(QQuickView::SizeRootObjectToView);
    provider = new PictureProvider(*this->pictures, pictureBacklog);
    engine()->addImageProvider(QStringLiteral("picture"), provider);
    // The mark is at most the largest share (15 %) of the screen's width, in device pixels.
    QScreen* measured = screen ? screen : QGuiApplication::primaryScreen();
    const int widest = measured ? int(measured->geometry().width() * measured->devicePixelRatio() * 0.15) : 0;
    overlay = new OverlayView(settings, widest, this);
    engine()->addImageProvider(QStringLiteral("overlay"), overlay->makeImageProvider());
    setInitialProperties({{QStringLiteral("player"), QVariant::fromValue<QObject*>(player)},
                          {QStringLiteral("overlay"), QVariant::fromValue<QObject*>(overlay)}});
    player->setToggleFullScreen([this] { toggleFullScreen(); });
    setSource(player->scene());
    for (const QQmlError& error : errors())
        logError(QStringLiteral("Player window: ") + error.toString());
    if (screen)
        setScreen(screen);
}

// No decode may outlive the window; the scene goes before the player it shows, and the player
// before the pictures it uses.
PlayerWindow::~PlayerWindow()
{
    provider->shutDown();
    setSource(QUrl());
    delete player;
}

void PlayerWindow::chooseRenderer()
{
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND"))
        return;
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) {
        // No OpenGL at all: the software renderer still draws every show.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        return;
    }
    const QByteArray renderer =
        QByteArray(reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER))).toLower();
    context.doneCurrent();
    if (renderer.contains("llvmpipe") || renderer.contains("softpipe") || renderer.contains("swrast")) {
        logInfo(QStringLiteral("Drawing shows in software: OpenGL runs on the CPU here (") +
                QString::fromLatin1(renderer) + QLatin1Char(')'));
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
}

QRect PlayerWindow::windowedGeometry(const QRect& screen)
{
    const int width = int(screen.width() * 0.75);
    const int height = int(screen.height() * 0.75);
    return QRect(screen.x() + int((screen.width() - width) * 0.5), screen.y() + int((screen.height() - height) * 0.5),
                 width, height);
}

void PlayerWindow::present()
{
    overlay->onAppear();
    const QRect frame = targetScreen ? targetScreen->geometry() : QRect(0, 0, 1280, 800);
    if (windowed) {
        setGeometry(windowedGeometry(frame));
        show();
    } else {
        setGeometry(frame);
        showFullScreen();
    }
    raise();
    requestActivate();
}

void PlayerWindow::closeLater()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            close();
            deleteLater();
        },
        Qt::QueuedConnection);
}

void PlayerWindow::toggleFullScreen()
{
    if (visibility() == QWindow::FullScreen) {
        const QRect frame = screen() ? screen()->geometry() : QRect(0, 0, 1280, 800);
        showNormal();
        setGeometry(windowedGeometry(frame));
    } else {
        showFullScreen();
    }
}

void PlayerWindow::hideIdleCursor(Scheduler& scheduler)
{
    if (!player || !player->hidesCursor())
        return;
    new CursorHider(
        scheduler,
        [this] {
            // Where the pointer's place is unknown (Wayland) it can only be over this window:
            // the compositor shows our cursor nowhere else.
            const std::optional<QPointF> pointer = globalPointer();
            return visibility() == QWindow::FullScreen &&
                   QGuiApplication::applicationState() == Qt::ApplicationActive &&
                   (!pointer || QGuiApplication::screenAt(pointer->toPoint()) == screen());
        },
        this);
}

void PlayerWindow::keyPressEvent(QKeyEvent* event)
{
    if (player)
        player->handleKey(event->key());
    event->accept(); // keys of a show go nowhere else
}

bool PlayerWindow::event(QEvent* event)
{
    if (event->type() == QEvent::Close && !disappeared) {
        // Closed by hand or after the stop path: either way the show ends here.
        disappeared = true;
        if (player)
            player->onDisappear();
        deleteLater();
    }
    return QQuickView::event(event);
}

} // namespace tb
