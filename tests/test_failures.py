import os

import pytest
from conftest import FULL_DISK, GONE, LARGE, NO_PROCESS, NOBODY, PIPE, RUNTIME


def test_progress_is_on_standard_output_and_all_else_on_standard_error(world):
  assert world.launch({
    "2.0/migrated": "-> no/where", "journal-2.0": "migrated\0", "2.1/a/b/file": "", "app/a": "own",
    "journal-2.1": "-> no/where", "old-storage": "storage", "backup": "-> no/where",
    "bundle/mrd-2.umo": "-> no/where", "bundle/vek-2": "a file", "app/runtime": GONE,
  }, code=4, stderr=PIPE) == {"storage": "storage"}
  assert world.lines == """\
Dianostics: ON
Migrating application data from "2.0" to "app"
Migrating application data from "2.1" to "app"
Migrating localStorage from "old-storage" to "storage"
Loading Odrel package "app/mrd-1.umo"
"""
  assert world.errors == """\
CopyFile could not make directory app/a/b
Failed to copy "2.1/a/b/file" to "app/a/b/file"
Failed to touch "2.0/migrated"
Failed to touch "journal-2.1"
Attempt CopyFile from old-storage to storage
CopyFile success: 1
Attempt CopyFile from old-storage to backup
failed copy old-storage to backup
src good: 1 dest good: 0
src state: fail 0 bad 0
dest state: fail 1 bad 0
Failed to complete localStorage migration
Priming app/mrd-2.umo
Attempt CopyFile from bundle/mrd-2.umo to app/mrd-2.umo
failed copy bundle/mrd-2.umo to app/mrd-2.umo
src good: 0 dest good: 1
src state: fail 1 bad 0
dest state: fail 0 bad 0
Failed to prime Odrel app package "mrd-2.umo"
CopyDirectory from does not exist: bundle/vek-2
Failed to prime Vekara runtime "bundle/vek-2"
Unable to find a Vekara runtime on the system
"""


def test_web_storage_is_moved_as_soon_as_it_fits_and_only_once(world):
  options = {"stderr": PIPE, "preexec_fn": FULL_DISK}
  assert world.launch({"old-storage": LARGE}, **options) == {"app/Local Storage": None}
  assert world.errors == """\
Attempt CopyFile from old-storage to storage
CopyFile success: 0
Failed to migrate localStorage "old-storage" to "storage"
Unable to find an Odrel app package to prime
Unable to find a Vekara runtime to prime
"""
  assert world.launch({}) == {"storage": LARGE, "backup": LARGE, "old-storage": GONE}
  assert world.launch({"old-storage": "late"}) == {}


def test_what_does_not_fit_is_copied_later_as_a_whole(world):
  assert world.launch({
    "bundle/mrd-2.umo": LARGE, "bundle/mrd-3.umo": "",
    "bundle/vek-2/executable": RUNTIME, "bundle/vek-2/file": LARGE,
  }, preexec_fn=FULL_DISK) == {"app/mrd-3.umo": ""}
  assert world.launch({}) == {
    "app/mrd-2.umo": LARGE, "app/runtime/vek-2/executable": RUNTIME,
    "app/runtime/vek-2/file": LARGE}


@pytest.mark.parametrize("file, code, line", [
  ("user/Torvane", 1, 'Failed to create Odrel app data directory "app"'),
  ("app", 2, "Unable to find an Odrel app package on the system")])
def test_a_file_in_place_of_its_directory_ends_a_launch(world, file, code, line):
  assert world.launch({file: "own"}, code=code, stderr=PIPE) == {}
  assert world.errors.splitlines()[-1] == line


def test_a_runtime_that_cannot_be_started_is_reported(world):
  world.environment["ASAN_OPTIONS"] = "detect_leaks=0"  # which takes a process
  assert world.launch({}, code=3, stderr=PIPE, preexec_fn=NO_PROCESS, user=NOBODY) == {}
  assert world.errors.splitlines()[-1] == "Failed to launch Torvane Odrel"


def test_nobody_needs_to_read_what_a_launch_writes(world):
  reader, writer = os.pipe()
  os.close(reader)
  assert world.launch({"bundle/mrd-2.umo": ""}, stderr=writer) == {"app/mrd-2.umo": ""}
  os.close(writer)
