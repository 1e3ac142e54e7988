#!/usr/bin/env bash
# bench/graphics/run.sh [BUILD_DIR]: requests/s, latency and server CPU of
# GET "/1/api/graphics/spectrum" with a trace of 8,192 points (four host reads, the decoding of
# both traces, the Spectrum printed as JSON, about 250 kB) next to the web layer's plaintext
# route, in the same run. tavel-sim runs the graphics model alone, with its measurements stopped
# so that every request prints the same spectrum. Each server runs with one I/O thread pinned to
# CPU 0; wrk runs on CPU 1:
#   taskset -c 1 wrk -t1 -c64 -d10s --latency URL
# The two routes are measured in turn, plaintext then spectrum, KELO_BENCH_RUNS (3) times; the
# medians by requests/s of each route are reported, and the median of the ratio of each pair.
# BUILD_DIR (default build/release) must hold tavel-sim, libkelo.so and bench-web-plaintext of a
# Release build. KELO_BENCH_DURATION (10s) changes the length of a run.
# KELO_BENCH_PERF=FILE records a profile of tavel-sim under the same load instead
# (perf record -g; KELO_BENCH_PERF_OPTIONS replaces "-g").
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
duration=${KELO_BENCH_DURATION:-10s}
runs=${KELO_BENCH_RUNS:-3}
source bench/common.sh

cat > "$work/fixture.json" <<'JSON'
{
  "users": [
    {"name": "kelo", "password": "kelo-bench", "role": "administrator"},
    {"name": "bench", "password": "bench", "role": "read-only"}
  ],
  "sessionTimeoutSeconds": 86400,
  "models": ["graphics"],
  "graphics": {"spectrumPoints": 8192, "moving": false}
}
JSON
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
spectrum_url="http://127.0.0.1:$http_port/1/api/graphics/spectrum"
cookie=(-H "Cookie: SessionID=bench-session")
wait_for "$spectrum_url" "${cookie[@]}"
points=$(curl -s "${cookie[@]}" "$spectrum_url" | "$python" -c '
import json, sys
print(len(json.load(sys.stdin).get("spectrumPoints", [])))')
echo "spectrum: $points points, $(curl -s "${cookie[@]}" "$spectrum_url" | wc -c) bytes"
[ "$points" == 8192 ] || { echo "bench: the spectrum does not hold 8192 points"; exit 1; }

start_plaintext
profile_if_asked "$sim_pid" "$spectrum_url" "${cookie[@]}"

beside_plaintext spectrum "$sim_pid" "$spectrum_url" cookie
median_row "web layer GET /plaintext" "${medians[plaintext]}"
median_row "GET /1/api/graphics/spectrum (8192)" "${medians[spectrum]}"
echo "spectrum / plaintext requests/s, median of the $runs pairs: ${ratios[spectrum]}"
