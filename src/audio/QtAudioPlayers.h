#pragma once

#include "AudioPlayer.h"

namespace tb {

// Players over Qt Multimedia (QMediaPlayer with a QAudioOutput on the default device). Opening
// checks the file with FFmpeg first, because QMediaPlayer accepts any source at once and only
// reports later that it cannot play it.
class QtAudioPlayers final : public AudioPlayers {
public:
    std::unique_ptr<AudioPlayer> open(const QUrl& url, QString& error) override;
    std::optional<double> duration(const QUrl& url) override;
};

} // namespace tb
