#!/usr/bin/python3
"""metrics.py TAVEL_SIM LIBKELO REPO: GET /metrics over the wire, read by a real Prometheus.

tavel-sim runs the demo's models with a bearer token in the plug-in's configuration. Without the
token, or with a wrong one, "/metrics" answers 401 with a Bearer challenge, on both ports. With
it, the exposition holds the demo's meters, its active alarms and the server's own health, and
Debian's `promtool check metrics` finds nothing wrong with it. A client that keeps sending wrong
tokens from 127.0.0.1 does not slow a client with the right token on 127.0.0.2. Then Debian's
Prometheus server, on a free port with its own storage folder, scrapes tavel-sim every second
(one job with the token, one without); after two scrapes its HTTP query API finds a meter series
and an alarm series of the first job, and shows the second job down. Exit status 0 when every
check passed.
"""
import http.client
import json
import os
import shutil
import signal
import ssl
import statistics
import subprocess
import sys
import threading
import time
import urllib.parse
import urllib.request

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "lib"))
import wire  # noqa: E402 - found through the path set above

TOKEN = "wire-metrics-token-0123456789"
PROMETHEUS = "/usr/bin/prometheus"
PROMTOOL = "/usr/bin/promtool"


def get_from(sim, source, target, token=None):
    """(status, headers, body, seconds) of one GET on the plain port from the address `source`."""
    connection = http.client.HTTPConnection("127.0.0.1", sim.http_port, timeout=10,
                                            source_address=(source, 0))
    headers = {} if token is None else {"Authorization": "Bearer " + token}
    started = time.monotonic()
    try:
        connection.request("GET", target, headers=headers)
        reply = connection.getresponse()
        body = reply.read()
        return reply.status, reply.headers, body, time.monotonic() - started
    finally:
        connection.close()


def tls_scrape(sim, token):
    """(status, content type, body) of a GET /metrics on the TLS port."""
    context = ssl.create_default_context()
    context.check_hostname = False
    context.verify_mode = ssl.CERT_NONE  # the run's own self-signed certificate
    connection = http.client.HTTPSConnection("127.0.0.1", sim.https_port, timeout=10,
                                             context=context)
    try:
        connection.request("GET", "/metrics", headers={"Authorization": "Bearer " + token})
        reply = connection.getresponse()
        return reply.status, reply.headers.get("Content-Type") or "", reply.read().decode()
    finally:
        connection.close()


def check_access(sim, checks):
    status, headers, _ = sim.request("GET", "/metrics")
    checks.check("no token: 401", status == 401, status)
    checks.check("no token: a Bearer challenge",
                 (headers.get("WWW-Authenticate") or "").startswith("Bearer"), dict(headers))
    status, _, _ = sim.request("GET", "/metrics", headers={"Authorization": "Bearer wrong"})
    checks.check("a wrong token: 401", status == 401, status)
    status, _, _ = sim.request("GET", "/metrics",
                               headers={"Authorization": "Bearer " + TOKEN + "x"})
    checks.check("the token with one character more: 401", status == 401, status)
    status, _, _ = sim.request("GET", "/metrics", headers={"Authorization": "Basic " + TOKEN})
    checks.check("the token under another scheme: 401", status == 401, status)
    status, _, _ = sim.request("GET", "/metrics", tls=True)
    checks.check("no token over TLS: 401", status == 401, status)
    status, content_type, body = tls_scrape(sim, TOKEN)
    checks.check("the token over TLS: 200 in the text format",
                 status == 200 and content_type.startswith("text/plain; version=0.0.4"),
                 (status, content_type))
    # The exposition is larger than one TLS record: the whole of it must arrive.
    checks.check("the token over TLS: the whole exposition, meters and alarms",
                 len(body) > 16384 and "kelo_meter_value{" in body
                 and "kelo_active_alarms{" in body and body.endswith("\n"), len(body))


def check_exposition(sim, checks, text, content_type):
    checks.check("content type of the text format",
                 content_type.startswith("text/plain; version=0.0.4"), content_type)
    forward = [line for line in text.splitlines()
               if line.startswith("kelo_meter_value{") and 'meter="Forward power"' in line]
    checks.check("the forward power is a meter series", len(forward) == 1, forward)
    if forward:
        line = forward[0]
        checks.check("its labels", 'collection="RF output"' in line and 'units="W"' in line
                     and 'group="Transmitter output"' in line
                     and 'path="/meters/rf/output/forwardPower"' in line, line)
        value = float(line.rsplit(" ", 1)[1])
        checks.check("its reading lies within the meter's range", 0 <= value <= 6000, value)
    checks.check("a status meter reads 1 or 0",
                 any(line.startswith("kelo_meter_value{") and 'meter="RF on"' in line
                     and line.endswith(" 1") for line in text.splitlines()), "no RF on 1")
    checks.check("a text meter has no series", 'meter="Operating mode"' not in text)
    alarms = [line for line in text.splitlines() if line.startswith("kelo_alarm_active{")]
    checks.check("active alarms have series", len(alarms) >= 1, alarms)
    checks.check("a count of active alarms per severity",
                 all('kelo_active_alarms{severity="%s"}' % s in text
                     for s in ("CRITICAL", "REDUCED_POWER", "MAINTENANCE",
                               "UNSPECIFIED_ALARM_SEVERITY")), "")
    checks.check("both host sources read whole",
                 'kelo_metrics_source_up{source="meters"} 1' in text
                 and 'kelo_metrics_source_up{source="alarms"} 1' in text, "")
    checks.check("the plug-in's status is Ok", 'kelo_plugin_status{status="Ok"} 1' in text, "")
    checks.check("build information", 'kelo_build_info{name="Kelo",version="2.59.2-r0"} 1' in text,
                 [l for l in text.splitlines() if l.startswith("kelo_build_info")])
    checks.check("requests counted by route template",
                 'kelo_http_requests_total{method="GET",route="/metrics",status="401"}' in text,
                 [l for l in text.splitlines() if l.startswith("kelo_http_requests_total")])
    checks.check("a duration histogram by route template",
                 'kelo_http_request_duration_seconds_bucket{route="/metrics",le="+Inf"}' in text,
                 "")
    checks.check("the process's memory and CPU",
                 "\nprocess_resident_memory_bytes " in text
                 and "\nprocess_cpu_seconds_total " in text, "")


def check_promtool(checks, text):
    result = subprocess.run([PROMTOOL, "check", "metrics"], input=text.encode(),
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=30)
    checks.check("promtool check metrics finds nothing", result.returncode == 0
                 and result.stdout.strip() == b"", result.stdout.decode(errors="replace"))


def check_wrong_tokens_do_not_slow_others(sim, checks):
    stop = threading.Event()
    wrong = []

    def hammer():
        while not stop.is_set():
            status, _, _, seconds = get_from(sim, "127.0.0.1", "/metrics", "not-the-token")
            wrong.append((status, seconds))

    threads = [threading.Thread(target=hammer) for _ in range(4)]
    for thread in threads:
        thread.start()
    right = []
    try:
        time.sleep(0.3)
        for _ in range(20):
            status, _, _, seconds = get_from(sim, "127.0.0.2", "/metrics", TOKEN)
            right.append((status, seconds))
    finally:
        stop.set()
        for thread in threads:
            thread.join()
    checks.check("wrong tokens meanwhile: every one 401", wrong and
                 all(status == 401 for status, _ in wrong), wrong[:5])
    wrong_median = statistics.median(seconds for _, seconds in wrong)
    checks.check("wrong tokens are answered at once (median under 0.25 s)",
                 wrong_median < 0.25, "%d wrong, median %.3f s" % (len(wrong), wrong_median))
    right_median = statistics.median(seconds for _, seconds in right)
    checks.check("the other address is served: every scrape 200, median under 0.25 s",
                 all(status == 200 for status, _ in right) and right_median < 0.25,
                 "%s, median %.3f s" % ([status for status, _ in right], right_median))
    print("  %d wrong-token requests, median %.1f ms; 20 scrapes from 127.0.0.2, median %.1f ms"
          % (len(wrong), wrong_median * 1000, right_median * 1000))


def query(port, expression):
    url = "http://127.0.0.1:%d/api/v1/query?%s" % (
        port, urllib.parse.urlencode({"query": expression}))
    with urllib.request.urlopen(url, timeout=10) as reply:
        answer = json.load(reply)
    if answer.get("status") != "success":
        raise RuntimeError("query %s: %s" % (expression, answer))
    return answer["data"]["result"]


def start_prometheus(sim):
    port = wire.free_port()
    storage = sim.path("prometheus-data")
    token_file = sim.path("metrics-token")
    with open(token_file, "w") as out:
        out.write(TOKEN)
    target = "127.0.0.1:%d" % sim.http_port
    config = ("global:\n  scrape_interval: 1s\n  scrape_timeout: 1s\n"
              "scrape_configs:\n"
              "  - job_name: kelo\n    metrics_path: /metrics\n"
              "    authorization:\n      type: Bearer\n      credentials_file: %s\n"
              "    static_configs:\n      - targets: ['%s']\n"
              "  - job_name: kelo-without-token\n    metrics_path: /metrics\n"
              "    static_configs:\n      - targets: ['%s']\n") % (token_file, target, target)
    with open(sim.path("prometheus.yml"), "w") as out:
        out.write(config)
    process = subprocess.Popen(
        [PROMETHEUS, "--config.file=" + sim.path("prometheus.yml"),
         "--storage.tsdb.path=" + storage, "--web.listen-address=127.0.0.1:%d" % port],
        stdout=open(sim.path("prometheus.out"), "w"), stderr=subprocess.STDOUT)
    return process, port


def stop_prometheus(process):
    if process.poll() is None:
        process.send_signal(signal.SIGTERM)
        try:
            process.wait(timeout=15)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def wait_for(condition, seconds):
    deadline = time.time() + seconds
    while time.time() < deadline:
        try:
            if condition():
                return True
        except (OSError, RuntimeError, ValueError):
            pass  # not up yet
        time.sleep(0.5)
    return False


def check_prometheus(sim, checks):
    process, port = start_prometheus(sim)
    try:
        scraped_twice = wait_for(
            lambda: any(float(r["value"][1]) >= 2 for r in query(
                port, 'count_over_time(up{job="kelo"}[1m])')), 45)
        checks.check("Prometheus scraped tavel-sim twice", scraped_twice,
                     open(sim.path("prometheus.out")).read()[-2000:])
        if not scraped_twice:
            return
        up = query(port, 'up{job="kelo"}')
        checks.check("the job with the token is up", up and up[0]["value"][1] == "1", up)
        meters = query(port, 'kelo_meter_value{meter="Forward power",collection="RF output"}')
        checks.check("a meter series through the query API", len(meters) == 1
                     and meters[0]["metric"].get("units") == "W", meters)
        alarms = query(port, "kelo_alarm_active")
        checks.check("an alarm series through the query API", len(alarms) >= 1
                     and all(a["metric"].get("severity") for a in alarms), alarms)
        denied = query(port, 'up{job="kelo-without-token"}')
        checks.check("the job without the token is down", denied
                     and denied[0]["value"][1] == "0", denied)
    finally:
        stop_prometheus(process)
        shutil.rmtree(sim.path("prometheus-data"), ignore_errors=True)


def run(sim, checks):
    sim.config_extra["metrics-token"] = TOKEN
    sim.start(fixtures=[sim.repo_file("config/fixtures/demo.json")])
    check_access(sim, checks)
    status, headers, body = sim.request("GET", "/metrics",
                                        headers={"Authorization": "Bearer " + TOKEN})
    checks.check("the token: 200", status == 200, status)
    text = body.decode()
    check_exposition(sim, checks, text, headers.get("Content-Type") or "")
    check_promtool(checks, text)
    check_wrong_tokens_do_not_slow_others(sim, checks)
    check_prometheus(sim, checks)


if __name__ == "__main__":
    sys.exit(wire.main(run))
