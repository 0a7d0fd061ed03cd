#!/usr/bin/env bash
# Builds a fuzzer with the `fuzz` preset (clang, AddressSanitizer, UBSan), seeds it, and runs it
# for a bounded time. Not part of the test suite.
#   image:    the program's own picture decoders (HEIC, AVIF, JPEG XL)
#   document: the slideshow document reader and the bookmark blobs it carries
# Usage: fuzz/run.sh [image|document] [seconds]   (default: image, 120)
set -euo pipefail
cd "$(dirname "$0")/.."
target=${1:-image}
seconds=${2:-120}
SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' ||
    $SUDO apt-get install -y -qq "$p" >/dev/null
done
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${target}_fuzzer" make_fuzz_seeds
corpus=build-fuzz/corpus-$target
mkdir -p build-fuzz/corpus-image build-fuzz/corpus-document build-fuzz/findings
# The encoders used for the seeds leak a little of their own; that is not what is fuzzed.
ASAN_OPTIONS=detect_leaks=0 build-fuzz/fuzz/make_fuzz_seeds build-fuzz/corpus-image build-fuzz/corpus-document
ASAN_OPTIONS=detect_leaks=0 "build-fuzz/fuzz/${target}_fuzzer" "$corpus" -max_total_time="$seconds" \
  -rss_limit_mb=4096 -timeout=20 -artifact_prefix="build-fuzz/findings/$target-"
