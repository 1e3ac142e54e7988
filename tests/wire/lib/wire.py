"""What every Python wire test shares: the counted checks, tavel-sim with the plug-in on free
ports, and the decoding of binary Resource frames.

A test, run as TEST.py TAVEL_SIM LIBKELO REPO:

    import os, sys
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
    import wire

    def run(sim, checks):
        sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json")],
                  sessions={"s1": "viewer"}, demo_models=False)
        checks.check("reads /system/name", sim.get("/1/api/resource?path=/system/name", "s1")[0] == 200)

    if __name__ == "__main__":
        sys.exit(wire.main(run))

tavel-sim is stopped by its own process id when run() returns or fails; the scratch folder goes
with it.
"""
import atexit
import importlib
import json
import os
import shutil
import signal
import socket
import ssl
import struct
import subprocess
import sys
import tempfile
import time
import traceback
import urllib.error
import urllib.request

PLUGIN_USER = "kelo"
PLUGIN_PASSWORD = "kelo-plugin-secret"


class Checks:
    def __init__(self):
        self.count = self.failed = 0

    def check(self, name, ok, detail=""):
        self.count += 1
        if not ok:
            self.failed += 1
        print(("ok   " if ok else "FAIL ") + name + ("" if ok else ": " + str(detail)), flush=True)
        return ok


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def port_answers(port):
    try:
        socket.create_connection(("127.0.0.1", port), timeout=0.5).close()
        return True
    except OSError:
        return False


# The bearer token of "/metrics" for the tests that read it.
METRICS_TOKEN = "wire-metrics-token-0123456789"


class Sim:
    """tavel-sim with the plug-in, its configuration written into `work` for two free ports."""

    def __init__(self, sim, plugin, repo, work, io_threads=2):
        self.sim, self.plugin, self.repo, self.work = sim, plugin, repo, work
        self.io_threads = io_threads
        # Further keys of the plug-in's configuration file ({"metrics-token": ...}).
        self.config_extra = {}
        self.pick_ports()
        self.process = None

    def pick_ports(self):
        self.http_port = free_port()
        self.https_port = free_port()
        while self.https_port == self.http_port:
            self.https_port = free_port()

    def path(self, name):
        return os.path.join(self.work, name)

    def repo_file(self, name):
        return os.path.join(self.repo, name)

    def fixture(self, name, content):
        """Writes a fixture (a dict) into the scratch folder; its path."""
        with open(self.path(name + ".json"), "w") as out:
            json.dump(content, out)
        return self.path(name + ".json")

    def write_config(self):
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
                        "-subj", "/CN=localhost", "-keyout", self.path("server.key"),
                        "-out", self.path("server.crt")],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.makedirs(self.path("logs"), exist_ok=True)
        web = {"app": {"number_of_threads": self.io_threads, "document_root": self.work,
                       "upload_path": self.path("uploads")},
               "plugins": [{"name": "WebKeloInterface", "config": {}},
                           {"name": "ResourceListenerManager", "config": {}},
                           {"name": "BackgroundTaskQueue",
                            "config": {"threads_num": 1, "name": "keloWire"}}]}
        config = {"UserName": PLUGIN_USER, "Password": PLUGIN_PASSWORD,
                  "LogDirectory": self.path("logs"), "PX3LocalhostIp": ["127.0.0.1"],
                  "server-certificate": self.path("server.crt"),
                  "server-private-key": self.path("server.key"),
                  "https-port": self.https_port, "http-port": self.http_port,
                  "drogon-config": self.path("web-config.json"),
                  "bypass-cors": False, "cors-origin": ""}
        config.update(self.config_extra)
        for name, content in (("web-config.json", web), ("config.json", config)):
            with open(self.path(name), "w") as out:
                json.dump(content, out)
        with open(self.path("log.conf"), "w") as out:
            out.write('* GLOBAL:\n    FORMAT = "%datetime %level [%logger] %msg"\n'
                      '    TO_FILE = true\n    TO_STANDARD_OUTPUT = false\n')

    def start(self, fixtures=(), sessions=None, demo_models=True, extra=(), timeout=20):
        """Starts tavel-sim: the plug-in's own user, then the fixtures in order, the sessions
        (identifier -> user); returns once both ports answer. RuntimeError with tavel-sim's
        output when it ends or stays silent.

        A free port may be taken by another program (a client socket of a test running beside
        this one) between its choice and the server's bind: then the run starts again on two new
        ports, at most three times."""
        for attempt in range(3):
            try:
                return self.start_once(fixtures, sessions, demo_models, extra, timeout)
            except RuntimeError:
                if "Address already in use" not in self.output() or attempt == 2:
                    raise
                self.stop()
                self.pick_ports()

    def start_once(self, fixtures, sessions, demo_models, extra, timeout):
        self.write_config()
        user = self.fixture("plugin-user", {"users": [
            {"name": PLUGIN_USER, "password": PLUGIN_PASSWORD, "role": "administrator"}]})
        command = [self.sim, "--plugin", self.plugin, "--log-config", self.path("log.conf"),
                   "--config", self.path("config.json"),
                   "--web-config", self.path("web-config.json"), "--fixture", user]
        for fixture in fixtures:
            command += ["--fixture", fixture]
        for session, name in (sessions or {}).items():
            command += ["--session", "%s=%s" % (session, name)]
        if not demo_models:
            command.append("--no-demo-models")
        command += list(extra)
        self.process = subprocess.Popen(command, stdout=open(self.path("sim.out"), "w"),
                                        stderr=subprocess.STDOUT)
        deadline = time.time() + timeout
        while time.time() < deadline and self.process.poll() is None:
            if "Address already in use" in self.output():
                break
            if port_answers(self.http_port) and port_answers(self.https_port):
                return
            time.sleep(0.1)
        raise RuntimeError("tavel-sim did not serve on ports %d and %d: %s"
                           % (self.http_port, self.https_port, self.output()))

    def stop(self, timeout=10):
        """SIGTERM by process id, SIGKILL after `timeout` seconds; the exit status, or None when
        it had to be killed or never ran."""
        if self.process is None:
            return None
        process, self.process = self.process, None
        if process.poll() is not None:
            return process.returncode
        process.send_signal(signal.SIGTERM)
        try:
            return process.wait(timeout=timeout)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            return None

    def output(self):
        try:
            with open(self.path("sim.out")) as text:
                return text.read()
        except OSError:
            return ""

    def log(self):
        """The plug-in's log, empty when there is none yet."""
        text = []
        for name in sorted(os.listdir(self.path("logs"))) if os.path.isdir(self.path("logs")) else []:
            with open(os.path.join(self.path("logs"), name), errors="replace") as part:
                text.append(part.read())
        return "".join(text)

    def url(self, target, tls=False):
        if tls:
            return "https://127.0.0.1:%d%s" % (self.https_port, target)
        return "http://127.0.0.1:%d%s" % (self.http_port, target)

    def ws_url(self, target):
        return "ws://127.0.0.1:%d%s" % (self.http_port, target)

    def request(self, method, target, session=None, body=None, tls=False, headers=None):
        """(status, headers, body bytes) of one HTTP request; an error status is an answer too."""
        all_headers = dict(headers or {})
        if session is not None:
            all_headers["Cookie"] = "SessionID=" + session
        data = body if body is None or isinstance(body, bytes) else json.dumps(body).encode()
        request = urllib.request.Request(self.url(target, tls), data=data, method=method,
                                         headers=all_headers)
        context = None
        if tls:  # the run's own self-signed certificate
            context = ssl.create_default_context()
            context.check_hostname = False
            context.verify_mode = ssl.CERT_NONE
        try:
            with urllib.request.urlopen(request, timeout=10, context=context) as reply:
                return reply.status, reply.headers, reply.read()
        except urllib.error.HTTPError as error:
            return error.code, error.headers, error.read()

    def get(self, target, session=None, tls=False):
        return self.request("GET", target, session, tls=tls)

    def count_subscriptions(self):
        """Lets `wait_for_subscription` read the plug-in's "/metrics"; before `start`."""
        self.config_extra["metrics-token"] = METRICS_TOKEN

    def wait_for_subscription(self, path, clients=1, seconds=10):
        """True once `clients` WebSocket clients are subscribed to the host path `path`, by the
        plug-in's own count: an endpoint sends its first frame before it subscribes, so a change
        made right after that frame may come before the subscription and is then not pushed."""
        line = 'kelo_websocket_clients{path="%s"} ' % path

        def subscribed():
            status, _, body = self.request("GET", "/metrics",
                                           headers={"Authorization": "Bearer " + METRICS_TOKEN})
            for text in body.decode().splitlines():
                if status == 200 and text.startswith(line):
                    return float(text[len(line):]) >= clients
            return False
        return wait_for(subscribed, seconds)


def wait_for(predicate, seconds, poll=0.1):
    """True once `predicate()` holds, False when it still does not after `seconds`."""
    deadline = time.time() + seconds
    while time.time() < deadline:
        if predicate():
            return True
        time.sleep(poll)
    return predicate()


# ---- WebSocket clients ----------------------------------------------------------------------------

def receive_for(ws, seconds):
    """Every data frame (opcode, bytes) that arrives on the websocket client `ws` within
    `seconds`."""
    import websocket  # Debian's python3-websocket; only the WebSocket tests need it
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


def connect(sim, target, session):
    """A websocket client of `target` on the plain port, with `session` as its "SessionID"
    cookie."""
    import websocket  # Debian's python3-websocket; only the WebSocket tests need it
    return websocket.create_connection(sim.ws_url(target), timeout=5,
                                       cookie="SessionID=" + session)


class Heartbeat:
    """The ping socket: a frame at most every second keeps this address pushable."""

    def __init__(self, sim, session):
        self.ws = connect(sim, "/1/ws/ping", session)
        self.ws.recv_data()
        self.last = 0.0

    def beat(self):
        if time.time() - self.last >= 1.0:
            self.ws.send("ping")
            self.ws.recv_data()
            self.last = time.time()

    def close(self):
        self.ws.close()


def receive_beating(ws, seconds, heartbeat, poll=0.5, until_closed=False):
    """Every frame that arrives on `ws` within `seconds` as (arrival time, opcode, bytes), the
    heartbeat beating between waits of at most `poll` seconds. With `until_closed`, a closed
    connection ends the wait; otherwise its exception goes up."""
    import websocket  # Debian's python3-websocket; only the WebSocket tests need it
    frames = []
    deadline = time.time() + seconds
    while time.time() < deadline:
        heartbeat.beat()
        ws.settimeout(max(0.05, min(poll, deadline - time.time())))
        try:
            opcode, data = ws.recv_data()
        except websocket.WebSocketTimeoutException:
            continue
        except (websocket.WebSocketConnectionClosedException, ConnectionError):
            if until_closed:
                break
            raise
        frames.append((time.time(), opcode, data))
    return frames


# ---- binary Resource frames (halvor.protobuf.Resource) --------------------------------------------

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


def _wrapped(data, default):
    """The value field (1) of a google.protobuf wrapper."""
    for number, _, value in fields(data):
        if number == 1:
            return value
    return default


def _map_entries(entries):
    result = {}
    for entry in entries:
        key, value = "", b""
        for number, _, item in fields(entry):
            if number == 1:
                key = item.decode()
            elif number == 2:
                value = item
        result[key] = resource_value(value)
    return result


def resource_value(data):
    """A halvor.protobuf.ResourceValue as a Python value: bool, int, float, str, bytes, list,
    dict (a map, keys to values) or None."""
    kind, items, entries, scalars = 0, [], [], {}
    for number, _, value in fields(data):
        if number == 1:
            items.append(value)
        elif number == 2:
            entries.append(value)
        elif number == 9:
            kind = value
        else:
            scalars[number] = value
    if kind == 1:
        return bool(_wrapped(scalars.get(4, b""), 0))
    if kind == 2:
        return struct.unpack("<f", _wrapped(scalars.get(5, b""), b"\0" * 4))[0]
    if kind == 3:
        return struct.unpack("<d", _wrapped(scalars.get(6, b""), b"\0" * 8))[0]
    if kind == 4:
        number = _wrapped(scalars.get(7, b""), 0)
        return number - (1 << 64) if number >= 1 << 63 else number
    if kind == 6:
        return [resource_value(item) for item in items]
    if kind == 7:
        return _map_entries(entries)
    if kind == 8:
        return _wrapped(scalars.get(3, b""), b"").decode()
    if 8 in scalars:
        return _wrapped(scalars[8], b"")
    return None


def resource_values(frame):
    """The values of a binary halvor.protobuf.Resource frame, by key."""
    return _map_entries(value for number, _, value in fields(frame) if number == 1)


# ---- the project's own schema ------------------------------------------------------------------

_schema_modules = {}


def schema(name, repo):
    """The Python module of proto/halvor/protobuf/NAME.proto ("Monitoring" gives Monitoring_pb2),
    compiled with protoc from the repository's own schema on first use, so that a test decodes
    binary frames with exactly the messages the plug-in sends. Needs Debian's python3-protobuf."""
    if name not in _schema_modules:
        out = tempfile.mkdtemp(prefix="kelo-wire-schema-")
        atexit.register(shutil.rmtree, out, True)
        proto_root = os.path.join(repo, "proto")
        protos = [os.path.join("halvor", "protobuf", f)
                  for f in sorted(os.listdir(os.path.join(proto_root, "halvor", "protobuf")))
                  if f.endswith(".proto")]
        subprocess.run(["protoc", "-I", proto_root, "--python_out", out] + protos, check=True)
        if out not in sys.path:
            sys.path.insert(0, out)
        _schema_modules[name] = importlib.import_module("halvor.protobuf." + name + "_pb2")
    return _schema_modules[name]


# ---- the test's frame ---------------------------------------------------------------------------

def main(run, io_threads=2):
    """Runs run(sim, checks) with sys.argv = [test, TAVEL_SIM, LIBKELO, REPO]; the exit status:
    0 when every check passed and there was at least one."""
    sim_path, plugin, repo = sys.argv[1:4]
    work = tempfile.mkdtemp(prefix="kelo-wire-")
    checks = Checks()
    sim = Sim(sim_path, plugin, repo, work, io_threads)
    try:
        run(sim, checks)
    except Exception:  # noqa: BLE001 - any failure fails the test, with its trace
        checks.check("wire run", False, traceback.format_exc())
    finally:
        sim.stop()
        if checks.failed:
            print("--- tavel-sim output ---\n" + sim.output())
            print("--- plug-in log (end) ---\n" + sim.log()[-3000:])
        shutil.rmtree(work, ignore_errors=True)
    print("%d checks, %d failed" % (checks.count, checks.failed))
    return 1 if checks.failed or checks.count == 0 else 0
