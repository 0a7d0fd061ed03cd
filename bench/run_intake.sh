#!/usr/bin/env bash
# Adding the 20,000-file benchmark tree: time until every item is in the queue, the longest
# stall of the GUI thread meanwhile, and sorting by name; beside a plain statx walk of the same
# tree (GNU find reading birth times), cold and warm.
# Usage: bench/run_intake.sh   (makes the tree in $CORPUS_DIR when it is missing)
set -euo pipefail
cd "$(dirname "$0")/.."
corpus=${CORPUS_DIR:-/tmp/tallowbrook-corpus}
maker=${BENCH_TREE_SCRIPT:-../shared/bench/make_tree_audio.sh}
[ -d "$corpus/tree" ] || CORPUS_DIR="$corpus" bash "$maker" >/dev/null
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWBROOK_BUILD_TESTS=OFF \
  -DTALLOWBROOK_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build-bench --target intake_bench >/dev/null

dropCaches() { sync; echo 3 >/proc/sys/vm/drop_caches 2>/dev/null || true; }
walk() {
  local start end
  start=$(date +%s%N)
  find "$corpus/tree" -type f -printf '%B@\n' >/dev/null
  end=$(date +%s%N)
  awk -v ns=$((end - start)) 'BEGIN { printf "%.0f", ns / 1e6 }'
}
dropCaches
echo "statx walk (find): cold $(walk) ms, warm $(walk) ms"
dropCaches
echo "tallowbrook cold: $(build-bench/bench/intake_bench "$corpus/tree")"
echo "tallowbrook warm: $(build-bench/bench/intake_bench "$corpus/tree")"
