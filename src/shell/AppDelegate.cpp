#include "AppDelegate.h"

#include "CommandBus.h"
#include "UpdaterControllerWrapper.h"
#include "core/Analytics.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "core/Version.h"
#include "documents/DocumentReader.h"

#include <QDesktopServices>
#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QWindow>
#include <QWindowStateChangeEvent>

namespace tb {

AppDelegate::AppDelegate(Analytics& analytics, SettingsStore& settings, CommandBus& commands, DocumentReader& documents,
                         Scheduler& scheduler, UserDialogs& dialogs, QObject* parent)
    : QObject(parent),
      analytics(analytics),
      settings(settings),
      commands(commands),
      documents(documents),
      dialogs(dialogs),
      updater(new UpdaterControllerWrapper(
          QString::fromUtf8(updateFeedURL), scheduler, dialogs, QString::fromLatin1(appVersion),
          UpdaterControllerWrapper::defaultTransferTimeout, [](const QUrl& page) { QDesktopServices::openUrl(page); },
          printLine, this))
{
}

AppDelegate::~AppDelegate()
{
    if (qApp)
        qApp->removeEventFilter(this);
}

void AppDelegate::applicationDidFinishLaunching()
{
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::applicationStateChanged, this, &AppDelegate::applicationStateChanged);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &AppDelegate::applicationWillTerminate);
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::WindowStateChange) {
        auto* window = qobject_cast<QWindow*>(watched);
        if (window && window->isTopLevel()) {
            const auto* change = static_cast<QWindowStateChangeEvent*>(event);
            const bool wasMinimised = change->oldState() & Qt::WindowMinimized;
            const bool isMinimised = window->windowStates() & Qt::WindowMinimized;
            if (isMinimised && !wasMinimised)
                windowDidMiniaturize();
            else if (wasMinimised && !isMinimised)
                windowDidDeminiaturize();
        }
    }
    return QObject::eventFilter(watched, event);
}

bool anyWindowShown()
{
    const auto windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(), [](const QWindow* window) {
        return window->isVisible() && !(window->windowStates() & Qt::WindowMinimized);
    });
}

void AppDelegate::applicationStateChanged(Qt::ApplicationState state)
{
    const bool wasHidden = hidden;
    hidden = state == Qt::ApplicationHidden;
    if (hidden && !wasHidden)
        appDidHide();
    else if (wasHidden && !hidden)
        appDidUnhide();
}

void AppDelegate::appDidHide() { analytics.endSession(); }
void AppDelegate::appDidUnhide() { analytics.beginSession(); }

void AppDelegate::windowDidMiniaturize()
{
    if (!anyWindowShown())
        analytics.endSession();
}

void AppDelegate::windowDidDeminiaturize() { analytics.beginSession(); }

void AppDelegate::applicationWillTerminate()
{
    settings.sync();
    analytics.endSession();
}

void AppDelegate::openUrls(const QList<QUrl>& urls)
{
    QStringList shown;
    for (const QUrl& url : urls)
        shown.append(url.toString());
    logInfo(QStringLiteral("Received file open request from Finder: [") + shown.join(QStringLiteral(", ")) +
            QLatin1Char(']'));

    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        const QString name = QFileInfo(path).fileName();
        if (QFileInfo(path).suffix() != QLatin1String("slideshow"))
            continue; // other files are passed over without a word
        auto result = documents.read(path);
        if (auto* document = std::get_if<SlideshowDocument>(&result)) {
            commands.post(Command::openSlideshowFromFinder,
                          {{QStringLiteral("document"), QVariant::fromValue(*document)}});
            logInfo(QStringLiteral("Successfully processed file open request for: ") + name);
        } else {
            const QString description = std::get<QString>(result);
            logError(QStringLiteral("Failed to open slideshow from Finder: ") + description);
            // Shown from the event loop, after this request has been handled.
            QMetaObject::invokeMethod(
                this,
                [this, name, description] {
                    dialogs.alert(AlertStyle::Critical, QStringLiteral("Failed to Open Slideshow"),
                                  QStringLiteral("Could not open '%1': %2").arg(name, description));
                },
                Qt::QueuedConnection);
        }
    }
}

} // namespace tb
