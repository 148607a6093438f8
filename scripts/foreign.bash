# shellcheck shell=bash source=scripts/machine.bash
# Programs that nobody here wrote, built for Windows from the sources of Debian's packages as they are. Sourced, not run;
# needs machine.bash and the list of packages build_packages. A program is named SOURCE/PROGRAM, as in
# tests/system/programs/programs.list.

# shellcheck source=scripts/glfw.bash
. "$root/scripts/glfw.bash"
# shellcheck source=scripts/freeglut.bash
. "$root/scripts/freeglut.bash"
# shellcheck source=scripts/sdl.bash
. "$root/scripts/sdl.bash"
# shellcheck source=scripts/wine_tests.bash
. "$root/scripts/wine_tests.bash"

# foreign_file SOURCE/PROGRAM: prints where the built program is.
foreign_file() {
  case $1 in
    glfw3/*) echo "$glfw_built/${1#*/}.exe" ;;
    freeglut/*) echo "$freeglut_built/bin/${1#*/}_static.exe" ;;
    libsdl2/*) echo "$sdl_built/test/${1#*/}.exe" ;;
    wine/*) echo "$wine_tests_built/${1#*/}.exe" ;;
    *) die "there is no source of $1" ;;
  esac
}

# build_foreign SOURCE/PROGRAM...: these programs, source by source.
build_foreign() {
  local program source
  local -A targets=()
  for program in "$@"; do targets[${program%%/*}]+=" ${program##*/}"; done
  for source in "${!targets[@]}"; do
    # Names of targets are plain words.
    # shellcheck disable=SC2086
    case $source in
      glfw3) build_glfw ${targets[$source]} ;;
      freeglut) build_freeglut ${targets[$source]} ;;
      libsdl2) build_sdl ${targets[$source]} ;;
      wine) build_wine_tests ${targets[$source]} ;;
    esac
  done
}

# foreign_files SOURCE/PROGRAM...: prints the files that have to stand in one folder for these programs to run.
foreign_files() {
  local program
  for program in "$@"; do
    foreign_file "$program"
    case $program in libsdl2/*) printf '%s\n' "$sdl_files"/*.bmp "$sdl_files/moose.dat" ;; esac
  done | sort -u
}
