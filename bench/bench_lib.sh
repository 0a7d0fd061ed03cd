# Shared set-up of the benchmark scripts: the corpus folder, and an optimised build of one
# benchmark program. Source it from bench/run_*.sh after changing to the project folder.
corpus=${CORPUS_DIR:-/tmp/tallowbrook-corpus}

# Makes the 20,000-file tree and the MP3 of the shared corpus when <path below the corpus> is missing.
needTreeAndAudio() {
  local maker=${BENCH_TREE_SCRIPT:-../shared/bench/make_tree_audio.sh}
  [ -e "$corpus/$1" ] || CORPUS_DIR="$corpus" bash "$maker" >/dev/null
}

# needBigPictures <count> [package...]: installs the packages (the reference tool and the corpus
# maker's own), then sets `files` to the first <count> 24-megapixel JPEGs of the corpus, making
# them when the last one is missing.
needBigPictures() {
  local count=$1 sudo="" maker=${BENCH_CORPUS_SCRIPT:-../shared/bench/make_corpus.py}
  shift
  [ "$(id -u)" -ne 0 ] && sudo=sudo
  for p in "$@" python3-numpy python3-pil fonts-dejavu-core; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' ||
      { $sudo apt-get install -y -qq "$p" >/dev/null; }
  done
  files=()
  for i in $(seq 1 "$count"); do files+=("$corpus/big/$(printf 'IMG_%04d.jpg' "$i")"); done
  if [ ! -f "${files[-1]}" ]; then
    echo "bench: making $count pictures in $corpus (about 5 s each per core)"
    CORPUS_DIR="$corpus" /usr/bin/python3 "$maker" big 1 "$count"
  fi
}

# Builds the named benchmark targets in build-bench (Release, no tests).
buildBench() {
  cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWBROOK_BUILD_TESTS=OFF \
    -DTALLOWBROOK_BUILD_BENCHMARKS=ON >/dev/null
  cmake --build build-bench --target "$@" >/dev/null
}
