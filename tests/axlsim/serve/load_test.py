# SPDX-License-Identifier: MIT
"""Load on `axlsim serve` over loopback, at speed max: clients following /api/stream while API
requests come in a loop bounded in count and time. It sends AXLSIM_LOAD_REQUESTS requests: 1,000
in CI, 10,000 for the full load (the CMake cache variable of the same name)."""
import http.client
import json
import os
import threading
import time
import unittest

from servers import Server

STREAMS = 20
REQUESTS = int(os.environ.get("AXLSIM_LOAD_REQUESTS", "1000"))
SENDERS = 4
DEADLINE_SECONDS = 240


class StreamFollower(threading.Thread):
    """Reads one /api/stream and notes every seq it sees, and whether any came out of order."""

    def __init__(self, server):
        super().__init__(daemon=True)
        self.connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=30)
        self.connection.request("GET", "/api/stream?since=0",
                                headers={"Authorization": "Bearer " + server.token})
        self.response = self.connection.getresponse()
        self.status = self.response.status
        self.seqs = []
        self.error = None
        self.seen = threading.Condition()

    def run(self):
        try:
            for line in self.response:
                if line.startswith(b"data: "):
                    with self.seen:
                        self.seqs.append(json.loads(line[6:])["seq"])
                        self.seen.notify_all()
        except (OSError, http.client.HTTPException) as error:
            self.error = error
        finally:
            self.connection.close()

    def wait_for(self, seq, seconds):
        with self.seen:
            return self.seen.wait_for(lambda: self.seqs and self.seqs[-1] >= seq, seconds)

    def gaps(self):
        return [(a, b) for a, b in zip(self.seqs, self.seqs[1:]) if b != a + 1]


class LoadTest(unittest.TestCase):
    def test_streams_and_requests_at_speed_max_keep_every_seq_and_every_status(self):
        server = Server("feedback_loop.json", "--speed", "max")
        try:
            followers = [StreamFollower(server) for _ in range(STREAMS)]
            for follower in followers:
                self.assertEqual(follower.status, 200)
                follower.start()
            deadline = time.monotonic() + DEADLINE_SECONDS
            statuses = {}
            lock = threading.Lock()

            def send(first):
                connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=30)
                headers = {"Authorization": "Bearer " + server.token,
                           "Content-Type": "application/json"}
                for n in range(first, REQUESTS, SENDERS):
                    if time.monotonic() > deadline:
                        break
                    kind = n % 4
                    if kind == 0:
                        body = {"module": 1, "pin": n % 8, "value": (n // 8) % 2}
                        connection.request("POST", "/api/input", json.dumps(body), headers)
                    elif kind == 1:
                        body = {"id": 200, "value": n % 2}
                        connection.request("POST", "/api/event", json.dumps(body), headers)
                    elif kind == 2:
                        connection.request("GET", "/api/state", headers=headers)
                    else:
                        connection.request("GET", "/api/timeline?since=%d" % n, headers=headers)
                    response = connection.getresponse()
                    response.read()
                    with lock:
                        statuses[response.status] = statuses.get(response.status, 0) + 1
                connection.close()

            senders = [threading.Thread(target=send, args=(i,)) for i in range(SENDERS)]
            for sender in senders:
                sender.start()
            for sender in senders:
                sender.join()
            self.assertEqual(statuses, {200: REQUESTS})
            self.assertIsNone(server.process.poll(), "the server is still running")
            last = server.timeline(0)[-1]["seq"] if REQUESTS else 0
            for follower in followers:
                self.assertTrue(follower.wait_for(last, max(1, deadline - time.monotonic())))
            self.assertEqual(server.stop(), 0)
            for follower in followers:
                follower.join(timeout=30)
                self.assertEqual(follower.seqs[0], 1)
                self.assertGreaterEqual(follower.seqs[-1], last)
                self.assertEqual(follower.gaps(), [])
        finally:
            server.close()


if __name__ == "__main__":
    unittest.main()
