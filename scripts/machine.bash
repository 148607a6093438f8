# shellcheck shell=bash
# What a script needs of the machine before it can do anything: packages, and a built tree. Sourced, not run.
# shellcheck disable=SC2034  # the package lists are used by the scripts

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64 libcli11-dev libtinyobjloader-dev
                googletest libgtest-dev libgmock-dev libbenchmark-dev)
wine_packages=(wine wine64 xvfb libgl1 libgl1-mesa-dri libglx-mesa0 libxcomposite1 libxinerama1 libxrandr2
               x11-utils x11-xserver-utils imagemagick)

say() {
  printf '%s\n' "$*" >&2
}

# die MESSAGE: one line on standard error, status 1.
die() {
  say "${0##*/}: $*"
  exit 1
}

# wrong_use MESSAGE: one line on standard error, status 2, for input that the user has to change.
wrong_use() {
  say "${0##*/}: $*"
  exit 2
}

# packaged_file PACKAGE ENDING: prints the path of the package's first file that ends so; status 1 if there is none.
packaged_file() {
  # Reads to the end: a pipe closed early would end dpkg with a failure.
  dpkg -L "$1" | awk -v ending="$2" \
    '!found && substr($0, length($0) - length(ending) + 1) == ending { print; found = 1 } END { exit !found }'
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "neither root nor sudo here; as root, run: $*"
  fi
}

# need_packages PACKAGE...: installs those of Debian's packages that are missing, and says which.
need_packages() {
  command -v dpkg-query >/dev/null || die "this machine has no dpkg; install by hand what provides: $*"
  local package missing=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "installing: ${missing[*]}"
  mkdir -p "$root/build"
  local log=$root/build/apt.log
  local install=(env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300
                 install -y -q --no-install-recommends "${missing[@]}")
  # The lists of a fresh machine are empty or old; one that is up to date is not asked again.
  as_root "${install[@]}" >"$log" 2>&1 && return 0
  as_root apt-get -o Acquire::Retries=3 update -q >>"$log" 2>&1 || die "apt-get update failed, see $log"
  as_root "${install[@]}" >>"$log" 2>&1 || die "apt-get install failed, see $log"
}

# fetch_source PACKAGE FOLDER: the source of one of Debian's packages, as its authors gave it out, in FOLDER. By lists of
# its own, because those of a machine seldom name sources; nothing of the machine is changed.
fetch_source() {
  local package=$1 folder=$2 work=$2.apt archive
  [ ! -e "$folder/fetched" ] || return 0
  say "fetching the source of $package"
  rm -rf "$folder" "$work"
  mkdir -p "$folder" "$work/lists/partial" "$work/cache"
  list_sources >"$work/sources.list"
  [ -s "$work/sources.list" ] || as_root apt-get -o Acquire::Retries=3 update -q >"$work/log" 2>&1
  list_sources >"$work/sources.list"
  local apt=(apt-get -q -o Acquire::Retries=3 -o Dir::Etc::SourceList="$work/sources.list"
             -o Dir::Etc::SourceParts=/dev/null -o Dir::State::Lists="$work/lists" -o Dir::Cache="$work/cache")
  if ! (cd "$work" && "${apt[@]}" update && "${apt[@]}" source --download-only "$package") >>"$work/log" 2>&1; then
    die "the source of $package cannot be had, see ${work#"$root"/}/log"
  fi
  for archive in "$work/$package"_*.orig.tar.*; do
    tar -x -f "$archive" -C "$folder" --strip-components=1 || die "the source of $package cannot be unpacked"
  done
  rm -rf "$work"
  : >"$folder/fetched"
}

# list_sources: lines for the sources of those packages of Debian that the machine takes.
list_sources() {
  local keys=/usr/share/keyrings/debian-archive-keyring.gpg
  apt-get indextargets --format "deb-src [signed-by=$keys] \$(REPO_URI) \$(RELEASE) \$(COMPONENT)" \
    'Created-By: Packages' 'Origin: Debian' | sort -u
}

# build PRESET [TARGET...]: configures and builds a preset, with all that it prints in build/PRESET.log. The result is
# the build's.
build() {
  local preset=$1 log=$root/build/$1.log
  shift
  mkdir -p "$root/build"
  (
    cd "$root" || exit
    # Two builds in one folder would spoil each other's files.
    exec 9>"build/$preset.lock"
    flock -w 1800 9
    cmake --preset "$preset" 9>&- && cmake --build --preset "$preset" ${1:+--target "$@"} 9>&-
  ) >"$log" 2>&1
}

# need_build PRESET [TARGET...]: as build, and an end with the build's own words if it fails.
need_build() {
  say "building: $*"
  build "$@" && return 0
  grep -E 'error|Error|FAILED' -m 20 "$root/build/$1.log" >&2 || tail -n 20 "$root/build/$1.log" >&2
  die "the build failed, see build/$1.log"
}
