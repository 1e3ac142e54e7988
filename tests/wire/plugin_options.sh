#!/usr/bin/env bash
# plugin_options.sh TAVEL_SIM LIBKELO REPO: runs tavel-sim with the plug-in and the demo's own
# configuration files (ports, certificate and log paths moved to a scratch folder and two free
# ports), then checks that both ports answer OPTIONS on any path with the four CORS headers,
# that the plug-in reports OK, and that SIGTERM stops the process cleanly.
set -uo pipefail
source "$(dirname "$0")/lib/wire.sh"

wire_demo_config
wire_start --fixture "$repo/config/fixtures/demo.json" --no-demo-models

check_options() {  # name url [curl options]
  local name=$1 url=$2
  shift 2
  request "$@" -X OPTIONS "$url"
  expect_eq "$name: status" 200 "$status"
  expect_eq "$name: empty body" "" "$body"
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
  if grep -q "\[status\] Kelo: Ok OK" "$work/sim.out"; then ok=1; break; fi
  sleep 0.1
done
expect_eq "the plug-in reports OK" 1 "${ok:-0}"
log=$(cat "$work/logs/Kelo1.log" 2>/dev/null)
expect_contains "log names the ports" \
  "Webserver listening for HTTP / HTTPS traffic on $http_port / $https_port" "$log"
expect_absent "the password is not logged" "kelo-plugin-secret" "$log"

wire_stop
expect_eq "SIGTERM stops tavel-sim within 10 s" 1 "$stopped_in_time"
expect_eq "exit status after SIGTERM" 0 "$exit_status"
expect_contains "shutdown logged" "Shutting Kelo down." "$(cat "$work/logs/Kelo1.log")"
expect_contains "Stopped reported" "[status] Kelo: Stopped Kelo Shutting down." \
  "$(cat "$work/sim.out")"

wire_finish
