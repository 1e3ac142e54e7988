#!/usr/bin/env python3
"""events.py TAVEL_SIM LIBKELO REPO: the event log over the wire.

tavel-sim runs with no model but the event log's, seeded with exactly thirty events, so that
every page, link, order and count is known: the paging table row by row, with the links built
from the Host header the client sent; ordering and the type filter; the CSV export into the
simulator's directory; clearing the log and the links of an empty log; bad input.
"""
import http.client
import itertools
import json
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402

TYPES = ["PRESET_CHANGE", "POWER_CHANGE", "FREQUENCY_CHANGE", "LOCAL_REMOTE_CHANGE",
         "ALARM_CHANGE", "RF_STATE_CHANGE"]
SEVERITIES = ["CRITICAL", "REDUCED_POWER", "MAINTENANCE", "UNSPECIFIED_ALARM_SEVERITY"]
DEVICES = [("exciter", 2), ("amplifier", 4), ("powersupply", 2), ("fan", 4)]
BASE = 1763856000  # 2025-11-23T00:00:00Z


def event(n):
    """Event n of the fixture: a minute apart, type number n % 6 + 1."""
    name, ids = DEVICES[n % 4]
    return {"eventLogId": n, "seconds": BASE + 60.0 * n, "hundredths": n % 100,
            "eventType": TYPES[n % 6], "deviceName": name, "deviceId": str(n % ids + 1),
            "description": "event %02d" % n, "severity": SEVERITIES[n % 4],
            "eventName": "name %02d" % (31 - n), "value": "%d W" % (100 * n)}


def type_number(n):
    return n % 6 + 1


def run(sim, checks):
    csv_dir = sim.path("host-files")
    fixture = sim.fixture("events", {
        "users": [{"name": "admin", "password": "admin-wire", "role": "administrator"},
                  {"name": "viewer", "password": "viewer-wire", "role": "read-only"}],
        "models": ["eventlog"],
        "eventlog": {"events": [event(n) for n in range(1, 31)], "csvDirectory": csv_dir}})
    sim.start(fixtures=[fixture], sessions={"a1": "admin", "v1": "viewer"}, demo_models=False)
    host = "127.0.0.1:%d" % sim.http_port
    path = "/1/api/events/paged"

    def get(query, session="v1", headers=None):
        status, reply_headers, body = sim.request("GET", path + "?" + query, session,
                                                  headers=headers)
        return status, reply_headers.get("Content-Type", ""), body.decode()

    def paged(query, **kwargs):
        status, ctype, body = get(query, **kwargs)
        checks.check("%s: 200 JSON" % query, status == 200 and ctype.startswith("application/json"),
                     (status, ctype, body[:300]))
        return json.loads(body) if status == 200 else {}

    def ids(page):
        return [e.get("eventLogId") for e in page.get("events", [])]

    def link(page_number, pairs, at=host):
        """The link as the plug-in builds it: every order of the pairs is a possible map
        order, so the set of all of them."""
        texts = set()
        for order in itertools.permutations(pairs):
            texts.add(at + path + "?" + "".join(p + "&" for p in order))
        return {t.replace("page=N", "page=%d" % page_number) for t in texts}

    def expect_link(name, page, key, page_number, pairs, at=host):
        value = page.get(key)
        checks.check(name, value in link(page_number, pairs, at), value)

    # ---- the paging table, total 30, page size 15 ----
    first = paged("page=1&page_size=15")
    checks.check("page 1: count 30", first.get("count") == 30, first.get("count"))
    checks.check("page 1: newest fifteen first", ids(first) == list(range(30, 15, -1)), ids(first))
    expect_link("page 1: next is page 2", first, "next", 2, ["page=N", "page_size=15"])
    checks.check("page 1: no previous", "previous" not in first, first.get("previous"))
    checks.check("page 1: timestamp present", isinstance(first.get("timestamp"), str))
    checks.check("event 30 in full", first.get("events", [{}])[0] == {
        "severity": "MAINTENANCE", "device": {"guid": "1", "name": "powersupply"},
        "time": "2025-11-23T00:30:00.300Z", "eventType": "PRESET_CHANGE",
        "description": "event 30", "eventLogId": 30, "eventName": "name 01",
        "value": "3000 W"}, first.get("events", [{}])[0])

    # The link works as a URL once the client puts its scheme in front.
    status, _, body = sim.request("GET", first.get("next", "").split(host, 1)[-1], "v1")
    checks.check("following next gives page 2",
                 status == 200 and ids(json.loads(body)) == list(range(15, 0, -1)), body[:200])

    second = paged("page=2&page_size=15")
    checks.check("page 2: oldest fifteen", ids(second) == list(range(15, 0, -1)), ids(second))
    expect_link("page 2: previous is page 1", second, "previous", 1, ["page=N", "page_size=15"])
    checks.check("page 2: no next", "next" not in second, second.get("next"))

    ninth = paged("page=9&page_size=15")
    checks.check("page 9: no events", ids(ninth) == [], ids(ninth))
    expect_link("page 9: previous is page 1", ninth, "previous", 1, ["page=N", "page_size=15"])
    checks.check("page 9: no next", "next" not in ninth, ninth.get("next"))
    checks.check("page 9: count 30", ninth.get("count") == 30, ninth.get("count"))

    zero = paged("page=0&page_size=15")
    checks.check("page 0: every event", ids(zero) == list(range(30, 0, -1)), ids(zero))
    checks.check("page 0: no links", "next" not in zero and "previous" not in zero, zero)

    middle = paged("page=2&page_size=10&type=0")
    expect_link("page 2 of 3: previous", middle, "previous", 1,
                ["page=N", "page_size=10", "type=0"])
    expect_link("page 2 of 3: next", middle, "next", 3, ["page=N", "page_size=10", "type=0"])

    # ---- the links use the Host header as the client sent it ----
    named = paged("page=1&page_size=15", headers={"Host": "tx1.example:8080"})
    expect_link("next link from the sent Host", named, "next", 2, ["page=N", "page_size=15"],
                at="tx1.example:8080")
    connection = http.client.HTTPConnection("127.0.0.1", sim.http_port, timeout=10)
    connection.putrequest("GET", path + "?page=1&page_size=15", skip_host=True)
    connection.putheader("host", "lower.example")
    connection.putheader("Cookie", "SessionID=v1")
    connection.endheaders()
    reply = connection.getresponse()
    lower = json.loads(reply.read().decode())
    connection.close()
    expect_link("a host header spelt \"host\" gives a link without host", lower, "next", 2,
                ["page=N", "page_size=15"], at="")

    # ---- ordering and the type filter ----
    by_id = paged("page=1&page_size=5&ordering=eventId")
    checks.check("ordering=eventId ascending", ids(by_id) == [1, 2, 3, 4, 5], ids(by_id))
    by_name = paged("page=1&page_size=3&ordering=-name")
    checks.check("ordering=-name descending", ids(by_name) == [1, 2, 3], ids(by_name))
    by_name_up = paged("page=1&page_size=3&ordering=name")
    checks.check("ordering=name ascending", ids(by_name_up) == [30, 29, 28], ids(by_name_up))
    by_device = paged("page=1&page_size=30&ordering=device")
    expected_device = sorted(range(1, 31), key=lambda n: (event(n)["deviceName"],
                                                         event(n)["deviceId"], n))
    checks.check("ordering=device", ids(by_device) == expected_device, ids(by_device))
    foo = paged("page=1&page_size=15&ordering=foo")
    checks.check("ordering=foo is newest first", ids(foo) == ids(first), ids(foo))
    alarms = paged("page=1&page_size=15&type=5&ordering=eventId")
    want = [n for n in range(1, 31) if type_number(n) == 5]
    checks.check("type=5: only alarm changes", ids(alarms) == want, ids(alarms))
    checks.check("type=5: count of the type", alarms.get("count") == len(want), alarms)
    checks.check("type=5: every event an alarm change",
                 all(e.get("eventType") == "ALARM_CHANGE" for e in alarms.get("events", [])))
    two_pages = paged("page=1&page_size=3&type=5&ordering=eventId")
    expect_link("type=5: next keeps the filter", two_pages, "next", 2,
                ["page=N", "page_size=3", "type=5", "ordering=eventId"])

    # ---- bad input ----
    for query, missing in (("page=abc&page_size=15", "page"), ("page_size=15", "page"),
                           ("page=1", "page_size"), ("page=1&page_size=x", "page_size"),
                           ("page=&page_size=15", "page")):
        status, ctype, body = get(query)
        checks.check("%s: 500 missing %s" % (query, missing),
                     status == 500 and ctype.startswith("text/plain")
                     and "Request missing query parameter: %s." % missing in body,
                     (status, ctype, body))
    for query in ("page=99999999999&page_size=15", "page=1&page_size=2147483648",
                  "page=1&page_size=15&type=4294967296"):
        status, ctype, body = get(query)
        checks.check("%s: 500" % query, status == 500 and "stoi" in body, (status, body))
    huge = paged("page=2147483647&page_size=15")
    checks.check("huge page: empty", ids(huge) == [], ids(huge))
    expect_link("huge page: previous is page 1", huge, "previous", 1,
                ["page=N", "page_size=15"])
    negative = paged("page=-1&page_size=15")
    checks.check("page=-1: empty page, the minus stays in the link",
                 ids(negative) == [] and "page=-1&" in negative.get("previous", ""), negative)
    big_size = paged("page=1&page_size=-1")
    checks.check("page_size=-1: the host gives nothing", ids(big_size) == [], big_size)
    size_zero = paged("page=1&page_size=0")
    checks.check("page_size=0 is fifteen", len(ids(size_zero)) == 15, ids(size_zero))
    status, _, _ = get("page=1&page_size=15", session=None)
    checks.check("no session: 440", status == 440, status)

    # ---- CSV export ----
    status, reply_headers, body = sim.request("POST", "/1/api/events/generateCsv?type=2&ordering=eventId", "v1")
    checks.check("generateCsv: 200, empty body", status == 200 and body == b"", (status, body))
    csv_path = os.path.join(csv_dir, "eventlog.csv")
    lines = open(csv_path, newline="").read().split("\r\n") if os.path.exists(csv_path) else []
    want = [n for n in range(1, 31) if type_number(n) == 2]
    checks.check("CSV header", lines[:1] == [
        "eventLogId,time,deviceName,deviceId,eventType,eventName,severity,description,value"],
        lines[:1])
    checks.check("CSV rows: the type, by id", [int(l.split(",")[0]) for l in lines[1:] if l] == want,
                 lines)
    e = event(want[0])
    checks.check("CSV first row in full", len(lines) > 1 and lines[1] == ",".join([
        str(e["eventLogId"]), "2025-11-23T00:%02d:00.%02dZ" % (want[0], want[0]),
        e["deviceName"], e["deviceId"], e["eventType"], e["eventName"], e["severity"],
        e["description"], e["value"]]), lines[1:2])

    # ---- clearing the log ----
    status, _, body = sim.request("DELETE", "/1/api/events", "v1")
    checks.check("viewer may not clear: 403", status == 403, status)
    checks.check("the log is still there", paged("page=1&page_size=15").get("count") == 30)
    status, reply_headers, body = sim.request("DELETE", "/1/api/events", "a1")
    checks.check("admin clears: 200, empty body", status == 200 and body == b"", (status, body))
    empty = paged("page=1&page_size=15")
    checks.check("empty log: count 0, no events",
                 empty.get("count") == 0 and ids(empty) == [], empty)
    checks.check("empty log, page size 15: no links",
                 "next" not in empty and "previous" not in empty, empty)
    one = paged("page=1&page_size=1")
    expect_link("empty log, page size 1: previous is 4294967295", one, "previous", 4294967295,
                ["page=N", "page_size=1"])
    checks.check("empty log, page size 1: no next", "next" not in one, one)

    status, _, _ = get("page=1&page_size=15")
    checks.check("still serving after all that", status == 200, status)


if __name__ == "__main__":
    sys.exit(wire.main(run))
