"""What can be counted instead of timed: the same on a busy machine as on an idle one."""

import re
import subprocess
import tempfile
from pathlib import Path


def output(*command):
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, text=True).stdout


def callgrind(*command):
    """What the program prints, and per label of a dump the instructions of its first thread."""
    with tempfile.TemporaryDirectory() as folder:
        printed = output("valgrind", "-q", "--tool=callgrind", "--separate-threads=yes",
                         f"--callgrind-out-file={folder}/out", *command)
        instructions = {}
        for dump in Path(folder).iterdir():
            text = dump.read_text()
            label = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M)
            if label and re.search(r"^thread: 1$", text, re.M):  # The other thread only keeps company.
                instructions[label[1]] = int(re.search(r"^(?:totals|summary): (\d+)", text, re.M)[1])
    return printed, instructions


def calls(bench_count):
    """(kind, side) to instructions, allocations and locks per call."""
    printed, instructions = callgrind(bench_count)
    figures = {}
    for line in printed.splitlines():
        name, side, times, allocations, locks = line.split()
        figures[name, side, int(times)] = (instructions[f"{name} {side} {times}"], int(allocations), int(locks))
    result = {}
    for name, side, times in figures:
        if (name, side, 2 * times) in figures:
            once, twice = figures[name, side, times], figures[name, side, 2 * times]
            result[name, side] = [(b - a) / times for a, b in zip(once, twice)]
    return result


def reference_counts(bench_atomics):
    """(kind, side) to changes of reference counts per call: the atomic changes outside the C library."""
    result = {}
    for line in output(bench_atomics).splitlines():
        name, side, times, outside, _ = line.split()
        result[name, side] = int(outside) / int(times)
    return result


def footprint(bench_load, library, *neighbours):
    """Names of figures to (value, unit)."""
    text, data, bss = (int(cell) for cell in output("size", library).splitlines()[1].split()[:3])
    relocations = [re.search(r"R_\w+", line)[0] for line in output("readelf", "-rW", library).splitlines() if " R_" in line]
    with tempfile.TemporaryDirectory() as folder:
        output("strip", "-o", f"{folder}/stripped", library)
        stripped = Path(folder, "stripped").stat().st_size
    printed, instructions = callgrind(bench_load, library, *neighbours)
    del printed  # Under callgrind memory looks different.
    memory = dict(line.split() for line in output(bench_load, library, *neighbours).splitlines())
    return {
        "file without symbols": (stripped, "bytes"),
        "code and constants": (text, "bytes"),
        "data": (data + bss, "bytes"),
        "relocations": (len(relocations), "entries"),
        "of them by name": (sum(not kind.endswith("_RELATIVE") for kind in relocations), "entries"),
        "loading": (instructions["load"], "instructions"),
        "resident memory": (int(memory["resident"]), "kB"),
        "of it private": (int(memory["private"]), "kB"),
        "heap": (int(memory["heap"]), "bytes"),
    }
