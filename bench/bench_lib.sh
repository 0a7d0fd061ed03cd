# Shared set-up of the benchmark scripts: the corpus folder, and an optimised build of one
# benchmark program. Source it from bench/run_*.sh after changing to the project folder.
corpus=${CORPUS_DIR:-/tmp/tallowbrook-corpus}

# Makes the 20,000-file tree and the MP3 of the shared corpus when <path below the corpus> is missing.
needTreeAndAudio() {
  local maker=${BENCH_TREE_SCRIPT:-../shared/bench/make_tree_audio.sh}
  [ -e "$corpus/$1" ] || CORPUS_DIR="$corpus" bash "$maker" >/dev/null
}

# Builds the named benchmark targets in build-bench (Release, no tests).
buildBench() {
  cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWBROOK_BUILD_TESTS=OFF \
    -DTALLOWBROOK_BUILD_BENCHMARKS=ON >/dev/null
  cmake --build build-bench --target "$@" >/dev/null
}
