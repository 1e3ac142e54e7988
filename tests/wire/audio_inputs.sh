#!/usr/bin/env bash
# audio_inputs.sh TAVEL_SIM LIBKELO REPO: "/1/api/audio/inputs" over the wire. First without
# models and with a fixture of three inputs (one without channels, one channel without meter):
# the exact JSON; then the list emptied, and the resource without "value" (500). Then with the
# demo's models: the inputs of the simulated transmitter, each channel naming a meter that reads.
set -uo pipefail
source "$(dirname "$0")/lib/wire.sh"

io_threads=1
users='"users": [{"name": "admin", "password": "admin-wire", "role": "administrator"},
                 {"name": "viewer", "password": "viewer-wire", "role": "read-only"}]'
fixture=$(wire_fixture audio <<JSON
{
  $users,
  "resources": {
    "/system/audio/inputs": {"value": {"list": [
      {"map": {"name": {"string": "Analog"}, "channels": {"list": [
        {"map": {"label": {"string": "Left"}, "meterPath": {"string": "/meters/audio/analog/left"}}},
        {"map": {"label": {"string": "Right"}, "meterPath": {"string": "/meters/audio/analog/right"}}}]}}},
      {"map": {"name": {"string": "AES 1"}, "channels": {"list": [
        {"map": {"label": {"string": "Left"}}}]}}},
      {"map": {"name": {"string": "Audio player"}}}
    ]}}
  }
}
JSON
)
wire_start --fixture "$fixture" --no-demo-models --session admin-wire=admin \
  --session viewer-wire=viewer
viewer=(--max-time 10 --cookie "SessionID=viewer-wire")
admin=(--max-time 10 --cookie "SessionID=admin-wire")

request "${viewer[@]}" "$api/audio/inputs"
expect_eq "inputs: status" 200 "$status"
expect_contains "inputs: JSON" "application/json" "$ctype"
expect_eq "inputs: in order, an input without channels, a channel without meter" \
  '{"inputs":[{"name":"Analog","channels":[{"label":"Left","meterPath":"/meters/audio/analog/left"},{"label":"Right","meterPath":"/meters/audio/analog/right"}]},{"name":"AES 1","channels":[{"label":"Left"}]},{"name":"Audio player"}]}' \
  "$body"

request "${viewer[@]}" "$api/audio/inputs?unused=1"
expect_eq "a query is ignored" 200 "$status"

request "${admin[@]}" -X PUT --data '{"values":{"value":{"type":"LIST_VALUE"}}}' \
  "$api/resource?path=%2Fsystem%2Faudio%2Finputs"
expect_eq "emptying the list: status" 200 "$status"
request "${viewer[@]}" "$api/audio/inputs"
expect_eq "no inputs: status" 200 "$status"
expect_eq "no inputs: an empty answer" '{}' "$body"

request "${admin[@]}" -X PUT --data '{"values":{"value":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"Analog"}]}}}' \
  "$api/resource?path=%2Fsystem%2Faudio%2Finputs"
request "${viewer[@]}" "$api/audio/inputs"
expect_eq "an input that is not a map: status" 500 "$status"

request "${admin[@]}" -X POST --data '{"values":{"inputs":{"type":"INT32","intValue":0}}}' \
  "$api/resource?path=%2Fsystem%2Faudio%2Finputs"
expect_eq "replacing the inputs without value: status" 200 "$status"
request "${viewer[@]}" "$api/audio/inputs"
expect_eq "no value: status" 500 "$status"
expect_contains "no value: the text of the failed lookup" "map::at" "$body"

request --max-time 10 "$api/audio/inputs"
expect_eq "no session: status" 440 "$status"
wire_stop

# --- the demo's transmitter ---
demo=$(wire_fixture demo-users <<JSON
{$users}
JSON
)
wire_start --fixture "$demo" --session viewer-wire=viewer
request "${viewer[@]}" "$api/audio/inputs"
expect_eq "demo inputs: status" 200 "$status"
for name in '"name":"Analog"' '"name":"AES 1"' '"name":"AES 2"' '"name":"MPX"'; do
  expect_contains "demo inputs: $name" "$name" "$body"
done
paths=$("$python" -c 'import json,sys
for i in json.loads(sys.argv[1])["inputs"]:
    for c in i.get("channels", []): print(c["meterPath"])' "$body")
count=0
for path in $paths; do
  count=$((count + 1))
  request "${viewer[@]}" "$api/resource?path=$path"
  expect_eq "demo meter $path reads" 200 "$status"
done
if [ "$count" -ge 7 ]; then pass "demo inputs name $count channel meters"; else fail "demo inputs name only $count channel meters"; fi
wire_finish
