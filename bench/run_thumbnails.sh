#!/usr/bin/env bash
# Thumbnails of 24-megapixel JPEGs: Tallowbrook's generator beside vipsthumbnail, on the same
# files in the same run, one thread and two. Prints each figure and the ratio.
# Usage: bench/run_thumbnails.sh [count]   (corpus in $CORPUS_DIR, default /tmp/tallowbrook-corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
count=${1:-20}
source bench/bench_lib.sh
maker=${BENCH_CORPUS_SCRIPT:-../shared/bench/make_corpus.py}

SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
for p in libvips-tools python3-numpy python3-pil fonts-dejavu-core; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' ||
    { $SUDO apt-get install -y -qq "$p" >/dev/null; }
done

files=()
for i in $(seq 1 "$count"); do files+=("$corpus/big/$(printf 'IMG_%04d.jpg' "$i")"); done
if [ ! -f "${files[-1]}" ]; then
  echo "bench: making $count pictures in $corpus (about 5 s each per core)"
  CORPUS_DIR="$corpus" /usr/bin/python3 "$maker" big 1 "$count"
fi

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
