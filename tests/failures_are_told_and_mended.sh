# An installation that meets failures tells of them and harms nothing that is not its own; the next
# launch completes it and leaves nothing to do for a third.
set -e; source "$(dirname "$0")/launch.sh"
disk=$(mktemp -d -p /dev/shm)
large() { put $1 "$(printf %020000d)"; }
full_disk() { (trap '' XFSZ; ulimit -f 16; launch_and_changes); }
for file in .b a/x circle disk/f itself moved/f pipe place read-only rights shared untold under/deep/f; do put 0/$file old; done
for file in 1/{.b,due,kept,own/f,read-only} 2/qrc__0.localstorage B/{mrd-{1,2}.umo,vek-0/x,vek-1}; do put $file new; done
for file in A/{kept,large,link/f,migrated,mrd-2.umo/work,place/f,qrc__0.localstorage_migrated/f,read-only,runtime/vek-1,under} 'A/Torvane Odrel 2.'{1,2}.unmarked U/mine/f; do put "$file" mine; done
for file in 0/{elsewhere,large,stuck} 1/shared B/mrd-3.umo; do large $file; done
: >0/rights
chmod 640 0/a/x
chmod 444 ?/read-only
mkfifo 0/no-file A/pipe B/mrd-0.umo
ln 0/itself A/itself
ln A/read-only A/second-name
link 0/a/file ../.b 0/directory a 0/broken nowhere 0/link . 2/migrated no/where A/mrd-0.umo mrd-0.umo
link A/rights /proc/self/comm A/stuck /proc/self/comm A/disk "$disk" A/elsewhere "$root/U/elsewhere"
link 0/own "$root/U/mine" 1/moved "$root/U/mine" 0/.Torvane\ Odrel.part a
link A/.Torvane\ Odrel.part "$root/U/mine" A/runtime/.Torvane\ Odrel.part/link "$root/U/mine"
put 'A/Local Storage/.Torvane Odrel.part'
expect full_disk <<'END'
Dianostics: ON
Migrating application data from "0" to "A"
Migrating application data from "1" to "A"
Migrating application data from "2" to "A"
Migrating localStorage from "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
Loading Odrel package "A/mrd-2.umo"
--
0/.b => A/.b
0/broken => A/broken: no source; told
0/circle => A/circle
0/directory => A/directory
0/elsewhere => A/elsewhere: not whole; told
0/itself => A/itself
0/large => A/large: not whole; told
0/link => A/link: not whole; told
0/no-file => A/no-file: no source; told
0/pipe => A/pipe: no place; told
0/place => A/place: no place; told
0/read-only => A/read-only
0/rights => A/rights: no rights; told
0/shared => A/shared
0/stuck => A/stuck: no rights; told
0/untold => A/untold
0/a/file => A/a/file
0/a/x => A/a/x
0/disk/f => A/disk/f
CopyFile could not make directory A/under/deep
Failed to copy "0/under/deep/f" to "A/under/deep/f"
1/.b => A/.b
1/due => A/due
1/moved => A/moved
1/read-only => A/read-only
1/shared => A/shared: not whole; told
1/own/f => A/own/f
2/qrc__0.localstorage => A/qrc__0.localstorage
Failed to touch "2/migrated"
A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage
A/qrc__0.localstorage => A/qrc__0.localstorage_migrated: no place
Failed to complete localStorage migration
Priming A/mrd-0.umo
B/mrd-0.umo => A/mrd-0.umo: no source
Failed to prime Odrel app package "mrd-0.umo"
Priming A/mrd-1.umo
B/mrd-1.umo => A/mrd-1.umo
Priming A/mrd-2.umo
Priming A/mrd-3.umo
B/mrd-3.umo => A/mrd-3.umo: not whole
Failed to prime Odrel app package "mrd-3.umo"
CopyDirectory from does not exist: B/vek-1
Failed to prime Vekara runtime "B/vek-1"
Unable to find a Vekara runtime on the system
-- exit code 4
< A/Local Storage/STAGED 644 0 ""
< A/STAGED -> U/mine
< A/Torvane Odrel 2.1.unmarked 644 4 "mine"
< A/Torvane Odrel 2.2.unmarked 644 4 "mine"
> A/.b 644 3 "new"
> A/Local Storage/umop__0.localstorage 644 3 "new"
> A/Torvane Odrel 2.0.unmarked 644 80 ".b|a/file|a/x|circle"
> A/Torvane Odrel 2.1.unmarked 644 34 ".b|due|kept|moved|ow"
> A/Torvane Odrel 2.2.unmarked 644 29 "migrated|qrc__0.loca"
> A/a/file 644 3 "old"
> A/a/x 640 3 "old"
> A/circle 644 3 "old"
> A/directory -> a
> A/due 644 3 "new"
> A/moved -> U/mine
> A/mrd-1.umo 644 3 "new"
> A/own/f 644 3 "new"
> A/qrc__0.localstorage 644 3 "new"
< A/read-only 444 4 "mine"
> A/read-only 444 3 "new"
< A/runtime/STAGED/link -> U/mine
> A/shared 644 3 "old"
> A/untold 644 3 "old"
END

rm -r 0/{broken,no-file,own} 1/moved 2/migrated A/{runtime,circle,elsewhere,link,moved,mrd-*.umo,pipe,place,rights,stuck,under,untold,*_migrated,Local*/*} B/{mrd-0.umo,vek-1}
put A/.b changed
for file in B/vek-1/{F/Versions/A/Resources/r,z}; do put $file; done
link B/vek-1/F/Versions/Current A B/vek-1/F/Resources Versions/Current/Resources
link A/circle circle 'A/Local Storage/umop__0.localstorage' umop__0.localstorage
link A/moved "$root/U/mine" A/untold "$(printf %0300d)"
mkfifo A/pipe
runtime B/vek-1
errors=out expect launch_and_changes <<'END'
Dianostics: ON
Migrating application data from "0" to "A"
0/elsewhere => A/elsewhere
0/link => A/link
Failed to copy "0/pipe" to "A/pipe"
0/place => A/place
0/rights => A/rights
0/stuck => A/stuck
0/under/deep/f => A/under/deep/f
Migrating application data from "1" to "A"
1/shared => A/shared
Migrating application data from "2" to "A"
Migrating localStorage from "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage: no place
Failed to migrate localStorage "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
Priming A/mrd-1.umo
B/mrd-1.umo => A/mrd-1.umo
Priming A/mrd-2.umo
B/mrd-2.umo => A/mrd-2.umo
Priming A/mrd-3.umo
B/mrd-3.umo => A/mrd-3.umo
Loading Odrel package "A/mrd-3.umo"
B/vek-1/z => A/runtime/vek-1/z
B/vek-1/EXE => A/runtime/vek-1/EXE
B/vek-1/F/Resources => A/runtime/vek-1/F/Resources
B/vek-1/F/Versions/Current => A/runtime/vek-1/F/Versions/Current
B/vek-1/F/Versions/A/Resources/r => A/runtime/vek-1/F/Versions/A/Resources/r
Loading Vekara at "A/runtime/vek-1/EXE"
--
-- exit code 0
A/runtime/vek-1 with A/mrd-3.umo
...
> 1/migrated 644 0 ""
> 2/migrated 644 0 ""
< A/Torvane Odrel 2.0.unmarked 644 80 ".b|a/file|a/x|circle"
< A/Torvane Odrel 2.1.unmarked 644 34 ".b|due|kept|moved|ow"
< A/Torvane Odrel 2.2.unmarked 644 29 "migrated|qrc__0.loca"
> A/Torvane Odrel 2.0.unmarked 644 133 ".b|a/file|a/x|circle"
> A/elsewhere 644 20000 "00000000000000000000"
> A/link -> .
> A/mrd-1.umo 644 3 "new"
> A/mrd-2.umo 644 3 "new"
> A/mrd-3.umo 644 20000 "00000000000000000000"
> A/place 644 3 "old"
> A/rights 644 0 ""
> A/runtime/vek-1/EXE 755 367 "#!/bin/sh~# Stands i"
> A/runtime/vek-1/F/Resources -> Versions/Current/Resources
> A/runtime/vek-1/F/Versions/A/Resources/r 644 0 ""
> A/runtime/vek-1/F/Versions/Current -> A
> A/runtime/vek-1/z 644 0 ""
< A/shared 644 3 "old"
> A/shared 644 20000 "00000000000000000000"
> A/stuck 644 20000 "00000000000000000000"
> A/under/deep/f 644 3 "old"
END

rm 0/{circle,pipe,untold} A/Local*/*
launch_and_changes >mended
expect grep localstorage mended <<'END'
Migrating localStorage from "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage
A/qrc__0.localstorage => A/qrc__0.localstorage_migrated
> A/Local Storage/umop__0.localstorage 644 3 "new"
< A/qrc__0.localstorage 644 3 "new"
> A/qrc__0.localstorage_migrated 644 3 "new"
END
put 'A/Torvane Odrel 2.0.unmarked'
launch_and_changes >third
expect sed -En '/Migrating|=>|^[<>]/p' third <<<'< A/Torvane Odrel 2.0.unmarked 644 0 ""'
