#!/usr/bin/env bash
# Slideshow documents handed to the program: one named on the command line at start (a relative
# path), whose two pictures then fill the queue, and one handed over by a second launch, which
# the running program opens in its window.
# Usage: document_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"

mkdir -p "$work/pictures"
convert -size 400x300 xc:red "$work/pictures/red.png"
convert -size 400x300 xc:blue "$work/pictures/blue.png"
writeDocument "$work/Trip.slideshow" 3 false red blue
writeDocument "$work/Second.slideshow" 3 false blue

cd "$work"
startProgram Trip.slideshow
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
waitFor "grep -q 'Slideshow loaded: 2 images, 0 audio tracks' '$log'" || fail "the document given at start was not loaded"
main=$(windowNamed Tallowbrook)
# Both pictures show in the queue's grid.
shows() { import -window "$main" "$work/main.png" && convert "$work/main.png" -fill black +opaque "$1" -format '%[fx:mean>0.005]' info: | grep -q 1; }
waitFor 'shows red && shows blue' || fail "the queue does not show both pictures"
cp "$work/main.png" "$shots/e2e-document.png"

"$app" Second.slideshow >"$work/second.txt" 2>&1 || fail "the second launch failed: $(cat "$work/second.txt")"
waitFor "grep -q 'Slideshow loaded: 1 images, 0 audio tracks' '$log'" || fail "the running program did not open the handed-over document"
kill -0 "$pid" || fail "the program ended"
echo "e2e: a document named at start filled the queue with its two pictures; a second launch's document replaced them"
