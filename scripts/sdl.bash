# shellcheck shell=bash source=scripts/machine.bash
# Test programs of SDL, a library for windows and pictures, from the sources of Debian's package as they are. Sourced, not
# run; needs machine.bash.

# Where the built ones are, and the files that they read: test/NAME.exe and the source's test/.
sdl_built=$root/build/programs/libsdl2-windows
sdl_files=$root/build/programs/libsdl2/test

# build_sdl NAME...: these test programs, without the parts of the library that draw nothing.
build_sdl() {
  local source=$root/build/programs/libsdl2 log=$root/build/programs/libsdl2.log
  local switch off=()
  for switch in SDL_SHARED SDL_AUDIO SDL_JOYSTICK SDL_HAPTIC SDL_SENSOR SDL_HIDAPI SDL_VULKAN RENDER_D3D DIRECTX; do
    off+=("-D$switch=OFF")
  done
  fetch_source libsdl2 "$source"
  say "building: SDL's $*"
  {
    cmake -S "$source" -B "$sdl_built" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
      -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc \
      -DCMAKE_BUILD_TYPE=Release -DSDL_STATIC=ON -DSDL_TEST=ON -DSDL_TESTS=ON -DCMAKE_EXE_LINKER_FLAGS=-static \
      "${off[@]}" && cmake --build "$sdl_built" --target "$@"
  } >"$log" 2>&1 || die "the programs could not be built, see ${log#"$root"/}"
}
