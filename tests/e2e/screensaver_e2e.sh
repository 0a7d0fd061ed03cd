#!/usr/bin/env bash
# The screen saver on a virtual X display with no desktop services on its session bus, so the X
# server's own idle time is what the program reads: a document named at start fills the queue,
# nobody touches anything, and after the one idle minute a show starts by itself, stays up, and
# ends at the first move of the pointer, leaving Start ready again.
# Usage: screensaver_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"
pixel() { convert "$1" -format "%[pixel:p{$2,$3}]" info:; }
nowMs() { echo $(($(date +%s%N) / 1000000)); }
playerUp() { [ -n "$(windowNamed "Tallowbrook Slideshow")" ]; }

# Nothing in the set-up may be input to the X server: its idle time counts from its start.
mkdir -p "$work/pictures" "$XDG_CONFIG_HOME/Tallowbrook"
colours=(red lime blue)
for c in "${colours[@]}"; do
  convert -size 640x480 "xc:$c" "$work/pictures/$c.png"
done
# A long delay and a loop keep the show on screen for as long as the test looks at it.
writeDocument "$work/Idle.slideshow" 60 true "${colours[@]}"
printf '[General]\nscreensaverIdleMinutes=1\n' >"$XDG_CONFIG_HOME/Tallowbrook/Tallowbrook.conf"

# A session bus of its own, on which neither GNOME's idle monitor nor a freedesktop screen saver
# answers. The program writes its own process id, so that the shared clean-up ends the program;
# dbus-run-session then ends the bus, and the test waits for that.
cd "$work"
launched=$SECONDS
dbus-run-session -- bash -c 'echo $$ >"$0" && exec "$@"' "$work/program.pid" "$app" Idle.slideshow \
  >"$work/out.txt" 2>&1 &
runner=$!
trap 'cleanup; wait "$runner" 2>/dev/null || true' EXIT
waitFor '[ -s "$work/program.pid" ]' || fail "dbus-run-session did not start the program"
pid=$(cat "$work/program.pid")
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
waitFor "grep -q 'Slideshow loaded: 3 images, 0 audio tracks' '$log'" || fail "the document given at start was not loaded"
grep -qF "[IdleWatcher] Started polling for idle time (threshold: 1 min)." "$log" ||
  fail "the idle watcher did not start with the one-minute threshold"

# The threshold is reached at the minute; the 30 s poll notices it by the poll after, at worst.
until playerUp; do
  [ $((SECONDS - launched)) -lt 95 ] || fail "no screen-saver show within 95 s of the start"
  kill -0 "$pid" 2>/dev/null || fail "the program ended while idle"
  sleep 0.5
done
grep -qF "[IdleWatcher] Idle threshold reached (1 min). Posting notification." "$log" ||
  fail "the show did not come from the idle watcher"
grep -qF "[IdleWatcher] Starting slideshow in screensaver mode." "$log" || fail "the show was not started in screen-saver mode"

# A picture on screen: the first one at the centre, framed by the black background.
showsPicture() {
  import -window root "$work/show.png" &&
    case "$(pixel "$work/show.png" 640 450)" in red | lime | blue | "srgb(255,0,0)" | "srgb(0,255,0)" | "srgb(0,0,255)") ;; *) false ;; esac &&
    convert "$work/show.png" -format '%[fx:standard_deviation>0.05]' info: | grep -q 1
}
waitFor showsPicture || fail "the screen-saver show shows no picture (centre pixel $(pixel "$work/show.png" 640 450))"
cp "$work/show.png" "$shots/e2e-screensaver.png"

# Nothing but input ends it: it is still up 3 s later.
end=$(($(nowMs) + 3000))
while [ "$(nowMs)" -lt "$end" ]; do
  playerUp || fail "the screen-saver show closed by itself"
  sleep 0.2
done

xdotool mousemove_relative 5 5
waitFor '! playerUp' || fail "moving the pointer did not end the screen-saver show"
waitFor "grep -qF 'stopSlideshow() method executed' '$log'" || fail "the stop path did not run"
waitFor "grep -q 'Audio playback stopped' '$log'" || fail "the show did not finish its stop path"

# Start is enabled again: it opens a show of its own.
xdotool windowfocus --sync "$(windowNamed Tallowbrook)"
xdotool key ctrl+r
waitFor playerUp || fail "Start was not enabled after the screen-saver show"

echo "e2e: after a minute without input a screen-saver show started, stayed up and ended at a pointer move"
echo "e2e: screensaver test took $SECONDS s"
