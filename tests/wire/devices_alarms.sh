#!/usr/bin/env bash
# devices_alarms.sh TAVEL_SIM LIBKELO REPO: the device and alarm routes over the wire. First
# without models, on devices and alarms that a fixture seeds (so every body is known to the
# letter): the device list and single devices, all alarms, the active ones and one alarm, their
# failures, and the active list changed through "/1/api/resource". Then with the demo's models,
# their device set and alarms, and an alarm that the model's fixture section makes vanish.
set -uo pipefail
source "$(dirname "$0")/lib/wire.sh"

fixture=$(wire_fixture devices_alarms <<'JSON'
{
  "users": [
    {"name": "admin", "password": "admin-wire", "role": "administrator"},
    {"name": "viewer", "password": "viewer-wire", "role": "read-only"}
  ],
  "resources": {
    "/device/list": {"value": {"list": [{"string": "/device/exciter"}, {"string": "/device/fan"},
                                        {"string": "/device/spare"}]}},
    "/device/exciter/list": {"value": {"list": [{"string": "/device/exciter/1"},
                                                {"string": "/device/exciter/2"}]}},
    "/device/fan/list": {"value": {"list": [{"string": "/device/fan/3"}]}},
    "/device/spare/list": {"value": {"list": []}},
    "/alarms/exciter/list": {"value": {"list": [{"string": "/alarms/exciter/1/pll"},
                                                {"string": "/alarms/shared"}]}},
    "/alarms/fan/list": {"value": {"list": [{"string": "/alarms/fan/3/stalled"},
                                            {"string": "/alarms/shared"}]}},
    "/alarms/exciter/1/pll": {
      "label": {"string": "PLL"}, "path": {"string": "/alarms/exciter/1/pll"},
      "description": {"string": "Synthesizer unlocked"}, "value": {"bool": false},
      "active": {"bool": true}, "deviceName": {"string": "exciter"}, "deviceId": {"string": "1"},
      "severity": {"string": "REDUCED_POWER"}, "time": {"string": "2026-01-31T12:34:56Z"}},
    "/alarms/fan/3/stalled": {
      "label": {"string": "Stalled"}, "name": {"string": "Fan 3 stalled"},
      "path": {"string": "/alarms/fan/3/stalled"}, "value": {"bool": true},
      "deviceName": {"string": "fan"}, "severity": {"string": "SEVERE"}},
    "/alarms/shared": {"label": {"string": "Shared"}, "active": {"bool": true}},
    "/alarms/orphan": {"label": {"string": "Orphan"}, "deviceId": {"string": "7"}},
    "/system/alarms/active": {"value": {"list": [{"string": "/alarms/fan/3/stalled"},
                                                 {"string": "/alarms/shared"}]}}
  }
}
JSON
)
wire_start --fixture "$fixture" --no-demo-models --session admin-wire=admin \
  --session viewer-wire=viewer
viewer=(--cookie "SessionID=viewer-wire")
admin=(--cookie "SessionID=admin-wire")

# ---- devices ----
request "${viewer[@]}" "$api/devices"
expect_eq "device list: status" 200 "$status"
expect_contains "device list: JSON" "application/json" "$ctype"
expect_eq "device list: every device, a name without devices adds none" \
  '{"devices":[{"guid":"exciter-1","name":"exciter"},{"guid":"exciter-2","name":"exciter"},{"guid":"fan-3","name":"fan"}]}' \
  "$body"

request "${viewer[@]}" "$api/devices/exciter-2"
expect_eq "exciter-2: status" 200 "$status"
expect_eq "exciter-2: name before the dash" '{"guid":"exciter-2","name":"exciter"}' "$body"
request "${viewer[@]}" "$api/devices/a-b-c"
expect_eq "a-b-c: the first dash divides" '{"guid":"a-b-c","name":"a"}' "$body"
request "${viewer[@]}" "$api/devices/plain"
expect_eq "plain: the whole text is the name" '{"guid":"plain","name":"plain"}' "$body"
request "${viewer[@]}" "$api/devices/toaster-99"
expect_eq "an unknown device: status" 200 "$status"
expect_eq "an unknown device is answered from its GUID" '{"guid":"toaster-99","name":"toaster"}' \
  "$body"
request "$api/devices/fan-3"
expect_eq "a single device needs no session: status" 200 "$status"
expect_eq "a single device needs no session: body" '{"guid":"fan-3","name":"fan"}' "$body"
request "$api/devices"
expect_eq "the device list needs a session" 440 "$status"
request "$api/devices/fan%2D3"
expect_eq "a percent-encoded GUID is decoded" '{"guid":"fan-3","name":"fan"}' "$body"
request "$api/devices/%E2%82%AC%20x-1"
expect_eq "a GUID in UTF-8 with a blank" '{"guid":"€ x-1","name":"€ x"}' "$body"
request "$api/devices/-"
expect_eq "a GUID that is only the dash" '{"guid":"-","name":""}' "$body"
request "$api/devices/%zz"
expect_eq "a GUID with a bad escape is refused by the web layer" 400 "$status"
request "$api/devices/a/b"
expect_eq "a GUID cannot hold a slash: no such route" 404 "$status"

# ---- all alarms ----
pll='{"path":"/alarms/exciter/1/pll","active":false,"description":"Synthesizer unlocked","name":"PLL","time":"2026-01-31T12:34:56Z","device":{"guid":"exciter-1","name":"exciter"},"severity":"REDUCED_POWER"}'
shared='{"active":true,"name":"Shared","device":{}}'
stalled='{"path":"/alarms/fan/3/stalled","active":true,"name":"Fan 3 stalled","device":{"name":"fan"}}'
request "${viewer[@]}" "$api/alarms"
expect_eq "all alarms: status" 200 "$status"
expect_contains "all alarms: JSON" "application/json" "$ctype"
expect_eq "all alarms: list by list, duplicates kept, defaults left out" \
  "{\"alarms\":[$pll,$shared,$stalled,$shared]}" "$body"

# ---- active alarms ----
request "${viewer[@]}" "$api/alarms/active"
expect_eq "active alarms: status" 200 "$status"
expect_eq "active alarms: in list order, defaults printed" \
  '{"alarms":[{"meters":[],"device":{"name":"fan"},"severity":"CRITICAL","path":"/alarms/fan/3/stalled","active":true,"name":"Fan 3 stalled"},{"meters":[],"device":{},"severity":"CRITICAL","active":true,"name":"Shared"}]}' \
  "$body"

# ---- one alarm ----
request "${viewer[@]}" "$api/alarms/alarm?path=%2Falarms%2Fexciter%2F1%2Fpll"
expect_eq "one alarm: status" 200 "$status"
expect_eq "one alarm: value false wins over active true" \
  '{"meters":[],"device":{"guid":"exciter-1","name":"exciter"},"severity":"REDUCED_POWER","path":"/alarms/exciter/1/pll","active":false,"description":"Synthesizer unlocked","name":"PLL","time":"2026-01-31T12:34:56Z"}' \
  "$body"
request "${viewer[@]}" "$api/alarms/alarm?path=/alarms/shared"
expect_eq "one alarm without device keys: an empty device" \
  '{"meters":[],"device":{},"severity":"CRITICAL","active":true,"name":"Shared"}' "$body"

for query in "" "?path=" "?Path=/alarms/shared" "?x=1"; do
  request "${viewer[@]}" "$api/alarms/alarm$query"
  expect_eq "one alarm, query \"$query\": status" 500 "$status"
  expect_contains "one alarm, query \"$query\": names the parameter" \
    "Request missing query parameter: path." "$body"
done
request "${viewer[@]}" "$api/alarms/alarm?path=%2Fno%2Fsuch"
expect_eq "one alarm that does not exist: status" 500 "$status"
expect_contains "one alarm that does not exist: the host's text" "No resource at /no/such" "$body"
request "${viewer[@]}" "$api/alarms/alarm?path=%zz"
expect_eq "one alarm, a bad escape: status" 500 "$status"
expect_contains "one alarm, a bad escape: the empty path reaches the host" "No resource at " "$body"
request "${viewer[@]}" "$api/alarms/alarm?path=/alarms/orphan"
expect_eq "a device id without a name: status" 500 "$status"
expect_contains "a device id without a name: map::at" "map::at" "$body"
request --cookie "SessionID=gone" "$api/alarms/active"
expect_eq "active alarms with a dead session" 440 "$status"

# ---- the active list changes ----
request "${admin[@]}" -X PUT --data \
  '{"values":{"value":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"/alarms/exciter/1/pll"}]}}}' \
  "$api/resource?path=%2Fsystem%2Falarms%2Factive"
expect_eq "the active list is updated" 200 "$status"
request "${viewer[@]}" "$api/alarms/active"
expect_eq "active alarms follow the list" \
  '{"alarms":[{"meters":[],"device":{"guid":"exciter-1","name":"exciter"},"severity":"REDUCED_POWER","path":"/alarms/exciter/1/pll","active":false,"description":"Synthesizer unlocked","name":"PLL","time":"2026-01-31T12:34:56Z"}]}' \
  "$body"

request "${admin[@]}" -X PUT --data '{"values":{"value":{"type":"LIST_VALUE"}}}' \
  "$api/resource?path=%2Fsystem%2Falarms%2Factive"
request "${viewer[@]}" "$api/alarms/active"
expect_eq "an empty active list: status" 200 "$status"
expect_eq "an empty active list: no entries" '{"alarms":[]}' "$body"

request "${admin[@]}" -X PUT --data \
  '{"values":{"value":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"/alarms/shared"},{"type":"STRING","stringValue":"/alarms/vanished"}]}}}' \
  "$api/resource?path=%2Fsystem%2Falarms%2Factive"
request "${viewer[@]}" "$api/alarms/active"
expect_eq "an active alarm that vanished: status" 500 "$status"
expect_contains "an active alarm that vanished: the host's text" "No resource at /alarms/vanished" \
  "$body"

request "${admin[@]}" -X PUT --data \
  '{"values":{"value":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"/alarms/fan/3/stalled"},{"type":"STRING","stringValue":"/alarms/fan/9/gone"}]}}}' \
  "$api/resource?path=%2Falarms%2Ffan%2Flist"
request "${viewer[@]}" "$api/alarms"
expect_eq "all alarms with one that vanished: status" 500 "$status"
expect_contains "all alarms with one that vanished: the host's text" \
  "No resource at /alarms/fan/9/gone" "$body"

request "${viewer[@]}" "$api/alarms/alarm?path=/alarms/fan/3/stalled"
expect_eq "the server still answers after the failures" 200 "$status"
wire_stop

# ---- the demo's models ----
demo=$(wire_fixture demo_alarms <<'JSON'
{"users": [{"name": "viewer", "password": "viewer-wire", "role": "read-only"}],
 "alarms": {"moving": false, "vanished": ["/alarms/fan/1/stalled"]}}
JSON
)
wire_start --fixture "$demo" --session viewer-wire=viewer
request "${viewer[@]}" "$api/devices"
expect_eq "demo devices" \
  '{"devices":[{"guid":"exciter-1","name":"exciter"},{"guid":"exciter-2","name":"exciter"},{"guid":"amplifier-1","name":"amplifier"},{"guid":"amplifier-2","name":"amplifier"},{"guid":"amplifier-3","name":"amplifier"},{"guid":"amplifier-4","name":"amplifier"},{"guid":"powersupply-1","name":"powersupply"},{"guid":"powersupply-2","name":"powersupply"},{"guid":"fan-1","name":"fan"},{"guid":"fan-2","name":"fan"},{"guid":"fan-3","name":"fan"},{"guid":"fan-4","name":"fan"}]}' \
  "$body"

request "${viewer[@]}" "$api/alarms/active"
expect_eq "demo active alarms: status" 200 "$status"
summary=$("$python" -c '
import json, sys
alarms = json.loads(sys.argv[1])["alarms"]
print(" ".join("%s:%s:%s:%s" % (a["path"], a["active"], a["device"]["guid"], a["severity"])
               for a in alarms))' "$body")
expect_eq "demo active alarms: the two that are on at start" \
  "/alarms/amplifier/2/overTemperature:True:amplifier-2:REDUCED_POWER /alarms/fan/2/stalled:True:fan-2:MAINTENANCE" \
  "$summary"

request "${viewer[@]}" "$api/alarms/alarm?path=%2Falarms%2Ffan%2F4%2FlowSpeed"
expect_eq "demo alarm: status" 200 "$status"
time=$("$python" -c 'import json,sys; print(json.loads(sys.argv[1]).get("time",""))' "$body")
expect_eq "demo alarm: every key" \
  "{\"meters\":[],\"device\":{\"guid\":\"fan-4\",\"name\":\"fan\"},\"severity\":\"UNSPECIFIED_ALARM_SEVERITY\",\"path\":\"/alarms/fan/4/lowSpeed\",\"active\":false,\"description\":\"The fan turns below its nominal speed\",\"name\":\"Low speed\",\"time\":\"$time\"}" \
  "$body"
rfc3339=$("$python" -c 'import re,sys; print(bool(re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", sys.argv[1])))' "$time")
expect_eq "demo alarm: an RFC 3339 time ($time)" True "$rfc3339"

request "${viewer[@]}" "$api/alarms"
expect_eq "demo alarms with one made to vanish: status" 500 "$status"
expect_contains "demo alarms with one made to vanish: the host's text" \
  "No resource at /alarms/fan/1/stalled" "$body"

request "${viewer[@]}" "$api/resource?path=%2Falarms%2Ffan%2Flist"
count=$("$python" -c 'import json,sys; print(len(json.loads(sys.argv[1])["values"]["value"]["listValue"]))' "$body")
expect_eq "the vanished alarm is still listed with its neighbours" 8 "$count"
wire_finish
