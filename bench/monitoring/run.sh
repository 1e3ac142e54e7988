#!/usr/bin/env bash
# bench/monitoring/run.sh [BUILD_DIR]: requests/s, latency and server CPU of
# GET "/1/api/meters/dashboard/available" (every meter collection of the demo tree, about 100
# meters: the "/resource/list" command, then a host read per collection, group and meter, and the
# MeterCollectionList printed as JSON) next to the web layer's plaintext route, in the same run.
# Each server runs with one I/O thread pinned to CPU 0; wrk runs on CPU 1:
#   taskset -c 1 wrk -t1 -c64 -d10s --latency URL
# The two routes are measured in turn, plaintext then dashboard, KELO_BENCH_RUNS (5) times; the
# medians by requests/s of each route are reported, and the median of the ratio of each pair, so
# that the machine's load of the moment weighs on both sides of a ratio alike.
# BUILD_DIR (default build/release) must hold tavel-sim, libkelo.so and bench-web-plaintext of a
# Release build. KELO_BENCH_DURATION (10s) changes the length of a run.
# KELO_BENCH_PERF=FILE records a profile of tavel-sim under the same load instead
# (perf record -g; KELO_BENCH_PERF_OPTIONS replaces "-g", e.g. "--call-graph dwarf,16384").
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
duration=${KELO_BENCH_DURATION:-10s}
runs=${KELO_BENCH_RUNS:-5}
source bench/common.sh

# --- the plug-in in tavel-sim with the demo models, and a pre-made session ---
cat > "$work/fixture.json" <<'JSON'
{
  "users": [
    {"name": "kelo", "password": "kelo-bench", "role": "administrator"},
    {"name": "bench", "password": "bench", "role": "administrator"}
  ],
  "sessionTimeoutSeconds": 86400
}
JSON
start_sim_with_plugin "$work/fixture.json" --session bench-session=bench
dashboard_url="http://127.0.0.1:$http_port/1/api/meters/dashboard/available"
cookie=(-H "Cookie: SessionID=bench-session")
wait_for "$dashboard_url" "${cookie[@]}"
shape=$(curl -s "${cookie[@]}" "$dashboard_url" | "$python" -c '
import json, sys
answer = json.load(sys.stdin)
collections = answer.get("collections", [])
groups = [g for c in collections for g in c.get("groups", [])]
meters = [m for g in groups for m in g.get("meters", [])]
valued = [m for m in meters if "value" in m.get("value", {}).get("values", {})]
print(len(collections), len(groups), len(meters), len(valued))')
read -r collections groups meters valued <<<"$shape"
echo "dashboard: $collections collections, $groups groups, $meters meters ($valued with a value)," \
  "$(curl -s "${cookie[@]}" "$dashboard_url" | wc -c) bytes"
[ "$meters" -ge 50 ] && [ "$valued" == "$meters" ] || {
  echo "bench: the dashboard does not hold the demo's meters"; exit 1; }

start_plaintext
profile_if_asked "$sim_pid" "$dashboard_url" "${cookie[@]}"

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"
taskset -c 1 wrk -t1 -c64 -d2s "${cookie[@]}" "$dashboard_url" > /dev/null
taskset -c 1 wrk -t1 -c64 -d2s "$plaintext_url" > /dev/null
printf '%-4s %-34s %12s %10s %10s %14s\n' "run" "route (1 I/O thread, -c64)" "requests/s" \
  "p50" "p99" "server CPU/req"
plain_rows=()
dash_rows=()
ratios=()
for run in $(seq 1 "$runs"); do
  plain=$(measure "$plain_pid" "$plaintext_url")
  dash=$(measure "$sim_pid" "$dashboard_url" "${cookie[@]}")
  plain_rows+=("$plain")
  dash_rows+=("$dash")
  ratios+=("$(awk -v d="${dash%% *}" -v p="${plain%% *}" 'BEGIN {printf "%.4f", d / p}')")
  for pair in "plaintext:$plain" "dashboard:$dash"; do
    read -r rps p50 p99 cpu <<<"${pair#*:}"
    printf '%-4s %-34s %12s %10s %10s %12s us\n' "$run" "${pair%%:*}" "$rps" "$p50" "$p99" "$cpu"
  done
done
middle=$(((runs + 1) / 2))
plain=$(printf '%s\n' "${plain_rows[@]}" | sort -n | sed -n "${middle}p")
dash=$(printf '%s\n' "${dash_rows[@]}" | sort -n | sed -n "${middle}p")
ratio=$(printf '%s\n' "${ratios[@]}" | sort -n | sed -n "${middle}p")
echo "medians of $runs runs (load $(cut -d' ' -f1-3 /proc/loadavg) at the end):"
read -r rps p50 p99 cpu <<<"$plain"
printf '%-39s %12s %10s %10s %12s us\n' "web layer GET /plaintext" "$rps" "$p50" "$p99" "$cpu"
read -r rps p50 p99 cpu <<<"$dash"
printf '%-39s %12s %10s %10s %12s us\n' "GET /1/api/meters/dashboard/available" "$rps" "$p50" \
  "$p99" "$cpu"
echo "dashboard / plaintext requests/s, median of the $runs pairs: $ratio"
