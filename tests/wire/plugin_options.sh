#!/usr/bin/env bash
# plugin_options.sh TAVEL_SIM LIBKELO REPO: runs tavel-sim with the plug-in and the demo's own
# configuration files (ports, certificate and log paths moved to a temporary directory and two
# free ports), then checks that both ports answer OPTIONS on any path with the four CORS headers,
# that the plug-in reports OK, and that SIGTERM stops the process cleanly.
set -uo pipefail
sim=$1
plugin=$2
repo=$3
source "$(dirname "$0")/checks.sh"
expect_absent() {  # name needle haystack
  if [[ "$3" != *"$2"* ]]; then pass "$1"; else fail "$1: [$2] found in [$3]"; fi
}

free_port() {
  "$python" -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'
}
http_port=$(free_port)
https_port=$(free_port)
while [ "$https_port" == "$http_port" ]; do https_port=$(free_port); done

cd "$work"
mkdir -p logs certificates
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=localhost" \
  -keyout certificates/server.key -out certificates/server.crt 2>/dev/null || {
  echo "cannot make a certificate"; exit 1; }

# The demo's files with only the machine-specific values replaced.
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

"$sim" --plugin "$plugin" --log-config "$repo/config/log.conf" --config "$work/config.json" \
  --fixture "$repo/config/fixtures/demo.json" --no-demo-models > sim.out 2>&1 &
server_pid=$!

ready=
for _ in $(seq 1 200); do
  if ! kill -0 "$server_pid" 2>/dev/null; then break; fi
  if curl -s -o /dev/null --max-time 1 -X OPTIONS "http://127.0.0.1:$http_port/x"; then
    ready=1; break
  fi
  sleep 0.1
done
if [ -z "$ready" ]; then
  echo "tavel-sim did not serve on port $http_port:"; cat sim.out; exit 1
fi

check_options() {  # name url [curl options]
  local name=$1 url=$2
  shift 2
  local out status headers
  out=$(curl -s "$@" -D "$work/headers" -o "$work/body" -w '%{http_code}' -X OPTIONS "$url")
  status=$out
  headers=$(tr -d '\r' < "$work/headers")
  expect_eq "$name: status" 200 "$status"
  expect_eq "$name: empty body" "" "$(cat "$work/body")"
  expect_contains "$name: Allow" "Allow: GET, PUT, PATCH, POST, DELETE, OPTIONS" "$headers"
  expect_contains "$name: methods" \
    "Access-Control-Allow-Methods: GET, PUT, PATCH, POST, DELETE, OPTIONS" "$headers"
  expect_contains "$name: headers" \
    "Access-Control-Allow-Headers: Content-Type, Accept, x-csrftoken" "$headers"
  expect_contains "$name: credentials" "Access-Control-Allow-Credentials: true" "$headers"
  expect_absent "$name: no origin without bypass" "Access-Control-Allow-Origin" "$headers"
}

check_options "OPTIONS over HTTP" "http://127.0.0.1:$http_port/x"
check_options "OPTIONS over HTTPS" "https://127.0.0.1:$https_port/x" -k
check_options "OPTIONS on a deep path over HTTPS" "https://127.0.0.1:$https_port/1/api/no/route" -k

# The host's loop runs consume; the status "OK" follows "Initializing" within a second or two.
ok=
for _ in $(seq 1 50); do
  if grep -q "\[status\] Kelo: Ok OK" sim.out; then ok=1; break; fi
  sleep 0.1
done
expect_eq "the plug-in reports OK" 1 "${ok:-0}"
log=$(cat logs/Kelo1.log 2>/dev/null)
expect_contains "log names the ports" \
  "Webserver listening for HTTP / HTTPS traffic on $http_port / $https_port" "$log"
expect_absent "the password is not logged" "kelo-plugin-secret" "$log"

kill -TERM "$server_pid"
exited=
for _ in $(seq 1 100); do
  if ! kill -0 "$server_pid" 2>/dev/null; then exited=1; break; fi
  sleep 0.1
done
expect_eq "SIGTERM stops tavel-sim within 10 s" 1 "${exited:-0}"
wait "$server_pid"
code=$?
server_pid=
expect_eq "exit status after SIGTERM" 0 "$code"
expect_contains "shutdown logged" "Shutting Kelo down." "$(cat logs/Kelo1.log)"
expect_contains "Stopped reported" "[status] Kelo: Stopped Kelo Shutting down." "$(cat sim.out)"

echo "$checks checks, $failures failed"
if [ "$failures" -ne 0 ]; then
  echo "--- tavel-sim output"; cat sim.out
  exit 1
fi
