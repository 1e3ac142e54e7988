#!/usr/bin/python3
"""meters_ws.py TAVEL_SIM LIBKELO REPO: "/1/ws/meters/group" over the wire.

First without the simulator's models and with a fixture of a small meter tree: a subscriber
of an amplifier group gets a frame of length zero first, then one binary Meter for each change
made through "/1/api/resource" to a meter below the group, one level down or three, and nothing
for a meter of another group or for the group's own resource. A connection without "path"
(missing, empty) gets no frame and leaves "Error sending initial message: " in the log; a
percent-encoded path works as the plain one. Then, with the demo's models: the moving meter
tree pushes every meter of a group, and the REST reading of the same group names the same meters.
Exit status 0 when every check passed.
"""
import os
import sys
import time
import urllib.parse

import websocket  # Debian's python3-websocket

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

VIEWER = "wire-meters-viewer"
WRITER = "wire-meters-writer"
GROUP = "/meters/amplifiers/amplifier2"


def typed(value):
    if isinstance(value, bool):
        return {"bool": value}
    if isinstance(value, int):
        return {"int": value}
    if isinstance(value, float):
        return {"double": value}
    return {"string": value}


def meter(path, value, **keys):
    resource = {"value": typed(value), "path": {"string": path}, "guid": {"string": "g" + path}}
    for key, key_value in keys.items():
        resource[key] = typed(key_value)
    return resource


def tree():
    meters = {
        GROUP + "/outputPower": meter(GROUP + "/outputPower", 1250.5, units="W", min=0.0,
                                      max=1600.0, digitsToDisplay=0, deviceName="amplifier",
                                      deviceId="2", label="Output power"),
        GROUP + "/module1/pa/voltage": meter(GROUP + "/module1/pa/voltage", 48.25, units="V",
                                             deviceName="amplifier", deviceId="2"),
        GROUP + "/ok": meter(GROUP + "/ok", True, label="Amplifier OK"),
        "/meters/amplifiers/amplifier1/outputPower": meter(
            "/meters/amplifiers/amplifier1/outputPower", 1100.0),
    }
    resources = {
        GROUP: {"value": {"list": [{"string": p} for p in sorted(meters) if p.startswith(GROUP)]},
                "path": {"string": GROUP}, "label": {"string": "Amplifier 2"}},
    }
    resources.update(meters)
    return {"users": [{"name": "viewer", "password": "viewer-wire", "role": "read-only"},
                      {"name": "operator", "password": "operator-wire", "role": "operator"}],
            "resources": resources}


def connect(sim, target, session=VIEWER):
    return wire.connect(sim, target, session)



def heartbeat(sim):
    """Pushes reach only clients whose address keeps pinging."""
    ping = connect(sim, "/1/ws/ping")
    ping.recv_data()
    return ping


def put(sim, path, value):
    kind = {bool: "BOOL", int: "INT32", float: "DOUBLE", str: "STRING"}[type(value)]
    member = {"BOOL": "boolValue", "INT32": "intValue", "DOUBLE": "doubleValue",
              "STRING": "stringValue"}[kind]
    body = {"values": {"value": {"type": kind, member: value}}}
    status, _, _ = sim.request("PUT", "/1/api/resource?path=" + urllib.parse.quote(path, safe=""),
                               WRITER, body)
    return status



def fixed_tree(sim, checks, m):
    sim.count_subscriptions()
    sim.start(fixtures=[sim.fixture("meters", tree())], sessions={VIEWER: "viewer",
                                                                   WRITER: "operator"},
              demo_models=False)
    ping = heartbeat(sim)
    group = connect(sim, "/1/ws/meters/group?path=" + GROUP)
    opcode, first = group.recv_data()
    checks.check("the first frame is Binary", opcode == websocket.ABNF.OPCODE_BINARY, str(opcode))
    checks.check("the first frame is empty", first == b"", repr(first))
    encoded = connect(sim, "/1/ws/meters/group?path=" + urllib.parse.quote(GROUP, safe=""))
    _, encoded_first = encoded.recv_data()
    checks.check("a percent-encoded path gets the empty first frame too", encoded_first == b"",
                 repr(encoded_first))
    checks.check("both subscriptions follow their first frames",
                 sim.wait_for_subscription(GROUP + "/**", clients=2))

    checks.check("PUT of a meter one level below is 200",
                 put(sim, GROUP + "/outputPower", 1300.25) == 200)
    checks.check("PUT of a meter three levels below is 200",
                 put(sim, GROUP + "/module1/pa/voltage", 47.5) == 200)
    checks.check("PUT of a status meter is 200", put(sim, GROUP + "/ok", False) == 200)
    checks.check("PUT of a meter of another group is 200",
                 put(sim, "/meters/amplifiers/amplifier1/outputPower", 900.0) == 200)
    frames = wire.receive_for(group, 1.5)
    meters = [m.Meter.FromString(data) for _, data in frames]
    paths = [x.path.value for x in meters]
    checks.check("one Meter per change below the group, in order",
                 paths == [GROUP + "/outputPower", GROUP + "/module1/pa/voltage", GROUP + "/ok"],
                 repr(paths))
    checks.check("every push is a Binary frame",
                 all(op == websocket.ABNF.OPCODE_BINARY for op, _ in frames), repr(frames))
    if len(meters) == 3:
        power, voltage, ok = meters
        power_value = power.value.values["value"]
        checks.check("a Double reading keeps its type and value",
                     power_value.HasField("doubleValue") and power_value.doubleValue.value == 1300.25,
                     str(power_value))
        checks.check("the pushed meter carries its metadata",
                     power.units.value == "W" and power.max.value == 1600.0
                     and power.HasField("min") and power.min.value == 0.0
                     and power.digitsToDisplay.value == 0 and power.HasField("digitsToDisplay")
                     and power.label.value == "Output power"
                     and power.guid.value == "g" + GROUP + "/outputPower", str(power))
        checks.check("the device GUID is the name followed by the id",
                     power.device.name.value == "amplifier" and power.device.guid.value == "amplifier2",
                     str(power.device))
        checks.check("a deep meter's reading is pushed",
                     voltage.value.values["value"].doubleValue.value == 47.5, str(voltage))
        ok_value = ok.value.values["value"]
        checks.check("a Bool reading keeps its type, false included",
                     ok_value.HasField("boolValue") and ok_value.boolValue.value is False,
                     str(ok_value))
        checks.check("a meter without device keys has an empty device",
                     ok.HasField("device") and not ok.device.HasField("name")
                     and not ok.device.HasField("guid"), str(ok))
    encoded_paths = [m.Meter.FromString(d).path.value for _, d in wire.receive_for(encoded, 0.5)]
    checks.check("the percent-encoded subscription got the same changes",
                 encoded_paths == [GROUP + "/outputPower", GROUP + "/module1/pa/voltage",
                                   GROUP + "/ok"], repr(encoded_paths))

    # The group's own resource is not below its path: no push.
    status, _, _ = sim.request("PUT", "/1/api/resource?path=" + urllib.parse.quote(GROUP, safe=""),
                               WRITER, {"values": {"label": {"type": "STRING",
                                                             "stringValue": "Amp 2"}}})
    checks.check("PUT of the group itself is 200", status == 200, str(status))
    checks.check("a change of the group's own resource is not pushed",
                 wire.receive_for(group, 0.8) == [], "")

    unknown = connect(sim, "/1/ws/meters/group?path=%2Fmeters%2Fno%2Fsuch")
    _, unknown_first = unknown.recv_data()
    checks.check("a group path the host lacks still gets the empty first frame",
                 unknown_first == b"", repr(unknown_first))
    checks.check("and then nothing", wire.receive_for(unknown, 0.5) == [], "")
    unknown.close()

    for query, name in (("", "missing"), ("?path=", "empty")):
        silent = connect(sim, "/1/ws/meters/group" + query)
        checks.check("a path that is %s gets no frame and the socket stays open" % name,
                     wire.receive_for(silent, 0.8) == [] and silent.connected, "")
        silent.close()
    time.sleep(0.3)
    checks.check("a connection without path is logged",
                 sim.log().count("Error sending initial message: ") >= 2
                 and "Request missing query parameter: path." in sim.log(), sim.log()[-2000:])
    ping.send("ping")  # the heartbeat count runs out after five seconds without a ping
    ping.recv_data()
    checks.check("PUT after the failed connections is 200",
                 put(sim, GROUP + "/outputPower", 1.5) == 200)
    late = [m.Meter.FromString(d).path.value for _, d in wire.receive_for(group, 1.0)]
    checks.check("the subscription still works after them", late == [GROUP + "/outputPower"],
                 repr(late))
    for client in (group, encoded, ping):
        client.close()
    sim.stop()


def demo_tree(sim, checks, m):
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json")],
              sessions={VIEWER: "viewer", WRITER: "operator"})
    ping = heartbeat(sim)
    group = connect(sim, "/1/ws/meters/group?path=%2Fmeters%2Famplifiers%2Famplifier3")
    _, first = group.recv_data()
    checks.check("demo: the first frame is empty", first == b"", repr(first))
    frames = wire.receive_for(group, 1.5)
    pushed = set(m.Meter.FromString(d).path.value for _, d in frames)
    status, _, body = sim.get("/1/api/meters/collections?path=%2Fmeters%2Famplifiers%2Flist",
                              VIEWER)
    checks.check("demo: the amplifiers collection answers 200", status == 200, body[:300])
    listed = set()
    if status == 200:
        import json
        for listed_group in json.loads(body)["groups"]:
            if listed_group["path"] == "/meters/amplifiers/amplifier3":
                listed = set(x["path"] for x in listed_group["meters"])
    checks.check("demo: every meter of the group moves and is pushed",
                 len(listed) >= 8 and pushed == listed, repr((sorted(pushed), sorted(listed))))
    checks.check("demo: some pushed meters lie more than one level below the group",
                 any(p.count("/") > 4 for p in pushed), repr(sorted(pushed)))
    checks.check("demo: nothing from another group",
                 all(p.startswith("/meters/amplifiers/amplifier3/") for p in pushed),
                 repr(sorted(pushed)))
    per_meter = len(frames) / max(1, len(listed))
    checks.check("demo: each meter moves several times a second", per_meter >= 4,
                 "%d frames for %d meters in 1.5 s" % (len(frames), len(listed)))
    group.close()
    ping.close()


def run(sim, checks):
    m = wire.schema("Monitoring", sim.repo)
    fixed_tree(sim, checks, m)
    demo_tree(sim, checks, m)


if __name__ == "__main__":
    sys.exit(wire.main(run))
