#!/usr/bin/env python3
"""Usage: exports.py COMMAND... (how vorn-speaker is started)

What vorn-speaker writes for other programs, read by the parsers of Python, and by one for diagrams that knows no more than
what a diagram may hold. Schemas beside this file.
"""
import csv
import io
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

SPEAKER = sys.argv[1:]
HERE = pathlib.Path(__file__).parent

AWKWARD = 'a "quoted", text; #1 %% {x}: <b> end\r\nBüro \u202e\x1b[2J'


def call(number, **changed):
    made = {
        "call": number, "time": 10 * number, "duration": 5, "thread": "assistant", "threadNumber": 1, "direction": "down",
        "adapter": "VornDeviceInfo", "operation": "getVolume", "interface": "VornDALImplIF", "slot": 13, "inside": 0,
        "arguments": [], "result": "30", "written": [], "exception": None, "waited": None, "host": None, "reached": True}
    made.update(changed)
    return made


def up(number, **changed):
    made = dict(direction="up", operation="notifyVolumeChanged", interface="DeviceInfo", slot=41, arguments=["3"], result="",
                thread="firmware", threadNumber=2)
    made.update(changed)
    return call(number, **made)


HEADER = {"recording": "vorn-speaker", "version": 2, "program": "a \"program\"", "started": "2026-01-02T03:04:05.678901Z"}
# An inner call that stands out by a microsecond at either end, as roundings make it; a thread without a name; what is lost.
LINES = [
    up(2, time=9, duration=12, inside=1, thread="assistant", threadNumber=1),
    call(1, duration=10, adapter="VornDeviceCapabilities", operation="onSetVolume", slot=61, arguments=["20"], result="true",
         waited=4, host=3),
    call(3, time=30, result="", exception=AWKWARD, thread="", threadNumber=3),
    call(4, time=31, operation="getSystemSetting", slot=22, arguments=['"a b"', '""'], result="true",
         written=["value=" + AWKWARD, "other=7"]),
    up(5, time=50, adapter="VornAudioIn", operation="sendAudioData", interface="AudioIn", slot=13, arguments=["[3, -32768, 0, 4]"]),
    up(6, time=60, adapter="VornAudioIn", operation="sendAudioData", interface="AudioIn", slot=13, arguments=["[]"]),
    call(7, time=70, direction="life", operation="Shutdown", interface="", slot=0, result=""),
    {"sound": "microphone", "time": 80, "blocks": 2, "samples": 320, "peak": 900, "level": 80, "gap": 7},
    {"leftOut": 12, "time": 90}, {"note": AWKWARD, "time": 35},
    {"open": {key: value for key, value in call(8, time=95).items() if key not in ("duration", "result", "written", "exception")}},
]


class Exports(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.recording = self.folder / "recording"
        self.write(LINES)

    def write(self, lines):
        self.recording.write_text("".join(json.dumps(line) + "\n" for line in [HEADER] + lines))

    def speaker(self, *arguments):
        return subprocess.run(SPEAKER + [str(argument) for argument in arguments], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)

    def export(self, form, *options):
        done = self.speaker("export", self.recording, "--format", form, "--secrets", *options)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout.decode()

    def events(self, *options):
        trace = json.loads(self.export("trace-event", *options))
        jsonschema.validate(trace, json.loads((HERE / "trace-event.schema.json").read_text()))
        return trace["traceEvents"]

    # The trace-event form.

    def test_calls_are_slices_of_their_thread_with_all_that_is_known(self):
        slices = {event["args"].get("call"): event for event in self.events() if event["ph"] == "X"}
        self.assertEqual(slices[1], {
            "ph": "X", "name": "VornDeviceCapabilities.onSetVolume", "cat": "down", "pid": 1, "tid": 1, "ts": 10, "dur": 10,
            "args": {"call": 1, "arguments": ["20"], "result": "true", "waited": 4, "host": 3, "reached": True}})
        self.assertEqual(slices[3]["args"]["exception"], AWKWARD)
        self.assertEqual(slices[4]["args"]["written"], ["value=" + AWKWARD, "other=7"])

    def test_inner_calls_lie_inside_and_waiting_at_the_begin(self):
        slices = [event for event in self.events() if event["ph"] == "X"]
        inner = [event for event in slices if event["args"].get("call") == 2][0]
        self.assertEqual((inner["ts"], inner["dur"]), (10, 10))
        waiting = [(event["ts"], event["dur"]) for event in slices if event["name"] == "waits for the lock"]
        self.assertEqual(waiting, [(10, 4)])

    def test_threads_and_the_program_have_names(self):
        names = {(event["name"], event["tid"]): event["args"]["name"] for event in self.events() if event["ph"] == "M"}
        self.assertEqual(names, {("process_name", 0): HEADER["program"], ("thread_name", 1): "assistant",
                                 ("thread_name", 2): "firmware", ("thread_name", 3): "thread 3"})

    def test_sound_is_a_counter(self):
        counters = [(event["name"], event["ts"], event["args"]) for event in self.events() if event["ph"] == "C"]
        self.assertEqual(counters, [("sound firmware", 50, {"peak": 32768, "level": 16384}),
                                    ("sound firmware", 60, {"peak": 0, "level": 0}),
                                    ("sound microphone", 80, {"peak": 900, "level": 80})])

    def test_what_is_no_call_stands_at_its_time(self):
        marks = sorted((event["ts"], event["ph"], event["name"]) for event in self.events() if event["ph"] in "iB")
        self.assertEqual(marks, [(35, "i", AWKWARD), (90, "i", "calls that could not be kept: 12"),
                                 (95, "B", "VornDeviceInfo.getVolume")])

    def test_only_the_wanted_calls_are_written(self):
        self.assertEqual([e["args"]["call"] for e in self.events("--calls", "2-4", "-a", "VornDeviceInfo") if e["ph"] == "X"],
                         [2, 3, 4])
        self.assertEqual([e["args"]["call"] for e in self.events("--calls=-1") if e["ph"] == "X" and e["args"]], [1])

    # Comma-separated values.

    def test_a_table_gives_every_field_back(self):
        text = self.export("csv")
        self.assertNotIn("\n", re.sub('"[^"]*"', "", text).replace("\r\n", ""))
        rows = list(csv.DictReader(io.StringIO(text, newline=""), strict=True))
        calls = sorted((line for line in LINES if "call" in line), key=lambda line: line["call"])
        self.assertEqual(len(rows), len(calls) + 1)
        for row, expected in zip(rows, calls):
            for name, value in expected.items():
                kept = row[name] if isinstance(value, (str, type(None))) else json.loads(row[name])
                self.assertEqual(kept, "" if value is None else value, name)
        self.assertEqual((rows[-1]["call"], rows[-1]["duration"], rows[-1]["result"]), ("8", "", ""))

    # Diagrams.

    def diagram(self, *options):
        """Reads a diagram; returns its participants, and its arrows as (from, arrow, to, text)."""
        lines = self.export("mermaid", *options).split("\n")
        self.assertEqual((lines[0], lines[1], lines[-1]), ("%% Made by vorn-speaker", "sequenceDiagram", ""))
        participants, arrows = {}, []
        for line in lines[2:-1]:
            text = r"((?:[^#;%<>{}:&\"\x00-\x1f\x7f-\x9f\u202e]|#[0-9]+;)+)$"
            match = (re.match(r"  participant (\w+) as " + text, line) or re.match(r"  (note over|note right of) (\w+): " + text, line)
                     or re.match(r"  (\w+)(->>|-->>|--x)(\w+): " + text, line))
            self.assertTrue(match, line)
            words = [re.sub("#([0-9]+);", lambda code: chr(int(code.group(1))), word) for word in match.groups()]
            if len(words) == 2:
                self.assertFalse(arrows)
                participants[words[0]] = words[1]
                continue
            used = [words[1]] if words[0].startswith("note") else [words[0], words[2]]
            self.assertLessEqual(set(used), set(participants))
            arrows.append(tuple(words))
        return participants, arrows

    def test_a_diagram_shows_who_called_whom(self):
        participants, arrows = self.diagram("--calls=1-3")
        self.assertEqual(participants, {"t1": "thread assistant", "t3": "thread 3", "host": "host", "assistantSide": "assistant side"})
        self.assertEqual(arrows[:3], [("t1", "->>", "host", "VornDeviceCapabilities.onSetVolume 20"),
                                      ("host", "->>", "assistantSide", "VornDeviceInfo.notifyVolumeChanged 3"),
                                      ("host", "-->>", "t1", "true")])

    def test_a_diagram_carries_awkward_texts_unharmed(self):
        _, arrows = self.diagram()
        thrown = [arrow for arrow in arrows if arrow[1] == "--x"]
        shown = "threw " + AWKWARD.replace("\r\n", "\\x0d\\n").replace("\u202e", "\\xe2\\x80\\xae").replace("\x1b", "\\x1b")
        self.assertEqual(thrown, [("host", "--x", "t3", shown)])

    def test_a_diagram_answers_only_what_was_asked(self):
        waiting = []
        for source, arrow, target in (found[:3] for found in self.diagram()[1]):
            if arrow == "->>":
                waiting.append((source, target))
            elif arrow.startswith("--"):
                self.assertIn((target, source), waiting)

    def test_a_diagram_tells_answers_when_they_came(self):
        self.write([call(1, time=0, duration=10, result="first"),
                    call(2, time=5, duration=15, result="second", thread="other", threadNumber=2),
                    call(3, time=30, result="third", thread="other", threadNumber=2)])
        self.assertEqual([text for _, arrow, _, text in self.diagram()[1] if arrow == "-->>"], ["first", "second", "third"])

    def test_a_diagram_of_nothing_is_one(self):
        self.write([])
        self.assertEqual(self.diagram(), ({"t1": "nobody called"}, []))

    # All of them.

    def test_secrets_are_masked_unless_asked_otherwise(self):
        self.write([call(1, adapter="VornEMPAdapterControl", operation="login", interface="VornEMPAdapterIF", slot=3,
                         arguments=["KEEP-THIS", "ada", "true", "1ms", "x"], result="true"),
                    call(2, result="", exception="KEEP-THIS"), call(3, written=["value=no scenario's KEEP-THIS"])])
        for form in ("trace-event", "mermaid", "csv"):
            done = self.speaker("export", self.recording, "--format", form)
            self.assertNotIn(b"KEEP-THIS", done.stdout)
            self.assertIn("KEEP-THIS", self.export(form))

    def test_a_file_takes_the_place_of_its_like_and_of_no_other(self):
        for form in ("trace-event", "mermaid", "csv"):
            file, other = self.folder / form, self.folder / ("other than " + form)
            other.write_text("mine")
            for path, expected in ((file, 0), (file, 0), (other, 2), (self.recording, 2)):
                done = self.speaker("export", self.recording, "--format", form, "--secrets", "-o", path)
                self.assertEqual(done.returncode, expected, done.stderr)
            self.assertEqual(file.read_text(newline="") if sys.version_info >= (3, 13) else file.read_bytes().decode(), self.export(form))
            self.assertEqual(oct(os.stat(file).st_mode & 0o777), "0o600")
            self.assertEqual(other.read_text(), "mine")

    def test_what_cannot_be_written_is_a_failure(self):
        for arguments in (["-o", "/dev/full"], []):
            with open("/dev/full", "wb") as full:
                done = subprocess.run(SPEAKER + ["export", str(self.recording), "--format", "csv"] + arguments, stdout=full,
                                      stderr=subprocess.PIPE, check=False)
            self.assertEqual(done.returncode, 1, done.stderr)
            self.assertRegex(done.stderr, b"cannot be written: No space left on device|standard output could not be written")

    def test_what_is_meant_is_told(self):
        done = self.speaker("export", self.recording, "--format", "trace-evnt")
        self.assertEqual((done.returncode, done.stdout), (2, b""))
        self.assertIn(b"did you mean trace-event?", done.stderr)
        done = self.speaker("export", self.recording, "--format", "csv", "-a", "VornStorge")
        self.assertIn(b"did you mean VornStorage?", done.stderr)
        self.assertEqual(self.speaker("export", self.recording, "--format", "csv", "--calls", "9-7").returncode, 2)

    # What vorn-speaker records itself.

    def test_a_recorded_morning_is_as_the_schemas_say(self):
        done = self.speaker("record", self.recording, "--state", self.folder / "state")
        self.assertEqual(done.returncode, 0, done.stderr)
        schema = json.loads((HERE / "recording.schema.json").read_text())
        check = jsonschema.Draft202012Validator(schema)
        lines = self.recording.read_text().splitlines()
        for line in lines:
            check.validate(json.loads(line))
        self.assertEqual(sum("call" in event.get("args", {}) for event in self.events() if event["ph"] == "X"), len(lines) - 1)
        self.assertEqual(len(list(csv.reader(io.StringIO(self.export("csv"), newline="")))), len(lines))
        self.diagram()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
