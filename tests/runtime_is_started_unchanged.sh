# The runtime receives document, arguments, environment and ignored signals unchanged, and the
# launcher's path at any length. When it cannot be executed, that is told, and a file stays in /tmp.
set -e; source "$(dirname "$0")/launch.sh"
put A/mrd-1.umo; runtime A/runtime/vek-1
check() { # ENTRY OF THE ENVIRONMENT, ARGUMENT THAT THE RUNTIME GETS...
  environment[1]=$1
  { started mrd-1.umo vek-1 "${@:2}"; echo "$1"; } | expect launch "${arguments[@]}"
}

arguments=('' ' b c ' $'line\nfeed' $'\xff' --umo-enable-logging /tmp "$(printf %0100000d)")
for _ in {1..3000}; do arguments+=(-n); done
check $'BYTES=\xff\n' "${arguments[@]}"; arguments=(-a /b)
check ODREL_OPEN_DOCUMENTS=/tmp/x.txt /tmp/x.txt -a /b
check $'ODREL_OPEN_DOCUMENTS=/\xc3\xbc/a b\t/second' $'/\xc3\xbc/a b' -a /b
check $'ODREL_OPEN_DOCUMENTS=/first\n\n/last\t/other\n' /last -a /b
check $'ODREL_OPEN_DOCUMENTS=\n\t\n' -a /b

environment[1]=A=
{ started mrd-1.umo vek-1; echo A=; echo 'SIGXFSZ and SIGPIPE are ignored'; } |
  (trap '' PIPE XFSZ; expect launch)

deep=$(printf "/%0240d" 0 0 0 0 0)
mkdir -p "B$deep"; mv B/odrel "B$deep"; link B/odrel ".$deep/odrel"
check LSAN_OPTIONS=detect_leaks=0 -a /b  # clang's symbolizer cannot read a path that long

# The names in /tmp are the C library's choice; by an unusual mode this run knows its own files.
umask 0$((RANDOM % 8))$((RANDOM % 2 * 4)); : >mode
: >'A/runtime/vek-1/Torvane Odrel.app/Contents/MacOS/Torvane Umo'
markers() { find /tmp -maxdepth 1 -name 'file*' -empty -newer mode -perm $(stat -c %a mode) "$@"; }
started mrd-1.umo vek-1 | sed '/^-- /,$d; 5a Failed to launch Torvane Odrel\n-- exit code 3' >told
noticed=0 SECONDS=0
rm record; : >record  # instead of the pipe: a slow child may fail after the launcher has looked
for _ in {1..20}; do launch >shown; ! cmp -s told shown || noticed=$((noticed + 1)); done
test $noticed -ge 3 -a $SECONDS -lt 20  # each waits a millisecond
until [ "$(markers | wc -l)" -ge 20 ]; do sleep 0.1; done; markers -delete
