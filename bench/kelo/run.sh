#!/usr/bin/env bash
# bench/kelo/run.sh [BUILD_DIR]: the REST frame under load, and the demo's memory.
#
# 1. bench-kelo-frame (the plug-in inside the simulated host, in one process) with 1 I/O thread
#    pinned to CPU 0 and with 2 I/O threads on CPUs 0-1, wrk on CPU 1:
#      taskset -c 1 wrk -t1 -c64 -d10s --latency URL
#    on GET /1/bench/frame (session cookie, the frame, a KeloResourceAction: two host reads, a
#    small JSON) and, in the same process and run, the web layer's GET /plaintext.
#    Three runs each; the median by requests/s. Server CPU per request is utime+stime from
#    /proc/<pid>/stat over the run divided by the requests wrk counted.
# 2. The resident memory of the demo (tavel-sim with libkelo.so and the demo's configuration)
#    when idle and with 1,000 open keep-alive connections.
# BUILD_DIR (default build/release) must be a Release build with bench-kelo-frame, tavel-sim,
# libkelo.so and bench-web-idle-clients.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
duration=${KELO_BENCH_DURATION:-10s}
runs=${KELO_BENCH_RUNS:-3}
source bench/common.sh

ulimit -n 8192 || true
echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg)"
printf '%-40s %12s %10s %10s %13s\n' "route (-c64)" "requests/s" "p50" "p99" \
  "server CPU/req"
for threads in 1 2; do
  cores=0
  if [ "$threads" = 2 ]; then cores=0-1; fi
  taskset -c "$cores" "$build/bench/kelo/bench-kelo-frame" --threads "$threads" \
    > "$work/frame.out" 2>&1 &
  frame_pid=$!
  pids+=("$frame_pid")
  for _ in $(seq 1 300); do
    grep -q '^ready' "$work/frame.out" && break
    kill -0 "$frame_pid" 2>/dev/null || { cat "$work/frame.out"; exit 1; }
    sleep 0.1
  done
  read -r _ port _ < <(grep '^ready' "$work/frame.out")
  frame_url="http://127.0.0.1:$port/1/bench/frame"
  plaintext_url="http://127.0.0.1:$port/plaintext"
  cookie=(-H "Cookie: SessionID=bench-session")
  answer=$(curl -s "${cookie[@]}" "$frame_url")
  [ "$answer" == '{"local":true,"value":"hello"}' ] || { echo "bench: frame answered $answer"; exit 1; }
  taskset -c 1 wrk -t1 -c64 -d2s "${cookie[@]}" "$frame_url" > /dev/null
  taskset -c 1 wrk -t1 -c64 -d2s "$plaintext_url" > /dev/null
  row "web layer GET /plaintext, $threads I/O thr" "$(median "$frame_pid" "$plaintext_url")"
  row "frame GET /1/bench/frame, $threads I/O thr" \
    "$(median "$frame_pid" "$frame_url" "${cookie[@]}")"
  kill -TERM "$frame_pid"
  wait "$frame_pid" 2>/dev/null || true
done

# --- the demo's memory ---
mkdir -p "$work/logs" "$work/certificates"
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=localhost" \
  -keyout "$work/certificates/server.key" -out "$work/certificates/server.crt" 2>/dev/null
http_port=$(free_port)
https_port=$(free_port)
"$python" - "$PWD" "$work" "$http_port" "$https_port" <<'PY'
import json, re, sys
repo, work, http, https = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
config = json.load(open(repo + "/config/config.json"))
config.update({"http-port": http, "https-port": https, "LogDirectory": work + "/logs",
               "server-certificate": work + "/certificates/server.crt",
               "server-private-key": work + "/certificates/server.key",
               "drogon-config": work + "/web-config.json"})
json.dump(config, open(work + "/config.json", "w"))
web = json.loads(re.sub(r"^\s*//.*$", "", open(repo + "/config/drogon-config.json").read(), flags=re.M))
web["app"]["document_root"] = repo + "/config/www"
web["app"]["idle_connection_timeout"] = 0
web["app"]["max_connections_per_ip"] = 0  # every load generator connects from one address
json.dump(web, open(work + "/web-config.json", "w"))
PY
"$build/sim/tavel-sim" --plugin "$build/src/libkelo.so" --log-config config/log.conf \
  --config "$work/config.json" --fixture config/fixtures/demo.json > "$work/demo.out" 2>&1 &
demo_pid=$!
pids+=("$demo_pid")
wait_for "http://127.0.0.1:$http_port/x" -X OPTIONS
sleep 2
idle=$(rss_kb "$demo_pid")
"$build/bench/web/bench-web-idle-clients" 127.0.0.1 "$http_port" 1000 /index.html \
  > "$work/idle.out" 2>&1 &
clients_pid=$!
pids+=("$clients_pid")
for _ in $(seq 1 300); do
  grep -q '^open' "$work/idle.out" && break
  kill -0 "$clients_pid" 2>/dev/null || { cat "$work/idle.out"; exit 1; }
  sleep 0.1
done
sleep 1
loaded=$(rss_kb "$demo_pid")
printf '\n%-40s %8s KB\n' "demo RSS, idle" "$idle"
printf '%-40s %8s KB\n' "demo RSS, $(awk '{print $2}' "$work/idle.out") keep-alive connections" \
  "$loaded"
