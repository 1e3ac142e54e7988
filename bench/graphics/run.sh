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

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"
taskset -c 1 wrk -t1 -c64 -d2s "${cookie[@]}" "$spectrum_url" > /dev/null
taskset -c 1 wrk -t1 -c64 -d2s "$plaintext_url" > /dev/null
printf '%-4s %-34s %12s %10s %10s %14s\n' "run" "route (1 I/O thread, -c64)" "requests/s" \
  "p50" "p99" "server CPU/req"
plain_rows=()
spectrum_rows=()
ratios=()
for run in $(seq 1 "$runs"); do
  plain=$(measure "$plain_pid" "$plaintext_url")
  spectrum=$(measure "$sim_pid" "$spectrum_url" "${cookie[@]}")
  plain_rows+=("$plain")
  spectrum_rows+=("$spectrum")
  ratios+=("$(awk -v d="${spectrum%% *}" -v p="${plain%% *}" 'BEGIN {printf "%.4f", d / p}')")
  for pair in "plaintext:$plain" "spectrum:$spectrum"; do
    read -r rps p50 p99 cpu <<<"${pair#*:}"
    printf '%-4s %-34s %12s %10s %10s %12s us\n' "$run" "${pair%%:*}" "$rps" "$p50" "$p99" "$cpu"
  done
done
middle=$(((runs + 1) / 2))
plain=$(printf '%s\n' "${plain_rows[@]}" | sort -n | sed -n "${middle}p")
spectrum=$(printf '%s\n' "${spectrum_rows[@]}" | sort -n | sed -n "${middle}p")
ratio=$(printf '%s\n' "${ratios[@]}" | sort -n | sed -n "${middle}p")
echo "medians of $runs runs (load $(cut -d' ' -f1-3 /proc/loadavg) at the end):"
read -r rps p50 p99 cpu <<<"$plain"
printf '%-39s %12s %10s %10s %12s us\n' "web layer GET /plaintext" "$rps" "$p50" "$p99" "$cpu"
read -r rps p50 p99 cpu <<<"$spectrum"
printf '%-39s %12s %10s %10s %12s us\n' "GET /1/api/graphics/spectrum (8192)" "$rps" "$p50" \
  "$p99" "$cpu"
echo "spectrum / plaintext requests/s, median of the $runs pairs: $ratio"
