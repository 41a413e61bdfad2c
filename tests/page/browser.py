"""The page in a real browser, without a window. Usage: browser.py PROGRAM CHROMEDRIVER [TEST...]

VORN_HOST names a library with a host of one's own; without VORN_ACCESSIBILITY_CHECKER its test is left out.
Set VORN_PICTURE to a file's name to have the picture of the documentation made anew.
"""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

PROGRAM, DRIVER = sys.argv[1:3]
FOLDER = pathlib.Path("/tmp/page-test")
CHECKER = pathlib.Path(os.environ.get("VORN_ACCESSIBILITY_CHECKER", "not given"))
HOST = os.environ["VORN_HOST"]  # a library with a host of one's own
BOUND = 60  # seconds that no healthy run needs

# The usual, by what stands on the buttons, and what must arrive.
BUTTONS = {
    "assistant": {
        "Listen": "VornAudioIn.sendAudioData",  # which the host begins when it is asked
        "Stop listening": "VornAudioIn.stopStreamingAudioData",
        "Mute": "VornDeviceCapabilities.onMute(true)", "Unmute": "VornDeviceCapabilities.onMute(false)",
        "Play music": "VornEMPAdapterControl.launchAndPlay", "Next track": "VornEMPAdapterControl.nextTrack",
        "Pause music": "VornEMPAdapterControl.pause", "Show a card": "VornGUIOutput.renderGUICard",
        "Clear the display": "VornGUIOutput.clearGUICard", "Message to the device": "VornAppMessaging.sendAppMessage",
        "Somebody calls": "VornCommsManager.onCommsStateChanged(RINGING)", "The call ends": "VornCommsManager.onCommsStateChanged(ENDED)",
        "Set up": "VornOOBE.sendCBLInfo",
    },
    "firmware": {
        "Press talk": "VornAudioIn.notifyAlexaButtonPress", "Release talk": "VornAudioIn.notifyAlexaButtonReleased",
        "Network is there": "VornDeviceInfo.notifyNetworkConnectionChanged(CONNECTED)",
        "Network is gone": "VornDeviceInfo.notifyNetworkConnectionChanged(DISCONNECTED)",
        "Message to the app": "VornAppMessaging.SendMessageToxApp", "Answer the call": "VornCommsManager.notifyCallAction(1)",
        "Next, on the device": "VornGUIOutput.notifyPlaybackControllerAction(NEXT)", "Muted by hand": "VornDeviceInfo.notifyMuteChanged(true)",
        "Unmuted by hand": "VornDeviceInfo.notifyMuteChanged(false)",
    },
}
VALUES = {"a text": "SpeechPlayer", "true or false": "true", "a whole number": "1", "a number": "1.5",
          "a duration such as 500ms or 2s": "1ms", "a list such as [en-US, de-DE]": "[a, b]",
          "samples such as [0, 120, -120]": "[0, 1]", "a set such as {alarm=07:00, city=Oslo}": "{a=b}",
          "a call action's number": "1", "a communications state": "RINGING"}


def line(number, **fields):
    call = {"call": number, "time": number * 10, "duration": 3, "thread": "assistant", "direction": "down", "adapter": "VornDeviceInfo",
            "operation": "getVolume", "interface": "VornDALImplIF", "slot": 13, "inside": 0, "arguments": [], "result": str(number % 100),
            "written": [], "exception": None}
    return json.dumps({**call, **fields}) + "\n"


HEADER = '{"recording":"vorn-speaker","version":1}\n'


def file(name, text):
    path = FOLDER / name
    path.write_text(text)
    return str(path)


class Page(unittest.TestCase):
    options = ()
    browser = None

    @classmethod
    def setUpClass(cls):
        if Page.browser is None:
            Page.browser = cls.start("profile", {"browser": "ALL"})

    @staticmethod
    def start(profile, logs, **more):
        options = Options()
        for option in ("--headless=new", "--window-size=1400,1000", "--disable-gpu", "--disable-dev-shm-usage", f"--user-data-dir={FOLDER}/{profile}"):
            options.add_argument(option)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")  # which root cannot have
        options.set_capability("goog:loggingPrefs", logs)
        for name, value in more.items():
            options.add_experimental_option(name, value)
        return webdriver.Chrome(service=Service(DRIVER), options=options)

    def setUp(self):
        self.serve(*self.options)

    def tearDown(self):
        self.program.send_signal(signal.SIGINT)
        self.assertEqual(self.program.wait(BOUND), 0)
        self.program.stdout.close()
        if self._outcome.success:
            serious = [entry for entry in self.browser.get_log("browser") if entry["level"] == "SEVERE" and "ERR_CONNECTION_REFUSED" not in entry["message"]
                       and "ERR_INCOMPLETE_CHUNKED_ENCODING" not in entry["message"] and "the server responded with a status of 400" not in entry["message"]]
            self.assertEqual(serious, [])

    def serve(self, *options):
        shutil.rmtree(FOLDER / "state", ignore_errors=True)
        self.program = subprocess.Popen([PROGRAM, "--state", str(FOLDER / "state"), "serve", *options], stdout=subprocess.PIPE, text=True)
        self.address = self.program.stdout.readline().strip()
        self.browser.get(self.address)
        self.until(lambda: self.script("return document.body.dataset.ready"))

    # What a person does, and sees.

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def until(self, holds):
        return WebDriverWait(self.browser, BOUND, 0.02).until(lambda _: holds())

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.script("return document.querySelector(arguments[0])?.textContent ?? ''", selector)

    def press(self, words, within="body"):
        buttons = self.script("""
          return [...document.querySelector(arguments[1]).querySelectorAll('button')].filter((button) => button.textContent === arguments[0]);""", words, within)
        self.assertEqual(len(buttons), 1, words)
        self.script("arguments[0].scrollIntoView({block: 'center'})", buttons[0])
        buttons[0].click()

    def rows(self):
        return self.script("return [...document.querySelectorAll('#lanes .row:not([hidden])')].map((row) => row.textContent)")

    def sees(self, text):
        self.until(lambda: any(text in row for row in self.rows()))

    def fact(self, name):
        return self.text(f'[data-fact="{name}"]')

    def fact_of_figures(self, name):
        return self.text(f'[data-figure="{name}"]')

    def save_calls(self):
        """What is seen, as the lines of a recording."""
        self.browser.execute_cdp_cmd("Browser.setDownloadBehavior", {"behavior": "allow", "downloadPath": str(FOLDER)})
        saved = FOLDER / "calls.jsonl"
        saved.unlink(missing_ok=True)
        self.press("Save as a recording", "#calls")
        self.until(saved.exists)
        return saved, [json.loads(text) for text in saved.read_text().splitlines()]

    def played(self):
        """What came of the last statement, once it has."""
        self.until(lambda: self.text("#outcome") and not self.script("return document.getElementById('outcome').hasAttribute('aria-busy')"))
        return self.text("#outcome")

    def open(self, *paths):
        self.find("#open").send_keys("\n".join(paths))


class Buttons:
    def test_every_usual_button_reaches_the_host(self):
        for side, buttons in BUTTONS.items():
            shown = self.script(f"return [...document.querySelectorAll('#{side} [role=group] button')].map((button) => button.textContent)")
            self.assertEqual(shown, list(buttons))
            for button, call in buttons.items():
                with self.subTest(button):
                    self.press(button, f"#{side}")
                    self.sees(call)
                    self.played()
                    self.assertEqual(self.script("return document.getElementById('outcome').className"), "", self.text("#outcome"))


class OwnHost(Buttons, Page):
    options = ("--host", HOST)

    def test_nothing_is_told_of_it_that_it_did_not_tell(self):
        self.until(lambda: self.text("#source") == f"The speaker runs, with the host {HOST}.")
        self.assertEqual([self.fact(name) for name in ("Volume", "Muted", "Network", "Language")], ["?", "?", "?", ""])
        self.find("#assistantVolume").send_keys(Keys.END)
        self.until(lambda: self.fact("Volume") == "100")

    def test_what_it_does_not_do_is_said(self):
        self.press("Play music", "#assistant")
        self.assertTrue(self.played().endswith("gave false: it was not done"), self.text("#outcome"))
        Select(self.find("#assistantOperation")).select_by_visible_text("VornDeviceInfo.getMuteStatus")
        self.press("Call", "#assistant")
        self.until(lambda: self.text("#outcome") == "assistant VornDeviceInfo.getMuteStatus gave false")  # which is an answer

    def test_a_scenario_goes_on_after_what_this_host_answers_differently(self):
        self.until(lambda: "One whole morning" in self.script("return document.getElementById('script').value"))
        self.find("#keepGoing").click()
        self.press("Start", "#scenario")
        self.until(lambda: self.text("#progress").startswith("played to the end"))
        self.assertRegex(self.text("#progress"), r"; not met: \d+ expectations, the first in line \d+: expected the result")


class Room(Buttons, Page):
    def test_every_operation_can_be_called_by_name(self):
        for side in ("assistant", "firmware"):
            names = self.script(f"return [...document.getElementById('{side}Operation').options].map((option) => option.textContent)")
            self.assertGreater(len(names), 20)
            for index, name in enumerate(names):
                with self.subTest(name):
                    values = {**VALUES, "a text": "answer.wav" if "sendData" in name else VALUES["a text"]}
                    self.script("""
                      const [side, index, values] = arguments;
                      const select = document.getElementById(`${side}Operation`);
                      select.value = index;
                      select.dispatchEvent(new Event('change'));
                      for (const label of document.querySelectorAll(`#${side} .fields label`)) {
                        const hint = label.querySelector('small');
                        if (hint) label.querySelector('input').value = values[hint.textContent.split(';')[0]];
                      }
                      document.getElementById('outcome').textContent = '';
                      document.getElementById(side).requestSubmit();""", side, index, values)
                    outcome = self.played()
                    self.assertIn(name.split()[0], outcome)
                    self.assertEqual(self.script("return document.getElementById('outcome').className"), "", outcome)

    def test_sliders_set_the_volume(self):
        slider = self.find("#assistantVolume")
        self.assertEqual(self.fact("Volume"), "30")
        slider.send_keys(Keys.END)
        self.until(lambda: self.fact("Volume") == "100")
        self.find("#firmwareVolume").send_keys(Keys.HOME)
        self.until(lambda: self.fact("Volume") == "0")
        self.until(lambda: slider.get_attribute("value") == "0")  # where the volume is now

    def test_shows_the_speaker_as_a_person_sees_it(self):
        self.press("Listen", "#assistant")
        self.until(lambda: self.text("#animation") == "listening, pulse")
        self.press("Show a card", "#assistant")
        self.until(lambda: "Rain until noon" in self.text("#card"))
        self.press("Set up", "#assistant")
        self.until(lambda: self.fact("Setup") == "go to https://link.example/code and enter AB12CD")

    def test_several_pages_see_the_same(self):
        first = self.browser.current_window_handle
        self.browser.switch_to.new_window("tab")
        self.browser.get(self.address)
        self.until(lambda: self.script("return document.body.dataset.ready"))
        self.press("Mute", "#assistant")
        self.until(lambda: self.fact("Muted") == "yes")
        self.browser.close()
        self.browser.switch_to.window(first)
        self.until(lambda: self.fact("Muted") == "yes")

    def test_hostile_texts_are_shown_and_do_nothing(self):
        hostile = '<img src=x onerror="window.hacked=1"><script>window.hacked=1</script>\u202e\x1b[31m'
        for name in ("first", "second", "third"):
            self.script("""
              const select = document.querySelector('#assistantOperation');
              select.value = [...select.options].find((option) => option.textContent.includes('sendAppMessage')).value;
              if (arguments[0] === 'first') select.dispatchEvent(new Event('change'));
              document.querySelector(`#assistant input[name=${arguments[0]}]`).value = arguments[1];""", name, hostile)
        self.press("Call", "#assistant")
        self.sees("<img src=x onerror=")
        self.script("document.querySelector('#lanes .row').click()")
        self.until(lambda: "<script>" in self.text("#details"))
        self.assertIsNone(self.script("return window.hacked ?? null"))
        self.assertEqual(self.script("return document.querySelectorAll('main img, main script').length"), 0)
        self.assertNotIn("\u202e", self.text("#details"))

    def test_long_texts_are_cut_where_they_are_shown(self):
        self.script("""
          const select = document.querySelector('#assistantOperation');
          select.value = [...select.options].find((option) => option.textContent.includes('renderGUICard')).value;
          select.dispatchEvent(new Event('change'));
          document.querySelector('#assistant input[name=card]').value = 'x'.repeat(60000);""")
        self.press("Call", "#assistant")
        self.until(lambda: self.text("#card").startswith("xxx"))
        self.script("document.querySelector('#lanes .row').click()")
        self.until(lambda: "renderGUICard" in self.text("#details h3"))
        self.assertTrue(self.text("#card").endswith("x …"))
        self.assertLess(self.script("return document.querySelector('main').textContent.length"), 60000)

    def test_secrets_are_shown_nowhere(self):
        self.script("""
          const select = document.querySelector('#assistantOperation');
          select.value = [...select.options].find((option) => option.textContent.includes('.login')).value;
          select.dispatchEvent(new Event('change'));
          const values = { accessToken: 'hunter2hunter2', userName: 'ada', forceLogin: 'true', refreshInterval: '1s', playerId: 'music' };
          for (const [name, value] of Object.entries(values)) document.querySelector(`#assistant input[name=${name}]`).value = value;""")
        self.assertEqual(self.find("#assistant input[name=accessToken]").get_attribute("type"), "password")
        self.press("Call", "#assistant")
        self.assertIn("login ******** ada", self.played())
        self.assertNotIn("hunter2", self.text("body"))


class CallList(Page):
    def test_a_click_shows_all_of_a_call(self):
        self.press("Message to the app", "#firmware")
        self.sees("SendMessageToxApp")
        self.script("document.querySelector('#lanes .row').click()")
        self.until(lambda: "SendMessageToxApp(" in self.text("#details pre"))  # the header's
        details = self.text("#details")
        for part in ("VornAppMessaging.SendMessageToxApp", "AppMessaging, slot", "battery", "Trace", "receiveAppMessage(speaker,battery,full)"):
            self.assertIn(part, details)

    def test_waits_that_nobody_measured_are_no_figures(self):
        self.open(file("unknown.jsonl", HEADER + line(1, waited=None)))
        self.until(lambda: self.text("#figures h2") == "Figures of unknown.jsonl")
        self.assertEqual(self.fact_of_figures("Longest wait for a lock"), "not measured here")
        self.assertTrue(self.text("#figures tbody tr").endswith("not measured here"))

    def test_filters(self):
        self.press("Mute", "#assistant")
        self.press("Message to the app", "#firmware")
        self.sees("SendMessageToxApp")
        self.find("#byText").send_keys("TOXAPP")
        self.until(lambda: all("SendMessageToxApp" in row for row in self.rows()) and "of" in self.text("#count"))
        self.find("#byText").clear()
        self.find("#byText").send_keys(" ", Keys.BACKSPACE)
        Select(self.find("#byDirection")).select_by_visible_text("down")
        self.until(lambda: self.rows() and not any("SendMessageToxApp" in row for row in self.rows()))
        Select(self.find("#byDirection")).select_by_visible_text("all")
        Select(self.find("#byThread")).select_by_visible_text("firmware")
        self.until(lambda: len(self.rows()) == 1)

    def test_pauses_without_losing(self):
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        self.press("Pause", "#calls")
        self.press("Unmute", "#assistant")
        self.until(lambda: "more" in self.text("#count"))
        self.assertFalse(any("onMute(false)" in row for row in self.rows()))
        self.press("Pause", "#calls")
        self.sees("onMute(false)")

    def test_a_pause_holds_whatever_is_filtered(self):
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        self.press("Pause", "#calls")
        self.press("Unmute", "#assistant")
        self.until(lambda: "more" in self.text("#count"))
        self.find("#byText").send_keys("onMute")
        self.until(lambda: self.text("#count").startswith("1 call of"))
        self.assertEqual([row for row in self.rows() if "onMute(true)" not in row], [])

    def test_a_server_that_has_ended_is_told(self):
        self.program.send_signal(signal.SIGINT)
        self.until(lambda: self.text("#source").startswith("No connection to vorn-speaker"))
        self.press("Mute", "#assistant")
        self.until(lambda: "start it again and open the address it prints" in self.text("#outcome"))

    def test_saves_what_is_seen_as_a_recording(self):
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        saved, lines = self.save_calls()
        self.assertEqual(lines[0]["version"], 2)
        self.assertRegex(lines[0]["started"], r"^\d{4}-\d\d-\d\dT")
        report = subprocess.run([PROGRAM, "report", str(saved)], capture_output=True, text=True)
        self.assertIn("VornDeviceCapabilities.onMute true = true muted", report.stdout + report.stderr)

    def test_a_lane_for_each_thread(self):
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        lanes = "return document.querySelector('#lanes canvas').toDataURL()"
        before = self.script(lanes)
        self.find("#perThread").click()
        self.until(lambda: self.script(lanes) != before)


class Recordings(Page):
    def test_one_is_opened_and_stepped_through(self):
        self.open(file("steps.jsonl", HEADER + "".join(line(n) for n in range(1, 51))))
        self.until(lambda: self.text("#count") == "50 calls")
        self.assertEqual(self.fact("Volume"), "1")
        self.press("Next", "#stepping")
        self.until(lambda: self.fact("Volume") == "2")
        self.press("Last", "#stepping")
        self.until(lambda: self.fact("Volume") == "50")
        self.press("Back", "#stepping")
        self.until(lambda: self.fact("Volume") == "49")

    def test_the_figures_are_those_of_what_is_shown(self):
        self.open(file("waits.jsonl", HEADER + line(1, waited=2500) + line(2, time=1500000) + '{"sound":"stream","level":99,"gap":70}\n'))
        self.until(lambda: self.text("#figures h2") == "Figures of waits.jsonl")
        self.assertEqual([self.fact_of_figures(name) for name in ("Calls", "Longest wait for a lock", "Longest gap in the sound")], ["2", "2.50 ms", "70 µs"])
        Select(self.find("#shown")).select_by_visible_text("what happens now")
        self.until(lambda: self.text("#figures h2") == "Figures" and self.fact_of_figures("Calls") == "0")

    def test_one_is_saved_as_it_was_read(self):
        calls = [json.loads(line(1, threadNumber=3, waited=7, host=2, reached=True)), {"open": json.loads(line(2, waited=None))}]
        header = {"recording": "vorn-speaker", "version": 2, "started": "2026-01-02T03:04:05.000006Z"}
        self.open(file("again.jsonl", "".join(json.dumps(one) + "\n" for one in [header, *calls])))
        self.until(lambda: self.text("#count") == "2 calls")
        saved, lines = self.save_calls()
        self.assertEqual(lines, [{**header, "writer": "the page of vorn-speaker"}, *calls])
        report = subprocess.run([PROGRAM, "report", str(saved)], capture_output=True, text=True)
        self.assertIn("the call 2 had not returned", report.stdout + report.stderr)

    def test_what_is_no_file_is_refused_in_words(self):
        self.script("""
          const data = new DataTransfer();
          data.setData('text/plain', 'a text');
          document.body.dispatchEvent(new DragEvent('drop', {bubbles: true, cancelable: true, dataTransfer: data}));""")
        self.until(lambda: "is no file" in self.text("#outcome"))

    def drop(self, name, text):
        self.script("""
          const data = new DataTransfer();
          data.items.add(new File([arguments[1]], arguments[0]));
          document.body.dispatchEvent(new DragEvent('drop', {bubbles: true, cancelable: true, dataTransfer: data}));""", name, text)

    def test_one_is_opened_by_dropping_it(self):
        self.drop("dropped.jsonl", HEADER + line(1) + line(2) + '{"call":3,"ti')
        self.until(lambda: self.text("#count") == "2 calls (left out: 1 line that could not be read)")

    def test_two_are_compared(self):
        calls = [line(n) for n in range(1, 21)]
        other = calls[:7] + [line(8, result="99")] + calls[8:15] + calls[16:]
        self.open(file("one.jsonl", HEADER + "".join(calls)), file("other.jsonl", HEADER + "".join(other)))
        self.until(lambda: "differ in 2 places" in self.text("#comparison h3"))
        self.find("#comparison button").click()
        self.until(lambda: self.fact("Volume") == "8")

    def test_a_foreign_file_is_refused_in_words(self):
        for content in ("expect 1\n", "{}", '{"recording":"vorn-speaker","version":9}\n', "\x00\x01", "null"):
            self.drop("foreign.txt", content)
            self.until(lambda: "foreign.txt is" in self.text("#outcome"))
            self.script("document.getElementById('outcome').textContent = ''")


class Many(Page):
    """A frame can be drawn between any two tasks of the page's main thread, and in none: their lengths are what a person sees
    as smooth. They are told by the browser's own trace, in time of the processor: what else the machine does is not the page's."""
    COUNT = 100000
    LONGEST = 50  # milliseconds

    @classmethod
    def setUpClass(cls):
        pass  # Each test has a browser of its own, which can be asked once for its trace.

    def setUp(self):
        self.browser = self.start("profile-traced", {"browser": "ALL", "performance": "ALL"}, perfLoggingPrefs={
            "enableNetwork": False, "enablePage": False, "traceCategories": "toplevel,devtools.timeline"})
        self.addCleanup(self.browser.quit)
        self.many = file("many.jsonl", HEADER + "".join(line(n, inside=n % 3) for n in range(1, self.COUNT + 1)))
        self.serve("--watch", self.many)
        self.until(lambda: self.text("#count") == f"{self.COUNT} calls")

    def tasks(self):
        """The tasks of the page's main thread so far, in milliseconds: of the processor, and of the clock."""
        messages = (json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance"))
        events = [message["params"] for message in messages if message["method"] == "Tracing.dataCollected"]
        thread = {(event["pid"], event["tid"]) for event in events
                  if event["name"] == "ResourceSendRequest" and event["args"]["data"]["url"].startswith(self.address)}
        return [(event["tdur"] / 1000, event["dur"] / 1000) for event in events
                if event["name"] == "ThreadControllerImpl::RunTask" and (event["pid"], event["tid"]) in thread and "tdur" in event]

    def assert_smooth(self):
        tasks = self.tasks()
        longest, by_clock = (max(times) for times in zip(*tasks))
        print(f"{len(tasks)} tasks, the longest {longest:.0f} ms of the processor; {by_clock:.0f} ms by the clock")
        self.assertGreater(len(tasks), 500)
        self.assertLess(longest, self.LONGEST)

    def test_a_hundred_thousand_calls_stay_smooth(self):
        for n in range(60):
            first = n * 37 % 60 * self.COUNT // 60
            self.script("document.getElementById('lanes').scrollTop = arguments[0] * 22", first)
            self.sees(f"{first + 1}  ")
        self.assertLess(self.script("return document.querySelectorAll('#lanes .row').length"), 100)
        self.find("#lanes").send_keys(Keys.END)
        self.sees(f"{self.COUNT}  ")
        self.find("#byText").send_keys("= 77")
        self.until(lambda: self.text("#count").startswith("0 calls of"))
        self.find("#byText").clear()
        self.find("#byText").send_keys("getvolume", Keys.BACKSPACE)
        self.until(lambda: self.text("#count") == f"{self.COUNT} calls of {self.COUNT}")
        self.assert_smooth()

    def test_a_recording_of_a_hundred_thousand_calls_stays_smooth(self):
        self.open(self.many, file("other.jsonl", HEADER + "".join(line(n, result="none" if n == 77777 else str(n % 100)) for n in range(1, self.COUNT + 1))))
        self.until(lambda: "differ in 1 place" in self.text("#comparison h3"))
        self.press("Last", "#stepping")
        self.until(lambda: f"after call {self.COUNT} of" in self.text("#speaker h2"))
        self.press("Back", "#stepping")
        self.until(lambda: self.fact("Volume") == "99")
        self.assertEqual(len(self.save_calls()[1]), self.COUNT + 1)
        self.assert_smooth()


class Watched(Page):
    def setUp(self):
        self.recording = file("growing.jsonl", HEADER + line(1, waited=1500))
        self.serve("--watch", self.recording)

    def test_what_is_added_is_shown(self):
        self.until(lambda: self.text("#count") == "1 call")
        with open(self.recording, "a") as growing:
            growing.write(line(2, result="77"))
        self.until(lambda: self.fact("Volume") == "77")
        self.assertFalse(self.find("#assistant").is_displayed())
        self.until(lambda: self.fact_of_figures("Longest wait for a lock") == "1.50 ms")


class Scenarios(Page):
    def write(self, text):
        self.until(lambda: self.script("return document.getElementById('script').value"))
        self.script("document.getElementById('script').value = arguments[0]", text)

    def test_the_morning_is_played_and_its_figures_shown(self):
        self.until(lambda: "One whole morning" in self.script("return document.getElementById('script').value"))
        self.press("Start", "#scenario")
        self.until(lambda: self.text("#progress").startswith("played to the end"))
        self.until(lambda: int(self.fact_of_figures("Calls")) > 200)
        self.assertIn("VornDeviceInfo.getVolume", self.text("#figures tbody"))
        self.assertIn("MiB", self.fact_of_figures("Memory"))
        charts = self.browser.find_elements("css selector", "#figures canvas")
        self.assertEqual([chart.get_attribute("aria-label").split(":")[0] for chart in charts],
                         ["Calls a second, the last two minutes", "Durations of all calls", "Level of the sound that went up"])
        painted = """return [...document.querySelectorAll('#figures canvas')].map((chart) => {
          const pen = new OffscreenCanvas(chart.width, chart.height).getContext('2d');
          pen.drawImage(chart, 0, 0);
          const accent = [11, 92, 173];
          const { data } = pen.getImageData(0, 0, chart.width, chart.height);
          let count = 0;
          for (let at = 0; at < data.length; at += 4) count += accent.every((part, n) => data[at + n] === part) && data[at + 3] === 255;
          return count;
        })"""
        self.until(lambda: min(self.script(painted)) > 20)
        picture = os.environ.get("VORN_PICTURE")
        if picture:
            self.browser.set_window_size(1400, 1560)
            self.press("Listen", "#assistant")
            self.press("Show a card", "#assistant")
            self.played()
            self.script("document.querySelectorAll('#lanes .row')[5].click(); scrollTo(0, 0)")
            self.until(lambda: self.text("#details pre"))
            self.browser.save_screenshot(picture)

    def test_steps_and_stops(self):
        self.write("# a comment\nassistant VornDeviceCapabilities.onSetVolume 11\n\nassistant VornDeviceCapabilities.onSetVolume 12\n")
        self.press("Step", "#scenario")
        self.until(lambda: self.fact("Volume") == "11")
        self.press("Step", "#scenario")
        self.until(lambda: self.fact("Volume") == "12")
        self.until(lambda: self.text("#progress") == "played to the end, 2 statements")

    def test_who_waits_for_a_lock_is_seen_and_measured(self):
        self.write("delay VornDeviceInfo.getVolume 1000s\ntogether 2 VornDeviceInfo.getVolume\n")
        self.press("Start", "#scenario")
        self.until(lambda: "VornDeviceInfo.getVolume waits for its adapter's lock, assistant" in self.text("#waits"))
        self.script("fetch('statement', { method: 'POST', body: 'restore VornDeviceInfo.getVolume' })")
        self.until(lambda: self.text("#waits") == "" and self.text("#figures tbody tr").endswith("s"))
        self.assertRegex(self.fact_of_figures("Longest wait for a lock"), "^[0-9.]+ m?s$")

    def test_pauses_and_goes_on(self):
        self.write("delay VornDeviceInfo.getVolume 1s\nassistant VornDeviceInfo.getVolume\nassistant VornDeviceCapabilities.onSetVolume 13\n")
        self.press("Start", "#scenario")
        self.until(lambda: "line 2" in self.text("#progress"))
        self.press("Pause", "#scenario")
        self.sees("getVolume() = 30")
        self.assertEqual(self.fact("Volume"), "30")
        self.press("Start", "#scenario")
        self.until(lambda: self.fact("Volume") == "13")

    def test_a_pause_taken_back_at_once_changes_nothing(self):
        self.write("delay VornDeviceInfo.getVolume 1s\nassistant VornDeviceInfo.getVolume\nexpect 99\nassistant VornDeviceCapabilities.onSetVolume 13\n")
        self.press("Start", "#scenario")
        self.until(lambda: "line 2" in self.text("#progress"))
        self.press("Pause", "#scenario")
        self.press("Start", "#scenario")
        self.until(lambda: self.text("#progress") == "line 3: expected the result 99, saw 30")
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        self.assertEqual(self.fact("Volume"), "30")  # Nothing after the expectation was played.

    def test_mistakes_and_expectations_are_told(self):
        self.write("bogus\nexpect\n")
        self.press("Start", "#scenario")
        self.until(lambda: "scenario:1:1: expected one of" in self.text("#progress") and "scenario:2:7:" in self.text("#progress"))
        self.write("assistant VornDeviceInfo.getVolume\nexpect 99\n")
        self.press("Start", "#scenario")
        self.until(lambda: self.text("#progress") == "line 2: expected the result 99, saw 30")

    def test_what_was_clicked_is_saved_as_a_scenario(self):
        self.browser.execute_cdp_cmd("Browser.setDownloadBehavior", {"behavior": "allow", "downloadPath": str(FOLDER)})
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        self.press("It is gone", "#faults")
        self.until(lambda: "remove all" in self.text("#outcome"))
        self.played()
        self.press("Save what was played", "#scenario")
        saved = FOLDER / "played.scenario"
        self.until(saved.exists)
        self.assertEqual(saved.read_text(), "assistant VornDeviceCapabilities.onMute true\nremove all\n")


class Faults(Page):
    options = ("--watchdog", "5")

    def test_every_button_is_told_to_the_speaker_and_what_is_wrong_to_people(self):
        Select(self.find("#area")).select_by_visible_text("DeviceInfo")
        for button, wrong in (("It is gone", "gone: DeviceInfo"), ("It is back", ""), ("It is slow", "VornDeviceInfo.getVolume takes 500ms longer"),
                              ("It throws", "VornDeviceInfo.getVolume throws"), ("It is right again", ""),
                              ("The microphone has gaps", "VornAudioIn.sendAudioData takes 300ms longer"), ("The microphone has no gaps", ""),
                              ("Trace file cannot be written", "the trace file cannot be written"), ("Trace file can be written", "")):
            with self.subTest(button):
                self.press(button, "#faults")
                self.played()
                self.until(lambda: (wrong or "Everything is right.") in self.text("#wrong"))
                self.assertEqual(self.script("return document.getElementById('outcome').className"), "", self.text("#outcome"))

    def test_what_another_page_put_wrong_is_put_right(self):
        self.press("It throws", "#faults")
        self.played()
        self.browser.refresh()
        self.until(lambda: "VornDeviceInfo.getVolume throws" in self.text("#wrong"))
        self.press("Put everything right", "#faults")
        self.until(lambda: self.text("#wrong") == "Everything is right.")
        Select(self.find("#assistantOperation")).select_by_visible_text("VornDeviceInfo.getVolume")
        self.press("Call", "#assistant")
        self.sees("getVolume() = 30")

    def test_a_microphone_with_gaps_is_heard(self):
        self.press("The microphone has gaps", "#faults")
        self.press("Listen", "#assistant")
        self.until(lambda: re.fullmatch(r"[3-9]\d\d ms|[\d.]+ s", self.fact_of_figures("Longest gap in the sound")))

    def test_a_host_that_throws_and_is_put_right(self):
        self.press("It throws", "#faults")
        self.played()
        Select(self.find("#assistantOperation")).select_by_visible_text("VornDeviceInfo.getVolume")
        self.press("Call", "#assistant")
        self.sees("threw the host is broken")
        self.press("Put everything right", "#faults")
        self.until(lambda: "create adapters" in self.text("#outcome"))
        self.played()
        self.press("Call", "#assistant")
        self.sees("getVolume() = 30")

    def test_a_host_that_blocks_is_reported_and_started_again(self):
        self.press("It blocks, two threads ask", "#faults")
        self.until(lambda: "VornDeviceInfo" in self.text("#report"))  # what the doctor finds, while it still goes on
        self.assertTrue(self.find("#toReports").is_displayed())
        self.assertIn("The doctor found something: see Reports.", self.text("#source"))
        self.sees("…")
        self.until(lambda: "The speaker ended with status 3." in self.text("#report"))
        self.assertIn("No answer on the thread", self.text("#report"))
        self.press("Start the speaker again")
        self.until(lambda: self.text("#source") == "The speaker runs.")
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")

    def test_the_assistant_side_and_the_trace_go_and_come_back(self):
        self.press("It is gone", "#faults")
        self.until(lambda: "remove all" in self.text("#outcome"))
        self.played()
        self.press("Trace file cannot be written", "#faults")
        self.until(lambda: "remove trace" in self.text("#outcome"))
        self.played()
        self.assertTrue(pathlib.Path("/tmp/xAppLog.txt").is_dir())
        self.press("Put everything right", "#faults")
        self.until(lambda: "create adapters" in self.text("#outcome"))
        self.played()
        self.assertFalse(pathlib.Path("/tmp/xAppLog.txt").is_dir())
        self.press("Muted by hand", "#firmware")
        self.sees("notifyMuteChanged(true)")


class Everybody(Page):
    def key(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def tab_to(self, holds):
        for _ in range(200):
            self.key(Keys.TAB)
            if self.script(f"const at = document.activeElement; return {holds}"):
                return
        self.fail(f"not reached by the keyboard: {holds}")

    def test_the_keyboard_alone_calls_and_reads(self):
        self.tab_to("at.textContent === 'Mute'")
        self.key(Keys.ENTER)
        self.until(lambda: self.fact("Muted") == "yes")
        self.tab_to("at.id === 'lanes'")
        self.key(Keys.HOME)
        self.until(lambda: "Argument 1" in self.text("#details"))
        chosen = self.find("#lanes").get_attribute("aria-activedescendant")
        self.assertEqual(self.find(f"#{chosen}").get_attribute("aria-selected"), "true")
        self.tab_to("at.id === 'start'")

    def test_everything_that_can_be_used_has_a_name(self):
        nameless = [element.get_attribute("outerHTML")[:100] for element in
                    self.browser.find_elements(By.CSS_SELECTOR, "button, input, select, textarea, a, [role=listbox], [role=img], [tabindex]")
                    if element.is_displayed() and not element.accessible_name]
        self.assertEqual(nameless, [])

    @unittest.skipUnless(CHECKER.exists(), "the accessibility checker is not here: scripts/install page fetches it where there is npm")
    def test_the_accessibility_checker_finds_nothing_serious(self):
        serious = """
          const done = arguments[0];
          axe.run().then((found) => done(found.violations.filter((rule) => ['serious', 'critical'].includes(rule.impact))
            .map((rule) => `${rule.id}: ${rule.help}: ${rule.nodes.map((node) => node.html).join(' ')}`)));"""
        self.browser.set_script_timeout(BOUND)
        self.script(CHECKER.read_text())
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        self.press("Show a card", "#assistant")
        self.sees("renderGUICard")
        self.script("document.getElementById('perThread').click(); document.querySelector('#lanes .row').click()")
        self.until(lambda: "Argument 1" in self.text("#details"))
        self.open(file("first.jsonl", HEADER + line(1)), file("second.jsonl", HEADER + line(1, result="2")))
        self.until(lambda: not self.script("return document.getElementById('comparison').hidden"))
        self.script("document.querySelectorAll('main [hidden]').forEach((part) => { part.hidden = false; })")
        for scheme in "light", "dark":
            self.emulate(prefers_color_scheme=scheme)
            self.assertEqual(self.browser.execute_async_script(serious), [], scheme)

    def emulate(self, **features):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": name.replace("_", "-"), "value": value} for name, value in features.items()]})
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.setEmulatedMedia", {"features": []})

    def test_dark_and_light(self):
        colour = "return getComputedStyle(document.body).backgroundColor"
        self.emulate(prefers_color_scheme="light")
        light = self.script(colour)
        self.emulate(prefers_color_scheme="dark")
        self.assertNotEqual(self.script(colour), light)

    def test_nothing_moves_where_the_system_asks_for_that(self):
        self.press("Listen", "#assistant")
        moves = "return getComputedStyle(document.querySelector('#ring .lights')).animationName"
        self.until(lambda: self.script(moves) == "turn")
        self.emulate(prefers_reduced_motion="reduce")
        self.assertEqual(self.script(moves), "none")

    def test_a_narrow_window_needs_no_scrolling_sideways(self):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": 360, "height": 700, "deviceScaleFactor": 1, "mobile": False})
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.clearDeviceMetricsOverride", {})
        self.until(lambda: self.script("return innerWidth") == 360)
        self.assertLessEqual(self.script("return document.documentElement.scrollWidth"), 360)

    def test_a_narrow_window_has_room_for_what_is_called(self):
        self.press("Mute", "#assistant")
        self.sees("onMute(true)")
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": 360, "height": 700, "deviceScaleFactor": 1, "mobile": False})
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.clearDeviceMetricsOverride", {})
        room = "const row = document.querySelector('#lanes .row'); return row.clientWidth - parseFloat(getComputedStyle(row).paddingLeft)"
        self.until(lambda: self.script("return innerWidth") == 360 and self.script(room) > 150)


if __name__ == "__main__":
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir()
    try:
        result = unittest.main(argv=[sys.argv[0], *sys.argv[3:]], exit=False, verbosity=2).result
    finally:
        if Page.browser:
            Page.browser.quit()
    sys.exit(not result.wasSuccessful())
