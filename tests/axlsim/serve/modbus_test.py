# SPDX-License-Identifier: MIT
"""The bus over Modbus TCP: `axlsim serve --modbus 0` against pymodbus as the client, and raw
sockets for what no well-behaved client sends. Every loop is bounded in count and time."""
import os
import random
import re
import socket
import struct
import subprocess
import threading
import time
import unittest

from pymodbus.client import ModbusTcpClient
from pymodbus.other_message import ReadExceptionStatusRequest, ReportSlaveIdRequest
from pymodbus.register_read_message import ReadWriteMultipleRegistersRequest
from pymodbus.register_write_message import MaskWriteRegisterRequest

from servers import AXLSIM, Server, ipv6_loopback

BUS = os.path.abspath("modbus_bus.json")
ILLEGAL_FUNCTION = 1
ILLEGAL_DATA_ADDRESS = 2
ILLEGAL_DATA_VALUE = 3


class ModbusServer(Server):
    def __init__(self, *args):
        super().__init__(BUS, "--modbus", "0", *args)
        self.modbus_line = self.process.stdout.readline().rstrip("\n")
        match = re.fullmatch(r"axlsim modbus: 127\.0\.0\.1:(\d+)", self.modbus_line)
        assert match, self.modbus_line
        self.modbus_port = int(match.group(1))

    def client(self):
        client = ModbusTcpClient("127.0.0.1", port=self.modbus_port, timeout=5)
        assert client.connect()
        return client

    def raw(self):
        return socket.create_connection(("127.0.0.1", self.modbus_port), timeout=5)


def frame(function, data, unit=1, transaction=1):
    """A Modbus TCP frame, for requests that pymodbus will not send."""
    return struct.pack(">HHHBB", transaction, 0, len(data) + 2, unit, function) + data


def answer_or_close(sock):
    """What the server sends back before it closes the connection or 3 s pass."""
    received = b""
    sock.settimeout(3)
    try:
        while len(received) < 260:
            chunk = sock.recv(260)
            if not chunk:
                return received, True
            received += chunk
            if len(received) >= 6 and len(received) >= 6 + struct.unpack(">H", received[4:6])[0]:
                return received, False
    except socket.timeout:
        return received, False
    except ConnectionResetError:
        return received, True
    return received, False


class ModbusTest(unittest.TestCase):
    def setUp(self):
        self.server = ModbusServer("--paused")
        self.client = self.server.client()

    def tearDown(self):
        self.client.close()
        self.assertEqual(self.server.stop(), 0)
        self.server.close()

    def step(self, ms):
        status, state = self.server.post("/api/clock", {"action": "step", "ms": ms})
        self.assertEqual(status, 200, state)
        return state

    def timeline_of(self, kind, **fields):
        return [line for line in self.server.timeline() if line["kind"] == kind
                and all(line.get(key) == value for key, value in fields.items())]

    def assertException(self, response, code):
        self.assertTrue(response.isError(), response)
        self.assertEqual(response.exception_code, code, response)

    def test_the_modbus_line_comes_right_after_the_serve_line(self):
        self.assertTrue(self.server.first_line.startswith("axlsim serve: http://127.0.0.1:"))
        self.assertNotEqual(self.server.modbus_port, 0)

    def test_a_coil_write_sets_the_input_and_the_driver_publishes_it_after_the_next_scan(self):
        self.step(100)
        self.assertFalse(self.client.write_coil(0, True).isError())
        inputs = self.timeline_of("input", source="modbus")
        self.assertEqual(len(inputs), 1)
        self.assertEqual((inputs[0]["module"], inputs[0]["pin"], inputs[0]["value"],
                          inputs[0]["t_ms"]), (1, 0, 1, 100))
        self.assertEqual(self.client.read_coils(0, 8).bits[:8], [True] + [False] * 7)
        self.assertEqual(self.timeline_of("publish", id=100, value=1), [])
        self.step(10)
        published = self.timeline_of("publish", id=100, value=1)
        self.assertEqual(len(published), 1)
        self.assertGreater(published[0]["seq"], inputs[0]["seq"])

    def test_writing_several_coils_sets_every_pin_at_one_time(self):
        self.assertFalse(self.client.write_coils(3, [True, False, True]).isError())
        inputs = self.timeline_of("input", source="modbus")
        self.assertEqual([(i["pin"], i["value"]) for i in inputs], [(3, 1), (4, 0), (5, 1)])
        self.assertEqual(len({i["t_ms"] for i in inputs}), 1)
        status, state = self.server.get("/api/state")
        self.assertEqual(state["bus"][0]["DI"], [0, 0, 0, 1, 0, 1, 0, 0])

    def test_an_output_event_through_the_api_shows_in_the_discrete_inputs(self):
        self.assertEqual(self.client.read_discrete_inputs(2, 1).bits[0], False)
        status, answer = self.server.post("/api/event", {"driver": 0, "id": 200, "value": 1})
        self.assertEqual(status, 200, answer)
        self.assertEqual(self.client.read_discrete_inputs(0, 8).bits[:8],
                         [False, False, True, False, False, False, False, False])

    def test_a_holding_register_sets_the_analog_input_and_the_driver_publishes_its_value(self):
        self.step(100)
        self.assertFalse(self.client.write_register(17, 12000).isError())
        self.assertEqual(self.client.read_holding_registers(16, 2).registers, [0, 12000])
        inputs = self.timeline_of("input", source="modbus")
        self.assertEqual((inputs[0]["module"], inputs[0]["pin"], inputs[0]["raw"]), (2, 1, 12000))
        self.step(100)
        published = self.timeline_of("publish", id=300, value=4.0)
        self.assertEqual(len(published), 1)
        self.assertEqual(published[0]["driver"], 1)

    def test_writing_both_holding_registers_sets_both_channels(self):
        self.assertFalse(self.client.write_registers(16, [0x1234, 0xABCD]).isError())
        status, state = self.server.get("/api/state")
        self.assertEqual(state["bus"][1]["AI"], [0x1234, 0xABCD])

    def test_an_input_register_carries_the_analog_output_raw_word(self):
        status, answer = self.server.post("/api/event", {"driver": 1, "id": 310, "value": 7.25})
        self.assertEqual(status, 200, answer)
        status, state = self.server.get("/api/state")
        raw = state["bus"][1]["AO"][0]
        self.assertEqual(raw, 21750)
        self.assertEqual(self.client.read_input_registers(16, 2).registers, [raw, 0])
        # Most significant byte first on the wire, as Modbus carries every word.
        sock = self.server.raw()
        sock.sendall(frame(4, struct.pack(">HH", 16, 1)))
        received, closed = answer_or_close(sock)
        sock.close()
        self.assertEqual(received[-3:], bytes([2, 21750 >> 8, 21750 & 0xFF]))

    def test_addresses_that_name_no_pin_answer_illegal_data_address(self):
        cases = {
            "a pin beyond the digital module's": lambda c: c.read_coils(8, 1),
            "a range that runs past the module's pins": lambda c: c.read_coils(6, 3),
            "a discrete input beyond the module's": lambda c: c.read_discrete_inputs(15, 1),
            "a coil of the analog module": lambda c: c.write_coil(16, True),
            "a discrete input of the analog module": lambda c: c.read_discrete_inputs(16, 1),
            "a holding register of the digital module": lambda c: c.read_holding_registers(0, 1),
            "an input register of the digital module": lambda c: c.read_input_registers(1, 1),
            "a channel beyond the analog module's": lambda c: c.write_register(18, 5),
            "registers that run past the channels": lambda c: c.write_registers(17, [1, 2]),
            "a position the bus does not have": lambda c: c.read_coils(32, 1),
            "the last address": lambda c: c.read_input_registers(65535, 1),
        }
        for name, request in cases.items():
            with self.subTest(name):
                self.assertException(request(self.client), ILLEGAL_DATA_ADDRESS)
        self.assertEqual(self.timeline_of("input", source="modbus"), [])

    def test_functions_the_bus_lacks_answer_illegal_function(self):
        cases = {
            "read exception status": ReadExceptionStatusRequest(unit=1),
            "report server id": ReportSlaveIdRequest(),
            "mask write register": MaskWriteRegisterRequest(16, 0xFFFF, 0),
            "read and write registers": ReadWriteMultipleRegistersRequest(
                read_address=16, read_count=1, write_address=16, write_registers=[1]),
        }
        for name, request in cases.items():
            with self.subTest(name):
                self.assertException(self.client.execute(request), ILLEGAL_FUNCTION)
        sock = self.server.raw()
        for function in (0, 7, 0x2B, 0x7F):  # 0x80 and up mark answers, not requests
            with self.subTest(function=function):
                sock.sendall(frame(function, b"\0\0\0\1"))
                received, closed = answer_or_close(sock)
                self.assertEqual(received[7:], bytes([function | 0x80, ILLEGAL_FUNCTION]))
        sock.close()

    def test_a_function_code_with_the_high_bit_keeps_it_in_the_exception(self):
        # Adding 0x80 to such a code would wrap to another function (0x83 to 0x03).
        sock = self.server.raw()
        for function in (0x80, 0x81, 0x83, 0x90, 0xFF):
            with self.subTest(function=function):
                sock.sendall(frame(function, b"\0\0\0\1", transaction=function))
                received, closed = answer_or_close(sock)
                self.assertFalse(closed)
                self.assertEqual(received, struct.pack(">HHHBBB", function, 0, 3, 1, function,
                                                       ILLEGAL_FUNCTION))
        sock.close()

    def test_malformed_quantities_and_values_answer_illegal_data_value(self):
        cases = {
            "no coils": frame(1, struct.pack(">HH", 0, 0)),
            "more coils than a read may ask": frame(1, struct.pack(">HH", 0, 2001)),
            "more registers than a read may ask": frame(3, struct.pack(">HH", 16, 126)),
            "a coil written 0x1234": frame(5, struct.pack(">HH", 0, 0x1234)),
            "a byte count that is not the quantity's": frame(15, struct.pack(">HHB", 0, 3, 2) + b"\5\0"),
            "fewer bytes than the byte count": frame(16, struct.pack(">HHB", 16, 2, 4) + b"\0\1"),
            "a read without its quantity": frame(3, struct.pack(">H", 16)),
        }
        sock = self.server.raw()
        for name, request in cases.items():
            with self.subTest(name):
                sock.sendall(request)
                received, closed = answer_or_close(sock)
                self.assertEqual(received[7:], bytes([request[7] | 0x80, ILLEGAL_DATA_VALUE]))
        sock.close()
        self.assertEqual(self.timeline_of("input", source="modbus"), [])

    def test_any_unit_id_is_answered_with_the_request_unit_and_transaction(self):
        sock = self.server.raw()
        for unit in (0, 1, 17, 247, 255):
            with self.subTest(unit=unit):
                sock.sendall(frame(1, struct.pack(">HH", 0, 8), unit=unit, transaction=4000 + unit))
                received, closed = answer_or_close(sock)
                self.assertEqual(struct.unpack(">H", received[:2])[0], 4000 + unit)
                self.assertEqual(received[6:9], bytes([unit, 1, 1]))
        sock.close()
        for unit in (0, 255):
            self.assertFalse(self.client.read_coils(0, 1, slave=unit).isError())

    def test_the_state_and_the_page_name_the_modbus_address_and_count_the_clients(self):
        status, state = self.server.get("/api/state")
        self.assertEqual(state["modbus"], {"address": "127.0.0.1:%d" % self.server.modbus_port,
                                           "clients": 1})
        others = [self.server.client() for _ in range(3)]
        self.client.read_coils(0, 1)  # the server has accepted them all once this is answered
        self.assertEqual(self.server.get("/api/state")[1]["modbus"]["clients"], 4)
        for other in others:
            other.close()
        deadline = time.monotonic() + 5
        while self.server.get("/api/state")[1]["modbus"]["clients"] != 1:
            self.assertLess(time.monotonic(), deadline)
        status, page = self.server.get("/")
        self.assertIn('id="modbus-clients"', page)


class ModbusCommandLineTest(unittest.TestCase):
    def serve(self, modbus):
        return subprocess.run([AXLSIM, "serve", BUS, "--port", "0", "--modbus", modbus],
                              capture_output=True, text=True, timeout=30)

    def test_a_modbus_endpoint_without_a_port_is_refused(self):
        for text in ("127.0.0.1:", "502x", "65536", "127.0.0.1:-1", ":502", "0x1f6", "+502",
                     "[::1]", "[::1:502"):
            with self.subTest(text=text):
                result = self.serve(text)
                self.assertEqual(result.returncode, 2)
                self.assertIn('--modbus: expected [ADDR:]PORT with a port from 0 to 65535 in '
                              'decimal digits (an IPv6 ADDR in brackets), not "%s"' % text,
                              result.stderr)

    def test_an_empty_modbus_endpoint_is_refused_saying_what_it_takes(self):
        result = self.serve("")
        self.assertEqual(result.returncode, 2)
        self.assertIn('--modbus: expected [ADDR:]PORT with a port from 0 to 65535 in decimal '
                      'digits (an IPv6 ADDR in brackets), not ""', result.stderr)

    def test_a_host_name_and_ipv6_loopback_are_bound_where_they_say(self):
        cases = [("localhost:0", "localhost", socket.AF_INET, "127.0.0.1")]
        if ipv6_loopback():
            cases += [("::1:0", "[::1]", socket.AF_INET6, "::1"),
                      ("[::1]:0", "[::1]", socket.AF_INET6, "::1")]
        for text, shown, family, host in cases:
            with self.subTest(text=text):
                server = Server(BUS, "--paused", "--modbus", text)
                try:
                    line = server.process.stdout.readline().rstrip("\n")
                    match = re.fullmatch(r"axlsim modbus: (.+):([1-9]\d*)", line)
                    self.assertTrue(match, line)
                    self.assertEqual(match.group(1), shown)
                    with socket.socket(family, socket.SOCK_STREAM) as sock:
                        sock.settimeout(5)
                        sock.connect((host, int(match.group(2))))
                        sock.sendall(frame(1, struct.pack(">HH", 0, 8)))
                        received, closed = answer_or_close(sock)
                        self.assertEqual(received[7:9], bytes([1, 1]))
                    self.assertEqual(server.stop(), 0)
                    self.assertNotIn("warning", server.process.stderr.read())
                finally:
                    server.close()

    def test_an_address_that_cannot_be_bound_is_refused_with_the_reason(self):
        for text, reason in (("192.0.2.1:0", "Cannot assign requested address"),
                             ("no-such-host.invalid:0", "cannot resolve it: ")):
            with self.subTest(text=text):
                result = self.serve(text)
                self.assertEqual(result.returncode, 2)
                self.assertIn("cannot listen on %s port 0 for Modbus: %s"
                              % (text[:-2], reason), result.stderr)
                self.assertEqual(result.stdout, "")

    def test_a_taken_modbus_port_is_refused_naming_it(self):
        taken = ModbusServer("--paused")
        try:
            result = self.serve(str(taken.modbus_port))
            self.assertEqual(result.returncode, 2)
            self.assertIn("cannot listen on 127.0.0.1 port %d for Modbus: Address already in use"
                          % taken.modbus_port, result.stderr)
            self.assertEqual(result.stdout, "")
        finally:
            taken.stop()
            taken.close()

    def test_another_address_is_named_and_warned_about(self):
        server = Server(BUS, "--paused", "--modbus", "0.0.0.0:0")
        try:
            line = server.process.stdout.readline()
            self.assertRegex(line, r"^axlsim modbus: 0\.0\.0\.0:[1-9]\d*$")
            self.assertEqual(server.stop(), 0)
            self.assertIn("axlsim: warning: listening on 0.0.0.0: anyone who can reach it over "
                          "Modbus can drive the plant", server.process.stderr.read())
        finally:
            server.close()


class ModbusLoadTest(unittest.TestCase):
    """The clock runs at speed 1 here: requests meet scans as they would with a real plant."""

    def setUp(self):
        self.server = ModbusServer()

    def tearDown(self):
        self.assertEqual(self.server.stop(), 0)
        self.server.close()

    def test_eight_clients_with_a_thousand_requests_each_see_their_own_writes(self):
        clients, requests = 8, 1000
        errors, last = [], {}
        connected = threading.Barrier(clients + 1, timeout=10)
        finished = threading.Barrier(clients + 1, timeout=120)

        def work(k):
            client = self.server.client()
            # A connect returns once the kernel has queued the connection, before the server has
            # accepted it; an answer says that it has.
            self.assertFalse(client.read_coils(k, 1).isError())
            connected.wait()
            value = False
            try:
                for i in range(requests // 2):
                    value = (i * 7 + k) % 3 == 0
                    if client.write_coil(k, value).isError():
                        errors.append((k, i, "write"))
                    if k < 2:
                        word = (i * 131 + k) & 0xFFFF
                        if client.write_register(16 + k, word).isError():
                            errors.append((k, i, "register"))
                        last[16 + k] = word
                    else:
                        read = client.read_coils(k, 1)
                        if read.isError() or read.bits[0] != value:
                            errors.append((k, i, read))
                last[k] = value
            finally:
                finished.wait()
                client.close()

        threads = [threading.Thread(target=work, args=(k,)) for k in range(clients)]
        started = time.monotonic()
        for thread in threads:
            thread.start()
        connected.wait()
        self.assertEqual(self.server.get("/api/state")[1]["modbus"]["clients"], clients)
        finished.wait()
        for thread in threads:
            thread.join()
        self.assertLess(time.monotonic() - started, 120)
        self.assertEqual(errors, [])
        client = self.server.client()
        try:
            self.assertEqual(client.read_coils(0, 8).bits[:8], [last[k] for k in range(8)])
            self.assertEqual(client.read_holding_registers(16, 2).registers, [last[16], last[17]])
        finally:
            client.close()

    def test_garbage_and_broken_frames_end_only_their_own_connection(self):
        generator = random.Random(16)
        good = self.server.client()
        t_before = self.server.get("/api/state")[1]["t_ms"]
        stuck = self.server.raw()
        stuck.sendall(frame(5, struct.pack(">HH", 1, 0xFF00))[:9])  # and never the rest
        halves = []
        for n in range(10):
            sock = self.server.raw()
            sock.sendall(frame(6, struct.pack(">HH", 16, n))[:n + 1])
            halves.append(sock)
        for sock in halves[::2]:
            sock.close()  # gone mid-frame
        garbage = []
        for n in range(30):
            sock = self.server.raw()
            sock.sendall(bytes(generator.randrange(256) for _ in range(generator.randrange(1, 300))))
            garbage.append(sock)
        # The well-behaved client is served while the others hang. A server that served one
        # connection at a time would not answer it at all; the bound is far above what a loaded
        # machine under a sanitizer takes, and below the client's own time-out of 5 s.
        for i in range(50):
            started = time.monotonic()
            self.assertFalse(good.write_coil(1, i % 2 == 0).isError())
            self.assertLess(time.monotonic() - started, 4.0)
        for sock in garbage + [stuck] + halves[1::2]:
            received, closed = answer_or_close(sock)
            self.assertTrue(closed or len(received) >= 9, received)
            sock.close()
        self.assertFalse(good.read_coils(1, 1).bits[0])
        good.close()
        self.assertGreater(self.server.get("/api/state")[1]["t_ms"], t_before)
        self.assertEqual(self.server.process.poll(), None)


if __name__ == "__main__":
    unittest.main()
