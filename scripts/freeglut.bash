# shellcheck shell=bash source=scripts/machine.bash
# The demonstrations of freeglut, a library for windows, from the sources of Debian's package as they are. Sourced, not
# run; needs machine.bash.

# Where the built ones are: bin/NAME_static.exe.
freeglut_built=$root/build/programs/freeglut-windows

# build_freeglut NAME...: these demonstrations, with the source's own file for this toolchain.
build_freeglut() {
  local source=$root/build/programs/freeglut log=$root/build/programs/freeglut.log
  fetch_source freeglut "$source"
  say "building: freeglut's $*"
  {
    cmake -S "$source" -B "$freeglut_built" -G Ninja \
      -DCMAKE_TOOLCHAIN_FILE="$source/mingw_cross_toolchain.cmake" -DCMAKE_BUILD_TYPE=Release \
      -DFREEGLUT_BUILD_SHARED_LIBS=OFF -DCMAKE_EXE_LINKER_FLAGS=-static &&
      cmake --build "$freeglut_built" --target "${@/%/_static}"
  } >"$log" 2>&1 || die "the programs could not be built, see ${log#"$root"/}"
}
