#!/usr/bin/env bash
# Installs what is missing, builds, checks formatting, and runs the whole test suite under CTest.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
bash scripts/check-format.sh
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "${BUILD_DIR:-build}" -j "$(nproc)" --output-on-failure --timeout 300
