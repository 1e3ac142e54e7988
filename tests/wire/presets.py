#!/usr/bin/python3
"""presets.py TAVEL_SIM LIBKELO REPO: the broadcast presets over the wire, on one I/O thread and one
background thread.

With the simulator's preset model (an action completes on the third poll, guid 7 is refused at
the start of every action, guid 8 fails while polled): the list of twelve presets, the layout as
the host's own JSON text, the active preset; load, clone, update, activate and delete answered
only once the hardware has finished; their failures as 500 with the host's text; the clone's
query key passed on undecoded; bodies that are not JSON. A delete whose first answer already
reports an error is never answered: the server closes that connection without a response, and
the next connection is served as usual. A read-only user lists the presets, and
his activation is refused with 403 from the background task. While a preset action waits, another request is served
at once on the same (only) I/O thread; two activations from two sessions are both answered, one after the other on
the one background thread. The
four preset WebSockets: the active preset pushed after an activation, the layout text, the list
pushed after a clone, and the hardware errors, empty first, then the error of a failed action.
Exit status 0 when every check passed.
"""
import json
import os
import socket
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

ADMIN = "wire-presets-admin"
OTHER = "wire-presets-other"
VIEWER = "wire-presets-viewer"
FIXTURE = {"models": ["presets"],
           "users": [{"name": "admin", "password": "wire-presets-secret", "role": "administrator"},
                     {"name": "viewer", "password": "wire-presets-viewer", "role": "read-only"}],
           "presets": {"pollsToComplete": 2, "failAtStart": ["7"], "failWhilePolling": ["8"]}}


def preset_name(preset):
    return preset["resources"]["presetName"]["values"]["value"]["stringValue"]


def raw_exchange(sim, request, seconds=5):
    """Everything the server sends back on one connection until it closes it, and whether it
    closed it (rather than the wait running out)."""
    with socket.create_connection(("127.0.0.1", sim.http_port), timeout=seconds) as conn:
        conn.sendall(request.encode())
        received = b""
        try:
            while True:
                chunk = conn.recv(4096)
                if not chunk:
                    return received, True
                received += chunk
        except socket.timeout:
            return received, False


def run(sim, checks):
    sim.start(fixtures=[sim.fixture("presets", FIXTURE)],
              sessions={ADMIN: "admin", OTHER: "admin", VIEWER: "viewer"})
    m = wire.schema("Presets", sim.repo)

    status, _, body = sim.get("/1/api/presets", ADMIN)
    presets = json.loads(body)["presets"] if status == 200 else []
    checks.check("list: 200 with the twelve presets", status == 200 and len(presets) == 12,
                 (status, body[:200]))
    checks.check("list: each preset has its guid and its sections",
                 all(p.get("guid") and {"presetName", "frequency", "power", "mode", "audio", "rds"}
                     <= set(p["resources"]) for p in presets), presets[:1])

    status, headers, body = sim.get("/1/api/presets/layout", ADMIN)
    checks.check("layout: the host's JSON text as it stands",
                 status == 200 and headers.get("Content-Type", "").startswith("application/json")
                 and json.loads(body)["sections"][0]["name"] == "presetName", (status, body))

    status, _, body = sim.get("/1/api/presets/active", ADMIN)
    checks.check("active: the preset on air", status == 200 and json.loads(body)["guid"] == "1",
                 (status, body))

    started = time.time()
    status, headers, body = sim.get("/1/api/presets/3", ADMIN)
    took = time.time() - started
    checks.check("load: 200 with the preset once the hardware finished",
                 status == 200 and json.loads(body)["guid"] == "3"
                 and preset_name(json.loads(body)) == "Night low power", (status, body))
    checks.check("load: answered after the polls (two of 500 ms)", 0.9 <= took < 5, took)
    checks.check("load: the session cookie comes back",
                 ("SessionID=" + ADMIN) in headers.get("Set-Cookie", ""), headers)

    status, _, body = sim.get("/1/api/presets/99", ADMIN)
    checks.check("load of an unknown guid: 500 with the host's text",
                 status == 500 and b"Unable to complete preset action: No preset with guid 99"
                 in body, (status, body))

    status, _, body = sim.get("/1/api/presets/8", ADMIN)
    checks.check("load that fails while polled: 500 with the host's text",
                 status == 500 and b"Unable to complete preset action: The hardware did not "
                 b"finish the load of preset 8" in body, (status, body))

    errors_ws = wire.connect(sim, "/1/ws/presets/hardwareErrors", ADMIN)
    first = wire.receive_for(errors_ws, 1.0)
    checks.check("hardware errors: the first frame is an empty list",
                 len(first) == 1 and len(m.HardWareErrorList.FromString(first[0][1]).errors) == 0,
                 first)
    list_ws = wire.connect(sim, "/1/ws/presets/summaryList", ADMIN)
    first = wire.receive_for(list_ws, 1.0)
    checks.check("summary list: the first frame holds the twelve presets",
                 len(first) == 1
                 and len(m.BroadcastPresetList.FromString(first[0][1]).presets) == 12, first)
    layout_ws = wire.connect(sim, "/1/ws/presets/layout", ADMIN)
    first = wire.receive_for(layout_ws, 1.0)
    checks.check("layout socket: the layout text in a binary frame",
                 len(first) == 1 and json.loads(first[0][1])["sections"][1]["name"] == "frequency",
                 first)
    active_ws = wire.connect(sim, "/1/ws/presets/active", ADMIN)
    first = wire.receive_for(active_ws, 1.0)
    checks.check("active socket: the preset on air first",
                 len(first) == 1 and m.BroadcastPreset.FromString(first[0][1]).guid.value == "1",
                 first)

    heartbeat = wire.Heartbeat(sim, ADMIN)
    heartbeat.beat()
    status, _, _ = sim.get("/1/api/presets/8", ADMIN)
    pushed = wire.receive_beating(errors_ws, 2.0, heartbeat)
    texts = [e.value for f in pushed for e in m.HardWareErrorList.FromString(f[2]).errors]
    checks.check("hardware errors: a failed action's text is pushed",
                 status == 500 and any("did not finish the load of preset 8" in t for t in texts),
                 (status, texts))

    heartbeat.beat()
    status, _, body = sim.request("POST", "/1/api/presets/clone?guid=3", ADMIN)
    clone = json.loads(body) if status == 200 else {}
    checks.check("clone: 200 with the new preset",
                 status == 200 and clone.get("guid") == "13"
                 and preset_name(clone) == "Night low power (copy)", (status, body))
    pushed = wire.receive_beating(list_ws, 1.5, heartbeat)
    checks.check("summary list: the clone is pushed",
                 any(len(m.BroadcastPresetList.FromString(f[2]).presets) == 13 for f in pushed),
                 len(pushed))

    status, _, body = sim.request("POST", "/1/api/presets/clone", ADMIN)
    checks.check("clone without guid: 500 missing query parameter",
                 status == 500 and b"Request missing query parameter: guid." in body,
                 (status, body))
    status, _, body = sim.request("POST", "/1/api/presets/clone?guid=%33", ADMIN)
    checks.check("clone: a percent-escape reaches the host undecoded",
                 status == 500 and b"No preset with guid %33" in body, (status, body))

    update = {"guid": "13", "resources": {"power": {"values": {
        "value": {"doubleValue": 250, "type": "DOUBLE"},
        "units": {"stringValue": "W", "type": "STRING"}}}}}
    status, _, body = sim.request("PUT", "/1/api/presets/update", ADMIN,
                                  json.dumps(update).encode())
    updated = json.loads(body) if status == 200 else {}
    checks.check("update: 200 with the preset as the host now holds it",
                 status == 200 and updated["resources"]["power"]["values"]["value"]["doubleValue"]
                 == 250 and preset_name(updated) == "Night low power (copy)", (status, body))
    status, _, body = sim.request("PUT", "/1/api/presets/update", ADMIN, b"not json")
    checks.check("update with a body that is not JSON: 500 invalid broadcast preset",
                 status == 500 and b"invalid broadcast preset" in body, (status, body))
    status, _, body = sim.request("PUT", "/1/api/presets/update", ADMIN, b'{"resources":{}}')
    checks.check("update with an empty guid: 500 invalid broadcast preset",
                 status == 500 and b"invalid broadcast preset" in body, (status, body))

    heartbeat.beat()
    status, _, body = sim.request("PUT", "/1/api/presets/active", ADMIN, b'{"guid":"5"}')
    checks.check("activate: 200 with the preset now on air",
                 status == 200 and json.loads(body)["guid"] == "5", (status, body))
    pushed = wire.receive_beating(active_ws, 1.5, heartbeat)
    checks.check("active socket: the new preset is pushed",
                 any(m.BroadcastPreset.FromString(f[2]).guid.value == "5" for f in pushed),
                 len(pushed))
    status, _, body = sim.request("PUT", "/1/api/presets/active", ADMIN, b"{guid")
    checks.check("activate with a body that is not JSON: 500 invalid broadcast preset",
                 status == 500 and b"invalid broadcast preset" in body, (status, body))
    status, _, body = sim.request("PUT", "/1/api/presets/active", ADMIN, b"{}")
    checks.check("activate with an empty object: the host gets an empty guid",
                 status == 500 and b"Unable to complete preset action: No preset with guid \n"
                 in body,
                 (status, body))

    # A long wait on the background queue leaves the only I/O thread free.
    answers = {}

    def load():
        answers["load"] = sim.get("/1/api/presets/4", ADMIN)
        answers["loadDone"] = time.time()
    waiting = threading.Thread(target=load)
    waiting.start()
    time.sleep(0.2)
    started = time.time()
    status, _, _ = sim.get("/1/api/presets/layout", ADMIN)
    quick = time.time() - started
    answeredAt = time.time()
    waiting.join(10)
    checks.check("a request during a preset wait is answered at once",
                 status == 200 and quick < 0.5 and answeredAt < answers.get("loadDone", 0),
                 (status, quick))
    checks.check("the waiting load is answered afterwards",
                 answers.get("load", (0,))[0] == 200, answers.get("load"))

    # Two activations at once, from two sessions.
    results = {}

    def activate(session, guid):
        results[guid] = sim.request("PUT", "/1/api/presets/active", session,
                                    json.dumps({"guid": guid}).encode())
        results[guid + "At"] = time.time()
    both = [threading.Thread(target=activate, args=(ADMIN, "4")),
            threading.Thread(target=activate, args=(OTHER, "6"))]
    started = time.time()
    for t in both:
        t.start()
    for t in both:
        t.join(10)
    took = time.time() - started
    checks.check("two activations at once: each answered with its own preset",
                 all(results.get(g, (0,))[0] == 200 and json.loads(results[g][2])["guid"] == g
                     for g in ("4", "6")), results)
    # The wire configuration has one background thread: a wait holds it for its whole length, so
    # the second activation starts when the first has finished.
    finished = sorted(results.get(g + "At", 0) - started for g in ("4", "6"))
    checks.check("two activations at once: one background thread serves them one after the other",
                 0.9 <= finished[0] < 1.9 and finished[1] >= 1.9 and took < 5, finished)

    status, _, body = sim.request("DELETE", "/1/api/presets/13", ADMIN)
    checks.check("delete: 200 with an empty body once deleted", status == 200 and body == b"",
                 (status, body))
    status, _, body = sim.get("/1/api/presets", ADMIN)
    checks.check("delete: the preset is gone",
                 status == 200 and "13" not in [p["guid"] for p in json.loads(body)["presets"]],
                 body[:100])
    status, _, body = sim.request("DELETE", "/1/api/presets/8", ADMIN)
    checks.check("delete that fails while polled: 500 with the host's text as the body",
                 status == 500 and body == b"The hardware did not finish the delete of preset 8",
                 (status, body))

    # The first answer reports the error: no response at all, the connection is closed.
    received, closed = raw_exchange(
        sim, "DELETE /1/api/presets/7 HTTP/1.1\r\nHost: 127.0.0.1\r\n"
             "Cookie: SessionID=" + ADMIN + "\r\n\r\n")
    checks.check("delete refused at once: no answer, the server closes the connection",
                 received == b"" and closed, (received, closed))
    status, _, _ = sim.get("/1/api/presets/active", ADMIN)
    checks.check("after the unanswered delete the server serves as before", status == 200, status)

    status, _, body = sim.get("/1/api/presets", VIEWER)
    checks.check("a read-only user lists the presets", status == 200, (status, body[:100]))
    status, _, body = sim.request("PUT", "/1/api/presets/active", VIEWER, b'{"guid":"2"}')
    checks.check("a read-only user's activation: 403 from the background task", status == 403,
                 (status, body))
    status, _, _ = sim.get("/1/api/presets/active", "no-such-session")
    checks.check("a dead session: 440", status == 440, status)
    status, _, _ = sim.get("/1/api/presets/3", "no-such-session")
    checks.check("a dead session in a waiting handler: 440 from the background", status == 440,
                 status)
    for ws in (errors_ws, list_ws, layout_ws, active_ws):
        ws.close()
    heartbeat.close()
    checks.check("tavel-sim stops cleanly with the sockets closed", sim.stop() == 0)


if __name__ == "__main__":
    sys.exit(wire.main(run, io_threads=1))
