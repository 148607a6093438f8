# One table from lines of: way, parts, call, nanoseconds that pass, nanoseconds that the thread is busy (may be empty).
# The first line of a way tells of an empty loop, which is taken off its other figures.
BEGIN { FS = "\t" }

$3 == "nothing" {
  passed_in_loop[$1, $2] = $4
  busy_in_loop[$1, $2] = $5
}

{
  if (!(($1, $2) in known_way)) {
    known_way[$1, $2]
    ways[++way_count] = $1 SUBSEP $2
  }
  if (!($3 in known_call)) {
    known_call[$3]
    calls[++call_count] = $3
  }
  loop = $3 != "nothing"
  passed[$1, $2, $3] = shown($4, loop * passed_in_loop[$1, $2])
  busy[$1, $2, $3] = shown($5, loop * busy_in_loop[$1, $2])
}

# Three digits; a unit where it is not nanoseconds.
function shown(nanoseconds, less) {
  if (nanoseconds == "") return "-"
  nanoseconds -= less
  if (nanoseconds < 1000) return sprintf(nanoseconds < 99.95 ? "%.1f" : "%.0f", nanoseconds)
  if (nanoseconds < 1e6) return sprintf(nanoseconds < 99950 ? "%.1f us" : "%.0f us", nanoseconds / 1000)
  return sprintf(nanoseconds < 99.95e6 ? "%.1f ms" : "%.0f ms", nanoseconds / 1e6)
}

function print_line(head, kind, cells, way,   i, name) {
  printf "%-20s %-6s", head, kind
  for (i = 1; i <= call_count; ++i) {
    name = way SUBSEP calls[i]
    print_cell(name in cells ? cells[name] : "-", calls[i])
  }
  printf "\n"
}

function print_cell(text, call) {
  printf "  %*s", length(call) < 8 ? 8 : length(call), text
}

END {
  print "Nanoseconds a call on the thread that makes it, less the empty loop (nothing): the least of 5 runs."
  print "busy: processor time of that thread; passed: by the clock, with its waits for the parts.\n"
  printf "%-20s %-6s", "way, parts", ""
  for (i = 1; i <= call_count; ++i) print_cell(calls[i], calls[i])
  printf "\n"
  for (i = 1; i <= way_count; ++i) {
    split(ways[i], each, SUBSEP)
    print_line(each[1] (each[2] > 0 ? ", " each[2] : ""), "busy", busy, ways[i])
    print_line("", "passed", passed, ways[i])
  }
}
