#!/usr/bin/python3
"""users.py TAVEL_SIM LIBKELO REPO: logging in and out, auto login, users and roles over the wire.

With the demo's users and meters: login -> cookie -> "/1/api/authenticated" (200, the same
identifier) -> logout -> 440; login body failures and a wrong password; auto login for a host
that has a rule (201, a new cookie) and none for another (440 with the session failure's text);
the user routes as administrator (list, create with a meter preference that is stored as paths
and read back with live readings, change, rename, password change, delete) and what others may
not (another user's record, another session, globs over the users); no password or GUID in any
reply or log line; roles; WebSocket upgrades from another site refused, from our own site and
without Origin served; login throttling (429 with Retry-After, other addresses unaffected).
Then with a short session time-out: a session polled only through "/1/api/authenticated" expires.
Exit status 0 when every check passed.
"""
import http.client
import json
import os
import re
import sys
import time

import websocket  # Debian's python3-websocket

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

PASSWORDS = ["admin-demo", "operator-demo", "viewer-demo", "newbie-secret-1", "oper-new-pw-2"]
KIOSK = "kiosk.example"


def login(sim, user, password, headers=None):
    return sim.request("POST", "/1/api/login", body={"username": user, "password": password},
                       headers=headers)


def cookie_of(headers):
    """The SessionID cookie's whole text, e.g. "SessionID=abc; Path=/"."""
    for value in headers.get_all("Set-Cookie") or []:
        if value.startswith("SessionID="):
            return value.split("; HttpOnly")[0]
    return None


def session_of(headers):
    text = cookie_of(headers) or ""
    match = re.match(r"SessionID=([^;]*)", text)
    return match.group(1) if match else None


def user_json(body):
    return json.loads(body.decode())


def check_login_cycle(sim, checks):
    status, headers, body = login(sim, "admin", "admin-demo")
    checks.check("login: 200", status == 200, status)
    session = session_of(headers)
    checks.check("login: cookie with a 32-hex-digit identifier and '; Path=/'",
                 session is not None and re.fullmatch(r"[0-9a-f]{32}", session) is not None
                 and cookie_of(headers) == "SessionID=%s; Path=/" % session, cookie_of(headers))
    user = user_json(body)
    checks.check("login: the user's name, roles and activities",
                 user.get("username") == "admin" and user.get("roles", [{}])[0].get("roleName")
                 == "administrator" and "manageUsers" in user.get("activities", []), user)
    checks.check("login: validation records of the user fields",
                 user.get("validations", {}).get("password", {}).get("minLength") == 8, user)
    checks.check("login: no password and no GUID in the reply",
                 "password" not in user and "guid" not in user and b"admin-demo" not in body, body)

    status, headers, body = sim.get("/1/api/authenticated", session)
    checks.check("authenticated: 200 with the same identifier",
                 status == 200 and cookie_of(headers) == "SessionID=%s; Path=/" % session,
                 (status, cookie_of(headers)))
    checks.check("authenticated: JSON of the same user",
                 headers.get("Content-Type", "").startswith("application/json")
                 and user_json(body).get("username") == "admin", body)

    status, headers, body = sim.request("POST", "/1/api/logout", session)
    checks.check("logout: 200 without a body", status == 200 and body == b"", (status, body))
    checks.check("logout: the frame's cookie stays as it came",
                 cookie_of(headers) == "SessionID=%s;Path=/" % session, cookie_of(headers))

    status, headers, body = sim.get("/1/api/authenticated", session)
    checks.check("authenticated after logout: 440 as text/plain with the session failure",
                 status == 440 and headers.get("Content-Type", "").startswith("text/plain")
                 and ("Session %s does not exist" % session) in body.decode(), (status, body))
    checks.check("authenticated after logout: the frame's cookie is left",
                 cookie_of(headers) == "SessionID=%s;Path=/" % session, cookie_of(headers))
    status, _, _ = sim.get("/1/api/users/admin", session)
    checks.check("any other route after logout: 440", status == 440, status)

    status, headers, body = sim.get("/1/api/authenticated", "")
    checks.check("authenticated with an empty cookie: 440", status == 440, status)


def check_login_failures(sim, checks):
    status, _, body = login(sim, "admin", "wrong-password")
    checks.check("wrong password: 403", status == 403, (status, body))
    status, _, body = sim.request("POST", "/1/api/login", body=b"")
    checks.check("empty login body: 500 'Request missing form data: body.'",
                 status == 500 and b"Request missing form data: body." in body, (status, body))
    status, _, body = sim.request("POST", "/1/api/login", body=b"{nope")
    checks.check("login body not JSON: 500 'Invalid Json: '",
                 status == 500 and b"Invalid Json: " in body, (status, body))
    status, _, body = sim.request("POST", "/1/api/login", body={"password": "x"})
    checks.check("login body without username: 500 naming username",
                 status == 500 and b"Request missing query parameter: username." in body,
                 (status, body))


def check_auto_login(sim, checks):
    status, headers, body = sim.request("GET", "/1/api/authenticated", "dead-session",
                                        headers={"Host": KIOSK})
    new = session_of(headers)
    checks.check("auto login: 201 for a host with a rule", status == 201, (status, body))
    checks.check("auto login: a new identifier in the cookie",
                 new not in (None, "", "dead-session")
                 and cookie_of(headers) == "SessionID=%s; Path=/" % new, cookie_of(headers))
    checks.check("auto login: the rule's user", user_json(body).get("username") == "viewer", body)
    status, _, _ = sim.get("/1/api/authenticated", new)
    checks.check("auto login: the new session is live", status == 200, status)


def meter_preference():
    return {"collections": [{"path": "/meters/rf/list", "label": "Mine", "groups": [{
        "path": "/meters/rf/output", "label": "Stale label",
        "meters": [{"path": "/meters/rf/output/forwardPower", "units": "kW", "label": "Old",
                    "value": {"values": {"value": {"doubleValue": 1.5, "type": "DOUBLE"}}}},
                   {"path": "/meters/rf/output/vswr"}]}]}]}


def check_user_routes(sim, checks, admin):
    status, _, body = sim.get("/1/api/users", admin)
    names = [u.get("username") for u in json.loads(body).get("users", [])] if status == 200 else []
    checks.check("user list: every user", status == 200 and
                 {"admin", "operator", "viewer", "kelo"} <= set(names), (status, body))
    users = json.loads(body).get("users", []) if status == 200 else []
    checks.check("user list: no password, no GUID",
                 users != [] and all("password" not in u and "guid" not in u for u in users)
                 and not any(p.encode() in body for p in PASSWORDS), body)

    new_user = {"username": "newbie", "password": "newbie-secret-1", "firstName": "New",
                "roles": [{"guid": "operator", "roleName": "operator", "visible": True}],
                "userPreferences": {"localePreference": "de_DE",
                                    "meterPreference": meter_preference()}}
    status, _, body = sim.request("POST", "/1/api/users", admin, body=new_user)
    checks.check("new user: 200", status == 200, (status, body))
    user = user_json(body) if status == 200 else {}
    checks.check("new user: no password or GUID in the reply right after setting it",
                 "password" not in user and "guid" not in user
                 and b"newbie-secret-1" not in body, body)
    preference = user.get("userPreferences", {})
    meters = (preference.get("meterPreference", {}).get("collections", [{}])[0]
              .get("groups", [{}])[0].get("meters", []))
    checks.check("new user: locale read back", preference.get("localePreference") == "de_DE",
                 preference)
    checks.check("new user: the meter preference read back with live readings",
                 len(meters) == 2 and meters[0].get("units") == "W"
                 and meters[0].get("label") == "Forward power"
                 and "doubleValue" in json.dumps(meters[0].get("value", {}))
                 and meters[0]["value"]["values"]["value"]["doubleValue"] != 1.5, meters)

    status, _, body = sim.get("/1/api/resource?path=/user/users/newbie", admin)
    stored = json.loads(body).get("values", {}) if status == 200 else {}
    text = stored.get("meterPreference", {}).get("stringValue", "")
    checks.check("stored meter preference holds paths only",
                 status == 200 and json.loads(text or "{}") == {"values": [{
                     "path": "/meters/rf/list", "meterGroups": [{
                         "path": "/meters/rf/output",
                         "meters": [{"path": "/meters/rf/output/forwardPower"},
                                    {"path": "/meters/rf/output/vswr"}]}]}]}, text)
    checks.check("stored user record: no password, not even hashed", "password" not in stored
                 and b"newbie-secret-1" not in body and b"pbkdf2" not in body, stored.keys())
    checks.check("stored user record: rights from its roles",
                 stored.get("role", {}).get("stringValue") == "operator", stored.get("role"))

    status, _, _ = login(sim, "newbie", "newbie-secret-1")
    checks.check("the new user logs in with its password", status == 200, status)

    status, _, body = sim.request("PUT", "/1/api/users/newbie", admin, body={"lastName": "Person"})
    checks.check("change of a user: 200 with the new field and the old ones",
                 status == 200 and user_json(body).get("lastName") == "Person"
                 and user_json(body).get("firstName") == "New", (status, body))
    status, _, body = sim.request("PUT", "/1/api/users/newbie", admin,
                                  body={"username": "renamed"})
    checks.check("rename: the reply reads the old path, which is gone (500)",
                 status == 500 and b"/user/users/newbie" in body, (status, body))
    status, _, body = sim.get("/1/api/users/renamed", admin)
    checks.check("rename: the user is there under its new name",
                 status == 200 and user_json(body).get("lastName") == "Person", (status, body))
    status, _, _ = login(sim, "renamed", "newbie-secret-1")
    checks.check("rename: the password goes with the user", status == 200, status)

    status, _, body = sim.request("PUT", "/1/api/users/renamed", admin, body=b"")
    checks.check("change with an empty body: 500 'Request missing form data: body.'",
                 status == 500 and b"Request missing form data: body." in body, (status, body))

    status, _, body = sim.request("PUT", "/1/api/users/renamed", admin, body={
        "userPreferences": {"localePreference": "UNKNOWN_LOCALE"}})
    status, _, body = sim.get("/1/api/resource?path=/user/users/renamed", admin)
    stored = json.loads(body).get("values", {}) if status == 200 else {}
    checks.check("locale 0 writes no key; the meter preference is written empty",
                 "localePreference" in stored and stored["localePreference"]["stringValue"]
                 == "de_DE" and stored.get("meterPreference", {}).get("stringValue") == "{}",
                 stored)
    status, _, _ = sim.request("PUT", "/1/api/resource?path=/user/users/renamed", admin, body={
        "values": {"meterPreference": {"stringValue": "", "type": "STRING"}}})
    status, _, body = sim.get("/1/api/users/renamed", admin)
    checks.check("an empty stored meter preference: 500 naming the parser's failure",
                 status == 500 and b"JsonParserException" in body, (status, body))

    status, _, body = sim.request("DELETE", "/1/api/users/renamed", admin)
    checks.check("delete: 200 without a body", status == 200 and body == b"", (status, body))
    status, _, _ = sim.get("/1/api/users/renamed", admin)
    checks.check("delete: the user is gone", status == 500, status)
    status, _, _ = login(sim, "renamed", "newbie-secret-1")
    checks.check("delete: its password no longer logs in", status == 403, status)

    status, _, body = sim.get("/1/api/roles", admin)
    roles = [r.get("roleName") for r in json.loads(body).get("roles", [])] if status == 200 else []
    checks.check("roles: the three roles in key order",
                 roles == ["administrator", "operator", "read-only"], (status, body))


def check_rights(sim, checks, admin):
    _, headers, _ = login(sim, "viewer", "viewer-demo")
    viewer = session_of(headers)
    _, headers, _ = login(sim, "operator", "operator-demo")
    operator = session_of(headers)

    status, _, body = sim.get("/1/api/users/viewer", viewer)
    checks.check("a read-only user reads his own user", status == 200, (status, body))
    status, _, body = sim.get("/1/api/resource?path=/user/users/admin", viewer)
    checks.check("a read-only user may not read another user's record", status == 403, status)
    status, _, body = sim.get("/1/api/resource?path=/user/users/kelo", operator)
    checks.check("an operator may not read the plug-in's user record", status == 403, status)
    status, _, body = sim.get("/1/api/resource?path=/session/sessions/" + admin, viewer)
    checks.check("a read-only user may not read another session", status == 403, status)
    status, _, body = sim.get("/1/api/resource?path=/session/sessions/" + viewer, viewer)
    checks.check("a read-only user reads his own session", status == 200, status)
    status, _, body = sim.get("/1/api/resource?path=/user/**", viewer)
    keys = set(json.loads(body).get("values", {})) if status == 200 else set()
    checks.check("a glob over the users shows a read-only user his own record alone",
                 status == 200 and keys == {"/user/users/viewer"}, (status, keys))
    status, _, _ = sim.get("/1/api/users", viewer)
    checks.check("a read-only user may not list the users", status == 403, status)
    status, _, _ = sim.request("DELETE", "/1/api/users/admin", viewer)
    checks.check("a read-only user may not delete a user", status == 403, status)
    status, _, _ = sim.request("PUT", "/1/api/users/viewer", viewer, body={"autoLogin": False})
    checks.check("a read-only user may not change his auto login", status == 403, status)
    status, _, _ = sim.request("PUT", "/1/api/users/viewer", viewer,
                               body={"roles": [{"guid": "administrator"}]})
    checks.check("a read-only user may not give himself a role", status == 403, status)
    status, _, body = sim.request("PUT", "/1/api/users/viewer", viewer, body={
        "userPreferences": {"meterPreference": {"collections": [{"path": "/meters/fans/list"}]}}})
    collections = (user_json(body).get("userPreferences", {}).get("meterPreference", {})
                   .get("collections", []) if status == 200 else [])
    checks.check("a read-only user changes his own meter preference",
                 status == 200 and collections[:1] == [{"path": "/meters/fans/list",
                                                        "label": "Cooling"}], (status, body))

    change = {"oldPassword": "operator-demo", "newPassword": "oper-new-pw-2"}
    status, _, body = sim.request("POST", "/1/api/changePassword", operator, body=change)
    checks.check("an operator changes his own password: 200 with his user",
                 status == 200 and user_json(body).get("username") == "operator"
                 and b"oper-new-pw-2" not in body, (status, body))
    status, _, _ = login(sim, "operator", "oper-new-pw-2")
    checks.check("the new password logs in", status == 200, status)
    status, _, _ = login(sim, "operator", "operator-demo")
    checks.check("the old password no longer does", status == 403, status)
    status, _, _ = sim.request("POST", "/1/api/changePassword", operator,
                               body={"username": "viewer", "newPassword": "x-x-x-x-x"})
    checks.check("an operator may not change another user's password", status == 403, status)
    change = {"username": "viewer", "oldPassword": "viewer-demo", "newPassword": "viewer-demo"}
    status, _, body = sim.request("POST", "/1/api/changePassword", viewer, body=change)
    checks.check("a read-only user changes his own password", status == 200, (status, body))
    change["oldPassword"] = "not-his"
    status, _, _ = sim.request("POST", "/1/api/changePassword", viewer, body=change)
    checks.check("his own password change needs the old password", status == 403, status)


def check_websocket_origin(sim, checks, admin):
    target = sim.ws_url("/1/ws/resource?path=/system/name")
    cookie = "SessionID=" + admin
    try:
        websocket.create_connection(target, cookie=cookie, origin="http://evil.example",
                                    timeout=5).close()
        checks.check("WebSocket from another site: refused", False, "it was accepted")
    except websocket.WebSocketBadStatusException as error:
        checks.check("WebSocket from another site: 403", error.status_code == 403, error)
    own = "http://127.0.0.1:%d" % sim.http_port
    ws = websocket.create_connection(target, cookie=cookie, origin=own, timeout=5)
    first = ws.recv()
    ws.close()
    checks.check("WebSocket from our own site: served", isinstance(first, bytes) and
                 b"Demo transmitter" in first, first)
    ws = websocket.create_connection(target, cookie=cookie, suppress_origin=True, timeout=5)
    first = ws.recv()
    ws.close()
    checks.check("WebSocket without Origin: served", b"Demo transmitter" in first, first)


def login_from(sim, address, password):
    connection = http.client.HTTPConnection("127.0.0.1", sim.http_port, timeout=10,
                                            source_address=(address, 0))
    connection.request("POST", "/1/api/login",
                       json.dumps({"username": "viewer", "password": password}))
    reply = connection.getresponse()
    reply.read()
    connection.close()
    return reply.status, reply.getheader("Retry-After")


def check_throttling(sim, checks):
    statuses = [login_from(sim, "127.0.0.3", "wrong")[0] for _ in range(10)]
    checks.check("ten failed logins: 403 each", statuses == [403] * 10, statuses)
    status, retry = login_from(sim, "127.0.0.3", "wrong")
    checks.check("the eleventh within the minute: 429 with Retry-After",
                 status == 429 and retry is not None and 0 < int(retry) <= 60, (status, retry))
    status, _ = login_from(sim, "127.0.0.3", "viewer-demo")
    checks.check("while throttled even the right password waits", status == 429, status)
    status, _ = login_from(sim, "127.0.0.4", "viewer-demo")
    checks.check("another address logs in as before", status == 200, status)


def check_no_secrets_in_log(sim, checks):
    # The log is written by another thread: wait for its last expected line, not a fixed time.
    deadline = time.time() + 5
    log = sim.log()
    while "Error attemping to auto login: " not in log and time.time() < deadline:
        time.sleep(0.1)
        log = sim.log()
    checks.check("the plug-in's log holds no password",
                 log != "" and not any(p in log for p in PASSWORDS), "a password is logged")
    checks.check("the log tells of the failed session renewal",
                 "Failed session renewal. Checking for auto login." in log
                 and "Successfully auto logged in as viewer" in log
                 and "Error attemping to auto login: " in log, "lines missing")


def with_login_limit(sim, limit):
    """The plug-in's configuration of the next start gets "login-failures-per-minute"."""
    write_config = sim.write_config

    def write_with_limit():
        write_config()
        with open(sim.path("config.json")) as text:
            config = json.load(text)
        config["login-failures-per-minute"] = limit
        with open(sim.path("config.json"), "w") as out:
            json.dump(config, out)
    sim.write_config = write_with_limit


def check_idle_expiry(sim, checks):
    with_login_limit(sim, 2)
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json")], demo_models=False,
              extra=["--session-timeout", "2"])
    status, headers, _ = login(sim, "viewer", "viewer-demo")
    session = session_of(headers)
    answers = []
    logged_in = time.time()
    while time.time() < logged_in + 4:
        sent = time.time() - logged_in
        answers.append((round(sent, 2), sim.get("/1/api/authenticated", session)[0]))
        time.sleep(0.25)
    # Polled every quarter second for four seconds. Judged by when each poll was sent, so that a
    # slow machine does not move the verdict: the first second is well inside the two-second
    # time-out, the last second well past it.
    early = [answer for sent, answer in answers if sent < 1]
    late = [answer for sent, answer in answers if sent > 3]
    checks.check("polled authenticated: 200 at first",
                 status == 200 and early and early == [200] * len(early), answers)
    checks.check("polled authenticated does not keep an idle session: 440 after the time-out",
                 late and late == [440] * len(late), answers)
    statuses = [login_from(sim, "127.0.0.5", "wrong")[0] for _ in range(3)]
    checks.check("login-failures-per-minute 2: the third attempt gets 429",
                 statuses == [403, 403, 429], statuses)
    checks.check("the configured limit is logged", "Login failures per minute: 2" in sim.log(),
                 "no such line")


def run(sim, checks):
    fixture = sim.fixture("kiosk", {"autoLogin": [{"host": KIOSK, "user": "viewer"}]})
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json"), fixture])
    check_login_cycle(sim, checks)
    check_login_failures(sim, checks)
    check_auto_login(sim, checks)
    _, headers, _ = login(sim, "admin", "admin-demo")
    admin = session_of(headers)
    check_user_routes(sim, checks, admin)
    check_rights(sim, checks, admin)
    check_websocket_origin(sim, checks, admin)
    check_throttling(sim, checks)
    check_no_secrets_in_log(sim, checks)
    sim.stop()
    check_idle_expiry(sim, checks)


if __name__ == "__main__":
    sys.exit(wire.main(run))
