#!/usr/bin/env bash
# Thumbnails of 24-megapixel JPEGs: Tallowbrook's generator beside vipsthumbnail, on the same
# files in the same run, one thread and two. Prints each figure and the ratio.
# Usage: bench/run_thumbnails.sh [count]   (corpus in $CORPUS_DIR, default /tmp/tallowbrook-corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
count=${1:-20}
source bench/bench_lib.sh
needBigPictures "$count" libvips-tools

buildBench thumbnail_bench

# Warm the page cache so both read the files from memory.
cat "${files[@]}" >/dev/null

vips() {
  local threads=$1 out
  out=$(mktemp -d)
  local start end
  start=$(date +%s%N)
  if [ "$threads" = 1 ]; then
    for f in "${files[@]}"; do VIPS_CONCURRENCY=1 vipsthumbnail -s 300 -o "$out/%s.jpg" "$f"; done
  else
    printf '%s\n' "${files[@]}" | xargs -P "$threads" -I{} env VIPS_CONCURRENCY=1 vipsthumbnail -s 300 -o "$out/%s.jpg" {}
  fi
  end=$(date +%s%N)
  rm -rf "$out"
  awk -v ns=$((end - start)) -v n=${#files[@]} 'BEGIN { printf "%.1f", ns / 1e6 / n }'
}

for threads in 1 2; do
  ours=$(build-bench/bench/thumbnail_bench "$threads" "${files[@]}" | sed -E 's/.*ms_per_thumbnail=([0-9.]+).*/\1/')
  theirs=$(vips "$threads")
  ratio=$(awk -v a="$ours" -v b="$theirs" 'BEGIN { printf "%.2f", a / b }')
  echo "thumbnails, $threads thread(s), ${#files[@]} files: tallowbrook ${ours} ms each, vipsthumbnail ${theirs} ms each, ratio ${ratio} (below 1 is faster)"
done
