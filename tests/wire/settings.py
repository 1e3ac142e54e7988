#!/usr/bin/python3
"""settings.py TAVEL_SIM LIBKELO REPO: settings pages, one setting's WebSocket and the SNMP agent
over the wire, on one I/O thread.

With the simulator's settings and SNMP models (short delays from the fixture) and a few pages
seeded by the fixture for the odd cases: the links list the four pages; a page carries its
settings with "scaledInteger", monitors without "toFixedDigits", defaults for the transition and
error state; an empty page and a page of unknown settings answer 200 with no settings; a multiple
choice has no options and an unknown type is left out. A setting written by PUT is pushed over
"/1/ws/settings" while it transitions and when it settles, and a setting that the host refuses
shows its error message. The SNMP PUT is answered only after the agent applied the values, and at
once when nothing changes; while it waits, another request is served on the same (only) I/O
thread. Trap receivers: the host's limits, the URL's guid, delete. Exit status 0 when every check
passed.
"""
import json
import os
import sys
import threading
import time

import websocket  # Debian's python3-websocket

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

ADMIN = "wire-settings-admin"
VIEWER = "wire-settings-viewer"


def entry(setting, monitor, label, kind, options=None):
    fields = {"settingResource": {"string": setting}, "monitorResource": {"string": monitor},
              "label": {"string": label}, "type": {"string": kind},
              "dependentValidationLabel": {"string": ""}}
    if options is not None:
        fields["options"] = {"map": {k: {"string": v} for k, v in options.items()}}
    return {"map": fields}


def page(name, entries):
    return {"settings": {"list": entries}, "includeAsDynamicSetting": {"bool": False},
            "label": {"string": name}, "icon": {"string": name},
            "collectionName": {"string": name}}


FIXTURE = {
    "models": ["settings", "snmp"],
    "settings": {"transitionMs": 1500, "failures": {"/settings/rf/frequency": "PLL did not lock"}},
    "snmp": {"applyDelayMs": 1500},
    "resources": {
        "/collection/empty": page("empty", []),
        "/collection/ghosts": page("ghosts", [entry("/nowhere/a", "", "A", "BASIC"),
                                              entry("/nowhere/b", "", "B", "BASIC")]),
        "/collection/odd": page("odd", [
            entry("/odd/choices", "", "Choices", "MULTI_SELECT", {"a": "A"}),
            entry("/odd/slider", "", "Slider", "SLIDER")]),
        "/odd/choices": {"value": {"string": "a"}},
        "/odd/slider": {"value": {"int": 3}, "transitioning": {"bool": True},
                        "errorOccurred": {"bool": False}, "errorMessage": {"string": "stale"}},
    },
}


def get_json(sim, target, session=ADMIN):
    status, _, body = sim.get(target, session)
    return status, (json.loads(body) if status == 200 and body else body)


class Heartbeat:
    """The ping socket: keeps this address pushable."""

    def __init__(self, sim):
        self.ws = websocket.create_connection(sim.ws_url("/1/ws/ping"), timeout=5,
                                              cookie="SessionID=" + ADMIN)
        self.ws.recv_data()
        self.last = time.time()

    def beat(self):
        if time.time() - self.last >= 1.0:
            self.ws.send("ping")
            self.ws.recv_data()
            self.last = time.time()


def frames_until(ws, heartbeat, m, seconds, done):
    """QuoSetting frames until done(last) or `seconds` pass."""
    settings = []
    deadline = time.time() + seconds
    while time.time() < deadline:
        heartbeat.beat()
        for _, data in wire.receive_for(ws, 0.3):
            settings.append(m.QuoSetting.FromString(data))
        if settings and done(settings[-1]):
            break
    return settings


def check_pages(sim, checks):
    status, links = get_json(sim, "/1/api/settings/collections/links")
    names = [link["collectionName"] for link in links.get("links", [])] if status == 200 else []
    checks.check("links: the four pages of the demo", sorted(names) ==
                 ["audio", "network", "rds", "rfOutput"], (status, links))

    status, rf = get_json(sim, "/1/api/settingcollections/rfOutput")
    settings = {s["label"]: s for s in rf.get("settings", [])} if status == 200 else {}
    power = settings.get("Output power", {})
    checks.check("rf page: three settings", len(settings) == 3, rf)
    values = power.get("settingResource", {}).get("resource", {}).get("values", {})
    checks.check("rf page: value, units and scaledInteger",
                 values.get("value", {}).get("intValue") == 1000 and
                 values.get("units", {}).get("stringValue") == "W" and
                 values.get("scaledInteger", {}).get("boolValue") is True, power)
    checks.check("rf page: guid, type and defaults",
                 power.get("guid") == "settings-rf-outputPower" and power.get("type") == "MONITORED"
                 and power.get("transitioning") is False and power.get("progress") == 100
                 and power.get("errorOccurred") is False and power.get("errorMessage") == "", power)
    checks.check("rf page: limits", power.get("settingResource", {}).get("validations") ==
                 {"minValue": 0, "maxValue": 1100, "required": True, "step": 10}, power)
    monitor = settings.get("Frequency", {}).get("monitorResource", {})
    checks.check("rf page: a monitor has scaledInteger and no toFixedDigits",
                 monitor.get("path") == "/settings/monitors/rf/frequency" and
                 monitor.get("values", {}).get("scaledInteger", {}).get("boolValue") is True and
                 "toFixedDigits" not in monitor.get("values", {}), monitor)
    checks.check("rf page: a setting keeps its toFixedDigits",
                 "toFixedDigits" in settings.get("Frequency", {}).get("settingResource", {})
                 .get("resource", {}).get("values", {}), settings.get("Frequency"))
    checks.check("rf page: no monitor, no monitorResource",
                 "monitorResource" not in settings.get("RF on", {"monitorResource": 1}), settings)

    for name in ("empty", "ghosts"):
        status, body = get_json(sim, "/1/api/settingcollections/" + name)
        checks.check("%s page: 200 with the name and no settings" % name,
                     status == 200 and body == {"name": name}, (status, body))

    status, odd = get_json(sim, "/1/api/settingcollections/odd")
    odd_settings = odd.get("settings", []) if status == 200 else []
    checks.check("odd page: both settings", len(odd_settings) == 2, odd)
    if len(odd_settings) == 2:
        choices, slider = odd_settings
        checks.check("odd page: a multiple choice has no options",
                     "options" not in choices["settingResource"]["resource"]["values"]
                     and choices.get("type") == "MULTI_SELECT", choices)
        checks.check("odd page: an unknown type is left out", "type" not in slider, slider)
        checks.check("odd page: transitioning without progress shows 100",
                     slider.get("transitioning") is True and slider.get("progress") == 100, slider)
        checks.check("odd page: no error, empty message",
                     slider.get("errorOccurred") is False and slider.get("errorMessage") == "",
                     slider)

    status, _, body = sim.request("GET", "/1/api/settingcollections/nothing", ADMIN)
    checks.check("unknown page: 500 with the host's text", status == 500 and
                 b"/collection/nothing" in body, (status, body))


def put_setting(sim, guid, value_json, session=ADMIN):
    body = {"settingResource": {"resource": {"values": {"set_value": value_json}}}}
    return sim.request("PUT", "/1/api/settings/" + guid, session, body)


def check_setting_push(sim, checks):
    m = wire.schema("Settings", sim.repo)
    heartbeat = Heartbeat(sim)
    ws = websocket.create_connection(sim.ws_url("/1/ws/settings?id=settings-rf-outputPower"),
                                     timeout=5, cookie="SessionID=" + ADMIN)
    first = frames_until(ws, heartbeat, m, 3, lambda s: True)
    checks.check("ws: a first frame", len(first) == 1, first)
    if first:
        one = first[0]
        checks.check("ws: only the value, no guid, label or transition",
                     one.settingResource.resource.values["value"].intValue.value == 1000 and
                     not one.HasField("guid") and not one.HasField("label") and
                     not one.HasField("transitioning") and
                     list(one.settingResource.resource.values.keys()) == ["value"], one)

    status, _, body = put_setting(sim, "settings-rf-outputPower", {"type": "INT32", "intValue": 1050})
    answer = json.loads(body) if status == 200 else {}
    checks.check("put setting: 200 with the host's resource",
                 status == 200 and answer["values"]["set_value"]["intValue"] == 1050, (status, body))
    pushed = frames_until(ws, heartbeat, m, 6,
                          lambda s: s.HasField("transitioning") and not s.transitioning.value)
    moving = [s for s in pushed if s.transitioning.value]
    checks.check("ws: pushed while it transitions, with progress",
                 len(moving) >= 2 and any(s.progress.value > 0 for s in moving),
                 [str(s) for s in pushed])
    checks.check("ws: settles on the new value",
                 bool(pushed) and not pushed[-1].transitioning.value and
                 pushed[-1].settingResource.resource.values["value"].intValue.value == 1050,
                 [str(s) for s in pushed])
    ws.close()

    ws = websocket.create_connection(sim.ws_url("/1/ws/settings?id=settings-rf-frequency"),
                                     timeout=5, cookie="SessionID=" + ADMIN)
    frames_until(ws, heartbeat, m, 3, lambda s: True)
    put_setting(sim, "settings-rf-frequency", {"type": "INT32", "intValue": 10000})
    pushed = frames_until(ws, heartbeat, m, 6, lambda s: s.errorOccurred.value)
    checks.check("ws: a refused setting shows the host's error message",
                 bool(pushed) and pushed[-1].errorOccurred.value and
                 pushed[-1].errorMessage.value == "PLL did not lock" and
                 pushed[-1].settingResource.resource.values["value"].intValue.value == 9850,
                 [str(s) for s in pushed])
    ws.close()
    _, rf = get_json(sim, "/1/api/settingcollections/rfOutput")
    frequency = [s for s in rf.get("settings", []) if s["label"] == "Frequency"]
    checks.check("rf page: the refused setting's error", frequency and
                 frequency[0]["errorOccurred"] is True and
                 frequency[0]["errorMessage"] == "PLL did not lock", frequency)

    status, _, body = sim.request("PUT", "/1/api/settings/settings-rf-on", ADMIN,
                                  {"settingResource": {"resource": {"values": {}}}})
    checks.check("put setting without set_value: 500 with the check's text",
                 status == 500 and b"key not found: set_value" in body, (status, body))
    status, _, _ = put_setting(sim, "settings-rf-on", {"type": "BOOL", "boolValue": False},
                               VIEWER)
    checks.check("put setting as read-only user: 403", status == 403, status)


def timed_put(sim, body, result):
    start = time.time()
    status, _, reply = sim.request("PUT", "/1/api/snmp_settings", ADMIN, body)
    result.update(status=status, body=reply, seconds=time.time() - start, end=time.time())


def check_snmp(sim, checks):
    status, snmp = get_json(sim, "/1/api/snmp_settings")
    checks.check("snmp get: communities never in the single-valued fields",
                 status == 200 and snmp["readCommunityValue"] == "" and
                 snmp["writeCommunityValue"] == "" and snmp["snmpVersion"] == 2 and
                 snmp["readCommunities"] == ["public"], (status, snmp))

    unchanged = {"agentPort": 161, "readCommunities": ["public"], "writeCommunities": ["private"],
                 "trapsEnabled": True, "trapSettings": [{"guid": "trap-1"}]}
    result = {}
    timed_put(sim, unchanged, result)
    checks.check("snmp put unchanged: 200 after one pass, without a wait",
                 result["status"] == 200 and result["seconds"] < 0.9, result)

    changed = dict(unchanged, agentPort=1161, readCommunities=["public", "monitor"])
    result = {}
    waiter = threading.Thread(target=timed_put, args=(sim, changed, result))
    waiter.start()
    time.sleep(0.3)
    start = time.time()
    status, during = get_json(sim, "/1/api/snmp_settings")
    served = time.time()
    checks.check("snmp put pending: another request is served on the only I/O thread",
                 status == 200 and served - start < 0.9 and waiter.is_alive(),
                 (status, served - start))
    checks.check("snmp put pending: the host has not applied it yet",
                 status == 200 and during["agentPort"] == 161, during)
    waiter.join(15)
    checks.check("snmp put: 200 only after the agent applied the values",
                 result.get("status") == 200 and result.get("seconds", 0) >= 1.4 and
                 result.get("body") == b"", result)
    _, after = get_json(sim, "/1/api/snmp_settings")
    checks.check("snmp get: the applied values", after.get("agentPort") == 1161 and
                 after.get("readCommunities") == ["public", "monitor"], after)
    status, _, _ = sim.request("PUT", "/1/api/snmp_settings", VIEWER, unchanged)
    checks.check("snmp put as read-only user: 403", status == 403, status)

    status, _, body = sim.request("POST", "/1/api/snmp_trap_settings", ADMIN,
                                  {"trapReceiver": "10.0.0.9", "trapReceiverPort": 99999,
                                   "trapType": "INFORM_V2C"})
    added = json.loads(body) if status == 200 else {}
    checks.check("trap post: a port out of limits is the host's to refuse; the new receiver",
                 status == 200 and added.get("trapReceiverPort") == 99999 and
                 added.get("guid") == "trap-2" and added.get("trapType") == "INFORM_V2C",
                 (status, body))
    status, _, body = sim.request("PUT", "/1/api/snmp_trap_settings/trap-2", ADMIN,
                                  {"guid": "trap-9", "trapReceiver": "10.0.0.10"})
    changed_trap = json.loads(body) if status == 200 else {}
    checks.check("trap put: sent with the URL's guid", status == 200 and
                 changed_trap.get("guid") == "trap-2" and
                 changed_trap.get("trapReceiver") == "10.0.0.10", (status, body))
    status, listed = get_json(sim, "/1/api/snmp_trap_settings_list")
    checks.check("trap list: both receivers, in order", status == 200 and
                 [t["guid"] for t in listed["trapSettings"]] == ["trap-1", "trap-2"], listed)
    status, _, body = sim.request("DELETE", "/1/api/snmp_trap_settings/trap-2", ADMIN)
    checks.check("trap delete: 200 without body", status == 200 and body == b"", (status, body))
    status, listed = get_json(sim, "/1/api/snmp_trap_settings_list")
    checks.check("trap list: the deleted receiver is gone", status == 200 and
                 [t["guid"] for t in listed["trapSettings"]] == ["trap-1"], listed)
    status, _, body = sim.request("POST", "/1/api/snmp_trap_settings", ADMIN, b"")
    checks.check("trap post without body: 500 missing form data",
                 status == 500 and b"Request missing form data: body." in body, (status, body))


def run(sim, checks):
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"),
                        sim.fixture("settings", FIXTURE)],
              sessions={ADMIN: "admin", VIEWER: "viewer"}, demo_models=False)
    check_pages(sim, checks)
    check_setting_push(sim, checks)
    check_snmp(sim, checks)


if __name__ == "__main__":
    sys.exit(wire.main(run, io_threads=1))
