import QtQuick

// What a grid show puts on screen: the cells, 5 pixels apart on the background, each picture
// stretched to its cell. A cell changes at once, without a transition; it keeps showing its old
// picture until the new one is decoded, so no cell flashes empty while a decoder works.
Rectangle {
    id: root
    required property QtObject player
    required property QtObject overlay
    color: player.backgroundColor
    clip: true

    readonly property real gap: 5
    readonly property real cellWidth: (width - gap * (player.columns - 1)) / player.columns
    readonly property real cellHeight: (height - gap * (player.rows - 1)) / player.rows

    // Every cell shows the picture it should (or is empty when it should be).
    function settled() {
        for (let i = 0; i < cells.count; ++i) {
            const cell = cells.itemAt(i)
            if (!cell || cell.front.source.toString() !== cell.wanted
                    || (cell.wanted !== "" && cell.front.status === Image.Loading))
                return false
        }
        return true
    }

    Repeater {
        id: cells
        model: root.player.rows * root.player.columns

        Item {
            id: cell
            required property int index
            readonly property int row: Math.floor(index / root.player.columns)
            readonly property int column: index % root.player.columns
            x: column * (root.cellWidth + root.gap)
            y: row * (root.cellHeight + root.gap)
            width: root.cellWidth
            height: root.cellHeight

            // Decoded at the cell's size in device pixels: never the whole picture.
            readonly property size pixels: Qt.size(Math.max(0, Math.round(width * Screen.devicePixelRatio)),
                                                   Math.max(0, Math.round(height * Screen.devicePixelRatio)))
            readonly property string wanted: pixels.width > 0 && pixels.height > 0
                                             ? root.player.cellSources[index] || "" : ""
            // Two pictures take turns: the one on screen stays until the other is ready.
            property Image front: first
            readonly property Image back: front === first ? second : first

            onWantedChanged: {
                if (wanted === front.source.toString() && front.status !== Image.Error)
                    return
                back.source = wanted
            }
            Component.onCompleted: back.source = wanted

            function settle(picture) {
                if (picture !== back || picture.source.toString() !== wanted)
                    return
                if (picture.status === Image.Ready || picture.status === Image.Error || wanted === "") {
                    front.source = ""
                    front = picture
                }
            }

            Image {
                id: first
                anchors.fill: parent
                fillMode: Image.Stretch
                asynchronous: true
                cache: false
                sourceSize: cell.pixels
                visible: cell.front === first && status === Image.Ready
                onStatusChanged: cell.settle(first)
                onSourceChanged: if (source.toString() === "") cell.settle(first)
            }
            Image {
                id: second
                anchors.fill: parent
                fillMode: Image.Stretch
                asynchronous: true
                cache: false
                sourceSize: cell.pixels
                visible: cell.front === second && status === Image.Ready
                onStatusChanged: cell.settle(second)
                onSourceChanged: if (source.toString() === "") cell.settle(second)
            }
        }
    }

    PauseIndicator { text: "Slideshow paused"; shown: root.player.showPauseInfo }
    PauseIndicator { text: "Slideshow resumed"; shown: root.player.showResumeInfo }

    // The mark lies above everything, placed in the window's corner.
    Overlay { overlay: root.overlay }
}
