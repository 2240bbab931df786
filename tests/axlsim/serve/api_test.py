# SPDX-License-Identifier: MIT
"""The HTTP API of `axlsim serve`, against a server started on port 0 with its clock paused so that
virtual time passes only when a test steps it."""
import http.client
import re
import signal
import socket
import subprocess
import unittest

from servers import AXLSIM, EXAMPLES, Server, ipv6_loopback


class ApiTest(unittest.TestCase):
    def setUp(self):
        self.server = Server("feedback_loop.json", "--paused")

    def tearDown(self):
        self.server.close()

    def step(self, ms):
        status, state = self.server.post("/api/clock", {"action": "step", "ms": ms})
        self.assertEqual(status, 200, state)
        return state

    def test_the_first_line_names_the_address_and_a_128_bit_token(self):
        self.assertRegex(self.server.first_line,
                         r"^axlsim serve: http://127\.0\.0\.1:\d+/\?token=[0-9a-f]{32}$")

    def test_each_start_has_a_fresh_token(self):
        other = Server("feedback_loop.json", "--paused")
        try:
            self.assertNotEqual(other.token, self.server.token)
        finally:
            other.close()

    def test_the_state_shows_the_bus_the_driver_and_its_services(self):
        status, state = self.server.get("/api/state")
        self.assertEqual(status, 200)
        self.assertEqual(state["paused"], True)
        self.assertEqual(state["bus"][0]["type"], "AXL_F_DI8_1_DO8_1")
        self.assertEqual(len(state["bus"][0]["DI"]), 8)
        self.assertNotIn("AI", state["bus"][0])
        driver = state["drivers"][0]
        self.assertEqual(driver["name"], "axl1")
        self.assertFalse(driver["stopped"])
        self.assertEqual([s["eventId"] for s in driver["services"]], [100, 101, 200, 201])
        self.assertEqual(driver["services"][0]["pin"], 0)

    def test_an_input_is_published_at_the_next_scan_and_shows_as_the_last_value(self):
        self.step(1000)
        status, answer = self.server.post("/api/input", {"module": 1, "pin": 0, "value": 1})
        self.assertEqual(status, 200, answer)
        self.assertEqual(answer["t_ms"], 1000)
        state = self.step(200)
        button = state["drivers"][0]["services"][0]
        self.assertEqual(button["last"], 1)
        self.assertEqual(state["bus"][0]["DI"][0], 1)
        lines = self.server.timeline()
        api_input = [l for l in lines if l["kind"] == "input" and l.get("source") == "api"]
        self.assertEqual(len(api_input), 1)
        published = [l for l in lines if l["kind"] == "publish" and l["id"] == 100
                     and l["seq"] > api_input[0]["seq"]]
        self.assertEqual(published[0]["value"], 1)

    def test_an_output_event_lights_the_output_on_the_bus(self):
        self.step(1000)
        status, answer = self.server.post("/api/event", {"id": 200, "value": 1})
        self.assertEqual(status, 200, answer)
        _, state = self.server.get("/api/state")
        self.assertEqual(state["bus"][0]["DO"][0], 1)
        self.assertEqual(state["drivers"][0]["services"][2]["last"], 1)
        events = [l for l in self.server.timeline() if l["kind"] == "event" and l.get("source")]
        self.assertEqual(events[-1]["source"], "api")

    def test_a_plc_operation_appears_in_the_timeline(self):
        status, answer = self.server.post("/api/plc", {"operation": "Stop"})
        self.assertEqual(status, 200, answer)
        plc = [l for l in self.server.timeline() if l["kind"] == "plc"]
        self.assertEqual(plc[-1]["operation"], "Stop")
        self.assertEqual(plc[-1]["source"], "api")

    def test_a_step_advances_the_paused_clock_by_exactly_its_time(self):
        before = self.step(250)["t_ms"]
        self.assertEqual(self.step(100)["t_ms"], before + 100)

    def test_the_speed_can_be_set_and_resumed(self):
        status, state = self.server.post("/api/clock", {"speed": 10})
        self.assertEqual((status, state["speed"]), (200, 10))
        status, state = self.server.post("/api/clock", {"speed": "max"})
        self.assertEqual((status, state["speed"]), (200, "max"))
        status, state = self.server.post("/api/clock", {"action": "resume"})
        self.assertEqual((status, state["paused"]), (200, False))

    def test_the_timeline_is_numbered_from_1_without_gaps(self):
        self.step(2000)
        lines = self.server.timeline()
        self.assertEqual([l["seq"] for l in lines], list(range(1, len(lines) + 1)))
        later = self.server.timeline(since=5)
        self.assertEqual(later[0]["seq"], 6)

    def test_a_request_without_the_token_is_refused(self):
        status, answer = self.server.get("/api/state", token=False)
        self.assertEqual(status, 401)
        status, _ = self.server.get("/api/state", token=False,
                                    headers={"Authorization": "Bearer 00"})
        self.assertEqual(status, 401)

    def test_a_cross_origin_post_without_the_token_is_refused(self):
        status, _ = self.server.request(
            "POST", "/api/input", raw="module=1&pin=0&value=1", token=False,
            headers={"Origin": "http://elsewhere.example",
                     "Content-Type": "application/x-www-form-urlencoded"})
        self.assertEqual(status, 401)
        self.assertEqual(self.server.get("/api/state")[1]["bus"][0]["DI"][0], 0)

    def test_a_host_header_naming_another_server_is_forbidden(self):
        status, answer = self.server.get("/api/state", headers={"Host": "attacker.example"})
        self.assertEqual(status, 403)
        status, _ = self.server.get("/", headers={"Host": "attacker.example:80"})
        self.assertEqual(status, 403)
        status, _ = self.server.get("/api/state", headers={"Host": "localhost:1"})
        self.assertEqual(status, 200)

    def test_a_body_over_64_kib_is_too_large(self):
        status, answer = self.server.post("/api/input", raw="[" + "0," * 40000 + "0]")
        self.assertEqual(status, 413, answer)

    def test_malformed_json_is_a_bad_request(self):
        status, answer = self.server.post("/api/input", raw="{\"module\": ")
        self.assertEqual(status, 400)
        self.assertIn("error", answer)

    def test_a_value_out_of_range_names_the_reason_and_pointer_of_the_configuration_reader(self):
        status, answer = self.server.post("/api/input", {"module": 1, "pin": 8, "value": 1})
        self.assertEqual((status, answer),
                         (400, {"error": "expected a whole number from 0 to 7", "pointer": "/pin"}))
        status, answer = self.server.post("/api/event", {"id": 200})
        self.assertEqual((status, answer["error"]),
                         (400, "an event carries exactly one of \"value\", \"bytes\" and \"null\""))
        status, answer = self.server.post("/api/plc", {"operation": "Jump"})
        self.assertEqual((status, answer["pointer"]), (400, "/operation"))
        status, answer = self.server.post("/api/clock", {"speed": 0.01})
        self.assertEqual((status, answer["pointer"]), (400, "/speed"))

    def test_an_unknown_path_is_not_found(self):
        status, answer = self.server.get("/api/nothing")
        self.assertEqual(status, 404)
        self.assertEqual(answer["error"], "no such page")

    def test_the_page_is_served_without_anything_from_elsewhere(self):
        status, page = self.server.get("/", token=False)
        self.assertEqual(status, 200)
        self.assertIn("<canvas id=\"chart\"", page)
        self.assertNotRegex(page, r"(src|href)=\"https?:")

    def test_stop_ends_the_server_cleanly(self):
        self.assertEqual(self.server.stop(), 0)
        self.assertEqual(self.server.process.stdout.read(),
                         "axlsim serve: stopped by POST /api/stop; the drivers are deleted\n")

    def test_a_since_beyond_the_last_seq_returns_nothing(self):
        # A step, so that the timeline has lines however slowly the server started its drivers.
        self.step(250)
        self.assertGreater(len(self.server.timeline(0)), 0)
        for since in ("18446744073709551615", "18446744073709551614", "1000000"):
            with self.subTest(since=since):
                status, lines = self.server.get("/api/timeline?since=" + since)
                self.assertEqual((status, lines), (200, []))

    def test_a_since_that_is_not_a_number_is_a_bad_request(self):
        for since in ("-1", "abc", "", "1e3", "18446744073709551616"):
            with self.subTest(since=since):
                status, answer = self.server.get("/api/timeline?since=" + since)
                self.assertEqual(status, 400, answer)
                self.assertIn("since: expected a whole number", answer["error"])

    def test_a_taken_port_is_named_in_the_error(self):
        import subprocess
        from servers import AXLSIM, EXAMPLES
        result = subprocess.run(
            [AXLSIM, "serve", EXAMPLES + "/feedback_loop.json", "--port", str(self.server.port)],
            capture_output=True, text=True, timeout=30)
        self.assertEqual(result.returncode, 2)
        self.assertIn("port %d" % self.server.port, result.stderr)


class AddressTest(unittest.TestCase):
    """Where the server listens, as --port and --listen say, and the URL it prints for it."""

    def start(self, *args):
        return subprocess.Popen([AXLSIM, "serve", EXAMPLES + "/feedback_loop.json", "--paused",
                                 *args], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def served(self, process, host):
        try:
            line = process.stdout.readline().rstrip("\n")
            match = re.fullmatch(r"axlsim serve: http://(.+?):(\d+)/\?token=([0-9a-f]{32})", line)
            self.assertTrue(match, line)
            connection = http.client.HTTPConnection(host, int(match.group(2)), timeout=10)
            connection.request("GET", "/api/state",
                               headers={"Authorization": "Bearer " + match.group(3)})
            self.assertEqual(connection.getresponse().status, 200)
            connection.close()
            return match.group(1), int(match.group(2))
        finally:
            process.terminate()
            process.communicate(timeout=30)

    def test_a_port_with_a_leading_zero_is_read_as_decimal(self):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            free = probe.getsockname()[1]
        host, port = self.served(self.start("--port", "0%d" % free), "127.0.0.1")
        self.assertEqual((host, port), ("127.0.0.1", free))

    @unittest.skipUnless(ipv6_loopback(), "no IPv6 loopback on this machine")
    def test_ipv6_loopback_is_taken_with_or_without_brackets_and_shown_in_brackets(self):
        for listen in ("::1", "[::1]"):
            with self.subTest(listen=listen):
                host, port = self.served(self.start("--port", "0", "--listen", listen), "::1")
                self.assertEqual(host, "[::1]")

    def test_an_empty_or_unbalanced_listen_address_is_refused(self):
        for listen in ("", "[::1", "::1]"):
            with self.subTest(listen=listen):
                result = subprocess.run([AXLSIM, "serve", EXAMPLES + "/feedback_loop.json",
                                         "--port", "0", "--listen", listen],
                                        capture_output=True, text=True, timeout=30)
                self.assertEqual(result.returncode, 2)
                self.assertIn('--listen: expected an address or a host name of this machine (an '
                              'IPv6 address also in brackets), not "%s"' % listen, result.stderr)
                self.assertEqual(result.stdout, "")


class EndingTest(unittest.TestCase):
    """Ctrl-C and SIGTERM end a server whose standard output is a pipe, at once after its start
    as well as after it has served, and it deletes its drivers before it exits 0."""

    def end_by(self, signal_number, served):
        server = Server("feedback_loop.json")
        try:
            if served:
                self.assertEqual(server.get("/api/state")[0], 200)
            server.process.send_signal(signal_number)
            self.assertEqual(server.process.wait(timeout=30), 0)
            self.assertEqual(server.process.stdout.read(),
                             "axlsim serve: stopped by %s; the drivers are deleted\n"
                             % signal.Signals(signal_number).name)
        finally:
            server.close()

    def test_sigterm_right_after_the_start_ends_it_cleanly(self):
        self.end_by(signal.SIGTERM, served=False)

    def test_sigint_right_after_the_start_ends_it_cleanly(self):
        self.end_by(signal.SIGINT, served=False)

    def test_sigterm_after_a_request_ends_it_cleanly(self):
        self.end_by(signal.SIGTERM, served=True)

    def test_sigint_after_a_request_ends_it_cleanly(self):
        self.end_by(signal.SIGINT, served=True)


if __name__ == "__main__":
    unittest.main()
