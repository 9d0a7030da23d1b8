# Where a kill stops a launch, nothing half-made is in its place, and the next launch makes all that
# an undisturbed one makes.
set -e; source "$(dirname "$0")/launch.sh"
runtime B/vek-1
lay_out() {
  rm -rf U/*
  for file in B/{mrd-2.umo,vek-1/z} {0,A}/first 1/repeated {0,1}/shared A/qrc__0.localstorage \
    'A/Torvane Odrel 2.1.unmarked'; do put "$file" "$file"; done
}
whole() { launch >launched; tree; }; lay_out; whole >undisturbed

killed() { # LARGE FILE, ITS PLACE: shows how a kill changes that, and parts, while it is copied
  truncate -s 1G "$1"; tree >before
  env -i "${environment[@]}" B/odrel >/dev/null 2>&1 &
  until [ -n "$(find U -name '.Torvane Odrel.part' -size +99k)" ]; do kill -0 $!; done
  kill -9 $!; wait $! 2>/dev/null || true
  tree | { diff before - || true; } | grep -e STAGED -e " $2" | sed -E 's/(STAGED [0-7]+) .*/\1/'
}
check() { # LARGE FILE, ITS PLACE, WHERE IT LIES TILL THEN
  lay_out; expect killed "$1" "$2" <<<"> $3 600"
  put "$1" "$1"; expect whole <undisturbed
}
check 0/first A/first A/STAGED
check 1/repeated A/repeated A/STAGED
check A/qrc__0.localstorage 'A/Local Storage/umop' 'A/Local Storage/STAGED'
check B/mrd-2.umo A/mrd-2.umo A/STAGED
check B/vek-1/z A/runtime/vek-1 A/runtime/STAGED/STAGED
