# shellcheck shell=bash source=scripts/machine.bash
# What the processes of a run do that has not come to its end in time, and where a process was that the kernel has ended.
# Sourced by wine.bash.

# What stands above it in a log.
hang_heading="What its processes did when its time was over:"
fault_heading="Where a process was when the kernel ended it:"

# wine_processes: the ids of the prefix's processes, one a line.
wine_processes() {
  local process
  for process in /proc/[0-9]*; do
    if [[ "$(readlink "$process/exe" 2>/dev/null)" == */wine* ]] &&
      grep -qzxF "WINEPREFIX=$WINEPREFIX" "$process/environ" 2>/dev/null; then
      echo "${process#/proc/}"
    fi
  done
}

# command_of PROCESS: its command line, on one line.
command_of() {
  { tr '\0' ' ' <"/proc/$1/cmdline" | sed 's/ *$//'; } 2>/dev/null || true
}

# ticks_of PROCESS: lines of a thread and the clock ticks for which it has been busy.
ticks_of() {
  cat /proc/"$1"/task/*/stat 2>/dev/null |
    sed -nE 's/^([0-9]+) \(.*\) . ([^ ]+ ){10}([0-9]+) ([0-9]+) .*/\1 \3 \4/p' | awk '{ print $1, $2 + $3 }'
}

# describe_process PROCESS BEFORE: its threads, each with what the kernel knows of it, and how long it has been busy
# since its ticks were BEFORE, a second ago.
describe_process() {
  local process=$1 thread ticks name state where
  declare -A before=()
  while read -r thread ticks; do before[$thread]=$ticks; done <<<"$2"
  printf 'process %s: %s\n' "$process" "$(command_of "$process")"
  while read -r thread ticks; do
    name=$(cat "/proc/$process/task/$thread/comm" 2>/dev/null) || continue
    state=$(sed -n 's/^State:[[:space:]]*//p' "/proc/$process/task/$thread/status" 2>/dev/null) || continue
    where=$(cat "/proc/$process/task/$thread/wchan" 2>/dev/null) || where=unknown
    printf '  thread %s, %s: %s in %s, busy for %d %% of a second\n' "$thread" "$name" "$state" "$where" \
      $(((ticks - ${before[$thread]:-$ticks}) * 100 / $(getconf CLK_TCK)))
  done < <(ticks_of "$process")
}

# trace_process PROCESS SECONDS: where its threads are, if a debugger is installed that can tell it within the time.
trace_process() {
  printf 'backtraces of process %s:\n' "$1"
  timeout -k 2 "$2" gdb -nx -batch -iex 'set debuginfod enabled off' -p "$1" -ex 'thread apply all -q backtrace 12' \
    2>/dev/null </dev/null | sed -nE 's/^Thread|^#/  &/p' || true
}

# describe_run LOG: adds to the log what its last lines were, what the threads of the prefix's processes and of the X
# server do, and, with gdb, where those are of the processes that are not Wine's own. Takes a second, with gdb up to 30
# more.
describe_run() {
  local log=$1 last process processes until
  declare -A ticks=()
  last=$(tail -n 15 "$log")
  mapfile -t processes < <(wine_processes)
  for process in ${xvfb_pid:+"$xvfb_pid"} "${processes[@]}"; do ticks[$process]=$(ticks_of "$process"); done
  sleep 1
  {
    printf '\n%s\n' "$hang_heading"
    printf 'the last lines before:\n%s\n' "$(sed 's/^/  /' <<<"$last")"
    for process in ${xvfb_pid:+"$xvfb_pid"} "${processes[@]}"; do
      describe_process "$process" "${ticks[$process]}"
    done
    if command -v gdb >/dev/null; then
      until=$((SECONDS + 30))
      for process in "${processes[@]}"; do
        case $(command_of "$process") in [Cc]:\\windows\\* | *wineserver*) continue ;; esac
        [ "$SECONDS" -ge "$until" ] || trace_process "$process" $((until - SECONDS))
      done
    fi
  } >>"$log" 2>&1 8>&-
}

# has_image FOLDER: whether a process that a fault has ended left an image of its memory there (keep_images).
has_image() {
  compgen -G "$1/core" >/dev/null || compgen -G "$1/core.*" >/dev/null
}

# describe_faults LOG FOLDER: adds to the log where the threads were of the processes that left an image of their memory
# in the folder (keep_images), the one with the fault first. So it goes with a fault in a thread of the renderer's own, of
# which Wine knows nothing: the process is gone without a word, and its status may be 0. Needs eu-stack, and a kernel that
# leaves images in the current folder.
describe_faults() {
  local log=$1 image last
  if ! has_image "$2" || ! command -v eu-stack >/dev/null; then
    return 0
  fi
  last=$(grep -av '^ok ' "$log" | tail -n 40)
  for image in "$2"/core "$2"/core.*; do
    [ -f "$image" ] || continue
    printf '\n%s\n' "$fault_heading"
    printf 'the last lines before:\n%s\n' "$(sed 's/^/  /' <<<"$last")"
    timeout -k 2 30 eu-stack -m -n 16 --core="$image" 2>&1 | head -n 200 || true
  done >>"$log"
}

# has_description LOG: whether describe_run or describe_faults has added to it.
has_description() {
  grep -aqx "$hang_heading\|$fault_heading" "$1"
}

# print_description LOG: what those have added to the log, if they have; the log has all that is left out here.
print_description() {
  sed -n "/^\($hang_heading\|$fault_heading\)\$/,\$p" "$1" | head -n 400
}
