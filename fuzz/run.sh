#!/usr/bin/env bash
# Builds the picture-decoder fuzzer with clang, AddressSanitizer and UBSan, seeds it with small
# valid pictures, and runs it for a bounded time. Not part of the test suite.
# Usage: fuzz/run.sh [seconds]   (default 120)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-120}
SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' ||
    $SUDO apt-get install -y -qq "$p" >/dev/null
done
flags="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -fsanitize=fuzzer-no-link"
cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
  -DTALLOWBROOK_BUILD_TESTS=OFF -DTALLOWBROOK_BUILD_FUZZERS=ON >/dev/null
cmake --build build-fuzz --target image_fuzzer make_fuzz_seeds
mkdir -p build-fuzz/corpus build-fuzz/findings
# The encoders used for the seeds leak a little of their own; that is not what is fuzzed.
ASAN_OPTIONS=detect_leaks=0 build-fuzz/fuzz/make_fuzz_seeds build-fuzz/corpus
ASAN_OPTIONS=detect_leaks=0 build-fuzz/fuzz/image_fuzzer build-fuzz/corpus -max_total_time="$seconds" \
  -rss_limit_mb=4096 -timeout=20 -artifact_prefix=build-fuzz/findings/
