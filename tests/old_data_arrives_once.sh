source "$(dirname "$0")/launch.sh"

scenario 'What has arrived does not come again; what did not fit or is new comes, the newest wins'
large 0/large; put A/large mine; put 0/removed old; put 0/changed "$(printf %09000d)old"
put 0/late; put 0/same x; for file in changed late same; do large 1/$file; done; put 2/same x
full_disk launch '
migrating 0; brought changed; not_brought incomplete large; brought late removed same
migrating 1; not_brought incomplete changed late same
migrating 2; brought same
listed 0 "changed\0late\0removed\0same\0"; listed 1; marked 2'
rm A/removed; put A/changed "$(printf %09000d)new"; put 0/new old; put 0/known old; put A/known mine
rm A/large
launch '
migrating 0; brought large new
migrating 1; brought late
marked 0; marked 1'

scenario 'A list of what has arrived counts to the end of its last complete path'
put 0/n old; put 0/name old; put 0/listed old; link 0/nowhere no/where; listed 0 'listed\0n'
launch '
migrating 0; brought n name; not_brought no_source nowhere
listed 0 "listed\0n/\0n\0name\0"'
rm A/n 0/nowhere
launch 'migrating 0; marked 0'
