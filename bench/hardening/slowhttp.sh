#!/usr/bin/env bash
# bench/hardening/slowhttp.sh [build dir]: the demo (tavel-sim with libkelo.so and the demo's
# configuration, a 1.4 MB static file beside index.html) under slowhttptest with 1,000
# connections: slowloris (slow headers), slow body and slow read of the static file, each for
# $length seconds (default 30), first with the demo's own limits, then with the per-address cap
# lifted (max_connections_per_ip 0), so that all 1,000 connections are admitted. For each attack:
# slowhttptest's own verdict (service available or not), and before, during (half-way) and
# after it, the RSS of tavel-sim and the share, median and p99 of 200 normal requests of
# "/index.html" made from another loopback address (127.0.0.2). Figures go to stdout; the
# summary is in docs/SECURITY.md.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
length=${length:-30}
python=/usr/bin/python3
command -v slowhttptest > /dev/null || { echo "slowhttp: slowhttptest is missing"; exit 1; }
ulimit -n 4096  # the attacker and the server, 1,000 connections each, with room to spare

work=$(mktemp -d)
sim_pid=
cleanup() {
  if [ -n "$sim_pid" ] && kill -0 "$sim_pid" 2>/dev/null; then
    kill -TERM "$sim_pid"; wait "$sim_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

port() { "$python" -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }
rss_kb() { awk '/^VmRSS/ {print $2}' "/proc/$1/status"; }

start_demo() {  # max_connections_per_ip (or "" for the demo's own)
  http=$(port); https=$(port)
  mkdir -p "$work/logs" "$work/www"
  cp config/www/index.html "$work/www/"
  head -c 1468006 /dev/urandom > "$work/www/app.js"
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=localhost" \
    -keyout "$work/server.key" -out "$work/server.crt" 2>/dev/null
  "$python" - "$PWD" "$work" "$http" "$https" "$1" <<'PY'
import json, re, sys
repo, work, http, https, per_ip = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4]), sys.argv[5]
config = json.load(open(repo + "/config/config.json"))
config.update({"http-port": http, "https-port": https, "LogDirectory": work + "/logs",
               "server-certificate": work + "/server.crt", "server-private-key": work + "/server.key",
               "drogon-config": work + "/web-config.json"})
json.dump(config, open(work + "/config.json", "w"))
web = json.loads(re.sub(r"^\s*//.*$", "", open(repo + "/config/drogon-config.json").read(), flags=re.M))
web["app"]["document_root"] = work + "/www"
web["app"]["upload_path"] = work + "/uploads"
if per_ip:
    web["app"]["max_connections_per_ip"] = int(per_ip)
json.dump(web, open(work + "/web-config.json", "w"))
PY
  sed 's/TO_STANDARD_OUTPUT   =  true/TO_STANDARD_OUTPUT   =  false/' config/log.conf > "$work/log.conf"
  "$build/sim/tavel-sim" --plugin "$build/src/libkelo.so" --log-config "$work/log.conf" \
    --config "$work/config.json" --web-config "$work/web-config.json" \
    --fixture config/fixtures/demo.json > "$work/sim.out" 2>&1 &
  sim_pid=$!
  for _ in $(seq 1 100); do
    curl -s -o /dev/null --max-time 1 "http://127.0.0.1:$http/index.html" && return 0
    sleep 0.1
  done
  echo "slowhttp: the demo does not answer"; cat "$work/sim.out"; exit 1
}

stop_demo() {
  kill -TERM "$sim_pid"; wait "$sim_pid" 2>/dev/null || true; sim_pid=
  rm -rf "${work:?}"/*
}

probe() {  # label
  printf '  %-7s RSS %7s kB   answered, p50, p99 ms: %s\n' "$1" "$(rss_kb "$sim_pid")" \
    "$("$python" bench/hardening/probe.py "$http" 127.0.0.2 200)"
}

attack() {  # name slowhttptest options...
  local name=$1; shift
  echo "$name: slowhttptest $* -c 1000 -r 200 -l $length -p 3"
  probe before
  slowhttptest "$@" -c 1000 -r 200 -l "$length" -p 3 > "$work/slowhttptest.out" 2>&1 &
  local attacker=$!
  sleep $((length / 2))
  probe during
  wait "$attacker" || true
  sleep 3
  probe after
  # slowhttptest's last status line: how many connections, and whether the service was up.
  tr '\r' '\n' < "$work/slowhttptest.out" | sed 's/\x1b\[[0-9;]*m//g' |
    grep -E "connected:|service available" | tail -2 | sed 's/^[[:space:]]*/  slowhttptest: /'
}

run_attacks() {
  attack slowloris -H -i 10 -x 24 -u "http://127.0.0.1:$http/index.html"
  attack "slow body" -B -i 10 -s 10485760 -x 10 -t POST \
    -u "http://127.0.0.1:$http/1/api/resource?path=%2Fdemo%2Fcounter"
  attack "slow read" -X -k 3 -n 5 -w 512 -y 1024 -z 32 -u "http://127.0.0.1:$http/app.js"
}

echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg), fd limit $(ulimit -n)"
echo "== the demo's own limits (64 connections per address)"
start_demo ""
run_attacks
stop_demo
echo "== per-address cap lifted: all 1,000 connections admitted"
start_demo 0
run_attacks
stop_demo
