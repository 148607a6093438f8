# shellcheck shell=bash source=scripts/machine.bash
# The packages that scripts need: which they are, whether they are there, and how they come. Sourced by machine.bash.
# shellcheck disable=SC2034  # the lists are used by the scripts

build_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64 libcli11-dev libtinyobjloader-dev
                libgtest-dev libgmock-dev libbenchmark-dev)
wine_packages=(wine wine64 xvfb libgl1 libgl1-mesa-dri libglx-mesa0 libxcomposite1 libxinerama1 libxrandr2
               x11-utils x11-xserver-utils imagemagick)

# What the scripts use of a package that has another name than its command: how a machine without Debian's list of
# packages is asked for it. A command, a library, or the end of a file's path.
declare -A used_of_package=(
  [ninja-build]=ninja [g++-mingw-w64-x86-64]=x86_64-w64-mingw32-g++ [libcli11-dev]=/CLI/CLI.hpp
  [libtinyobjloader-dev]=/tiny_obj_loader.h [libgtest-dev]=/gtest/gtest.h [libgmock-dev]=/gmock/gmock.h
  [libbenchmark-dev]=/benchmark/benchmark.h [clang]=clang++ [libclang-rt-dev]=/libclang_rt.asan-x86_64.a
  [wine64]=wineserver [xvfb]=Xvfb [libgl1]=libGL.so.1 [libgl1-mesa-dri]=/swrast_dri.so [libglx-mesa0]=libGLX.so.0
  [libxcomposite1]=libXcomposite.so.1 [libxinerama1]=libXinerama.so.1 [libxrandr2]=libXrandr.so.2
  [x11-utils]=xdpyinfo [x11-xserver-utils]=xrandr [imagemagick]=convert [procps]=pgrep [elfutils]=eu-stack
  [assimp-testmodels]=/spider.obj [fonts-dejavu-core]=/DejaVuSans.ttf [khronos-api]=/gl.xml
)

has_package_list() {
  command -v dpkg-query >/dev/null
}

# file_with_ending ENDING: prints the path of a file of the system's that ends so; status 1 if there is none.
file_with_ending() {
  local found
  found=$(find /usr/include /usr/local /usr/lib* /usr/share /opt -path "*$1" -print -quit 2>/dev/null)
  [ -n "$found" ] && echo "$found"
}

is_installed() {
  if has_package_list; then
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
    return
  fi
  local used=${used_of_package[$1]:-$1}
  case $used in
    /*) file_with_ending "$used" >/dev/null ;;
    # Reads to the end: a pipe closed early would end ldconfig with a failure.
    *.so.*) ldconfig -p | grep "^[[:space:]]*$used " >/dev/null ;;
    *) command -v "$used" >/dev/null ;;
  esac
}

# packaged_file PACKAGE ENDING: prints the path of the package's first file that ends so; status 1 if there is none.
packaged_file() {
  if ! has_package_list; then
    file_with_ending "$2"
    return
  fi
  # Reads to the end: a pipe closed early would end dpkg with a failure.
  dpkg -L "$1" | awk -v ending="$2" \
    '!found && substr($0, length($0) - length(ending) + 1) == ending { print; found = 1 } END { exit !found }'
}

# need_packages PACKAGE...: installs those of Debian's packages that are missing, and says which; nothing that is there
# goes for it. Where that cannot be done, an end with the sentence that says what to do.
need_packages() {
  local package missing=()
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  command -v apt-get >/dev/null ||
    die "missing here, by the names of Debian's packages: ${missing[*]}; install them by hand and start again"
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
    die "missing, and neither root nor sudo here; as root, run: apt-get install ${missing[*]}"
  install_packages "${missing[@]}"
}

install_packages() {
  say "installing: $*"
  mkdir -p "$root/build"
  local log=$root/build/apt.log
  local install=(env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300
                 install -y -q --no-remove --no-install-recommends "$@")
  # The lists of a fresh machine are empty or old; one that is up to date is not asked again.
  as_root "${install[@]}" >"$log" 2>&1 && return 0
  if as_root apt-get -o Acquire::Retries=3 update -q >>"$log" 2>&1; then
    as_root "${install[@]}" >>"$log" 2>&1 && return 0
  fi
  die "apt-get could not install $*, see build/apt.log; install them by hand and start again"
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  else
    sudo "$@"
  fi
}
