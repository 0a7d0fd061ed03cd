# Shared set-up of the end-to-end tests: a virtual X display of the test's own (or, with
# E2E_SESSION=wayland, a headless Wayland compositor), a private home
# for the program, and small helpers. Source it with the test's own arguments:
# <tallowbrook binary> <shots folder>.
app=$(realpath "$1")
shots=${2:-.}

work=$(mktemp -d)
pid=""
displayServer=""
# The display server is waited for: a test that ends while its server still shuts down would let
# the next test's server take the same display number and then lose its socket to the old one's exit.
cleanup() {
  [ -n "$pid" ] && kill "$pid" 2>/dev/null || true
  if [ -n "$displayServer" ]; then
    kill "$displayServer" 2>/dev/null || true
    wait "$displayServer" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

export XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache XDG_RUNTIME_DIR=$work/run
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
log=$XDG_DATA_HOME/Tallowbrook/Logs/Tallowbrook_.log

if [ "${E2E_SESSION:-x11}" = wayland ]; then
  # Weston's headless output, drawn by pixman so that screenshots hold pixels, and no X server
  # at all: a program that tried X would find none. --debug lets weston-screenshooter in.
  unset DISPLAY
  export WAYLAND_DISPLAY=tallowbrook-e2e QT_QPA_PLATFORM=wayland
  weston --backend=headless-backend.so --use-pixman --width=1280 --height=900 --idle-time=0 \
    --socket="$WAYLAND_DISPLAY" --debug >"$work/server.txt" 2>&1 &
  displayServer=$!
  for _ in $(seq 1 300); do [ -S "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY" ] && break; sleep 0.1; done
  [ -S "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY" ] || { echo "e2e: FAILED: no compositor ($(cat "$work/server.txt"))"; exit 1; }
  # screenshot <png>: the whole output, as the compositor drew it.
  screenshot() {
    local dir
    dir=$(mktemp -d -p "$work")
    (cd "$dir" && weston-screenshooter >/dev/null 2>&1) && mv "$dir"/*.png "$1" && rmdir "$dir"
  }
else
  # The server picks a free display number itself and writes it once it is ready, so tests running
  # side by side never share a display (choosing a number from lock files, as xvfb-run -a does,
  # races: two tests could take the same one and drop onto each other's windows). -noreset: an X
  # server resets when its last client leaves, and refuses connections while it does, so the probe
  # below could be answered once and then turned away.
  Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp -noreset 3>"$work/display" 2>"$work/server.txt" &
  displayServer=$!
  for _ in $(seq 1 300); do [ -s "$work/display" ] && break; sleep 0.1; done
  [ -s "$work/display" ] || { echo "e2e: FAILED: no virtual display ($(cat "$work/server.txt"))"; exit 1; }
  export DISPLAY=:$(head -n 1 "$work/display")
  for _ in $(seq 1 100); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done
  xdotool getdisplaygeometry >/dev/null 2>&1 || {
    echo "e2e: FAILED: display $DISPLAY does not answer ($(cat "$work/server.txt"); $(ls -la /tmp/.X11-unix))"
    exit 1
  }
  export QT_QPA_PLATFORM=xcb
  screenshot() { import -window root "$1"; }
fi

fail() {
  screenshot "$shots/e2e-failure.png" 2>/dev/null || true
  echo "e2e: FAILED: $* (screen in $shots/e2e-failure.png)"
  echo "--- log"
  cat "$log" 2>/dev/null || true
  echo "--- program output"
  cat "$work/out.txt" 2>/dev/null || true
  echo "--- display server"
  cat "$work/server.txt" 2>/dev/null || true
  exit 1
}
windowNamed() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1; }
# Polls a condition for up to 20 s.
waitFor() { for _ in $(seq 1 200); do if eval "$1"; then return 0; fi; sleep 0.1; done; return 1; }
startProgram() {
  "$app" "$@" >"$work/out.txt" 2>&1 &
  pid=$!
}
# Adds files through the real file dialog, by keyboard: the main window's first control opens
# it; the folder is typed, then the names. Usage: addThroughDialog <folder> '"a.png" "b.png"' <count>
addThroughDialog() {
  local main
  main=$(windowNamed Tallowbrook)
  xdotool windowfocus --sync "$main"
  xdotool key space
  waitFor '[ -n "$(windowNamed "Select files or folders")" ]' || fail "the file dialog did not open"
  xdotool windowfocus --sync "$(windowNamed "Select files or folders")"
  xdotool type --delay 20 "$1/"
  xdotool key Return
  xdotool type --delay 20 "$2"
  xdotool key Return
  waitFor "grep -q 'Total photos added: $3' '$log'" || fail "the files did not reach the queue"
}

# writeDocument <file> <delay in s> <loop: true|false> <name>...: a slideshow document of the
# pictures $work/pictures/<name>.png, in that order.
writeDocument() {
  local out=$1 delay=$2 loop=$3 images="" sep="" count
  shift 3
  count=$#
  for p in "$@"; do
    images+="$sep{\"id\": \"$(cat /proc/sys/kernel/random/uuid)\", \"filename\": \"$p.png\", \"isGIF\": false,"
    images+=" \"originalPath\": \"$work/pictures/$p.png\"}"
    sep=", "
  done
  cat >"$out" <<JSON
{"version": "1.0",
 "metadata": {"createdDate": "2026-01-31T09:15:02Z", "appVersion": "1.0", "totalImages": $count,
              "totalAudioTracks": 0, "createdBy": "Tallowbrook for Linux"},
 "settings": {"slideshowDelay": $delay, "gridOptionRaw": 0, "randomOrder": false, "loopSlideshow": $loop,
              "transitionType": "-", "imageScalingMode": "Best Fit (no upscaling)", "selectedDisplayID": 0,
              "selectedSortOption": "-"},
 "images": [$images], "audioTracks": [],
 "audioSettings": {"volume": 0.5, "isLooping": true, "currentTrackIndex": 0}}
JSON
}
