source "$(dirname "$0")/launch.sh"

scenario 'Arguments and environment of any bytes, and ignored signals, arrive unchanged'
arguments=('' ' b c ' $'line\nfeed' $'\xff' --umo-enable-logging /tmp -n -n)
received=("${arguments[@]}"); environment+=($'BYTES=\xff\n' A=)
launch usually
(trap '' PIPE XFSZ; launch 'usually; echo SIGXFSZ and SIGPIPE are ignored')

opens() { # DOCUMENT REQUESTS
  scenario "Of the requests $2 $1 is opened"
  environment+=(ODREL_OPEN_DOCUMENTS="$2") arguments=(-a /b) received=("$1" -a /b)
  launch usually
}
opens $'/\xc3\xbc/a b' $'/\xc3\xbc/a b\t/second'
opens /last $'/first\t/other\n\n/last\n'

scenario 'Nobody needs to read what a launch writes, or keep streams open for it'
put B/mrd-2.umo package; mkfifo nobody; : <nobody & exec 3>nobody; wait
for way in 'odrel >&3 2>&3' 'rm A/mrd-2.umo; odrel <&- >&- 2>&-'; do
  eval "$way"; diff <(started vek-1 mrd-2.umo | sed 1d | short) <(short <record); cmp [AB]/mrd-2.umo
done

scenario 'A runtime that cannot be started is reported, if that is known in a millisecond'
: >"A/runtime/vek-1/$EXE"; exec 9</tmp; flock 9  # where an empty file stays, this run's
touch -d '1 second ago' begin; rm record; : >record
for n in {1..300}; do code=0; odrel >out 2>lines || code=$?; [ $code != 3 ] || break; done
diff <(usually | sed '5,$cFailed to launch Torvane Odrel\n3' | grep -v ^Loading) \
  <(short <lines; echo $code)
left() { find /tmp -maxdepth 1 -name 'file??????' -empty -newer begin "$@"; }
until [ "$(left | wc -l)" -ge "$n" ]; do sleep 0.1; done; left -delete
