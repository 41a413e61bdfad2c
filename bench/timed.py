"""Runs the timing benchmarks, their repetitions shuffled among each other, and takes the medians."""

import collections
import json
import re
import statistics
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


class Timed:
    """What one run of a program yields.

    times   name to nanoseconds per call, (name, size) for curves: time of the processor, or of the wall where several
            threads or processes take part; the median of the repetitions
    spread  name to the distance between the quartiles over the median
    of_wall the names whose time is that of the wall
    missing name to the reason why there is no figure
    share   the share of a processor that the program got while it ran
    """

    def __init__(self, build, program, repetitions, seconds):
        folder = build / "bench"
        out = folder / f"{program}.json"
        # With a /tmp of its own, where the trace is written.
        subprocess.run([ROOT / "tests/support/private-tmp", ROOT, build, folder / program,
                        f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={seconds}",
                        "--benchmark_enable_random_interleaving=true", f"--benchmark_out={out}",
                        "--benchmark_out_format=json"], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        result = json.loads(out.read_text())
        self.megahertz = result["context"]["mhz_per_cpu"]
        self.missing = {}
        self.of_wall = set()
        samples, processor, wall = collections.defaultdict(list), 0, 0
        for run in result["benchmarks"]:
            if run["run_type"] != "iteration":
                continue
            name = re.sub(r"/(real_time|manual_time|repeats:\d+)", "", run["run_name"])
            if run.get("error_occurred"):
                self.missing[name] = run["error_message"]
                continue
            assert run["time_unit"] == "ns"
            together = re.search("real_time|manual_time", run["run_name"])
            if "items_per_second" in run:
                samples[name].append(1e9 / run["items_per_second"])
            else:
                samples[name].append(run["real_time" if together else "cpu_time"])
            if together:
                self.of_wall.add(name)
            else:
                processor += run["cpu_time"] * run["iterations"]
                wall += run["real_time"] * run["iterations"]
        self.times = {name: statistics.median(values) for name, values in samples.items()}
        self.share = processor / wall
        self.spread = {}
        for name, values in samples.items():
            low, _, high = statistics.quantiles(values, n=4) if len(values) > 1 else (0, 0, 0)
            self.spread[name] = (high - low) / self.times[name]

    def curve(self, prefix):
        """The points (size, nanoseconds) of CURVE/LINE, by size."""
        found = [(int(name[len(prefix) + 1:]), time) for name, time in self.times.items() if name.startswith(prefix + "/")]
        return sorted(found)
