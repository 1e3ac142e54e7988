#!/usr/bin/env bash
# bench/monitoring/fanout.sh [BUILD_DIR]: the meter fan-out of "/1/ws/meters/group".
#
# For each N of KELO_BENCH_CLIENTS (default 100) starts
#   bench-monitoring-meter-server --clients N --meters 100 --groups 4 --rate 5 --duration 30
#     --threads 2
# (the simulated host and the plug-in in one process; once every client is subscribed it moves
# each of its 100 meters 5 times a second for 30 s, stamping each change), then
#   bench-monitoring-meter-client --port P --clients N --group /bench/meters
# (N subscribers of the collection, whose "/**" holds every meter, plus one socket pinging
# "/1/ws/ping" every second; one process, one thread), and prints both summaries with the
# changes each live client should have received, the frames missing and the p50/p99/max latency
# from the change to its receipt. KELO_BENCH_BURST=1 moves all meters at once at the start of
# each 200 ms instead of one after the other; KELO_BENCH_RATE, KELO_BENCH_DURATION and
# KELO_BENCH_THREADS change the other figures.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
rate=${KELO_BENCH_RATE:-5}
duration=${KELO_BENCH_DURATION:-30}
threads=${KELO_BENCH_THREADS:-2}
burst=${KELO_BENCH_BURST:-0}
clients_list=${KELO_BENCH_CLIENTS:-100}
server=$build/bench/monitoring/bench-monitoring-meter-server
client=$build/bench/monitoring/bench-monitoring-meter-client
for program in "$server" "$client"; do
  [ -x "$program" ] || { echo "bench: $program is missing (build it first)"; exit 1; }
done
ulimit -n "$(ulimit -Hn)"
work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ] && kill -0 "$server_pid" 2>/dev/null; then
    kill -TERM "$server_pid"
    wait "$server_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"
for n in $clients_list; do
  "$server" --clients "$n" --meters 100 --groups 4 --rate "$rate" --duration "$duration" \
    --threads "$threads" --burst "$burst" > "$work/server.out" &
  server_pid=$!
  port=
  for _ in $(seq 300); do
    port=$(awk '/^ready/ {print $2}' "$work/server.out")
    if [ -n "$port" ]; then break; fi
    sleep 0.1
  done
  [ -n "$port" ] || { echo "bench: the server did not start" >&2; exit 1; }
  "$client" --port "$port" --clients "$n" --group /bench/meters > "$work/client.out"
  # The server prints its summary once its last change has been dispatched.
  for _ in $(seq 300); do
    if grep -q '^updated' "$work/server.out"; then break; fi
    sleep 0.1
  done
  kill -TERM "$server_pid"
  wait "$server_pid" 2>/dev/null || true
  server_pid=
  changes=$(awk '/^updated/ {print $2}' "$work/server.out")
  live=$(grep -o 'live [0-9]*' "$work/client.out" | cut -d' ' -f2)
  received=$(grep -o 'frames_received [0-9]*' "$work/client.out" | cut -d' ' -f2)
  echo "N=$n meters=100 rate=${rate}/s duration=${duration}s burst=$burst threads=$threads" \
    "(load $(cut -d' ' -f1-3 /proc/loadavg))"
  sed 's/^/  client: /' "$work/client.out"
  grep -E '^(connected|updated)' "$work/server.out" | sed 's/^/  server: /'
  echo "  frames expected $((changes * live)) (changes $changes x live clients $live)," \
    "received $received, missing $((changes * live - received))"
done
