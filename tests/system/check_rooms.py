"""Checks of which sources include which: check_rooms.py FOLDER, or check_rooms.py --self-test

FOLDER is the repository. In src/ an include points to the same room or to one nearer to the ground, and nothing
includes the roof. In each of the folders there are no circles: no two units need each other, directly or by way of
others. A unit is what has one name, x.h with x.cpp and x.inc; it needs what any of its files includes.

Prints "ok NAME" or "not ok NAME: why" for each check, the latter with file and line. Status 1 if one of them failed.
With --self-test the checks are those of this program: that it finds what is planted.
"""

import os
import re
import sys
import tempfile

# Ground first.
ROOMS = [
    "ops",
    "dispatch",
    "startup/config",
    "wgl/records",
    "sequential/parts",
    "pipeline",
    "sequential",
    "threaded",
    "extended",
    "wgl",
    "entry",
    "startup",
]
ROOF = "startup"
FOLDERS = ["src", "driver", "control", "demo"]
SOURCES = (".h", ".cpp", ".inc")
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]')


def includes_of(root, folder):
    """(file, line number, included file) for each include below `folder` that names a file of the folder itself or of
    src; all files relative to the root."""
    found = []
    for place, folders, names in os.walk(os.path.join(root, folder)):
        folders.sort()
        for name in sorted(names):
            if not name.endswith(SOURCES):
                continue
            path = os.path.join(place, name)
            with open(path, encoding="utf-8") as file:
                for number, line in enumerate(file, 1):
                    match = INCLUDE.match(line)
                    target = resolved(root, folder, place, match.group(1)) if match else None
                    if target:
                        found.append((os.path.relpath(path, root), number, target))
    return found


def resolved(root, folder, place, name):
    """The file that an include means, searched where the compiler searches; None for a header of somebody else."""
    for start in (place, os.path.join(root, folder), os.path.join(root, "src"), root):
        path = os.path.normpath(os.path.join(start, name))
        if os.path.isfile(path):
            return os.path.relpath(path, root)
    return None


def room_of(path):
    """The room of a file, None outside src/ and "" for a folder that is in no room."""
    if not path.startswith("src/"):
        return None
    place = os.path.dirname(path)[len("src/"):]
    return place if place in ROOMS else ""


def homeless_files(root):
    for place, folders, names in os.walk(os.path.join(root, "src")):
        folders.sort()
        for name in sorted(names):
            path = os.path.relpath(os.path.join(place, name), root)
            if name.endswith(SOURCES) and not room_of(path):
                yield f"{path} is in a folder that the list of rooms does not name"


def upward_includes(includes):
    for path, number, target in includes:
        here, there = room_of(path), room_of(target)
        if here and there and ROOMS.index(there) > ROOMS.index(here):
            yield f"{path}:{number} includes {target}: {here} stands below {there}"


def includes_of_the_roof(includes):
    for path, number, target in includes:
        if room_of(target) == ROOF and room_of(path) != ROOF:
            yield f"{path}:{number} includes {target}: nothing outside {ROOF} may"


def unit_of(path):
    return os.path.splitext(path)[0]


def needs_of(includes):
    """For each unit the units that it needs, with the place of the first include that says so."""
    needs = {}
    for path, number, target in includes:
        unit, other = unit_of(path), unit_of(target)
        if unit != other:
            needs.setdefault(unit, {}).setdefault(other, f"{path}:{number}")
    return needs


def circle_from(start, needs):
    """The shortest way from a unit back to itself, as a list of units that begins and ends with it, or None."""
    came_from = {start: None}
    waiting = [start]
    for unit in waiting:
        for other in needs.get(unit, {}):
            if other == start:
                way = [start]
                while unit is not None:
                    way.append(unit)
                    unit = came_from[unit]
                return way[::-1]
            if other not in came_from:
                came_from[other] = unit
                waiting.append(other)
    return None


def circles(includes):
    needs = needs_of(includes)
    told = set()
    for unit in sorted(needs):
        way = circle_from(unit, needs)
        if way and not told & set(way):
            told |= set(way)
            steps = [f"{needs[one][other]} includes {other}" for one, other in zip(way, way[1:])]
            yield "a circle: " + ", ".join(steps)


def checks_of(root):
    """(name, complaints) for each check."""
    by_folder = {folder: includes_of(root, folder) for folder in FOLDERS}
    everything = [include for includes in by_folder.values() for include in includes]
    yield "includes-are-found", [f"none in {folder}" for folder in FOLDERS if not by_folder[folder]]
    yield "every-file-has-a-room", list(homeless_files(root))
    yield "includes-point-down", list(upward_includes(everything))
    yield "nothing-includes-the-roof", list(includes_of_the_roof(everything))
    for folder in FOLDERS:
        yield f"no-circles-in-{folder}", list(circles(by_folder[folder]))


def report(checks):
    """Prints a line for each complaint, or one for a check without. Result: the status to end with."""
    status = 0
    for name, complaints in checks:
        for complaint in complaints:
            print(f"not ok {name}: {complaint}")
            status = 1
        if not complaints:
            print(f"ok {name}")
    return status


# A tree without fault, and what is planted in it: the files that change, the check that must complain and words of the
# complaint.
CLEAN = {
    "src/ops/ops.h": '#pragma once\n#include <cstring>\n#include "ops/list.inc"\n',
    "src/ops/list.inc": "",
    "src/wgl/records/glrc.h": '#include "ops/ops.h"\n',
    "src/pipeline/queue.h": '#include "wgl/records/glrc.h"\n',
    "src/pipeline/queue.cpp": '#include "pipeline/queue.h"\n',
    "src/wgl/swap.h": '#include "pipeline/queue.h"\n',
    "src/entry/entries.h": "",
    "src/startup/process.cpp": '#include "startup/life.h"\n',
    "src/startup/life.h": '#include "wgl/swap.h"\n',
    "driver/host.h": '#include "ops/ops.h"\n',
    "driver/host.cpp": '#include "host.h"\n#include "report.h"\n',
    "driver/report.h": "",
    "driver/report.cpp": '#include "report.h"\n',
    "control/run.cpp": '#include "run.h"\n',
    "control/run.h": "",
    "demo/viewer.cpp": '#include "scene.h"\n',
    "demo/scene.h": "",
}
PLANTED = {
    "an-upward-include": (
        {"src/pipeline/queue.cpp": '#include "pipeline/queue.h"\n#include "entry/entries.h"\n'},
        "includes-point-down",
        "src/pipeline/queue.cpp:2 includes src/entry/entries.h: pipeline stands below entry",
    ),
    "an-upward-include-within-a-folder": (
        {"src/wgl/records/glrc.h": '#include "../layout.h"\n', "src/wgl/layout.h": ""},
        "includes-point-down",
        "src/wgl/records/glrc.h:1 includes src/wgl/layout.h: wgl/records stands below wgl",
    ),
    "an-upward-include-in-angle-brackets": (
        {"src/ops/ops.h": "# include <entry/entries.h>\n"},
        "includes-point-down",
        "src/ops/ops.h:1 includes src/entry/entries.h: ops stands below entry",
    ),
    "an-include-of-the-roof": (
        {"driver/host.cpp": '#include "startup/life.h"\n'},
        "nothing-includes-the-roof",
        "driver/host.cpp:1 includes src/startup/life.h",
    ),
    "a-folder-without-includes": ({"control/run.cpp": ""}, "includes-are-found", "none in control"),
    "a-folder-without-a-room": (
        {"src/attic/trunk.h": ""},
        "every-file-has-a-room",
        "src/attic/trunk.h is in a folder",
    ),
    "a-circle-of-two-by-their-sources": (
        {"driver/report.cpp": '#include "report.h"\n#include "host.h"\n'},
        "no-circles-in-driver",
        "driver/host.cpp:2 includes driver/report, driver/report.cpp:2 includes driver/host",
    ),
    "a-circle-of-three": (
        {
            "src/dispatch/a.h": '#include "dispatch/b.h"\n',
            "src/dispatch/b.cpp": '#include "dispatch/c.h"\n',
            "src/dispatch/b.h": "",
            "src/dispatch/c.h": '\n#include "dispatch/a.h"\n',
        },
        "no-circles-in-src",
        "src/dispatch/a.h:1 includes src/dispatch/b, src/dispatch/b.cpp:1 includes src/dispatch/c, "
        "src/dispatch/c.h:2 includes src/dispatch/a",
    ),
}


def complaints_about(files):
    """(check, complaint) for each complaint about a tree of these files."""
    with tempfile.TemporaryDirectory() as root:
        for path, text in files.items():
            whole = os.path.join(root, path)
            os.makedirs(os.path.dirname(whole), exist_ok=True)
            with open(whole, "w", encoding="utf-8") as file:
                file.write(text)
        return [(name, complaint) for name, complaints in checks_of(root) for complaint in complaints]


def self_tests():
    yield "says-nothing-about-a-clean-tree", [complaint for _, complaint in complaints_about(CLEAN)]
    for name, (files, check, words) in PLANTED.items():
        found = complaints_about({**CLEAN, **files})
        as_wanted = len(found) == 1 and found[0][0] == check and words in found[0][1]
        yield f"finds-{name}", [] if as_wanted else [f"wanted {check} with \"{words}\", found {found}"]


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(report(self_tests() if sys.argv[1] == "--self-test" else checks_of(sys.argv[1])))
