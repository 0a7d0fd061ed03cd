// Adds a whole folder tree to a queue the way the main window does, and reports how long until
// every item is in, how long the GUI thread was ever blocked meanwhile (a 10 ms probe timer),
// and how long sorting the queue by file name takes.
// Usage: intake_bench <folder>
#include "StallProbe.h"
#include "core/Logger.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "media/FileIntake.h"
#include "media/Queue.h"
#include "media/QueueEditing.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace {

// Takes every subfolder, as a user answering "All Subfolders" would.
class AllSubfolders final : public tb::UserDialogs {
public:
    tb::QuestionAnswer question(tb::AlertStyle, const QString&, const QString&, const QStringList&,
                                const QString&) override
    {
        return {};
    }
    QStringList openPanel(const tb::OpenPanelOptions&) override { return {}; }
    QString savePanel(const tb::SavePanelOptions&) override { return {}; }
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    tb::Logger::installShared(std::make_unique<tb::Logger>(std::nullopt, [](const QByteArray&) {}));
    const QString folder = QCoreApplication::arguments().value(1);
    QTemporaryDir dir;
    tb::SettingsStore settings(dir.filePath(QStringLiteral("settings.conf")));
    AllSubfolders dialogs;
    tb::Queue queue;
    tb::FileIntake intake(queue, settings, dialogs);

    QElapsedTimer clock;
    StallProbe probe;
    QObject::connect(&intake, &tb::FileIntake::loadingChanged, [&](bool loading) {
        if (!loading)
            app.quit();
    });
    clock.start();
    probe.start();
    QTimer::singleShot(0, [&] { intake.processURLs({QUrl::fromLocalFile(folder)}, true); });
    app.exec();
    const double intakeMs = double(clock.nsecsElapsed()) / 1e6;

    QElapsedTimer sortClock;
    sortClock.start();
    QList<tb::IdentifiableImage> sorted = queue.items();
    tb::sortImages(sorted, QStringLiteral("Filename Ascending ↑"));
    queue.replaceAll(std::move(sorted));
    const double sortMs = double(sortClock.nsecsElapsed()) / 1e6;
    std::printf("intake items=%lld all_in_ms=%.0f worst_gui_stall_ms=%.1f sort_by_name_ms=%.1f\n",
                qlonglong(queue.size()), intakeMs, probe.worstMs(), sortMs);
    return 0;
}
