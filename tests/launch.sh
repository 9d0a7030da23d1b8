# Sourced by every test, with the launcher as the argument. Makes a directory for the test alone: in
# it, and in all that is compared, B is the bundle, U the user data directory, A the application's
# in it, and 0, 1 and 2 are the old data directories of the releases 2.0, 2.1 and 2.2.
#
# A launch is shown as its output, each line behind a "+", its errors, the exit code, and what the
# runtime received: "RUNTIME with PACKAGE" for the launcher's options, then all else, and "..." for
# the last option and U in the environment. What changes in U follows, "<" before and ">" after it:
# files with mode, size and first bytes, links with "->", pipes with "|", empty directories with
# "/". STAGED is the name of a copy that is not whole, EXE a runtime's executable, "X => Y" are the
# lines of a copy, "X => Y: not whole" those of one that fails, ": no rights" when permissions
# cannot be applied, ": no source" or ": no place" when that side cannot be opened; "; told" stands
# for the line 'Failed to copy "X" to "Y"'.
set -euo pipefail
export LC_ALL=C; umask 022
tests=$(realpath "$(dirname "$0")") launcher=$(realpath "$1") root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
cd "$root"
mkdir B U; mkfifo record; cp "$launcher" B/odrel; ln -s 'U/Torvane/Torvane Odrel 2.2' A
for i in 0 1 2; do ln -s "U/Torvane, Inc./Torvane Odrel 2.$i" $i; done
environment=(XDG_DATA_HOME="$root/U")

put() { mkdir -p "$(readlink -m "${1%/*}")"; printf %s "${2-}" >"$1"; } # FILE [TEXT]
link() { put "$1"; ln -sf "$2" "$1"; } # LINK TEXT
runtime() { # DIRECTORY
  install -D "$tests/runtime" "$(readlink -m "$1")/Torvane Odrel.app/Contents/MacOS/Torvane Umo"
}

odrel() { timeout 10 env -i "${environment[@]}" B/odrel "$@"; } # ARGUMENT...

# Shortens paths, and puts lines that belong together on one. All others stay: nothing gets lost.
short() {
  local copy='Attempt CopyFile from ([^\n]*) to ([^\n]*)\n'
  local failed="${copy}failed copy \\1 to \\2\nsrc good"
  local no_source="$failed: 0 dest good: 1\nsrc state: fail 1 bad 0\ndest state: fail 0 bad 0"
  local no_place="$failed: 1 dest good: 0\nsrc state: fail 0 bad 0\ndest state: fail 1 bad 0"
  local options='--umo-enable-logging\n--umo-log-level=0\n--odrel=B/odrel'
  sed -Ez "s,$root/,,g; s,B(/0+|/MacOS)*/odrel,B/odrel,g
    s|U/Torvane, Inc./Torvane Odrel 2.([012])|\1|g; s,U/Torvane/Torvane Odrel 2.2,A,g
    s,Torvane Odrel.app/Contents/MacOS/Torvane Umo,EXE,g; s,\.Torvane Odrel\.part,STAGED,g
    s,${copy}CopyFile success: 1,\1 => \2,g; s,${copy}CopyFile success: 0,\1 => \2: not whole,g
    s,${copy}failed during permissions xfer,\1 => \2: no rights,g
    s,$no_source,\1 => \2: no source,g; s,$no_place,\1 => \2: no place,g
    s,([^\n]*) => ([^\n]*): ([a-z ]*)\nFailed to copy \"\1\" to \"\2\",\1 => \2: \3; told,g
    s,/EXE\n--umo-entry-url=umop:///index.html\?production\n--umo-file=([^\n]*)\n$options, with \1,
    s,--disable-accelerated-compositing\nXDG_DATA_HOME=U\n,...\n,"
}

launch() { # ARGUMENT...
  local code=0
  odrel "$@" >out 2>err || code=$?
  { sed 's/^/+ /' out; cat err; echo "-- exit code $code"; [ $code != 0 ] || cat record; } | short
}

# Shows what is in U, but for the content of runtimes and memories.
tree() {
  find U -type l -printf '%p -> %l\n' -o -type p -printf '%p|\n' -o -type d -empty -printf '%p/\n' \
    -o -type f \( -name 'Torvane Umo' -o -name '*.unmarked' \) -printf '%p %m\n' \
    -o -type f -printf '%p %m %s "' -exec head -c 5 {} ';' -printf '"\n' | tr '\0' . | short | sort
}

launch_and_changes() { tree >before; launch; tree | diff before - | grep '^[<>]' || true; }

# What a launch shows that has no bundle to copy from, and one that has no package either.
started() { # PACKAGE RUNTIME ARGUMENT...
  printf '%s\n' '+ Dianostics: ON' "+ Loading Odrel package \"A/$1\"" \
    "+ Loading Vekara at \"A/runtime/$2/EXE\"" 'Unable to find an Odrel app package to prime' \
    'Unable to find a Vekara runtime to prime' '-- exit code 0' \
    "A/runtime/$2 with A/$1" "${@:3}" ...
}
no_package() {
  printf '%s\n' '+ Dianostics: ON' 'Unable to find an Odrel app package to prime' \
    'Unable to find an Odrel app package on the system' '-- exit code 2'
}

# Fails unless the command shows what is on standard input.
expect() { "$@" </dev/null >shown; diff - shown; } # COMMAND...
