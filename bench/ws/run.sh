#!/usr/bin/env bash
# bench/ws/run.sh [build-dir]: WebSocket fan-out of the plug-in.
#
# For N = 100, 1,000 and 5,000 subscribers (KELO_BENCH_CLIENTS overrides the list): starts
#   bench-ws-fanout-server --clients N --rate 20 --duration 30 --threads 2
# (the simulated host and the plug-in in one process, updating "/bench/fanout" 20 times a
# second for 30 s once every client is subscribed), then
#   bench-ws-fanout-client --port P --clients N
# (N subscribers on "/1/ws/resource" plus one socket pinging "/1/ws/ping" every second, one
# process, one thread), and prints the client's and the server's summary lines: frames expected
# and received, p50/p99 latency from the host's Update to receipt, the server's CPU over the
# update phase, and its resident memory per idle connection.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/bench-ws}
rate=${KELO_BENCH_RATE:-20}
duration=${KELO_BENCH_DURATION:-30}
clients_list=${KELO_BENCH_CLIENTS:-"100 1000 5000"}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKELO_TESTS=OFF >/dev/null
fi
cmake --build "$build" --target bench-ws-fanout-server bench-ws-fanout-client >/dev/null
server=$build/bench/ws/bench-ws-fanout-server
client=$build/bench/ws/bench-ws-fanout-client
# Every subscriber is a socket on both sides.
ulimit -n "$(ulimit -Hn)"
source bench/common.sh

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg), fd limit $(ulimit -n)"
for n in $clients_list; do
  server_command=("$server" --clients "$n" --rate "$rate" --duration "$duration" --threads 2)
  client_command=("$client" --clients "$n")
  fanout_pass server_command client_command
  echo "N=$n rate=$rate duration=${duration}s"
  fanout_summaries
done
