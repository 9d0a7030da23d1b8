# Sourced by every test, with the launcher as the argument. Makes a directory for the test alone: in
# it, and in all that is compared, B is the bundle, U the user data directory, A the application's in
# it, and 0, 1 and 2 are the old data directories.
set -euo pipefail
export LC_ALL=C
umask 022
tests=$(realpath "$(dirname "$0")") launcher=$(realpath "$1") root=$(mktemp -d) disk=
trap 'rm -rf "$root" "$disk"' EXIT
cd "$root"
mkdir B U
cp "$launcher" B/odrel
ln -s 'U/Torvane/Torvane Odrel 2.2' A
for i in 0 1 2; do ln -s "U/Torvane, Inc./Torvane Odrel 2.$i" $i; done
mkfifo record
environment=(XDG_DATA_HOME="$root/U") errors=err

put() { # FILE [TEXT]
  mkdir -p "$(readlink -m "${1%/*}")"
  printf %s "${2-}" >"$1"
}

link() { # LINK TEXT...
  mkdir -p "$(readlink -m "${1%/*}")"
  ln -s "$2" "$1"
  if [ $# -gt 2 ]; then link "${@:3}"; fi
}

runtime() { # DIRECTORY
  install -D "$tests/runtime" "$(readlink -m "$1")/Torvane Odrel.app/Contents/MacOS/Torvane Umo"
}

odrel() {
  timeout 10 env -i "${environment[@]}" B/odrel "$@"
}

# Shortens paths, and puts lines that belong together on one. All others stay: nothing gets lost.
short() {
  local attempt='Attempt CopyFile from ([^\n]*) to ([^\n]*)\n' failed='failed copy \1 to \2\nsrc good'
  local options='--umo-enable-logging\n--umo-log-level=0\n--odrel=B/odrel'
  sed -Ez "s,$root/,,g; s,B(/0+|/MacOS)*/odrel,B/odrel,g
    s|U/Torvane, Inc./Torvane Odrel 2.([012])|\1|g; s,U/Torvane/Torvane Odrel 2.2,A,g
    s,Torvane Odrel.app/Contents/MacOS/Torvane Umo,EXE,g; s,\.Torvane Odrel\.part,STAGED,g
    s,${attempt}CopyFile success: 1,\1 => \2,g
    s,${attempt}CopyFile success: 0,\1 => \2: not whole,g
    s,${attempt}failed during permissions xfer,\1 => \2: no rights,g
    s,$attempt$failed: 0 dest good: 1\nsrc state: fail 1 bad 0\ndest state: fail 0 bad 0,\1 => \2: no source,g
    s,$attempt$failed: 1 dest good: 0\nsrc state: fail 0 bad 0\ndest state: fail 1 bad 0,\1 => \2: no place,g
    s,([^\n]*) => ([^\n]*): ([a-z ]*)\nFailed to copy \"\1\" to \"\2\",\1 => \2: \3; told,g
    s,/EXE\n--umo-entry-url=umop:///index.html\?production\n--umo-file=([^\n]*)\n$options, with \1,
    s,--disable-accelerated-compositing\nXDG_DATA_HOME=U\n,...\n,"
}

# Shows a launch: both outputs, the exit code and what the runtime received.
launch() { # ARGUMENT...
  local code=0
  : >out >err
  odrel "$@" >>out 2>>$errors || code=$?
  { cat out; echo --; cat err; echo "-- exit code $code"; [ $code != 0 ] || cat record; } | short
}

# Shows what is in U. Of the directories only those that are empty or not of mode 755.
tree() {
  find U -type l -printf '%p -> %l\n' -o -type p -printf '%p|\n' -o -type f -printf '%p %m %s "' \
    -exec sh -c 'head -c 20 "$1" | tr "\n\0" "~|"' - {} ';' -printf '"\n' \
    -o -type d \( -empty -o ! -perm 755 \) -printf '%p/ %m\n' | short | sort
}

# Shows a launch and what it has changed in U.
launch_and_changes() {
  tree >before
  launch
  tree | diff before - | grep '^[<>]' || true
}

# Shows what a launch should show that has no bundle to copy from, and one that has no package either.
started() { # PACKAGE RUNTIME ARGUMENT...
  printf '%s\n' 'Dianostics: ON' "Loading Odrel package \"A/$1\"" \
    "Loading Vekara at \"A/runtime/$2/EXE\"" -- 'Unable to find an Odrel app package to prime' \
    'Unable to find a Vekara runtime to prime' '-- exit code 0' "A/runtime/$2 with A/$1" "${@:3}" ...
}
no_package() {
  printf '%s\n' 'Dianostics: ON' -- 'Unable to find an Odrel app package to prime' \
    'Unable to find an Odrel app package on the system' '-- exit code 2'
}

# Fails unless the command shows what is on standard input.
expect() { # COMMAND...
  "$@" </dev/null >shown
  diff - shown
}
