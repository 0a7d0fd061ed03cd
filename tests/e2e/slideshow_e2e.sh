#!/usr/bin/env bash
# A person's first show, on a virtual X display: add three pictures through the real file
# dialog, press Start, see the first picture full screen, press Escape, and find the main
# window ready to start again. Driven with the keyboard only (xdotool), as a user without a
# mouse would.
# Usage: slideshow_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"
pixel() { convert "$1" -format "%[pixel:p{$2,$3}]" info:; }

mkdir -p "$work/pictures"
convert -size 640x480 xc:red "$work/pictures/a.png"
convert -size 640x480 xc:lime "$work/pictures/b.png"
convert -size 640x480 xc:blue "$work/pictures/c.png"

startProgram
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
waitFor "grep -q 'Initializing view' '$log'" || fail "the main window did not appear"
main=$(windowNamed Tallowbrook)
grep -q "No analytics server is set (analyticsServerURL): usage is not reported." "$log" ||
  fail "no line about the unset analytics server"
# "Select files or folders" holds the focus when the window opens; the file name field has the
# focus in the dialog: go to the folder, then pick the three files.
addThroughDialog "$work/pictures" '"a.png" "b.png" "c.png"' 3

# Start from the keyboard: the menu's Start Slideshow shortcut.
startShow() {
  xdotool windowfocus --sync "$main"
  xdotool key ctrl+r
}
startShow
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "no player window"
waitFor "grep -q 'Slideshow starting on default screen' '$log'" || fail "the show did not start"
red() {
  import -window root "$work/show.png" &&
    case "$(pixel "$work/show.png" 640 450)" in red | "srgb(255,0,0)") true ;; *) false ;; esac
}
waitFor red || fail "the first picture is not on screen (centre pixel $(pixel "$work/show.png" 640 450))"
cp "$work/show.png" "$shots/e2e-show.png"

player=$(windowNamed "Tallowbrook Slideshow")
xdotool windowfocus --sync "$player"
xdotool key Escape
waitFor '[ -z "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Escape did not close the show"
grep -q "ESC key pressed." "$log" || fail "no Escape line in the log"
[ "$(grep -c 'stopSlideshow() method executed' "$log")" = 1 ] || fail "the stop path did not run exactly once"

# Start is enabled again: it opens a second show.
waitFor "grep -q 'Audio playback stopped' '$log'" || fail "the show did not finish its stop path"
import -window root "$shots/e2e-after-show.png"
startShow
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Start was not enabled after the show"

echo "e2e: three pictures added through the dialog, shown full screen, Escape returned to the main window"
