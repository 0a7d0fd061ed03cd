#!/usr/bin/env bash
# Movie export beside the ffmpeg command line on the same timeline: each photo one input, scaled
# and padded to the frame, repeated by the loop filter (decoded once), 0.8 s transitions by xfade,
# the MP3 cut to the movie. Time and peak memory of each; SSIM of each movie against ffmpeg's own
# uncompressed render of the timeline (FFV1), which both share: our transitions are eased, so
# they differ from xfade's a little by design, and that counts against us.
#   1080p H.264 50 Mbit/s + AAC, 10 photos x 5 s, fades
#   1080p Ken Burns (ffmpeg: zoompan + xfade), 10 photos x 5 s
#   2160p HEVC 60 Mbit/s, 4 photos x 5 s, fades
# Usage: bench/run_export.sh   (after bench/run_thumbnails.sh has made the corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
needTreeAndAudio audio/track60.mp3
buildBench export_bench
bench=build-bench/bench/export_bench
export QT_QPA_PLATFORM=offscreen
mapfile -t photos < <(ls "$corpus"/big/*.jpg | head -n 10)
audio=$corpus/audio/track60.mp3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# graph <count> <width> <height> <fade|kenburns>: the filter graph of the timeline.
graph() {
  local n=$1 w=$2 h=$3 kind=$4 g="" i len frames offset
  for ((i = 0; i < n; i++)); do
    len=5.8
    ((i == 0 || i == n - 1)) && len=5.0
    frames=$(awk -v l=$len 'BEGIN { printf "%d", l * 30 }')
    g+="[$i:v]scale=$w:$h:force_original_aspect_ratio=decrease:flags=bicubic,pad=$w:$h:(ow-iw)/2:(oh-ih)/2,setsar=1,"
    if [ "$kind" = kenburns ]; then
      g+="zoompan=z='1+0.08*on/$frames':x='iw/2-(iw/zoom/2)':y='ih/2-(ih/zoom/2)':d=$frames:s=${w}x$h:fps=30"
    else
      g+="loop=loop=$((frames - 1)):size=1,setpts=N/30/TB,fps=30"
    fi
    g+=",format=yuv420p[v$i];"
  done
  local last="v0"
  for ((i = 1; i < n; i++)); do
    offset=$(awk -v k=$i 'BEGIN { printf "%.1f", 4.2 + (k - 1) * 5.0 }')
    g+="[$last][v$i]xfade=transition=fade:duration=0.8:offset=$offset[x$i];"
    last="x$i"
  done
  echo "${g%;}"
  echo "$last" >"$work/last"
}
inputs() { for p in "$@"; do printf -- '-i\n%s\n' "$p"; done; }
timed() { /usr/bin/time -f "%e s, peak %M KiB" "$@" 2>&1 >/dev/null | tail -n 1; }
ssimOf() {
  ffmpeg -nostats -i "$1" -i "$2" -lavfi "[0:v][1:v]ssim" -f null - 2>&1 | sed -n 's/.*All:\([0-9.]*\).*/\1/p' | tail -n 1
}

# case <label> <count> <width> <height> <fade|kenburns> <ext> <ffmpeg codec options...>
runCase() {
  local label=$1 n=$2 w=$3 h=$4 kind=$5 ext=$6
  shift 6
  local duration g
  duration=$(awk -v n="$n" 'BEGIN { printf "%.1f", 4.2 * n + 0.8 * (n - 1) }')
  g=$(graph "$n" "$w" "$h" "$kind")
  mapfile -t in < <(inputs "${photos[@]:0:$n}")
  echo "== $label"
  echo "tallowbrook: $("$bench" "$work/ours.$ext" "$w" "$h" 5 "$kind" "$audio" "${photos[@]:0:$n}")"
  echo "ffmpeg:      $(timed ffmpeg -v error -y "${in[@]}" -i "$audio" -filter_complex "$g" -map "[$(cat "$work/last")]" \
    -map "$n:a" -t "$duration" -pix_fmt yuv420p "$@" -c:a aac -b:a 128k "$work/theirs.$ext")"
  if [ "$kind" = fade ]; then
    ffmpeg -v error -y "${in[@]}" -filter_complex "$g" -map "[$(cat "$work/last")]" -c:v ffv1 "$work/reference.mkv"
    echo "SSIM against the uncompressed timeline: tallowbrook $(ssimOf "$work/ours.$ext" "$work/reference.mkv"), ffmpeg $(ssimOf "$work/theirs.$ext" "$work/reference.mkv")"
  fi
  rm -f "$work"/ours.* "$work"/theirs.* "$work/reference.mkv"
}

runCase "1080p H.264, 10 photos x 5 s, fades" 10 1920 1080 fade mp4 -c:v libx264 -profile:v high -b:v 50M
runCase "1080p Ken Burns, 10 photos x 5 s" 10 1920 1080 kenburns mp4 -c:v libx264 -profile:v high -b:v 50M
runCase "2160p HEVC, 4 photos x 5 s, fades" 4 3840 2160 fade mov -c:v libx265 -b:v 60M -tag:v hvc1
