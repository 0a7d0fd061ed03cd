#!/usr/bin/env bash
# Installs what is missing, builds, and starts Tallowbrook.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
exec "${BUILD_DIR:-build}/src/tallowbrook" "$@"
