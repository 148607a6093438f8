# shellcheck shell=bash source=scripts/machine.bash
# Pictures of the X server's screen, and how two of them differ. Sourced, not run; needs machine.bash and ImageMagick.

# How far from a seam a pixel still belongs to its band, in pixels on each side.
band=4

# take_picture FILE: the whole screen, once it has stopped changing; after 10 s as it is then.
take_picture() {
  local before=$1.before.png tries
  timeout 20 import -silent -window root "$1"
  for ((tries = 0; tries < 20; ++tries)); do
    mv "$1" "$before"
    sleep 0.3
    timeout 20 import -silent -window root "$1"
    [ "$(count_differing "$before" "$1")" -ne 0 ] || break
  done
  rm -f "$before"
}

# crop FILE WIDTHxHEIGHT+X+Y RESULT
crop() {
  timeout 30 convert "$1" -crop "$2" +repage "$3"
}

# More than one step of 255 in a colour, and less than two.
rounding=0.5%

# count_differing A B [SHARE]: prints how many pixels of two pictures of one size differ, by more than this share of the
# full range if one is given, else at all.
count_differing() {
  local count
  # Its status is 1 when they differ. Large counts come as 1.5e+06, and newer versions add a share in parentheses.
  count=$(timeout 30 compare -metric AE -fuzz "${3:-0%}" "$1" "$2" null: 2>&1) || [ $? -eq 1 ] ||
    die "the pictures could not be compared"
  awk -v count="${count%% *}" 'BEGIN { printf "%d\n", count }'
}

# count_colours FILE: prints how many different colours a picture has.
count_colours() {
  timeout 30 identify -format '%k\n' "$1"
}

# seam_band x|y AT WIDTH HEIGHT: prints the band along a seam of a picture of this size, for crop. A seam x at 600 runs
# between columns 599 and 600.
seam_band() {
  if [ "$1" = x ]; then
    echo "$((2 * band))x$4+$(($2 - band))+0"
  else
    echo "$3x$((2 * band))+0+$(($2 - band))"
  fi
}

# annotate FILE RESULT WIDTH HEIGHT SEAM...: a copy with a thin line over each seam, given as x=600 or y=350.
annotate() {
  local from=$1 to=$2 width=$3 height=$4 seam lines=()
  shift 4
  for seam in "$@"; do
    case $seam in
      x=*) lines+=(-draw "line ${seam#x=},0 ${seam#x=},$height") ;;
      y=*) lines+=(-draw "line 0,${seam#y=} $width,${seam#y=}") ;;
    esac
  done
  timeout 30 convert "$from" -stroke '#ff4040' -strokewidth 1 +antialias "${lines[@]}" "$to"
}
