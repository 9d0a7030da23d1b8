import os
import time
from signal import SIGSTOP

import pytest
from conftest import GONE, PART, RUNTIME, Path, command_line

FRESH = {
  "app": GONE, "app/ini": "own", "2.0/ini": "old", "2.1/ini": (0o640, "new"), "2.1/.a/.b": "",
  "2.1/dir": None, "2.2": "-> ../../other", "other/f": "", "old-storage": "web", "bundle/z.umo": "",
  "bundle/mrd-2.umo": "", "bundle/mrd-3.x": "", "bundle/vek-2/executable": RUNTIME}
CHANGES = {
  "app/ini": (0o640, "new"), "app/.a/.b": "", "2.0/migrated": "", "2.1/migrated": "",
  "storage": "web", "backup": "web", "old-storage": GONE, "app/mrd-2.umo": "",
  "app/runtime/vek-2/executable": RUNTIME}


def test_a_first_launch_brings_all_along_and_a_later_one_nothing(world):
  assert world.launch(FRESH) == CHANGES
  assert world.lines == """\
Dianostics: ON
Migrating application data from "2.0" to "app"
Attempt CopyFile from 2.0/ini to app/ini
CopyFile success: 1
Migrating application data from "2.1" to "app"
Attempt CopyFile from 2.1/ini to app/ini
CopyFile success: 1
Attempt CopyFile from 2.1/.a/.b to app/.a/.b
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
  assert world.launch({
    "bundle/mrd-20.umo": "", "bundle/vek-1/older": "", "bundle/vek-20/executable": RUNTIME,
    "bundle/vek-20/A": None, "bundle/vek-20/.x": "-> A",
  }, "x") == {
    "app/mrd-20.umo": "", "app/runtime/vek-20/executable": RUNTIME, "app/runtime/vek-20/.x": "-> A"}
  assert world.arguments == command_line("x", package="mrd-20.umo", runtime="vek-20")
  assert world.inherited == ["XDG_DATA_HOME=user//", "other"]


@pytest.mark.parametrize("source", [
  "2.1/.a/.b", "old-storage", "bundle/mrd-2.umo", "bundle/vek-2/executable"])
def test_a_launch_waits_for_another_and_makes_a_kill_good(world, source):
  world.lay_out(FRESH)
  before = world.snapshot()
  os.truncate(world.path(source), 1 << 34)
  first = world.start()
  end = time.monotonic() + 30
  while int(Path(f"/proc/{first.pid}/io").read_text().split()[3]) < 1 << 20:  # written
    assert first.poll() is None and time.monotonic() < end, "no copy"
    time.sleep(0.001)
  first.send_signal(SIGSTOP)
  world.lay_out({source: FRESH[source]})
  second = world.start()
  time.sleep(0.5)
  assert second.poll() is None
  assert 0o600 in [path.stat().st_mode & 0o777 for path in world.root.rglob(PART)]
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
