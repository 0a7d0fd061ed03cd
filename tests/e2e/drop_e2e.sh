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
main=$(windowNamed Tallowbrook)
"$dragSource" 960 760 "$work/trip" >"$work/drag.txt" 2>&1 &
dragPid=$!
waitFor "grep -q ready '$work/drag.txt' && [ -n \"\$(windowNamed 'Drag source')\" ]" || fail "no drag source"

# Press on the source and carry the pointer to the middle of the main window, moving on until
# the window says it takes the drop (each move asks it again), then release there.
eval "$(xdotool getwindowgeometry --shell "$main")"
targetX=$((X + WIDTH / 3)) targetY=$((Y + HEIGHT / 2))
count() { grep -c "$1" "$2" || true; }
dragOnce() {
  local accepted ended
  accepted=$(count 'target accepts' "$work/drag.txt") ended=$(count 'drag ended' "$work/drag.txt")
  xdotool mousemove --sync 1060 810 mousedown 1
  for step in 1 2 3 4; do
    xdotool mousemove --sync $((1060 + (targetX - 1060) * step / 4)) $((810 + (targetY - 810) * step / 4))
  done
  nudge() {
    xdotool mousemove --sync "$targetX" $((targetY + RANDOM % 9 - 4))
    [ "$(count 'target accepts' "$work/drag.txt")" -gt "$accepted" ]
  }
  waitFor nudge || fail "the main window never offered to take the drop ($(cat "$work/drag.txt"))"
  xdotool mouseup 1
  waitFor '[ "$(count "drag ended" "$work/drag.txt")" -gt "$ended" ]' || fail "the drag did not end"
}
# A Qt drag source lets go of its data as soon as its drag ends, so a drop it delivers late
# reaches the program empty: the program must refuse such a drop and say why in its log, and the
# drag is made again.
added() { grep -q 'Total photos added: 6' "$log"; }
for attempt in 1 2 3; do
  refused=$(count 'Drop refused' "$log")
  dragOnce
  waitFor 'added || [ "$(count "Drop refused" "$log")" -gt "$refused" ]' || fail "the drop was neither taken nor refused"
  added && break
  echo "e2e: drop $attempt arrived without its file list and was refused; dragging again"
done
kill "$dragPid" 2>/dev/null || true
added || fail "the dropped folder did not reach the queue"
grep -q "Processing directory: trip (6 image files detected)" "$log" || fail "no line for the dropped folder"
# Thumbnails are drawn once decoded: the queue's side of the window turns magenta in places.
shown() { import -window root "$work/grid.png" && awk -v m="$(magenta "$work/grid.png" 580x620+0+60)" 'BEGIN { exit !(m > 0.05) }'; }
waitFor shown || fail "no thumbnails in the grid"
cp "$work/grid.png" "$shots/e2e-drop-grid.png"

# Start from the keyboard: the menu's shortcut.
xdotool windowfocus --sync "$main"
xdotool key ctrl+r
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Start opened no show"
onScreen() {
  import -window root "$work/show.png" && awk -v m="$(magenta "$work/show.png" 200x200+540+350)" 'BEGIN { exit !(m > 0.9) }'
}
waitFor onScreen || fail "the first dropped picture is not on screen"
cp "$work/show.png" "$shots/e2e-drop-show.png"

echo "e2e: a folder dropped from another program filled the grid with thumbnails and Start showed it"
