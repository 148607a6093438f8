# shellcheck shell=bash source=scripts/machine.bash
# Tests of Piglit, a suite for what OpenGL promises, from the sources of Debian's package as they are. Sourced, not run;
# needs machine.bash. They open their windows by freeglut, whose library is built with its demonstrations.

# shellcheck source=scripts/freeglut.bash
. "$root/scripts/freeglut.bash"

# Where the built ones are: NAME.exe; and the files that shader_runner reads, below the groups that they belong to.
piglit_built=$root/build/programs/piglit-windows/bin
# shellcheck disable=SC2034  # the scripts that source this use it
piglit_files=$root/build/programs/piglit/tests/spec
# Of the release that the machine has, mirrors may have no sources any more.
piglit_release=trixie

# build_piglit NAME...: these tests.
build_piglit() {
  local source=$root/build/programs/piglit built=${piglit_built%/bin} log=$root/build/programs/piglit.log
  local toolkit=$freeglut_built/lib/libfreeglut_static.a flags='-DFREEGLUT_STATIC -w'
  local libraries='-lopengl32 -lgdi32 -lwinmm -luser32 -lkernel32'
  local targets=("${@/#/bin/}")
  need_packages python3-mako python3-numpy
  build_freeglut shapes
  fetch_source piglit "$source" "$piglit_release"
  say "building: $# tests of Piglit"
  {
    cmake -S "$source" -B "$built" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
      -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc -DCMAKE_BUILD_TYPE=Release -DPIGLIT_USE_WAFFLE=OFF \
      -DPYTHON_EXECUTABLE=/usr/bin/python3 \
      -DGLUT_INCLUDE_DIR="$root/build/programs/freeglut/include" -DGLUT_glut_LIBRARY="$toolkit" \
      -DGLUT_glut_LIBRARY_RELEASE="$toolkit" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
      -DCMAKE_C_STANDARD_LIBRARIES="$libraries" -DCMAKE_CXX_STANDARD_LIBRARIES="$libraries" \
      -DCMAKE_EXE_LINKER_FLAGS=-static && ninja -C "$built" "${targets[@]/%/.exe}"
  } >"$log" 2>&1 || die "the tests could not be built, see ${log#"$root"/}"
}
