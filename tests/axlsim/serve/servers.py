# SPDX-License-Identifier: MIT
"""Starts `axlsim serve` on a free port for the tests and talks to it over loopback."""
import json
import os
import socket
import subprocess
import http.client

AXLSIM = os.environ["AXLSIM"]
EXAMPLES = os.environ["AXLSIM_EXAMPLES"]


def ipv6_loopback():
    """Whether this machine has ::1 (a container may run without IPv6)."""
    try:
        with socket.socket(socket.AF_INET6, socket.SOCK_STREAM) as probe:
            probe.bind(("::1", 0))
        return True
    except OSError:
        return False


class Server:
    def __init__(self, config="feedback_loop.json", *args):
        self.process = subprocess.Popen(
            [AXLSIM, "serve", os.path.join(EXAMPLES, config), "--port", "0", *args],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.first_line = self.process.stdout.readline().rstrip("\n")
        prefix = "axlsim serve: http://127.0.0.1:"
        assert self.first_line.startswith(prefix), self.first_line
        rest = self.first_line[len(prefix):]
        self.port = int(rest.split("/")[0])
        self.token = rest.split("token=")[1]
        self.url = self.first_line[len("axlsim serve: "):]

    def request(self, method, path, body=None, token=True, headers=None, raw=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        sent = dict(headers or {})
        if token:
            sent["Authorization"] = "Bearer " + self.token
        data = raw if raw is not None else (json.dumps(body) if body is not None else "")
        if method == "POST" or data:
            sent.setdefault("Content-Type", "application/json")
        connection.request(method, path, body=data if (method == "POST" or data) else None,
                           headers=sent)
        response = connection.getresponse()
        text = response.read().decode()
        connection.close()
        try:
            return response.status, json.loads(text)
        except ValueError:
            return response.status, text

    def get(self, path, **kw):
        return self.request("GET", path, **kw)

    def post(self, path, body=None, **kw):
        return self.request("POST", path, body if body is not None else {}, **kw)

    def timeline(self, since=0):
        status, lines = self.get("/api/timeline?since=%d" % since)
        assert status == 200, lines
        return lines

    def stop(self):
        if self.process.poll() is None:
            self.post("/api/stop")
        return self.process.wait(timeout=30)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        self.process.stderr.close()
