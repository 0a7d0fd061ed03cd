// Slideshow documents at scale: a document of every file of a folder tree (20,000 in the bench
// corpus), written, read back with every file in place, with every file moved and with every
// file gone, and the GUI thread's longest stall while a window opens it.
// Usage: document_bench <tree> <scratch folder>   (the tree is moved about: give it a copy)
#include "StallProbe.h"
#include "audio/AudioManager.h"
#include "audio/QtAudioPlayers.h"
#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/RecordingAnalytics.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "documents/DocumentCodec.h"
#include "documents/SlideshowLoadService.h"
#include "documents/SlideshowOpening.h"
#include "documents/SlideshowSaveService.h"
#include "media/Bookmark.h"
#include "media/Queue.h"
#include "platform/LinuxFileSystems.h"
#include "playback/SlideshowManager.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QSaveFile>

#include <cstdio>
#include <memory>

namespace {

// Every question is answered "Cancel": the bench never waits on a person.
class CancellingDialogs final : public tb::UserDialogs {
public:
    tb::QuestionAnswer question(tb::AlertStyle, const QString&, const QString&, const QStringList& buttons,
                                const QString&) override
    {
        return {int(buttons.size()) - 1, false, true};
    }
    QStringList openPanel(const tb::OpenPanelOptions&) override { return {}; }
    QString savePanel(const tb::SavePanelOptions&) override { return {}; }
};

class NoRevealer final : public tb::FileRevealer {
public:
    void reveal(const QString&) override {}
};

// Renames every folder that holds files, and back: each file moves beside its old place.
void renameFileFolders(const QString& tree, const QString& from, const QString& to)
{
    QStringList folders;
    QDirIterator all(tree, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString folder = all.next();
        if (folder.endsWith(from) && !QDir(folder).entryList(QDir::Files).isEmpty())
            folders.append(folder);
    }
    for (const QString& folder : folders)
        QDir().rename(folder, folder.left(folder.size() - from.size()) + to);
}

double msSince(const QElapsedTimer& clock) { return double(clock.nsecsElapsed()) / 1e6; }

double restoreMs(const tb::SlideshowDocument& document, int& found)
{
    QElapsedTimer clock;
    clock.start();
    tb::BookmarkResolver resolver;
    const auto images = tb::SlideshowLoadService::restoreImages(document, tb::SlideshowOpening::baseFolder(), resolver);
    found = int(images.items.size());
    return msSince(clock);
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: document_bench <tree> <scratch folder>\n");
        return 2;
    }
    const QString tree = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const QDir scratch(QString::fromLocal8Bit(argv[2]));
    // The log is on, written to a file as the program writes it, and kept off the console.
    tb::Logger::installShared(std::make_unique<tb::Logger>(scratch.absolutePath(), [](const QByteArray&) {}));

    // The queue: every file of the tree.
    QList<tb::IdentifiableImage> items;
    QDirIterator files(tree, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo file(files.next());
        items.append(tb::IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(file.filePath()), file.fileName(),
                                           file.path(), std::nullopt, false, false, std::nullopt));
    }
    tb::RecordingAnalytics analytics;
    tb::SettingsStore settings(scratch.filePath(QStringLiteral("settings.conf")));
    tb::SlideshowManager manager;
    tb::QtAudioPlayers players;
    tb::AudioManager audio(players);
    CancellingDialogs dialogs;
    NoRevealer revealer;

    // Saving it, from the command to the alert that tells it is done (bookmarks, encoding and
    // the write run on the save service's worker).
    const QString file = scratch.filePath(QStringLiteral("big.slideshow"));
    QElapsedTimer clock;
    double saveMs = 0;
    bool saved = false;
    {
        tb::SlideshowSaveService saver({settings, dialogs, analytics, revealer});
        QObject::connect(&saver, &tb::SlideshowSaveService::finished, &app, [&](const QString&, bool ok) {
            saveMs = msSince(clock);
            saved = ok;
            app.quit();
        });
        clock.start();
        saver.saveSlideshow(items, {}, audio, manager, QStringLiteral("-"), file);
        app.exec();
    }

    tb::SlideshowLoadService loader(analytics);
    clock.restart();
    const auto loaded = loader.loadDocument(file);
    const double readMs = msSince(clock);
    if (!saved || !std::holds_alternative<tb::SlideshowDocument>(loaded))
        return 1;
    const tb::SlideshowDocument& document = std::get<tb::SlideshowDocument>(loaded);
    int present = 0;
    const double presentMs = readMs + restoreMs(document, present);

    // The window's opening, every file in place: the GUI thread's longest stall meanwhile.
    tb::Queue queue;
    tb::LinuxFileSystems fileSystems;
    tb::SlideshowOpening opening({dialogs, fileSystems, settings, manager, queue, audio, analytics},
                                 {[](bool) {}, [](const QString&) {}, [](int) {}, [](const QString&) {}});
    StallProbe probe;
    QObject::connect(&opening, &tb::SlideshowOpening::finished, &app, &QCoreApplication::quit);
    probe.start();
    clock.restart();
    opening.open(document);
    app.exec();
    const double openMs = msSince(clock);

    // Every file moved beside its old place (its folder renamed), then every file gone.
    renameFileFolders(tree, QString(), QStringLiteral("-moved"));
    int found = 0;
    const double movedMs = restoreMs(document, found);
    renameFileFolders(tree, QStringLiteral("-moved"), QString());
    const QString elsewhere = scratch.filePath(QStringLiteral("elsewhere"));
    QDir().rename(tree, elsewhere);
    int none = 0;
    const double missingMs = restoreMs(document, none);
    QDir().rename(elsewhere, tree);

    std::printf(
        "%lld items: save %.0f ms (%lld bytes); load, all present %.0f ms (%d found); window opening %.0f ms, "
        "longest GUI stall %.1f ms (%lld in the queue); all moved %.0f ms (%d found); all missing %.0f ms (%d found)\n",
        static_cast<long long>(document.images.size()), saveMs, static_cast<long long>(QFileInfo(file).size()),
        presentMs, present, openMs, probe.worstMs(), static_cast<long long>(queue.size()), movedMs, found, missingMs,
        none);
    return 0;
}
