#!/usr/bin/python3
"""remoteio.py TAVEL_SIM LIBKELO REPO: remote inputs, outputs, analog outputs and site controls
over the wire, with the demo's two I/O threads.

With the simulator's remote I/O model: the lists, one rule by its guid, the actions of inputs
and outputs; a rule, an analog output and a site control saved, each answered only once the host
has settled it; a site control created and deleted; latches reset. Bad input: a body that is not
JSON, unknown guids, a guid too short for its word, a read-only user, no session.

A save waits on its request's own I/O thread. With the settle delay at 5 s, twice (the save on
each of the two threads): a client whose connection is on the other I/O thread is served at once
during the wait. New connections are accepted by the first I/O thread and handed to the threads
in turn: while the save holds the first thread none is accepted until it ends; while it holds
the second, those given to the first are served at once and the others only after the save. The
figures are printed. Exit status 0 when every check passed.
"""
import http.client
import json
import os
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

ADMIN = "wire-remoteio-admin"
VIEWER = "wire-remoteio-viewer"
SETTLE_MS = 600


def fixture(settle_ms, resources=None):
    return {"models": ["remoteio"], "remoteio": {"settleDelayMs": settle_ms},
            "resources": resources or {}}


# A rule with a name and a severity but no "log": it has no user-defined part.
NAMED_RULE = {"guid": {"string": "input3"}, "value": {"string": "RF off"},
              "set_value": {"int": 3}, "label": {"string": "Active low"},
              "polarityMask": {"int": 2}, "level": {"bool": False},
              "transitioning": {"bool": False}, "name": {"string": "Half named"},
              "severity": {"int": 1}}
# Input actions without labels, their level names all there.
NO_LABELS = {"channelId": {"list": []}, "label": {"list": []}, "polarityMask": {"list": []},
             "value": {"list": [{"string": "level %d" % i} for i in range(8)]}}


def call(sim, method, target, body=None, session=ADMIN):
    data = body.encode() if isinstance(body, str) else (
        None if body is None else json.dumps(body).encode())
    status, headers, raw = sim.request(method, target, session, data,
                                       headers={"Content-Type": "application/json"})
    try:
        parsed = json.loads(raw) if raw else None
    except ValueError:
        parsed = raw
    return status, headers, parsed, raw


def timed(sim, method, target, body=None):
    started = time.time()
    status, _, parsed, raw = call(sim, method, target, body)
    return status, parsed, raw, time.time() - started


def check_reads(sim, checks):
    status, _, inputs, _ = call(sim, "GET", "/1/api/remote-io/rules/inputs")
    rules = inputs.get("rules", []) if status == 200 else []
    checks.check("input rules: four, each an INPUT", len(rules) == 4 and
                 all(r["type"] == "INPUT" for r in rules), inputs)
    first = rules[0] if rules else {}
    checks.check("input rule: numbers as text", first.get("action", {}).get("setValue") == "1" and
                 first.get("trigger", {}).get("polarityMask") == "2", first)
    custom = [r for r in rules if "custom" in r]
    checks.check("input rules: only the one with name, severity and log has custom",
                 len(custom) == 1 and custom[0]["custom"] ==
                 {"name": "Door open", "severity": 2, "log": True, "canBeDeleted": True}, rules)
    named = [r for r in rules if r["guid"] == "input3"]
    checks.check("input rules: a rule with name and severity but no log has no custom",
                 len(named) == 1 and "custom" not in named[0], named)
    status, _, outputs, _ = call(sim, "GET", "/1/api/remote-io/rules/outputs")
    checks.check("output rules: two OUTPUTs", status == 200 and
                 [r["type"] for r in outputs["rules"]] == ["OUTPUT", "OUTPUT"], outputs)
    status, _, rule, _ = call(sim, "GET", "/1/api/remote-io/rules/output2")
    checks.check("one rule: output2 read from /remoteio/output/2", status == 200 and
                 rule.get("guid") == "output2" and rule.get("type") == "OUTPUT", (status, rule))
    status, _, actions, _ = call(sim, "GET", "/1/api/remote-io/actions/inputs")
    listed = actions.get("actions", []) if status == 200 else []
    unused = listed[0]["triggers"]["triggers"] if listed else []
    checks.check("input actions: Unused first, blank levels left out",
                 [t["label"] for t in unused] == ["Unused", "Active low", "Active high"] and
                 unused[0]["polarityMask"] == "0" and unused[2]["polarityMask"] == "2", actions)
    presets = listed[3]["triggers"]["triggers"] if len(listed) > 3 else []
    checks.check("input actions: eight levels with the eight bits",
                 [t["polarityMask"] for t in presets] ==
                 ["1", "2", "4", "8", "16", "32", "64", "128"], listed)
    status, _, actions, _ = call(sim, "GET", "/1/api/remote-io/actions/outputs")
    checks.check("output actions: Open 0 and Closed 1 for every output", status == 200 and all(
        [(t["label"], t["polarityMask"]) for t in a["triggers"]["triggers"]][-2:] ==
        [("Open", "0"), ("Closed", "1")] for a in actions["actions"]), actions)
    status, _, analogs, _ = call(sim, "GET", "/1/api/remote-io/analogOutputs")
    checks.check("analog outputs: two, with setValue", status == 200 and
                 [a["setValue"] for a in analogs["analogOutputs"]] == [750, 20], analogs)
    status, _, controls, _ = call(sim, "GET", "/1/api/remote-io/siteControls")
    checks.check("site controls: two, inputs as triggers", status == 200 and
                 [c["input1"] for c in controls["siteControls"]] ==
                 [{"polarityMask": "1"}, {"polarityMask": "1"}], controls)


def check_saves(sim, checks):
    rule = {"guid": "input2", "level": True, "action": {"value": "RF off", "setValue": "2"},
            "trigger": {"label": "Active high", "polarityMask": "2"}}
    status, saved, raw, took = timed(sim, "PUT", "/1/api/remote-io/rules/ignored", rule)
    checks.check("rule save: answered with the settled rule", status == 200 and
                 saved.get("action", {}).get("value") == "RF off" and saved.get("level") is True
                 and saved.get("type") == "INPUT", (status, raw))
    checks.check("rule save: answered only after the settle delay (%.2f s)" % took,
                 took >= SETTLE_MS / 1000.0 * 0.9, took)
    status, _, again, _ = call(sim, "GET", "/1/api/remote-io/rules/input2")
    checks.check("rule save: read back", again.get("action", {}).get("value") == "RF off", again)
    output = {"guid": "output1", "level": False, "action": {"value": "Summary alarm",
                                                           "setValue": "1"},
              "trigger": {"label": "Open", "polarityMask": "0"}}
    status, saved, raw, _ = timed(sim, "PUT", "/1/api/remote-io/rules/input1", output)
    checks.check("rule save: an answer guid without the word input is converted as an OUTPUT",
                 status == 200 and saved.get("type") == "OUTPUT" and
                 saved.get("guid") == "output1" and saved.get("level") is False, (status, raw))

    output = {"guid": "ao2", "label": "Reflected", "maxValue": 1000, "setValue": 40}
    status, saved, raw, took = timed(sim, "PUT", "/1/api/remote-io/analogOutputs", output)
    checks.check("analog save: settled value and label", status == 200 and
                 saved.get("value") == 40 and saved.get("label") == "Reflected" and
                 took >= SETTLE_MS / 1000.0 * 0.9, (status, raw, took))
    status, _, _, raw = call(sim, "PUT", "/1/api/remote-io/analogOutputs",
                             dict(output, setValue=5000))
    checks.check("analog save beyond maxValue: the host's refusal as 500",
                 status == 500 and b"takes 0 to 1000" in raw, (status, raw))

    control = {"guid": "ignored", "name": "Mains lost", "severity": 3, "delay": 2,
               "latch": True, "log": True, "input1": {"polarityMask": "4"},
               "input2": {"polarityMask": "8"}, "logicalOperator": 1, "logic1": True,
               "logic2": False, "state": True}
    status, created, raw, took = timed(sim, "POST", "/1/api/remote-io/siteControls", control)
    guid = created.get("guid") if status == 200 else None
    checks.check("site control create: the host's guid, settled", status == 200 and
                 guid == "sc3" and created.get("input2") == {"polarityMask": "8"} and
                 created.get("canBeDeleted") is True, (status, raw))
    status, updated, raw, _ = timed(sim, "PUT", "/1/api/remote-io/siteControls",
                                    dict(control, guid="sc3", name="Mains gone"))
    checks.check("site control update: settled with the new name",
                 status == 200 and updated.get("name") == "Mains gone", (status, raw))
    status, headers, _, raw = call(sim, "PUT", "/1/api/remote-io/siteControls/reset", "{}")
    checks.check("reset: 200, JSON, no body", status == 200 and raw == b"" and
                 headers.get("Content-Type", "").startswith("application/json"), (status, raw))
    status, _, controls, _ = call(sim, "GET", "/1/api/remote-io/siteControls")
    states = {c["guid"]: c["state"] for c in controls["siteControls"]}
    checks.check("reset: latched controls cleared", states.get("sc1") is False and
                 states.get("sc3") is False, states)
    status, headers, _, raw = call(sim, "DELETE", "/1/api/remote-io/siteControls/sc3")
    checks.check("delete: the confirmation text once gone", status == 200 and
                 raw == b"Successfully deleted Site Control." and
                 headers.get("Content-Type", "").startswith("application/json"), (status, raw))
    status, _, controls, _ = call(sim, "GET", "/1/api/remote-io/siteControls")
    checks.check("delete: no longer listed", [c["guid"] for c in controls["siteControls"]] ==
                 ["sc1", "sc2"], controls)


def check_bad_input(sim, checks):
    status, _, _, raw = call(sim, "PUT", "/1/api/remote-io/rules/input1", "this is not json")
    checks.check("rule save, body not JSON: defaults sent, the host refuses the empty guid",
                 status == 500 and b"Unknown remote I/O rule" in raw, (status, raw))
    status, _, _, raw = call(sim, "PUT", "/1/api/remote-io/rules/x", {"guid": "input99"})
    checks.check("rule save, unknown guid: 500", status == 500 and b"input/99" in raw,
                 (status, raw))
    status, _, _, raw = call(sim, "GET", "/1/api/remote-io/rules/input77")
    checks.check("rule read, unknown guid: 500 from the host", status == 500 and
                 b"/remoteio/input/77" in raw, (status, raw))
    status, _, _, raw = call(sim, "GET", "/1/api/remote-io/rules/out")
    checks.check("rule read, guid shorter than its word: 500 out of range",
                 status == 500 and b"basic_string::replace" in raw, (status, raw))
    status, _, _, raw = call(sim, "DELETE", "/1/api/remote-io/siteControls/nothing")
    checks.check("delete, unknown guid: 500", status == 500 and b"siteControl/nothing" in raw,
                 (status, raw))
    status, _, _, raw = call(sim, "DELETE", "/1/api/remote-io/siteControls/sc1")
    checks.check("delete, a control that cannot be deleted: 500",
                 status == 500 and b"cannot be deleted" in raw, (status, raw))
    status, _, _, raw = call(sim, "PUT", "/1/api/remote-io/siteControls", "[1,")
    checks.check("site control save, body not JSON: the empty guid is refused", status == 500,
                 (status, raw))
    status, _, _, _ = call(sim, "PUT", "/1/api/remote-io/rules/x", {"guid": "input1"}, VIEWER)
    checks.check("rule save by a read-only user: 403", status == 403, status)
    status, _, _, _ = call(sim, "GET", "/1/api/remote-io/rules/inputs", session="nobody")
    checks.check("no such session: 440", status == 440, status)


def kept_connection(sim):
    connection = http.client.HTTPConnection("127.0.0.1", sim.http_port, timeout=20)
    connection.request("GET", "/1/api/remote-io/analogOutputs",
                       headers={"Cookie": "SessionID=" + ADMIN})
    connection.getresponse().read()
    return connection


def wait_round(sim, value, shift):
    """One 5 s save, a kept connection opened just before it and four new connections opened
    together during it: (kept times, new times, save answer). `shift` throwaway connections come
    first, which moves the save to the other I/O thread of the round robin."""
    for _ in range(shift):
        kept_connection(sim).close()
    # Connections are handed to the I/O threads in turn: the save's connection, the next one,
    # goes to the other thread than this one.
    before = kept_connection(sim)
    save = {}

    def run_save():
        save["result"] = timed(sim, "PUT", "/1/api/remote-io/analogOutputs",
                               {"guid": "ao1", "label": "Forward power", "maxValue": 1000,
                                "setValue": value})

    saver = threading.Thread(target=run_save)
    saver.start()
    time.sleep(0.5)  # the save is now waiting on its I/O thread
    kept = []
    for _ in range(5):
        started = time.time()
        before.request("GET", "/1/api/remote-io/siteControls",
                       headers={"Cookie": "SessionID=" + ADMIN})
        answer = before.getresponse()
        answer.read()
        kept.append((answer.status, time.time() - started))
        time.sleep(0.2)
    fresh = [None] * 4

    def one_fresh(index):
        fresh[index] = timed(sim, "GET", "/1/api/remote-io/rules/inputs")

    workers = [threading.Thread(target=one_fresh, args=(i,)) for i in range(4)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    saver.join()
    before.close()
    return kept, [(status, took) for status, _, _, took in fresh], save["result"]


def check_wait_on_io_thread(sim, checks):
    """Two 5 s saves, one on each of the demo's two I/O threads, and clients meanwhile."""
    status, _, actions, raw = call(sim, "GET", "/1/api/remote-io/actions/inputs")
    checks.check("input actions without labels: none, although the names are there",
                 status == 200 and raw == b"{}", (status, raw))
    rounds = [wait_round(sim, 800, 0), wait_round(sim, 810, 1)]
    stalled_rounds = 0
    for number, (kept, fresh, (status, saved, _, took)) in enumerate(rounds, 1):
        checks.check("round %d: the 5 s save is answered after the delay (%.2f s)" % (number, took),
                     status == 200 and saved.get("value") in (800, 810) and took >= 4.5,
                     (status, took))
        checks.check("round %d: a kept connection on the other I/O thread is served at once"
                     % number, all(s == 200 and t < 1.0 for s, t in kept), kept)
        checks.check("round %d: every new connection is answered" % number,
                     all(s == 200 for s, _ in fresh), fresh)
        quick = [round(t, 3) for s, t in fresh if t < 1.0]
        slow = [round(t, 2) for s, t in fresh if t >= 1.0]
        stalled_rounds += 1 if not quick else 0
        print("figures, round %d: kept connection %s s; new connections served at once %s s, "
              "only after the save %s s; the save took %.2f s"
              % (number, [round(t, 3) for _, t in kept], quick, slow, took), flush=True)
    # The acceptor runs on the first I/O thread: while a save holds it, no new connection is
    # taken; while a save holds the second, new connections given to the first are served.
    checks.check("one round stalls every new connection (the save holds the acceptor's thread), "
                 "the other serves some at once", stalled_rounds == 1,
                 [[t for _, t in fresh] for _, fresh, _ in rounds])


def run(sim, checks):
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"),
                        sim.fixture("remoteio", fixture(SETTLE_MS,
                                                        {"/remoteio/input/3": NAMED_RULE}))],
              sessions={ADMIN: "admin", VIEWER: "viewer"}, demo_models=False)
    check_reads(sim, checks)
    check_saves(sim, checks)
    check_bad_input(sim, checks)
    sim.stop()
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"),
                        sim.fixture("remoteio-slow", fixture(
                            5000, {"/remoteio/inputs/actions": NO_LABELS}))],
              sessions={ADMIN: "admin", VIEWER: "viewer"}, demo_models=False)
    check_wait_on_io_thread(sim, checks)


if __name__ == "__main__":
    sys.exit(wire.main(run, io_threads=2))
