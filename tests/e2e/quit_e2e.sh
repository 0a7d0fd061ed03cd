#!/usr/bin/env bash
# Quitting in the middle of a show whose large picture is still being decoded: the program ends
# on its own, with status 0, and (in a sanitizer build) without a report.
# Usage: quit_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"

mkdir -p "$work/pictures"
convert -size 6000x4000 plasma:green-blue -quality 90 "$work/pictures/large.jpg"

startProgram
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
waitFor "grep -q 'Initializing view' '$log'" || fail "the main window did not appear"
main=$(windowNamed Tallowbrook)
addThroughDialog "$work/pictures" '"large.jpg"' 1

xdotool windowfocus --sync "$main"
xdotool key ctrl+r
waitFor "grep -q 'View appeared' '$log'" || fail "the show did not start"
# At once, while the picture decodes: Quit from the main window.
xdotool windowfocus --sync "$main"
xdotool key ctrl+q
waitFor '! kill -0 "$pid" 2>/dev/null' || fail "the program did not end after Quit"
status=0
wait "$pid" || status=$?
pid=""
[ "$status" = 0 ] || fail "the program ended with status $status"
grep -q "stopSlideshow() method executed" "$log" || fail "the show did not end through its stop path"
if grep -q -E "AddressSanitizer|runtime error|LeakSanitizer" "$work/out.txt"; then
  fail "the sanitizers reported a fault"
fi

echo "e2e: Quit during a large picture's decode ended the program cleanly"
