# One table from lines of: renderer, parts, way, nanoseconds a frame, switches of contexts in a frame. The ways stand
# side by side, in milliseconds; behind them the switches of the sequential one.
BEGIN {
  FS = "\t"
  count = split("threaded threaded-mirrored sequential", ways, " ")
}

{
  frame[$1, $2, $3] = sprintf("%.2f", $4 / 1e6)
  if ($3 == "sequential") switches[$1, $2] = $5
  if ($2 > 0 && !(($1, $2) in known)) {
    known[$1, $2]
    rows[++row_count] = $1 SUBSEP $2
  }
}

END {
  print "\nMilliseconds of a frame of the viewer, from the first of many to the last pixel of the last.\n"
  printf "%-9s %5s  %10s", "", "parts", "bypassed"
  for (i = 1; i <= count; ++i) printf "  %17s", ways[i]
  print "  switches in it"
  for (row = 1; row <= row_count; ++row) {
    split(rows[row], at, SUBSEP)
    printf "%-9s %5d  %10s", at[1], at[2], frame[at[1], 0, "bypassed"]
    for (i = 1; i <= count; ++i) printf "  %17s", frame[at[1], at[2], ways[i]]
    printf "  %14s\n", switches[at[1], at[2]]
  }
}
