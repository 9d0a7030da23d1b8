source "$(dirname "$0")/launch.sh"

scenario 'What has arrived does not come again; what has not replaces what older releases brought'
large 0/large; put A/large mine; put 0/removed old; put 0/changed "$(printf %09000d)end"; put 0/old
put 0/newest x; put 2/newest x; for file in changed newest old; do large 1/$file; done
full_disk launch '
migrating 0; brought changed; not_brought incomplete large; brought newest old removed
migrating 1; not_brought incomplete changed newest old
migrating 2; brought newest
listed 0 "changed\0newest\0old\0removed\0"; listed 1; marked 2'
rm A/large A/removed; put A/changed "$(printf %09000d)END"
put 0/added old; put 0/made-by-both old; put A/made-by-both mine
launch '
migrating 0; brought added large
migrating 1; brought old
marked 0; marked 1'

scenario 'A journal counts to the end of its last complete path'
put 0/n old; put 0/name old; put 0/listed old; link 0/nowhere no/where; listed 0 'listed\0n'
launch '
migrating 0; brought n name; not_brought no_source nowhere
listed 0 "listed\0n/\0n\0name\0"'
rm A/n 0/nowhere
launch 'migrating 0; marked 0'
