# A first launch brings everything along, in this order. Packages and version file are links, as in
# a bundle that can be signed.
set -e; source "$(dirname "$0")/launch.sh"
put 0/settings old; put 1/settings new; put 1/.hidden; put 2/qrc__0.localstorage storage
put 1/projects/a/p text; put 1/projects/q; chmod 640 1/projects/q
mkdir B/MacOS; mv B/odrel B/MacOS; link B/odrel MacOS/odrel
put B/Resources/mrd-1.umo; put B/Resources/mrd-2.umo; put B/Resources/version.txt 1
for name in mrd-1.umo mrd-2.umo version.txt; do link B/MacOS/$name ../Resources/$name; done
runtime B/MacOS/vek-1; put B/MacOS/vek-1/z; put B/MacOS/vek-0/older
put B/MacOS/vek-1/F/Versions/A/Resources/r  # a framework
link B/MacOS/vek-1/F/Versions/Current A; link B/MacOS/vek-1/F/Resources Versions/Current/Resources
cat >first <<'END'
+ Dianostics: ON
+ Migrating application data from "0" to "A"
+ Migrating application data from "1" to "A"
+ Migrating application data from "2" to "A"
+ Migrating localStorage from "A/qrc__0.localstorage" to "A/Local Storage/umop__0.localstorage"
+ Loading Odrel package "A/mrd-1.umo"
+ Loading Vekara at "A/runtime/vek-1/EXE"
0/settings => A/settings
1/.hidden => A/.hidden
1/settings => A/settings
1/projects/q => A/projects/q
1/projects/a/p => A/projects/a/p
2/qrc__0.localstorage => A/qrc__0.localstorage
A/qrc__0.localstorage => A/Local Storage/umop__0.localstorage
A/qrc__0.localstorage => A/qrc__0.localstorage_migrated
Priming A/mrd-1.umo
B/MacOS/mrd-1.umo => A/mrd-1.umo
Priming A/mrd-2.umo
B/MacOS/mrd-2.umo => A/mrd-2.umo
B/MacOS/vek-1/z => A/runtime/vek-1/z
B/MacOS/vek-1/EXE => A/runtime/vek-1/EXE
B/MacOS/vek-1/F/Resources => A/runtime/vek-1/F/Resources
B/MacOS/vek-1/F/Versions/Current => A/runtime/vek-1/F/Versions/Current
B/MacOS/vek-1/F/Versions/A/Resources/r => A/runtime/vek-1/F/Versions/A/Resources/r
-- exit code 0
A/runtime/vek-1 with A/mrd-1.umo
...
> 0/migrated 644 0 ""
> 1/migrated 644 0 ""
> 2/migrated 644 0 ""
> A/.hidden 644 0 ""
> A/Local Storage/umop__0.localstorage 644 7 "stora"
> A/mrd-1.umo 644 0 ""
> A/mrd-2.umo 644 0 ""
> A/projects/a/p 644 4 "text"
> A/projects/q 640 0 ""
> A/qrc__0.localstorage_migrated 644 7 "stora"
> A/runtime/vek-1/EXE 755
> A/runtime/vek-1/F/Resources -> Versions/Current/Resources
> A/runtime/vek-1/F/Versions/A/Resources/r 644 0 ""
> A/runtime/vek-1/F/Versions/Current -> A
> A/runtime/vek-1/z 644 0 ""
> A/settings 644 3 "new"
END
expect launch_and_changes <first

# The second one has nothing to do.
grep -Ev '=>|^>|^\+ Migrating' first | expect launch_and_changes
