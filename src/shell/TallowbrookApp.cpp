#include "TallowbrookApp.h"

#include "ContentView.h"
#include "core/Logger.h"
#include "core/Version.h"
#include "playback/PlayerWindow.h"

#include <QApplication>
#include <QDir>
#include <QGuiApplication>
#include <QScreen>
#include <QStandardPaths>
#include <QUrl>

namespace tb {

namespace {

// Pictures are decoded no larger than the largest screen shows them, with room for the Ken Burns
// zoom (up to 1.25).
QSize largestScreen()
{
    QSize largest;
    for (const QScreen* screen : QGuiApplication::screens())
        largest = largest.expandedTo(screen->geometry().size() * screen->devicePixelRatio());
    return largest.isValid() ? largest * 1.25 : QSize();
}

QList<QUrl> urlsFromArguments(const QStringList& arguments)
{
    QList<QUrl> urls;
    for (const QString& argument : arguments.mid(1))
        urls.append(QUrl::fromUserInput(argument, QDir::currentPath(), QUrl::AssumeLocalFile));
    return urls;
}

BeaconScreen primaryScreen()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? BeaconScreen{screen->geometry().size(), screen->devicePixelRatio()} : BeaconScreen{};
}

// The key the program identifies itself with to its analytics server.
constexpr char analyticsAppKey[] = "7c3e91ab24d05f6e8b1a4d2c9f07e36b51c8d4a0";

} // namespace

// The delegate, and with it the updater, is made first.
TallowbrookApp::TallowbrookApp()
    : analytics({scheduler, [] { return QDateTime::currentDateTime(); }, settings,
                 QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1Char('/') +
                     QLatin1String(appIdentifier),
                 QLatin1String(appVersion), primaryScreen(), analyticsRandom}),
      documents(std::make_unique<SlideshowLoadService>(analytics)),
      pictures(std::make_unique<PictureService>(largestScreen(), &fileSystems, &processMemory, &sharedThumbnails)),
      delegate(analytics, settings, commands, *documents, scheduler, dialogs),
      appServices{settings,         scheduler,      random,        analytics,      revealer,
                  fileSystems,      dialogs,        commands,      metadata,       delegate.updaterControllerWrapper(),
                  slideshowManager, audioPlayers,   *pictures,     sleepInhibitor, displays,
                  idleWatcher,      folderWatchers, processMemory, mediaRemote},
      instance(SingleInstance::defaultServerName())
{
    // The setting is read here, once and at each change: decoding threads never touch the store.
    pictures->thumbnails.setSharing(settings.value(Settings::useSharedThumbnails));
    QObject::connect(&settings, &SettingsStore::changed, &settings, [this](const QString& key) {
        if (key == QLatin1String(Settings::useSharedThumbnails.name))
            pictures->thumbnails.setSharing(settings.value(Settings::useSharedThumbnails));
    });
}

TallowbrookApp::~TallowbrookApp()
{
    // A second launch has no watcher running and must not write to the program's log.
    if (running)
        idleWatcher.stop();
}

bool TallowbrookApp::start(const QStringList& arguments)
{
    const QList<QUrl> urls = urlsFromArguments(arguments);
    QStringList paths;
    for (const QUrl& url : urls)
        paths.append(url.toLocalFile());
    // Nothing may touch the log before this: a second launch must leave the running program's
    // log file alone.
    if (instance.forwardToRunningInstance(paths))
        return false;
    // Qt picks the platform from the session (Wayland where WAYLAND_DISPLAY is set, else X11);
    // the log says which, since placing windows and reading the pointer differ between them.
    logInfo(QStringLiteral("Windowing system: ") + QGuiApplication::platformName());
    PlayerWindow::chooseRenderer();

    // Analytics starts before any window.
    startAnalytics();
    analytics.beginSession();

    auto* window = new ContentView(appServices);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->resize(900, 700);
    window->show();
    delegate.applicationDidFinishLaunching();

    running = true;
    instance.listen();
    QObject::connect(&instance, &SingleInstance::filesRequested, &delegate, [this](const QStringList& files) {
        QList<QUrl> requested;
        for (const QString& file : files)
            requested.append(QUrl::fromLocalFile(file));
        delegate.openUrls(requested);
    });
    QObject::connect(&instance, &SingleInstance::activationRequested, &delegate, [this] { activateSomeWindow(); });

    // Files named at launch arrive as an open request once the event loop runs.
    if (!urls.isEmpty())
        QMetaObject::invokeMethod(
            &delegate, [this, urls] { delegate.openUrls(urls); }, Qt::QueuedConnection);
    return true;
}

void TallowbrookApp::startAnalytics()
{
    const QString server = settings.value(Settings::analyticsServerURL).trimmed();
    if (server.isEmpty()) {
        logInfo(QStringLiteral("No analytics server is set (analyticsServerURL): usage is not reported."));
        return;
    }
    BeaconConfig config;
    config.host = server;
    config.appKey = QLatin1String(analyticsAppKey);
    config.features = {QLatin1String(BCNCrashReporting)};
    config.updateSessionPeriod = 60.0;
    config.eventSendThreshold = 3;
    config.enableDebug = false;
    try {
        analytics.startWithConfig(config);
    } catch (const std::exception& error) {
        logError(QStringLiteral("Analytics could not start: ") + QString::fromUtf8(error.what()));
        return;
    }
    // The client keeps what it cannot deliver and sends it at the next start.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &analytics, &Beacon::applicationWillTerminate);
    logInfo(QStringLiteral("Analytics device ID: ") + settings.value(Settings::beaconStoredDeviceID));
}

void TallowbrookApp::activateSomeWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<ContentView*>(widget); window && window->isVisible()) {
            window->showNormal();
            window->raise();
            window->activateWindow();
            return;
        }
    }
}

} // namespace tb
