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

# --- the plug-in in tavel-sim with the monitoring family's models, and a pre-made session ---
# Only these run: the other families' models (the graphics signals, ten Updates a tenth of a
# second; the file catalogue's scans) would share the server's CPU and count in its CPU time.
cp bench/monitoring/dashboard-fixture.json "$work/fixture.json"
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
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

beside_plaintext dashboard "$sim_pid" "$dashboard_url" cookie
median_row "web layer GET /plaintext" "${medians[plaintext]}"
median_row "GET /1/api/meters/dashboard/available" "${medians[dashboard]}"
echo "dashboard / plaintext requests/s, median of the $runs pairs: ${ratios[dashboard]}"
