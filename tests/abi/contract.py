"""What the binary contract says of headers and of a built library, as text that can be compared.

describe_headers()  slots, sizes and offsets of every public class, from the debug information of a small program
describe_library()  ELF facts, hardening, load order and exported names of a library
"""
import pathlib
import re
import shutil
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree

# Without the first, classes that are only interfaces leave no trace of their slots; without the second, classes
# that the program does not use leave none at all.
DEBUG = ["-g", "-O0", "-femit-class-debug-always", "-fno-eliminate-unused-debug-types"]
SYSTEM = ["-std=c++17", "-fPIC", "-shared", "-w"]


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False, **options)
    if done.returncode:
        raise RuntimeError(f"{' '.join(map(str, command))}\n{done.stdout}{done.stderr}")
    return done.stdout


def public_headers(include):
    include = pathlib.Path(include)
    return sorted(path.relative_to(include) for path in include.rglob("*.h"))


def classes_of(include):
    """Qualified names of the classes that the headers define, outermost ones only."""
    names = []
    for header in public_headers(include):
        namespace = "DeviceAbstractionLayer" if header.parts[0] == "DeviceAbstractionLayer" else "VornDeviceAbstractionLayer"
        text = (pathlib.Path(include) / header).read_text()
        names += [f"{namespace}::{name}" for name in re.findall(r"^class (?:VORN_DAL_API )?(\w+)(?: :|\s*\{|$)", text, re.M)
                  if f"class {name};" not in text]
    return sorted(set(names))


def checked_library(compiler, flags, include, directory):
    """Builds the small program that the headers are read from."""
    source = pathlib.Path(directory) / "contract.cpp"
    lines = [f"#include <{header}>" for header in public_headers(include)]
    lines += [f"{name}* pointer{number};" for number, name in enumerate(classes_of(include))]
    lines.append("DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo* commsState;")
    lines.append("VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl::Settings* settings;")
    source.write_text("\n".join(lines) + "\n")
    # From a copy beside it: the order of the description depends on where the headers are.
    shutil.copytree(include, pathlib.Path(directory) / "include")
    library = pathlib.Path(directory) / "contract.so"
    run(compiler, *SYSTEM, *DEBUG, *flags, f"-ffile-prefix-map={directory}=.", f"-I{directory}/include", "-o", library, source)
    return library


def abidw(library, *options):
    return run("abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--no-architecture", *options, library)


def own_types(library):
    """The document that is kept: without the insides of the standard library's types, which are two thirds of it."""
    return abidw(library, "--suppressions", pathlib.Path(__file__).parent / "own-types.suppr")


class Types:
    """Names of types in an abidw document."""

    def __init__(self, root):
        self.by_id = {node.get("id"): node for node in root.iter() if node.get("id")}

    def name(self, type_id):
        node = self.by_id.get(type_id)
        if node is None:
            return "void"
        inner = node.get("type-id")
        if node.tag == "pointer-type-def":
            return self.name(inner) + "*"
        if node.tag == "reference-type-def":
            return self.name(inner) + ("&" if node.get("kind") == "lvalue" else "&&")
        if node.tag == "qualified-type-def":
            return self.name(inner) + (" const" if node.get("const") == "yes" else "")
        return node.get("name", node.tag)


def describe_headers(compiler, flags, include):
    with tempfile.TemporaryDirectory() as directory:
        document = abidw(checked_library(compiler, flags, include, directory))
    root = ElementTree.fromstring(document)
    types = Types(root)
    lines = []

    def visit(node, prefix):
        for child in node:
            if child.tag == "namespace-decl":
                visit(child, prefix + child.get("name") + "::")
            elif child.tag == "class-decl" and child.get("is-declaration-only") != "yes":
                if prefix.startswith(("VornDeviceAbstractionLayer::", "DeviceAbstractionLayer::")):
                    describe(child, prefix + child.get("name"))
            elif child.tag == "enum-decl" and "AbstractionLayer::" in prefix:
                lines.append(f"enum {prefix}{child.get('name')} of {types.name(child.find('underlying-type').get('type-id'))}")
            elif child.tag in ("abi-instr", "member-type"):
                visit(child, prefix)

    def describe(node, name):
        entry = [f"class {name}, {int(node.get('size-in-bits')) // 8} bytes"]
        for base in node.findall("base-class"):
            entry.append(f"  base at {int(base.get('layout-offset-in-bits')) // 8}: {types.name(base.get('type-id'))}")
        slots = []
        for member in node:
            if member.tag == "data-member":
                variable = member.find("var-decl")
                where = member.get("layout-offset-in-bits")
                place = "static" if member.get("static") == "yes" else f"at {int(where) // 8}"
                entry.append(f"  {place}: {variable.get('name')}, {types.name(variable.get('type-id'))}")
            elif member.tag == "member-function" and member.get("vtable-offset") is not None:
                function = member.find("function-decl")
                mangled = function.get("mangled-name") or ""
                if re.search(r"D\dEv$", mangled):
                    entry.append("  destructor: virtual")
                    continue
                result = types.name(function.find("return").get("type-id"))
                slots.append((int(member.get("vtable-offset")) + 1, mangled, result))
        for number, mangled, result in sorted(set(slots)):
            entry.append(f"  slot {number}: {mangled} -> {result}")
        if len(entry) > 1 or "Impl" in name:
            text = "\n".join(entry)
            if text not in lines:
                lines.append(text)
        visit(node, name + "::")

    visit(root, "")
    return "\n".join(sorted(set(lines))) + "\n"


def sections(library):
    table = {}
    for line in run("readelf", "-SW", library).splitlines():
        match = re.match(r"\s*\[\s*\d+\]\s+(\S+)\s+\S+\s+([0-9a-f]+)\s+([0-9a-f]+)\s+([0-9a-f]+)", line)
        if match:
            table[match.group(1)] = tuple(int(value, 16) for value in match.groups()[1:])
    return table


def load_order(library):
    """The source files whose static initialisers run at load, in order."""
    address, _, size = sections(library)[".init_array"]
    targets = {}
    for line in run("readelf", "-rW", library).splitlines():
        match = re.match(r"([0-9a-f]+)\s+[0-9a-f]+\s+R_\w+_RELATIVE\s+([0-9a-f]+)", line)
        if match and address <= int(match.group(1), 16) < address + size:
            targets[int(match.group(1), 16)] = int(match.group(2), 16)
    files = {}
    current = ""
    for line in run("readelf", "-sW", library).splitlines():
        fields = line.split()
        if len(fields) >= 8 and fields[3] == "FILE":
            current = fields[7]
        elif len(fields) >= 8 and fields[3] == "FUNC" and "GLOBAL__sub_I" in fields[7]:
            files[int(fields[1], 16)] = pathlib.Path(current).stem
    return [files[targets[place]] for place in sorted(targets) if targets[place] in files]


def exports(library):
    names = []
    for line in run("readelf", "--dyn-syms", "-W", library).splitlines():
        fields = line.split()
        if len(fields) >= 8 and fields[4] in ("GLOBAL", "WEAK", "UNIQUE") and fields[6] != "UND":
            size = fields[2] if fields[3] == "OBJECT" and not fields[7].startswith(("_ZTI", "_ZTS")) else "-"
            names.append(f"{fields[7]} {fields[3]} {size}")
    return sorted(names)


def describe_library(library):
    dynamic = run("readelf", "-dW", library)
    notes = run("readelf", "-nW", library)
    segments = run("readelf", "-lW", library)
    undefined = run("readelf", "--dyn-syms", "-W", library)
    lines = [f"soname {re.search(r'soname: .(.*)]', dynamic).group(1) if 'soname' in dynamic else 'none'}"]
    lines += [f"needs {name}" for name in re.findall(r"NEEDED.*\[(.*)\]", dynamic)]
    lines += [f"{kind} {path}" for kind, path in re.findall(r"\((RPATH|RUNPATH)\).*\[(.*)\]", dynamic)]
    lines.append("immediate binding " + ("yes" if re.search(r"BIND_NOW|Flags: .*NOW", dynamic) else "no"))
    lines.append("read-only relocations " + ("yes" if "GNU_RELRO" in segments else "no"))
    lines.append("executable stack " + ("no" if re.search(r"GNU_STACK.* RW ", segments) else "yes"))
    lines.append("text relocations " + ("yes" if "TEXTREL" in dynamic else "no"))
    lines.append("stack protector " + ("yes" if "__stack_chk_fail" in undefined else "no"))
    lines.append("standard-library assertions " + ("yes" if "__glibcxx_assert" in undefined or "__glibcxx_assert_fail" in undefined else "no"))
    lines.append("control-flow protection " + (", ".join(re.findall(r"\b(IBT|SHSTK)\b", notes)) or "none"))
    code = run("objdump" if "X86-64" in run("readelf", "-h", library) else "aarch64-linux-gnu-objdump", "-d", "--no-show-raw-insn", library)
    lines.append("pointer authentication " + ("yes" if "paciasp" in code else "no"))
    lines.append("unique symbols " + ("yes" if " UNIQUE " in undefined else "no"))
    lines.append("stripped " + ("no" if ".symtab" in sections(library) else "yes"))
    lines.append("loads " + ", ".join(load_order(library)))
    lines += [f"exports {name}" for name in exports(library)]
    return "\n".join(lines) + "\n"
