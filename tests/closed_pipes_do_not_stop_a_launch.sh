# Nobody needs to read what a launch tells, or keep streams open for it.
set -e; source "$(dirname "$0")/launch.sh"
put B/mrd-1.umo; runtime A/runtime/vek-1
exec 3> >(:); wait $!
closed() { odrel >&3 2>&3; short <record; }
without() { rm A/mrd-1.umo; odrel <&- >&- 2>&-; short <record; }
expect closed <<<$'A/runtime/vek-1 with A/mrd-1.umo\n...'
expect without <<<$'A/runtime/vek-1 with A/mrd-1.umo\n...'
