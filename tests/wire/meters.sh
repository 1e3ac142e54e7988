#!/usr/bin/env bash
# meters.sh TAVEL_SIM LIBKELO REPO: the meter routes over the wire. tavel-sim with the plug-in,
# no models, and a fixture of two collections: "RF output" (one group whose meters are of each
# type, one of them three levels down, one listed but without a resource) and "Spare" (one empty
# group). Checks the exact JSON of the links, a collection and the dashboard, the answers to a
# missing, empty, encoded or unknown "path", the Error line of the unreadable meter, and the
# links once the last group with meters has been emptied.
set -uo pipefail
source "$(dirname "$0")/lib/wire.sh"

io_threads=1
fixture=$(wire_fixture meters <<'JSON'
{
  "users": [
    {"name": "admin", "password": "admin-wire", "role": "administrator"},
    {"name": "viewer", "password": "viewer-wire", "role": "read-only"}
  ],
  "resources": {
    "/system/meter/collection/list": {"value": {"list": [{"string": "/meters/rf/list"},
                                                         {"string": "/meters/spare/list"}]}},
    "/meters/rf/list": {"value": {"list": [{"string": "/meters/rf/output"}]},
                        "label": {"string": "RF output"}, "path": {"string": "/meters/rf/list"}},
    "/meters/rf/output": {"value": {"list": [{"string": "/meters/rf/output/forwardPower"},
                                             {"string": "/meters/rf/output/gone"},
                                             {"string": "/meters/rf/output/deep/er/rfOn"},
                                             {"string": "/meters/rf/output/mode"},
                                             {"string": "/meters/rf/output/satellites"}]},
                          "guid": {"string": "grp-rf"}, "path": {"string": "/meters/rf/output"},
                          "label": {"string": "Transmitter output"}},
    "/meters/rf/output/forwardPower": {"value": {"double": 5012.5}, "guid": {"string": "m-fwd"},
        "path": {"string": "/meters/rf/output/forwardPower"}, "units": {"string": "W"},
        "min": {"double": 0}, "max": {"double": 6000}, "label": {"string": "Forward power"},
        "digitsToDisplay": {"int": 0}, "deviceName": {"string": "amplifier"},
        "deviceId": {"string": "3"}},
    "/meters/rf/output/deep/er/rfOn": {"value": {"bool": false}, "guid": {"string": "m-on"},
        "path": {"string": "/meters/rf/output/deep/er/rfOn"}, "label": {"string": "RF on"},
        "deviceName": {"string": "exciter"}},
    "/meters/rf/output/mode": {"value": {"string": "Normal"},
        "path": {"string": "/meters/rf/output/mode"}},
    "/meters/rf/output/satellites": {"value": {"int": 9}, "min": {"int": 0},
        "path": {"string": "/meters/rf/output/satellites"}, "digitsToDisplay": {"int": 0},
        "deviceName": {"string": "exciter"}, "deviceId": {"string": "2"}},
    "/meters/spare/list": {"value": {"list": [{"string": "/meters/spare/a"}]},
                           "label": {"string": "Spare"}, "path": {"string": "/meters/spare/list"}},
    "/meters/spare/a": {"value": {"list": []}, "label": {"string": "A"}}
  }
}
JSON
)
wire_start --fixture "$fixture" --no-demo-models --session admin-wire=admin \
  --session viewer-wire=viewer

viewer=(--max-time 10 --cookie "SessionID=viewer-wire")
admin=(--max-time 10 --cookie "SessionID=admin-wire")

rf='{"path":"/meters/rf/list","label":"RF output","groups":[{"guid":"grp-rf","path":"/meters/rf/output","label":"Transmitter output","meters":['\
'{"guid":"m-fwd","path":"/meters/rf/output/forwardPower","value":{"values":{"value":{"doubleValue":5012.5,"type":"DOUBLE"}}},"units":"W","min":0,"max":6000,"label":"Forward power","digitsToDisplay":0,"device":{"guid":"amplifier3","name":"amplifier"}},'\
'{"device":{}},'\
'{"guid":"m-on","path":"/meters/rf/output/deep/er/rfOn","value":{"values":{"value":{"boolValue":false,"type":"BOOL"}}},"label":"RF on","device":{"name":"exciter"}},'\
'{"path":"/meters/rf/output/mode","value":{"values":{"value":{"stringValue":"Normal","type":"STRING"}}},"device":{}},'\
'{"path":"/meters/rf/output/satellites","value":{"values":{"value":{"intValue":9,"type":"INT32"}}},"min":0,"digitsToDisplay":0,"device":{"guid":"exciter2","name":"exciter"}}]}]}'
spare='{"path":"/meters/spare/list","label":"Spare","groups":[{"label":"A"}]}'

# --- links: only the collection with meters ---
request "${viewer[@]}" "$api/meters/collections/links"
expect_eq "links: status" 200 "$status"
expect_contains "links: JSON" "application/json" "$ctype"
expect_eq "links: the collection of empty groups is left out" \
  '{"links":[{"path":"/meters/rf/list","label":"RF output"}]}' "$body"

# --- one collection ---
request "${viewer[@]}" "$api/meters/collections?path=%2Fmeters%2Frf%2Flist"
expect_eq "collection: status" 200 "$status"
expect_contains "collection: JSON" "application/json" "$ctype"
expect_eq "collection: every meter in list order, each reading with its type" "$rf" "$body"
expect_contains "collection: the unreadable meter is an Error line" \
  "ERROR [Kelo1] Dynamic exception type: halvor::tavelabi::NonExistentResourcePathException" \
  "$(cat "$work"/logs/* 2>/dev/null)"
expect_contains "collection: the Error line names the meter" \
  "No resource at /meters/rf/output/gone" "$(cat "$work"/logs/* 2>/dev/null)"

request "${viewer[@]}" "$api/meters/collections?path=/meters/spare/list"
expect_eq "collection of empty groups: status" 200 "$status"
expect_eq "collection of empty groups: its groups without meters" "$spare" "$body"

# --- the dashboard: every collection the host lists under /meters/**/list ---
request "${viewer[@]}" "$api/meters/dashboard/available"
expect_eq "dashboard: status" 200 "$status"
expect_eq "dashboard: both collections in path order" "{\"collections\":[$rf,$spare]}" "$body"

# --- bad input ---
for query in "" "?path=" "?Path=/meters/rf/list" "?x=1"; do
  request "${viewer[@]}" "$api/meters/collections$query"
  expect_eq "collection [$query]: status" 500 "$status"
  expect_contains "collection [$query]: names the parameter" \
    "Request missing query parameter: path." "$body"
done
request "${viewer[@]}" "$api/meters/collections?path=%2Fmeters%2Fnone%2Flist"
expect_eq "unknown collection: status" 500 "$status"
expect_contains "unknown collection: the host's text" "No resource at /meters/none/list" "$body"
request "${viewer[@]}" "$api/meters/collections?path=%zz"
expect_eq "undecodable path: status" 500 "$status"
request "${viewer[@]}" "$api/meters/collections?path=%2Fmeters%2Frf%2Foutput%2Fmode"
expect_eq "a meter given as a collection: status" 500 "$status"
request --max-time 10 "$api/meters/collections/links"
expect_eq "links without a session: status" 440 "$status"
request --max-time 10 --cookie "SessionID=nobody" "$api/meters/dashboard/available"
expect_eq "dashboard with an unknown session: status" 440 "$status"

# --- the last group with meters emptied: no link left ---
request "${admin[@]}" -X PUT --data '{"values":{"value":{"type":"LIST_VALUE"}}}' \
  "$api/resource?path=%2Fmeters%2Frf%2Foutput"
expect_eq "emptying the group: status" 200 "$status"
request "${viewer[@]}" "$api/meters/collections/links"
expect_eq "links of collections without meters: status" 200 "$status"
expect_eq "links of collections without meters: an empty list" '{"links":[]}' "$body"

request "${viewer[@]}" "$api/meters/collections/links"
expect_eq "the server still answers after the bad requests" 200 "$status"
wire_finish
