#!/usr/bin/python3
"""alarms_ws.py TAVEL_SIM LIBKELO REPO: the active alarms WebSocket over the wire.

First without models, on alarms that a fixture seeds: "/1/ws/alarms/active" (session from the
cookie) sends the active alarms as a binary AlarmList, decoded with the project's own schema;
each change of "/system/alarms/active" made through "/1/api/resource" (PUT and POST) brings the
whole list again, with each alarm read anew; a change that names an alarm that is not there is
not sent, and the next one is; an unknown session is closed with 1011. Then with the demo's
models, whose alarms come and go on their own: the pushes follow them. A heartbeat on
"/1/ws/ping" keeps the client pushable throughout. Exit status 0 when every check passed.
"""
import json
import os
import sys
import time

import websocket  # Debian's python3-websocket

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

VIEWER = "wire-alarms-viewer"
WRITER = "wire-alarms-writer"
ACTIVE = "/1/api/resource?path=%2Fsystem%2Falarms%2Factive"


def alarm(path, value, device_name, device_id, severity):
    return {"label": {"string": path.rsplit("/", 1)[1]}, "path": {"string": path},
            "value": {"bool": value}, "deviceName": {"string": device_name},
            "deviceId": {"string": device_id}, "severity": {"string": severity},
            "time": {"string": "2026-01-31T12:00:00Z"}}


def path_list(paths):
    return {"values": {"value": {"type": "LIST_VALUE",
                                 "listValue": [{"type": "STRING", "stringValue": p}
                                               for p in paths]}}}


def receive_for(ws, seconds, heartbeat):
    """Every frame that arrives within `seconds`, as (opcode, data)."""
    return [(opcode, data) for _, opcode, data in wire.receive_beating(ws, seconds, heartbeat)]


def receive_one(ws, heartbeat, seconds=5.0):
    """The next frame, or None when none comes within `seconds`."""
    deadline = time.time() + seconds
    while time.time() < deadline:
        heartbeat.beat()
        ws.settimeout(0.5)
        try:
            return ws.recv_data()
        except websocket.WebSocketTimeoutException:
            continue
    return None


def subscribe(sim, session):
    return wire.connect(sim, "/1/ws/alarms/active", session)


def run_fixture(sim, checks, schema):
    alarms = {
        "/alarms/fan/2/stalled": alarm("/alarms/fan/2/stalled", True, "fan", "2", "MAINTENANCE"),
        "/alarms/amplifier/3/hot": alarm("/alarms/amplifier/3/hot", True, "amplifier", "3",
                                         "REDUCED_POWER"),
        "/alarms/exciter/1/pll": alarm("/alarms/exciter/1/pll", False, "exciter", "1",
                                       "CRITICAL"),
    }
    resources = dict(alarms)
    resources["/system/alarms/active"] = {"value": {"list": [
        {"string": "/alarms/fan/2/stalled"}, {"string": "/alarms/amplifier/3/hot"}]}}
    fixture = sim.fixture("alarms-ws", {
        "users": [{"name": "viewer", "password": "viewer-wire", "role": "read-only"},
                  {"name": "operator", "password": "operator-wire", "role": "operator"}],
        "resources": resources})
    sim.count_subscriptions()
    sim.start(fixtures=[fixture], sessions={VIEWER: "viewer", WRITER: "operator"},
              demo_models=False)
    heartbeat = wire.Heartbeat(sim, VIEWER)

    def decode(frame):
        opcode, data = frame
        if opcode != websocket.ABNF.OPCODE_BINARY:
            raise ValueError("not a Binary frame: %r" % (frame,))
        return schema.AlarmList.FromString(data)

    def paths(message):
        return [a.path.value for a in message.alarms]

    def change(method, target, body):
        status, _, answer = sim.request(method, target, WRITER, body)
        checks.check("%s %s is answered 200" % (method, target), status == 200, answer)

    sub = subscribe(sim, VIEWER)
    first = decode(receive_one(sub, heartbeat))
    checks.check("the first frame is the active list read at connect",
                 paths(first) == ["/alarms/fan/2/stalled", "/alarms/amplifier/3/hot"],
                 str(first))
    stalled = first.alarms[0]
    checks.check("an alarm carries its fields",
                 stalled.active.value and stalled.name.value == "stalled"
                 and stalled.device.guid.value == "fan-2" and stalled.device.name.value == "fan"
                 and stalled.severity == schema.MAINTENANCE
                 and stalled.time.seconds == 1769860800, str(stalled))
    checks.check("the subscription follows the first frame",
                 sim.wait_for_subscription("/system/alarms/active"))

    change("PUT", ACTIVE, path_list(["/alarms/fan/2/stalled", "/alarms/amplifier/3/hot",
                                     "/alarms/exciter/1/pll"]))
    grown = decode(receive_one(sub, heartbeat))
    checks.check("a PUT of the list pushes the whole list, not the difference",
                 paths(grown) == ["/alarms/fan/2/stalled", "/alarms/amplifier/3/hot",
                                  "/alarms/exciter/1/pll"], str(grown))
    checks.check("an alarm whose value is false is pushed inactive",
                 grown.alarms[2].HasField("active") and not grown.alarms[2].active.value
                 and grown.alarms[2].severity == schema.CRITICAL, str(grown.alarms[2]))

    # A change of an alarm is not pushed by itself; the next change of the list shows it.
    change("PUT", "/1/api/resource?path=%2Falarms%2Fexciter%2F1%2Fpll",
           {"values": {"value": {"type": "BOOL", "boolValue": True}}})
    quiet = receive_for(sub, 1.0, heartbeat)
    checks.check("a change of an alarm alone is not pushed", quiet == [], repr(quiet))
    change("POST", ACTIVE, path_list(["/alarms/exciter/1/pll"]))
    created = decode(receive_one(sub, heartbeat))
    checks.check("a POST of the list pushes it, each alarm read anew",
                 paths(created) == ["/alarms/exciter/1/pll"] and created.alarms[0].active.value,
                 str(created))

    change("PUT", ACTIVE, path_list([]))
    empty = receive_one(sub, heartbeat)
    checks.check("an empty list is pushed as an AlarmList without alarms",
                 empty is not None and len(decode(empty).alarms) == 0 and empty[1] == b"",
                 repr(empty))

    change("PUT", ACTIVE, path_list(["/alarms/fan/2/stalled", "/alarms/gone"]))
    lost = receive_for(sub, 1.5, heartbeat)
    checks.check("a list naming an alarm that is not there is not pushed", lost == [], repr(lost))
    change("PUT", ACTIVE, path_list(["/alarms/amplifier/3/hot"]))
    after = receive_one(sub, heartbeat)
    checks.check("the next change is pushed again",
                 after is not None and paths(decode(after)) == ["/alarms/amplifier/3/hot"],
                 repr(after))

    bad = subscribe(sim, "unknown")
    bad.settimeout(5)
    frame = bad.recv_frame()
    checks.check("an unknown session is closed with 1011 \"Invalid session ID.\"",
                 frame.opcode == websocket.ABNF.OPCODE_CLOSE and frame.data[:2] == b"\x03\xf3"
                 and frame.data[2:] == b"Invalid session ID.", repr((frame.opcode, frame.data)))
    bad.shutdown()
    sub.close()
    heartbeat.close()
    sim.stop()


def run_demo(sim, checks, schema):
    fixture = sim.fixture("alarms-demo", {
        "users": [{"name": "viewer", "password": "viewer-wire", "role": "read-only"}],
        "alarms": {"periodSeconds": 1}})
    sim.start(fixtures=[fixture], sessions={VIEWER: "viewer"})
    heartbeat = wire.Heartbeat(sim, VIEWER)
    sub = subscribe(sim, VIEWER)
    opcode, data = receive_one(sub, heartbeat)
    first = schema.AlarmList.FromString(data)
    start = [a.path.value for a in first.alarms]
    checks.check("demo: the first frame holds the alarms that are on at start",
                 opcode == websocket.ABNF.OPCODE_BINARY
                 and start == ["/alarms/amplifier/2/overTemperature", "/alarms/fan/2/stalled"],
                 repr(start))
    lists = [[(a.path.value, a.active.value) for a in schema.AlarmList.FromString(d).alarms]
             for _, d in receive_for(sub, 5.5, heartbeat)]
    checks.check("demo: alarms come and go on their own, one push each", len(lists) >= 3,
                 repr(lists))
    checks.check("demo: every pushed alarm is active",
                 all(active for pushed in lists for _, active in pushed), repr(lists))
    sizes = [len(pushed) for pushed in lists]
    checks.check("demo: each push is the whole list, one alarm more or less than the last",
                 all(abs(b - a) == 1 for a, b in zip([len(start)] + sizes, sizes)), repr(sizes))
    status, _, body = sim.request("GET", "/1/api/alarms/active", VIEWER)
    rest = [a["path"] for a in json.loads(body)["alarms"]] if status == 200 else []
    last = [p for p, _ in lists[-1]] if lists else start
    # An alarm may have come or gone between the last push and this read, not more.
    checks.check("demo: the REST answer agrees with the last push",
                 status == 200 and (rest == last or len(set(rest) ^ set(last)) == 1),
                 repr((status, rest, last)))
    sub.close()
    heartbeat.close()


def run(sim, checks):
    schema = wire.schema("Monitoring", sim.repo)
    run_fixture(sim, checks, schema)
    run_demo(sim, checks, schema)


if __name__ == "__main__":
    sys.exit(wire.main(run))
