#!/usr/bin/env bash
# The player window measured on a 1920x1080 virtual display: frame times of a 2 s cross-fade
# between two 24-megapixel photos, the time from an advance to the new picture on screen (cold
# and preloaded), and resident memory over a sequential show of 500 pictures (links to the
# corpus files, so each is a distinct file to the caches).
# Usage: bench/run_player.sh   (after bench/run_thumbnails.sh has made the corpus)
set -euo pipefail
cd "$(dirname "$0")/.."
corpus=${CORPUS_DIR:-/tmp/tallowbrook-corpus}
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWBROOK_BUILD_TESTS=OFF \
  -DTALLOWBROOK_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build-bench --target player_bench >/dev/null
bench=build-bench/bench/player_bench
display() { QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1920x1080x24" "$@"; }

a=$corpus/big/IMG_0001.jpg
b=$corpus/big/IMG_0002.jpg
display "$bench" crossfade "$a" "$b"
display "$bench" advance "$a" "$b"

links=$(mktemp -d)
trap 'rm -rf "$links"' EXIT
mapfile -t sources < <(ls "$corpus"/big/*.jpg)
for i in $(seq 0 499); do ln -s "${sources[$((i % ${#sources[@]}))]}" "$links/$(printf 'P%04d.jpg' "$i")"; done
display "$bench" memory "$links"/*.jpg
