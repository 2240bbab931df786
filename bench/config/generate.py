#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes large configurations for timing `axlsim check` and `axlsim run` on them.

  generate.py routes MEGABYTES    host routes, about 100 bytes each, until the file is that large
  generate.py scenario STEPS      a scenario of that many input steps, one every 500 ms
  generate.py nesting LEVELS      objects and lists nested that deep (256 is the most axlsim reads)

The configuration goes to standard output.
"""

import sys

DRIVER = """{
  "driver": { "name": "axl1", "deviceType": "AXL_F_DI8_1_DO8_1",
              "params": { "Consecutive Number": "1" } },
  "mappings": { "100": { "size": 1 }, "101": { "size": 1 }, "200": { "size": 1 },
                "300": { "size": 1 } },
  "services": {
    "1": { "eventId": 100, "name": "button", "type": "DigitalIn", "params": { "PinNum": "0" } },
    "2": { "eventId": 101, "name": "contact", "type": "DigitalIn", "params": { "PinNum": "1" } },
    "3": { "eventId": 200, "name": "lamp", "type": "DigitalOut",
           "params": { "PinNum": "0", "InitVal": "0" } },
    "4": { "eventId": 300, "name": "restart", "type": "RestartDevice" }
  }"""


def routes(megabytes):
    out = sys.stdout
    out.write(DRIVER + ',\n  "host": [\n')
    written = 0
    limit = int(megabytes * 1024 * 1024)
    first = True
    i = 0
    while written < limit:
        # Every route restarts the driver when the button is published: routes to one output
        # would each be a finding, routes to a restart are not. The delays differ so that no two
        # lines are alike.
        line = ('    { "route": { "from": 100, "to": 300, "map": "copy", "delay_ms": %d, '
                '"on_change": false } }' % (i % 1000))
        out.write(("" if first else ",\n") + line)
        written += len(line) + 2
        first = False
        i += 1
    out.write("\n  ]\n}\n")


def scenario(steps):
    out = sys.stdout
    out.write(DRIVER + ',\n  "scenario": [\n')
    for i in range(steps):
        out.write('    { "at_ms": %d, "input": { "module": 1, "pin": 0, "value": %d } },\n'
                  % (i * 500, i % 2))
    out.write('    { "at_ms": %d, "end": true }\n  ]\n}\n' % (steps * 500))


def nesting(levels):
    # The top level is one object; the rest are lists around an empty one.
    sys.stdout.write('{ "station": ' + "[" * (levels - 1) + "]" * (levels - 1) + " }\n")


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in ("routes", "scenario", "nesting"):
        sys.exit(__doc__)
    kind, size = sys.argv[1], sys.argv[2]
    if kind == "routes":
        routes(float(size))
    elif kind == "scenario":
        scenario(int(size))
    else:
        nesting(int(size))


if __name__ == "__main__":
    main()
