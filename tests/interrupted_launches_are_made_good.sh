source "$(dirname "$0")/launch.sh"

lay_out() { # SENTENCE
  scenario "$1"
  runtime B/vek-2; listed 1
  for file in B/{mrd-2.umo,vek-2/z} A/{x,qrc__0.localstorage} {0,1}/x 1/y; do put $file $file; done
}
outcome() { odrel >lines 2>&1; cat record; tree; }
lay_out 'A launch is not disturbed'; outcome >undisturbed

killed() { # FILE PLACE: while the one is copied to the other
  lay_out "A kill while $1 is copied leaves its place, and is made good"
  truncate -s 100G "$1"; cat "$2" >before 2>&1 || true
  (ulimit -f 8000000; exec env -i "${environment[@]}" B/odrel >lines 2>&1) &
  until part=$(find U -name '*.part' -size +99k 2>/dev/null); [ "$part" ]; do kill -0 $!; done
  kill -9 $!; wait $! 2>/dev/null || true
  { cat "$2" 2>&1 || true; } | diff before -; diff <(echo 600) <(stat -c %a "$part")
  put "$1" "$1"; outcome | diff undisturbed -
}
killed 0/x A/x
killed 1/y A/y
killed A/qrc__0.localstorage 'A/Local Storage/umop__0.localstorage'
killed B/mrd-2.umo A/mrd-2.umo
killed B/vek-2/z A/runtime/vek-2
