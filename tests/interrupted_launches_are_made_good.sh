# Where a kill or a full disk stops a launch, nothing half-made is in its place, and the next launch
# makes all that an undisturbed one makes. No file grows beyond 8192 bytes meanwhile.
set -e; source "$(dirname "$0")/launch.sh"
runtime B/vek-1
files=(B/vek-1/z 0/wide 1/due 2/shared A/qrc__0.localstorage B/mrd-2.umo)
lay_out() { # FILE THAT IS TOO LARGE...: the first only at its end
  local file
  rm -rf U/*
  for file in "${files[@]}" [01]/shared 1/kept A/{kept,wide}; do put $file "$file"; done
  for file in 0/first 1/shared; do put $file "$file"; done
  for old in 1 2; do put "A/Torvane Odrel 2.$old.unmarked"; done
  put $1 "$(printf %08500d)"
  for file in "${@:2}"; do put $file "$(printf %030000d)"; done
}
whole() {
  launch >launched
  tree
}
limited() { (ulimit -c 0 -f 8; launch_and_changes); }
full() { (trap '' XFSZ; limited); }

check_killed() { # FILE PART OWN: what the user puts in the file's place after the kill, or before an undisturbed launch
  lay_out $1
  $3
  whole >undisturbed
  lay_out $1
  limited >killed
  expect grep ' 8192 ' killed <<<"> $2 600 8192 \"$(printf %020d)\""
  $3
  expect whole <undisturbed
}
check_killed 0/wide A/PART :
check_killed 1/due A/PART :
check_killed 2/shared A/PART :
check_killed A/qrc__0.localstorage 'A/Local Storage/PART' :
check_killed B/mrd-2.umo A/PART :
check_killed B/mrd-2.umo A/PART 'put A/mrd-2.umo/work mine'
check_killed B/vek-1/z A/runtime/PART/z :

lay_out "${files[@]}"
whole >undisturbed
lay_out "${files[@]}"
expect full <<'END'
Dianostics: ON
Migrating application data from "0" to "A"
Migrating application data from "1" to "A"
Migrating application data from "2" to "A"
Migrating localStorage from "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
--
0/first => A/first
0/wide => A/wide: not whole; told
1/due => A/due: not whole; told
1/shared => A/shared
2/shared => A/shared: not whole; told
A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage: not whole
Failed to migrate localStorage "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
Priming A/mrd-2.umo
B/mrd-2.umo => A/mrd-2.umo: not whole
Failed to prime Odrel app package "mrd-2.umo"
Unable to find an Odrel app package on the system
-- exit code 2
> A/Local Storage/ 755
> A/Torvane Odrel 2.0.unmarked 644 0 ""
> A/first 644 7 "0/first"
END
rm A/wide  # what was there before has stayed
expect whole <undisturbed
