# shellcheck shell=bash
# The tests that are Windows programs, from tests/system/tests.list. Sourced, not run; needs machine.bash and wine.bash.

# run_wine_tests [NAME...]: runs the tests of the list, or those named, and prints for each its name and "passed" or what
# went wrong. A test's output is in build/test/wine/NAME.log.
run_wine_tests() {
  local logs=$root/build/test/wine list=$root/tests/system/tests.list monitors=0
  rm -rf "$logs"
  mkdir -p "$logs"
  begin_wine test
  local name seconds wanted mode command
  while IFS='|' read -r name seconds wanted mode command; do
    read -r name <<<"$name"
    case $name in "" | \#*) continue ;; esac
    if [ $# -gt 0 ] && [[ " $* " != *" $name "* ]]; then continue; fi
    if [ "$((wanted))" -ne "$monitors" ]; then
      monitors=$((wanted))
      set_monitors "$monitors"
    fi
    run_wine_test "$name" "$((seconds))" "${mode// /}" "$command" "$logs/$name.log"
  done <"$list"
}

# run_wine_test NAME SECONDS MODE COMMAND LOG: a test in a folder of its own, which is removed if it passes.
run_wine_test() {
  local name=$1 seconds=$2 mode=$3 log=$5 folder=$root/build/test/wine/$1 program arguments status=0
  read -r program arguments <<<"$4"
  # The list's arguments are plain words.
  # shellcheck disable=SC2206
  arguments=($arguments)
  if ! stage "$folder" "$root/build/windows/$program" "$root/build/windows/oswctl.exe" 2>"$log"; then
    echo "$name the build has no $program, or a library is missing"
    return 0
  fi
  use_our_library
  local command=("$folder/$program" "${arguments[@]}")
  case $mode in
    bypassed) ;;
    spanned-*) command=("$folder/oswctl.exe" run --parts "${mode#spanned-}" -- "${command[@]}") ;;
    plain) use_wines_library; rm "$folder"/opengl32*.dll ;;
    *) echo "$name has an unknown mode, $mode"; return 0 ;;
  esac
  pushd "$folder" >/dev/null || return
  start_run "$seconds" "$log" "${command[@]}"
  popd >/dev/null || return
  finish_run || status=$?
  if [ "$status" -eq 0 ]; then
    echo "$name passed"
    rm -rf "$folder"
  else
    echo "$name $(run_words "$status")"
  fi
}
