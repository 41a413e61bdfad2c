#!/usr/bin/env python3
"""Runs vorn-conformance on the hosts of the list and prints, by kind, how many were made and how many were caught.

  try.py BUILD [PATTERN] [TIMES] [whole | sample | one | record]   hosts whose kind or name matches PATTERN, each TIMES times

whole asks all checks of every host, not first those of the operation; sample takes one host of each kind whose mistakes
show every time, and asks a good one those of all operations together only. one asks every host whose mistake shows every
time the one check that caught.tsv names, which must be broken; record finds that check for hosts that are not there.
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


CAUGHT = pathlib.Path(__file__).parent / "caught.tsv"  # host, check
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


def broken(ended):
    return [block for block in re.split(r"^(?=BROKEN |NOT ASKED |REMARK |SLOWEST )", ended.stdout, flags=re.M) if block.startswith("BROKEN")]


def verdict(kind, operation, ended):
    """Whether it is as it must be, and what was said."""
    said = ended.stdout + ended.stderr
    if kind == "good":
        return ended.returncode == 0, said
    if ended.returncode == 3:
        return kind in ("not made", "load", "unload"), said
    return ended.returncode == 1 and any(re.search(operation, block) for block in broken(ended)), said


def shows_every_time(kind, *_):
    return kind not in (*BY_CHANCE, "good", "not made", "load", "unload")


def caught_by(build, library, host, check):
    ended, _ = run(build, library, *host[:2], ["--only", check])
    return any(block.split()[1] == check for block in broken(ended)), ended


def one(build, library, all_hosts, pattern):
    """What the table names for each host, asked once."""
    table = dict(line.split("\t") for line in CAUGHT.read_text().splitlines())
    wrong = 0
    for host in all_hosts:
        if not shows_every_time(*host) or not re.search(pattern, "/".join(host[:2])):
            continue
        check = table.get(host[1])
        found, ended = caught_by(build, library, host, check) if check else (False, None)
        if not found:
            wrong += 1
            print(f"WRONG {host[0]}/{host[1]}: " + (f"{check} is not broken:\n{ended.stdout}{ended.stderr}" if check else "has no check in " + CAUGHT.name))
    known = {host[1] for host in all_hosts}
    gone = sorted(set(table) - known)
    print(f"{len(table)} hosts, {len(set(table.values()))} checks, {wrong} not caught" + (", of no host: " + ", ".join(gone) if gone else ""))
    return 1 if wrong or gone else 0


def record(build, library, all_hosts, pattern):
    """For each host without one, a check that is broken three times of three, of its own operation if one is, and none that
    another host has if there is one left."""
    table = dict(line.split("\t") for line in CAUGHT.read_text().splitlines()) if CAUGHT.exists() else {}
    table = {name: check for name, check in table.items() if name in {host[1] for host in all_hosts}}
    for host in all_hosts:
        if host[1] in table or not shows_every_time(*host) or not re.search(pattern, "/".join(host[:2])):
            continue
        for only in stages(host[0], host[2], "record")[:2]:
            ended, _ = run(build, library, *host[:2], only)
            checks = [block.split()[1] for block in broken(ended) if re.search(host[2], block)]
            for check in sorted(checks, key=lambda check: (check in table.values(), "/concurrent" in check)):
                if host[1] not in table and all(caught_by(build, library, host, check)[0] for _ in range(2)):
                    table[host[1]] = check
            if host[1] in table:
                break
        print(host[1], table.get(host[1], "NONE"), flush=True)
        CAUGHT.write_text("".join(f"{name}\t{check}\n" for name, check in sorted(table.items())))
    return 0


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    pattern, times, way = sys.argv[2:5] + ["", "1", ""][len(sys.argv[2:5]):]
    library = build / "tests/kit/libkit_hosts_library.so"
    if way in ("one", "record"):
        return {"one": one, "record": record}[way](build, library, hosts(library), pattern)
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
