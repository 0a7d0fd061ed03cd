#!/usr/bin/env bash
# Live mode under a burst: 1,000 small JPEGs and three short clips copied into the watched folder
# of a running show whose queue holds the folder's 1,000 or 20,000 earlier files, with the
# thumbnail grid shown. Beside it, the floor of one sync: listing the folder once with birth
# times (GNU find, statx), as each sync must.
# Usage: bench/run_live.sh
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
buildBench live_bench

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/incoming"
convert -size 640x480 plasma:fractal -quality 85 "$work/small.jpg"
# Links: 1,000 or 20,000 process starts would take longer than the benchmark.
manyLinks() { python3 -c 'import os, sys; [os.link(sys.argv[1], sys.argv[2] % i) for i in range(1, int(sys.argv[3]) + 1)]' "$@"; }
manyLinks "$work/small.jpg" "$work/incoming/new_%04d.jpg" 1000
for i in 1 2 3; do
  ffmpeg -v error -f lavfi -i "testsrc=size=320x240:rate=30:duration=2" -pix_fmt yuv420p "$work/incoming/clip_$i.mp4"
done

listing() {
  local start end
  start=$(date +%s%N)
  find "$1" -maxdepth 1 -type f -printf '%B@\n' >/dev/null
  end=$(date +%s%N)
  awk -v ns=$((end - start)) 'BEGIN { printf "%.1f", ns / 1e6 }'
}
for before in 1000 20000; do
  rm -rf "$work/watched" && mkdir "$work/watched"
  manyLinks "$work/small.jpg" "$work/watched/old_%05d.jpg" "$before"
  echo "tallowbrook: $(QT_QPA_PLATFORM=offscreen build-bench/bench/live_bench "$work/watched" "$work/incoming")"
  echo "one listing of the $((before + 1003))-file folder (find, statx): $(listing "$work/watched") ms"
done
