#!/usr/bin/env bash
# A fast scroll of the thumbnail grid over 2,000 queue items of 24-megapixel JPEGs (hard links
# to the corpus pictures, so each item is decoded on its own), beside vipsthumbnail making the
# same kind of thumbnails from the same files with two threads: the machine's plain rate. Then
# the same scroll with the desktop's shared thumbnail cache: once filling it (every thumbnail
# decoded and written), once reading what it holds.
# Usage: bench/run_grid.sh [items] [pixels per second]   (corpus in $CORPUS_DIR)
set -euo pipefail
cd "$(dirname "$0")/.."
items=${1:-2000}
speed=${2:-4000}
source bench/bench_lib.sh
[ -n "$(ls "$corpus"/big/*.jpg 2>/dev/null)" ] || bash bench/run_thumbnails.sh 20 >/dev/null
buildBench grid_bench

grid="$corpus/grid"
if [ "$(ls "$grid" 2>/dev/null | wc -l)" != "$items" ]; then
  rm -rf "$grid" && mkdir -p "$grid"
  pictures=("$corpus"/big/*.jpg)
  for i in $(seq 0 $((items - 1))); do
    ln "${pictures[$((i % ${#pictures[@]}))]}" "$grid/$(printf 'item_%05d.jpg' "$i")"
  done
fi
cat "$corpus"/big/*.jpg >/dev/null # both read from memory

echo "tallowbrook: $(QT_QPA_PLATFORM=offscreen build-bench/bench/grid_bench "$grid" "$speed")"
shared=$(mktemp -d)
trap 'rm -rf "$shared"' EXIT
echo "tallowbrook, filling the shared cache: $(QT_QPA_PLATFORM=offscreen build-bench/bench/grid_bench "$grid" "$speed" "$shared")"
# Every item, so the next runs find each one (the fast scroll passed most of them by); then the
# rate of making every item's thumbnail from the files and from the shared cache, unpaced by a
# scroll.
echo "tallowbrook, every thumbnail decoded and shared: $(QT_QPA_PLATFORM=offscreen build-bench/bench/grid_bench "$grid" 0 "$shared")"
echo "tallowbrook, every thumbnail from the shared cache: $(QT_QPA_PLATFORM=offscreen build-bench/bench/grid_bench "$grid" 0 "$shared")"
echo "tallowbrook, shared cache holding every file: $(QT_QPA_PLATFORM=offscreen build-bench/bench/grid_bench "$grid" "$speed" "$shared")"
sample=("$grid"/item_0000*.jpg) # ten items
start=$(date +%s%N)
printf '%s\n' "${sample[@]}" | xargs -P 2 -n 1 vipsthumbnail -s 300 -o /tmp/vips-grid-%s.jpg
end=$(date +%s%N)
rm -f /tmp/vips-grid-*.jpg
awk -v n=${#sample[@]} -v ns=$((end - start)) 'BEGIN { printf "vipsthumbnail, 2 threads: %.1f thumbnails per second\n", n / (ns / 1e9) }'
