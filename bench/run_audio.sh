#!/usr/bin/env bash
# The background playlist: adding 100 copies of the corpus MP3 (a duration probe each) beside
# ffprobe reading the same durations, and the GUI thread's longest stall at a track change.
# Usage: bench/run_audio.sh   (makes the MP3 in $CORPUS_DIR when it is missing)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
needTreeAndAudio audio/track60.mp3
buildBench audio_bench

copies=$(mktemp -d)
trap 'rm -rf "$copies"' EXIT
for i in $(seq -w 1 100); do cp "$corpus/audio/track60.mp3" "$copies/track$i.mp3"; done
start=$(date +%s%N)
for f in "$copies"/*.mp3; do ffprobe -v error -show_entries format=duration -of csv=p=0 "$f" >/dev/null; done
end=$(date +%s%N)
echo "ffprobe, 100 files: $(awk -v ns=$((end - start)) 'BEGIN { printf "%.0f", ns / 1e6 }') ms"
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} build-bench/bench/audio_bench "$copies" 2>/dev/null
