#!/usr/bin/env bash
# bench/users/run.sh [BUILD_DIR]: requests/s, latency and server CPU of a login
# (POST "/1/api/login": a new session under the plug-in's own, the login command, whose password
# check in the simulated host is a salted PBKDF2 hash, and the User read) and of the poll
# GET "/1/api/authenticated" (the session read, the user read and the validation records, none of
# them counting as activity), each next to the web layer's plaintext route, in the same run.
# Each server runs with one I/O thread pinned to CPU 0; wrk runs on CPU 1:
#   taskset -c 1 wrk -t1 -c64 -d10s --latency [-s login.lua] URL
# The three routes are measured in turn, KELO_BENCH_RUNS (3) times; the medians by requests/s
# are reported, and the median ratio of each route to plaintext. The host's password hashing is
# the simulator's cost, not the plug-in's: bench-users-hash measures it alone, and the login's
# CPU per request is shown with that cost taken off.
# BUILD_DIR (default build/release) must hold tavel-sim, libkelo.so, bench-web-plaintext and
# bench-users-hash of a Release build. KELO_BENCH_DURATION (10s) changes the length of a run.
# KELO_BENCH_PERF=FILE records a profile of tavel-sim under the login's load instead.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
duration=${KELO_BENCH_DURATION:-10s}
runs=${KELO_BENCH_RUNS:-3}
source bench/common.sh

cat > "$work/fixture.json" <<'JSON'
{
  "users": [
    {"name": "kelo", "password": "kelo-bench", "role": "administrator"},
    {"name": "bench", "password": "bench-password", "role": "administrator"}
  ],
  "sessionTimeoutSeconds": 86400
}
JSON
# Successful logins are never throttled; the key is left at its default.
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
login_url="http://127.0.0.1:$http_port/1/api/login"
authenticated_url="http://127.0.0.1:$http_port/1/api/authenticated"
cookie=(-H "Cookie: SessionID=bench-session")
wait_for "$authenticated_url" "${cookie[@]}"
cat > "$work/login.lua" <<'LUA'
wrk.method = "POST"
wrk.body = '{"username":"bench","password":"bench-password"}'
wrk.headers["Content-Type"] = "application/json"
LUA
login=(-s "$work/login.lua")
status=$(curl -s -o /dev/null -w '%{http_code}' -X POST --data \
  '{"username":"bench","password":"bench-password"}' "$login_url")
[ "$status" == 200 ] || { echo "bench: login answered $status"; exit 1; }
status=$(curl -s -o /dev/null -w '%{http_code}' "${cookie[@]}" "$authenticated_url")
[ "$status" == 200 ] || { echo "bench: authenticated answered $status"; exit 1; }

start_plaintext
profile_if_asked "$sim_pid" "$login_url" "${login[@]}"

# The hash alone on CPU 0, first with the other CPU idle, then while wrk keeps it busy as it does
# during the login runs (a busy neighbour slows the hash: the CPU time is taken under that load).
hash_us() { awk '/password check/ {for (i = 1; i <= NF; i++) if ($i == "us") print $(i - 1)}'; }
hash_line=$(taskset -c 0 "$build/bench/users/bench-users-hash" 50)
taskset -c 1 wrk -t1 -c64 -d30s "$plaintext_url" > /dev/null &
wrk_pid=$!
sleep 1
loaded_line=$(taskset -c 0 "$build/bench/users/bench-users-hash" 50)
kill "$wrk_pid" 2>/dev/null || true
wait "$wrk_pid" 2>/dev/null || true
hash_us=$(hash_us <<<"$loaded_line")

beside_plaintext authenticated "$sim_pid" "$authenticated_url" cookie \
  login "$sim_pid" "$login_url" login
logged=${medians[login]}
row "web layer GET /plaintext" "${medians[plaintext]}"
row "GET /1/api/authenticated" "${medians[authenticated]}"
row "POST /1/api/login" "$logged"
echo "authenticated/plaintext: ${ratios[authenticated]}, login/plaintext: ${ratios[login]}"
echo "other CPU idle:  $hash_line"
echo "other CPU busy:  $loaded_line"
read -r _ _ _ login_cpu <<<"$logged"
awk -v cpu="$login_cpu" -v hash="$hash_us" 'BEGIN {
  printf "login server CPU/req without the host'"'"'s password check (busy figure): %.0f us\n",
    cpu - hash }'
