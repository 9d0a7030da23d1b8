from conftest import FULL_DISK, GONE, LARGE

NOWHERE = "-> no/where"
OTHER = "-> ../../../other"
OLD, OWN, NEW = ("x" * 4096 + end for end in ("old", "own", "new"))


def test_a_later_try_brings_what_failed_and_leaves_what_is_the_users(world):
  assert world.launch({
    "2.1/changed": "old", "2.1/removed": "old", "2.1/failed": LARGE, "2.1/made": "(a byte over)",
  }, preexec_fn=FULL_DISK) == {
    "app/changed": "old", "app/removed": "old", "journal-2.1": "changed\0removed\0"}
  assert world.launch({
    "app/changed": "own", "app/removed": GONE, "app/made": "own", "2.1/late": "new",
  }) == {"app/failed": LARGE, "app/late": "new", "2.1/migrated": "", "journal-2.1": GONE}


def test_a_late_file_replaces_only_an_older_releases_unchanged_one(world):
  assert world.launch({
    "2.0/replaced": OLD, "app/replaced": OLD, "2.1/replaced": NEW, "2.0/changed": OLD,
    "app/changed": OWN, "2.1/changed": NEW, "2.0/same": OLD, "app/same": OLD, "2.1/same": OLD,
    "2.0/newest": OLD, "app/newest": OLD, "2.1/newest": NEW, "2.2/newest": OLD,
    "2.1/folder/x": "old", "2.2/folder": OTHER, "app/folder": OTHER, "2.2/migrated/by": "anything",
    "2.0/migrated": OTHER, "journal-2.0": "", "journal-2.1": "",
  }) == {"app/replaced": NEW, "2.1/migrated": "", "journal-2.0": GONE, "journal-2.1": GONE}


def test_a_journal_counts_to_its_last_whole_path(world):
  assert world.launch({
    "2.0/listed": "old", "2.0/n": "old", "2.0/migrated": NOWHERE,
    "journal-2.0": "listed\0migrated\0n",
  }) == {"app/n": "old", "journal-2.0": "listed\0migrated\0n/\0n\0"}


def test_a_newer_release_comes_again_after_an_older_one_without_a_journal(world):
  files = {"2.0/file": "old", "2.0/nowhere": NOWHERE, "journal-2.0": NOWHERE, "2.1/file": "new"}
  assert world.launch(files) == {"app/file": "new"}
  assert world.launch({"app/file": "own"}) == {"app/file": "new"}


def test_of_a_link_to_a_directory_and_something_else_the_newest_comes(world):
  assert world.launch({
    "2.0/link": OTHER, "2.1/link/file": "new", "2.0/folder/file": "old", "2.1/folder": OTHER,
    "2.0/only": OTHER, "2.0/nowhere": NOWHERE,
  }) == {
    "app/link/file": "new", "app/folder": OTHER, "app/only": OTHER, "2.1/migrated": "",
    "journal-2.0": "folder\0link\0only\0"}


def test_what_cannot_be_found_or_finds_no_place_is_tried_again(world):
  assert world.launch({
    "2.0/nowhere": NOWHERE, "app/nowhere": "own", "2.0/file": "old", "app/file/x": "own",
    "2.0/link": OTHER, "app/link/x": "own", "2.0/a/b": "old", "app/a": "own",
    "2.0/endless": "-> /dev/zero", "2.0/own": "old", "app/own": "-> own",
  }) == {"journal-2.0": ""}
  assert world.launch({"app/own": OTHER}) == {"journal-2.0": "own\0"}
  assert world.launch({"app/file": GONE, "app/link": GONE, "app/a": GONE}) == {
    "app/file": "old", "app/link": OTHER, "app/a/b": "old", "journal-2.0": "own\0file\0link\0a/b\0"}


def test_links_are_followed_and_those_to_directories_copied(world):
  assert world.launch({
    "2.0/to-file": f"{OTHER}/file", "other/file": (0o4440, "old"), "2.0/to-folder": OTHER,
    "app/to-folder": "-> .", "2.0/linked": "new", "app/linked": "-> next",
    "app/next": f"{OTHER}/new", "2.0/folder/x": "new", "app/folder": OTHER,
  }) == {
    "app/to-file": (0o4440, "old"), "app/to-folder": OTHER, "other/new": "new",
    "other/x": "new", "2.0/migrated": ""}


def test_a_file_is_replaced_not_written_into_unless_it_is_its_source(world):
  world.lay_out({"app/file": (0o444, "own"), "2.0/source": "old"})
  world.path("app/second-name").hardlink_to(world.path("app/file"))
  world.path("app/source").hardlink_to(world.path("2.0/source"))
  assert world.launch({"2.0/file": "new"}) == {"app/file": "new", "2.0/migrated": ""}
