# shellcheck shell=bash source=scripts/machine.bash
# Windows programs from a list, one after the other, each in a folder of its own. Sourced, not run; needs machine.bash
# and wine.bash. The form of a list stands at the top of tests/system/tests.list.

# run_wine_programs LIST FOLDER PREFIX [NAME...]: runs the programs of the list, or those named, and prints for each its
# name and "passed" or what went wrong. What a program printed is in FOLDER/NAME.log, which is empty before. Several may
# run one list into one folder at once, each in a prefix of its own: who takes a program first runs it.
run_wine_programs() {
  local list=$1 folder=$2 monitors="" path=0
  keep_images=1
  begin_wine "$3"
  unmanage test_pictures.exe reference.exe
  shift 3
  local name seconds wanted mode command
  # The list comes by a descriptor that no program reads.
  while IFS='|' read -r -u 6 name seconds wanted mode command; do
    read -r name <<<"$name"
    case $name in "" | \#*) continue ;; esac
    if [ $# -gt 0 ] && [[ " $* " != *" $name "* ]]; then continue; fi
    mkdir "$folder/$name.taken" 2>/dev/null || continue
    wanted=${wanted// /}
    if [ "$wanted" != "$monitors" ]; then
      monitors=$wanted
      set_monitors "$monitors"
    fi
    mode=${mode// /}
    if [[ "${mode#basic-}" == threaded* ]] && [ "$path" -ne 1 ]; then
      path=1
      set_threaded 1
    elif [[ "${mode#basic-}" == spanned* ]] && [ "$path" -ne 0 ]; then
      path=0
      set_threaded 0
    elif [[ "${mode#basic-}" == both* ]]; then
      path=-1
    fi
    run_wine_program "$name" "$((seconds))" "$mode" "$command" "$folder/$name"
  done 6<"$list"
}

# run_wine_program NAME SECONDS MODE COMMAND FOLDER: one program. Its folder is removed if it passes.
run_wine_program() {
  local name=$1 seconds=$2 mode=$3 folder=$5 log=$5.log program arguments status=0
  read -r program arguments <<<"$4"
  # The list's arguments are plain words.
  # shellcheck disable=SC2206
  arguments=($arguments)
  if ! stage "$folder" "$root/build/windows/$program" "$root/build/windows/oswctl.exe" 2>"$log"; then
    echo "$name cannot be run: the build has no $program, or a library is missing"
    return 0
  fi
  use_our_library
  local command=("$folder/$program" "${arguments[@]}")
  # Wine's server kills a process that takes long to leave, on a loaded machine any, and its status with it: the server
  # has the true one, and tells it to whoever waits by the platform's means, as oswctl does too.
  local waiting=(start /b /wait /unix) options=()
  if [[ "$mode" == basic-* ]]; then options=(--basic); fi
  case ${mode#basic-} in
    bypassed) command=("${waiting[@]}" "${command[@]}") ;;
    spanned | threaded | both)
      command=("$folder/oswctl.exe" run "${options[@]}" -- "${command[@]}")
      ;;
    spanned-2 | spanned-4 | threaded-2 | threaded-4 | both-2 | both-4)
      command=("$folder/oswctl.exe" run "${options[@]}" --parts "${mode##*-}" -- "${command[@]}")
      ;;
    plain)
      use_wines_library
      command=("${waiting[@]}" "${command[@]}")
      rm "$folder/opengl32.dll" "$folder/opengl32sys.dll"
      ;;
    *)
      echo "$name has an unknown mode, $mode"
      return 0
      ;;
  esac
  pushd "$folder" >/dev/null || return
  start_run "$seconds" "$log" "${command[@]}"
  popd >/dev/null || return
  finish_run || status=$?
  if has_image "$folder"; then status=127; fi
  if [ "$status" -eq 0 ]; then
    echo "$name passed"
    rm -rf "$folder"
  else
    echo "$name $(run_words "$status")"
    describe_faults "$log" "$folder"
    rm -f "$folder"/core "$folder"/core.*
    # Options that the program had set may still be there.
    reset_registry
  fi
}
