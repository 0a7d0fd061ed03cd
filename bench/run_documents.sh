#!/usr/bin/env bash
# A slideshow document of the 20,000-file benchmark tree: written, read back with the files in
# place, moved and gone, and opened in a window (longest GUI stall); beside python3's json.load
# of the same document and a stat pass over the tree.
# Usage: bench/run_documents.sh   (makes the tree in $CORPUS_DIR when it is missing)
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
needTreeAndAudio tree
buildBench document_bench

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -r "$corpus/tree" "$scratch/tree"
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} build-bench/bench/document_bench "$scratch/tree" "$scratch" 2>/dev/null
python3 - "$scratch/big.slideshow" "$scratch/tree" <<'PY'
import json, os, sys, time
start = time.perf_counter()
with open(sys.argv[1]) as f:
    json.load(f)
loaded = time.perf_counter()
count = 0
for folder, _, names in os.walk(sys.argv[2]):
    for name in names:
        os.stat(os.path.join(folder, name))
        count += 1
walked = time.perf_counter()
print(f"python3 json.load {1000 * (loaded - start):.0f} ms; stat pass of {count} files {1000 * (walked - loaded):.0f} ms")
PY
