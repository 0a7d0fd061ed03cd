import QtQuick

// What a single-photo show puts on screen: the current picture on the background colour, and
// the pause indicators. The player object holds all state; this only shows it.
Rectangle {
    id: root
    required property QtObject player
    color: player.backgroundColor

    Image {
        anchors.fill: parent
        source: root.player.currentUrl
        fillMode: Image.PreserveAspectFit
        asynchronous: true
        autoTransform: true
        cache: false
        // Decode at the size shown, not the camera's 24 megapixels.
        sourceSize.width: root.width
        sourceSize.height: root.height
    }

    component Indicator: Rectangle {
        property alias text: label.text
        property bool shown: false
        anchors.centerIn: parent
        width: label.implicitWidth + 32
        height: label.implicitHeight + 20
        radius: 10
        color: Qt.rgba(0, 0, 0, 0.5)
        opacity: shown ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: 250 } }
        Text {
            id: label
            anchors.centerIn: parent
            color: "white"
            font.pixelSize: 22
            font.bold: true
        }
    }

    Indicator { text: "Slideshow paused"; shown: root.player.showPauseInfo }
    Indicator { text: "Slideshow resumed"; shown: root.player.showResumeInfo }
}
