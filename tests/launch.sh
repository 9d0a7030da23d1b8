# Sourced by every test, with the launcher as the argument. Short names, in a test as in what it
# compares: B is the bundle, U the user data directory, A the application's in it; 0, 1 and 2 are
# the old data directories of 2.0, 2.1 and 2.2; D is on another file system; EXE is the path of
# a runtime's executable in the runtime, and PART the name of a copy in the making.
set -euo pipefail; export LC_ALL=C; umask 022
root=$(mktemp -d); disk=$(mktemp -d -p /dev/shm)
trap '[ $? = 0 ] || echo "This does not hold: $title"; rm -rf "$root" "$disk"' EXIT
tests=$(realpath "$(dirname "$0")"); cp "$1" "$root/odrel"
cd "$root"; mkfifo record; ln -s "$disk" D; ln -s 'U/Torvane/Torvane Odrel 2.2' A
for i in 0 1 2; do ln -s "U/Torvane, Inc./Torvane Odrel 2.$i" $i; done
storage='"A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"'
EXE='Torvane Odrel.app/Contents/MacOS/Torvane Umo'

# What is there.
scenario() { # SENTENCE that must hold; it begins with nothing but a package and a runtime in A
  # The launcher's environment and arguments, and what of the latter and a document is received.
  title=$1 environment=(XDG_DATA_HOME="$root/U") arguments=() received=()
  rm -rf B U; find D/ -mindepth 1 -delete
  mkdir B U; ln odrel B; put A/mrd-1.umo; runtime A/runtime/vek-1
}
dir() { [ -d "$1" ] || (umask 022; mkdir -p "$(readlink -m "$1")"); } # DIRECTORY
put() { dir "${1%/*}"; printf %b "${2-}" >"$1"; } # FILE [TEXT with escapes]
large() { put "$1" "$(printf %040000d)$1"; } # FILE that does not fit on a full disk
link() { dir "${1%/*}"; ln -sfn "$2" "$1"; } # LINK TEXT
runtime() { dir "$1/${EXE%/*}"; cp "$tests/runtime" "$1/$EXE"; } # DIRECTORY
listed() { put "A/Torvane Odrel 2.$1.unmarked" "${2-}"; } # RELEASE ['PATH\0...']
marked() { put "$1/migrated"; rm -f "A/Torvane Odrel 2.$1.unmarked"; } # RELEASE

# What a launch does: it does the same to the files, and writes the same lines.
migrating() { release=$1; echo "Migrating application data from \"$1\" to \"A\""; } # RELEASE
brought() { for file; do copied $release/"$file" A/"$file"; done; } # FILE...
copied() { # FILE PLACE
  printf '%s\n' "Attempt CopyFile from $1 to $2" 'CopyFile success: 1'
  dir "${2%/*}"
  if [ -d "$1" ]; then link "$2" "$(readlink "$1")"
  else cp --remove-destination --preserve=mode "$1" "$(readlink -m "$2")"; fi
}
not_brought() { # no_source|no_place|incomplete FILE...
  for file in "${@:2}"; do $1 $release/"$file" A/"$file"; failed "$file"; done
}
failed() { echo "Failed to copy \"$release/$1\" to \"A/$1\""; } # FILE
incomplete() { printf '%s\n' "Attempt CopyFile from $1 to $2" 'CopyFile success: 0'; } # FILE PLACE
no_source() { not_opened "$@" 0 1; } # FILE PLACE
no_place() { not_opened "$@" 1 0; } # FILE PLACE
not_opened() { # FILE PLACE whether the FILE is opened, and the PLACE
  printf '%s\n' "Attempt CopyFile from $1 to $2" "failed copy $1 to $2" \
    "src good: $3 dest good: $4" "src state: fail $4 bad 0" "dest state: fail $3 bad 0"
}
started() { # RUNTIME PACKAGE
  printf '%s\0' 'exit code 0' "A/runtime/$1/EXE" '--umo-entry-url=umop:///index.html?production' \
    "--umo-file=A/$2" --umo-enable-logging --umo-log-level=0 --odrel=B/odrel "${received[@]}" \
    --disable-accelerated-compositing "${environment[@]}" | tr '\n\0' '|\n'
}
usually() { # [RUNTIME PACKAGE]: with nothing in the bundle
  printf '%s\n' 'Unable to find an Odrel app package to prime' \
    "Loading Odrel package \"A/${2-mrd-1.umo}\"" 'Unable to find a Vekara runtime to prime' \
    "Loading Vekara at \"A/runtime/${1-vek-1}/EXE\""
  started "${1-vek-1}" "${2-mrd-1.umo}"
}
no_package() { usually | sed '2,$cUnable to find an Odrel app package on the system\nexit code 2'; }

odrel() {
  (ulimit -f "${blocks-unlimited}"; timeout 20 env -i "${environment[@]}" B/odrel "${arguments[@]}")
}
full_disk() { blocks=32 "$@"; } # COMMAND... in which no file gets larger than 32 KiB

# Fails unless a launch shows the lines of the COMMANDS, both streams in one, then its exit code and
# what the runtime receives, and leaves the files as the COMMANDS leave a copy of them. First comes
# the line "Dianostics: ON", and last, when no COMMAND writes an exit code, what "usually" writes.
launch() { # COMMANDS
  local code=0; rm -rf after; mkdir after; cp -al B after; cp -a U A [012] after; cp -a D/ after/D
  (cd after; echo 'Dianostics: ON'; eval "$1") >said
  [[ $(<said) = *'exit code'* ]] || usually >>said
  odrel </dev/null >lines 2>&1 || code=$?
  { cat lines; echo "exit code $code"; ((code)) || timeout 9 cat record || :; tree; } | short >shown
  { cat said; cd after; tree; } | short >expected
  diff -U2 expected shown >difference || { cut -c 1-150 difference; false; }
}

# Fails unless a launch like the last one has its progress, and only that, on standard output.
shows_progress_on_standard_output() {
  if odrel >out 2>err; then cat record >shown; fi
  grep -E '^(Dianostics: |Migrating |Loading )' lines | diff -U1 --label expected - out
  grep -vxFf out lines | diff -U1 --label expected - err
}

# All that is in B, U and D: type, mode, size or text of links, and the lines of what is no program.
tree() {
  { find -H B U D -type f -printf '%p f %m %s\n' -o -printf '%p %y %m %l\n'
    grep -ras '' B U D/ --exclude={odrel,'Torvane Umo'} || :; } | tr '\0' '|' | sort
}
short() {
  sed -E "s,$root/,,g; s,U/Torvane/Torvane Odrel 2.2,A,g; s,$EXE,EXE,g
    s|U/Torvane, Inc./Torvane Odrel 2.([012])|\1|g; s,\.Torvane Odrel\.part,PART,g"
}
