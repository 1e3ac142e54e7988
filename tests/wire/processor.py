#!/usr/bin/python3
"""processor.py TAVEL_SIM LIBKELO REPO: the audio processor's presets over the wire.

Two tavel-sim runs side by side, each with the simulator's processor model alone (short delays
from the fixture) and three background threads, so that the long waits overlap:

- run A: the list and the active preset, the active preset's WebSocket, a preset saved (POST,
  answered once listed), changed (PUT, at once) and deleted (answered once the list shrank), a
  control set; bad input (empty and broken bodies, unknown names and labels, a viewer, no
  session, an unknown preset asked for, a session that ends while its delete waits); a factory
  preset that the processor keeps after a delete (500 after 21 waits of 1 s);
  two activations at once, each answered with its own body after the 10 s of settling, the last
  asked-for preset active, while the only I/O thread keeps serving; a preset without "isUser"
  that breaks the list with "map::at".
- run B: a processor that never reports "updated": the activation is answered 200 with the
  request's body all the same, after 20 waits.

Exit status 0 when every check passed.
"""
import json
import os
import sys
import threading
import time
import urllib.error
import urllib.request

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

ADMIN = "wire-processor-admin"
# An administrator's session that logs out while its delete waits.
LEAVING = "wire-processor-leaving"
VIEWER = "wire-processor-viewer"
FAILURE = "Communication failure, please try again."
DEMO = ["Factory Balanced", "Factory Speech", "Factory Dense", "Factory Gentle",
        "Factory Low Latency", "Morning Show", "Night Jazz"]
KEYS = ["name", "isFactory", "isLessMoreAvailable", "isLessMoreUnvailable", "isLowLatency",
        "isModifiable", "isMultiband", "isTwoband", "isUser"]


class BackgroundSim(wire.Sim):
    """tavel-sim whose background queue has three threads, so that three waits run at once."""

    def write_config(self):
        super().write_config()
        with open(self.path("web-config.json")) as text:
            web = json.load(text)
        for plugin in web["plugins"]:
            if plugin["name"] == "BackgroundTaskQueue":
                plugin["config"]["threads_num"] = 3
        with open(self.path("web-config.json"), "w") as out:
            json.dump(web, out)


def call(sim, method, target, session=ADMIN, body=None, timeout=60):
    """(status, content type, body text, seconds) of one request; the answer may take long."""
    headers = {"Cookie": "SessionID=" + session} if session else {}
    data = body if body is None or isinstance(body, bytes) else json.dumps(body).encode()
    request = urllib.request.Request(sim.url(target), data=data, method=method, headers=headers)
    start = time.time()
    try:
        with urllib.request.urlopen(request, timeout=timeout) as reply:
            answer = (reply.status, reply.headers.get("Content-Type", ""), reply.read())
    except urllib.error.HTTPError as error:
        answer = (error.code, error.headers.get("Content-Type", ""), error.read())
    return answer[0], answer[1], answer[2].decode(errors="replace"), time.time() - start


def in_background(function, *args):
    """Runs function(*args) on a thread; the thread, whose `result` holds what it returned."""
    thread = threading.Thread(target=lambda: setattr(thread, "result", function(*args)))
    thread.result = None
    thread.start()
    return thread


def fixture(sim, name, section):
    return sim.fixture(name, {"models": ["processor"], "processor": section})


def start(sim, section):
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"), fixture(sim, "proc", section)],
              sessions={ADMIN: "admin", VIEWER: "viewer", LEAVING: "admin"}, demo_models=False)


def presets(sim):
    status, _, body, _ = call(sim, "GET", "/1/api/orban")
    return status, json.loads(body).get("presets", []) if status == 200 else body


def check_reads(sim, checks, m, ws):
    status, listed = presets(sim)
    checks.check("list: 200", status == 200, listed)
    checks.check("list: the demo's presets in order", [p["name"] for p in listed] == DEMO, listed)
    checks.check("list: every preset has the nine fields, misspelt one included",
                 all(list(p.keys()) == KEYS for p in listed), listed[:1])
    status, kind, body, _ = call(sim, "GET", "/1/api/orban/active")
    active = json.loads(body)
    checks.check("active: 200 JSON", status == 200 and kind.startswith("application/json"), kind)
    checks.check("active: the factory preset", active.get("name") == "Factory Balanced"
                 and active.get("isFactory") is True and active.get("isUser") is False, body)
    first = m.OrbanPresetName.FromString(ws.recv_data()[1])
    checks.check("ws: the first frame is the active preset",
                 first.name.value == "Factory Balanced" and first.isFactory.value, first)


def check_changes(sim, checks):
    status, kind, body, took = call(sim, "POST", "/1/api/orban/preset",
                                    body={"name": "Drive", "isMultiband": True})
    checks.check("post: 200 JSON with an empty body once listed",
                 (status, body) == (200, "") and kind.startswith("application/json"),
                 (status, kind, body))
    checks.check("post: answered after a wait of 1 s", 0.9 <= took < 5, took)
    _, listed = presets(sim)
    drive = [p for p in listed if p["name"] == "Drive"]
    checks.check("post: the new preset is a user preset", len(drive) == 1
                 and drive[0]["isUser"] and not drive[0]["isFactory"], listed)
    status, kind, body, took = call(sim, "PUT", "/1/api/orban/preset",
                                    body={"name": "Drive", "isLowLatency": True})
    checks.check("put preset: 200 JSON at once", (status, body) == (200, "") and took < 0.9
                 and kind.startswith("application/json"), (status, kind, body, took))
    time.sleep(0.8)
    _, listed = presets(sim)
    checks.check("put preset: the processor keeps the change",
                 any(p["name"] == "Drive" and p["isLowLatency"] for p in listed), listed)
    status, kind, body, took = call(sim, "DELETE", "/1/api/orban/preset/Drive")
    checks.check("delete: 200 plain text, empty, once the list shrank",
                 (status, body) == (200, "") and kind.startswith("text/plain") and took >= 0.9,
                 (status, kind, body, took))
    _, listed = presets(sim)
    checks.check("delete: the list is the demo's again", [p["name"] for p in listed] == DEMO,
                 listed)
    status, _, body, _ = call(sim, "PUT", "/1/api/orban/control", body={"label": "Bass", "value": 4})
    checks.check("control: 200 once the value followed", status == 200, (status, body))
    status, _, body, _ = call(sim, "GET", "/1/api/resource?path=/orban/activePreset/controls/Bass")
    checks.check("control: the value is 4", json.loads(body)["values"]["value"].get("intValue") == 4,
                 body)


def check_bad_input(sim, checks):
    status, kind, body, _ = call(sim, "PUT", "/1/api/orban/active", body=b"")
    checks.check("active, empty body: 500 with the missing form data",
                 status == 500 and kind.startswith("text/plain")
                 and "Request missing form data: orban preset name." in body, (status, body))
    status, _, body, _ = call(sim, "PUT", "/1/api/orban/active", body=b'{"name": ')
    checks.check("active, broken body: 500 with the parser's failure",
                 status == 500 and "Error! Could not parse json file: " in body, (status, body))
    for method, target in (("POST", "/1/api/orban/preset"), ("PUT", "/1/api/orban/preset"),
                           ("PUT", "/1/api/orban/control")):
        status, _, body, _ = call(sim, method, target, body=b"not json")
        checks.check("%s %s, not JSON: 500 Invalid Json" % (method, target),
                     status == 500 and "Invalid Json" in body, (status, body))
    status, _, body, took = call(sim, "DELETE", "/1/api/orban/preset/Nowhere")
    checks.check("delete of an unknown preset: 500 at once", status == 500
                 and "No preset Nowhere" in body and took < 0.9, (status, body, took))
    status, _, body, took = call(sim, "PUT", "/1/api/orban/control",
                                 body={"label": "Treble", "value": 1})
    checks.check("control with an unknown label: 500 at once", status == 500
                 and "/orban/activePreset/controls/Treble" in body and took < 0.9, (status, body))
    status, _, body, _ = call(sim, "POST", "/1/api/orban/preset", body={"name": "Factory Dense"})
    checks.check("post over a factory preset: 500 with the host's refusal",
                 status == 500 and "cannot be changed" in body, (status, body))
    status, _, _, _ = call(sim, "PUT", "/1/api/orban/active", VIEWER, body={"name": "Night Jazz"})
    checks.check("a viewer's activation: 403", status == 403, status)
    status, _, _, _ = call(sim, "DELETE", "/1/api/orban/preset/Night Jazz".replace(" ", "%20"),
                           VIEWER)
    checks.check("a viewer's delete: 403", status == 403, status)
    status, _, _, _ = call(sim, "GET", "/1/api/orban", None)
    checks.check("no session: 440", status == 440, status)


def check_unknown_activation(sim, checks, asked):
    status, kind, body, took = asked.result
    checks.check("an unknown preset asked for: 200 with the body once the processor refused it",
                 (status, body) == (200, '{"name":"Nowhere"}') and took >= 10, asked.result)
    _, _, body, _ = call(sim, "GET", "/1/api/orban/active")
    checks.check("an unknown preset asked for: the active preset stays",
                 json.loads(body).get("name") == "Factory Balanced", body)


def check_session_ending_in_wait(sim, checks):
    """A host failure in the middle of a wait: the session ends while the delete waits."""
    leaving = in_background(call, sim, "DELETE", "/1/api/orban/preset/Factory%20Gentle", LEAVING)
    time.sleep(1.5)
    status, _, _, _ = call(sim, "POST", "/1/api/logout", LEAVING)
    checks.check("logout during the wait", status == 200, status)
    leaving.join(30)
    status, _, body, took = leaving.result
    checks.check("a session that ends in the middle of a wait: 440 at the next read",
                 status == 440 and took < 5, leaving.result)


def check_long_waits(sim, checks, m, ws, heartbeat):
    # Pushes reach this address only while its heartbeat is fresh.
    heartbeat.beat()
    refused = in_background(call, sim, "DELETE", "/1/api/orban/preset/Factory%20Speech")
    first = in_background(call, sim, "PUT", "/1/api/orban/active", ADMIN,
                          b'{"name": "Night Jazz"}')
    time.sleep(0.2)
    second = in_background(call, sim, "PUT", "/1/api/orban/active", ADMIN,
                           b'{"name":"Morning Show"}')
    time.sleep(0.5)
    status, _, _, took = call(sim, "GET", "/1/api/orban")
    checks.check("while three waits run, the only I/O thread answers at once",
                 status == 200 and took < 1.0, (status, took))
    frames = wire.receive_beating(ws, 4, heartbeat)
    names = [m.OrbanPresetName.FromString(data).name.value for _, _, data in frames]
    checks.check("ws: the last asked-for preset is pushed", "Morning Show" in names, names)
    for thread in (first, second, refused):
        thread.join(90)
    status, kind, body, took = first.result
    checks.check("first activation: 200 with its own body after the settling",
                 (status, body) == (200, '{"name": "Night Jazz"}') and took >= 10
                 and kind.startswith("application/json"), first.result)
    status, kind, body, took = second.result
    checks.check("second activation: 200 with its own body",
                 (status, body) == (200, '{"name":"Morning Show"}') and took >= 10, second.result)
    _, _, body, _ = call(sim, "GET", "/1/api/orban/active")
    checks.check("the last activation wins", json.loads(body).get("name") == "Morning Show", body)
    status, kind, body, took = refused.result
    checks.check("a factory preset kept by the processor: 500 after 21 waits",
                 (status, body) == (500, FAILURE) and kind.startswith("text/plain")
                 and 20.5 <= took < 30, refused.result)


def check_broken_preset(sim, checks):
    broken = {"values": {"name": {"stringValue": "Broken", "type": "STRING"},
                         "isFactory": {"boolValue": False, "type": "BOOL"}}}
    status, _, body, _ = call(sim, "POST", "/1/api/resource?path=/orban/presetList/Broken",
                              body=broken)
    checks.check("a preset without isUser is stored", status == 200, (status, body))
    names = [{"stringValue": n, "type": "STRING"} for n in DEMO + ["Broken"]]
    status, _, body, _ = call(sim, "PUT", "/1/api/resource?path=/orban/presetList",
                              body={"values": {"value": {"listValue": names,
                                                         "type": "LIST_VALUE"}}})
    checks.check("and listed", status == 200, (status, body))
    status, kind, body, _ = call(sim, "GET", "/1/api/orban")
    checks.check("list with a preset without isUser: 500 map::at",
                 status == 500 and kind.startswith("text/plain") and "map::at" in body,
                 (status, body))


def never_updated(sim_b, checks):
    """Run B's activation, on a processor that never sets "updated"; returns its answer."""
    start(sim_b, {"applyDelayMs": 300, "updatedDelayMs": 300, "failing": ["updated"]})
    return call(sim_b, "PUT", "/1/api/orban/active", ADMIN, b'{"name":"Night Jazz"}', 90)


def run(sim, checks):
    # The frame made run A an ordinary Sim; it is given the three background threads as well.
    sim.__class__ = BackgroundSim
    m = wire.schema("Processor", sim.repo)
    work_b = os.path.join(sim.work, "run-b")
    os.makedirs(work_b)
    sim_b = BackgroundSim(sim.sim, sim.plugin, sim.repo, work_b, io_threads=1)
    try:
        b = in_background(never_updated, sim_b, checks)
        start(sim, {"applyDelayMs": 300, "updatedDelayMs": 300})
        heartbeat = wire.Heartbeat(sim, ADMIN)
        ws = wire.connect(sim, "/1/ws/orban/active", ADMIN)
        check_reads(sim, checks, m, ws)
        # The processor refuses an unknown preset; the wait goes on beside the next checks.
        asked = in_background(call, sim, "PUT", "/1/api/orban/active", ADMIN,
                              b'{"name":"Nowhere"}')
        check_changes(sim, checks)
        check_bad_input(sim, checks)
        check_session_ending_in_wait(sim, checks)
        asked.join(60)
        check_unknown_activation(sim, checks, asked)
        check_long_waits(sim, checks, m, ws, heartbeat)
        check_broken_preset(sim, checks)
        ws.close()
        heartbeat.close()
        b.join(90)
        status, kind, body, took = b.result
        checks.check("never updated: 200 with the request's body after 20 waits",
                     (status, body) == (200, '{"name":"Night Jazz"}') and 20 <= took < 30
                     and kind.startswith("application/json"), b.result)
    finally:
        sim_b.stop()


if __name__ == "__main__":
    sys.exit(wire.main(run, io_threads=1))
