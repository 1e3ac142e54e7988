#!/usr/bin/python3
"""probe.py PORT SOURCE COUNT: COUNT plain GET requests of "/index.html", one connection each,
from the loopback address SOURCE (not the attacker's), one after the other. Prints
"answered p50-ms p99-ms" (a request that gets no answer within 5 s counts as unanswered)."""
import socket
import sys
import time

port, source, count = int(sys.argv[1]), sys.argv[2], int(sys.argv[3])
times, answered = [], 0
for _ in range(count):
    start = time.time()
    try:
        with socket.socket() as s:
            s.settimeout(5)
            s.bind((source, 0))
            s.connect(("127.0.0.1", port))
            s.sendall(b"GET /index.html HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n")
            reply = b""
            while True:
                chunk = s.recv(65536)
                if not chunk:
                    break
                reply += chunk
            if reply.startswith(b"HTTP/1.1 200 "):
                answered += 1
    except OSError:
        pass
    times.append((time.time() - start) * 1000)
    time.sleep(0.01)
times.sort()
print("%d/%d %.1f %.1f" % (answered, count, times[len(times) // 2], times[int(len(times) * 0.99) - 1]))
