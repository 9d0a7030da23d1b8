source "$(dirname "$0")/launch.sh"

scenario 'Each failure is reported in its place, on standard error'
put 0/d/e/f; put A/d; put 0/x old; link 'A/Torvane Odrel 2.0.unmarked' no/where
put A/qrc__0.localstorage; link 'A/Local Storage/umop__0.localstorage' umop__0.localstorage
mkfifo B/mrd-2.umo; link B/vek-2 .; rm -r A/runtime
launch '
migrating 0; brought x; echo CopyFile could not make directory A/d/e; failed d/e/f
echo Failed to touch \"A/Torvane Odrel 2.0.unmarked\"
echo "Migrating localStorage from $storage"
no_place A/qrc__0.localstorage "A/Local Storage/umop__0.localstorage"
echo "Failed to migrate localStorage $storage"
echo Priming A/mrd-2.umo; no_source B/mrd-2.umo A/mrd-2.umo
echo Failed to prime Odrel app package \"mrd-2.umo\"
echo Loading Odrel package \"A/mrd-1.umo\"
echo CopyDirectory from does not exist: B/vek-2
echo Failed to prime Vekara runtime \"B/vek-2\"
echo Unable to find a Vekara runtime on the system; echo exit code 4'
shows_progress_on_standard_output

scenario 'Web storage that does not fit is moved later; without a backup the old file stays'
large A/qrc__0.localstorage; put A/qrc__0.localstorage_migrated/f mine
full_disk launch '
echo "Migrating localStorage from $storage"
incomplete A/qrc__0.localstorage "A/Local Storage/umop__0.localstorage"; dir "A/Local Storage"
echo "Failed to migrate localStorage $storage"'
launch '
echo "Migrating localStorage from $storage"
copied A/qrc__0.localstorage "A/Local Storage/umop__0.localstorage"
no_place A/qrc__0.localstorage A/qrc__0.localstorage_migrated
echo Failed to complete localStorage migration'
rm A/Local*/*; shows_progress_on_standard_output; put A/qrc__0.localstorage new; launch usually

scenario 'Of a package and a runtime that do not fit nothing stays; other packages are copied'
large B/mrd-1.umo; put B/mrd-2.umo; rm -r A/mrd-1.umo A/runtime/vek-1
put B/vek-2/a; large B/vek-2/b; put B/vek-2/c
full_disk launch '
echo Priming A/mrd-1.umo; incomplete B/mrd-1.umo A/mrd-1.umo
echo Failed to prime Odrel app package \"mrd-1.umo\"
echo Priming A/mrd-2.umo; copied B/mrd-2.umo A/mrd-2.umo
echo Loading Odrel package \"A/mrd-2.umo\"
copied B/vek-2/a A/runtime/vek-2/a; incomplete B/vek-2/b A/runtime/vek-2/b; rm -r A/runtime/vek-2
echo Failed to prime Vekara runtime \"B/vek-2\"
echo Unable to find a Vekara runtime on the system; echo exit code 4'

scenario "A directory is the package, and a link to a directory of the user's is the runtime"
put B/mrd-2.umo; dir A/mrd-2.umo
runtime B/vek-1; mv A/runtime/vek-1 D; link A/runtime/vek-1 ../../../../D/vek-1
launch '
echo Priming A/mrd-2.umo; echo Loading Odrel package \"A/mrd-2.umo\"
echo Loading Vekara at \"A/runtime/vek-1/EXE\"; started vek-1 mrd-2.umo'
