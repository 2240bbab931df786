#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures axlsim serve's Modbus TCP server at speed 1: the round trip from a coil write to the
driver's publication of it (median and 99th percentile), and the requests per second that the
server sustains for one client and for eight at once.

    bench/modbus/measure.py build/release/bin/axlsim [ROUNDS]
"""
import http.client
import json
import multiprocessing
import os
import random
import re
import statistics
import subprocess
import sys
import time

from pymodbus.client import ModbusTcpClient

HERE = os.path.dirname(os.path.abspath(__file__))
BUS = os.path.join(HERE, "..", "..", "tests", "axlsim", "serve", "modbus_bus.json")
SECONDS = 3


def start(axlsim):
    process = subprocess.Popen([axlsim, "serve", BUS, "--port", "0", "--modbus", "0"],
                               stdout=subprocess.PIPE, text=True)
    serve = re.match(r"axlsim serve: http://127\.0\.0\.1:(\d+)/\?token=(\w+)",
                     process.stdout.readline())
    modbus = re.match(r"axlsim modbus: 127\.0\.0\.1:(\d+)", process.stdout.readline())
    return process, int(serve.group(1)), serve.group(2), int(modbus.group(1))


def api(port, token, method, path):
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=10)
    connection.request(method, path, body="{}" if method == "POST" else None,
                       headers={"Authorization": "Bearer " + token,
                                "Content-Type": "application/json"})
    answer = json.loads(connection.getresponse().read() or "null")
    connection.close()
    return answer


def round_trips(port, token, modbus_port, rounds):
    client = ModbusTcpClient("127.0.0.1", port=modbus_port, timeout=5)
    client.connect()
    seq = max([line["seq"] for line in api(port, token, "GET", "/api/timeline?since=0")] or [0])
    times = []
    phase = random.Random(16)
    for n in range(rounds):
        value = n % 2 == 0
        # Writes land at every point of the 100 ms scan cycle, not right after a publication.
        time.sleep(phase.uniform(0, 0.1))
        started = time.perf_counter()
        client.write_coil(0, value)
        seen = False
        while not seen:
            for line in api(port, token, "GET", "/api/timeline?since=%d" % seq):
                seq = line["seq"]
                if line["kind"] == "publish" and line["id"] == 100 and line["value"] == int(value):
                    seen = True
        times.append((time.perf_counter() - started) * 1000)
    client.close()
    return times


def requests_in_time(modbus_port):
    client = ModbusTcpClient("127.0.0.1", port=modbus_port, timeout=5)
    client.connect()
    count = 0
    end = time.monotonic() + SECONDS
    while time.monotonic() < end:
        client.read_coils(0, 8)
        count += 1
    client.close()
    return count


def throughput(modbus_port, clients):
    # A process per client, so that the clients do not take turns at one interpreter.
    with multiprocessing.Pool(clients) as pool:
        return sum(pool.map(requests_in_time, [modbus_port] * clients)) / SECONDS


def main():
    axlsim = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 200
    process, port, token, modbus_port = start(axlsim)
    try:
        times = sorted(round_trips(port, token, modbus_port, rounds))
        print("coil write to publication at speed 1, %d rounds: median %.2f ms, p99 %.2f ms" %
              (rounds, statistics.median(times), times[int(0.99 * (len(times) - 1))]))
        for clients in (1, 8):
            print("requests per second, %d client(s) reading 8 coils: %.0f" %
                  (clients, throughput(modbus_port, clients)))
    finally:
        api(port, token, "POST", "/api/stop")
        process.wait(timeout=30)


if __name__ == "__main__":
    main()
