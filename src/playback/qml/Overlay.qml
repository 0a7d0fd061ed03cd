import QtQuick

// The show's mark, laid over everything in the window: the user's picture, or a line of text
// with a soft shadow. `overlay` is an OverlayView, which also does the layout's arithmetic.
// Fills its parent, which must be as wide as the window: the picture's width is a share of it.
Item {
    id: root
    required property QtObject overlay

    anchors.fill: parent
    visible: overlay.shown
    opacity: overlay.markOpacity

    readonly property size pictureSize: overlay.pictureSizeIn(width, overlay.widthFactor, overlay.pictureAspect)
    readonly property rect pictureFrame: overlay.frameIn(width, height, pictureSize.width, pictureSize.height,
                                                         overlay.alignment, overlay.margin)

    Image {
        objectName: "overlayPicture"
        visible: !root.overlay.isText
        x: root.pictureFrame.x
        y: root.pictureFrame.y
        width: root.pictureFrame.width
        height: root.pictureFrame.height
        // Decoded once at the size it is drawn, and only while it is on screen.
        sourceSize: Qt.size(Math.max(1, Math.round(width)), Math.max(1, Math.round(height)))
        source: visible ? root.overlay.pictureSource : ""
        smooth: true
        cache: false
    }

    Item {
        id: textMark
        objectName: "overlayText"
        visible: root.overlay.isText
        readonly property rect frame: root.overlay.frameIn(root.width, root.height, label.implicitWidth,
                                                           label.implicitHeight, root.overlay.alignment,
                                                           root.overlay.margin)
        x: frame.x
        y: frame.y
        width: frame.width
        height: frame.height

        // A black shadow at half strength, one pixel right and down, blurred over about two
        // pixels: nine faint copies around that offset, so it draws under the software renderer
        // too, where shader effects draw nothing. Where all nine overlap the black reaches 0.5.
        Repeater {
            model: [[0, 0], [1, 0], [2, 0], [0, 1], [1, 1], [2, 1], [0, 2], [1, 2], [2, 2]]
            Caption {
                required property var modelData
                x: modelData[0]
                y: modelData[1]
                text: label.text
                font: label.font
                color: "black"
                opacity: 1 - Math.pow(0.5, 1 / 9)
            }
        }
        Caption {
            id: label
            text: root.overlay.text
            font.family: root.overlay.fontFamily
            font.pixelSize: Math.max(1, Math.round(root.overlay.fontSize))
            color: root.overlay.fontColor
        }
    }
}
