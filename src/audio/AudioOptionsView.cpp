#include "AudioOptionsView.h"

#include "AudioManager.h"
#include "core/Logger.h"
#include "core/UserDialogs.h"

#include <QCheckBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeDatabase>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QSet>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QToolButton>

#include <cmath>

namespace tb {

namespace {

QIcon themed(const QWidget* widget, const char* name, QStyle::StandardPixmap fallback)
{
    return QIcon::fromTheme(QLatin1String(name), widget->style()->standardIcon(fallback));
}

QToolButton* iconButton(QWidget* parent, const QIcon& icon, const QString& tip)
{
    auto* button = new QToolButton(parent);
    button->setIcon(icon);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setAutoRaise(true);
    return button;
}

// A track's row: a click anywhere on it selects the track.
class TrackRow final : public QFrame {
public:
    TrackRow(std::function<void()> onClick, QWidget* parent) : QFrame(parent), onClick(std::move(onClick))
    {
        setAutoFillBackground(true);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton)
            onClick();
        QFrame::mousePressEvent(event);
    }

private:
    std::function<void()> onClick;
};

constexpr int volumeSteps = 100;

} // namespace

AudioOptionsView::AudioOptionsView(AudioManager& audioManager, UserDialogs& dialogs, QWidget* parent)
    : QDialog(parent), audioManager(audioManager), dialogs(dialogs)
{
    setWindowTitle(QStringLiteral("Audio Options"));
    setMinimumSize(460, 360);
    auto* layout = new QVBoxLayout(this);

    auto* add = new QPushButton(QStringLiteral("Add Audio Tracks"), this);
    add->setAccessibleName(add->text());
    connect(add, &QPushButton::clicked, this, &AudioOptionsView::addAudioTracks);
    auto* removeAll =
        new QPushButton(themed(this, "edit-delete", QStyle::SP_TrashIcon), QStringLiteral("Remove all"), this);
    removeAll->setAccessibleName(removeAll->text());
    connect(removeAll, &QPushButton::clicked, this, [this] { this->audioManager.removeAllTracks(); });
    auto* top = new QHBoxLayout;
    top->addWidget(add);
    top->addStretch(1);
    top->addWidget(removeAll);
    layout->addLayout(top);

    auto* list = new QWidget;
    rows = new QVBoxLayout(list);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    emptyText = new QLabel(QStringLiteral("No audio tracks added"), this);
    emptyText->setAlignment(Qt::AlignCenter);
    emptyText->setAccessibleName(emptyText->text());
    trackList = new QScrollArea(this);
    trackList->setWidget(list);
    trackList->setWidgetResizable(true);
    trackList->setAccessibleName(QStringLiteral("Audio tracks"));
    layout->addWidget(emptyText, 1);
    layout->addWidget(trackList, 1);

    auto* volumeRow = new QHBoxLayout;
    auto* quiet = new QLabel(this);
    quiet->setPixmap(themed(this, "audio-volume-low", QStyle::SP_MediaVolumeMuted).pixmap(16, 16));
    auto* loud = new QLabel(this);
    loud->setPixmap(themed(this, "audio-volume-high", QStyle::SP_MediaVolume).pixmap(16, 16));
    volume = new QSlider(Qt::Horizontal, this);
    volume->setRange(0, volumeSteps);
    volume->setToolTip(QStringLiteral("Volume"));
    volume->setAccessibleName(volume->toolTip());
    connect(volume, &QSlider::valueChanged, this,
            [this](int value) { this->audioManager.setVolume(double(value) / volumeSteps); });
    volumeRow->addWidget(quiet);
    volumeRow->addWidget(volume, 1);
    volumeRow->addWidget(loud);
    layout->addLayout(volumeRow);

    loop = new QCheckBox(QStringLiteral("Loop Audio"), this);
    loop->setAccessibleName(loop->text());
    connect(loop, &QCheckBox::toggled, this, [this](bool on) { this->audioManager.setLooping(on); });
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(loop);
    bottom->addStretch(1);
    auto* close = new QPushButton(QStringLiteral("Close"), this);
    close->setAccessibleName(close->text());
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    bottom->addWidget(close);
    layout->addLayout(bottom);

    auto followVolume = [this] {
        QSignalBlocker blocker(volume);
        volume->setValue(int(std::lround(this->audioManager.volume() * volumeSteps)));
    };
    auto followLoop = [this] {
        QSignalBlocker blocker(loop);
        loop->setChecked(this->audioManager.isLooping());
    };
    connect(&audioManager, &AudioManager::volumeChanged, this, followVolume);
    connect(&audioManager, &AudioManager::isLoopingChanged, this, followLoop);
    connect(&audioManager, &AudioManager::audioTracksChanged, this, &AudioOptionsView::showTracks);
    connect(&audioManager, &AudioManager::currentTrackIndexChanged, this, &AudioOptionsView::showTracks);
    followVolume();
    followLoop();
    showTracks();
}

QString AudioOptionsView::durationText(double seconds)
{
    const long whole = long(seconds);
    return QString::asprintf("%ld:%02ld", whole / 60, whole % 60);
}

QStringList AudioOptionsView::audioNameFilters()
{
    QStringList patterns;
    QSet<QString> seen;
    auto addSuffix = [&](const QString& suffix) {
        if (!seen.contains(suffix)) {
            seen.insert(suffix);
            patterns.append(QStringLiteral("*.") + suffix);
        }
    };
    for (const QMimeType& type : QMimeDatabase().allMimeTypes()) {
        if (type.name().startsWith(QLatin1String("audio/"))) {
            for (const QString& suffix : type.suffixes())
                addSuffix(suffix);
        }
    }
    for (const char* suffix : {"mp3", "wav", "aac", "aiff", "m4a"})
        addSuffix(QLatin1String(suffix));
    return {QStringLiteral("Audio (%1)").arg(patterns.join(QLatin1Char(' ')))};
}

void AudioOptionsView::addAudioTracks()
{
    OpenPanelOptions options;
    options.title = QStringLiteral("Add Audio Tracks");
    options.nameFilters = audioNameFilters();
    options.allowsMultipleSelection = true;
    options.canChooseFiles = true;
    options.canChooseDirectories = false;
    const QStringList chosen = dialogs.openPanel(options);
    if (chosen.isEmpty())
        return;
    QList<AudioTrack> tracks = audioManager.audioTracks();
    for (const QString& path : chosen)
        tracks.append(audioManager.makeTrack(QUrl::fromLocalFile(path)));
    const int total = int(tracks.size());
    audioManager.setAudioTracks(std::move(tracks));
    if (total == 1)
        audioManager.setCurrentTrackIndex(0);
    logInfo(QStringLiteral("Added %1 audio tracks. Total tracks: %2").arg(chosen.size()).arg(total));
}

void AudioOptionsView::selectTrack(int index)
{
    if (index < 0 || index >= audioManager.trackCount())
        return;
    selectedId = audioManager.audioTracks()[index].id;
    audioManager.setCurrentTrackIndex(index);
    showTracks();
}

void AudioOptionsView::moveTrackUp(int index)
{
    if (index < 1)
        return;
    moveTrack(index, index - 1);
    logInfo(QStringLiteral("Moved track up from index %1 to %2").arg(index).arg(index - 1));
}

void AudioOptionsView::moveTrackDown(int index)
{
    if (index < 0 || index >= audioManager.trackCount() - 1)
        return;
    moveTrack(index, index + 1);
    logInfo(QStringLiteral("Moved track down from index %1 to %2").arg(index).arg(index + 1));
}

// The current track stays current wherever it goes; a playing one goes on playing.
void AudioOptionsView::moveTrack(int from, int to)
{
    QList<AudioTrack> tracks = audioManager.audioTracks();
    const int current = audioManager.currentTrackIndex();
    std::optional<QUuid> currentId;
    if (current >= 0 && current < tracks.size())
        currentId = tracks[current].id;
    tracks.move(from, to);
    audioManager.setAudioTracks(tracks);
    if (currentId) {
        for (int i = 0; i < tracks.size(); ++i) {
            if (tracks[i].id == *currentId)
                audioManager.setCurrentTrackIndex(i);
        }
    }
}

void AudioOptionsView::deleteTrack(int index)
{
    QList<AudioTrack> tracks = audioManager.audioTracks();
    if (index < 0 || index >= tracks.size())
        return;
    const int current = audioManager.currentTrackIndex();
    const bool deletingCurrent = index == current;
    std::optional<QUuid> currentId;
    if (!deletingCurrent && current >= 0 && current < tracks.size())
        currentId = tracks[current].id;
    tracks.removeAt(index);
    const int remaining = int(tracks.size());
    audioManager.setAudioTracks(tracks);
    if (!deletingCurrent) {
        if (currentId) {
            for (int i = 0; i < remaining; ++i) {
                if (tracks[i].id == *currentId)
                    audioManager.setCurrentTrackIndex(i);
            }
        } else if (audioManager.currentTrackIndex() >= remaining) {
            audioManager.setCurrentTrackIndex(std::max(remaining, 1) - 1);
        }
    } else if (remaining > 0) {
        // A track that is not playing stays loaded on the deleted file until the next load.
        audioManager.setCurrentTrackIndex(0);
        if (audioManager.isPlaying())
            audioManager.playTrack(0);
    } else {
        audioManager.stop();
        audioManager.setCurrentTrackIndex(0);
    }
    logInfo(QStringLiteral("Deleted track at index %1").arg(index));
}

void AudioOptionsView::showTracks()
{
    // The old rows go once their events are done: a click on one of them may be what is
    // rebuilding the list.
    while (QLayoutItem* item = rows->takeAt(0)) {
        if (QWidget* row = item->widget()) {
            row->hide();
            row->deleteLater();
        }
        delete item;
    }
    const QList<AudioTrack>& tracks = audioManager.audioTracks();
    emptyText->setVisible(tracks.isEmpty());
    trackList->setVisible(!tracks.isEmpty());
    for (int index = 0; index < tracks.size(); ++index) {
        const AudioTrack& track = tracks[index];
        auto* row = new TrackRow([this, index] { selectTrack(index); }, rows->parentWidget());
        if (selectedId == track.id) {
            QPalette palette = row->palette();
            palette.setColor(QPalette::Window, QColor::fromRgbF(0.0, 0.0, 1.0, 0.2));
            row->setPalette(palette);
        } else {
            row->setAutoFillBackground(false);
        }
        auto* line = new QHBoxLayout(row);
        auto* name = new QLabel(track.filename, row);
        line->addWidget(name, 1);
        if (track.duration) {
            auto* length = new QLabel(durationText(*track.duration), row);
            line->addWidget(length);
        }
        QToolButton* up = iconButton(row, themed(this, "go-up", QStyle::SP_ArrowUp), QStringLiteral("Move up"));
        QToolButton* down = iconButton(row, themed(this, "go-down", QStyle::SP_ArrowDown), QStringLiteral("Move down"));
        QToolButton* trash =
            iconButton(row, themed(this, "edit-delete", QStyle::SP_TrashIcon), QStringLiteral("Delete track"));
        connect(up, &QToolButton::clicked, this, [this, index] { moveTrackUp(index); });
        connect(down, &QToolButton::clicked, this, [this, index] { moveTrackDown(index); });
        connect(trash, &QToolButton::clicked, this, [this, index] { deleteTrack(index); });
        for (QToolButton* button : {up, down, trash})
            line->addWidget(button);
        row->setAccessibleName(track.filename);
        rows->addWidget(row);
    }
    rows->addStretch(1);
}

} // namespace tb
