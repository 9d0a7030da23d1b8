source "$(dirname "$0")/launch.sh"

scenario 'What has arrived does not come again; what has not replaces what older releases brought'
put 0/changed "$(printf %09000d)end"; put 0/newest x; put 2/newest x; put 0/old
for file in changed large newest old; do large 1/$file; done; put A/large mine
put 1/removed old; put 1/recent old; large 2/recent
full_disk launch '
migrating 0; brought changed newest old
migrating 1; not_brought incomplete changed large newest old; brought recent removed
migrating 2; brought newest; not_brought incomplete recent
marked 0; listed 1 "recent\0removed\0"; listed 2 "newest\0"'
rm A/large A/removed; put A/changed "$(printf %09000d)END"
put 1/added old; put 1/made-by-both old; put A/made-by-both mine
launch '
migrating 1; brought added large old
migrating 2; brought recent
marked 1; marked 2'

scenario 'While an older release is neither marked nor listed, the newer one comes again after it'
put 0/x old; put 1/x new; link 'A/Torvane Odrel 2.0.unmarked' no/where; link 0/nowhere no/where
again='migrating 0; not_brought no_source nowhere; brought x; migrating 1; brought x
echo Failed to touch \"A/Torvane Odrel 2.0.unmarked\"'
launch "$again"; put A/x mine; launch "$again"

scenario 'A journal counts to its last complete path, and is kept where no marker can be made'
put 0/n old; put 0/name old; link 0/migrated no/where; listed 0 'migrated\0n'
launch '
migrating 0; brought n name; echo Failed to touch \"0/migrated\"
listed 0 "migrated\0n/\0n\0name\0"'
rm A/n 0/migrated
launch 'migrating 0; marked 0'
