#!/usr/bin/env bash
# Installs what is missing, then configures and builds Tallowbrook and its tests in build/.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh

BUILD_DIR=${BUILD_DIR:-build}
EXTRA=()
# CI treats warnings in our own code as errors.
if [ "${CI:-}" = "true" ]; then EXTRA+=(-DTALLOWBROOK_WERROR=ON); fi

cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" "${EXTRA[@]}" >/dev/null
# JOBS=1 leaves the other cores to whoever shares the machine.
cmake --build "$BUILD_DIR" -j "${JOBS:-$(nproc)}"
