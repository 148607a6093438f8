"""Holds that a handler which a row asks for cannot be forgotten, nor one be written that no row asks for.

    check_handlers.py BUILD ROOT

BUILD is a complete build for Windows. In copies of single sources a handler is taken away, or one is added; the copy is
compiled as its source is, and put in the place of its object when the library or the driver is linked once more. Prints
"ok NAME" or "not ok NAME: why" for each check. Status 1 if one of them failed.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

# What is taken away: a name for the check, the source, the handler.
REMOVED = [
    ("threaded", "src/threaded/call_lists.cpp", "glCallLists_op::encode"),
    ("sequential", "src/sequential/read_pixels.cpp", "glReadPixels_op::broadcast"),
    ("replay-of-gl", "src/pipeline/replay_gl.cpp", "glViewportOffsetZ4_op::replay"),
    ("replay-of-wgl", "src/pipeline/replay_wgl.cpp", "wglShareLists_op::replay"),
    ("wgl-of-an-active-process", "src/wgl/swap.cpp", "wglSwapBuffers_op::handle"),
    ("wgl-of-a-bypassed-process", "src/dispatch/pass_wgl.cpp", "wglCreateContext_op::pass"),
    ("driver-gl", "driver/window_share.cpp", "own_call<glClear_op>::call"),
    ("driver-wgl", "driver/wgl_calls.cpp", "own_call<wglDeleteContext_op>::call"),
]

# What is added: handlers that no word of a row declares, or of another prototype than the row's. Each must not compile.
ADDED = [
    ("threaded-without-a-word", "src/threaded/call_lists.cpp", "void glClear_op::encode(GLbitfield) {}"),
    ("threaded-of-another-prototype", "src/threaded/call_lists.cpp", "void glCallLists_op::encode(GLsizei, GLenum) {}"),
    ("sequential-without-a-word", "src/sequential/read_pixels.cpp", "void glClear_op::broadcast(GLbitfield) {}"),
    ("replay-without-a-word", "src/pipeline/replay_gl.cpp", "void glClear_op::replay(const replay_scene&, GLbitfield) {}"),
    ("wgl-without-a-word", "src/wgl/swap.cpp", "HDC wglGetCurrentDC_op::handle() { return nullptr; }"),
    ("bypassed-without-a-word", "src/dispatch/pass_wgl.cpp", "HDC wglGetCurrentDC_op::pass() { return nullptr; }"),
    ("driver-without-a-row", "driver/window_share.cpp", "void own_call<glClearColor_op>::call(GLclampf, GLclampf, GLclampf, GLclampf) {}"),
]

# A row that is changed: its payload taken away while its word asks for one. A source that reads the rows must not
# compile.
ROW = ("payload-of-a-row", "src/ops/tables.cpp", r"(glUniform3fv,.*?)fits\(count, 3\)", r"\1none")

IMAGES = {"src": "opengl32", "driver": "opengl32sys"}


def compile_commands(build):
    listed = json.loads((build / "compile_commands.json").read_text())
    return {pathlib.Path(entry["file"]).resolve(): entry for entry in listed}


class Builder:
    def __init__(self, build, root, folder):
        self.build, self.root, self.folder = build, root, folder
        self.commands = compile_commands(build)

    def object_of(self, source):
        return self.build / shlex.split(self.commands[self.root / source]["command"])[-3]

    # Compiles `text` in the place of `source`. Result: the object, or None, and what the compiler said.
    def compile(self, source, text, first_folder=None):
        entry = self.commands[self.root / source]
        # Checks run side by side, each with files of its own.
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        copy = folder / pathlib.Path(source).name
        copy.write_text(text)
        made = copy.with_suffix(".obj")
        words = shlex.split(entry["command"])
        start = next(i for i, word in enumerate(words) if word.endswith("g++"))
        # What is left over when a handler is gone is no matter here, nor how fast the copy would be.
        words = [{"-Werror": "-w", "-O2": "-O0"}.get(word, word) for word in words[start:]]
        # A header that was precompiled has other flags, and other rows than those under test.
        if "-include" in words:
            at = words.index("-include")
            words = words[:at] + words[at + 2 :]
        words[words.index("-o") + 1] = str(made)
        words[words.index("-c") + 1] = str(copy)
        near = [f"-I{first_folder}"] if first_folder else []
        near.append(f"-I{(self.root / source).parent}")
        run = subprocess.run(words[:1] + near + words[1:], cwd=entry["directory"], capture_output=True, text=True, timeout=300)
        return (made if run.returncode == 0 else None), run.stderr

    # Links the image that `source` belongs to with `made` in the place of its object. Result: whether it links, and
    # what the linker said.
    def link(self, source, made):
        image = IMAGES[source.split("/")[0]]
        own = self.object_of(source).resolve()
        # What both images share is a library of its own.
        objects = [
            str(found)
            for target in (image, "osw_ops")
            for found in self.build.glob(f"*/CMakeFiles/{target}.dir/**/*.obj")
            if found.resolve() != own
        ]
        command = ["x86_64-w64-mingw32-g++", "-shared", "-o", str(made.with_suffix(".dll")), str(made)]
        # Nobody looks at it in a debugger; the linker spends most of its time on that.
        command += ["-Wl,--strip-debug"] + sorted(set(objects)) + ["-lkernel32", "-luser32", "-lgdi32", "-ladvapi32", "-static", "-static-libgcc"]
        run = subprocess.run(command, capture_output=True, text=True, timeout=300)
        return run.returncode == 0, run.stderr


# The definition of `handler`, whole, out of `text`.
def without(text, handler):
    at = text.index(" " + handler + "(")
    begin = text.rindex("\n", 0, at) + 1
    end = text.index("\n}\n", at) + 3
    return text[:begin] + text[end:]


def answer(name, problem):
    return f"not ok {name}: {problem}" if problem else f"ok {name}"


def check_removed(builder, name, source, handler):
    text = (builder.root / source).read_text()
    made, said = builder.compile(source, without(text, handler))
    if not made:
        return answer(name, f"{source} without {handler} does not compile: {said[:300]}")
    links, said = builder.link(source, made)
    if links:
        return answer(name, f"the image links without {handler}")
    return answer(name, "" if handler in said else f"the linker speaks of something else: {said[:300]}")


def check_added(builder, name, source, definition):
    text = (builder.root / source).read_text()
    made, said = builder.compile(source, text + "\n" + definition + "\n")
    return answer(name, f"{definition} compiles" if made else "" if "error" in said else "the compiler did not run")


def check_row(builder, name, source, pattern, replacement):
    rows = (builder.root / "src/ops/gl_ops.inc").read_text()
    changed, count = re.subn(pattern, replacement, rows, count=1)
    if not count:
        return answer(name, "the row was not found")
    changed_folder = builder.folder / "ops"
    changed_folder.mkdir()
    for header in (builder.root / "src/ops").glob("*"):
        (changed_folder / header.name).write_text(header.read_text())
    (changed_folder / "gl_ops.inc").write_text(changed)
    made, said = builder.compile(source, (builder.root / source).read_text(), builder.folder)
    return answer(name, "a row that copies nothing compiles" if made else "" if "payloads_are_used" in said else said[:300])


# An image links as it is, so that what fails below fails for want of a handler.
def check_whole(builder, image, source):
    made, said = builder.compile(source, (builder.root / source).read_text())
    links, said = builder.link(source, made) if made else (False, said)
    return answer(f"{image}-as-it-is", "" if links else said[:300])


def main(build, root):
    build, root = pathlib.Path(build).resolve(), pathlib.Path(root).resolve()
    checks = [(check_whole, "opengl32", "src/threaded/call_lists.cpp"), (check_whole, "opengl32sys", "driver/spare_window.cpp")]
    checks += [(check_removed, *each) for each in REMOVED] + [(check_added, *each) for each in ADDED]
    checks.append((check_row, *ROW))
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        builder = Builder(build, root, pathlib.Path(folder))
        answers = list(pool.map(lambda check: check[0](builder, *check[1:]), checks))
    print(*answers, sep="\n")
    return 0 if all(each.startswith("ok ") for each in answers) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
