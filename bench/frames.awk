# One table from lines of: renderer, parts, way, milliseconds that pass in a frame, milliseconds for which the processors
# are busy, switches of contexts in it. The ways stand side by side; behind them the switches of the sequential one.
BEGIN {
  FS = "\t"
  count = split("threaded threaded-mirrored sequential", ways, " ")
}

{
  passed[$1, $2, $3] = $4
  busy[$1, $2, $3] = $5
  if ($3 == "sequential") switches[$1, $2] = $6
  if ($2 > 0 && !(($1, $2) in known)) {
    known[$1, $2]
    rows[++row_count] = $1 SUBSEP $2
  }
}

function print_line(renderer, parts, kind, cells, last,   i) {
  printf "%-13s %-6s  %8s", kind == "busy" ? renderer ", " parts : "", kind, cells[renderer, 0, "bypassed"]
  for (i = 1; i <= count; ++i) printf "  %17s", cells[renderer, parts, ways[i]]
  printf "  %14s\n", last
}

END {
  print "\nMilliseconds of a frame of the viewer, from the first of many to the last pixel of the last."
  print "busy: of all processors together, for this program; passed: by the clock.\n"
  printf "%-13s %-6s  %8s", "parts", "", "bypassed"
  for (i = 1; i <= count; ++i) printf "  %17s", ways[i]
  print "  switches in it"
  for (row = 1; row <= row_count; ++row) {
    split(rows[row], at, SUBSEP)
    print_line(at[1], at[2], "busy", busy, switches[at[1], at[2]])
    print_line(at[1], at[2], "passed", passed, "")
  }
}
