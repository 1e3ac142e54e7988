#!/usr/bin/python3
"""schedule.py TAVEL_SIM LIBKELO REPO: the preset schedule over the wire.

With the simulator's preset and scheduler models (the hardware confirms a change after 200 ms):
on a fresh start the day's activations fail until the rules were listed once; the list of rules
names each rule's preset; one rule; a day's activations and a period's counts worked out from the
rules, with the presets' names; the conflicts; missing query keys; a rule added, changed and
deleted, each answered with the whole new schedule once the hardware confirmed it; a rule with
an impossible time refused by the hardware (500, no body, the flag cleared); a rule id or preset
guid that is not a number refused before the host is asked; "/1/ws/schedules" pushing the new
schedule after a change. Exit status 0 when every check passed.
"""
import json
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

ADMIN = "wire-schedule-admin"
FIXTURE = {"models": ["presets", "scheduler"],
           "users": [{"name": "admin", "password": "wire-schedule-secret", "role": "administrator"}],
           "scheduler": {"confirmDelayMs": 200}}

RULE = {"startMonth": 1, "startDay": 1, "endMonth": 12, "endDay": 31,
        "startTime": "12:00:00", "endTime": "13:00:00", "repeatsEverySeconds": 1800,
        "wednesday": True, "broadcastPreset": {"guid": "4"}, "selfDelete": False}


def schedules(body):
    return json.loads(body).get("schedules", [])


def run(sim, checks):
    sim.start(fixtures=[sim.fixture("schedule", FIXTURE)], sessions={ADMIN: "admin"})
    m = wire.schema("Presets", sim.repo)

    status, _, body = sim.get("/1/api/schedules/day?date=2026-11-23", ADMIN)
    checks.check("day on a fresh start: 500, the preset list is not prepared",
                 status == 500 and b"presetList is not prepared, make sure "
                 b"ScheduleHelperClass::getPresetList is called first" in body, (status, body))

    status, _, body = sim.get("/1/api/schedules", ADMIN)
    rules = schedules(body) if status == 200 else []
    checks.check("list: 200 with the four rules in key order",
                 status == 200 and [r["guid"] for r in rules] == ["1", "2", "3", "4"],
                 (status, body[:300]))
    first = rules[0] if rules else {}
    checks.check("list: a rule with its days and its preset's sections",
                 first.get("monday") is True and first.get("sunday") is False
                 and first.get("startTime") == "06:00:00"
                 and first.get("broadcastPreset", {}).get("guid") == "1"
                 and "presetName" in first.get("broadcastPreset", {}).get("resources", {}), first)

    status, _, body = sim.get("/1/api/schedules/day?date=2026-11-23", ADMIN)
    activations = json.loads(body).get("activations", []) if status == 200 else []
    checks.check("day (a Monday): the activations in time order with their preset names",
                 status == 200 and [(a["scheduleId"], a.get("presetName")) for a in activations]
                 == [("1", "Morning FM"), ("4", "News hour"), ("2", "Night low power")]
                 and activations[0]["dateTime"] == "2026-11-23T06:00:00Z", (status, body))

    status, _, body = sim.get("/1/api/schedules/summary?startDate=2026-11-21&endDate=2026-11-22",
                              ADMIN)
    summaries = json.loads(body).get("summaries", []) if status == 200 else []
    checks.check("summary of a weekend: rule 3 three times a day, named",
                 status == 200 and [(s["date"], s["scheduleId"], s["activationCount"],
                                     s.get("presetName")) for s in summaries]
                 == [("2026-11-21", "3", 3, "Weekend jazz"), ("2026-11-22", "3", 3, "Weekend jazz")],
                 (status, body))

    status, _, body = sim.get("/1/api/schedules/summary?startDate=2026-11-21", ADMIN)
    checks.check("summary without endDate: 500 missing query parameter",
                 status == 500 and b"Request missing query parameter: endDate." in body, body)
    status, _, body = sim.get("/1/api/schedules/summary?endDate=2026-11-21", ADMIN)
    checks.check("summary without either: startDate is named first",
                 status == 500 and b"Request missing query parameter: startDate." in body, body)
    status, _, body = sim.get("/1/api/schedules/day", ADMIN)
    checks.check("day without date: 500 missing query parameter",
                 status == 500 and b"Request missing query parameter: date." in body, body)

    status, _, body = sim.get("/1/api/schedules/conflicts", ADMIN)
    conflicts = json.loads(body)["values"]["value"].get("listValue", []) if status == 200 else []
    checks.check("conflicts: rules 1 and 4 overlap on Mondays",
                 status == 200 and len(conflicts) == 1
                 and conflicts[0]["mapValue"]["firstRuleId"]["stringValue"] == "1"
                 and conflicts[0]["mapValue"]["secondRuleId"]["stringValue"] == "4", body)

    status, _, body = sim.get("/1/api/schedules/2", ADMIN)
    checks.check("one rule: 200 with its preset", status == 200
                 and json.loads(body)["broadcastPreset"]["guid"] == "3", (status, body))
    status, _, body = sim.get("/1/api/schedules/77", ADMIN)
    checks.check("an unknown rule: 500 map::at", status == 500 and b"map::at" in body,
                 (status, body))

    ws = wire.connect(sim, "/1/ws/schedules", ADMIN)
    heartbeat = wire.Heartbeat(sim, ADMIN)
    frames = wire.receive_for(ws, 1.0)
    checks.check("schedule socket: the four rules first",
                 len(frames) == 1 and len(m.PresetScheduleList.FromString(frames[0][1]).schedules)
                 == 4, frames)

    heartbeat.beat()
    started = time.time()
    status, _, body = sim.request("POST", "/1/api/schedules", ADMIN, json.dumps(RULE).encode())
    took = time.time() - started
    added = schedules(body) if status == 200 else []
    checks.check("add: 200 with the whole new schedule",
                 status == 200 and [r["guid"] for r in added] == ["1", "2", "3", "4", "5"]
                 and added[4]["wednesday"] is True and added[4]["broadcastPreset"]["guid"] == "4",
                 (status, body[:300]))
    checks.check("add: answered after the confirmation and the 2 s settling", 2.0 <= took < 8, took)
    pushed = wire.receive_beating(ws, 1.0, heartbeat)
    checks.check("schedule socket: the new schedule is pushed",
                 any(len(m.PresetScheduleList.FromString(f[2]).schedules) == 5 for f in pushed),
                 len(pushed))
    status, _, body = sim.get("/1/api/resource?path=/scheduler/hardwareResponseStatus", ADMIN)
    checks.check("add: the confirmation flag is cleared afterwards",
                 status == 200 and json.loads(body)["values"]["value"]["boolValue"] is False, body)

    changed = dict(RULE, startTime="12:30", guid="5")
    changed["broadcastPreset"] = {"guid": "6abc"}
    status, _, body = sim.request("PUT", "/1/api/schedules/5", ADMIN, json.dumps(changed).encode())
    after = {r["guid"]: r for r in schedules(body)} if status == 200 else {}
    checks.check("edit: a preset guid with trailing letters stores its number",
                 status == 200 and after.get("5", {}).get("broadcastPreset", {}).get("guid") == "6"
                 and after["5"]["startTime"] == "12:30", (status, body[:300]))

    status, _, body = sim.request("PUT", "/1/api/schedules/5", ADMIN,
                                  json.dumps(dict(RULE, startTime="25:61")).encode())
    checks.check("edit with an impossible time: the hardware refuses, 500 without a body",
                 status == 500 and body == b"", (status, body))
    status, _, body = sim.get("/1/api/resource?path=/scheduler/hardwareResponseStatus", ADMIN)
    checks.check("after a refusal the confirmation flag is cleared all the same",
                 status == 200 and json.loads(body)["values"]["value"]["boolValue"] is False, body)

    status, _, body = sim.request("POST", "/1/api/schedules", ADMIN,
                                  json.dumps(dict(RULE, broadcastPreset={"guid": "jazz"})).encode())
    checks.check("add with a preset guid that is not a number: 500 stoi",
                 status == 500 and b"stoi" in body, (status, body))
    status, _, body = sim.request("POST", "/1/api/schedules", ADMIN, b"not json")
    checks.check("add with a body that is not JSON: the preset guid is empty, 500 stoi",
                 status == 500 and b"stoi" in body, (status, body))
    status, _, body = sim.request("DELETE", "/1/api/schedules/five", ADMIN)
    checks.check("delete with a rule id that is not a number: 500 stoi",
                 status == 500 and b"stoi" in body, (status, body))
    status, _, body = sim.request("DELETE", "/1/api/schedules/5", ADMIN)
    checks.check("delete: 200 with the schedule without the rule",
                 status == 200 and [r["guid"] for r in schedules(body)] == ["1", "2", "3", "4"],
                 (status, body[:200]))
    status, _, body = sim.request("DELETE", "/1/api/schedules/99", ADMIN)
    checks.check("delete of an unknown rule: the hardware refuses, 500 without a body",
                 status == 500 and body == b"", (status, body))
    ws.close()
    heartbeat.close()


if __name__ == "__main__":
    sys.exit(wire.main(run))
