# What a launch cannot do it tells, and the next one tries again. Each case says what is there, the
# lines that it adds to a launch with a limit on file sizes, what the user does then, and the lines
# that this adds to the next launch.
set -e; source "$(dirname "$0")/launch.sh"
disk=$(mktemp -d -p /dev/shm); trap 'rm -rf "$root" "$disk"' EXIT
large() { put "$1" "$(printf %040000d)"; }  # too much for the limit of the first launch
first() { printf '%s\n' "$@" >>first; }
next() { echo "$1" >>between; printf '%s\n' "${@:2}" >>next; } # COMMAND LINE...
sorted() { launch_and_changes | sort; }; limited() { (ulimit -f 32; sorted); }

# A newer release's file that does not arrive replaces the older one later, unless that has changed.
put 0/shared old; large 1/shared; put 0/used old; large 1/used
first '0/shared => A/shared' '1/shared => A/shared: not whole; told' '> A/shared 644 3 "old"' \
  '0/used => A/used' '1/used => A/used: not whole; told' '> A/used 644 3 "old"'
next 'put A/used new' '1/shared => A/shared' \
  '< A/shared 644 3 "old"' '> A/shared 644 40000 "00000"'

# A file that does not fit leaves the application's as it was, and the next launch leaves it, too.
large 0/large; put A/large mine
first '0/large => A/large: not whole; told'

# What the user removes does not come back, but what is new comes.
put 0/removed old
first '0/removed => A/removed' '> A/removed 644 3 "old"'
next 'rm A/removed; put 0/added old' '0/added => A/added' '> A/added 644 3 "old"'

# A file in the place is replaced, not written into, also when it is read-only.
put 0/file old; put A/file mine; chmod 444 ?/file; ln A/file A/second-name
first '0/file => A/file' '< A/file 444 4 "mine"' '> A/file 444 3 "old"'

# A link there stays, and the file that it leads to is replaced by a whole copy, or made.
put 0/linked old; put U/mine/linked mine; link A/linked ../../mine/linked
large 0/half; put U/mine/half mine; link A/half "$root/U/mine/half"
put 0/hanging old; link A/hanging "$root/U/mine/hanging"
put 0/disk/f old; link A/disk "$disk"
first '0/linked => A/linked' '< U/mine/linked 644 4 "mine"' '> U/mine/linked 644 3 "old"' \
  '0/half => A/half: not whole; told' '0/disk/f => A/disk/f' \
  '0/hanging => A/hanging' '> U/mine/hanging 644 3 "old"'

# A link to a file arrives as a file, one to a directory as it is, but not over a directory.
link 0/to-file file; link 0/link disk; link A/link x; link 0/held disk; put A/held/f x
first '0/to-file => A/to-file' '> A/to-file 444 3 "old"' '0/held => A/held: not whole; told' \
  '0/link => A/link' '< A/link -> x' '> A/link -> disk'
next 'rm -r A/held' '0/held => A/held' '> A/held -> disk'

# Where one release has a link to a directory and another something else, the newest one's comes,
# and the other one's never.
link 0/moved "$root/U/mine"; put 1/moved/f new; put 0/away/f old; link 1/away "$root/U/mine"
first '1/moved/f => A/moved/f' '> A/moved/f 644 3 "new"' '1/away => A/away' '> A/away -> U/mine'
next 'rm [1A]/away'

# A place that holds something else, or cannot be made, is told at every launch until it is free.
put 0/place old; put A/place/f mine; put 0/pipe old; mkfifo A/pipe
put 0/circle/f old; link A/circle circle; put 0/under/deep/f old; put A/under mine
first '0/place => A/place: no place; told' '0/pipe => A/pipe: no place; told' \
  '0/circle/f => A/circle/f: no place; told' 'CopyFile could not make directory A/under/deep' \
  'Failed to copy "0/under/deep/f" to "A/under/deep/f"'
next 'rm -r A/{place,under}' '0/place => A/place' '> A/place 644 3 "old"' \
  'Failed to copy "0/circle/f" to "A/circle/f"' \
  '0/under/deep/f => A/under/deep/f' '> A/under/deep/f 644 3 "old"'

# Pipes and links to nowhere are no sources, but what a link leads to may come back, and take the
# place of an older release's file, not of a newer one's.
mkfifo 0/no-file; put 0/mounted old; link 1/mounted "$root/U/mine/disk"
put 0/newest same; link 1/newest "$root/U/mine/disk"; put 2/newest same
first '0/newest => A/newest' '1/newest => A/newest: no source; told' \
  '> A/newest 644 4 "same"'
first '0/no-file => A/no-file: no source; told' '1/mounted => A/mounted: no source; told' \
  '0/mounted => A/mounted' '> A/mounted 644 3 "old"'
next 'put U/mine/disk new' '0/no-file => A/no-file: no source; told' '1/mounted => A/mounted' \
  '< A/mounted 644 3 "old"' '> A/mounted 644 3 "new"'

# Whole, too: a file that is its own copy, and one without a size.
put 0/itself old; ln 0/itself A/itself; link 0/untold /proc/sys/kernel/ostype
first '0/itself => A/itself' '0/untold => A/untold' \
  '> A/untold 444 6 "Linux"'

# A directory that was tried before is only completed by what its journal does not list. What is cut
# off is no path. When it cannot be marked, that is told.
for file in changed missing listed cut-off; do put 2/$file new; done
put A/changed mine; printf 'listed\0cut-off' >'A/Torvane Odrel 2.2.unmarked'
link 2/migrated no/where
first '2/missing => A/missing' '> A/missing 644 3 "new"' '2/cut-off => A/cut-off' \
  '> A/cut-off 644 3 "new"' '2/migrated => A/migrated: no source; told'
next : '2/migrated => A/migrated: no source; told'

# Parts that lie where copies are made go, but not what they lead to. Others are passed over.
put '0/.Torvane Odrel.part/x'; link 'A/.Torvane Odrel.part' "$root/U/mine"
put 'A/Local Storage/.Torvane Odrel.part'; link 'A/runtime/.Torvane Odrel.part/x' "$root/U/mine"
first '< A/STAGED -> U/mine' '< A/Local Storage/STAGED 644 0 ""' \
  '< A/runtime/STAGED/x -> U/mine' '> A/runtime/'

# An older release's web storage moves to its place for good when the newer one's fails. When its
# backup cannot be made, the storage is in its place and its source stays.
put 0/qrc__0.localstorage old; large 1/qrc__0.localstorage; put A/qrc__0.localstorage_migrated/f x
first '0/qrc__0.localstorage => A/qrc__0.localstorage' \
  '1/qrc__0.localstorage => A/qrc__0.localstorage: not whole; told' \
  'A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage' \
  'A/qrc__0.localstorage => A/qrc__0.localstorage_migrated: no place' \
  'Failed to complete localStorage migration' '> A/qrc__0.localstorage 644 3 "old"' \
  '> A/Local Storage/umop__0.localstorage 644 3 "old"'
next : '1/qrc__0.localstorage => A/qrc__0.localstorage' \
  '< A/qrc__0.localstorage 644 3 "old"' '> A/qrc__0.localstorage 644 40000 "00000"'

# A package that has failed is copied by the next launch. One that is there is not.
mkfifo B/mrd-0.umo; put B/mrd-1.umo new; put A/mrd-1.umo/work mine; large B/mrd-2.umo
first 'Priming A/mrd-0.umo' 'B/mrd-0.umo => A/mrd-0.umo: no source' \
  'Failed to prime Odrel app package "mrd-0.umo"' 'Priming A/mrd-1.umo' 'Priming A/mrd-2.umo' \
  'B/mrd-2.umo => A/mrd-2.umo: not whole' 'Failed to prime Odrel app package "mrd-2.umo"'
next 'rm B/mrd-0.umo' 'Priming A/mrd-1.umo' 'Priming A/mrd-2.umo' \
  'B/mrd-2.umo => A/mrd-2.umo' '> A/mrd-2.umo 644 40000 "00000"'

# Of a runtime that does not fit nothing stays.
put B/vek-1/a new; large B/vek-1/b; runtime B/vek-1
first 'B/vek-1/a => A/runtime/vek-1/a' 'B/vek-1/b => A/runtime/vek-1/b: not whole' \
  'Failed to prime Vekara runtime "B/vek-1"' 'Unable to find a Vekara runtime on the system'
next : 'B/vek-1/a => A/runtime/vek-1/a' 'B/vek-1/b => A/runtime/vek-1/b' \
  'B/vek-1/EXE => A/runtime/vek-1/EXE' '< A/runtime/' '> A/runtime/vek-1/EXE 755' \
  '> A/runtime/vek-1/a 644 3 "new"' '> A/runtime/vek-1/b 644 40000 "00000"'

migrations=('+ Migrating application data from "'{0,1,2}'" to "A"')
storage='"A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"'
first '+ Dianostics: ON' "${migrations[@]}" "+ Migrating localStorage from $storage" '+ Loading Odrel package "A/mrd-1.umo"' \
  '-- exit code 4' '> A/Torvane Odrel 2.0.unmarked 644' '> A/Torvane Odrel 2.1.unmarked 644'
next : '+ Dianostics: ON' "${migrations[@]}" '> 1/migrated 644 0 ""' \
  '< A/Torvane Odrel 2.1.unmarked 644' \
  '+ Loading Odrel package "A/mrd-2.umo"' '+ Loading Vekara at "A/runtime/vek-1/EXE"' \
  '-- exit code 0' 'A/runtime/vek-1 with A/mrd-2.umo' ...
sort first | expect limited; source ./between
grep . next | sort | expect sorted

# When everything has come, the old directories are marked.
rm -r 0/{no-file,pipe,circle} 2/migrated A/Local*/* B/mrd*
link 'A/Local Storage/umop__0.localstorage' umop__0.localstorage; put B/vek-2
expect launch_and_changes <<END
+ Dianostics: ON
+ Migrating application data from "0" to "A"
+ Migrating application data from "2" to "A"
+ Migrating localStorage from $storage
+ Loading Odrel package "A/mrd-2.umo"
+ Loading Vekara at "A/runtime/vek-1/EXE"
A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage: no place
Failed to migrate localStorage $storage
Unable to find an Odrel app package to prime
CopyDirectory from does not exist: B/vek-2
Failed to prime Vekara runtime "B/vek-2"
-- exit code 0
A/runtime/vek-1 with A/mrd-2.umo
...
> 0/migrated 644 0 ""
> 2/migrated 644 0 ""
< A/Torvane Odrel 2.0.unmarked 644
< A/Torvane Odrel 2.2.unmarked 644
END
