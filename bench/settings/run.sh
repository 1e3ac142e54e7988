#!/usr/bin/env bash
# bench/settings/run.sh [BUILD_DIR]: requests/s, latency and server CPU of GET
# "/1/api/settingcollections/rfOutput" (the simulator's RF output page: three settings, two with a
# reading beside them, so one request makes six host reads one after the other, builds the
# messages through their factories and prints them) next to the web layer's plaintext route, in
# the same run. Each server runs with one I/O thread pinned to CPU 0; wrk runs on CPU 1:
#   taskset -c 1 wrk -t1 -c64 -d10s --latency URL
# Three runs of each, side by side; the medians by requests/s and the median ratio are reported. KELO_BENCH_PERF=FILE records a profile
# of tavel-sim under the same load instead. BUILD_DIR (default build/release) must hold tavel-sim,
# libkelo.so and bench-web-plaintext of a Release build. KELO_BENCH_DURATION (10s) and
# KELO_BENCH_RUNS (3) change the length and number of runs.
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
    {"name": "bench", "password": "bench", "role": "administrator"}
  ],
  "models": ["settings"],
  "sessionTimeoutSeconds": 86400
}
JSON
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
page_url="http://127.0.0.1:$http_port/1/api/settingcollections/rfOutput"
cookie=(-H "Cookie: SessionID=bench-session")
wait_for "$page_url" "${cookie[@]}"
settings=$(curl -s "${cookie[@]}" "$page_url" | "$python" -c \
  'import json,sys; print(len(json.load(sys.stdin)["settings"]))')
[ "$settings" == 3 ] || { echo "bench: the page has $settings settings, not 3"; exit 1; }

start_plaintext
profile_if_asked "$sim_pid" "$page_url" "${cookie[@]}"

beside_plaintext page "$sim_pid" "$page_url" cookie
median_row "web layer GET /plaintext" "${medians[plaintext]}"
median_row "GET settingcollections/rfOutput" "${medians[page]}"
echo "settings page / plaintext requests/s, median of the $runs pairs: ${ratios[page]}"
