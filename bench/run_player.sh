#!/usr/bin/env bash
# The player window measured on a 1920x1080 virtual display: frame times of a 2 s cross-fade
# between two 24-megapixel photos, the time from an advance to the new picture on screen (cold
# and preloaded), and resident memory (links to the corpus files, so each is a distinct file to
# the caches): over sequential shows of 500 and 10,000 pictures at 0.05 s a picture (faster
# than decoding), and with the right arrow held through 300 pictures (400 presses at 25 a
# second), then Escape. Memory must stay within the picture caches' bounds: start + 400 MiB.
# Usage: bench/run_player.sh [memory]   (after bench/run_thumbnails.sh has made the corpus;
# "memory" runs the memory cases alone)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
buildBench player_bench
bench=build-bench/bench/player_bench
display() { QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1920x1080x24" "$@"; }

a=$corpus/big/IMG_0001.jpg
b=$corpus/big/IMG_0002.jpg
if [ "${1:-}" != memory ]; then
  display "$bench" crossfade "$a" "$b"
  display "$bench" advance "$a" "$b"
fi

links=$(mktemp -d)
trap 'rm -rf "$links"' EXIT
mapfile -t sources < <(ls "$corpus"/big/*.jpg)
for i in $(seq 0 9999); do ln -s "${sources[$((i % ${#sources[@]}))]}" "$links/$(printf 'P%05d.jpg' "$i")"; done
mapfile -t pictures < <(ls "$links"/*.jpg)
display "$bench" arrows "${pictures[@]:0:300}"
display "$bench" memory "${pictures[@]:0:500}"
display "$bench" memory "${pictures[@]}"
