#!/usr/bin/env bash
# A person's first show, on a virtual X display: add three pictures through the real file
# dialog, press Start, see the first picture full screen, press Escape, and find the main
# window ready to start again. Driven with the keyboard only (xdotool), as a user without a
# mouse would.
# Usage: slideshow_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
app=$(realpath "$1")
shots=${2:-.}

if [ -z "${TB_E2E_INSIDE:-}" ]; then
  export TB_E2E_INSIDE=1
  exec xvfb-run -a -s "-screen 0 1280x900x24" bash "$0" "$@"
fi

work=$(mktemp -d)
pid=""
cleanup() {
  [ -n "$pid" ] && kill "$pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
export XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work/run
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR" "$work/pictures"
chmod 700 "$XDG_RUNTIME_DIR"
export QT_QPA_PLATFORM=xcb
log=$XDG_DATA_HOME/Tallowbrook/Logs/Tallowbrook_.log

fail() { echo "e2e: FAILED: $*"; echo "--- log"; cat "$log" 2>/dev/null || true; exit 1; }
# Polls a condition for up to 20 s.
waitFor() { for _ in $(seq 1 200); do if eval "$1"; then return 0; fi; sleep 0.1; done; return 1; }
windowNamed() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1; }
pixel() { convert "$1" -format "%[pixel:p{$2,$3}]" info:; }

convert -size 640x480 xc:red "$work/pictures/a.png"
convert -size 640x480 xc:lime "$work/pictures/b.png"
convert -size 640x480 xc:blue "$work/pictures/c.png"

"$app" >"$work/out.txt" 2>&1 &
pid=$!
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
main=$(windowNamed Tallowbrook)
xdotool windowfocus --sync "$main"

# "Select files or folders" holds the focus when the window opens.
xdotool key space
waitFor '[ -n "$(xdotool search --onlyvisible --class tallowbrook 2>/dev/null | grep -v "^$main\$" | head -n 1)" ]' ||
  fail "the file dialog did not open"
sleep 0.5
xdotool type --delay 20 "$work/pictures/"
xdotool key Return
sleep 0.5
xdotool type --delay 20 '"a.png" "b.png" "c.png"'
xdotool key Return
waitFor "grep -q 'Total photos added: 3' '$log'" || fail "the pictures did not reach the queue"

# Tab to Start and press it.
xdotool windowfocus --sync "$main"
xdotool key Tab space
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "no player window"
waitFor "grep -q 'slideshowStarted\|Slideshow starting on default screen' '$log'" || fail "the show did not start"
sleep 1
import -window root "$work/show.png"
cp "$work/show.png" "$shots/e2e-show.png"
[ "$(pixel "$work/show.png" 640 450)" = "red" ] || [ "$(pixel "$work/show.png" 640 450)" = "srgb(255,0,0)" ] ||
  fail "the first picture is not on screen (centre pixel $(pixel "$work/show.png" 640 450))"

player=$(windowNamed "Tallowbrook Slideshow")
xdotool windowfocus --sync "$player"
xdotool key Escape
waitFor '[ -z "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Escape did not close the show"
grep -q "ESC key pressed." "$log" || fail "no Escape line in the log"
[ "$(grep -c 'stopSlideshow() method executed' "$log")" = 1 ] || fail "the stop path did not run exactly once"

# Start is enabled again: focus went back to "Select files or folders" while Start was
# disabled, and Tab reaches Start only when it is enabled.
xdotool windowfocus --sync "$main"
sleep 0.3
import -window root "$shots/e2e-after-show.png"
xdotool key Tab space
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Start was not enabled after the show"

echo "e2e: three pictures added through the dialog, shown full screen, Escape returned to the main window"
