#!/usr/bin/env bash
# The encoder tunings of the movie export by time and quality, on the exporter's own frames:
# four 24-megapixel photos, 5 s each, exported as still pictures with fades and as Ken Burns at
# 1080p (H.264, 50 Mbit/s), and with fades at 4K (HEVC, 60 Mbit/s). Quality is the SSIM of each
# movie against the same frames uncompressed (the exporter's raw output as the writer hands it to
# the encoder: BT.709, video range), by ffmpeg's ssim filter.
# Usage: bench/run_presets.sh   (after bench/run_thumbnails.sh has made the corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
buildBench export_bench
bench=build-bench/bench/export_bench
export QT_QPA_PLATFORM=offscreen
mapfile -t photos < <(ls "$corpus"/big/*.jpg | head -n 4)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# tunings <fade|kenburns> <width> <height> <mp4|mov> <preset> <params> [<preset> <params>]...
# where params may end in "|options" for the frames between the stills' keyframes (H.264).
tunings() {
  local kind=$1 w=$2 h=$3 ext=$4
  shift 4
  rm -f "$work/fifo"
  mkfifo "$work/fifo"
  ffmpeg -v error -y -f rawvideo -pix_fmt yuv420p -s "${w}x$h" -r 30 -i "$work/fifo" -c:v ffv1 "$work/frames.nut" &
  "$bench" --raw-yuv="$work/fifo" "$work/raw.$ext" "$w" "$h" 5 "$kind" - "${photos[@]}" >/dev/null
  wait
  while [ $# -ge 2 ]; do
    local preset=$1 params=${2%%|*} inter= figures ssim
    [[ $2 == *"|"* ]] && inter=${2#*|}
    shift 2
    figures=$("$bench" --preset="$preset" --params="$params" --inter-params="$inter" "$work/movie.$ext" "$w" "$h" 5 \
      "$kind" - "${photos[@]}")
    ssim=$(ffmpeg -nostats -i "$work/movie.$ext" -i "$work/frames.nut" -lavfi "[0:v][1:v]ssim" -f null - 2>&1 |
      sed -n 's/.*All:\([0-9.]*\) (\([0-9.]*\)).*/\1 (\2 dB)/p' | tail -n 1)
    echo "$kind ${w}x$h $ext $preset${params:+ $params}${inter:+ | $inter}: $figures, SSIM $ssim"
  done
  rm -f "$work"/movie.* "$work/frames.nut"
}

still=subme=6:trellis=1:me=dia:aq-mode=0:no-dct-decimate=1
tunings fade 1920 1080 mp4 medium "" faster "" veryfast "" veryfast $still veryfast $still:psy=0 \
  veryfast "$still:psy=0|subme=1,partitions=none" veryfast "$still:psy=0|subme=1,trellis=0" \
  veryfast "${still/trellis=1/trellis=2}:subme=8:psy=0|subme=1,trellis=1,partitions=none"
tunings kenburns 1920 1080 mp4 faster "" veryfast "" superfast "" ultrafast "" \
  ultrafast 8x8dct=1:aq-mode=1:subme=1:bframes=3:deblock=0,0
tunings fade 3840 2160 mov medium "" fast "" faster "" veryfast "" faster limit-sao=1 faster limit-sao=1:psy-rd=0
