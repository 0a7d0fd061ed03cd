import QtQuick
import QtMultimedia
import Tallowbrook.Playback

// One visit to one clip: it plays from its start, muted if the show says so, drawn with its aspect
// kept on the show's background. In a manual show it repeats from the start; otherwise its end is
// reported to the player, from the event loop rather than from inside the media player's
// notification. Play and pause follow the player only when that changes: asking an ended clip
// to play would start it over.
Item {
    id: view
    required property url source
    required property QtObject player
    // Whether the clip has something to show yet (a slide takes over once it has).
    readonly property int status: Image.Ready
    readonly property bool playing: player.isVideoPlaying
    readonly property bool software: GraphicsInfo.api === GraphicsInfo.Software

    MediaPlayer {
        id: media
        objectName: "clip"
        source: view.source
        videoOutput: view.software ? frames.videoSink : output
        audioOutput: AudioOutput { muted: view.player.muteVideoAudio }
        onMediaStatusChanged: {
            if (mediaStatus !== MediaPlayer.EndOfMedia)
                return
            if (view.player.clipsLoop) {
                setPosition(0)
                play()
            } else {
                Qt.callLater(view.player.onVideoEnded)
            }
        }
    }
    VideoOutput {
        id: output
        anchors.fill: parent
        visible: !view.software
        fillMode: VideoOutput.PreserveAspectFit
    }
    ClipFrames {
        id: frames
        anchors.fill: parent
        visible: view.software
    }

    onPlayingChanged: {
        if (!playing)
            media.pause()
        else if (media.mediaStatus !== MediaPlayer.EndOfMedia)
            media.play()
    }
    Component.onCompleted: if (playing) media.play()
    Component.onDestruction: {
        media.stop()
        media.source = ""
        view.player.onVideoDismantled()
    }
}
