"""Checks of the style of docs/style.md: check_style.py FOLDER, or check_style.py --self-test

FOLDER is the repository. clang-tidy, with the checks of .clang-tidy, reads the whole of src/, and of each other
folder, as one unit that includes all sources: the op list and the platform's headers are then read once and not once
for each source, which is most of the time that it takes. So a name means one thing there, also in anonymous
namespaces. What clang-tidy cannot see is looked for by words.

The sources in src/ are read as for the host, those for Windows alone with the headers of the Windows toolchain.

Prints "ok NAME" or "not ok NAME: why" for each check, the latter with file and line, and all that clang-tidy says on
standard error. Status 1 if one of them failed. With --self-test the checks are those of this program: that it finds
what is planted.
"""

import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import tempfile

TIDIED = ["src", "driver", "control", "demo"]
READ = TIDIED + ["bench"]
WINDOWS_COMPILER = "x86_64-w64-mingw32-g++"

# Functions and types that C++ has from C. Those that C++ gives other forms (abs, isfinite) are not among them.
FROM_C = (
    r"mem(?:chr|cmp|cpy|move|set)|str(?:cat|chr|cmp|cpy|cspn|error|len|ncmp|ncpy|pbrk|rchr|spn|str|to[a-z]+)"
    r"|[fs]?n?printf|s?n?scanf|f(?:open|close|read|write|flush|error|gets|puts|seek|tell)|getc|putc|puts"
    r"|malloc|calloc|realloc|free|abort|exit|_Exit|getenv|ato[a-z]|qsort|bsearch|to(?:lower|upper)"
    r"|is(?:space|digit|alpha)|sqrtf?|pow|fmod|floor|ceil|sin|cos|log10|size_t|ptrdiff_t|u?int(?:8|16|32|64|ptr)_t"
)
WORDS = {
    "file-local-names": (
        re.compile(r"^(?:template <.*> )?static "),
        "what belongs to one file stands in an anonymous namespace",
    ),
    "null-tests": (
        re.compile(r"== nullptr|\b(?:if|while) \(.*!= nullptr|!= nullptr (?:&&|\|\||\?)|(?:&&|\|\|) \S+ != nullptr"),
        "a pointer is tested as it is: if (!pointer)",
    ),
    "names-from-C": (re.compile(r"\bstd::(?:%s)\b" % FROM_C), "C's functions and types are written without std::"),
    "unfinished-work": (re.compile(r"\b(?:TODO|FIXME|XXX|HACK)\b"), "nothing is left for later in a comment"),
}


def sources_of(root, folder):
    """The folders at and below `folder` that have sources, each with its sources, all relative to the root."""
    found = {}
    for place, folders, names in os.walk(os.path.join(root, folder)):
        folders.sort()
        sources = [os.path.join(place, name) for name in sorted(names) if name.endswith((".cpp", ".h", ".inc"))]
        if sources:
            found[os.path.relpath(place, root)] = [os.path.relpath(source, root) for source in sources]
    return found


def report(name, findings):
    print(f"not ok {name}: {'; '.join(findings)}" if findings else f"ok {name}")
    return not findings


def check_words(root):
    good = True
    for name, (pattern, rule) in WORDS.items():
        findings = []
        for folder in READ:
            for source in sum(sources_of(root, folder).values(), []):
                with open(os.path.join(root, source), encoding="utf-8") as file:
                    findings += [f"{source}:{number}" for number, line in enumerate(file, 1) if pattern.search(line)]
        good = report(name, [rule] + findings if findings else []) and good
    return good


def windows_flags():
    """Where the Windows toolchain has the headers of C++, which clang-tidy does not find by itself."""
    command = [WINDOWS_COMPILER, "-E", "-x", "c++", "-", "-v"]
    said = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True).stderr
    folders = [os.path.realpath(word) for word in said.split() if "/include/c++" in word]
    # Libraries of headers stand in the build machine's own folder, which is searched last.
    return ["--target=x86_64-w64-mingw32", "-nostdinc++"] + [
        flag for folder in dict.fromkeys(folders) for flag in ("-isystem", folder)
    ] + ["-idirafter", "/usr/include"]


def flags_of(root, folder, windows):
    flags = ["-std=c++20", f"-I{root}/src"]
    if folder == "src":
        return flags + [f"-I{root}/tests/platform/include", "-DOSW_STATISTICS=0"]
    wide = ["-DUNICODE", "-D_UNICODE", f"-I{root}"] if folder == "control" else []
    return flags + [f"-I{root}/{folder}"] + wide + windows


def tidy(root, folder, sources, windows, work):
    """What clang-tidy says of the sources of a folder, and its status."""
    unit = os.path.join(work, folder.replace("/", "-") + ".cpp")
    with open(unit, "w", encoding="utf-8") as file:
        file.writelines(f'#include "{root}/{source}"\n' for source in sources)
    command = ["clang-tidy", "--quiet", f"--config-file={root}/.clang-tidy", unit, "--"]
    done = subprocess.run(command + flags_of(root, folder, windows), capture_output=True, text=True, check=False)
    return done.stdout + (done.stderr if " error: " in done.stderr else ""), done.returncode


def check_tidy(root, folders):
    windows = windows_flags()
    units = {}
    for folder in folders:
        for place, sources in sources_of(root, folder).items():
            unit = units.setdefault(folder if folder == "src" else place, [])
            unit += [source for source in sources if source.endswith(".cpp")]
    good = True
    work = tempfile.mkdtemp(prefix="osw-style-")
    try:
        # The longest first.
        order = sorted((place for place in units if units[place]), key=lambda place: -len(units[place]))
        with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count()) as pool:
            answers = pool.map(lambda place: (place, *tidy(root, place, units[place], windows, work)), order)
            for place, said, status in answers:
                findings = [line for line in said.splitlines() if re.search(r": (?:warning|error): ", line)]
                if status and not findings:
                    findings = [f"clang-tidy ended with status {status}"]
                sys.stderr.write(said)
                short = sorted({line.replace(root + "/", "") for line in findings})
                good = report("tidy-" + place.replace("/", "-"), short) and good
    finally:
        shutil.rmtree(work)
    return good


PLANTED = {
    "src/ops/kept.h": "#pragma once\n\n// Adds one.\ninline int plus_one(int number) {\n  return number + 1;\n}\n",
    "src/ops/kept.cpp": '#include "ops/kept.h"\n',
    "src/dispatch/null_literal.cpp": "int* nothing();\nint* nothing() {\n  return 0;\n}\n",
    "demo/parts/kept.cpp": "extern int kept;\nint kept;\n",
    "control/kept.cpp": "#include <windows.h>\n\n#include <string>\n",
    "driver/wrong_name.cpp": "extern int Wrong_Name;\nint Wrong_Name;\n",
    "demo/same.cpp": "namespace {\nint same;\n}\nint* a_same();\nint* a_same() {\n  return &same;\n}\n",
    "demo/same_again.cpp": "namespace {\nint same;\n}\nint* b_same();\nint* b_same() {\n  return &same;\n}\n",
    "bench/words.h": "static int local;\nif (p == nullptr) return;\nauto n = std::strlen(p);\n// TODO: the rest\n",
    "bench/kept.h": "return p != nullptr;\nstd::string words;\n  static int inside;\n",
}
FOUND = {
    "file-local-names": "bench/words.h:1",
    "null-tests": "bench/words.h:2",
    "names-from-C": "bench/words.h:3",
    "unfinished-work": "bench/words.h:4",
    "tidy-src": "src/dispatch/null_literal.cpp:3:",
    "tidy-driver": "driver/wrong_name.cpp:1:",
    "tidy-demo": "demo/same_again.cpp:2:",
}
PASSED = {"tidy-control", "tidy-demo-parts"}


def self_test(root):
    """Plants a fault of each kind, each in a file of its own, beside sources without any."""
    with tempfile.TemporaryDirectory(prefix="osw-style-") as planted:
        shutil.copy(os.path.join(root, ".clang-tidy"), planted)
        for name, text in PLANTED.items():
            os.makedirs(os.path.dirname(os.path.join(planted, name)), exist_ok=True)
            with open(os.path.join(planted, name), "w", encoding="utf-8") as file:
                file.write(text)
        command = [sys.executable, __file__, planted]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
    lines = done.stdout.splitlines()
    bad = {line[len("not ok ") :].split(":")[0]: line for line in lines if line.startswith("not ok ")}
    good = {line[len("ok ") :] for line in lines if line.startswith("ok ")}
    passed = report("fails-on-faults-alone", [] if done.returncode == 1 and set(bad) == set(FOUND) else lines)
    passed = report("passes-what-is-right", [] if good == PASSED else lines) and passed
    for name, place in FOUND.items():
        files = set(re.findall(r"[a-z/_]+\.(?:cpp|h)\b", bad.get(name, "")))
        right = place in bad.get(name, "") and files == {place.split(":")[0]}
        passed = report("finds-" + name, [] if right else [bad.get(name, "nothing was said")]) and passed
    return passed


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
    root = os.path.abspath(arguments[0])
    good = check_words(root)
    folders = [folder for folder in TIDIED if os.path.isdir(os.path.join(root, folder))]
    return check_tidy(root, folders) and good


if __name__ == "__main__":
    sys.exit(0 if main(sys.argv[1:]) else 1)
