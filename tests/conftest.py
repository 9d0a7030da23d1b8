"""A world has the launcher in "bundle", and a package and a runtime in the application's directory,
"app". launch() lays out files, launches, and returns all that has changed. A path begins with one
of PLACES; "executable" is a runtime's. What is there is a text, "-> TEXT" for a link, None for a
directory, or GONE; (MODE, TEXT) where the mode is unusual."""
import os
import shutil
import tempfile
from functools import partial
from pathlib import Path
from resource import RLIMIT_FSIZE, RLIMIT_NPROC, setrlimit
from subprocess import PIPE, STDOUT, Popen

import pytest

APP = "user/Torvane/Torvane Odrel 2.2"
PLACES = {  # longer ones first
  "backup": f"{APP}/qrc__0.localstorage_migrated", "old-storage": f"{APP}/qrc__0.localstorage",
  "storage": f"{APP}/Local Storage/umop__0.localstorage",
  **{f"journal-2.{n}": f"{APP}/Torvane Odrel 2.{n}.unmarked" for n in "012"}, "app": APP,
  **{f"2.{n}": f"user/Torvane, Inc./Torvane Odrel 2.{n}" for n in "012"},
  **{name: name for name in ("bundle", "user", "other", "home", "link")}}
EXECUTABLE = "Torvane Odrel.app/Contents/MacOS/Torvane Umo"
PART = ".Torvane Odrel.part"
GONE = "(gone)"
LARGE = "(large)"
RUNTIME = (0o755, "(runtime)")  # writes down what it receives, and fails
TEXTS = {LARGE: "x" * 40000, "(a byte over)": "x" * 32769, RUNTIME[1]: """#!/bin/sh
{ cat /proc/$$/cmdline; printf '\\1\\0'; cat /proc/$$/environ
  readlink /proc/$$/cwd /proc/$$/fd/* | grep -e other -e 'Odrel 2.2$' | tr '\\n' '\\0'
  grep -q '^SigIgn.*1..1...$' /proc/$$/status && printf 'ignored signals\\0'
} >"${0%%/world/*}/received"
"""}
NAMES = {text: name for name, text in TEXTS.items()}
FULL_DISK = partial(setrlimit, RLIMIT_FSIZE, (32768, 32768))
NO_PROCESS = partial(setrlimit, RLIMIT_NPROC, (0, 0))  # does not hold for root
NOBODY = None if os.geteuid() else 65534


class World:
  def __init__(self, directory):
    os.umask(0o022)
    self.root, self.record = Path(directory, "world"), Path(directory, "received")
    self.environment, self.processes = {"XDG_DATA_HOME": f"{self.root}/user//"}, []
    self.lay_out({"app/mrd-1.umo": "", "app/runtime/vek-1/executable": RUNTIME})
    self.lay_out({"bundle": None, "other": None})
    shutil.copy(os.environ.get("LAUNCHER", "build/odrel"), self.path("bundle/odrel"))

  def path(self, name):
    place, _, rest = name.partition("/")
    return self.root / PLACES[place] / rest.replace("executable", EXECUTABLE)

  def shorten(self, text):
    text = os.fsdecode(text or "").replace(EXECUTABLE, "executable")
    for place, path in PLACES.items():
      text = text.replace(f"{self.root}/{path}", place)
    return text

  def lay_out(self, files):
    for name, entry in files.items():
      path = self.path(name)
      path.parent.mkdir(parents=True, exist_ok=True)
      shutil.rmtree(path, ignore_errors=True)  # where it is a directory
      path.unlink(missing_ok=True)
      mode, what = entry if isinstance(entry, tuple) else (None, entry)
      if what is None:
        path.mkdir()
      elif what.startswith("-> "):
        path.symlink_to(what[3:])
      elif what != GONE:
        path.write_bytes(os.fsencode(TEXTS.get(what, what)))
      if mode:
        path.chmod(mode)

  def entry(self, path):
    info = path.lstat()
    mode = info.st_mode & 0o7777
    which = info.st_ino, info.st_mtime_ns  # shows when an equal file has taken its place
    if path.is_symlink():
      return f"-> {path.readlink()}", which
    if path.is_dir():
      return None if mode == 0o755 else (mode, None), None
    text = "" if path.name == "odrel" else os.fsdecode(path.read_bytes())
    what = NAMES.get(text, text)
    return what if mode == 0o644 else (mode, what), which

  def snapshot(self):
    return {path: self.entry(path) for path in self.root.rglob("*")}

  def changes_since(self, before):
    after = self.snapshot()
    changed = {path for path in before | after if before.get(path) != after.get(path)}
    # A directory that was made for a file goes without saying.
    implied = {path.parent for path in changed if after.get(path.parent) == (None, None)}
    return {self.shorten(path): after.get(path, [GONE])[0] for path in changed - implied}

  def start(self, *arguments, stderr=STDOUT, **options):
    process = Popen([self.path("bundle/odrel"), *arguments], env=self.environment, stdout=PIPE,
                    stderr=stderr, cwd=self.path("other"), **options)
    self.processes.append(process)
    return process

  def launch(self, files, *arguments, code=0, **options):
    self.lay_out(files)
    before = self.snapshot()
    self.record.write_text("\1")
    process = self.start(*arguments, **options)
    # The runtime has the streams as well, so this waits for both.
    self.lines, self.errors = map(self.shorten, process.communicate(timeout=30))
    notes = self.shorten(self.record.read_bytes()).split("\1")
    self.arguments, self.inherited = [part.split("\0")[1:-1] for part in notes]
    assert process.returncode == code
    return self.changes_since(before)


def command_line(*arguments, package="mrd-1.umo", runtime="vek-1"):
  return [f"app/runtime/{runtime}/executable", "--umo-entry-url=umop:///index.html?production",
          f"--umo-file=app/{package}", "--umo-enable-logging", "--umo-log-level=0",
          "--odrel=bundle/odrel", *arguments, "--disable-accelerated-compositing"]


@pytest.fixture
def world():
  with tempfile.TemporaryDirectory() as directory:
    os.chmod(directory, 0o755)  # for NOBODY
    world = World(directory)
    yield world
    for process in world.processes:
      process.kill()
      print(*map(world.shorten, process.communicate()), f"exit code {process.returncode}", sep="")
