#!/usr/bin/env bash
# The movie writer's presets: time and SSIM of 10 s of 1080p H.264 at 50 Mbit/s, and of 5 s of 4K
# HEVC at 60 Mbit/s, against the uncompressed frames. SSIM is measured by the ffmpeg tool on the
# decoded movie and a raw yuv420p reference converted from the same BGRA frames (BT.709, video range).
# Usage: bench/run_writer.sh   (photos from $CORPUS_DIR/big when present, else synthetic pictures;
#        bench/run_thumbnails.sh 20 makes them)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
buildBench writer_bench
bench=build-bench/bench/writer_bench

photos=()
for f in "$corpus"/big/*.jpg; do [ -e "$f" ] && photos+=("$f"); done
photos=("${photos[@]:0:4}")
[ ${#photos[@]} -gt 0 ] && echo "pictures: ${#photos[@]} photos from $corpus/big" || echo "pictures: synthetic"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# run <label> <format> <width> <height> <seconds> <preset>...
run() {
  local label=$1 format=$2 width=$3 height=$4 seconds=$5
  shift 5
  "$bench" raw - "$format" "$width" "$height" "$seconds" - "${photos[@]}" |
    ffmpeg -v error -f rawvideo -pix_fmt bgra -s "${width}x${height}" -r 30 -i - \
      -vf "scale=flags=bicubic:out_color_matrix=bt709:out_range=tv,format=yuv420p" -f rawvideo -y "$work/ref.yuv"
  for preset in "$@"; do
    local out="$work/$label-$preset.$format"
    local figures
    figures=$("$bench" encode "$out" "$format" "$width" "$height" "$seconds" "$preset" "${photos[@]}")
    local ssim
    ssim=$(ffmpeg -nostats -i "$out" -f rawvideo -pix_fmt yuv420p -s "${width}x${height}" -r 30 -i "$work/ref.yuv" \
      -lavfi "[0:v][1:v]ssim" -f null - 2>&1 | sed -n 's/.*SSIM \(.*\)$/\1/p' | tail -1)
    echo "$label $figures ssim: $ssim"
    rm -f "$out"
  done
  rm -f "$work/ref.yuv"
}

run h264-1080p mp4 1920 1080 10 medium fast faster veryfast
run hevc-4k mov 3840 2160 5 medium fast
