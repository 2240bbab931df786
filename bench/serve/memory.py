#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The memory of a long-running `axlsim serve`: starts it at speed 1 on a free port, pokes it now
and then (an input, the state, the timeline) and prints its resident set size at the given
minutes.

    bench/serve/memory.py build/release/bin/axlsim examples/feedback_loop.json 0 1 10 30 50 60
"""
import http.client
import json
import subprocess
import sys
import time

POKE_SECONDS = 5


def rss_kib(pid):
    with open("/proc/%d/status" % pid) as status:
        for line in status:
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
    raise RuntimeError("no VmRSS for %d" % pid)


def main():
    program, config, *minutes = sys.argv[1:]
    marks = sorted(float(m) for m in minutes)
    server = subprocess.Popen([program, "serve", config, "--port", "0"], stdout=subprocess.PIPE,
                              text=True)
    url = server.stdout.readline().split("http://")[1].strip()
    host_port, token = url.split("/?token=")
    port = int(host_port.split(":")[1])
    headers = {"Authorization": "Bearer " + token, "Content-Type": "application/json"}

    def call(method, path, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=10)
        connection.request(method, path, body=json.dumps(body) if body is not None else None,
                           headers=headers)
        response = connection.getresponse()
        answer = response.read()
        connection.close()
        return response.status, answer

    start = time.monotonic()
    value = 0
    seen = 0
    try:
        while marks:
            elapsed = (time.monotonic() - start) / 60
            if elapsed >= marks[0]:
                print("%6.1f min  RSS %d KiB" % (elapsed, rss_kib(server.pid)), flush=True)
                marks.pop(0)
                continue
            value ^= 1
            assert call("POST", "/api/input", {"module": 1, "pin": 0, "value": value})[0] == 200
            assert call("GET", "/api/state")[0] == 200
            status, answer = call("GET", "/api/timeline?since=%d" % seen)
            assert status == 200
            # Only what is new, as the page asks for it.
            seen = max([seen] + [line["seq"] for line in json.loads(answer)])
            time.sleep(POKE_SECONDS)
    finally:
        call("POST", "/api/stop")
        server.wait(timeout=30)
    print("exit status", server.returncode)


if __name__ == "__main__":
    main()
