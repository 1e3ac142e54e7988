# tests/wire/lib/wire.sh: what every shell wire test shares. A test sources it first thing:
#
#   #!/usr/bin/env bash
#   # family.sh TAVEL_SIM LIBKELO REPO: what it checks
#   set -uo pipefail
#   source "$(dirname "$0")/lib/wire.sh"     # reads TAVEL_SIM LIBKELO REPO from "$@"
#   fixture=$(wire_fixture family <<'JSON'
#   {"users": [{"name": "admin", "password": "admin-wire", "role": "administrator"}]}
#   JSON
#   )
#   wire_start --fixture "$fixture" --no-demo-models --session admin-wire=admin
#   request --cookie SessionID=admin-wire "$api/resource?path=/x"
#   expect_eq "reads /x" 200 "$status"
#   wire_finish
#
# It gives: $sim $plugin $repo (the arguments), $work (a scratch folder, removed at exit),
# $http_port $https_port (free ports, named in the plug-in's configuration), $api $api_tls
# (http(s)://127.0.0.1:<port>/1/api), the counted checks, request, and a tavel-sim that is
# stopped by its own process id at exit, whatever the reason for the exit.
sim=$1
plugin=$2
repo=$3
python=/usr/bin/python3

work=$(mktemp -d "${TMPDIR:-/tmp}/kelo-wire-XXXXXX")
server_pid=
config_written=
plugin_user=kelo
plugin_password=kelo-plugin-secret
io_threads=2

wire_cleanup() {
  if [ -n "$server_pid" ]; then wire_stop; fi
  rm -rf "$work"
}
trap wire_cleanup EXIT

# ---- counted checks ----------------------------------------------------------------------------
failures=0
checks=0
pass() { checks=$((checks + 1)); printf 'ok   %s\n' "$1"; }
fail() { checks=$((checks + 1)); failures=$((failures + 1)); printf 'FAIL %s\n' "$1"; }
expect_eq() {  # name expected actual
  if [ "$2" == "$3" ]; then pass "$1"; else fail "$1: expected [$2], got [$3]"; fi
}
expect_contains() {  # name needle haystack
  if [[ "$3" == *"$2"* ]]; then pass "$1"; else fail "$1: [$2] not in [$3]"; fi
}
expect_absent() {  # name needle haystack
  if [[ "$3" != *"$2"* ]]; then pass "$1"; else fail "$1: [$2] found in [$3]"; fi
}
# The same JSON value, whatever the order of object members.
expect_json_eq() {  # name expected actual
  if "$python" -c 'import json,sys; sys.exit(0 if json.loads(sys.argv[1]) == json.loads(sys.argv[2]) else 1)' \
      "$2" "$3" 2>/dev/null; then
    pass "$1"
  else
    fail "$1: expected $2, got $3"
  fi
}

# ---- requests ----------------------------------------------------------------------------------
# One curl request; sets $status, $ctype, $body and $headers (CR removed).
request() {
  local out
  out=$(curl -s -D "$work/headers" -o "$work/body" -w '%{http_code}\n%{content_type}' "$@")
  status=$(sed -n 1p <<<"$out")
  ctype=$(sed -n 2p <<<"$out")
  body=$(cat "$work/body")
  headers=$(tr -d '\r' < "$work/headers")
}

# ---- the simulated host ------------------------------------------------------------------------
free_port() {
  "$python" -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'
}

wire_ports() {
  [ -n "${http_port:-}" ] && return
  http_port=$(free_port)
  https_port=$(free_port)
  while [ "$https_port" == "$http_port" ]; do https_port=$(free_port); done
  api="http://127.0.0.1:$http_port/1/api"
  api_tls="https://127.0.0.1:$https_port/1/api"
}

wire_certificate() {
  mkdir -p "$work/certificates"
  openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 \
    -subj "/CN=localhost" -addext "subjectAltName=DNS:localhost,IP:127.0.0.1" \
    -keyout "$work/certificates/server.key" -out "$work/certificates/server.crt" 2>/dev/null || {
    echo "cannot make a certificate"; exit 1; }
}

# A fixture from standard input, as $work/NAME.json; prints its path.
wire_fixture() {  # name
  cat > "$work/$1.json"
  printf '%s\n' "$work/$1.json"
}

# The plug-in's configuration, web configuration and log configuration written for this run:
# the two free ports, files in $work. $io_threads I/O threads.
wire_config() {
  wire_ports
  mkdir -p "$work/logs" "$work/www"
  cat > "$work/config.json" <<JSON
{
  "UserName": "$plugin_user",
  "Password": "$plugin_password",
  "LogDirectory": "$work/logs",
  "PX3LocalhostIp": ["127.0.0.1"],
  "server-certificate": "$work/certificates/server.crt",
  "server-private-key": "$work/certificates/server.key",
  "https-port": $https_port,
  "http-port": $http_port,
  "drogon-config": "$work/web-config.json",
  "bypass-cors": false,
  "cors-origin": ""
}
JSON
  cat > "$work/web-config.json" <<JSON
{
  "app": { "number_of_threads": $io_threads, "document_root": "$work/www",
           "upload_path": "$work/uploads" },
  "plugins": [
    { "name": "WebKeloInterface", "config": {} },
    { "name": "ResourceListenerManager", "config": {} },
    { "name": "BackgroundTaskQueue", "config": { "threads_num": 1, "name": "keloWire" } }
  ]
}
JSON
  cat > "$work/log.conf" <<'CONF'
* GLOBAL:
    FORMAT               =  "%datetime %level [%logger] %msg"
    ENABLED              =  true
    TO_FILE              =  true
    TO_STANDARD_OUTPUT   =  false
CONF
  config_written=1
}

# Instead of wire_config: the demo's own files (config/config.json, config/drogon-config.json,
# config/log.conf) with only the machine-specific values replaced.
wire_demo_config() {
  wire_ports
  mkdir -p "$work/logs"
  "$python" - "$repo" "$work" "$http_port" "$https_port" <<'PY' || { echo "cannot write config"; exit 1; }
import json, re, sys
repo, work, http, https = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
config = json.load(open(repo + "/config/config.json"))
config.update({"http-port": http, "https-port": https, "LogDirectory": work + "/logs",
               "server-certificate": work + "/certificates/server.crt",
               "server-private-key": work + "/certificates/server.key",
               "drogon-config": work + "/web-config.json"})
json.dump(config, open(work + "/config.json", "w"), indent=2)
text = open(repo + "/config/drogon-config.json").read()
web = json.loads(re.sub(r"^\s*//.*$", "", text, flags=re.M))
web["app"]["document_root"] = repo + "/config/www"
web["app"]["upload_path"] = work + "/uploads"
json.dump(web, open(work + "/web-config.json", "w"), indent=2)
PY
  plugin_user=$("$python" -c 'import json,sys; print(json.load(open(sys.argv[1]))["UserName"])' "$work/config.json")
  plugin_password=$("$python" -c 'import json,sys; print(json.load(open(sys.argv[1]))["Password"])' "$work/config.json")
  cp "$repo/config/log.conf" "$work/log.conf"
  config_written=1
}

# True when something accepts TCP connections on the port.
port_answers() {  # port
  (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

# Starts tavel-sim with the plug-in, the configuration (wire_config unless one was written) and
# the plug-in's own user, then the given options (--fixture, --session, --no-demo-models, ...).
# Its output goes to $work/sim.out. Returns once both ports answer; exits the test when
# tavel-sim ends or the ports stay silent for 20 s.
wire_start() {
  [ -n "$config_written" ] || wire_config
  wire_certificate
  cat > "$work/plugin-user.json" <<JSON
{"users": [{"name": "$plugin_user", "password": "$plugin_password", "role": "administrator"}]}
JSON
  "$sim" --plugin "$plugin" --log-config "$work/log.conf" --config "$work/config.json" \
    --web-config "$work/web-config.json" --fixture "$work/plugin-user.json" "$@" \
    > "$work/sim.out" 2>&1 &
  server_pid=$!
  local _
  for _ in $(seq 1 200); do
    if ! kill -0 "$server_pid" 2>/dev/null; then break; fi
    if port_answers "$http_port" && port_answers "$https_port"; then return 0; fi
    sleep 0.1
  done
  echo "tavel-sim did not serve on ports $http_port and $https_port:"
  cat "$work/sim.out"
  exit 1
}

# SIGTERM to tavel-sim, by its process id; waits up to 10 s, then SIGKILL. Sets $stopped_in_time
# (1 or 0) and $exit_status.
wire_stop() {
  stopped_in_time=0
  exit_status=
  [ -n "$server_pid" ] || return 0
  kill -TERM "$server_pid" 2>/dev/null
  local _
  for _ in $(seq 1 100); do
    if ! kill -0 "$server_pid" 2>/dev/null; then stopped_in_time=1; break; fi
    sleep 0.1
  done
  [ "$stopped_in_time" == 1 ] || kill -KILL "$server_pid" 2>/dev/null
  wait "$server_pid" 2>/dev/null
  exit_status=$?
  server_pid=
}

# The count of checks; on a failure, tavel-sim's output and the end of the plug-in's log, and
# exit status 1. A test without a check fails too.
wire_finish() {
  printf '\n%d checks, %d failed\n' "$checks" "$failures"
  if [ "$failures" -ne 0 ] || [ "$checks" -eq 0 ]; then
    echo "--- tavel-sim output ---"; cat "$work/sim.out" 2>/dev/null
    echo "--- plug-in log (end) ---"; tail -n 40 "$work"/logs/*.log 2>/dev/null
    exit 1
  fi
  exit 0
}
