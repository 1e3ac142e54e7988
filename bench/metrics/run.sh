#!/usr/bin/env bash
# bench/metrics/run.sh [BUILD_DIR]: what GET /metrics costs, and whether scraping delays pushes.
#
# 1. CPU per scrape. tavel-sim with the demo's models and fixture (about a hundred meters moving,
#    alarms coming and going) and the plug-in on one I/O thread pinned to CPU 0; first its idle
#    CPU over KELO_BENCH_IDLE seconds (default 10: the host's loop and models), then `runs`
#    (default 3) runs of `wrk -t1 -c1` on /metrics with the bearer token, one scrape after the
#    other as fast as they come, each for `duration` (default 10s). Per scrape: the server's CPU
#    time (user + system) less the idle rate over the run's time, divided by the scrapes. Beside
#    it, in the same run, the web layer's plaintext route (bench/generic's yardstick) at -c64.
# 2. Pushes with and without scraping. bench-monitoring-meter-server (the host and the plug-in in
#    one process, one I/O thread, the demo's models seeded so that a scrape reads the demo's
#    tree) moves 100 meters 5 times a second for KELO_BENCH_PUSH_SECONDS (default 15) to
#    KELO_BENCH_CLIENTS (default 20) subscribers of "/1/ws/meters/group", which measure each
#    push's latency from the change; `runs` times each without a scraper, with a steady scraper
#    (10 scrapes a second on one connection, ten times Prometheus's usual rate) and with
#    `wrk -t1 -c1` scraping /metrics back to back the whole time. Medians of p50 and p99.
# Prints the machine's load at the start and the end: the figures are only as quiet as it was.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
duration=${KELO_BENCH_DURATION:-10s}
runs=${KELO_BENCH_RUNS:-3}
idle=${KELO_BENCH_IDLE:-10}
push_seconds=${KELO_BENCH_PUSH_SECONDS:-15}
clients=${KELO_BENCH_CLIENTS:-20}
token=kelo-bench-metrics-token  # also EmbeddedHost::kMetricsToken
sim_config_extra=", \"metrics-token\": \"$token\""
server=$build/bench/monitoring/bench-monitoring-meter-server
client=$build/bench/monitoring/bench-monitoring-meter-client
source bench/common.sh
require_built "$build/sim/tavel-sim" "$build/src/libkelo.so" "$build/bench/web/bench-web-plaintext" \
  "$server" "$client"

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"

# ---- 1. CPU per scrape ------------------------------------------------------------------------
start_plaintext
# The demo's fixture, then the plug-in's own user with the password of the bench configuration.
cat > "$work/fixture.json" <<'JSON'
{"users": [{"name": "kelo", "password": "kelo-bench", "role": "administrator"}]}
JSON
start_sim_with_plugin config/fixtures/demo.json --fixture "$work/fixture.json"
metrics_url="http://127.0.0.1:$http_port/metrics"
wait_for "$metrics_url"
bytes=$(curl -s -H "Authorization: Bearer $token" "$metrics_url" | wc -c)
series=$(curl -s -H "Authorization: Bearer $token" "$metrics_url" | grep -vc '^#')

idle_before=$(cpu_ticks "$sim_pid")
sleep "$idle"
idle_after=$(cpu_ticks "$sim_pid")
idle_ms_per_s=$(awk -v t=$((idle_after - idle_before)) -v tick="$tick" -v s="$idle" \
  'BEGIN {printf "%.2f", t * 1000 / tick / s}')

# One scrape run: "scrapes/s p50 p99 server-cpu-ms-per-scrape".
scrape_run() {
  local before after start end out
  before=$(cpu_ticks "$sim_pid")
  start=$(date +%s.%N)
  out=$(taskset -c 1 wrk -t1 -c1 -d"$duration" --latency \
    -H "Authorization: Bearer $token" "$metrics_url")
  end=$(date +%s.%N)
  after=$(cpu_ticks "$sim_pid")
  if grep -q "Non-2xx" <<<"$out"; then echo "bench: $metrics_url answered errors:" >&2; echo "$out" >&2; exit 1; fi
  awk -v ticks=$((after - before)) -v tick="$tick" -v idle="$idle_ms_per_s" \
    -v wall="$(awk -v a="$start" -v b="$end" 'BEGIN {print b - a}')" '
    /requests in/ {requests = $1}
    /Requests\/sec/ {rps = $2}
    $1 == "50%" {p50 = $2}
    $1 == "99%" {p99 = $2}
    END {printf "%.0f %s %s %.2f\n", rps, p50, p99, (ticks * 1000 / tick - idle * wall) / requests}' <<<"$out"
}

results=()
for _ in $(seq 1 "$runs"); do results+=("$(scrape_run)"); done
scrape=$(printf '%s\n' "${results[@]}" | sort -k4 -n | sed -n "$(((runs + 1) / 2))p")
plain=$(median "$plain_pid" "$plaintext_url")
echo "scrape of the demo: $bytes bytes, $series samples; the server idles at $idle_ms_per_s ms CPU/s"
printf '%-40s %12s %10s %10s %14s\n' "route (median of $runs)" "requests/s" "p50" "p99" "server CPU"
read -r rps p50 p99 cpu <<<"$scrape"
printf '%-40s %12s %10s %10s %11s ms\n' "GET /metrics (wrk -c1, idle taken off)" "$rps" "$p50" "$p99" "$cpu"
read -r prps pp50 pp99 pcpu <<<"$plain"
printf '%-40s %12s %10s %10s %11s us\n' "plaintext (web layer alone, wrk -c64)" "$prps" "$pp50" "$pp99" "$pcpu"
echo "  every run of /metrics (scrapes/s p50 p99 ms-per-scrape): ${results[*]}"
awk -v a="$cpu" -v b="$pcpu" 'BEGIN {printf "  one scrape costs %.0f plaintext requests of CPU\n", a * 1000 / b}'
kill -TERM "$sim_pid" "$plain_pid"; wait "$sim_pid" "$plain_pid" 2>/dev/null || true

# ---- 2. Push latency with and without scraping --------------------------------------------------
# A scraper at a steady rate, as Prometheus is (at ten times its usual rate of one a second):
# one keep-alive connection, one GET every 1/rate s, until killed; counts its 200s on exit.
cat > "$work/scraper.py" <<'PY'
import http.client, signal, sys, time
port, token, rate = int(sys.argv[1]), sys.argv[2], float(sys.argv[3])
done = [0]
def finish(*_):
    print(done[0], "requests in"); sys.exit(0)
signal.signal(signal.SIGINT, finish)
connection = http.client.HTTPConnection("127.0.0.1", port, timeout=10)
next_at = time.monotonic()
while True:
    try:
        connection.request("GET", "/metrics", headers={"Authorization": "Bearer " + token})
        reply = connection.getresponse()
        reply.read()
    except OSError:  # the server has stopped
        finish()
    if reply.status != 200:
        print("Non-2xx", reply.status); sys.exit(1)
    done[0] += 1
    next_at += 1 / rate
    time.sleep(max(0, next_at - time.monotonic()))
PY

push_run() {  # scraper (none, steady or max): prints "p50_ms p99_ms max_ms frames scrapes"
  # Emptied before the next server starts, so that the port read is never the last run's.
  : > "$work/server.out"
  "$server" --clients "$clients" --meters 100 --groups 4 --rate 5 --duration "$push_seconds" \
    --threads 1 > "$work/server.out" &
  local server_pid=$! scraper_pid= scrapes=0
  pids+=("$server_pid")
  local port
  port=$(ready_port "$work/server.out")
  if [ "$1" = max ]; then
    taskset -c 1 wrk -t1 -c1 -d"$((push_seconds + 10))s" -H "Authorization: Bearer $token" \
      "http://127.0.0.1:$port/metrics" > "$work/scraper.out" &
    scraper_pid=$!
  elif [ "$1" = steady ]; then
    taskset -c 1 "$python" "$work/scraper.py" "$port" "$token" 10 > "$work/scraper.out" &
    scraper_pid=$!
  fi
  [ -z "$scraper_pid" ] || pids+=("$scraper_pid")
  "$client" --port "$port" --clients "$clients" --group /bench/meters > "$work/client.out"
  for _ in $(seq 300); do grep -q '^updated' "$work/server.out" && break; sleep 0.1; done
  # The scraper stops before the server does, so that none of its scrapes meets a closed port.
  if [ -n "$scraper_pid" ]; then
    kill -INT "$scraper_pid" 2>/dev/null || true
    wait "$scraper_pid" 2>/dev/null || true
  fi
  stop_when_updated "$server_pid" "$work/server.out"
  if [ -n "$scraper_pid" ]; then
    scrapes=$(awk '/requests in/ {print $1}' "$work/scraper.out")
    if grep -q "Non-2xx" "$work/scraper.out"; then echo "bench: the scraper got errors" >&2; exit 1; fi
  fi
  awk -v scrapes="${scrapes:-0}" '{for (i = 1; i < NF; i++) v[$i] = $(i + 1)}
    END {printf "%s %s %s %s %s\n", v["p50_ms"], v["p99_ms"], v["max_ms"], v["frames_received"], scrapes}' \
    "$work/client.out"
}

echo "pushes: $clients subscribers, 100 meters x 5/s for ${push_seconds}s, one I/O thread"
printf '%-31s %10s %10s %10s %10s %10s\n' "" "p50 ms" "p99 ms" "max ms" "frames" "scrapes"
for scraping in none steady max; do
  rows=()
  for _ in $(seq 1 "$runs"); do rows+=("$(push_run "$scraping")"); done
  case $scraping in
    none) label="no scraper" ;;
    steady) label="scraped 10 times a second" ;;
    max) label="scraped back to back" ;;
  esac
  for row in "${rows[@]}"; do printf '  run: %-25s %10s %10s %10s %10s %10s\n' "$label" $row; done
  p50=$(printf '%s\n' "${rows[@]}" | awk '{print $1}' | sort -g | sed -n "$(((runs + 1) / 2))p")
  p99=$(printf '%s\n' "${rows[@]}" | awk '{print $2}' | sort -g | sed -n "$(((runs + 1) / 2))p")
  printf '%-31s %10s %10s   (medians of %s runs)\n' "$label" "$p50" "$p99" "$runs"
done
echo "machine: load $(cut -d' ' -f1-3 /proc/loadavg) at the end"
