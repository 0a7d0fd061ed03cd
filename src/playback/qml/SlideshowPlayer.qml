import QtQuick

// What a single-photo show puts on screen. The player object holds all state; this only shows
// it: one slide per item, laid out by the player's choice of view, changed with a cross-fade
// when the show fades, and the pause indicators above.
Rectangle {
    id: root
    required property QtObject player
    required property QtObject overlay
    color: player.backgroundColor
    clip: true

    property Item currentSlide: null

    // A new slide for the current item. It takes over once its picture is decoded, so no frame
    // of a fade waits on a decoder; under a fade the old slide fades out meanwhile.
    function present() {
        let previous = currentSlide
        // A slide still waiting for its picture is dropped: the next one takes over from what is
        // on screen, so changes faster than decoding never pile slides up.
        if (previous && !previous.ready) {
            const waiting = previous
            previous = waiting.previous
            waiting.previous = null
            waiting.destroy()
        }
        currentSlide = slideComponent.createObject(slides, {
            kind: player.currentKind,
            source: player.currentSource,
            clip: player.currentUrl,
            zoom: player.kenBurnsScale,
            drift: player.kenBurnsOffset,
            previous: previous
        })
    }

    Connections {
        target: root.player
        function onCurrentIndexChanged() { root.present() }
    }
    Component.onCompleted: present()

    Item { id: slides; anchors.fill: parent }

    Component {
        id: slideComponent

        Item {
            id: slide
            anchors.fill: parent
            opacity: 0

            property string kind
            property string source
            property url clip
            property real zoom: 1
            property point drift
            property Item previous
            // A clip always fades in; pictures fade only when the show fades.
            readonly property bool fadesIn: kind === "video" || root.player.fades
            readonly property int fadeMs: Math.max(0, root.player.crossfadeDuration * 1000)
            readonly property bool ready: kind === "none" || (view.item !== null
                                          && view.item.status !== undefined
                                          && view.item.status !== Image.Loading)

            function takeOver() {
                if (fadesIn) {
                    fadeIn.start()
                    if (previous)
                        previous.leave(fadeMs)
                } else {
                    opacity = 1
                    if (previous)
                        previous.leave(0)
                }
                previous = null
            }
            function leave(ms) {
                if (ms > 0) {
                    fadeOut.duration = ms
                    fadeOut.from = opacity
                    fadeOut.start()
                } else {
                    destroy()
                }
            }
            onReadyChanged: if (ready) takeOver()
            Component.onCompleted: if (ready) takeOver()

            NumberAnimation {
                id: fadeIn
                target: slide
                property: "opacity"
                to: 1
                duration: slide.fadeMs
                easing.type: Easing.InOutQuad
                // A restarted fade must still end fully opaque.
                onFinished: slide.opacity = 1
            }
            NumberAnimation {
                id: fadeOut
                target: slide
                property: "opacity"
                to: 0
                easing.type: Easing.InOutQuad
                onFinished: slide.destroy()
            }

            Loader {
                id: view
                anchors.fill: parent
                sourceComponent: {
                    switch (slide.kind) {
                    case "gif": return gifView
                    case "kenBurns": return kenBurnsView
                    case "bestFit": return bestFitView
                    case "fill": return fillView
                    case "video": return videoView
                    case "fit": return fitView
                    default: return null
                    }
                }
            }

            Component {
                id: gifView
                // Keeps its aspect and scales up, whatever the scaling mode.
                AnimatedImage {
                    source: slide.source
                    fillMode: Image.PreserveAspectFit
                    cache: false
                }
            }
            Component {
                id: videoView
                VideoPlayerView {
                    source: slide.clip
                    player: root.player
                }
            }
            Component {
                id: fitView
                Image {
                    source: slide.source
                    fillMode: Image.PreserveAspectFit
                    asynchronous: true
                    cache: false
                    smooth: true
                }
            }
            Component {
                id: fillView
                Image {
                    source: slide.source
                    fillMode: Image.PreserveAspectCrop
                    asynchronous: true
                    cache: false
                    smooth: true
                }
            }
            Component {
                id: bestFitView
                // The picture's own size, shrunk to fit, never enlarged, centred. The decoded
                // picture has its file's size unless that is beyond every screen, and then it
                // is shrunk to fit anyway.
                Item {
                    readonly property alias status: picture.status
                    readonly property real factor: picture.implicitWidth > 0 && picture.implicitHeight > 0
                        ? Math.min(width / picture.implicitWidth, height / picture.implicitHeight, 1) : 1
                    Image {
                        id: picture
                        anchors.centerIn: parent
                        width: implicitWidth > 0 ? implicitWidth * parent.factor : parent.width
                        height: implicitHeight > 0 ? implicitHeight * parent.factor : parent.height
                        source: slide.source
                        fillMode: Image.PreserveAspectFit
                        asynchronous: true
                        cache: false
                        smooth: true
                    }
                }
            }
            Component {
                id: kenBurnsView
                // From 1.0 to the player's zoom and drift, linear over 10 s, starting 0.1 s in.
                Item {
                    readonly property alias status: picture.status
                    Image {
                        id: picture
                        anchors.fill: parent
                        source: slide.source
                        fillMode: Image.PreserveAspectFit
                        asynchronous: true
                        cache: false
                        smooth: true
                        transform: [
                            Scale {
                                id: zoom
                                origin.x: picture.width / 2
                                origin.y: picture.height / 2
                            },
                            Translate { id: drift }
                        ]
                    }
                    SequentialAnimation {
                        running: true
                        PauseAnimation { duration: 100 }
                        ParallelAnimation {
                            NumberAnimation { target: zoom; properties: "xScale,yScale"; to: slide.zoom; duration: 10000 }
                            NumberAnimation { target: drift; property: "x"; to: slide.drift.x; duration: 10000 }
                            NumberAnimation { target: drift; property: "y"; to: slide.drift.y; duration: 10000 }
                        }
                    }
                }
            }
        }
    }

    // The countdown badge: always laid out, shown by its opacity.
    Rectangle {
        objectName: "countdown"
        anchors { top: parent.top; right: parent.right; margins: 20 }
        width: 60
        height: 40
        radius: 10
        color: Qt.rgba(0, 0, 0, 0.5)
        opacity: root.player.showTimer ? 1 : 0
        Caption {
            anchors.centerIn: parent
            text: root.player.countdownText
            color: "white"
            font.pixelSize: 24
            font.bold: true
        }
    }

    // The file information box.
    Rectangle {
        objectName: "infobox"
        anchors { bottom: parent.bottom; right: parent.right; margins: 20 }
        visible: root.player.showInfobox && root.player.currentIndex >= 0 && root.player.currentImageInfo !== ""
        width: info.implicitWidth + 24
        height: info.implicitHeight + 24
        radius: 10
        color: Qt.rgba(0, 0, 0, 0.5)
        Caption {
            id: info
            anchors.centerIn: parent
            text: root.player.currentImageInfo
            color: "white"
            font.pixelSize: 20
            textFormat: Text.PlainText
        }
    }

    PauseIndicator { text: "Slideshow paused"; shown: root.player.showPauseInfo }
    PauseIndicator { text: "Slideshow resumed"; shown: root.player.showResumeInfo }

    // The mark lies above everything, placed in the window's corner.
    Overlay { overlay: root.overlay }
}
