#!/usr/bin/env bash
# The grid player on a 1920x1080 virtual display: a 3x3 grid whose nine cells all change every
# second, over the corpus's 24-megapixel JPEGs (links, so each cell is a distinct file to the
# caches). Frame times while it runs, the time from a tick to its nine new cells on screen, and
# resident memory at the start, at its peak and at the end (it must stay flat). Beside it,
# vipsthumbnail makes the same nine cell-size pictures, one after another and two at a time.
# Usage: bench/run_gridplayer.sh [ticks]   (default 500; after bench/run_thumbnails.sh has made
# the corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
ticks=${1:-500}
buildBench gridplayer_bench

links=$(mktemp -d)
trap 'rm -rf "$links"' EXIT
mapfile -t sources < <(ls "$corpus"/big/*.jpg)
count=$((ticks * 9 + 9))
for i in $(seq 0 $((count - 1))); do ln -s "${sources[$((i % ${#sources[@]}))]}" "$links/$(printf 'G%05d.jpg' "$i")"; done
mapfile -t pictures < <(ls "$links"/*.jpg)

# The player prints its progress lines to the console; only the figures are kept.
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1920x1080x24" build-bench/bench/gridplayer_bench "$ticks" "${pictures[@]}" |
  grep "^grid "

# A cell of the 3x3 grid at 1920x1080: (1920 - 10) / 3 by (1080 - 10) / 3.
out=$(mktemp -d)
nine=("${sources[@]:0:9}")
vips() {
  local start end
  start=$(date +%s%N)
  printf '%s\n' "${nine[@]}" | xargs -P "$1" -I{} env VIPS_CONCURRENCY=1 vipsthumbnail -s '637x357!' -o "$out/%s.jpg" {}
  end=$(date +%s%N)
  echo $(((end - start) / 1000000))
}
vips 1 >/dev/null # warm the page cache as the grid's reads were
echo "vipsthumbnail nine 637x357 cells: one at a time $(vips 1) ms, two at a time $(vips 2) ms"
rm -rf "$out"
