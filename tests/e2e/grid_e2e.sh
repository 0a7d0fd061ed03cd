#!/usr/bin/env bash
# A 2x2 grid show on a virtual X display: six single-colour pictures, a long delay, and four
# different colours on screen at once, one per cell; Escape ends the show.
# Usage: grid_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"

mkdir -p "$work/pictures" "$XDG_CONFIG_HOME/Tallowbrook"
colours=(red lime blue yellow magenta cyan)
for c in "${colours[@]}"; do convert -size 400x300 "xc:$c" "$work/pictures/$c.png"; done
printf '[General]\ndisplayMode=2\nslideshowDelay=600\n' >"$XDG_CONFIG_HOME/Tallowbrook/Tallowbrook.conf"

startProgram
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
waitFor "grep -q 'Initializing view' '$log'" || fail "the main window did not appear"
main=$(windowNamed Tallowbrook)
addThroughDialog "$work/pictures" '"red.png" "lime.png" "blue.png" "yellow.png" "magenta.png" "cyan.png"' 6

xdotool windowfocus --sync "$main"
xdotool key ctrl+r
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "no player window"

# The centre of each cell of the full-screen 1280x900 grid.
cellColours() {
  import -window root "$work/grid.png" &&
    convert "$work/grid.png" -format '%[pixel:p{318,222}] %[pixel:p{960,222}] %[pixel:p{318,677}] %[pixel:p{960,677}]' info:
}
fourColours() {
  local seen
  seen=$(cellColours | tr ' ' '\n' | grep -v -e black -e 'srgb(0,0,0)' | sort -u | wc -l)
  [ "$seen" = 4 ]
}
waitFor fourColours || fail "four cells did not show four pictures (cells: $(cellColours))"
cp "$work/grid.png" "$shots/e2e-grid.png"
# The gap between cells shows the background.
gap=$(convert "$work/grid.png" -format '%[pixel:p{639,100}]' info:)
case "$gap" in black | "srgb(0,0,0)") ;; *) fail "no gap between the cells (found $gap)" ;; esac

xdotool windowfocus --sync "$(windowNamed "Tallowbrook Slideshow")"
xdotool key Escape
waitFor '[ -z "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Escape did not close the grid"
grep -q "GridView Slideshow\] stopSlideshow() method executed" "$log" || fail "the grid's stop path did not run"
grep -q "Grid update\|Initial currentIndices" "$log" && fail "console progress lines reached the log file"
echo "e2e: a 2x2 grid of six pictures showed four different colours; Escape ended it"
