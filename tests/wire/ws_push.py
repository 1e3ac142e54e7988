#!/usr/bin/python3
"""ws_push.py TAVEL_SIM LIBKELO REPO: WebSocket push over the wire.

Starts tavel-sim with the plug-in on free ports and a pre-made session, keeps "/1/ws/ping" alive,
subscribes "/1/ws/resource?path=/demo/counter" (the simulator updates it every second) and checks
the binary Resource frames; then stops pinging and sees the pushes stop once the heartbeat count
has run out, and start again with the next ping; a resource created and changed through
"/1/api/resource" reaches its subscriber as a binary Resource. Exit status 0 when every check
passed.
"""
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

import websocket  # Debian's python3-websocket

SESSION = "wire-ws-session"
WRITER = "wire-ws-writer"


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def varint(data, at):
    shift = result = 0
    while True:
        byte = data[at]
        at += 1
        result |= (byte & 0x7F) << shift
        if not byte & 0x80:
            return result, at
        shift += 7


def fields(data):
    """(field number, wire type, value) of one protobuf message; value is int or bytes."""
    at = 0
    while at < len(data):
        key, at = varint(data, at)
        number, kind = key >> 3, key & 7
        if kind == 0:
            value, at = varint(data, at)
        elif kind == 2:
            length, at = varint(data, at)
            value, at = data[at:at + length], at + length
        elif kind == 5:
            value, at = data[at:at + 4], at + 4
        elif kind == 1:
            value, at = data[at:at + 8], at + 8
        else:
            raise ValueError("wire type %d" % kind)
        yield number, kind, value


def resource_int_values(frame):
    """The Int32 values of a halvor.protobuf.Resource, by key."""
    values = {}
    for number, _, entry in fields(frame):
        if number != 1:  # map<string, ResourceValue> values = 1
            continue
        key, value = None, b""
        for n, _, v in fields(entry):
            if n == 1:
                key = v.decode()
            elif n == 2:
                value = v
        for n, _, v in fields(value):
            if n == 7:  # google.protobuf.Int32Value intValue = 7
                values[key] = dict((a, c) for a, _, c in fields(v)).get(1, 0)
    return values


class Checks:
    def __init__(self):
        self.count = self.failed = 0

    def check(self, name, ok, detail=""):
        self.count += 1
        if not ok:
            self.failed += 1
        print(("ok   " if ok else "FAIL ") + name + ("" if ok else ": " + detail), flush=True)
        return ok


def start_sim(sim, plugin, repo, work):
    http_port, https_port = free_port(), free_port()
    while https_port == http_port:
        https_port = free_port()
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                    "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2", "-subj", "/CN=localhost",
                    "-keyout", os.path.join(work, "server.key"),
                    "-out", os.path.join(work, "server.crt")],
                   check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    web = {"app": {"number_of_threads": 2, "document_root": work, "upload_path": work},
           "plugins": [{"name": "WebKeloInterface", "config": {}},
                       {"name": "ResourceListenerManager", "config": {}},
                       {"name": "BackgroundTaskQueue",
                        "config": {"threads_num": 1, "name": "wireQueue"}}]}
    with open(os.path.join(work, "web.json"), "w") as out:
        json.dump(web, out)
    config = {"UserName": "kelo", "Password": "kelo-plugin-secret",
              "LogDirectory": work, "PX3LocalhostIp": ["127.0.0.1"],
              "server-certificate": os.path.join(work, "server.crt"),
              "server-private-key": os.path.join(work, "server.key"),
              "https-port": https_port, "http-port": http_port,
              "drogon-config": os.path.join(work, "web.json"),
              "bypass-cors": False, "cors-origin": ""}
    with open(os.path.join(work, "config.json"), "w") as out:
        json.dump(config, out)
    with open(os.path.join(work, "log.conf"), "w") as out:
        out.write('* GLOBAL:\n    FORMAT = "%datetime %level %msg"\n    TO_FILE = true\n'
                  '    TO_STANDARD_OUTPUT = false\n')
    process = subprocess.Popen(
        [sim, "--plugin", plugin, "--log-config", os.path.join(work, "log.conf"),
         "--config", os.path.join(work, "config.json"),
         "--fixture", os.path.join(repo, "config/fixtures/demo.json"),
         "--session", SESSION + "=viewer", "--session", WRITER + "=operator"],
        stdout=open(os.path.join(work, "sim.out"), "w"), stderr=subprocess.STDOUT)
    deadline = time.time() + 20
    while time.time() < deadline:
        try:
            socket.create_connection(("127.0.0.1", http_port), timeout=0.5).close()
            return process, http_port
        except OSError:
            if process.poll() is not None:
                break
            time.sleep(0.1)
    process.kill()
    raise RuntimeError("tavel-sim did not start: " + open(os.path.join(work, "sim.out")).read())


def connect(port, target, **options):
    return websocket.create_connection("ws://127.0.0.1:%d%s" % (port, target), timeout=5,
                                       cookie="SessionID=" + SESSION, **options)


def receive_for(ws, seconds):
    """Every frame that arrives within `seconds`."""
    frames = []
    deadline = time.time() + seconds
    while time.time() < deadline:
        ws.settimeout(max(0.05, deadline - time.time()))
        try:
            opcode, data = ws.recv_data()
        except websocket.WebSocketTimeoutException:
            break
        frames.append((opcode, data))
    return frames


def run(port, checks):
    ping = connect(port, "/1/ws/ping")
    opcode, data = ping.recv_data()
    checks.check("ping answers pong as Text", opcode == websocket.ABNF.OPCODE_TEXT and data == b"pong",
                 repr((opcode, data)))

    sub = connect(port, "/1/ws/resource?path=%2Fdemo%2Fcounter")
    opcode, first = sub.recv_data()
    checks.check("first frame is Binary", opcode == websocket.ABNF.OPCODE_BINARY, str(opcode))
    first_value = resource_int_values(first).get("value")
    checks.check("first frame holds the counter", isinstance(first_value, int), repr(first))

    # Ping every second for three seconds: one push a second, counting up.
    pushes = []
    for _ in range(3):
        ping.send("ping")
        ping.recv_data()
        pushes += receive_for(sub, 1.0)
    values = [resource_int_values(d).get("value") for _, d in pushes]
    checks.check("pushes arrive while pinging", len(values) >= 2, repr(values))
    checks.check("pushes count up", values == sorted(values) and values[0] > first_value,
                 repr((first_value, values)))

    # Silence: the count of 5 runs out within six ticks, then nothing more arrives.
    silent_start = time.time()
    tail = receive_for(sub, 7.5)
    late = receive_for(sub, 3.0)
    checks.check("pushes stop once the heartbeat has run out", len(late) == 0 and len(tail) <= 6,
                 "%d frames in the 7.5 s after the last ping, %d later" % (len(tail), len(late)))
    checks.check("the socket stays open while lapsed", sub.connected, "closed")

    # The next ping makes the same subscription pushable again.
    ping.send(b"\x00\x01", opcode=websocket.ABNF.OPCODE_BINARY)
    opcode, data = ping.recv_data()
    checks.check("a binary ping is answered pong", data == b"pong", repr(data))
    resumed = receive_for(sub, 2.5)
    checks.check("pushes resume with the next ping", len(resumed) >= 1,
                 "nothing %.1f s after the silence began" % (time.time() - silent_start))

    # A change made through the REST interface reaches the subscriber as that Resource.
    def rest(method, value):
        body = json.dumps({"values": {"value": {"type": "INT32", "intValue": value}}}).encode()
        request = urllib.request.Request(
            "http://127.0.0.1:%d/1/api/resource?path=%%2Fwire%%2Fsetting" % port, data=body,
            method=method, headers={"Cookie": "SessionID=" + WRITER})
        with urllib.request.urlopen(request, timeout=5) as reply:
            return reply.status
    checks.check("POST creates the resource", rest("POST", 1) == 200)
    setting = connect(port, "/1/ws/resource?path=%2Fwire%2Fsetting")
    _, first_setting = setting.recv_data()
    checks.check("first frame holds the created value",
                 resource_int_values(first_setting).get("value") == 1, repr(first_setting))
    time.sleep(0.5)  # the first frame goes out before the subscription is made
    ping.send("ping")
    ping.recv_data()
    checks.check("PUT through /1/api/resource is answered 200", rest("PUT", 42) == 200)
    pushed = [resource_int_values(d).get("value") for _, d in receive_for(setting, 2.0)]
    checks.check("the PUT reaches the subscriber as a binary Resource", 42 in pushed, repr(pushed))

    # A client's close, whatever its code, is answered with 1000 and an empty reason.
    for client, code in ((setting, 4001), (sub, 1001)):
        answer = close_answer(client, code)
        checks.check("close %d is answered with 1000 and no reason" % code, answer == b"\x03\xe8",
                     repr(answer))

    bad = websocket.create_connection("ws://127.0.0.1:%d/1/ws/resource?path=/demo/counter" % port,
                                      timeout=5, cookie="SessionID=unknown")
    bad.settimeout(5)
    frame = bad.recv_frame()
    checks.check("unknown session is closed with 1011",
                 frame.opcode == websocket.ABNF.OPCODE_CLOSE and frame.data[:2] == b"\x03\xf3"
                 and frame.data[2:] == b"Invalid session ID.", repr((frame.opcode, frame.data)))
    bad.shutdown()
    ping.close()


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


def main():
    sim, plugin, repo = sys.argv[1:4]
    work = tempfile.mkdtemp(prefix="kelo-wire-ws-")
    process = None
    checks = Checks()
    try:
        process, port = start_sim(sim, plugin, repo, work)
        run(port, checks)
    except Exception as error:  # noqa: BLE001 - any failure fails the test
        checks.check("wire run", False, repr(error))
    finally:
        if process is not None and process.poll() is None:
            process.send_signal(signal.SIGTERM)
            try:
                process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                process.kill()
        if checks.failed and os.path.exists(os.path.join(work, "Kelo1.log")):
            print(open(os.path.join(work, "Kelo1.log")).read()[-3000:])
        shutil.rmtree(work, ignore_errors=True)
    print("%d checks, %d failed" % (checks.count, checks.failed))
    return 1 if checks.failed or checks.count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
