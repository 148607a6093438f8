# From what the library with statistics tells the debugger after each frame: how often the issuing thread waited in a
# frame, for each op that made it wait. The figures rise over the frames of a binding, and begin with its set-up.
/sync info .*total [0-9]+ frames/ {
  match($0, /total [0-9]+/)
  frames = substr($0, RSTART + 6, RLENGTH - 6)
}

frames > 0 && / sync num: / && /"__osw_/ {
  match($0, /"__osw_[^ ]*/)
  reason = substr($0, RSTART + 7, RLENGTH - 7)
  sub(/_op$/, "", reason)
  note(reason)
}

frames > 0 && /cmd buffer full num: / {
  note("list full")
}

function note(reason) {
  match($0, /num: [0-9]+/)
  if (!first_frame) first_frame = frames
  if (frames == first_frame) first[reason] = substr($0, RSTART + 5, RLENGTH - 5)
  last[reason] = substr($0, RSTART + 5, RLENGTH - 5)
  last_frame = frames
}

END {
  if (last_frame <= first_frame) exit
  for (reason in last) {
    waits = (last[reason] - first[reason]) / (last_frame - first_frame)
    if (waits > 0) printf "%-9s %-20s %-26s %.3f\n", renderer, way ", " parts, reason, waits
  }
}
