#!/usr/bin/env bash
# bench/monitoring/instructions.sh [BUILD_DIR]: instructions executed per
# GET "/1/api/meters/dashboard/available", counted by valgrind's callgrind inside the handler
# (GetMetersDashboard::processHttpRequest and everything it calls: the host's calls, the
# printing), not the web layer's parsing and writing. Unlike CPU time it does not move with the
# load of a shared machine, so builds can be compared one after the other; it does not see
# cache misses or waits. The server is run.sh's: tavel-sim with the monitoring family's models.
# After KELO_BENCH_WARMUP (20) requests the counts are zeroed, then KELO_BENCH_REQUESTS (100)
# are made one after the other with curl and the total is divided by them.
# KELO_BENCH_CALLGRIND=FILE keeps callgrind's output for callgrind_annotate.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
warmup=${KELO_BENCH_WARMUP:-20}
requests=${KELO_BENCH_REQUESTS:-100}
source bench/common.sh
command -v valgrind > /dev/null || { echo "bench: valgrind is missing"; exit 1; }
require_built "$build/sim/tavel-sim" "$build/src/libkelo.so"

out="$work/callgrind.out"
sim_wrapper=(valgrind --tool=callgrind --callgrind-out-file="$out" --collect-atstart=no
  "--toggle-collect=*GetMetersDashboard::processHttpRequest*")
cp bench/monitoring/dashboard-fixture.json "$work/fixture.json"
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
dashboard_url="http://127.0.0.1:$http_port/1/api/meters/dashboard/available"
cookie=(-H "Cookie: SessionID=bench-session")
for _ in $(seq 1200); do  # valgrind starts the server slowly: up to two minutes
  if curl -s -o /dev/null --max-time 5 "${cookie[@]}" "$dashboard_url"; then break; fi
  sleep 0.1
done

get() {  # count: that many dashboard requests, each checked for a 200
  for _ in $(seq "$1"); do
    code=$(curl -s -o /dev/null -w '%{http_code}' "${cookie[@]}" "$dashboard_url")
    [ "$code" == 200 ] || { echo "bench: the dashboard answered $code"; exit 1; }
  done
}
get "$warmup"
callgrind_control --zero "$sim_pid" > /dev/null
get "$requests"
kill -TERM "$sim_pid"
wait "$sim_pid" 2>/dev/null || true
[ -z "${KELO_BENCH_CALLGRIND:-}" ] || cp "$out" "$KELO_BENCH_CALLGRIND"
total=$(awk '/^(summary|totals):/ {print $2; exit}' "$out")
echo "dashboard: $requests requests, $total instructions in the handler," \
  "$((total / requests)) per request"
