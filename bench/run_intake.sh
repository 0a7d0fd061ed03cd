#!/usr/bin/env bash
# Adding the 20,000-file benchmark tree: time until every item is in the queue, the longest
# stall of the GUI thread meanwhile, and sorting by name; beside a plain statx walk of the same
# tree (GNU find reading birth times), cold and warm.
# Usage: bench/run_intake.sh   (makes the tree in $CORPUS_DIR when it is missing)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
needTreeAndAudio tree
buildBench intake_bench

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
