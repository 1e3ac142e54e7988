#!/usr/bin/python3
"""platform.py TAVEL_SIM LIBKELO REPO: network and platform settings, time settings, versions, the
remote service and remote support over the wire.

With the simulator's network, time and version models (short delays from the fixture): the
controller's network read and written key by key (a value of the wrong form is not taken), the
platform's network written in one command with the connection states in either form; the time
settings, the zone map, a zone, NTP and the clock written, with the host's refusals (an unknown
zone, a server name that is not one) as 500 with the host's text, and a time written across a
daylight saving change in the process's own zone; versions at their three depths
and in a list; the remote service registration moving through its states; remote support read
and switched from the background queue, and its refusals. Bad input: bodies that are not JSON,
unknown versions, a read-only user. Exit status 0 when every check passed.
"""
import json
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

ADMIN = "wire-platform-admin"
VIEWER = "wire-platform-viewer"

FIXTURE = {"models": ["network", "time", "versions"],
           "versions": {"serviceStepMs": 300, "platformDelayMs": 200}}


def call(sim, method, target, body=None, session=ADMIN):
    data = body.encode() if isinstance(body, str) else (
        None if body is None else json.dumps(body).encode())
    status, headers, raw = sim.request(method, target, session, data,
                                       headers={"Content-Type": "application/json"})
    try:
        parsed = json.loads(raw) if raw else None
    except ValueError:
        parsed = raw
    return status, parsed, raw


def check_network(sim, checks):
    status, network, raw = call(sim, "GET", "/1/api/network_settings")
    checks.check("network: the eight values", status == 200 and network ==
                 {"ipAddress": "192.168.1.20", "dns1": "192.168.1.1", "dns2": "9.9.9.9",
                  "subnetMask": "255.255.255.0", "dhcpEnabled": False,
                  "macAddr": "00:1a:2b:3c:4d:5e", "gateway": "192.168.1.1",
                  "runningStatus": "running"}, (status, raw))
    written = dict(network, ipAddress="192.168.1.30", gateway="no address", macAddr="x",
                   runningStatus="y")
    status, _, raw = call(sim, "PUT", "/1/api/network_settings", written)
    checks.check("network put: 200 without body", status == 200 and raw == b"", (status, raw))
    time.sleep(0.3)  # the host takes the values on its next pass
    status, after, _ = call(sim, "GET", "/1/api/network_settings")
    checks.check("network put: the address taken, the bad gateway not, the read-only ones kept",
                 after["ipAddress"] == "192.168.1.30" and after["gateway"] == "192.168.1.1" and
                 after["macAddr"] == "00:1a:2b:3c:4d:5e" and after["runningStatus"] == "running",
                 after)
    status, _, _ = call(sim, "PUT", "/1/api/network_settings", "{not json")
    time.sleep(0.3)
    status2, after, _ = call(sim, "GET", "/1/api/network_settings")
    checks.check("network put, body not JSON: 200, the empty values are not taken",
                 status == 200 and after["ipAddress"] == "192.168.1.30", (status, after))

    status, platform, raw = call(sim, "GET", "/1/api/qcore_settings")
    checks.check("platform: dgateway and the connection states as booleans", status == 200 and
                 platform.get("dgateway") == "10.0.0.1" and platform.get("lan1connected") is True
                 and platform.get("lan2connected") is False, (status, raw))
    written = dict(platform, lan1ip="10.0.0.77", lan2up=True, lan1connected="false",
                   lan1mac="ff:ff:ff:ff:ff:ff")
    status, _, raw = call(sim, "PUT", "/1/api/qcore_settings", written)
    checks.check("platform put: a connection state as text is taken", status == 200, (status, raw))
    status, platform, _ = call(sim, "GET", "/1/api/qcore_settings")
    checks.check("platform put: the address changed, the MAC and connection stay the platform's",
                 platform.get("lan1ip") == "10.0.0.77" and platform.get("lan2up") is True and
                 platform.get("lan1mac") == "00:1a:2b:3c:4d:60" and
                 platform.get("lan1connected") is True, platform)
    status, _, raw = call(sim, "PUT", "/1/api/qcore_settings", dict(platform, lan2ip="1.2.3"))
    checks.check("platform put, an address of the wrong form: the host's refusal as 500",
                 status == 500 and b"lan2ip: not an IPv4 address" in raw, (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/qcore_settings", "[]")
    checks.check("platform put, body not JSON: the empty values are refused", status == 500,
                 (status, raw))
    status, platform, _ = call(sim, "GET", "/1/api/qcore_settings", session=VIEWER)
    checks.check("platform get by a read-only user: 200", status == 200, status)
    status, _, _ = call(sim, "PUT", "/1/api/qcore_settings", platform, session=VIEWER)
    checks.check("platform put by a read-only user: 403", status == 403, status)


def check_time(sim, checks):
    before = int(time.time())
    status, settings, raw = call(sim, "GET", "/1/api/time_settings")
    checks.check("time: NTP, the zone and a clock", status == 200 and
                 settings.get("ntpSettings") == {"ntpEnabled": True, "ntpServer": "pool.ntp.org",
                                                 "ntpSynchronized": True} and
                 settings.get("timezone") == {"timezone": "Europe/Berlin"} and
                 "dateAndTime" in settings.get("dateAndTime", {}), (status, raw))
    status, tzmap, raw = call(sim, "GET", "/1/api/time_settings/tzmap")
    regions = [r["region"] for r in tzmap.get("regionTimezones", [])] if status == 200 else []
    checks.check("tzmap: regions in key order", regions ==
                 ["Africa", "America", "Asia", "Australia", "Europe", "UTC"], regions)
    europe = [r for r in tzmap.get("regionTimezones", []) if r["region"] == "Europe"]
    checks.check("tzmap: a zone with its description", europe and
                 {"timezone": "Europe/Berlin", "description": "Central European Time (Berlin)"}
                 in europe[0]["timezones"], europe)
    status, zone, raw = call(sim, "PUT", "/1/api/time_settings/timezone",
                             {"timezone": "America/Chicago"})
    checks.check("timezone put: the new zone read back", status == 200 and
                 zone == {"timezone": "America/Chicago"}, (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/time_settings/timezone",
                          {"timezone": "Mars/Olympus_Mons"})
    checks.check("timezone put, a zone that does not exist: 500 with the host's text",
                 status == 500 and raw == b"Unknown time zone: Mars/Olympus_Mons", (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/time_settings/timezone", "zone please")
    checks.check("timezone put, body not JSON: the empty name is refused", status == 500 and
                 raw == b"Unknown time zone: ", (status, raw))
    status, ntp, raw = call(sim, "PUT", "/1/api/time_settings/ntp",
                            {"ntpEnabled": False, "ntpServer": "bad server name"})
    checks.check("ntp put, a refused server: 500 with the host's text", status == 500 and
                 raw == b"Not a server name: bad server name", (status, raw))
    status, settings, _ = call(sim, "GET", "/1/api/time_settings")
    checks.check("ntp put, a refused server: NTP stays switched off", settings["ntpSettings"] ==
                 {"ntpEnabled": False, "ntpServer": "pool.ntp.org", "ntpSynchronized": False},
                 settings)
    status, ntp, raw = call(sim, "PUT", "/1/api/time_settings/ntp",
                            {"ntpEnabled": True, "ntpServer": "ntp.example.org"})
    checks.check("ntp put: the settings read back", status == 200 and
                 ntp.get("ntpEnabled") is True and ntp.get("ntpServer") == "ntp.example.org",
                 (status, raw))
    status, clock, raw = call(sim, "PUT", "/1/api/time_settings/date_and_time",
                              {"dateAndTime": "2030-01-02T03:04:05Z"})
    answered = clock.get("dateAndTime", "") if status == 200 else ""
    checks.check("date put: the process's clock after the write, not an echo", status == 200 and
                 answered.startswith(time.strftime("%Y-", time.gmtime(before))), (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/time_settings/date_and_time", "soon")
    # The epoch in the zone of the process, which this script shares with tavel-sim.
    epoch = time.localtime(0)
    if epoch.tm_year >= 1970:
        checks.check("date put, body not JSON: the epoch is written and taken", status == 200,
                     (status, raw))
    else:
        checks.check("date put, body not JSON: the epoch, a local time before 1970, is refused",
                     status == 500 and raw.startswith(b"Invalid date and time: 1969-"),
                     (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/time_settings/date_and_time",
                          {"dateAndTime": "1960-01-01T00:00:00Z"})
    checks.check("date put, a time the controller cannot take: 500 with the host's text",
                 status == 500 and raw.startswith(b"Invalid date and time: 19"), (status, raw))


def check_process_zone(sim, checks):
    """tavel-sim runs in central European time; the host's zone is set to another."""
    call(sim, "PUT", "/1/api/time_settings/timezone", {"timezone": "Asia/Tokyo"})
    for instant, local in (("2026-03-29T00:59:59Z", "2026-3-29 1:59:59"),
                           ("2026-03-29T01:00:00Z", "2026-3-29 3:0:0")):
        status, _, raw = call(sim, "PUT", "/1/api/time_settings/date_and_time",
                              {"dateAndTime": instant})
        _, _, written = sim.get("/1/api/resource?path=/time/dateAndTime", ADMIN)
        text = json.loads(written)["values"]["set_value"]["stringValue"]
        checks.check("date put %s: written in the process's zone as %s, whatever the host's zone"
                     % (instant, local), status == 200 and text == local, (status, text))


def check_versions(sim, checks):
    status, versions, raw = call(sim, "GET", "/1/api/versions")
    names = [v["name"] for v in versions.get("versions", [])] if status == 200 else []
    checks.check("versions: components two and three levels deep", "/tavel/core" in names and
                 "/exciter/fpga/main" in names and "/amplifier/controller/firmware" in names,
                 (status, raw))
    status, one, raw = call(sim, "GET", "/1/api/versions/Kelo")
    checks.check("version, one level: the plug-in's own", status == 200 and
                 one.get("name") == "/Kelo" and one.get("version"), (status, raw))
    status, one, raw = call(sim, "GET", "/1/api/versions/exciter/dsp")
    checks.check("version, two levels", status == 200 and
                 one == {"name": "/exciter/dsp", "version": "5.1.12"}, (status, raw))
    status, one, raw = call(sim, "GET", "/1/api/versions/exciter/fpga/modulator")
    checks.check("version, three levels", status == 200 and one.get("version") == "3.0.2",
                 (status, raw))
    status, _, raw = call(sim, "GET", "/1/api/versions/nothing/here")
    checks.check("version, unknown: 500", status == 500 and b"/versions/nothing/here" in raw,
                 (status, raw))
    status, skyrun, raw = call(sim, "GET", "/1/api/skyrun_versions")
    checks.check("skyrun versions", status == 200 and
                 skyrun == {"qcore": "1.9.3", "sdpdriver": "0.8.1", "proxmox": "8.1.4"},
                 (status, raw))


def check_remote_service(sim, checks):
    status, service, raw = call(sim, "GET", "/1/api/lodestar")
    checks.check("lodestar: unregistered, only the switch", status == 200 and
                 service == {"lodestarEnabled": False}, (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/lodestar", {"lodestarEnabled": True})
    checks.check("lodestar put without name and call sign: the host's refusal as 500",
                 status == 500 and b"company name and a call sign" in raw, (status, raw))
    status, service, raw = call(sim, "PUT", "/1/api/lodestar",
                                {"lodestarEnabled": True, "companyName": "Radio Nord",
                                 "callSign": "KXYZ", "email": "ops@example.net"})
    checks.check("lodestar put: the registration read again", status == 200 and
                 service == {"lodestarEnabled": True, "companyName": "Radio Nord",
                             "callSign": "KXYZ", "email": "ops@example.net"}, (status, raw))
    check_service_states(sim, checks)
    status, _, raw = call(sim, "PUT", "/1/api/lodestar", "")
    checks.check("lodestar put, empty body: missing form data", status == 500 and
                 b"Request missing form data: body." in raw, (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/lodestar", "{nope")
    checks.check("lodestar put, body not JSON: invalid JSON", status == 500 and
                 b"Invalid Json: " in raw, (status, raw))

    started = time.time()
    status, support, raw = call(sim, "GET", "/1/api/qcore/skyRunRemoteSupport")
    checks.check("remote support: the five keys, after the platform's delay", status == 200 and
                 support == {"isEnabled": False, "port": 2222, "connectionId": 0,
                             "url": "support.example.net", "timeout": 3600} and
                 time.time() - started >= 0.18, (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/qcore/skyRunRemoteSupport",
                          {"isEnabled": True, "timeout": 600})
    checks.check("remote support put: 200 without body", status == 200 and raw == b"",
                 (status, raw))
    status, support, _ = call(sim, "GET", "/1/api/qcore/skyRunRemoteSupport")
    checks.check("remote support: switched on with a connection", support.get("isEnabled") is True
                 and support.get("timeout") == 600 and support.get("connectionId") == 4711,
                 support)
    status, _, raw = call(sim, "PUT", "/1/api/qcore/skyRunRemoteSupport", {"port": 0})
    checks.check("remote support put, a port the platform refuses: 500 with its text",
                 status == 500 and raw == b"The support port must be 1 to 65535", (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/qcore/skyRunRemoteSupport", "not json")
    checks.check("remote support put, body not JSON: nothing set, 200", status == 200,
                 (status, raw))
    status, _, raw = call(sim, "GET", "/1/api/qcore/skyRunRemoteSupport", session=VIEWER)
    checks.check("remote support read by a read-only user: 200", status == 200, (status, raw))
    status, _, raw = call(sim, "PUT", "/1/api/qcore/skyRunRemoteSupport", {"isEnabled": False},
                          session=VIEWER)
    checks.check("remote support put by a read-only user: 403 from the queue", status == 403,
                 (status, raw))
    status, _, raw = call(sim, "GET", "/1/api/qcore/skyRunRemoteSupport", session="nobody")
    checks.check("remote support without a session: 440", status == 440, (status, raw))


def check_service_states(sim, checks):
    """The remote service's states, shown by the host's query resource."""
    seen = []
    deadline = time.time() + 5
    while time.time() < deadline:
        status, _, raw = sim.get("/1/api/resource?path=/lodestar/service/query", ADMIN)
        state = json.loads(raw)["values"]["serviceState"]["stringValue"] if status == 200 else None
        if not seen or seen[-1] != state:
            seen.append(state)
        if state == "ENABLED":
            break
        time.sleep(0.05)
    checks.check("lodestar: ENABLING then ENABLED", seen[-2:] == ["ENABLING", "ENABLED"], seen)


def run(sim, checks):
    # Central European time with its summer time, written out so that no zone files are needed;
    # this script and tavel-sim share it.
    os.environ["TZ"] = "CET-1CEST,M3.5.0,M10.5.0/3"
    time.tzset()
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"), sim.fixture("platform", FIXTURE)],
              sessions={ADMIN: "admin", VIEWER: "viewer"}, demo_models=False)
    check_network(sim, checks)
    check_time(sim, checks)
    check_process_zone(sim, checks)
    check_versions(sim, checks)
    check_remote_service(sim, checks)


if __name__ == "__main__":
    sys.exit(wire.main(run, io_threads=1))
