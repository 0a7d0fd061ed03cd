#!/usr/bin/env bash
# Movie export beside the ffmpeg command line on the same timeline: each photo one input, scaled
# and padded to the frame, repeated by the loop filter (decoded once), 0.8 s transitions by xfade,
# the MP3 cut to the movie. Time and peak memory of each, and two quality figures:
#   - each movie against its own uncompressed frames (ours: the exporter's frames written raw;
#     ffmpeg's: its filter graph rendered to FFV1), by ffmpeg's ssim filter;
#   - for fades, our still frames against ffmpeg's (both in BT.601 video range): how our picture
#     preparation compares with ffmpeg's scaler.
#   1080p H.264 50 Mbit/s + AAC, 10 photos x 5 s, fades
#   1080p Ken Burns (ffmpeg: zoompan + xfade), 10 photos x 5 s
#   2160p HEVC 60 Mbit/s, 4 photos x 5 s, fades
# Each export runs RUNS times (2 unless set), ours and ffmpeg's in turn, and the best time of each
# counts: a shared machine has slow spells that would otherwise decide the ratio.
# Usage: [RUNS=n] bench/run_export.sh [fades] [kenburns] [4k]   (all three when none is named)
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
# best <figure line>...: the fastest line, and every run's time after it.
best() {
  printf '%s\n' "$@" | sort -n | head -n 1 | tr -d '\n'
  [ $# -gt 1 ] && printf ' (best of %d: %s)' $# "$(printf '%s\n' "$@" | awk '{ printf "%s%s", s, $1; s = ", " }')"
  echo
}
# ssimOf <movie> <reference> [filter applied to both first]
ssimOf() {
  local pick=${3:-null}
  ffmpeg -nostats -i "$1" -i "$2" -lavfi "[0:v]$pick[a];[1:v]$pick[b];[a][b]ssim" -f null - 2>&1 |
    sed -n 's/.*All:\([0-9.]*\) (\([0-9.]*\)).*/\1 (\2 dB)/p' | tail -n 1
}
# Reference frames go to NUT, which keeps the 1/30 s timestamps: Matroska rounds them to whole
# milliseconds, and the ssim filter then pairs every third movie frame with the frame before it.
# Our frames, uncompressed: as the movie writer hands them to the encoder (BT.709, video range),
# and converted by ffmpeg as its timeline holds them (BT.601) for comparing the two preparations.
ourFrames() {
  local w=$1 h=$2 kind=$3
  shift 3
  rm -f "$work/fifo" "$work/fifo-yuv"
  mkfifo "$work/fifo" "$work/fifo-yuv"
  ffmpeg -v error -y -f rawvideo -pix_fmt bgra -s "${w}x$h" -r 30 -i "$work/fifo" \
    -vf "scale=flags=bicubic:out_color_matrix=bt601:out_range=tv,format=yuv420p" -c:v ffv1 "$work/ours-601.nut" &
  ffmpeg -v error -y -f rawvideo -pix_fmt yuv420p -s "${w}x$h" -r 30 -i "$work/fifo-yuv" -c:v ffv1 \
    "$work/ours-709.nut" &
  "$bench" --raw="$work/fifo" --raw-yuv="$work/fifo-yuv" "$work/raw.mp4" "$w" "$h" 5 "$kind" - "$@" >/dev/null
  wait
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
  # The two take turns, so a slow spell of the machine is likely to fall on both.
  local ours=() theirs=() r
  for ((r = 0; r < runs; r++)); do
    ours+=("$("$bench" "$work/ours.$ext" "$w" "$h" 5 "$kind" "$audio" "${photos[@]:0:$n}")")
    theirs+=("$(timed ffmpeg -v error -y "${in[@]}" -i "$audio" -filter_complex "$g" -map "[$(cat "$work/last")]" \
      -map "$n:a" -t "$duration" -pix_fmt yuv420p "$@" -c:a aac -b:a 128k "$work/theirs.$ext")")
  done
  echo "tallowbrook: $(best "${ours[@]}")"
  echo "ffmpeg:      $(best "${theirs[@]}")"
  echo "ffmpeg's time over ours: $(awk -v a="$(best "${ours[@]}")" -v b="$(best "${theirs[@]}")" \
    'BEGIN { printf "%.2f", b / a }')x"
  # ffmpeg's frames as its movie holds them: xfade works in 4:4:4, and the mp4 is constant-rate.
  ffmpeg -v error -y "${in[@]}" -filter_complex "$g" -map "[$(cat "$work/last")]" \
    -fps_mode cfr -pix_fmt yuv420p -c:v ffv1 "$work/theirs-frames.nut"
  ourFrames "$w" "$h" "$kind" "${photos[@]:0:$n}"
  echo "SSIM, movie against its own frames: tallowbrook $(ssimOf "$work/ours.$ext" "$work/ours-709.nut"), ffmpeg $(ssimOf "$work/theirs.$ext" "$work/theirs-frames.nut")"
  # Frame n is a still in both timelines when n mod 150 < 126 (4.2 s of every 5 s).
  [ "$kind" = fade ] &&
    echo "SSIM, our still frames against ffmpeg's: $(ssimOf "$work/ours-601.nut" "$work/theirs-frames.nut" "select='lt(mod(n\,150)\,126)'")"
  rm -f "$work"/ours* "$work"/theirs* "$work"/raw.mp4
}

wanted() { [ ${#cases[@]} -eq 0 ] || [[ " ${cases[*]} " == *" $1 "* ]]; }
cases=("$@")
runs=${RUNS:-2}
if wanted fades; then
  runCase "1080p H.264, 10 photos x 5 s, fades" 10 1920 1080 fade mp4 -c:v libx264 -profile:v high -b:v 50M
fi
if wanted kenburns; then
  runCase "1080p Ken Burns, 10 photos x 5 s" 10 1920 1080 kenburns mp4 -c:v libx264 -profile:v high -b:v 50M
fi
if wanted 4k; then
  runCase "2160p HEVC, 4 photos x 5 s, fades" 4 3840 2160 fade mov -c:v libx265 -b:v 60M -tag:v hvc1
fi
