source "$(dirname "$0")/launch.sh"

finds() { # DIRECTORY, relative to U, ENVIRONMENT...
  scenario "With ${*:2} the user data directory is $1"
  environment=("${@:2}"); rm -r U/*
  launch no_package; shows_progress_on_standard_output
  put "U/$1"; launch no_package
  rm "U/$1"; mkdir "U/$1"; launch "dir 'U/$1/Torvane/Torvane Odrel 2.2'; no_package"
}
finds .local/share HOME="$root/U" XDG_DATA_HOME=x
finds data HOME=/ XDG_DATA_HOME="$root/U/data//"

scenario 'Without a user data directory no package is found, and nothing made in its stead'
environment=(HOME=); launch no_package
[ -z "$(find / -maxdepth 1 -name Torvane -newer A)" ]

scenario 'The user data directory may be a link'
put 0/f old; mv U D; ln -s D/U U
launch 'migrating 0; brought f; marked 0'

scenario 'A file in the place of A does not end a launch, one in the place of a parent does'
rm -r U/Torvane/*; mkfifo 'U/Torvane/Torvane Odrel 2.2'
launch no_package
rm -r U/Torvane; put U/Torvane
diff <(echo Failed to create Odrel app data directory \"A\"; echo exit code 1) \
  <({ odrel 2>&1 >out || echo exit code $?; cat out; } | short)
