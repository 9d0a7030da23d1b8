# The greatest package that fits the version file is loaded by the greatest runtime, from the user
# data directory, in which only the application's is created.
set -e; source "$(dirname "$0")/launch.sh"
check_data_directory() { # DIRECTORY XDG_DATA_HOME: first it is missing, then a file
  environment=(HOME="$root/home" XDG_DATA_HOME="$2")
  for step in : "put $1" "rm $1; mkdir $1"; do eval "$step"; no_package | expect launch; done
}
check_data_directory home/.local/share x; test -d 'home/.local/share/Torvane/Torvane Odrel 2.2'
deep=$root/U$(printf '/%0200d' 0 0 0 0)/; longest=$deep$(printf "%0$((1023 - ${#deep}))d")
check_data_directory "$longest" "$longest/"
test -d "$longest/Torvane/Torvane Odrel 2.2"
check_data_directory "${longest}0" "${longest}0"
test ! -e "${longest}0/Torvane" -a -z "$(find / -maxdepth 1 -name Torvane -newer B/odrel)"

environment=(XDG_DATA_HOME="$root/U")
put U/Torvane; expect launch <<<$'Failed to create Odrel app data directory "A"\n-- exit code 1'
rm U/Torvane; mkdir U/Torvane; mkfifo "$(readlink -m A)"; no_package | expect launch

rm -r U/Torvane; runtime A/runtime/vek-1
link 'U/Torvane, Inc./Torvane Odrel 2.0' "$root/B"  # no old data directory
check() { # LOADED A'S-VERSION B'S-VERSION PACKAGE...
  rm -f A/mrd* A/MRD* ?/version.txt
  [ "$2" = - ] || printf %b "$2" >A/version.txt
  [ "$3" = - ] || printf %b "$3" >B/version.txt
  for package in "${@:4}"; do put "A/$package"; done
  if [ "$1" != - ]; then started "$1" vek-1; else no_package; fi | expect launch
}
check mrd-2.2.9.umo - - mrd-2.2.9.umo mrd-2.2.10.umo mrd-3.umo.bak
check mrd-2.umo - - MRD-3.0.UMO mrd-2.umo
check MRD-3.0.UMO - - MRD-3.0.UMO
check mrd-2.2.10.umo '2.2.10\nmore' 2.2.9 mrd-2.2.9.umo mrd-2.2.10.umo
check mrd-2.2.10.umo - 2.2.10 mrd-2.2.9.umo mrd-2.2.10.umo
check - '2\r\n' - mrd-2.umo
check - '' 2 mrd-2.umo
check mrd-2.2.2.umo '2.2.*' - mrd-2.2.1.umo mrd-2.2.2.umo mrd-2.3.umo
check 'mrd-\x.umo' '\\x' - 'mrd-\x.umo' mrd-x.umo

check mrd-1.umo - - mrd-1.umo
for name in vek-10 vek-9 VEK-99; do runtime A/runtime/$name; done
started mrd-1.umo vek-9 | expect launch
{ started mrd-1.umo vek-9 | sed '3d; /^-- /,$d'
  printf '%s\n' 'Unable to find a Vekara runtime on the system' '-- exit code 4'; } >none
for step in 'put A/runtime/zzzz' 'rm -r A/runtime' 'mkdir A/runtime' \
  'runtime A/runtime/.Torvane\ Odrel.part.1'; do eval "$step"; expect launch <none; done
