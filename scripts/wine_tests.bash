# shellcheck shell=bash source=scripts/machine.bash
# The tests that Wine has of an opengl32.dll, from the sources of Debian's package as they are, built to run by
# themselves. Sourced, not run; needs machine.bash.

# Where the built ones are: NAME.exe.
wine_tests_built=$root/build/programs/wine-windows

# build_wine_tests NAME...: these files of the tests of opengl32, each as a program that takes NAME as its argument.
build_wine_tests() {
  local source=$root/build/programs/wine log=$root/build/programs/wine.log name header
  fetch_source wine "$source"
  say "building: Wine's $*"
  mkdir -p "$wine_tests_built/wine"
  # Of Wine's own headers only these, which the toolchain lacks; the rest would stand against its.
  for header in test debug; do cp "$source/include/wine/$header.h" "$wine_tests_built/wine"; done
  printf '#include <GL/%s>\n' gl.h glext.h wglext.h >"$wine_tests_built/wine/wgl.h"
  for name in "$@"; do
    write_wine_test_list "$name" >"$wine_tests_built/$name-list.c"
    x86_64-w64-mingw32-gcc -O1 -w -static -I "$wine_tests_built" "$source/dlls/opengl32/tests/$name.c" \
      "$wine_tests_built/$name-list.c" -lopengl32 -lgdi32 -luser32 -o "$wine_tests_built/$name.exe"
  done >"$log" 2>&1 || die "the programs could not be built, see ${log#"$root"/}"
}

# write_wine_test_list NAME: prints what Wine's own build makes of the names of the tests, with the one function that it
# has from a library.
write_wine_test_list() {
  cat <<SOURCE
#include <windows.h>
#include <string.h>
#define STANDALONE
#include "wine/test.h"
extern void func_$1(void);
const struct test winetest_testlist[] = {{"$1", func_$1}, {0, 0}};
const char* __cdecl __wine_dbg_strdup(const char* text) { return _strdup(text); }
SOURCE
}
