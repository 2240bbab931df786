#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The latency of `axlsim serve` from POST /api/input to the driver's publication of that input,
as a client sees it on /api/stream, at speed 1: starts the server on a free port, toggles digital
input 0 of feedback_loop.json a number of times and prints the median and the 99th percentile of
the wall time, and of the virtual time, from the request to the publication, and of the wall
time beyond the virtual (what the server adds to the driver's wait for its next scan). Each
request comes at a random moment of the scan cycle.

    bench/serve/latency.py build/release/bin/axlsim examples/feedback_loop.json 200
"""
import http.client
import json
import random
import statistics
import subprocess
import sys
import threading
import time

BUTTON_EVENT = 100
SCAN_SECONDS = 0.1


def percentile(values, share):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(share * len(ordered)))]


def main():
    program, config, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    server = subprocess.Popen([program, "serve", config, "--port", "0"], stdout=subprocess.PIPE,
                              text=True)
    host_port, token = server.stdout.readline().split("http://")[1].strip().split("/?token=")
    port = int(host_port.split(":")[1])
    headers = {"Authorization": "Bearer " + token, "Content-Type": "application/json"}

    published = {}
    arrived = threading.Condition()

    def follow():
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        connection.request("GET", "/api/stream", headers=headers)
        for line in connection.getresponse():
            if line.startswith(b"data: "):
                o = json.loads(line[6:])
                if o["kind"] == "publish" and o["id"] == BUTTON_EVENT:
                    with arrived:
                        published[o["value"]] = (time.monotonic(), o["t_ms"])
                        arrived.notify_all()

    threading.Thread(target=follow, daemon=True).start()
    api = http.client.HTTPConnection("127.0.0.1", port, timeout=10)
    wall, virtual, added = [], [], []
    moments = random.Random(1)
    try:
        for n in range(count):
            time.sleep(moments.uniform(0, SCAN_SECONDS))
            value = (n + 1) % 2
            with arrived:
                published.pop(value, None)
            sent = time.monotonic()
            api.request("POST", "/api/input", json.dumps({"module": 1, "pin": 0, "value": value}),
                        headers)
            response = api.getresponse()
            answer = json.loads(response.read())
            assert response.status == 200, answer
            with arrived:
                assert arrived.wait_for(lambda: value in published, 10), "no publication"
                seen, t_ms = published[value]
            wall.append((seen - sent) * 1000)
            virtual.append(t_ms - answer["t_ms"])
            added.append(wall[-1] - virtual[-1])
    finally:
        api.request("POST", "/api/stop", "{}", headers)
        api.getresponse().read()
        server.wait(timeout=30)
    for name, values in (("wall", wall), ("virtual", virtual), ("added", added)):
        print("%-7s median %.1f ms  p99 %.1f ms  (n=%d)" % (
            name, statistics.median(values), percentile(values, 0.99), len(values)))


if __name__ == "__main__":
    main()
