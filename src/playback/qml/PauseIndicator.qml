import QtQuick

// "Slideshow paused" / "Slideshow resumed": white on half-transparent black, fading in and out.
Rectangle {
    property alias text: label.text
    property bool shown: false
    anchors.centerIn: parent
    width: label.implicitWidth + 32
    height: label.implicitHeight + 20
    radius: 10
    color: Qt.rgba(0, 0, 0, 0.5)
    opacity: shown ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: 250 } }
    Caption {
        id: label
        anchors.centerIn: parent
        color: "white"
        font.pixelSize: 22
        font.bold: true
    }
}
