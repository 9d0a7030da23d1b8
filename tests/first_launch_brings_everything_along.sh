source "$(dirname "$0")/launch.sh"

scenario 'A first launch brings everything along, in this order, and a second one has nothing to do'
rm -r U/*; put 0/settings old; put 1/settings new; put 1/.hidden; put 2/qrc__0.localstorage storage
put 1/projects/a/p text; chmod 700 1/projects; put 1/projects/q; chmod 640 1/projects/q; dir 1/empty
for name in mrd-1.umo mrd-2.umo; do put B/Resources/$name $name; link B/$name Resources/$name; done
for other in mrd-3.umo.old mrdz.umo zmrd-1.umo vek-0/older vekz/z zvek-1/z; do put B/$other; done
runtime B/vek-1; put B/vek-1/.z; dir B/vek-1/empty
put B/vek-1/F/Versions/A/r; link B/vek-1/F/Versions/Current A  # a framework
first='
migrating 0; brought settings
migrating 1; brought .hidden settings projects/q projects/a/p
migrating 2; brought qrc__0.localstorage
put 0/migrated; put 1/migrated; put 2/migrated
echo "Migrating localStorage from $storage"
copied A/qrc__0.localstorage "A/Local Storage/umop__0.localstorage"
copied A/qrc__0.localstorage A/qrc__0.localstorage_migrated; rm A/qrc__0.localstorage
echo Priming A/mrd-1.umo; copied B/mrd-1.umo A/mrd-1.umo
echo Priming A/mrd-2.umo; copied B/mrd-2.umo A/mrd-2.umo
echo Loading Odrel package \"A/mrd-2.umo\"
copied B/vek-1/.z A/runtime/vek-1/.z
copied "B/vek-1/$EXE" "A/runtime/vek-1/$EXE"
copied B/vek-1/F/Versions/Current A/runtime/vek-1/F/Versions/Current
copied B/vek-1/F/Versions/A/r A/runtime/vek-1/F/Versions/A/r
echo Loading Vekara at \"A/runtime/vek-1/EXE\"
started vek-1 mrd-2.umo'
(umask 0; launch "$first")  # which shows the modes that the launcher asks for
rm -r A/* ?/migrated; shows_progress_on_standard_output
launch "$(grep -E '^(echo (Priming|Loading)|started)' <<<"$first" | sed 's/; .*//')"

scenario 'A directory without files is marked, one that is a link or marked by anything left alone'
dir 0/empty; put 1/migrated/x; put 1/f old; listed 1; put D/f old; put A/mine mine
ln -s ../../D 'U/Torvane, Inc./Torvane Odrel 2.2'
launch 'migrating 0; marked 0; rm A/*.unmarked'
