# shellcheck shell=bash source=scripts/machine.bash
# The viewer, shown and compared: the same picture as the viewer gives alone and over several parts. Sourced, not run;
# needs machine.bash, wine.bash and picture.bash.

results=$root/build/demo
run=$results/run
frames=200
width=1200
height=700
left=200
top=100

# begin_shows: empties the results and stages the viewer. A Wine prefix is there and the build is done.
begin_shows() {
  mkdir -p "$results"
  rm -f "$results"/*.*
  stage "$run" "$root/build/windows/viewer.exe" "$root/build/windows/oswctl.exe"
  unmanage viewer.exe
  cd "$run" || exit
}

# show NAME COMMAND...: runs the viewer by this command to its end. Leaves NAME.png, NAME.rate (pictures a second),
# NAME.switches (the driver's switches of contexts in a picture) and NAME.parts (one line for each part: number,
# X Y WIDTH HEIGHT, visible or hidden).
show() {
  local name=$1 ready=$run/ready status=0 x y w h
  shift
  say "running: $name"
  rm -f "$ready"
  start_run 150 "$results/$name.log" "$@" --frames "$frames" --frame 30 --size "${width}x$height" \
    --position "$left,$top" --ready "Z:$ready" --exit
  while run_goes_on && [ ! -s "$ready" ]; do sleep 0.1; done
  if [ -s "$ready" ]; then
    IFS=$' \r' read -r x y w h <"$ready"
    take_picture "$results/$name.screen.png"
    crop "$results/$name.screen.png" "${w}x$h+$x+$y" "$results/$name.png"
    rm "$results/$name.screen.png"
    timeout -k 5 30 "${wine[@]}" "$root/build/windows/parts.exe" viewer.exe 2>>"$results/$name.log" 8>&- |
      tr -d '\r' >"$results/$name.parts" || true
    rm "$ready"
  fi
  finish_run || status=$?
  if [ "$status" -ne 0 ]; then
    print_description "$results/$name.log" >&2
    # What the viewer itself says is clearest.
    die "$(grep -a -m 1 '^viewer: \|^oswctl: ' "$results/$name.log" || echo "the viewer, $name, $(run_words $status)")"
  fi
  [ "${x:-} ${y:-} ${w:-} ${h:-}" = "$left $top $width $height" ] || die "the window is not where it was asked for"
  sed -nE 's/.*, ([0-9.]+) frames per second.*/\1/p' "$results/$name.log" >"$results/$name.rate"
  sed -nE 's/.*, ([0-9.]+) context switches per frame.*/\1/p' "$results/$name.log" >"$results/$name.switches"
  [ -s "$results/$name.rate" ] || die "the viewer, $name, told no rate"
}

# find_seams NAME: the seams inside the picture, as x=600 or y=350 from its upper left corner, from the parts that are
# seen.
find_seams() {
  awk -v left=$left -v top=$top -v width=$width -v height=$height '
    function print_inner(edges, size, name, edge) {
      for (edge in edges) if (edge + 0 > 0 && edge + 0 < size) print name "=" edge
    }
    $6 == "visible" { xs[$2 - left]; ys[$3 - top] }
    END { print_inner(xs, width, "x"); print_inner(ys, height, "y") }
  ' "$results/$1.parts" | sort
}

# check_parts ALONE SPANNED: the parts must be there in one run and not in the other, and fill the picture: else two
# pictures without parts would agree.
check_parts() {
  local area
  [ ! -s "$results/$1.parts" ] || die "the run $1 has parts"
  area=$(awk '$6 == "visible" { area += $4 * $5 } END { print area + 0 }' "$results/$2.parts")
  [ "$area" -eq $((width * height)) ] ||
    die "the parts of the run $2 cover $area of $((width * height)) pixels, see ${results#"$root"/}/$2.parts"
  [ "$(count_colours "$results/$1.png")" -gt 100 ] || die "the picture $1 shows nothing"
}

# along ALONE SPANNED SEAM: prints how many pixels the band along a seam has, how many of them differ, and how many by
# more than rounding.
along() {
  local box
  box=$(seam_band "${3%=*}" "${3#*=}" $width $height)
  local one=$run/band-alone.png other=$run/band-spanned.png size=${box%%+*}
  crop "$results/$1.png" "$box" "$one"
  crop "$results/$2.png" "$box" "$other"
  echo "$((${size%x*} * ${size#*x})) $(count_differing "$one" "$other") $(count_differing "$one" "$other" $rounding)"
}

# compare_shows ALONE SPANNED: prints a table of the two runs; an end with status 1 if any pixel of the pictures differs.
compare_shows() {
  local alone=$1 spanned=$2 differing pixels=$((width * height)) good=1 seam seams count total visible
  local number x y w h seen
  check_parts "$alone" "$spanned"
  mapfile -t seams < <(find_seams "$spanned")
  [ ${#seams[@]} -gt 0 ] || die "no seam runs through the picture"
  differing=$(count_differing "$results/$alone.png" "$results/$spanned.png")
  printf '%-28s %12s %12s\n' "" "$alone" "$spanned"
  printf '%-28s %12d %12d\n' frames "$frames" "$frames"
  printf '%-28s %12s %12s\n' "frames per second" "$(<"$results/$alone.rate")" "$(<"$results/$spanned.rate")"
  printf '%-28s %12s %12s\n' "context switches per frame" "$(<"$results/$alone.switches")" \
    "$(<"$results/$spanned.switches")"
  printf '%-28s %12d %12d\n' parts 0 "$(wc -l <"$results/$spanned.parts")"
  while read -r number x y w h seen; do
    printf '%-28s %12s %12s\n' "  part $number, $seen" "" "${w}x$h+$x+$y"
  done <"$results/$spanned.parts"
  printf '%-28s %12s %12d  of %d, %s %%\n' "differing pixels" "" "$differing" "$pixels" \
    "$(awk -v n="$differing" -v all="$pixels" 'BEGIN { printf "%.4f", 100 * n / all }')"
  [ "$differing" -eq 0 ] || good=0
  for seam in "${seams[@]}"; do
    read -r total count visible < <(along "$alone" "$spanned" "$seam")
    printf '%-28s %12s %12d  of %d, %d by more than rounding\n' "  along the seam $seam" "" "$count" "$total" "$visible"
  done
  [ "$good" -eq 1 ] || die "the pictures differ, compare $alone.png and $spanned.png in ${results#"$root"/}"
}
