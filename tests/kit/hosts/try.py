#!/usr/bin/env python3
"""Runs vorn-conformance on the hosts of the list and prints, by kind, how many were made and how many were caught.

  try.py BUILD [PATTERN] [TIMES] [whole | sample | one | record]   hosts whose kind or name matches PATTERN, each TIMES times

whole asks all checks of every host, not first those of the operation; sample takes one host of each kind whose mistakes
show every time, and asks a good one those of all operations together only. one asks every host whose mistake shows every
time the one check that caught.tsv names, which must be broken; record finds that check for hosts that are not there.
"""
import collections
import concurrent.futures
import ctypes
import functools
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
TIMED = ("together", "races", "first-calls", "lock-order", "any-order", "concurrent", "threads", "killed-writing")  # where threads meet


class Row(ctypes.Structure):
    _fields_ = [("kind", ctypes.c_char_p), ("name", ctypes.c_char_p), ("operation", ctypes.c_char_p),
                ("make", ctypes.c_void_p)]


def hosts(library):
    ask = ctypes.CDLL(str(library)).vornKitHosts
    ask.restype = ctypes.POINTER(Row)
    count = ctypes.c_size_t()
    rows = ask(ctypes.byref(count))
    return [tuple(text.decode() for text in (row.kind, row.name, row.operation)) for row in rows[:count.value]]


@functools.lru_cache(None)
def of_all_operations(build):
    """The checks of all operations together, but those that load the host for seconds."""
    listed = subprocess.run([build / "tools/conformance/vorn-conformance", "--list"], capture_output=True, text=True, check=True,
                            env=dict(os.environ, LD_LIBRARY_PATH=str(build))).stdout
    return [check for check in re.findall(r"^Vorn\S*/01/host/\S+", listed, re.M) if "/together" not in check]


def stages(build, kind, operation, way):
    """What to ask, in turn, until the mistake is found: of others than good hosts first the operation's own checks, and last
    what loads the host for seconds."""
    if kind == "good" and way == "sample":
        return [["--only", "/01/"]]
    if way == "whole" or kind in ("good", "not made", "load", "unload"):
        return [[]]
    own = [part for name in operation.split("|") for part in ("--only", "/" + name + "/")]
    return [own, [part for check in of_all_operations(build) for part in ("--only", check)], ["--only", "/01/"]]


def run(build, library, kind, name, only):
    folder = tempfile.mkdtemp(prefix="vorn-kit-")
    environment = dict(os.environ, VORN_KIT_HOST=name, VORN_KIT_FOLDER=folder, LD_LIBRARY_PATH=str(build))
    durable = ["--durable"] if kind == "durable" or name in ("GoodFiled", "GoodJournal", "GoodFileEach") else []
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


def miss(build, library, host, check, times=3):
    """What is said instead of that the check is broken; nothing where it is."""
    for _ in range(times):
        ended, _ = run(build, library, *host[:2], ["--only", check])
        if any(block.split()[1] == check for block in broken(ended)):
            return ""
    return f"{check} is not broken:\n{ended.stdout}{ended.stderr}"


def one(build, library, all_hosts, pattern):
    """What the table names for each host, asked once; most of the time is spent waiting for what does not come."""
    table = dict(line.split("\t") for line in CAUGHT.read_text().splitlines())

    def said(host):
        check = table.get(host[1])
        return "has no check in " + CAUGHT.name if not check else "" if check == "-" else miss(build, library, host, check)

    chosen = [host for host in all_hosts if shows_every_time(*host) and re.search(pattern, "/".join(host[:2]))]
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        wrong = [f"WRONG {host[0]}/{host[1]}: {text}" for host, text in zip(chosen, pool.map(said, chosen)) if text]
    gone = sorted(set(table) - {host[1] for host in all_hosts})
    print(*wrong, f"{len(chosen)} hosts, {len(set(table.values()) - {'-'})} checks, {len(wrong)} not caught", sep="\n")
    if gone:
        print("of no host: " + ", ".join(gone))
    return 1 if wrong or gone else 0


def record(build, library, all_hosts, pattern):
    """For each host without one, a check of its operation that is broken three times of three, one that no other host has if
    there is one; "-" where no such check is known."""
    table = dict(line.split("\t") for line in CAUGHT.read_text().splitlines()) if CAUGHT.exists() else {}
    table = {name: check for name, check in table.items() if name in {host[1] for host in all_hosts}}
    for host in all_hosts:
        if host[1] in table or not shows_every_time(*host) or not re.search(pattern, "/".join(host[:2])):
            continue
        checks = []
        for only in stages(build, host[0], host[2], "")[:2]:
            if not checks:
                ended, _ = run(build, library, *host[:2], only)
                checks = [block.split()[1] for block in broken(ended) if re.search(host[2], block)]
                checks = [check for check in checks if not check.split("/")[-1].startswith(TIMED)]
        checks.sort(key=lambda check: check in table.values())
        table[host[1]] = next((check for check in checks if not any(miss(build, library, host, check, 1) for _ in range(3))), "-")
        print(host[1], table[host[1]], flush=True)
        CAUGHT.write_text("".join(f"{name}\t{check}\n" for name, check in sorted(table.items())))
    return 0


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    pattern, times, way = sys.argv[2:5] + ["", "1", ""][len(sys.argv[2:5]):]
    library = build / "tests/kit/libkit_hosts_library.so"
    if way in ("one", "record"):
        return {"one": one, "record": record}[way](build, library, hosts(library), pattern)
    made, caught = collections.Counter(), collections.Counter()
    chosen = []
    for host in hosts(library):
        kind = host[0]
        if not re.search(pattern, "/".join(host[:2])) or (way == "sample" and (made[kind] or kind in BY_CHANCE)):
            continue
        made[kind] += int(times)
        chosen += [host] * int(times)

    def asked(host):
        for only in stages(build, host[0], host[2], way):
            ended, took = run(build, library, *host[:2], only)
            right, said = verdict(host[0], host[2], ended)
            if right:
                break
        return right, said, ended, took

    # What is sampled waits for most of its time, for what does not come.
    with concurrent.futures.ThreadPoolExecutor(3 if way == "sample" else 1) as pool:
        for (kind, name, operation), (right, said, ended, took) in zip(chosen, pool.map(asked, chosen)):
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
