#!/usr/bin/env bash
# The program on a Wayland session with no X server anywhere: a document named at start fills the
# queue, Start is pressed through the accessibility tree (a headless compositor takes no injected
# keys), three pictures play full screen to the end of a show without loop, and the program is
# checked to have drawn through Qt's Wayland platform, never through X.
# Usage: dbus-run-session -- bash wayland_e2e.sh <tallowbrook binary> <folder for the screenshots>
set -euo pipefail
E2E_SESSION=wayland
source "$(dirname "$0")/e2e_lib.sh"
[ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || fail "no session bus of its own: run it under dbus-run-session"
here=$(dirname "$(realpath "$0")")

pixel() { convert "$1" -format "%[pixel:p{$2,$3}]" info:; }
showsPicture() {
  screenshot "$work/show.png" &&
    case "$(pixel "$work/show.png" 640 450)" in red | lime | blue | "srgb(255,0,0)" | "srgb(0,255,0)" | "srgb(0,0,255)") ;; *) false ;; esac
}

mkdir -p "$work/pictures"
colours=(red lime blue)
for c in "${colours[@]}"; do convert -size 640x480 "xc:$c" "$work/pictures/$c.png"; done
writeDocument "$work/Wayland.slideshow" 3 false "${colours[@]}"

export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
startProgram "$work/Wayland.slideshow"
waitFor "grep -q 'Slideshow loaded: 3 images, 0 audio tracks' '$log'" || fail "the document given at start was not loaded"
grep -q "Windowing system: wayland" "$log" || fail "the program did not say it runs on Wayland"
maps=$(cat "/proc/$pid/maps")
grep -q "libqwayland" <<<"$maps" || fail "Qt's Wayland platform plugin is not loaded"
! grep -q "libqxcb" <<<"$maps" || fail "Qt's X11 platform plugin was loaded"

/usr/bin/python3 "$here/press.py" "menu item" "Start Slideshow" || fail "Start Slideshow could not be pressed"
waitFor "grep -q 'Slideshow starting on default screen' '$log'" || fail "the show did not start"
waitFor showsPicture || fail "the show shows no picture (centre pixel $(pixel "$work/show.png" 640 450))"
cp "$work/show.png" "$shots/e2e-wayland.png"
# The window covers the output: no desktop shows at its corners.
[ "$(pixel "$work/show.png" 2 2)" = "$(pixel "$work/show.png" 1277 897)" ] || fail "the show is not full screen"

waitFor "grep -q 'SlideshowView: Slideshow ended' '$log'" || fail "the show did not reach its end"
waitFor "grep -q 'stopSlideshow() method executed' '$log'" || fail "the show did not stop at its end"
kill -0 "$pid" || fail "the program ended with the show"
grep -q "ERROR" "$log" && fail "the log has errors"

# Nothing went through X: no X server was started, and the program holds no X connection.
! pgrep -x Xwayland >/dev/null || fail "an Xwayland server runs"
! ss -xp 2>/dev/null | grep "pid=$pid," | grep -q "X11-unix" || fail "the program connected to an X server"
echo "e2e: a document's three pictures played full screen to the end on Wayland, with no X server"
