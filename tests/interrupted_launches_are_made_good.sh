# Where a kill stops a launch, nothing half-made is in its place, and the next launch makes all that an
# undisturbed one makes.
set -e; source "$(dirname "$0")/launch.sh"
runtime B/vek-1
lay_out() { # FILE THAT IS LARGE
  rm -rf U/*
  for file in B/{vek-1/z,mrd-2.umo} 0/large 1/{due,kept,shared} 2/shared A/{kept,large,qrc__0.localstorage} 'A/Torvane Odrel 2.'{1,2}.unmarked; do put "$file" "$file"; done
  put $1 "$(printf %08500d)"
}
whole() {
  launch >launched
  tree
}
killed() { # when a file grows beyond 8192 bytes: shows what has been made of it
  (ulimit -c 0 -f 8; launch_and_changes) | grep ' 8192 '
}
check() { # LARGE FILE, WHERE IT IS MADE, WHAT THE USER DOES after the kill, or before an undisturbed launch
  lay_out $1
  $3
  whole >undisturbed
  lay_out $1
  expect killed <<<"> $2 600 8192 \"$(printf %020d)\""
  $3
  expect whole <undisturbed
}
check 0/large A/STAGED :
check 1/due A/STAGED :
check 2/shared A/STAGED :
check A/qrc__0.localstorage 'A/Local Storage/STAGED' :
check B/mrd-2.umo A/STAGED 'put A/mrd-2.umo/work mine'
check B/vek-1/z A/runtime/STAGED/z :
