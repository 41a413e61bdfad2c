#!/usr/bin/env python3
"""Runs vorn-conformance on the hosts of the list and prints, by kind, how many were made and how many were caught.

  try.py BUILD [PATTERN] [TIMES] [whole | sample]   hosts whose kind or name matches PATTERN, each TIMES times

whole asks all checks of every host, not first those of the operation; sample takes one host of each kind whose mistakes
show every time, and asks a good one those of all operations together only.
"""
import collections
import ctypes
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

DEMANDS = ["--setting", "mode=day,night", "--setting", "name=Kitchen,Küche über dem Ärmelkanal",
           "--channel", "One", "--channel", "Zwölf", "--input", "HDMI 1", "--input", "TUNER",
           "--mode", "wash=cold,hot", "--locale", "en-CA", "--locale", "fr-CA", "--bound", "3"]


# Threads must meet, or freed memory must be used again: caught in most runs, not in every one.
BY_CHANCE = ("unguarded", "two mutexes", "lock order", "holds its mutex", "stays locked", "memory")


SHORT = ("day", "any-order", "lock-order", "races", "first-calls", "static-places", "lets-go", "asked-back")


class Row(ctypes.Structure):
    _fields_ = [("kind", ctypes.c_char_p), ("name", ctypes.c_char_p), ("operation", ctypes.c_char_p),
                ("make", ctypes.c_void_p)]


def hosts(library):
    ask = ctypes.CDLL(str(library)).vornKitHosts
    ask.restype = ctypes.POINTER(Row)
    count = ctypes.c_size_t()
    rows = ask(ctypes.byref(count))
    return [tuple(text.decode() for text in (row.kind, row.name, row.operation)) for row in rows[:count.value]]


def stages(kind, operation, way):
    """What to ask, in turn, until the mistake is found: of others than good hosts first the operation's own checks, and last
    what loads the host for seconds."""
    if kind == "good" and way == "sample":
        return [["--only", "/01/"]]
    if way == "whole" or kind in ("good", "not made", "load", "unload"):
        return [[]]
    own = [part for name in operation.split("|") for part in ("--only", "/" + name + "/")]
    return [own, [part for name in SHORT for part in ("--only", "/01/host/" + name)], ["--only", "/01/"]]


def run(build, library, kind, name, only):
    folder = tempfile.mkdtemp(prefix="vorn-kit-")
    environment = dict(os.environ, VORN_KIT_HOST=name, VORN_KIT_FOLDER=folder, LD_LIBRARY_PATH=str(build))
    durable = ["--durable"] if kind == "durable" or name == "GoodFiled" else []
    if name == "GoodNull":
        durable += ["--without", "volume,mute"]  # it answers true and stays where it is
    command = [build / "tools/conformance/vorn-conformance", *DEMANDS, *durable, *only, library]
    start = time.monotonic()
    try:
        ended = subprocess.run(command, env=environment, capture_output=True, text=True, errors="replace", timeout=600)
    except subprocess.TimeoutExpired as late:
        ended = subprocess.CompletedProcess(command, "late", str(late.stdout), str(late.stderr))
    took = time.monotonic() - start
    shutil.rmtree(folder, ignore_errors=True)
    return ended, took


def verdict(kind, operation, ended):
    """Whether it is as it must be, and what was said."""
    if kind == "good":
        return ended.returncode == 0, ended.stdout + ended.stderr
    said = ended.stdout + ended.stderr
    if ended.returncode == 3:
        return kind in ("not made", "load", "unload"), said
    broken = [block for block in re.split(r"^(?=BROKEN |NOT ASKED |REMARK |SLOWEST )", ended.stdout, flags=re.M)
              if block.startswith("BROKEN")]
    return ended.returncode == 1 and any(re.search(operation, block) for block in broken), said


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    pattern, times, way = sys.argv[2:5] + ["", "1", ""][len(sys.argv[2:5]):]
    library = build / "tests/kit/libkit_hosts_library.so"
    made, caught = collections.Counter(), collections.Counter()
    for kind, name, operation in hosts(library):
        if not re.search(pattern, kind + "/" + name):
            continue
        if way == "sample" and (made[kind] or kind in BY_CHANCE):
            continue
        for _ in range(int(times)):
            for only in stages(kind, operation, way):
                ended, took = run(build, library, kind, name, only)
                right, said = verdict(kind, operation, ended)
                if right:
                    break
            made[kind] += 1
            caught[kind] += right
            if not right or took > 60:
                print(f"{'slow ' if right else 'WRONG'} {kind}/{name} ({operation}): status {ended.returncode}, {took:.1f} s", flush=True)
                if not right:
                    pathlib.Path(f"/tmp/vorn-kit-{name}.txt").write_text(said)
    if way == "sample":
        print("left out, since chance has a part in them: " + ", ".join(BY_CHANCE))
    print(f"{'kind':20} hosts caught")
    for kind in made:
        print(f"{kind:20} {made[kind]:5} {caught[kind]:6}")
    print(f"{'all':20} {sum(made.values()):5} {sum(caught.values()):6}")
    return 0 if made == caught else 1


sys.exit(main())
