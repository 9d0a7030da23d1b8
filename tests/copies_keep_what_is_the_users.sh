source "$(dirname "$0")/launch.sh"

scenario 'A file there is replaced, not written into; links to it are followed and stay'
put 0/file old; put A/file mine; chmod 444 ?/file; ln A/file A/second-name; put 0/x old; ln 0/x A/x
put 0/linked old; link A/linked next; link A/next ../../../D/linked; put D/linked mine
put 0/folder/f old; link A/folder ../../../D; put 0/new old; link A/new ../../../D/new
launch 'migrating 0; brought file linked new x folder/f; marked 0'

scenario 'A link to a file comes as a file, also one of unknown size, one to a directory as a link'
put 0/file old; chmod 4666 0/file; link 0/to-file file; link 0/no-size /proc/sys/kernel/ostype
link 0/link ../../../D; link A/link x
launch 'migrating 0; brought file link no-size to-file; marked 0'

scenario 'Of a link to a directory and something else only the newest comes'
link 0/was-link ../../../D; put 1/was-link/f new; put 0/is-link/f old; link 2/is-link ../../../D
link 0/link ../../../D; link 0/nowhere no/where; marked 2
launch '
migrating 0; brought link; not_brought no_source nowhere
migrating 1; brought was-link/f
listed 0 "is-link\0link\0was-link\0"; marked 1'
rm -r 1/was-link 2/is-link 0/nowhere
launch 'migrating 0; marked 0'

scenario 'What has no place is tried again; anything but a directory is the application'\''s then'
put 0/circle old; link A/circle circle; put 0/directory old; put A/directory/f mine
put 0/file/deep/f old; put A/file mine; link 0/link ../../../D; put A/link/f mine
put 0/pipe old; mkfifo A/pipe; put 0/to-directory old; link A/to-directory ../../../D
launch '
migrating 0; not_brought no_place circle directory link
not_brought no_place pipe to-directory
echo CopyFile could not make directory A/file/deep; failed file/deep/f
listed 0'
rm A/circle A/file
launch '
migrating 0; brought circle; failed directory; failed link; brought file/deep/f
listed 0 "circle\0pipe\0to-directory\0file/deep/f\0"'

scenario 'What has no source is tried again, also where there is a file'
link 0/nowhere no/where; put A/nowhere mine; mkfifo 0/pipe
launch 'migrating 0; not_brought no_source nowhere pipe; listed 0'
launch 'migrating 0; not_brought no_source nowhere pipe'

scenario 'Parts are removed where copies are made, not what they lead to, and left out of old data'
link A/.Torvane\ Odrel.part ../../../D; put D/f mine; put A/Local\ Storage/.Torvane\ Odrel.part
put A/runtime/.Torvane\ Odrel.part/x; link A/sub/.Torvane\ Odrel.part ../../../../D/f
put 0/.Torvane\ Odrel.part; put 0/sub/.Torvane\ Odrel.part.1; put 0/sub/.Torvane\ Odrel.parts
launch '
migrating 0; brought sub/.Torvane\ Odrel.parts; marked 0
rm -r A/{,runtime/,Local\ Storage/,sub/}.Torvane\ Odrel.part'
