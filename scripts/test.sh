#!/usr/bin/env bash
# Installs what is missing, builds, checks formatting, and runs the whole test suite under CTest
# twice: first built with AddressSanitizer and UndefinedBehaviorSanitizer (build-sanitize/),
# then as shipped (build/), whose summary comes last. SANITIZERS=off skips the first pass.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
bash scripts/check-format.sh
export QT_QPA_PLATFORM=offscreen
jobs=$(nproc)
if [ "${SANITIZERS:-on}" != off ]; then
  cmake --preset sanitize >/dev/null
  cmake --build --preset sanitize -j "$jobs"
  # Leaks are not reported: the system's libraries (fontconfig, Mesa) keep theirs until exit.
  ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    ctest --test-dir build-sanitize -j "$jobs" --output-on-failure --timeout 600
fi
# CTest lists skipped tests (those that cannot run as root) after its summary: the summary
# line is printed again so it stays the last line.
summary=$(mktemp)
trap 'rm -f "$summary"' EXIT
status=0
ctest --test-dir "${BUILD_DIR:-build}" -j "$jobs" --output-on-failure --timeout 300 | tee "$summary" ||
  status=${PIPESTATUS[0]}
grep -E '^[0-9]+% tests passed' "$summary" | tail -n 1
exit "$status"
