#!/usr/bin/env bash
# bench/web/run.sh [build-dir]: the web layer alone under wrk.
#
# For 1 and 2 I/O threads, three runs each of
#   taskset -c 1 wrk -t1 -c64 -d10s --latency http://127.0.0.1:PORT/plaintext
# against bench-web-plaintext pinned with taskset (core 0 for one I/O thread, cores 0-1 for two),
# then prints the median requests/s, p50/p99 latency and the server's CPU time per request
# (utime+stime from /proc/PID/stat over the run, divided by the requests wrk counted), and the
# server's resident memory idle and with 1,000 open keep-alive connections.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/bench-web}
duration=${KELO_BENCH_DURATION:-10s}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKELO_TESTS=OFF >/dev/null
fi
cmake --build "$build" --target bench-web-plaintext bench-web-idle-clients >/dev/null
server=$build/bench/web/bench-web-plaintext
idle=$build/bench/web/bench-web-idle-clients
ticks=$(getconf CLK_TCK)
port=$((20000 + RANDOM % 20000))
ulimit -n 8192 || true

cpu_ticks() { awk '{print $14 + $15}' "/proc/$1/stat"; }
rss_kb() { awk '/VmRSS/ {print $2}' "/proc/$1/status"; }
median() { sort -g | awk '{v[NR]=$1} END {print v[int((NR+1)/2)]}'; }
to_us() {  # wrk latency ("812.00us", "1.20ms", "2.00s") in microseconds
  awk -v t="$1" 'BEGIN {
    if (t ~ /us$/) { sub(/us$/, "", t); print t + 0 }
    else if (t ~ /ms$/) { sub(/ms$/, "", t); print t * 1000 }
    else if (t ~ /s$/) { sub(/s$/, "", t); print t * 1000000 } }'
}

start_server() {  # threads cores
  taskset -c "$2" "$server" --threads "$1" --port "$port" &
  server_pid=$!
  for _ in $(seq 50); do
    if curl -s -o /dev/null "http://127.0.0.1:$port/plaintext"; then return; fi
    sleep 0.1
  done
  echo "server did not start" >&2
  exit 1
}

stop_server() {
  kill "$server_pid"
  wait "$server_pid" 2>/dev/null || true
}

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg)"
for threads in 1 2; do
  cores=0
  if [ "$threads" = 2 ]; then cores=0-1; fi
  rates=(); p50s=(); p99s=(); cpus=()
  for run in 1 2 3; do
    start_server "$threads" "$cores"
    before=$(cpu_ticks "$server_pid")
    out=$(taskset -c 1 wrk -t1 -c64 -d"$duration" --latency "http://127.0.0.1:$port/plaintext")
    after=$(cpu_ticks "$server_pid")
    stop_server
    requests=$(echo "$out" | awk '/requests in/ {print $1}')
    rate=$(echo "$out" | awk '/Requests\/sec/ {print $2}')
    p50=$(to_us "$(echo "$out" | awk '$1 == "50%" {print $2}')")
    p99=$(to_us "$(echo "$out" | awk '$1 == "99%" {print $2}')")
    cpu=$(awk -v t=$((after - before)) -v hz="$ticks" -v n="$requests" \
      'BEGIN {printf "%.2f", t / hz * 1000000 / n}')
    echo "threads=$threads run=$run requests/s=$rate p50=${p50}us p99=${p99}us cpu/request=${cpu}us"
    rates+=("$rate"); p50s+=("$p50"); p99s+=("$p99"); cpus+=("$cpu")
  done
  echo "MEDIAN threads=$threads requests/s=$(printf '%s\n' "${rates[@]}" | median)" \
    "p50=$(printf '%s\n' "${p50s[@]}" | median)us p99=$(printf '%s\n' "${p99s[@]}" | median)us" \
    "cpu/request=$(printf '%s\n' "${cpus[@]}" | median)us"
done

start_server 1 0
sleep 0.5
idle_rss=$(rss_kb "$server_pid")
"$idle" 127.0.0.1 "$port" 1000 /plaintext > /tmp/bench-web-idle.$$ &
idle_pid=$!
for _ in $(seq 100); do
  if grep -q "open 1000" /tmp/bench-web-idle.$$ 2>/dev/null; then break; fi
  sleep 0.1
done
sleep 0.5
busy_rss=$(rss_kb "$server_pid")
kill "$idle_pid"
wait "$idle_pid" 2>/dev/null || true
rm -f /tmp/bench-web-idle.$$
stop_server
echo "RSS idle=${idle_rss}kB with-1000-keep-alive-connections=${busy_rss}kB"
