#!/usr/bin/env bash
# generic_endpoints.sh TAVEL_SIM LIBKELO REPO: tavel-sim with the plug-in, no models, an
# administrator and a read-only user already logged in; checks the generic resource and command
# endpoints with curl over HTTP and HTTPS.
set -uo pipefail
source "$(dirname "$0")/lib/wire.sh"

io_threads=1
fixture=$(wire_fixture generic <<'JSON'
{
  "users": [
    {"name": "admin", "password": "admin-wire", "role": "administrator"},
    {"name": "viewer", "password": "viewer-wire", "role": "read-only"}
  ],
  "resources": {
    "/system/alarms": {"value": {"list": [{"string": "overheat"}, {"string": "vswr"}]}},
    "/wire/kept": {"value": {"int": 7}}
  }
}
JSON
)
wire_start --fixture "$fixture" --no-demo-models --session admin-wire=admin \
  --session viewer-wire=viewer

http=$api
https=$api_tls
admin=(--cookie "SessionID=admin-wire")
viewer=(--cookie "SessionID=viewer-wire")

# --- reading ---
request "${admin[@]}" "$http/resource?path=%2Fsystem%2Falarms"
expect_eq "GET percent-encoded path: status" 200 "$status"
expect_contains "GET: JSON content type" "application/json" "$ctype"
expect_json_eq "GET percent-encoded path reaches /system/alarms" \
  '{"values":{"value":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"overheat"},{"type":"STRING","stringValue":"vswr"}]}}}' \
  "$body"
expect_contains "cookie echoed with its path" "Set-Cookie: SessionID=admin-wire;Path=/" "$headers"

request "${admin[@]}" "$http/resource"
expect_eq "GET without path: status" 500 "$status"
expect_contains "GET without path: plain text" "text/plain" "$ctype"
expect_contains "GET without path: names the parameter" \
  "Request missing query parameter: path." "$body"

request "${admin[@]}" "$http/resource?path=%2Fno%2Fsuch"
expect_eq "GET of a missing resource: status" 500 "$status"
expect_contains "GET of a missing resource: host's text" "No resource at /no/such" "$body"

request "$http/resource?path=/wire/kept"
expect_eq "GET without cookie: dead session" 440 "$status"
expect_contains "GET without cookie: empty cookie echoed" "Set-Cookie: SessionID=;Path=/" "$headers"

# --- a dead session: 440, no body, connection closed ---
request --cookie "SessionID=not-a-session" "$http/resource?path=/wire/kept"
expect_eq "dead session: status" 440 "$status"
expect_eq "dead session: empty body" "" "$body"
expect_contains "dead session: connection closed" "Connection: close" "$headers"
connects=$(curl -s -o /dev/null -o /dev/null -w '%{num_connects} ' --cookie "SessionID=not-a-session" \
  "$http/resource?path=/wire/kept" "$http/resource?path=/wire/kept")
expect_eq "dead session: second request needs a new connection" "1 1 " "$connects"
connects=$(curl -s -o /dev/null -o /dev/null -w '%{num_connects} ' "${admin[@]}" \
  "$http/resource?path=/wire/kept" "$http/resource?path=/wire/kept")
expect_eq "live session: connection kept" "1 0 " "$connects"

# --- writing ---
every='{"values":{
 "flag":{"type":"BOOL","boolValue":false},
 "gain":{"type":"FLOAT","floatValue":1.5},
 "frequency":{"type":"DOUBLE","doubleValue":98.125},
 "count":{"type":"INT32","intValue":-2147483648},
 "name":{"type":"STRING","stringValue":"Sänder \"1\""},
 "empty":{"type":"LIST_VALUE"},
 "nested":{"type":"LIST_VALUE","listValue":[
   {"type":"INT32","intValue":1},
   {"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"deep"}]},
   {"type":"MAP_VALUE","mapValue":{"k":{"type":"BOOL","boolValue":true}}}]},
 "site":{"type":"MAP_VALUE","mapValue":{
   "latitude":{"type":"DOUBLE","doubleValue":59.3293},
   "inner":{"type":"MAP_VALUE","mapValue":{
     "tags":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"a"},{"type":"STRING","stringValue":"b"}]}}}}}}}'
request "${admin[@]}" -X POST -H 'Content-Type: application/json' --data-binary "$every" \
  "$http/resource?path=%2Fwire%2Fall"
expect_eq "POST every type: status" 200 "$status"
expect_contains "POST: JSON content type" "application/json" "$ctype"
expect_json_eq "POST answers the stored resource" "$every" "$body"
request "${admin[@]}" "$http/resource?path=/wire/all"
expect_json_eq "GET after POST gives every type back" "$every" "$body"

request "${admin[@]}" -X POST --data-binary 'not json' "$http/resource?path=/wire/notjson"
expect_eq "POST not json: status" 200 "$status"
expect_eq "POST not json: the host stored an empty resource" "{}" "$body"
request "${admin[@]}" "$http/resource?path=/wire/notjson"
expect_eq "GET after POST not json" "{}" "$body"

request "${admin[@]}" -X PUT --data-binary \
  '{"values":{"extra":{"type":"STRING","stringValue":"x"}}}' "$http/resource?path=/wire/kept"
expect_eq "PUT: status" 200 "$status"
expect_json_eq "PUT merges into the resource" \
  '{"values":{"value":{"type":"INT32","intValue":7},"extra":{"type":"STRING","stringValue":"x"}}}' \
  "$body"
request "${admin[@]}" -X PUT --data-binary 'not json' "$http/resource?path=/wire/kept"
expect_eq "PUT not json: status" 200 "$status"
expect_json_eq "PUT not json changes nothing" \
  '{"values":{"value":{"type":"INT32","intValue":7},"extra":{"type":"STRING","stringValue":"x"}}}' \
  "$body"

# --- rights ---
request "${viewer[@]}" "$http/resource?path=/wire/kept"
expect_eq "read-only user reads" 200 "$status"
request "${viewer[@]}" -X POST --data-binary "$every" "$http/resource?path=/wire/viewer"
expect_eq "read-only user POST refused" 403 "$status"
expect_contains "refusal closes the connection" "Connection: close" "$headers"
request "${viewer[@]}" -X PUT --data-binary '{}' "$http/resource?path=/wire/kept"
expect_eq "read-only user PUT refused" 403 "$status"
request "${viewer[@]}" -X DELETE "$http/command?path=/wire/kept"
expect_eq "read-only user DELETE refused" 403 "$status"
request "${admin[@]}" "$http/resource?path=/wire/viewer"
expect_eq "refused POST stored nothing" 500 "$status"

# --- commands and deletion ---
request "${viewer[@]}" -X PUT \
  --data-binary '{"values":{"value":{"type":"STRING","stringValue":"/wire/*"}}}' \
  "$http/command?path=%2Fresource%2Flist"
expect_eq "command: status" 200 "$status"
expect_json_eq "command answers the host's resource" \
  '{"values":{"value":{"type":"LIST_VALUE","listValue":[{"type":"STRING","stringValue":"/wire/all"},{"type":"STRING","stringValue":"/wire/kept"},{"type":"STRING","stringValue":"/wire/notjson"}]}}}' \
  "$body"

request "${admin[@]}" -X DELETE "$http/resource?path=/wire/all"
if [ "$status" == 404 ] || [ "$status" == 405 ]; then
  pass "DELETE on /1/api/resource matches no route ($status)"
else
  fail "DELETE on /1/api/resource: expected 404 or 405, got $status"
fi
request "${admin[@]}" "$http/resource?path=/wire/all"
expect_eq "resource survives DELETE on the resource URL" 200 "$status"

request "${admin[@]}" -X DELETE "$http/command?path=%2Fwire%2Fall"
expect_eq "DELETE on /1/api/command: status" 200 "$status"
expect_eq "DELETE: no body" "" "$body"
request "${admin[@]}" "$http/resource?path=/wire/all"
expect_eq "deleted resource is gone" 500 "$status"

# --- HTTPS ---
request -k "${admin[@]}" "$https/resource?path=%2Fsystem%2Falarms"
expect_eq "HTTPS GET: status" 200 "$status"
expect_contains "HTTPS GET: body" '"overheat"' "$body"
request -k "${viewer[@]}" -X POST --data-binary '{}' "$https/resource?path=/wire/tls"
expect_eq "HTTPS refused right" 403 "$status"
request -k "$https/resource"
expect_eq "HTTPS missing path" 500 "$status"

wire_finish
