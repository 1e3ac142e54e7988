#!/usr/bin/env bash
# bench/graphics/fanout.sh [BUILD_DIR]: the spectrum pushed through "/1/ws/graphics/spectrum".
#
# For each N of KELO_BENCH_CLIENTS (default 50) starts
#   bench-graphics-spectrum-server --clients N --points 8192 --rate 10 --duration 30 --threads 2
# (the simulated host and the plug-in in one process; once every client is subscribed it writes
# a new trace of 8,192 points 10 times a second for 30 s, stamping each change), then
#   bench-graphics-spectrum-client --clients N --points 8192 --port P
# (N subscribers plus one socket pinging "/1/ws/ping" every second; one process, one thread),
# and prints both summaries with the frames each live client should have received, the frames
# missing and the p50/p99/max latency from the change to its receipt. Every push renders the
# spectrum once per client (four host reads, the decoding, the serialisation), since each
# rendering checks that client's session. KELO_BENCH_RATE, KELO_BENCH_DURATION,
# KELO_BENCH_POINTS and KELO_BENCH_THREADS change the other figures.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
rate=${KELO_BENCH_RATE:-10}
duration=${KELO_BENCH_DURATION:-30}
points=${KELO_BENCH_POINTS:-8192}
threads=${KELO_BENCH_THREADS:-2}
clients_list=${KELO_BENCH_CLIENTS:-50}
server=$build/bench/graphics/bench-graphics-spectrum-server
client=$build/bench/graphics/bench-graphics-spectrum-client
ulimit -n "$(ulimit -Hn)"
source bench/common.sh
require_built "$server" "$client"

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"
for n in $clients_list; do
  server_command=("$server" --clients "$n" --points "$points" --rate "$rate" --duration "$duration"
    --threads "$threads")
  client_command=("$client" --clients "$n" --points "$points")
  fanout_pass server_command client_command
  fanout_report "N=$n points=$points rate=${rate}/s duration=${duration}s threads=$threads"
done
