"""Counts on 64-bit ARM, from the disassembled library alone, what it executes for a call on the straight path: the
one that reaches the call of the other side with the least ado. What it calls in turn is counted as a call, not followed."""

import heapq
import re
import subprocess

OPERATIONS = {
    "audio": "VornAudioIn::sendAudioData(",
    "unlocked": "VornAudioIn::isMicrophoneAvailable()",
    "unlocked-references": "VornLoggerObserver::onLogEmitted(",
    "locked": "VornGUIOutput::clearGUICard()",
}
# Those that change memory atomically, in one instruction, as a pair, or in a helper of the compiler's.
ATOMIC = re.compile(r"(ld|st)(add|clr|set|eor|smax|smin|umax|umin)|swp|cas|stl?xr|bl .*<__aarch64_")


def disassembled(library):
    """Function to its instructions: address to text."""
    text = subprocess.run(["aarch64-linux-gnu-objdump", "-d", "-C", "--no-show-raw-insn", library],
                          check=True, stdout=subprocess.PIPE, text=True).stdout
    functions = {}
    for line in text.splitlines():
        if match := re.match(r"[0-9a-f]+ <VornDeviceAbstractionLayer::(.*)>:$", line):
            current = functions[match[1]] = {}
        elif match := re.match(r"\s+([0-9a-f]+):\s+(.*?)(?:\s*//.*)?$", line):
            current[int(match[1], 16)] = match[2].replace("\t", " ")
        else:
            current = {}
    return functions


def from_table(path, register):
    """Whether a register holds what stands in the library's table of addresses: another function, by its name."""
    for i in range(len(path) - 1, -1, -1):
        match = re.match(r"(\w+) (\w+), (.*)", path[i])
        if not match or match[2] != register:
            continue
        name, _, source = match.groups()
        if name == "mov":
            return from_table(path[:i], source)
        base = re.match(r"\[(\w+)", source)
        return bool(name == "ldr" and base and is_page(path[:i], base[1]))
    return False


def is_page(path, register):
    return next((text for text in reversed(path) if re.match(rf"\w+ {register}, ", text)), "").startswith("adrp ")


def straight_path(code):
    """The instructions of the path with the fewest calls, and among those of the shortest one, that reaches the other
    side, and how many calls it makes besides. A call whose target is neither named nor in the table is the other side's."""
    start = min(code)
    paths = [(0, 0, start, False, ())]  # The least comes first: calls, instructions, then where it goes on.
    seen = set()
    while paths:
        calls, length, at, reached, path = heapq.heappop(paths)
        if (at, reached) in seen or at not in code:
            continue
        seen.add((at, reached))
        text = code[at]
        name, *operands = text.split()
        if name == "bl" or name in ("blr", "br") and from_table(path, operands[0]):
            calls += 1
        elif name in ("blr", "br"):
            reached = True
        path += (text,)
        if name in ("ret", "br"):
            if reached:
                return path, calls
            continue
        target = re.search(r"\b([0-9a-f]+) <", text)
        if target and name not in ("bl", "adrp"):
            heapq.heappush(paths, (calls, length + 1, int(target[1], 16), reached, path))
        if name != "b":
            heapq.heappush(paths, (calls, length + 1, at + 4, reached, path))
    return (), 0


def counted(library):
    """Kind to instructions, calls of functions besides the other side, and atomic changes of memory."""
    functions = disassembled(library)
    result = {}
    for kind, operation in OPERATIONS.items():
        code = next(code for name, code in functions.items() if name.startswith(operation) and "[clone" not in name)
        path, calls = straight_path(code)
        if not path:
            raise SystemExit(f"bench/arm.py: {operation}: no path reaches the other side")
        result[kind] = (len(path), calls, sum(bool(ATOMIC.match(text)) for text in path))
    return result
