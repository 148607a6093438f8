# shellcheck shell=bash source=scripts/machine.bash
# The programs of GLFW, a library for windows, from the sources of Debian's package as they are. Sourced, not run; needs
# machine.bash.

# Where the built ones are: examples/NAME.exe and tests/NAME.exe.
glfw_built=$root/build/programs/glfw3-windows

# build_glfw TARGET...: these programs, with the source's own file for this toolchain.
build_glfw() {
  local source=$root/build/programs/glfw3
  fetch_source glfw3 "$source"
  say "building: $*"
  {
    cmake -S "$source" -B "$glfw_built" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$source/CMake/x86_64-w64-mingw32.cmake" \
      -DCMAKE_BUILD_TYPE=Release -DCMAKE_EXE_LINKER_FLAGS=-static -DGLFW_BUILD_DOCS=OFF &&
      cmake --build "$glfw_built" --target "$@"
  } >"$root/build/programs/glfw3.log" 2>&1 || die "the programs could not be built, see build/programs/glfw3.log"
}
