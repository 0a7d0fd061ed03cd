#include "AppDelegate.h"
#include "AppServices.h"
#include "CommandBus.h"
#include "MainWindow.h"
#include "QtUserDialogs.h"
#include "SingleInstance.h"
#include "UpdaterControllerWrapper.h"
#include "core/QtScheduler.h"
#include "core/RandomSource.h"
#include "core/RecordingAnalytics.h"
#include "core/SettingsStore.h"
#include "core/Version.h"
#include "documents/DocumentReader.h"
#include "media/MetadataService.h"
#include "platform/LinuxFileRevealer.h"

#include <QApplication>
#include <QDir>
#include <QUrl>

namespace {

// Documents can be handed to the program before it can read them; each request then ends in
// the "Failed to Open Slideshow" alert with this reason.
class UnreadableDocuments final : public tb::DocumentReader {
public:
    std::variant<tb::SlideshowDocument, QString> read(const QString&) override
    {
        return QStringLiteral("This version of Tallowbrook cannot read slideshow documents yet.");
    }
};

QList<QUrl> urlsFromArguments(const QStringList& arguments)
{
    QList<QUrl> urls;
    for (const QString& argument : arguments.mid(1))
        urls.append(QUrl::fromUserInput(argument, QDir::currentPath(), QUrl::AssumeLocalFile));
    return urls;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationName(QStringLiteral("Tallowbrook"));
    QApplication::setApplicationVersion(QString::fromLatin1(tb::appVersion));
    QApplication::setDesktopFileName(QStringLiteral("com.tallowbrook.Tallowbrook"));

    // A second launch hands its files to the running program and leaves.
    QStringList paths;
    for (const QUrl& url : urlsFromArguments(QApplication::arguments()))
        paths.append(url.toLocalFile());
    tb::SingleInstance instance(tb::SingleInstance::defaultServerName());
    if (instance.forwardToRunningInstance(paths))
        return 0;

    tb::SettingsStore settings;
    tb::QtScheduler scheduler;
    tb::SystemRandomSource random;
    tb::RecordingAnalytics analytics; // events stay in memory until the network client is wired in
    tb::LinuxFileRevealer revealer;
    tb::QtUserDialogs dialogs;
    tb::CommandBus commands;
    tb::MetadataService metadata;
    UnreadableDocuments documents;

    // Start-up order: the delegate with its updater, then analytics, then the first window.
    tb::AppDelegate delegate(analytics, settings, commands, documents, dialogs);
    analytics.beginSession();
    tb::AppServices services{settings,  scheduler, random,
                             analytics, revealer,  dialogs,
                             commands,  metadata,  delegate.updaterControllerWrapper()};

    auto* window = new tb::MainWindow(services);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->resize(900, 700);
    window->show();
    delegate.applicationDidFinishLaunching();

    instance.listen();
    QObject::connect(&instance, &tb::SingleInstance::filesRequested, &delegate, [&delegate](const QStringList& files) {
        QList<QUrl> urls;
        for (const QString& file : files)
            urls.append(QUrl::fromLocalFile(file));
        delegate.openUrls(urls);
    });
    QObject::connect(&instance, &tb::SingleInstance::activationRequested, [] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* main = qobject_cast<tb::MainWindow*>(widget); main && main->isVisible()) {
                main->showNormal();
                main->raise();
                main->activateWindow();
                return;
            }
        }
    });

    // Files named at launch arrive as an open request once the program is running.
    const QList<QUrl> launchUrls = urlsFromArguments(QApplication::arguments());
    if (!launchUrls.isEmpty())
        QMetaObject::invokeMethod(
            &delegate, [&delegate, launchUrls] { delegate.openUrls(launchUrls); }, Qt::QueuedConnection);

    return app.exec();
}
