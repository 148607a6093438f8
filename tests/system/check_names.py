"""Checks that a process that is spread is told of nothing that it cannot have: check_names.py SOURCE_FOLDER [REGISTRY]

In the basic mode the driver tells such a process a version and names of extensions, in the extended mode the library. A
function that is no op of the library does not exist for the process, so nothing may be told that has such a function;
in the extended mode nothing of which one has no handlers, as the compiler sees from the list of its functions. What belongs to what is in the public registry
(Debian's khronos-api). Prints "ok NAME" or "not ok NAME: why" for each check. Status 1 if one of them failed.
"""

import re
import sys
import xml.etree.ElementTree as ElementTree

from results import report

REGISTRY = "/usr/share/khronos-api"

# Not offered, though all their functions are ops, by reason.
WITHHELD = {
    # Where a pixel lies in the program's memory is by a state, a format or a type that the library does not know, when
    # it divides a read among the parts or takes a copy of an image.
    "the place of a pixel": """
        GL_MESA_pack_invert GL_APPLE_row_bytes GL_ARB_compressed_texture_pixel_storage GL_INGR_interlace_read
        GL_OML_interlace GL_OML_resample GL_OML_subsample GL_SGIX_interlace GL_SGIX_resample GL_SGIX_subsample
        GL_APPLE_rgb_422 GL_APPLE_ycbcr_422 GL_EXT_422_pixels GL_EXT_cmyka GL_MESA_ycbcr_texture GL_NV_texture_shader
        GL_NV_texture_shader2 GL_NV_texture_shader3 GL_SGIX_ycrcb GL_SGIX_ycrcb_subsample GL_SGIX_ycrcba""",
    # OpenGL goes on using the program's memory after the call, of which the parts have a copy that is gone by then.
    "memory of the program's": "GL_AMD_pinned_memory GL_APPLE_client_storage",
    # In the basic mode a context that is made with attributes has no parts.
    "creation with attributes": """
        WGL_ARB_create_context WGL_ARB_create_context_no_error WGL_ARB_create_context_profile
        WGL_ARB_create_context_robustness WGL_ARB_context_flush_control WGL_ARB_robustness_application_isolation
        WGL_ARB_robustness_share_group_isolation WGL_EXT_create_context_es2_profile WGL_EXT_create_context_es_profile
        WGL_NV_multigpu_context""",
    # They add to an extension that has other functions.
    "what they stand on": "GL_NV_vertex_array_range2 WGL_NV_DX_interop2",
}


# Of those above, what the extended mode offers: there such contexts have parts.
ADDED = """
    WGL_ARB_create_context WGL_ARB_create_context_no_error WGL_ARB_create_context_profile
    WGL_ARB_create_context_robustness""".split()


def read_list(source, file_name):
    with open(f"{source}/src/ops/{file_name}") as file:
        return file.read()


def ops_of(source, file_names=("gl_ops.inc", "wgl_ops.inc")):
    names = set()
    for file_name in file_names:
        names |= set(re.findall(r"^W?GL_OP\(\s*\d+, (\w+),", read_list(source, file_name), re.M))
    return names


def aliases_of(source):
    """The function that another name stands for, by that name."""
    return dict(re.findall(r"^GL_ALIAS\((\w+), (\w+)\)", read_list(source, "gl_aliases.inc"), re.M))


def functions_of(element):
    return {
        command.get("name")
        for require in element.findall("require")
        if require.get("api") in (None, "gl", "glcore", "wgl")
        for command in require.findall("command")
    }


def extensions_of(registry):
    """The functions of each extension of GL on desktops and of WGL, by its name."""
    extensions = {}
    for file_name, apis in (("gl.xml", {"gl", "glcore"}), ("wgl.xml", {"wgl"})):
        for element in ElementTree.parse(f"{registry}/{file_name}").getroot().find("extensions"):
            if apis & set(element.get("supported", "").split("|")):
                extensions[element.get("name")] = functions_of(element)
    return extensions


def offered_names(source):
    return re.findall(r'^"(\w+)",$', read_list(source, "extension_names.inc"), re.M)


def wide_extensions(source):
    """The rows of the extended mode's list: the name, and the ops that it names."""
    rows = re.findall(r"^WIDE_EXTENSION\(([^)]*)\)", read_list(source, "wide_extensions.inc"), re.M)
    words = [re.findall(r"\w+", row) for row in rows]
    return [(row[0], {word.removesuffix("_op") for word in row[1:]}) for row in words]


def told_version(source):
    with open(f"{source}/driver/told_version.cpp") as file:
        return tuple(map(int, re.search(r" newest = \{\{(\d+), (\d+)\}", file.read()).groups()))


def withheld_names():
    return {name for names in WITHHELD.values() for name in names.split()}


def listed(names):
    return f"{' '.join(sorted(names)[:10])} ({len(names)})" if names else ""


def check_offered(offered, extensions, ops):
    """None may be missing either: a program does without what it is not told of."""
    right = {name for name, functions in extensions.items() if functions <= ops} - withheld_names()
    too_many, missing = listed(set(offered) - right), listed(right - set(offered))
    return "; ".join(filter(None, (too_many and "too many: " + too_many, missing and "missing: " + missing)))


def check_withheld(extensions, ops):
    """Those of the list above that would be withheld without it, or that the registry does not have."""
    return listed({name for name in withheld_names() if not extensions.get(name, {"none"}) <= ops})


def check_wide(source, extensions, ops):
    """Each extension that has ops beyond the basic mode's, or functions under other names, with all of those ops."""
    wide, aliases, offered = ops_of(source, ["gl_wide.inc"]), aliases_of(source), set(offered_names(source))
    right = {name: set() for name in ADDED}
    for name, functions in extensions.items():
        called = {aliases.get(function, function) for function in functions}
        if called <= ops | wide and name not in offered | withheld_names():
            right[name] = called & wide
    found = dict(wide_extensions(source))
    return listed({name for name in right.keys() | found.keys() if right.get(name) != found.get(name)})


def check_version(source, registry, ops):
    """The newest version all of whose functions, and those of the versions before it, are ops."""
    newest = (0, 0)
    for element in ElementTree.parse(f"{registry}/gl.xml").getroot().findall("feature"):
        if element.get("api") != "gl":
            continue
        if not functions_of(element) <= ops:
            break
        newest = tuple(map(int, element.get("number").split(".")))
    told = told_version(source)
    return "" if told == newest else f"{told} is told, {newest} can be kept"


def main(source, registry=REGISTRY):
    ops, extensions, offered = ops_of(source), extensions_of(registry), offered_names(source)
    wide = wide_extensions(source)
    return report({
        "offered names": check_offered(offered, extensions, ops),
        "offered names, each once": listed({name for name in offered if offered.count(name) > 1}),
        "wide extensions": check_wide(source, extensions, ops),
        "wide extensions, each once": listed({name for name, _ in wide if [n for n, _ in wide].count(name) > 1}),
        "withheld names": check_withheld(extensions, ops),
        "version": check_version(source, registry, ops),
    })


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
