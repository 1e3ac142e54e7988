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
ulimit -n "$(ulimit -Hn)"
source bench/common.sh
require_built "$server" "$client"

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"
for n in $clients_list; do
  server_command=("$server" --clients "$n" --meters 100 --groups 4 --rate "$rate" --duration "$duration"
    --threads "$threads" --burst "$burst")
  client_command=("$client" --clients "$n" --group /bench/meters)
  fanout_pass server_command client_command
  fanout_report "N=$n meters=100 rate=${rate}/s duration=${duration}s burst=$burst threads=$threads"
done
