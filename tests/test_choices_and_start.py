import pytest
from conftest import GONE, NOBODY, RUNTIME, command_line


@pytest.mark.parametrize("version, bundled, packages, loaded", [
  (GONE, GONE, ["mrd-10.umo", "mrd-9.umo", "MRD-99.UMO", "mrd-99.umo.x", "z.umo"], "mrd-9.umo"),
  ("3\nmore", "1", ["MRD-3.UMO", "mrd-4.umo"], "MRD-3.UMO"),
  (GONE, "2.*", ["mrd-2.1.umo", "mrd-2.2.umo", "mrd-3.umo"], "mrd-2.2.umo"),
  (r"\x", GONE, [r"mrd-\x.umo", "mrd-x.umo"], r"mrd-\x.umo")])
def test_the_greatest_package_of_the_version_is_loaded(world, version, bundled, packages, loaded):
  world.lay_out({f"app/{package}": "" for package in packages})
  assert world.launch({"app/version.txt": version, "bundle/version.txt": bundled}) == {}
  assert world.arguments == command_line(package=loaded)


@pytest.mark.parametrize("version", ["", "1 ", "1\r\n", "2"])
def test_without_a_package_of_the_version_none_is_loaded(world, version):
  assert world.launch({"app/version.txt": version, "bundle/version.txt": "1"}, code=2) == {}


def test_a_directory_is_the_package_and_a_link_to_one_the_runtime(world):
  assert world.launch({
    "app/mrd-2.umo": None, "bundle/mrd-2.umo": "", "app/runtime/VEK-99": None,
    "app/runtime/vek-10": None, "app/runtime/vek-9": "-> ../../../../other",
    "other/executable": RUNTIME, "bundle/vek-9/file": "",
  }) == {}
  assert world.arguments == command_line(package="mrd-2.umo", runtime="vek-9")


def test_no_runtime_is_started_in_place_of_the_greatest(world):
  assert world.launch({"app/runtime/zzz": RUNTIME}, code=4) == {}


def test_the_runtime_inherits_everything_unchanged(world):
  arguments = ["", " b c ", "line\nfeed", "\udcff", "--umo-enable-logging", "/tmp", "-n", "-n"]
  world.environment |= {"ODREL_OPEN_DOCUMENTS": "/a \udcff", "EMPTY": ""}
  # The option leaves two signals ignored, as they are in Python.
  assert world.launch({}, *arguments, restore_signals=False) == {}
  assert world.arguments == command_line("/a \udcff", *arguments)
  assert world.inherited == [
    "XDG_DATA_HOME=user//", "ODREL_OPEN_DOCUMENTS=/a \udcff", "EMPTY=", "other", "ignored signals"]


def test_the_first_document_of_the_last_request_is_opened(world):
  world.environment["ODREL_OPEN_DOCUMENTS"] = "/first\n\n/last\t/other\n"
  assert world.launch({}) == {}
  assert world.arguments == command_line("/last")


def test_the_user_data_directory_is_found_and_never_made(world):
  world.environment = {"HOME": f"{world.root}/home"}
  assert world.launch({"home/.local": (0o777, None)}, code=2, user=NOBODY) == {}
  world.environment["XDG_DATA_HOME"] = "relative"
  assert world.launch({"home/.local/share": None}, code=2, umask=0) == {
    "home/.local/share/Torvane/Torvane Odrel 2.2": None}
  world.environment["XDG_DATA_HOME"] = f"{world.root}/link"
  assert world.launch({"link": "-> other"}, code=2) == {"other/Torvane/Torvane Odrel 2.2": None}
