#!/usr/bin/env bash
# Checks the Debian package as a fresh Debian 12 machine would meet it: the desktop entry and the
# software-centre entry validate, the package installs with apt-get, the program starts from
# PATH, the desktop knows it as the opener of slideshow documents, a document opened through
# the desktop (gio open) reaches the running program, and its show plays. Run as root or as a
# user with sudo.
# The package stays installed afterwards.
# Usage: check-package.sh [path/to/tallowbrook_<version>_<arch>.deb]  (default: the newest in build/)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

step() { echo "check-package: $*"; }
die() {
  echo "check-package: FAILED: $*"
  exit 1
}

deb=${1:-$(ls -t "$root"/"${BUILD_DIR:-build}"/tallowbrook_*.deb 2>/dev/null | head -n 1 || true)}
[ -n "$deb" ] && [ -f "$deb" ] || die "no package given and none in build/ (make one with: bash scripts/package.sh)"
deb=$(realpath "$deb")
step "package $deb ($(du -h "$deb" | cut -f1))"

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive

# The tools of the check itself, not of the program: the package has to bring everything the
# program needs on its own.
TOOLS=(xvfb xdotool desktop-file-utils appstream xdg-utils libglib2.0-bin shared-mime-info)
missing=()
for p in "${TOOLS[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  step "installing the check's tools: ${missing[*]}"
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

work=$(mktemp -d)
pid=""
xvfb=""
cleanup() {
  [ -n "$pid" ] && kill "$pid" 2>/dev/null || true
  if [ -n "$xvfb" ]; then
    kill "$xvfb" 2>/dev/null || true
    wait "$xvfb" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

# The files as the package lays them out, checked before anything is installed.
dpkg-deb -x "$deb" "$work/tree"
id=com.tallowbrook.Tallowbrook
for f in usr/bin/tallowbrook "usr/share/applications/$id.desktop" "usr/share/metainfo/$id.metainfo.xml" \
  "usr/share/mime/packages/$id.xml" "usr/share/icons/hicolor/scalable/apps/$id.svg" \
  usr/share/man/man1/tallowbrook.1.gz; do
  [ -f "$work/tree/$f" ] || die "the package has no /$f"
done
for size in 16 22 24 32 48 64 128 256 512; do
  [ -f "$work/tree/usr/share/icons/hicolor/${size}x$size/apps/$id.png" ] || die "the package has no ${size}x$size icon"
done
step "files: program, desktop entry, metainfo, MIME type, icons 16 to 512 and scalable, manual page"

out=$(desktop-file-validate "$work/tree/usr/share/applications/$id.desktop" 2>&1) || die "desktop-file-validate: $out"
step "desktop-file-validate: passed${out:+ ($out)}"
out=$(appstreamcli validate --no-net "$work/tree/usr/share/metainfo/$id.metainfo.xml" 2>&1) ||
  die "appstreamcli validate: $out"
step "appstreamcli validate --no-net: $(tail -n 1 <<<"$out" | sed 's/^[^A-Za-z]*//')"

# --reinstall: a package rebuilt at the same version replaces the one installed.
step "installing the package with apt-get"
$SUDO apt-get install -y -qq --reinstall "$deb" >"$work/apt.txt" 2>&1 || die "apt-get install: $(cat "$work/apt.txt")"
dpkg-query -W -f='${Status} ${Version}\n' tallowbrook | grep -q 'install ok installed' || die "dpkg does not list tallowbrook as installed"
step "installed: tallowbrook $(dpkg-query -W -f='${Version}' tallowbrook)"

program=$(command -v tallowbrook) || die "tallowbrook is not on PATH ($PATH)"
step "on PATH: $program"

# A session of our own: a private home and XDG folders, and no desktop environment, so the
# freedesktop defaults answer (xdg-mime's generic path, gio's own lookup) and nothing of the
# caller's settings, logs or running copy is touched. The session bus address leads nowhere, so
# the program and gio neither join the caller's desktop session nor start a bus of their own.
export HOME=$work/home
export XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
unset XDG_CURRENT_DESKTOP XDG_SESSION_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION GNOME_DESKTOP_SESSION_ID WAYLAND_DISPLAY
export DBUS_SESSION_BUS_ADDRESS=unix:path=$work/no-session-bus
export QT_QPA_PLATFORM=xcb
log=$XDG_DATA_HOME/Tallowbrook/Logs/Tallowbrook_.log

# Polls a condition for up to 30 s.
waitFor() {
  local i
  for i in $(seq 1 300); do
    if eval "$1"; then return 0; fi
    sleep 0.1
  done
  return 1
}
failSeen() {
  echo "check-package: FAILED: $*"
  echo "--- program log ($log)"
  cat "$log" 2>/dev/null || echo "(none)"
  echo "--- program output"
  cat "$work/out.txt" 2>/dev/null || echo "(none)"
  echo "--- X server"
  cat "$work/xvfb.txt" 2>/dev/null || echo "(none)"
  exit 1
}

# The desktop database and the MIME database are rebuilt by the triggers of desktop-file-utils
# and shared-mime-info when the package puts its files in /usr/share/applications and
# /usr/share/mime/packages; nothing is run by hand here, so a package that needed it would fail.
default=$(xdg-mime query default application/x-tallowbrook-slideshow 2>&1 || true)
[ "$default" = "$id.desktop" ] ||
  die "xdg-mime names '$default' as the opener of application/x-tallowbrook-slideshow ($(grep -s tallowbrook /usr/share/applications/mimeinfo.cache || echo 'not in /usr/share/applications/mimeinfo.cache'))"
step "xdg-mime query default application/x-tallowbrook-slideshow: $default"

# A small document of one picture, as the program writes them.
mkdir -p "$work/pictures"
base64 -d >"$work/pictures/red.png" <<'PNG'
iVBORw0KGgoAAAANSUhEUgAAAEAAAAAwCAIAAAAuKetIAAAAZUlEQVRo3u3PQQ3AIADAQMAOCnCPtIngcVnSKrjOe/b4c0sDGtCABjSgAQ1oQAMa0IAGNKABDWhAAxrQgAY0oAENaEADGtCABjSgAQ1oQAMa0IAGNKABDWhAAxrQgAY0oAENeO0DNQ0BhEp0JboAAAAASUVORK5CYII=
PNG
document=$work/Check.slideshow
cat >"$document" <<JSON
{"version": "1.0",
 "metadata": {"createdDate": "2026-01-31T09:15:02Z", "appVersion": "1.0", "totalImages": 1,
              "totalAudioTracks": 0, "createdBy": "Tallowbrook for Linux"},
 "settings": {"slideshowDelay": 2, "gridOptionRaw": 0, "randomOrder": false, "loopSlideshow": false,
              "transitionType": "-", "imageScalingMode": "Best Fit (no upscaling)", "selectedDisplayID": 0,
              "selectedSortOption": "-"},
 "images": [{"id": "6f1d3c2e-8a4b-4c5d-9e7f-0a1b2c3d4e5f", "filename": "red.png", "isGIF": false,
             "originalPath": "$work/pictures/red.png"}],
 "audioTracks": [],
 "audioSettings": {"volume": 0.5, "isLooping": true, "currentTrackIndex": 0}}
JSON
type=$(gio info -a standard::content-type "$document" 2>&1 | sed -n 's/^ *standard::content-type: //p')
[ "$type" = application/x-tallowbrook-slideshow ] ||
  die "the MIME database calls $document '$type', not application/x-tallowbrook-slideshow"
step "gio: a .slideshow file is application/x-tallowbrook-slideshow"

# The server picks a free display itself and writes its number once it is ready.
Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp -noreset 3>"$work/display" 2>"$work/xvfb.txt" &
xvfb=$!
waitFor '[ -s "$work/display" ]' || failSeen "no virtual display"
export DISPLAY=:$(head -n 1 "$work/display")
waitFor 'xdotool getdisplaygeometry >/dev/null 2>&1' || failSeen "display $DISPLAY does not answer"
step "virtual display $DISPLAY"

cd "$work"
tallowbrook >"$work/out.txt" 2>&1 &
pid=$!
windowNamed() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1; }
waitFor '[ -n "$(windowNamed Tallowbrook)" ] || ! kill -0 $pid 2>/dev/null' || failSeen "no main window"
kill -0 "$pid" 2>/dev/null || failSeen "tallowbrook ended at start"
[ -n "$(windowNamed Tallowbrook)" ] || failSeen "no main window"
step "started from PATH: main window \"Tallowbrook\" is up"

gio open "$document" >"$work/open.txt" 2>&1 || failSeen "gio open: $(cat "$work/open.txt")"
waitFor "grep -q 'Slideshow loaded: 1 images, 0 audio tracks' '$log' || ! kill -0 $pid 2>/dev/null" ||
  failSeen "the running program did not load the document opened with gio open ($(cat "$work/open.txt"))"
kill -0 "$pid" 2>/dev/null || failSeen "tallowbrook ended"
grep -q 'Slideshow loaded: 1 images, 0 audio tracks' "$log" || failSeen "the document was not loaded"
step "gio open Check.slideshow: the running program says \"$(grep -o 'Slideshow loaded: .*' "$log" | head -n 1)\""

# The show itself needs what only loads at run time (the player's QML modules, the image
# plugins): a missing one leaves an empty player window that never moves on. The document's one
# picture, two seconds, no loop: the show ends by itself.
xdotool windowfocus --sync "$(windowNamed Tallowbrook)"
xdotool key ctrl+r
waitFor '[ -n "$(windowNamed "Tallowbrook Slideshow")" ]' || failSeen "Ctrl+R opened no player window"
waitFor "grep -q 'SlideshowView: Slideshow ended' '$log' || ! kill -0 $pid 2>/dev/null" ||
  failSeen "the show did not play its picture to the end"
kill -0 "$pid" 2>/dev/null || failSeen "tallowbrook ended during the show"
# The timer ends the show even when its scene failed to load: the log says why.
errors=$(grep -F '][ERROR][' "$log" || true)
[ -z "$errors" ] || failSeen "the program logged errors: $errors"
step "Ctrl+R: the show played the picture and ended by itself, and the log has no error"

echo "check-package: OK: tallowbrook $(dpkg-query -W -f='${Version}' tallowbrook) installed and working (it stays installed; remove it with: ${SUDO:+sudo }apt-get remove tallowbrook)"
