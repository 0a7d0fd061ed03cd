import QtQuick

// Every text of the player. The alignment is set, never implicit: an implicitly aligned text
// that is empty asks the input method for its direction, and Qt 6.4's Wayland client crashes
// answering that on a compositor without a seat (a kiosk with no keyboard).
Text {
    horizontalAlignment: Text.AlignLeft
}
