#!/usr/bin/python3
"""ws_push.py TAVEL_SIM LIBKELO REPO: WebSocket push over the wire.

tavel-sim with the plug-in, the demo's fixture, its models and two pre-made sessions: keeps
"/1/ws/ping" alive, subscribes "/1/ws/resource?path=/demo/counter" (the simulator updates it every
second) and checks the binary Resource frames; subscribes the glob "/demo/**" and sees its first
frame and its pushes; then stops pinging and sees the pushes stop once the heartbeat count has run
out, and start again with the next ping; a resource created and changed through
"/1/api/resource" reaches its subscriber as a binary Resource. Exit status 0 when every check
passed.
"""
import json
import os
import sys
import time
import urllib.request

import websocket  # Debian's python3-websocket

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

SESSION = "wire-ws-session"
WRITER = "wire-ws-writer"


def int_value(frame):
    """The "value" of a binary Resource frame."""
    return wire.resource_values(frame).get("value")


def connect(sim, target, **options):
    return websocket.create_connection(sim.ws_url(target), timeout=5,
                                       cookie="SessionID=" + SESSION, **options)



def close_answer(client, code):
    """Sends a close frame with code and returns the payload of the server's close frame."""
    client.send_close(status=code, reason=b"bye")
    client.settimeout(5)
    try:
        while True:
            frame = client.recv_frame()
            if frame.opcode == websocket.ABNF.OPCODE_CLOSE:
                return frame.data
    except Exception as error:  # noqa: BLE001 - the kind of failure is reported
        return error
    finally:
        client.shutdown()


def run(sim, checks):
    sim.count_subscriptions()
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json")],
              sessions={SESSION: "viewer", WRITER: "operator"})
    ping = connect(sim, "/1/ws/ping")
    opcode, data = ping.recv_data()
    checks.check("ping answers pong as Text", opcode == websocket.ABNF.OPCODE_TEXT and data == b"pong",
                 repr((opcode, data)))

    sub = connect(sim, "/1/ws/resource?path=%2Fdemo%2Fcounter")
    opcode, first = sub.recv_data()
    checks.check("first frame is Binary", opcode == websocket.ABNF.OPCODE_BINARY, str(opcode))
    first_value = int_value(first)
    checks.check("first frame holds the counter", isinstance(first_value, int), repr(first))

    # Ping every second for three seconds: one push a second, counting up.
    pushes = []
    for _ in range(3):
        ping.send("ping")
        ping.recv_data()
        pushes += wire.receive_for(sub, 1.0)
    values = [int_value(d) for _, d in pushes]
    checks.check("pushes arrive while pinging", len(values) >= 2, repr(values))
    checks.check("pushes count up", values == sorted(values) and values[0] > first_value,
                 repr((first_value, values)))

    # A glob: the first frame maps each match to its values, then each change is pushed.
    glob = connect(sim, "/1/ws/resource?path=%2Fdemo%2F**")
    opcode, first_glob = glob.recv_data()
    matches = wire.resource_values(first_glob)
    checks.check("a glob's first frame is Binary", opcode == websocket.ABNF.OPCODE_BINARY,
                 str(opcode))
    checks.check("a glob's first frame maps every match to its values",
                 sorted(matches) == ["/demo/clock", "/demo/counter"]
                 and isinstance(matches["/demo/counter"].get("value"), int)
                 and isinstance(matches["/demo/clock"].get("value"), str), repr(matches))
    glob_pushes = []
    for _ in range(3):
        ping.send("ping")
        ping.recv_data()
        glob_pushes += [wire.resource_values(d) for _, d in wire.receive_for(glob, 1.0)]
    counts = [p["value"] for p in glob_pushes if isinstance(p.get("value"), int)]
    clocks = [p["value"] for p in glob_pushes if isinstance(p.get("value"), str)]
    checks.check("a glob subscription is pushed the counter and the clock",
                 len(counts) >= 1 and len(clocks) >= 1, repr(glob_pushes))
    checks.check("the counter pushed to the glob counts on from its first frame",
                 counts == sorted(counts) and counts[0] > matches["/demo/counter"]["value"],
                 repr((matches, counts)))
    glob.close()

    # Silence: the count of 5 runs out within six ticks, then nothing more arrives.
    silent_start = time.time()
    tail = wire.receive_for(sub, 7.5)
    late = wire.receive_for(sub, 3.0)
    checks.check("pushes stop once the heartbeat has run out", len(late) == 0 and len(tail) <= 6,
                 "%d frames in the 7.5 s after the last ping, %d later" % (len(tail), len(late)))
    checks.check("the socket stays open while lapsed", sub.connected, "closed")

    # The next ping makes the same subscription pushable again.
    ping.send(b"\x00\x01", opcode=websocket.ABNF.OPCODE_BINARY)
    opcode, data = ping.recv_data()
    checks.check("a binary ping is answered pong", data == b"pong", repr(data))
    resumed = wire.receive_for(sub, 2.5)
    checks.check("pushes resume with the next ping", len(resumed) >= 1,
                 "nothing %.1f s after the silence began" % (time.time() - silent_start))

    # A change made through the REST interface reaches the subscriber as that Resource.
    def rest(method, value):
        body = json.dumps({"values": {"value": {"type": "INT32", "intValue": value}}}).encode()
        request = urllib.request.Request(
            sim.url("/1/api/resource?path=%2Fwire%2Fsetting"), data=body,
            method=method, headers={"Cookie": "SessionID=" + WRITER})
        with urllib.request.urlopen(request, timeout=5) as reply:
            return reply.status
    checks.check("POST creates the resource", rest("POST", 1) == 200)
    setting = connect(sim, "/1/ws/resource?path=%2Fwire%2Fsetting")
    _, first_setting = setting.recv_data()
    checks.check("first frame holds the created value",
                 int_value(first_setting) == 1, repr(first_setting))
    checks.check("the subscription follows the first frame",
                 sim.wait_for_subscription("/wire/setting"))
    ping.send("ping")
    ping.recv_data()
    checks.check("PUT through /1/api/resource is answered 200", rest("PUT", 42) == 200)
    pushed = [int_value(d) for _, d in wire.receive_for(setting, 2.0)]
    checks.check("the PUT reaches the subscriber as a binary Resource", 42 in pushed, repr(pushed))

    # A client's close, whatever its code, is answered with 1000 and an empty reason.
    for client, code in ((setting, 4001), (sub, 1001)):
        answer = close_answer(client, code)
        checks.check("close %d is answered with 1000 and no reason" % code, answer == b"\x03\xe8",
                     repr(answer))

    bad = websocket.create_connection(sim.ws_url("/1/ws/resource?path=/demo/counter"),
                                      timeout=5, cookie="SessionID=unknown")
    bad.settimeout(5)
    frame = bad.recv_frame()
    checks.check("unknown session is closed with 1011",
                 frame.opcode == websocket.ABNF.OPCODE_CLOSE and frame.data[:2] == b"\x03\xf3"
                 and frame.data[2:] == b"Invalid session ID.", repr((frame.opcode, frame.data)))
    bad.shutdown()
    ping.close()


if __name__ == "__main__":
    sys.exit(wire.main(run))
