source "$(dirname "$0")/launch.sh"
scenario 'Launches at once do together what they do one after the other'
put B/mrd-2.umo; runtime B/vek-2; printf '#!/bin/true\n' >"B/vek-2/$EXE"
for file in 0/a 0/b 1/a; do put $file; truncate -s 10M $file; done; rm -r A/runtime; cp -a U begin
twice() { # OPERATOR between the launches
  rm -r U; cp -a begin U; eval "odrel >first 2>&1 $1 odrel >second 2>&1"; wait; sort first second
  find U -type f -print0 | sort -z | xargs -0 cksum
}
twice ';' | short >in_turn; twice '&' | short | diff in_turn -
