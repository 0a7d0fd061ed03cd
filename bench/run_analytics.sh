#!/usr/bin/env bash
# The analytics client with its server away and back: 5,000 events recorded through the event loop
# against a refusing server, then the queue drained (see analytics_bench.cpp for the figures).
# Once with an event each millisecond, once with events as fast as the loop turns (requests then
# pile up behind the one in flight, which the queue limit does not drop).
# Usage: bench/run_analytics.sh [events]
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/bench_lib.sh
buildBench analytics_bench
for pace in 1 0; do
  /usr/bin/time -f "peak RSS %M KiB" build-bench/bench/analytics_bench "${1:-5000}" "$pace"
done
