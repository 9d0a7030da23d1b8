source "$(dirname "$0")/launch.sh"

loads() { # PACKAGE|none, version.txt in A|- and in B|-, PACKAGE in A...
  scenario "With the version files $2 and $3, of ${*:4} $1 is loaded"
  rm A/mrd-1.umo; for package in "${@:4}"; do put "A/$package"; done
  [ "$2" = - ] || put A/version.txt "$2"; [ "$3" = - ] || put B/version.txt "$3"
  if [ "$1" = none ]; then launch no_package; else launch "usually vek-1 '$1'"; fi
}
loads mrd-2.2.9.umo - - mrd-2.2.9.umo mrd-2.2.10.umo mrd-3.umo.bak zmrd-1.umo
loads mrd-2.umo - - MRD-3.0.UMO mrd-2.umo
loads MRD-3.0.UMO - - MRD-3.0.UMO
loads mrd-2.2.10.umo '2.2.10\nmore' 2.2.9 mrd-2.2.9.umo mrd-2.2.10.umo
loads mrd-2.2.10.umo - 2.2.10 mrd-2.2.9.umo mrd-2.2.10.umo
loads none '2\r\n' - mrd-2.umo
loads none '' 2 mrd-2.umo
loads mrd-2.2.2.umo '2.2.*' - mrd-2.2.1.umo mrd-2.2.2.umo mrd-2.3.umo
loads 'mrd-\x.umo' '\\x' - 'mrd-\x.umo' mrd-x.umo

scenario 'The greatest runtime is started, and no other where that one has no executable'
for name in vek-10 vek-9 VEK-99; do runtime A/runtime/$name; done
launch 'usually vek-9'
no_runtime() { usually | sed '4,$cUnable to find a Vekara runtime on the system\nexit code 4'; }
put A/runtime/zzz/other; launch no_runtime; rm -r A/runtime; launch no_runtime
dir A/runtime; launch no_runtime; runtime 'A/runtime/.Torvane Odrel.part.1'; launch no_runtime
