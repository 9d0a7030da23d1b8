# Launches at once take turns: together they do what they do one after the other.
set -e; source "$(dirname "$0")/launch.sh"
put B/mrd-1.umo; runtime B/vek-1
printf '#!/bin/true\n' >'B/vek-1/Torvane Odrel.app/Contents/MacOS/Torvane Umo'
launch_twice() { # OPERATOR between the launches
  rm -rf U/*
  for file in 0/a 0/b 1/a; do put $file; truncate -s 30M $file; done
  eval "odrel >first 2>&1 $1 odrel >second 2>&1"; wait
  sort first second
}
launch_twice ';' >in_turn; expect launch_twice '&' <in_turn
