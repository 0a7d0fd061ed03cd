#!/usr/bin/env bash
# The running show as the desktop's media player, on a session bus of the test's own: a
# document's three pictures, Start from the keyboard, then the buttons a media applet or a media
# key presses (Next, Previous, PlayPause, Stop), each checked by what the bus tells and by what
# the screen shows. The name is on the bus only while the show runs.
# Usage: dbus-run-session -- bash mpris_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
source "$(dirname "$0")/e2e_lib.sh"
[ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || fail "no session bus of its own: run it under dbus-run-session"

name=org.mpris.MediaPlayer2.tallowbrook
path=/org/mpris/MediaPlayer2
monitor=""
trap '[ -n "$monitor" ] && kill "$monitor" 2>/dev/null; cleanup' EXIT

pixel() { convert "$1" -format "%[pixel:p{$2,$3}]" info:; }
owned() {
  gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
    --method org.freedesktop.DBus.NameHasOwner "$name" | grep -q true
}
property() {
  gdbus call --session --dest "$name" --object-path "$path" \
    --method org.freedesktop.DBus.Properties.Get org.mpris.MediaPlayer2.Player "$1" 2>/dev/null
}
press() {
  gdbus call --session --dest "$name" --object-path "$path" --method "org.mpris.MediaPlayer2.Player.$1" >/dev/null ||
    fail "the player refused $1"
}
title() { property Metadata | grep -o "'xesam:title': <'[^']*'>" | sed "s/.*<'\(.*\)'>/\1/" || true; }
status() { property PlaybackStatus | grep -o "'[A-Za-z]*'" | tr -d "'" || true; }
centre() { import -window root "$work/show.png" && pixel "$work/show.png" 640 450; }
# shows <colour name> <the same as srgb()>: the picture in the middle of the screen.
shows() { case "$(centre)" in "$1" | "$2") true ;; *) false ;; esac; }

mkdir -p "$work/pictures"
convert -size 640x480 xc:red "$work/pictures/a.png"
convert -size 640x480 xc:lime "$work/pictures/b.png"
convert -size 640x480 xc:blue "$work/pictures/c.png"
# Ten minutes a picture: only the buttons move the show.
writeDocument "$work/Show.slideshow" 600 false a b c

startProgram "$work/Show.slideshow"
waitFor '[ -n "$(windowNamed Tallowbrook)" ]' || fail "no main window"
waitFor "grep -q 'Slideshow loaded: 3 images, 0 audio tracks' '$log'" || fail "the document was not loaded"
owned && fail "the program is a media player before any show runs"

main=$(windowNamed Tallowbrook)
xdotool windowfocus --sync "$main"
xdotool key ctrl+r
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "no player window"
waitFor owned || fail "the show did not appear on the session bus as $name"
gdbus monitor --session --dest "$name" >"$work/monitor.txt" 2>&1 &
monitor=$!

gdbus introspect --session --dest "$name" --object-path "$path" >"$work/introspect.txt" ||
  fail "the player cannot be introspected"
for line in "interface org.mpris.MediaPlayer2 {" "interface org.mpris.MediaPlayer2.Player {" \
  "Identity = 'Tallowbrook'" "DesktopEntry = 'com.tallowbrook.Tallowbrook'" "CanSeek = false" "CanGoNext = true"; do
  grep -qF "$line" "$work/introspect.txt" || fail "the introspection lacks \"$line\": $(cat "$work/introspect.txt")"
done

waitFor '[ "$(title)" = a.png ] && shows red "srgb(255,0,0)"' ||
  fail "the first picture is not the one named (title $(title), centre $(centre))"
[ "$(status)" = Playing ] || fail "the show is not Playing but $(status)"

press Next
waitFor '[ "$(title)" = b.png ] && shows lime "srgb(0,255,0)"' ||
  fail "Next did not bring the second picture (title $(title), centre $(centre))"
cp "$work/show.png" "$shots/e2e-mpris-next.png"
press Previous
waitFor '[ "$(title)" = a.png ] && shows red "srgb(255,0,0)"' ||
  fail "Previous did not bring the first picture back (title $(title), centre $(centre))"

press PlayPause
waitFor '[ "$(status)" = Paused ]' || fail "PlayPause did not pause the show"
waitFor "grep -q \"'PlaybackStatus': <'Paused'>\" '$work/monitor.txt'" ||
  fail "the pause was not announced: $(cat "$work/monitor.txt")"
press PlayPause
waitFor '[ "$(status)" = Playing ]' || fail "PlayPause did not resume the show"
grep -q "Spacebar pressed" "$log" && fail "a button was logged as a key"

press Stop
waitFor '[ -z "$(windowNamed "Tallowbrook Slideshow")" ]' || fail "Stop did not end the show"
waitFor '! owned' || fail "the name stayed on the bus after the show"
grep -q "Remote control: Stop" "$log" || fail "no line for the Stop button"
[ "$(grep -c 'stopSlideshow() method executed' "$log")" = 1 ] || fail "the stop path did not run exactly once"
kill -0 "$pid" || fail "the program ended with the show"
echo "e2e: the show was a media player on the session bus: Next, Previous, PlayPause and Stop moved it, and the title named the picture on screen"
