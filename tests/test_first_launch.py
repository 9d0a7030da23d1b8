import os
import signal
import time
from pathlib import Path

import pytest
from conftest import GONE, PART, RUNTIME, command_line

FRESH = {
  "app": GONE, "app/settings": "own", "2.0/settings": "old", "2.1/settings": (0o640, "new"),
  "2.1/a/.hidden": "", "2.1/empty": None, "2.2": "-> ../../other", "other/file": "",
  "old-storage": "storage", "bundle/mrd-2.umo": "package", "bundle/vek-1/older": "",
  "bundle/vek-2/executable": RUNTIME}
CHANGES = {
  "app/settings": (0o640, "new"), "app/a/.hidden": "", "2.0/migrated": "", "2.1/migrated": "",
  "old-storage": GONE, "storage": "storage", "backup": "storage", "app/mrd-2.umo": "package",
  "app/runtime/vek-2/executable": RUNTIME}


def test_a_first_launch_brings_all_along_and_a_later_one_nothing(world):
  assert world.launch(FRESH) == CHANGES
  assert world.lines == """\
Dianostics: ON
Migrating application data from "2.0" to "app"
Attempt CopyFile from 2.0/settings to app/settings
CopyFile success: 1
Migrating application data from "2.1" to "app"
Attempt CopyFile from 2.1/settings to app/settings
CopyFile success: 1
Attempt CopyFile from 2.1/a/.hidden to app/a/.hidden
CopyFile success: 1
Migrating localStorage from "old-storage" to "storage"
Attempt CopyFile from old-storage to storage
CopyFile success: 1
Attempt CopyFile from old-storage to backup
CopyFile success: 1
Priming app/mrd-2.umo
Attempt CopyFile from bundle/mrd-2.umo to app/mrd-2.umo
CopyFile success: 1
Loading Odrel package "app/mrd-2.umo"
Attempt CopyFile from bundle/vek-2/executable to app/runtime/vek-2/executable
CopyFile success: 1
Loading Vekara at "app/runtime/vek-2/executable"
"""
  assert world.launch({}) == {}
  assert world.lines == """\
Dianostics: ON
Priming app/mrd-2.umo
Loading Odrel package "app/mrd-2.umo"
Loading Vekara at "app/runtime/vek-2/executable"
"""


def test_an_update_is_copied_and_started(world):
  assert world.launch({"bundle/mrd-2.umo": "new", "bundle/vek-2/executable": RUNTIME}) == {
    "app/mrd-2.umo": "new", "app/runtime/vek-2/executable": RUNTIME}
  assert world.arguments == command_line(package="mrd-2.umo", runtime="vek-2")


@pytest.mark.parametrize("source", [
  "2.1/a/.hidden", "old-storage", "bundle/mrd-2.umo", "bundle/vek-2/executable"])
def test_a_launch_waits_for_another_and_makes_good_what_a_kill_leaves(world, source):
  world.lay_out(FRESH)
  before = world.snapshot()
  os.truncate(world.path(source), 1 << 34)
  first = world.start()
  end = time.monotonic() + 30
  while int(Path(f"/proc/{first.pid}/io").read_text().split()[3]) < 1 << 20:  # bytes written
    assert first.poll() is None and time.monotonic() < end, "It does not come to the copy."
    time.sleep(0.001)
  first.send_signal(signal.SIGSTOP)
  world.lay_out({source: FRESH[source]})
  second = world.start()
  time.sleep(0.5)
  assert second.poll() is None
  parts = [path for path in world.root.rglob(PART) if path.is_file()]
  assert [path.stat().st_mode & 0o777 for path in parts] == [0o600]  # nobody else may read it
  first.kill()
  second.communicate(timeout=30)
  assert world.changes_since(before) == {source: FRESH[source]} | CHANGES


def test_parts_are_removed_and_never_brought_along(world):
  assert world.launch({
    f"app/{PART}": "-> ../../../other", "other/file": "own", f"app/runtime/{PART}": "",
    f"app/Local Storage/{PART}": "", f"app/a/{PART}": "-> ../../../../other/file",
    f"2.0/{PART}": "", f"2.0/a/{PART}.42": "", f"2.0/a/{PART}s": "no part",
  }) == {
    f"app/{PART}": GONE, f"app/runtime/{PART}": GONE, f"app/Local Storage/{PART}": GONE,
    f"app/a/{PART}": GONE, f"app/a/{PART}s": "no part", "2.0/migrated": ""}
