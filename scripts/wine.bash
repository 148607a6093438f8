# shellcheck shell=bash source=scripts/machine.bash
# Windows programs on this machine: an X server and a Wine prefix of the script's own, and runs that cannot hang.
# Sourced, not run; needs machine.bash. Everything that is started here is ended by stop_wine, which an EXIT trap calls.
#
# The prefix stands below build/wine/, one for each script, so that two scripts can run at once.

# shellcheck source=scripts/hang.bash
. "$root/scripts/hang.bash"

# How a Windows program is started. The heap of Wine's loader, which stands at a fixed address, begins anywhere within the
# gigabyte behind it: once in some thousand starts where Wine must have a page of its own, and the program does not
# start. So addresses are not chosen at random, where the machine lets one say so.
wine=(wine)
if setarch -R true 2>/dev/null; then wine=(setarch -R wine); fi

xvfb_pid=
# Whether a process that the kernel ends for a fault leaves an image of its memory in its folder.
keep_images=
# Whether the programs that run, if any, have found just the one monitor that a new X server has.
monitors_are_new=
screen_size=1600x900

# begin_wine NAME: the script's own X server and prefix, made if they are missing and put into a known state: one
# monitor, no options of ours in the registry. Exports DISPLAY and what Wine needs. One script of a name runs at a time.
begin_wine() {
  # Before there is anything that an end would take down: what runs while this waits is the other script's.
  mkdir -p "$root/build/wine"
  exec 8>"$root/build/wine/$1.lock"
  flock -n 8 || { say "another $1 is running in this tree, waiting for it"; flock -w 1800 8 || die "it did not end"; }
  trap stop_wine EXIT
  trap 'exit 130' INT
  trap 'exit 143' TERM HUP
  if [ -z "${keep_display:-}" ] || [ -z "${DISPLAY:-}" ]; then
    start_xvfb "$1"
    monitors_are_new=1
  fi
  timeout 20 xdpyinfo >/dev/null 2>&1 || die "the X server $DISPLAY does not answer"
  wine_environment "$1"
  if [ ! -e "$WINEPREFIX/osw-ready" ]; then
    make_prefix
    # The first program to come finds them before it is told how.
    monitors_are_new=
  fi
  install_host_library
  reset_registry
}

wine_environment() {
  export WINEPREFIX=$root/build/wine/$1 WINEARCH=win64
  # Else a file may have no name beyond ASCII.
  export LC_ALL=C.UTF-8
  # A message box is traced, so that watch_run sees it; all else is silent.
  export WINEDEBUG=${WINEDEBUG:--all,+msgbox}
  # A host that was named before is the one that is wanted.
  export WINEDLLPATH=$root/build/wine/host-library OSW_DRIVER_HOST=${OSW_DRIVER_HOST:-opengl32host.dll}
  unset WAYLAND_DISPLAY
  mkdir -p "$root/build/wine"
  use_our_library
}

# Which opengl32.dll the next program gets: ours, from its own folder, or Wine's.
use_our_library() {
  export WINEDLLOVERRIDES="opengl32=n;opengl32sys=n;mscoree,mshtml="
}
use_wines_library() {
  export WINEDLLOVERRIDES="mscoree,mshtml="
}

start_xvfb() {
  command -v Xvfb >/dev/null || die "no X server: Xvfb is not installed"
  local number=$root/build/wine/$1.display tries
  mkdir -p "$root/build/wine"
  : >"$number"
  # Without -noreset the server forgets its monitors when the last program has gone.
  Xvfb -displayfd 7 -noreset -screen 0 "${screen_size}x24" +extension GLX +extension RANDR \
    7>"$number" >"$root/build/wine/$1.xvfb.log" 2>&1 8>&- &
  xvfb_pid=$!
  for ((tries = 0; tries < 150; ++tries)); do
    if [ -s "$number" ]; then
      DISPLAY=:$(<"$number")
      export DISPLAY
      return
    fi
    kill -0 "$xvfb_pid" 2>/dev/null || break
    sleep 0.1
  done
  die "the X server did not start, see build/wine/$1.xvfb.log"
}

# Each is a copy of one that is made once, and shares its files: but for those of the registry, which the server writes
# where they are, nobody changes one.
make_prefix() {
  say "making a Wine prefix: ${WINEPREFIX#"$root"/}"
  local pattern=$root/build/wine/pattern file
  rm -rf "$WINEPREFIX"
  (
    flock -w 300 5 || die "another script does not come to an end with build/wine/pattern"
    [ -e "$pattern/osw-ready" ] || make_pattern "$pattern"
  ) 5>"$pattern.lock" || exit 1
  cp -al "$pattern" "$WINEPREFIX" 2>/dev/null || { rm -rf "$WINEPREFIX" && cp -a "$pattern" "$WINEPREFIX"; }
  for file in "$WINEPREFIX"/*.reg "$WINEPREFIX/.update-timestamp"; do
    cp -p "$file" "$file.own"
    mv "$file.own" "$file"
  done
}

# make_pattern FOLDER: the prefix that others are copies of.
make_pattern() {
  local -x WINEPREFIX=$1
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  timeout -k 5 180 "${wine[@]}" wineboot -i >"$WINEPREFIX.log" 2>&1 5>&- 8>&- || die "wineboot failed, see ${WINEPREFIX#"$root"/}.log"
  timeout -k 5 60 wineserver -w || die "the new Wine prefix does not come to rest"
  : >"$WINEPREFIX/osw-ready"
}

# The reference driver stands on Wine's own library, under a name that nothing else has.
install_host_library() {
  local wines
  wines=$(packaged_file libwine /x86_64-windows/opengl32.dll) || die "Wine's own opengl32.dll was not found"
  local libraries=${wines%/x86_64-windows/*} into=$WINEDLLPATH
  mkdir -p "$into/x86_64-windows" "$into/x86_64-unix"
  # Two scripts may come here at once.
  (
    flock -w 60 6
    cp -u "$wines" "$into/x86_64-windows/opengl32host.dll"
    cp -u "$libraries/x86_64-unix/opengl32.so" "$into/x86_64-unix/opengl32host.so"
  ) 6>"$into.lock"
  cp -u "$wines" "$WINEPREFIX/drive_c/windows/system32/opengl32host.dll"
}

# A crash ends the program with a backtrace in its log and no window; monitors are those that set_monitors says.
reset_registry() {
  cat >"$WINEPREFIX/osw.reg" <<'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"UseXRandR"="N"

[-HKEY_LOCAL_MACHINE\Software\Z4graphics\OGLSPANWrapper]
REG
  timeout -k 5 60 "${wine[@]}" regedit /S "Z:$WINEPREFIX/osw.reg" >>"$WINEPREFIX.log" 2>&1 8>&- ||
    die "the registry of the Wine prefix could not be written, see ${WINEPREFIX#"$root"/}.log"
}

# unmanage PROGRAM...: their windows expect no window manager, as none is there. Others' wait for its answer when they are
# destroyed, for two seconds each.
unmanage() {
  local program
  {
    printf 'REGEDIT4\n\n'
    for program in "$@"; do
      printf '[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\%s\\X11 Driver]\n"Managed"="N"\n\n' "$program"
    done
  } >"$WINEPREFIX/unmanaged.reg"
  timeout -k 5 60 "${wine[@]}" regedit /S "Z:$WINEPREFIX/unmanaged.reg" >>"$WINEPREFIX.log" 2>&1 8>&- ||
    die "the registry of the Wine prefix could not be written, see ${WINEPREFIX#"$root"/}.log"
}

# Monitors by name: the size of each and its place on the X server's screen. The desktop's 0,0 is the upper left corner
# of the one with a star, or else of the first.
declare -A arrangements=(
  [row-from-the-right]="533x900+0+0 534x900+533+0 *533x900+1067+0"
  [grid-from-below]="701x411+0+0 899x411+701+0 701x489+0+411 *899x489+701+411"
  [uneven]="700x900+0+0 900x400+700+0 *800x500+700+400"
)

# set_monitors COUNT|NAME: one monitor of the whole screen, COUNT side by side, or those of the name, for programs
# started from now on.
set_monitors() {
  [[ -v arrangements[$1] || "$1" =~ ^[1-9][0-9]?$ ]] || die "no monitors are called $1; there are: ${!arrangements[*]}"
  # Wine takes seconds to start anew.
  if [ "$1" = 1 ] && [ -n "$monitors_are_new" ]; then
    await_monitors 1
    return
  fi
  monitors_are_new=
  end_programs
  lay_out_monitors "$1"
}

# lay_out_monitors COUNT|NAME: tells the X server, and waits until Wine knows. No program may run.
lay_out_monitors() {
  local name area primary output=screen number=0 areas=()
  while read -r name; do xrandr --delmonitor "$name" &>/dev/null || true; done < <(
    xrandr --listmonitors | sed -nE 's/^ *[0-9]+: [+*]*(osw[0-9]+) .*/\1/p')
  read -r -a areas <<<"${arrangements[$1]:-$(row_of_monitors "$1")}"
  for area in "${areas[@]}"; do
    primary=${area%%[0-9]*}
    # Xrandr wants a size in millimetres too.
    area=$(sed -E 's/^\**([0-9]+)x([0-9]+)/\1\/200x\2\/200/' <<<"$area")
    xrandr --setmonitor "${primary}osw$number" "$area" "$output" >/dev/null
    output=none
    number=$((number + 1))
  done
  await_monitors "$((number > 0 ? number : 1))"
}

# await_monitors COUNT: the first program finds the monitors out for those that come after it. On a loaded machine it has
# been late with them, and the next had the monitors of before.
await_monitors() {
  local tries said=
  for tries in 1 2 3 4 5; do
    said=$(timeout -k 5 60 "${wine[@]}" "$root/build/windows/oswctl.exe" status 2>>"$WINEPREFIX.log" 8>&- | sed -n '1{s/\r$//;p}') ||
      true
    case $said in "$1 monitor" | "$1 monitors") return ;; esac
    end_programs
  done
  die "Wine has not come to $1 monitors in $tries tries, it says: $said"
}

# row_of_monitors COUNT: prints as many side by side; one is the screen itself, and no monitor of ours.
row_of_monitors() {
  local width=${screen_size%x*} height=${screen_size#*x} i left right
  [ "$1" -gt 1 ] || return 0
  for ((i = 0; i < $1; ++i)); do
    left=$((width * i / $1)) right=$((width * (i + 1) / $1))
    printf '%dx%d+%d+0 ' $((right - left)) "$height" $left
  done
}

# set_threaded 0|1: whether programs started from now on take the threaded path in any case.
set_threaded() {
  set_option OSW_DW_GLDispatchUseMtPath "$1"
}

# set_option NAME VALUE: for programs started from now on.
set_option() {
  timeout -k 5 60 "${wine[@]}" "$root/build/windows/oswctl.exe" set "$1" "$2" >>"$WINEPREFIX.log" 2>&1 8>&- ||
    die "oswctl set $1 failed, see ${WINEPREFIX#"$root"/}.log"
}

# end_programs: ends all of the prefix's programs and its server.
end_programs() {
  timeout -k 5 20 wineserver -k 2>/dev/null || true
  timeout -k 5 20 wineserver -w 2>/dev/null || true
}

# stage FOLDER PROGRAM...: an empty FOLDER with copies of the programs and of both libraries, as an installed program
# has them. A program's shared section belongs to its copy of the library.
stage() {
  local folder=$1
  shift
  rm -rf "$folder"
  mkdir -p "$folder"
  cp "$@" "$root/build/windows/opengl32.dll" "$root/build/windows/opengl32sys.dll" "$folder"
}

# start_run SECONDS LOG PROGRAM ARGS...: starts a Windows program in the background, with what it prints in LOG. With 0
# SECONDS it may run for ever. Sets run_pid, run_log and run_until.
start_run() {
  local seconds=$1
  run_until=$((seconds > 0 ? SECONDS + seconds : 0))
  run_log=$2
  shift 2
  : >"$run_log"
  # finish_run is there first, and looks at what goes on before it ends it.
  (
    [ -z "$keep_images" ] || ulimit -c unlimited || true
    exec timeout -k 5 "$((seconds > 0 ? seconds + 120 : 0))" "${wine[@]}" "$@"
  ) >"$run_log" 2>&1 </dev/null 8>&- &
  run_pid=$!
}

run_alive() {
  kill -0 "$run_pid" 2>/dev/null
}

run_overdue() {
  [ "$run_until" -gt 0 ] && [ "$SECONDS" -ge "$run_until" ]
}

# The run may be waited for: it is alive, within its time, and shows no message box.
run_goes_on() {
  run_alive && ! run_overdue && ! run_stuck
}

# The text of a message box that the run shows, on one line; no result and no output if it shows none.
run_message_box() {
  grep -a -m 1 ':msgbox:' "$run_log"
}

# The run waits at a message box that nobody can see or answer.
run_stuck() {
  [ -n "$xvfb_pid" ] && run_message_box >/dev/null
}

# finish_run: waits for the run to end and gives its status: 124 after the time limit, 125 for a message box, 126 when the
# X server refused what one of its processes asked, which ends the process without a status of its own.
finish_run() {
  while run_alive; do
    if run_stuck; then
      sleep 1
      import -window root "$run_log.png" 2>/dev/null || true
      end_programs
      wait "$run_pid" || true
      return 125
    fi
    if run_overdue; then
      describe_run "$run_log"
      end_programs
      kill "$run_pid" 2>/dev/null || true
      wait "$run_pid" || true
      return 124
    fi
    sleep 0.1
  done
  local status=0
  wait "$run_pid" || status=$?
  if grep -aq '^X Error of failed request' "$run_log"; then
    status=126
  fi
  return "$status"
}

# run_words STATUS: what a status of finish_run means, or 127 for a run that left an image of its memory.
run_words() {
  case $1 in
    0) echo "ended well" ;;
    124) echo "did not end within its time" ;;
    125) echo "showed a message box: $(run_message_box)" ;;
    126) echo "had an error of the X server's: $(grep -a -m 1 '^X Error of failed request' "$run_log")" ;;
    127) echo "was ended by a fault outside of what Wine sees, its status says nothing" ;;
    *) echo "ended with status $1" ;;
  esac
}

# stop_wine: ends everything that begin_wine and the runs have started.
stop_wine() {
  trap - EXIT
  [ -z "${WINEPREFIX:-}" ] || end_programs
  [ -z "$xvfb_pid" ] || kill "$xvfb_pid" 2>/dev/null || true
  [ -z "$xvfb_pid" ] || wait "$xvfb_pid" 2>/dev/null || true
}

# need_64_bit PROGRAM: an end with a plain sentence if the file is no 64-bit Windows program.
need_64_bit() {
  [ -e "$1" ] || wrong_use "$1 does not exist"
  if [ ! -f "$1" ] || [ ! -r "$1" ]; then
    wrong_use "$1 cannot be read"
  fi
  local header machine
  [ "$(head -c 2 "$1")" = MZ ] || wrong_use "$1 is not a Windows program"
  header=$(($(od -An -t u4 -j 60 -N 4 "$1")))
  [ "$(od -An -c -j "$header" -N 4 "$1" 2>/dev/null | tr -d ' ')" = 'PE\0\0' ] ||
    wrong_use "$1 is not a Windows program"
  machine=$(od -An -t x2 -j $((header + 4)) -N 2 "$1" | tr -d ' ')
  [ "$machine" = 8664 ] || wrong_use "$1 is not a 64-bit program (machine type 0x$machine)"
}
