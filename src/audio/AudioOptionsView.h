#pragma once

#include <QDialog>
#include <QUuid>

#include <optional>

class QCheckBox;
class QLabel;
class QScrollArea;
class QSlider;
class QVBoxLayout;

namespace tb {

class AudioManager;
class UserDialogs;

// The audio panel: the playlist's tracks with their lengths, adding, selecting, moving and
// deleting tracks, the volume and the loop switch. Selecting a track only moves the playlist's
// index; nothing is loaded or played from here.
class AudioOptionsView final : public QDialog {
    Q_OBJECT
public:
    AudioOptionsView(AudioManager& audioManager, UserDialogs& dialogs, QWidget* parent = nullptr);

    // "Add Audio Tracks": the files chosen in the open panel, in its order.
    void addAudioTracks();
    void selectTrack(int index);
    void moveTrackUp(int index);
    void moveTrackDown(int index);
    void deleteTrack(int index);

    std::optional<QUuid> selectedTrackId() const { return selectedId; }

    // "12:05" for 725 seconds; minutes are not folded into hours.
    static QString durationText(double seconds);
    // The open panel's filter: every audio type the system knows, and the usual extensions.
    static QStringList audioNameFilters();

private:
    void moveTrack(int from, int to);
    void showTracks();

    AudioManager& audioManager;
    UserDialogs& dialogs;
    std::optional<QUuid> selectedId;
    QScrollArea* trackList = nullptr;
    QVBoxLayout* rows = nullptr;
    QLabel* emptyText = nullptr;
    QSlider* volume = nullptr;
    QCheckBox* loop = nullptr;
};

} // namespace tb
