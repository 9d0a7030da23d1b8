# A launch from a bundle that can be signed needs nobody who reads its lines; the runtime gets SIGPIPE
# as the launcher found it.
set -e; source "$(dirname "$0")/launch.sh"
put B/Resources/mrd-1.umo
put B/Resources/version.txt 1
put A/mrd-2.umo
runtime B/MacOS/vek-1
mv B/odrel B/MacOS
link B/odrel MacOS/odrel
for name in mrd-1.umo version.txt; do link B/MacOS/$name ../Resources/$name; done
received() { short <record; }

exec 3> >(:)
wait $!
odrel >&3 2>&3
expect received <<<$'A/runtime/vek-1 with A/mrd-1.umo\n...'
rm A/mrd-1.umo
odrel <&- >&- 2>&-
expect received <<<$'A/runtime/vek-1 with A/mrd-1.umo\n...'
trap '' PIPE
odrel >/dev/null 2>&1
expect received <<<$'A/runtime/vek-1 with A/mrd-1.umo\n...\nSIGPIPE is ignored'
