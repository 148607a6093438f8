# shellcheck shell=bash
# What a script needs of the machine before it can do anything: packages, and a built tree. Sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=scripts/packages.bash
. "$root/scripts/packages.bash"

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

# fetch_source PACKAGE FOLDER [RELEASE]: the source of one of Debian's packages, as its authors gave it out, in FOLDER; of
# that release of Debian, or of the machine's. By lists of its own, because those of a machine seldom name sources; nothing
# of the machine is changed.
fetch_source() {
  local package=$1 folder=$2 release=${3:-} work=$2.apt archive
  [ ! -e "$folder/fetched" ] || return 0
  say "fetching the source of $package"
  rm -rf "$folder" "$work"
  mkdir -p "$folder" "$work/lists/partial" "$work/cache"
  list_sources "$release" >"$work/sources.list"
  [ -s "$work/sources.list" ] || as_root apt-get -o Acquire::Retries=3 update -q >"$work/log" 2>&1
  list_sources "$release" >"$work/sources.list"
  local apt=(apt-get -q -o Acquire::Retries=3 -o Dir::Etc::SourceList="$work/sources.list"
             -o Dir::Etc::SourceParts=/dev/null -o Dir::State::Lists="$work/lists" -o Dir::Cache="$work/cache")
  if ! (cd "$work" && "${apt[@]}" update && "${apt[@]}" source --tar-only "$package") >>"$work/log" 2>&1; then
    die "the source of $package cannot be had, see ${work#"$root"/}/log"
  fi
  for archive in "$work/$package"_*.orig.tar.*; do
    tar -x -f "$archive" -C "$folder" --strip-components=1 || die "the source of $package cannot be unpacked"
  done
  rm -rf "$work"
  : >"$folder/fetched"
}

# list_sources [RELEASE]: lines for the sources of those packages of Debian that the machine takes, or of all of a release.
list_sources() {
  local keys=/usr/share/keyrings/debian-archive-keyring.gpg
  apt-get indextargets --format "deb-src [signed-by=$keys] \$(REPO_URI) \$(RELEASE) \$(COMPONENT)" \
    'Created-By: Packages' 'Origin: Debian' | awk -v release="$1" '
      release != "" { if ($4 ~ /-/ || $3 ~ /security/) next; $4 = release }
      { print }' | sort -u
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
