#!/usr/bin/env bash
# Builds the Debian package: the normal build (scripts/build.sh: missing packages, then build/),
# then cpack in build/, which installs from what is already built. Prints the package's path.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
BUILD_DIR=${BUILD_DIR:-build}
out=$(cd "$BUILD_DIR" && cpack -G DEB 2>&1) || { echo "$out"; echo "package: cpack failed" >&2; exit 1; }
deb=$(sed -n 's/^CPack: - package: \(.*\.deb\) generated\.$/\1/p' <<<"$out")
[ -n "$deb" ] && [ -f "$deb" ] || { echo "$out"; echo "package: cpack made no .deb" >&2; exit 1; }
echo "package: $deb"
