#pragma once

#include "audio/SlideshowAudio.h"
#include "core/FileRevealer.h"
#include "core/FileSystems.h"
#include "core/FolderWatchers.h"
#include "core/MediaRemote.h"
#include "core/RandomSource.h"
#include "core/SleepInhibitor.h"
#include "media/PictureCaches.h"
#include "support/QtPrinting.h"

#include <QImageReader>
#include <QStringList>
#include <QUrl>
#include <QUuid>

#include <atomic>
#include <functional>
#include <random>

namespace tb::test {

// Doubles for what a show reaches outside itself: the playlist, the picture caches, the
// display-sleep hold, and a repeatable random source.
class FakeAudio final : public SlideshowAudio {
public:
    int trackCount() const override { return tracks; }
    bool isPlaying() const override { return playing; }
    void prepareForNewSlideshow() override { calls.append(QStringLiteral("prepare")); }
    void play() override
    {
        calls.append(QStringLiteral("play"));
        playing = tracks > 0;
    }
    void pausePlayer() override
    {
        calls.append(QStringLiteral("pause"));
        playing = false;
    }
    void stopPlayer() override
    {
        calls.append(QStringLiteral("stop"));
        playing = false;
    }
    int tracks = 0;
    bool playing = false;
    QStringList calls;
};

class FakeCaches final : public PictureCaches {
public:
    void clearPictures() override { ++pictureClears; }
    void clearThumbnails() override { ++thumbnailClears; }
    void clearVideoThumbnails() override { ++videoThumbnailClears; }
    void preload(const QList<IdentifiableImage>& items) override { preloads.append(int(items.size())); }
    void cancelPreloads() override { ++preloadCancels; }
    // Reads the file itself, uncached.
    std::optional<QImage> picture(const QUrl& url, bool) override
    {
        QImageReader reader(url.toLocalFile());
        reader.setAutoTransform(true);
        const QImage image = reader.read();
        return image.isNull() ? std::nullopt : std::optional<QImage>(image);
    }
    std::optional<QImage> thumbnail(const QUrl& url, bool isVideo, QSize, qreal) override
    {
        ++thumbnailRequests;
        return picture(url, isVideo);
    }
    std::optional<QImage> cellPicture(const QUrl& url, bool isVideo, QSize pixelSize) override
    {
        ++cellRequests;
        auto image = picture(url, isVideo);
        if (image && !pixelSize.isEmpty())
            *image = image->scaled(pixelSize);
        return image;
    }
    std::atomic<int> thumbnailRequests{0};
    std::atomic<int> cellRequests{0};
    int pictureClears = 0;
    int thumbnailClears = 0;
    int videoThumbnailClears = 0;
    int preloadCancels = 0;
    QList<int> preloads;
};

// Answers at once, or, when deferred, when told to.
class FakeInhibitor final : public SleepInhibitor {
public:
    void inhibit(const QString&, Inhibited done) override
    {
        answer([this, done] {
            if (!failure.isEmpty())
                done(failure);
            else
                done(++lastCookie);
        });
    }
    void uninhibit(quint32 id, Released done) override
    {
        answer([this, id, done] {
            if (!failure.isEmpty()) {
                done(failure);
                return;
            }
            released.append(id);
            done(std::nullopt);
        });
    }
    void answerAll()
    {
        while (!waiting.isEmpty())
            waiting.takeFirst()();
    }
    QString failure;
    quint32 lastCookie = 40;
    QList<quint32> released;
    bool deferred = false;
    QList<std::function<void()>> waiting;

private:
    void answer(std::function<void()> fn)
    {
        if (deferred)
            waiting.append(std::move(fn));
        else
            fn();
    }
};

class FakeRevealer final : public FileRevealer {
public:
    void reveal(const QString& filePath) override { revealed.append(filePath); }
    QStringList revealed;
};

// Paths under any of `networkFolders` count as lying on a network volume.
class FakeFileSystems final : public FileSystems {
public:
    bool isNetworkPath(const QString& path) const override
    {
        for (const QString& folder : networkFolders) {
            if (path.startsWith(folder))
                return true;
        }
        return false;
    }
    QStringList networkFolders;
};

// Watches that report only when the test says the folder changed.
class FakeFolderWatchers final : public FolderWatchers {
public:
    std::unique_ptr<FolderWatch> watch(const QString& folder, std::function<void()> onChange) override
    {
        auto handle = std::make_unique<Handle>(*this);
        watched = folder;
        report = std::move(onChange);
        return handle;
    }
    // A change in the watched folder, if a watch stands.
    void change() const
    {
        if (report)
            report();
    }
    bool isWatching() const { return bool(report); }
    QString watched;

private:
    struct Handle final : FolderWatch {
        explicit Handle(FakeFolderWatchers& owner) : owner(owner) {}
        ~Handle() override
        {
            owner.report = nullptr;
            owner.watched.clear();
        }
        FakeFolderWatchers& owner;
    };
    std::function<void()> report;
};

// A remote control that keeps what a show tells it; `press` is a button, dead once withdrawn.
class RecordingMediaRemote final : public MediaRemote {
public:
    void setStatus(Status value) override { status = value; }
    void setItem(const std::optional<Item>& value) override { item = value; }
    void offer(CommandHandler commands) override
    {
        handler = std::move(commands);
        ++offers;
    }
    void withdraw() override
    {
        handler = nullptr;
        ++withdrawals;
    }
    void press(Command command) const
    {
        if (handler) {
            const CommandHandler run = handler; // the command may withdraw it
            run(command);
        }
    }
    bool isOffered() const { return bool(handler); }
    Status status = Status::stopped;
    std::optional<Item> item;
    CommandHandler handler;
    int offers = 0;
    int withdrawals = 0;
};

class SeededRandom final : public RandomSource {
public:
    explicit SeededRandom(std::uint64_t seed = 1) : engine(seed) {}
    std::uint64_t next64() override { return engine(); }
    std::mt19937_64 engine;
};

inline QList<IdentifiableImage> makeQueue(int count)
{
    QList<IdentifiableImage> items;
    for (int i = 0; i < count; ++i)
        items.append(IdentifiableImage(QUuid::createUuid(), QUrl::fromLocalFile(QStringLiteral("/show/%1.jpg").arg(i)),
                                       QStringLiteral("%1.jpg").arg(i), QStringLiteral("/show"), std::nullopt, false,
                                       false, std::nullopt));
    return items;
}

} // namespace tb::test
