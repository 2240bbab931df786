# SPDX-License-Identifier: MIT
"""The live page and the HTML report in a real headless Chromium. The live servers start paused,
so that virtual time passes only when a test clicks a step button."""
import json
import os
import re
import shutil
import socket
import subprocess
import tempfile
import unittest
from decimal import Decimal

from browser import Browser, ARTIFACTS
from servers import AXLSIM, EXAMPLES, Server

browser = None


def setUpModule():
    global browser
    browser = Browser()


def tearDownModule():
    browser.quit()


class LivePageTest(unittest.TestCase):
    config = "feedback_loop.json"
    arguments = ("--paused",)

    def setUp(self):
        self.server = Server(self.config, *self.arguments)
        self.browser = browser
        self.browser.driver.set_window_size(1400, 1000)
        self.browser.open(self.server.url)
        self.browser.until(lambda: self.browser.script(
            "return document.querySelectorAll('#bus .card').length") > 0,
            "the page builds a card per bus module")

    def tearDown(self):
        try:
            self.browser.save_screenshot(self.id().split(".")[-1])
        finally:
            self.server.stop()
            self.server.close()

    def click(self, element_id):
        self.browser.element(element_id).click()

    def text(self, element_id):
        return self.browser.element(element_id).text

    def clock(self):
        return Decimal(self.browser.element("clock").get_attribute("data-ms"))

    def step_100(self):
        before = self.clock()
        self.click("step-100")
        self.browser.until(lambda: self.clock() == before + 100, "the clock steps by 100 ms")

    def timeline_rows(self, kind):
        return [row.text for row in
                self.browser.driver.find_elements("css selector", "#timeline .kind-" + kind)]

    def wait_for_row(self, kind, pattern):
        self.browser.until(
            lambda: any(re.search(pattern, row) for row in self.timeline_rows(kind)),
            "a %s row matching %s in the timeline" % (kind, pattern))


class DigitalPageTest(LivePageTest):
    def test_clicking_digital_input_0_publishes_it_and_shows_the_last_value(self):
        self.step_100()
        self.click("di-1-0")
        self.browser.until(lambda: "on" in self.browser.element("di-1-0").get_attribute("class"),
                           "the switch shows the input on")
        self.wait_for_row("input", r'"module":1,"pin":0,"value":1.*"source":"api"')
        self.step_100()
        self.wait_for_row("publish", r'"id":100,.*"value":1')
        self.browser.until(lambda: self.text("last-0-1") == "1",
                           "the button's service shows the published 1 as its last value")

    def test_an_output_event_lights_the_lamp(self):
        self.step_100()
        self.assertNotIn("lit", self.browser.element("do-1-0").get_attribute("class"))
        self.browser.element("event-id-0").clear()
        self.browser.element("event-id-0").send_keys("200")
        self.browser.element("event-value-0").clear()
        self.browser.element("event-value-0").send_keys("1")
        self.click("send-0")
        self.browser.until(lambda: "lit" in self.browser.element("do-1-0").get_attribute("class"),
                           "output 0's lamp lights")
        self.wait_for_row("event", r'"id":200,.*"source":"api"')
        self.assertEqual(self.text("last-0-3"), "1")

    def test_after_the_scenario_pressing_the_button_lights_the_lamp_through_the_host(self):
        self.click("step-1000")
        self.browser.until(lambda: self.clock() == 1000, "the scenario is over")
        self.click("step-100")
        self.browser.until(lambda: self.clock() == 1100, "the clock steps past the scenario's end")
        self.assertNotIn("lit", self.browser.element("do-1-0").get_attribute("class"))
        self.click("di-1-0")
        self.wait_for_row("input", r'"module":1,"pin":0,"value":1.*"source":"api"')
        self.step_100()
        self.browser.until(lambda: "lit" in self.browser.element("do-1-0").get_attribute("class"),
                           "the host's route switches the lamp on")
        self.wait_for_row("route", r'"from":100,"to":200')
        self.browser.until(lambda: "on" in self.browser.element("di-1-1").get_attribute("class"),
                           "the lamp's contact comes back on input 1")
        self.click("di-1-0")
        self.wait_for_row("input", r'"module":1,"pin":0,"value":0.*"source":"api"')
        self.step_100()
        self.browser.until(
            lambda: "lit" not in self.browser.element("do-1-0").get_attribute("class"),
            "releasing the button switches the lamp off")

    def test_pausing_and_stepping_100_ms_advances_the_clock_by_exactly_100_ms(self):
        self.click("resume")
        self.browser.until(lambda: self.text("run-state") == "running", "the clock runs")
        self.browser.until(lambda: self.clock() > 0, "virtual time passes")
        self.click("pause")
        self.browser.until(lambda: self.text("run-state") == "paused", "the clock is paused")
        paused_at = Decimal(str(self.server.get("/api/state")[1]["t_ms"]))
        self.browser.until(lambda: self.clock() == paused_at, "the page shows the paused time")
        self.click("step-100")
        self.browser.until(lambda: self.clock() != paused_at, "the clock moves")
        self.assertEqual(self.clock(), paused_at + 100)
        self.assertEqual(Decimal(str(self.server.get("/api/state")[1]["t_ms"])), paused_at + 100)
        # The clock reads to the microsecond, however finely the pause fell.
        shown = self.text("clock")
        self.assertRegex(shown, r"^\d+(\.\d{1,3})?$")
        self.assertLessEqual(abs(Decimal(shown) - (paused_at + 100)), Decimal("0.0005"))

    def test_the_panel_shows_switches_lamps_the_timeline_and_the_chart_as_the_scenario_plays(self):
        for _ in range(4):
            self.step_100()
        for pin in (0, 1):
            self.assertIn("on", self.browser.element("di-1-%d" % pin).get_attribute("class"))
        for pin in (0, 5):
            self.assertIn("lit", self.browser.element("do-1-%d" % pin).get_attribute("class"))
        self.assertNotIn("lit", self.browser.element("do-1-1").get_attribute("class"))
        self.wait_for_row("publish", r'"id":100,.*"value":1')
        for kind in ("note", "input", "publish", "event", "bus_write"):
            self.assertTrue(self.timeline_rows(kind), kind)
        self.click("show-note")
        self.assertFalse(any(row.is_displayed() for row in self.browser.driver.find_elements(
            "css selector", "#timeline .kind-note")))
        self.click("show-note")
        self.assertEqual(len(self.browser.driver.find_elements("css selector", ".switch")), 8)
        self.assertEqual(len(self.browser.driver.find_elements("css selector", ".lamp")), 8)
        self.assertIn("1.DO5", self.browser.element("chart").get_attribute("data-signals"))
        self.browser.driver.set_window_size(1400, 1250)
        self.browser.script("window.scrollTo(0, 0)")
        self.browser.driver.save_screenshot(os.path.join(ARTIFACTS, "panel.png"))


class AnalogPageTest(LivePageTest):
    config = "analog_ramp.json"

    def test_moving_an_analog_slider_publishes_the_value_at_the_next_scan(self):
        self.click("step-1000")
        self.click("step-1000")
        self.browser.until(lambda: self.clock() == 2000, "the scenario's ramp is over")
        self.browser.script(
            "const s = document.getElementById('ai-1-0'); s.value = 15000;"
            "s.dispatchEvent(new Event('change'));")
        self.wait_for_row("input", r'"module":1,"pin":0,"raw":15000,"source":"api"')
        self.browser.until(lambda: self.text("ai-raw-1-0") == "raw 15000", "the raw word shows")
        self.step_100()
        self.wait_for_row("publish", r'"id":300,.*"value":5\b')
        self.browser.until(lambda: self.text("last-0-1") == "5",
                           "the channel's service shows 5 as its last value")


class StoppedDriverPageTest(LivePageTest):
    config = "overview.json"

    def test_a_stopped_driver_is_shown_in_red_with_its_message(self):
        self.click("step-1000")
        self.browser.until(lambda: "stopped" in self.browser.element(
            "driver-state-0").get_attribute("class"), "the driver is shown stopped")
        state = self.browser.element("driver-state-0")
        self.assertTrue(state.text.startswith("stopped: "), state.text)
        red, green, blue = [int(v) for v in re.findall(r"\d+", state.value_of_css_property("color"))[:3]]
        self.assertGreater(red, 150)
        self.assertLess(max(green, blue), 100)


class ModbusPageTest(LivePageTest):
    arguments = ("--paused", "--modbus", "0")

    def test_the_header_names_the_modbus_address_and_counts_its_clients(self):
        line = self.server.process.stdout.readline().rstrip("\n")
        match = re.fullmatch(r"axlsim modbus: (127\.0\.0\.1:(\d+))", line)
        self.assertTrue(match, line)
        self.browser.until(lambda: self.browser.element("modbus").is_displayed(),
                           "the header shows the Modbus server")
        self.assertEqual(self.text("modbus-address"), match.group(1))
        self.assertEqual(self.text("modbus-clients"), "0")
        with socket.create_connection(("127.0.0.1", int(match.group(2))), timeout=5):
            self.browser.until(lambda: self.text("modbus-clients") == "1",
                               "the header counts the connected client")
        self.browser.until(lambda: self.text("modbus-clients") == "0",
                           "the header counts the client gone")


class HtmlReportTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.report = os.path.join(self.folder, "report.html")

    def tearDown(self):
        try:
            browser.save_screenshot(self.id().split(".")[-1])
        finally:
            shutil.rmtree(self.folder)

    def write_config(self, config):
        path = os.path.join(self.folder, "config.json")
        with open(path, "w") as out:
            json.dump(config, out)
        return path

    def open_report(self):
        """Opens the report in Chromium once its chart has drawn its signals; their names."""
        browser.driver.set_window_size(1400, 1000)
        browser.open("file://" + self.report)
        browser.until(lambda: browser.script(
            "return document.getElementById('chart').dataset.signals || ''") != "",
            "the report draws its signals")
        return browser.script("return chart.names()")

    def run_axlsim(self, config, *arguments):
        run = subprocess.run([AXLSIM, "run", config, "--json", "--html", self.report, *arguments],
                             capture_output=True, text=True, timeout=60)
        self.assertEqual(run.returncode, 0, run.stderr)

    def shown(self, element_id):
        """The text of a note of the report, or None while it is hidden."""
        return browser.script(
            "const e = document.getElementById(arguments[0]); return e.hidden ? null : e.textContent",
            element_id)

    def test_the_report_opens_and_draws_one_waveform_per_signal(self):
        self.run_axlsim(os.path.join(EXAMPLES, "feedback_loop.json"))
        signals = self.open_report()
        drawn = browser.script(
            "return document.getElementById('chart').dataset.signals").split("|")
        self.assertEqual(sorted(drawn), sorted(signals))
        self.assertEqual(len(signals), len(set(signals)))
        for signal in ("1.DI0", "1.DI1", "1.DO0", "1.DO5", "published 100", "published 101",
                       "received 200", "received 201"):
            self.assertIn(signal, signals)
        self.assertIsNone(self.shown("waves-note"))
        self.assertIsNone(self.shown("timeline-note"))
        self.assertIsNone(self.shown("interrupted"))

    def test_a_note_that_opens_an_html_comment_and_a_script_shows_as_text(self):
        hostile = "<!--<script> a & b </script> c"
        self.run_axlsim(self.write_config({
            "description": hostile,
            "driver": {"deviceType": "AXL_F_DI8_1_DO8_1", "params": {"Consecutive Number": "1"}},
            "mappings": {"200": {"size": 1}},
            "services": {"1": {"eventId": 200, "type": "DigitalOut",
                               "params": {"PinNum": "0", "InitVal": "0"}}},
            "scenario": [{"at_ms": 5, "note": hostile},
                         {"at_ms": 10, "event": {"id": 200, "value": 1}},
                         {"at_ms": 20, "end": True}]}))
        signals = self.open_report()
        note = browser.script(
            "return document.querySelector('#timeline tr.kind-note td:last-child').textContent")
        description = browser.script("return document.getElementById('description').textContent")
        self.assertIn("1.DO0", signals)
        self.assertEqual(json.loads(note), {"text": hostile})
        self.assertEqual(description, hostile)
        self.assertEqual(browser.script("return document.scripts.length"), 2)

    def test_the_report_of_a_long_run_says_what_it_left_out_and_draws_the_rest(self):
        # An input that changes every millisecond for a minute: 60,000 lines and changes.
        self.run_axlsim(self.write_config({
            "driver": {"deviceType": "AXL_F_DI8_1_DO8_1", "params": {"Consecutive Number": "1"}},
            "mappings": {"100": {"size": 1}},
            "services": {"1": {"eventId": 100, "type": "DigitalIn", "params": {"PinNum": "0"}}},
            "plant": [{"signal": {"to": "1.DI0", "shape": "square", "period_ms": 2,
                                  "duty": 0.5}}]}), "--until", "60000")
        signals = self.open_report()
        self.assertIn("1.DI0", signals)
        self.assertRegex(self.shown("waves-note"),
                         r"^The waveforms show \d+ of \d+ changes: of each signal, the first and "
                         r"the last in each 30 ms of the run\.$")
        self.assertRegex(self.shown("timeline-note"),
                         r"^The timeline shows the first 10000 and the last 10000 of \d+ lines\.$")
        gap = browser.script("return document.querySelector('#timeline tr.gap').textContent")
        self.assertRegex(gap, r"^\.\.\. \d+ lines left out \.\.\.$")
        self.assertEqual(browser.script("return document.querySelectorAll('#timeline tr').length"),
                         1 + 10000 + 1 + 10000)
        self.assertIsNone(self.shown("interrupted"))

    def test_the_report_of_a_run_stopped_by_a_closed_pipe_says_so(self):
        # As `axlsim run ... | head -1` does: the reader goes after its first line.
        run = subprocess.Popen([AXLSIM, "run", os.path.join(EXAMPLES, "feedback_loop.json"),
                                "--until", "1000000000000", "--html", self.report],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        run.stdout.readline()
        run.stdout.close()
        self.assertEqual(run.wait(timeout=60), 2)
        run.stderr.close()
        self.open_report()
        self.assertRegex(self.shown("interrupted"),
                         r"^The run was interrupted by a failed write to the standard output "
                         r"\(Broken pipe\) at \d+(\.\d+)? ms: this report shows it up to there\.$")

if __name__ == "__main__":
    unittest.main()
