#!/usr/bin/env bash
# A folder of pictures dragged from another program onto the main window, as from a file
# manager: the drop goes through X's drag-and-drop protocol, the pictures reach the queue, their
# thumbnails show in the grid, and Start shows the first one full screen.
# Usage: drop_e2e.sh <tallowbrook binary> <folder for the screenshots> <drag_source binary>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"
dragSource=$(realpath "$3")
magenta() { convert "$1" -crop "$2" -fill black +opaque "#ff00ff" -fill white -opaque "#ff00ff" -format "%[fx:mean]" info:; }

mkdir -p "$work/trip"
for i in 1 2 3 4 5 6; do convert -size 400x300 xc:magenta "$work/trip/photo$i.png"; done

startProgram
waitFor "grep -q 'Initializing view' '$log'" || fail "the main window did not appear"
"$dragSource" 960 760 "$work/trip" >"$work/drag.txt" 2>&1 &
dragPid=$!
waitFor '[ -n "$(windowNamed "Drag source")" ]' || fail "no drag source"
sleep 0.5

# Press on the source, move over the queue in steps, release there.
xdotool mousemove --sync 1060 810 mousedown 1
for x in 1000 900 800 700 600 500 400 300; do
  xdotool mousemove --sync "$x" $((x / 2 + 200))
  sleep 0.05
done
xdotool mousemove --sync 300 350 sleep 0.2 mouseup 1
waitFor "grep -q 'drag ended' '$work/drag.txt'" || fail "the drag did not end"
grep -q "drag ended: copied" "$work/drag.txt" || fail "the main window refused the drop ($(cat "$work/drag.txt"))"
kill "$dragPid" 2>/dev/null || true

waitFor "grep -q 'Total photos added: 6' '$log'" || fail "the dropped folder did not reach the queue"
grep -q "Processing directory: trip (6 image files detected)" "$log" || fail "no line for the dropped folder"
# Thumbnails are drawn once decoded: the queue's side of the window turns magenta in places.
shown() { import -window root "$work/grid.png" && awk -v m="$(magenta "$work/grid.png" 580x620+0+60)" 'BEGIN { exit !(m > 0.05) }'; }
waitFor shown || fail "no thumbnails in the grid"
cp "$work/grid.png" "$shots/e2e-drop-grid.png"

main=$(windowNamed Tallowbrook)
xdotool windowfocus --sync "$main"
xdotool mousemove --sync 738 514 click 1
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Start opened no show"
sleep 1
import -window root "$work/show.png"
cp "$work/show.png" "$shots/e2e-drop-show.png"
awk -v m="$(magenta "$work/show.png" 200x200+540+350)" 'BEGIN { exit !(m > 0.9) }' ||
  fail "the first dropped picture is not on screen"

echo "e2e: a folder dropped from another program filled the grid with thumbnails and Start showed it"
