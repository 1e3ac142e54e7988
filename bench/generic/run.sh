#!/usr/bin/env bash
# bench/generic/run.sh [BUILD_DIR]: requests/s, latency and server CPU of GET "/1/api/resource"
# (a resource of ten values, through the whole frame: the session cookie, two host reads, the
# conversion and the JSON printing) next to the web layer's plaintext route, in the same run.
# Each server runs with one I/O thread pinned to CPU 0; wrk runs on CPU 1:
#   taskset -c 1 wrk -t1 -c64 -d10s --latency URL
# Three runs of each; the median by requests/s is reported. KELO_BENCH_PERF=FILE records a profile
# of tavel-sim under the same load instead (perf record -g). BUILD_DIR (default build/release)
# must hold tavel-sim, libkelo.so and bench-web-plaintext of a Release build.
# KELO_BENCH_DURATION (10s) and KELO_BENCH_RUNS (3) change the length and number of runs.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
duration=${KELO_BENCH_DURATION:-10s}
runs=${KELO_BENCH_RUNS:-3}
source bench/common.sh

# --- the plug-in in tavel-sim, with a resource of ten values and a pre-made session ---
cat > "$work/fixture.json" <<'JSON'
{
  "users": [
    {"name": "kelo", "password": "kelo-bench", "role": "administrator"},
    {"name": "bench", "password": "bench", "role": "administrator"}
  ],
  "resources": {
    "/bench/ten": {
      "name": {"string": "Transmitter TX-1"},
      "frequency": {"double": 98.7},
      "power": {"float": 1250.5},
      "channel": {"int": 42},
      "enabled": {"bool": true},
      "mode": {"string": "DAB+"},
      "gain": {"double": -3.25},
      "alarms": {"list": [{"string": "overheat"}, {"string": "vswr"}]},
      "site": {"map": {"city": {"string": "Stockholm"}, "latitude": {"double": 59.3293}}},
      "uptime": {"int": 86400}
    }
  },
  "sessionTimeoutSeconds": 86400
}
JSON
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
resource_url="http://127.0.0.1:$http_port/1/api/resource?path=%2Fbench%2Ften"
cookie=(-H "Cookie: SessionID=bench-session")
wait_for "$resource_url" "${cookie[@]}"
values=$(curl -s "${cookie[@]}" "$resource_url" | "$python" -c \
  'import json,sys; print(len(json.load(sys.stdin)["values"]))')
[ "$values" == 10 ] || { echo "bench: the resource has $values values, not 10"; exit 1; }

start_plaintext
profile_if_asked "$sim_pid" "$resource_url" "${cookie[@]}"

# Warm both up, then measure them in turn.
taskset -c 1 wrk -t1 -c64 -d2s "${cookie[@]}" "$resource_url" > /dev/null
taskset -c 1 wrk -t1 -c64 -d2s "$plaintext_url" > /dev/null
plaintext=$(median "$plain_pid" "$plaintext_url")
resource=$(median "$sim_pid" "$resource_url" "${cookie[@]}")

printf '%-32s %12s %10s %10s %14s\n' "route (1 I/O thread, -c64)" "requests/s" "p50" "p99" \
  "server CPU/req"
read -r rps p50 p99 cpu <<<"$plaintext"
printf '%-32s %12s %10s %10s %12s us\n' "web layer GET /plaintext" "$rps" "$p50" "$p99" "$cpu"
read -r rps p50 p99 cpu <<<"$resource"
printf '%-32s %12s %10s %10s %12s us\n' "GET /1/api/resource (10 values)" "$rps" "$p50" "$p99" "$cpu"
