"""Checks of a built opengl32.dll from the outside: check_library.py LIBRARY SOURCE_FOLDER

Prints "ok NAME" or "not ok NAME: why" for each check. Status 1 if one of them failed.
"""

import re
import subprocess
import sys

from results import report

TOOLS = "x86_64-w64-mingw32-"
ALLOWED_IMPORTS = {"kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "msvcrt.dll"}
OWN_NAMES = {"DllMain", "EnablePerformanceOptimization", "DisablePerformanceOptimization"}
PLATFORM_COUNT = 368


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=300).stdout


def exports_of(library):
    """Exported names with ordinal and address, read from the file's export tables."""
    text = output_of(TOOLS + "objdump", "-p", library)
    base = int(re.search(r"ImageBase\s+([0-9a-f]+)", text).group(1), 16)
    addresses = {}
    for ordinal, rva in re.findall(r"^\s*\[\s*\d+\] \+base\[\s*(\d+)\]\s+([0-9a-f]+) Export RVA", text, re.M):
        addresses[int(ordinal)] = base + int(rva, 16)
    names_from = text.index("[Ordinal/Name Pointer] Table")
    pattern = r"^\s*\[\s*(\d+)\](?: \+base\[\s*(\d+)\]\s+[0-9a-f]+)? (\S+)$"
    first = int(re.search(r"Ordinal Base\s+(\d+)", text).group(1))
    exports = {}
    for index, ordinal, name in re.findall(pattern, text[names_from:], re.M):
        number = int(ordinal) if ordinal else int(index) + first
        exports[name] = (number, addresses[number])
    return exports


def defined_exports(source):
    with open(source + "/src/entry/opengl32.def") as file:
        rows = re.findall(r"^\s+(\w+)\s*(?:=\s*\w+\s*)?@(\d+)", file.read(), re.M)
    return {name: int(ordinal) for name, ordinal in rows}


def platform_names():
    """The names that the toolchain's import library of the platform's opengl32.dll knows."""
    compiler_file = output_of(TOOLS + "g++", "-print-file-name=libopengl32.a").strip()
    return set(re.findall(r" I __imp_(\w+)$", output_of(TOOLS + "nm", compiler_file), re.M))


def argument_counts(source):
    """For each function of the op lists, how many arguments it takes."""
    counts = {}
    for file_name in ("gl_ops.inc", "wgl_ops.inc"):
        with open(f"{source}/src/ops/{file_name}") as file:
            for name, parameters in re.findall(r"^W?GL_OP\(\s*\d+, (\w+),[^(]*\(([^()]*)\)", file.read(), re.M):
                counts[name] = len(parameters.split(",")) if parameters.strip() else 0
    return counts


def difference(found, wanted):
    """One sentence about two sets, empty if they are equal."""
    parts = []
    for what, names in (("missing", wanted - found), ("too many", found - wanted)):
        if names:
            parts.append(f"{what}: {' '.join(sorted(map(str, names))[:10])} ({len(names)})")
    return "; ".join(parts)


def check_names(exports, source):
    return difference(set(exports), set(defined_exports(source)))


def check_platform_names(exports):
    missing = platform_names() - set(exports)
    return f"the platform exports these, the library does not: {' '.join(sorted(missing))}" if missing else ""


def check_ordinals(exports, source):
    found = {(name, ordinal) for name, (ordinal, _) in exports.items()}
    wrong = difference(found, set(defined_exports(source).items()))
    if wrong:
        return wrong
    by_ordinal = [name for name, _ in sorted(exports.items(), key=lambda item: item[1][0])]
    platform = by_ordinal[:PLATFORM_COUNT]
    if platform != sorted(platform):
        return "the platform's names are not in ASCII order"
    if set(by_ordinal[PLATFORM_COUNT:]) != OWN_NAMES:
        return f"after the platform's names come {by_ordinal[PLATFORM_COUNT:]}"
    if [exports[name][0] for name in by_ordinal] != list(range(1, PLATFORM_COUNT + len(OWN_NAMES) + 1)):
        return "the ordinals are not 1, 2, 3 and so on"
    return ""


def check_imports(library):
    names = re.findall(r"DLL Name: (\S+)", output_of(TOOLS + "objdump", "-p", library))
    wrong = {name.lower() for name in names} - ALLOWED_IMPORTS
    return f"imports {' '.join(sorted(wrong))}" if wrong or not names else ""


def disassembly(library):
    """Addresses and instructions of the code, in order."""
    text = output_of(TOOLS + "objdump", "-d", "--no-show-raw-insn", library)
    return [(int(address, 16), code) for address, code in re.findall(r"^\s*([0-9a-f]+):\t(.*)$", text, re.M)]


def functions_of(library):
    """Each function's address by its name, and the addresses at which functions start."""
    text = output_of(TOOLS + "nm", library + ".debug")
    symbols = {name: int(address, 16) for address, name in re.findall(r"^([0-9a-f]+) [Tt] (\S+)$", text, re.M)}
    return symbols, set(symbols.values())


def check_entry_points(library, exports, source):
    """An entry whose arguments travel in registers hands over with a jump: it has an indirect jump and no return."""
    symbols, starts = functions_of(library)
    bodies, body = {}, None
    for address, code in disassembly(library):
        if address in starts:
            body = bodies[address] = []
        if body is not None:
            body.append(code)
    wrong, seen = [], 0
    for name, count in argument_counts(source).items():
        address = exports[name][1] if name in exports else symbols.get("osw_" + name)
        if count > 4:
            continue
        if address not in bodies:
            wrong.append(name + " (no code found)")
            continue
        seen += 1
        text = "\n".join(bodies[address])
        if not re.search(r"\bjmp\s+\*", text) or re.search(r"^\s*(?:repz |bnd )?ret", text, re.M):
            wrong.append(name)
    if wrong or not seen:
        return f"{len(wrong)} of {seen} do not end in a jump: {' '.join(wrong[:10])}"
    return ""


def main(library, source):
    exports = exports_of(library)
    return report({
        "exported names": check_names(exports, source),
        "names of the platform's library": check_platform_names(exports),
        "ordinals": check_ordinals(exports, source),
        "imports": check_imports(library),
        "entry points": check_entry_points(library, exports, source),
    })


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
