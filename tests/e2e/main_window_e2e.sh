#!/usr/bin/env bash
# Starts the real program on a virtual X display and checks, as a person would, that its main
# window is on screen and its log opened; then a second launch hands it a document.
# Usage: main_window_e2e.sh <tallowbrook binary> <folder for the screenshot>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"

startProgram

waitFor "grep -q 'OS Version: ' '$log' 2>/dev/null" || fail "the log did not open"
waitFor "xwininfo -root -tree | grep -q '\"Tallowbrook\"'" || fail "no main window on screen"
# The window paints a light surface over the black root once its first frame is up: not blank,
# not black.
painted() {
  import -window root "$work/shot.png" || return 1
  mean=$(convert "$work/shot.png" -colorspace Gray -format '%[fx:mean]' info:)
  spread=$(convert "$work/shot.png" -colorspace Gray -format '%[fx:standard_deviation]' info:)
  awk -v m="$mean" -v s="$spread" 'BEGIN { exit !(m > 0.25 && s > 0.05) }'
}
waitFor painted || fail "screenshot looks blank (mean $mean, deviation $spread)"
cp "$work/shot.png" "$shots/e2e-main-window.png"

for line in "=== Tallowbrook Log Started ===" "App Version: " "OS Version: "; do
  grep -q "\]\[INFO\]\[Logger.cpp:[0-9]*\] $line" "$log" || fail "log line missing: $line"
done
[ "$(head -n 1 "$log" | grep -c 'Tallowbrook Log Started')" = 1 ] || fail "the log does not open with its banner"


# A second launch with a document hands it over and leaves at once.
touch "$work/Trip.slideshow"
timeout 20 "$app" "$work/Trip.slideshow" >"$work/second.txt" 2>&1 || fail "the second launch did not exit cleanly"
grep -q "Tallowbrook Log Started" "$work/second.txt" && fail "the second launch started a program of its own"
waitFor "grep -q 'Received file open request from Finder: \[file://$work/Trip.slideshow\]' '$log'" ||
  fail "the running program did not receive the document"
waitFor "grep -q 'Failed to open slideshow from Finder: ' '$log'" || fail "no failure line for the unreadable document"
waitFor "xwininfo -root -tree | grep -q '\"Failed to Open Slideshow\"'" || fail "no alert for the unreadable document"
import -window root "$shots/e2e-open-request.png"

echo "e2e: main window shown (mean $mean, deviation $spread), log opened, document request forwarded"
