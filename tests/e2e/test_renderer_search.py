"""Without --renderer the program uses the renderer that an editor in its folder would get."""

import json
import shutil

import pytest

from conftest import BIN
from wine_prefix import WinePrefix, windows_path

EACH_PLACE = pytest.mark.parametrize(
    "first", range(6), ids=["program", "system32", "system", "windows", "current", "path"])
NAME = "GZ3Renderer_x64.dll"
COMPLETE = BIN / "renderers/complete" / NAME
WITHOUT_OPTIONAL = BIN / "renderers/without_optional" / NAME


@pytest.fixture(scope="module")
def prefix(tmp_path_factory):
    made = WinePrefix(tmp_path_factory.mktemp("renderer_search") / "prefix")
    yield made
    made.close()


class Places:
    """Folders that the system searches, in its order."""

    def __init__(self, prefix, program, folder):
        self.prefix = prefix
        self.program = program.parent
        self.windows = prefix.drive_c / "windows"
        self.current = folder / "current"
        self.path = folder / "path"
        (self.windows / "system").mkdir(exist_ok=True) # Wine searches it, but does not make it
        self.current.mkdir()
        self.path.mkdir()

    def all(self):
        return [self.program, *self.of_the_system(), self.current, self.path]

    def of_the_system(self):
        return [self.windows / "system32", self.windows / "system", self.windows]

    def report(self):
        """What the program says about the renderer."""
        result = self.prefix.run(self.program / "glazelhost.exe", "info", "--json",
                                 cwd=self.current, env={"WINEPATH": windows_path(self.path)})
        report = json.loads(result.output)["renderer"]
        assert result.code == (0 if report["usable"] else 1), result
        return report

    def shown(self, folder):
        """The renderer's file in `folder` as the program shows it."""
        if folder.is_relative_to(self.prefix.drive_c):
            return "C:\\" + str(folder.relative_to(self.prefix.drive_c) / NAME).replace("/", "\\")
        return windows_path(folder / NAME)


@pytest.fixture
def places(prefix, lonely_program, tmp_path, monkeypatch):
    monkeypatch.delenv("GLAZEL_RENDERER", raising=False)
    made = Places(prefix, lonely_program, tmp_path)
    yield made
    for folder in made.of_the_system():
        (folder / NAME).unlink(missing_ok=True)


def assert_same_file(shown, expected):
    assert shown.lower() == expected.lower()


@EACH_PLACE
def test_the_first_place_in_the_systems_order_wins(first, places):
    folders = places.all()
    shutil.copy(COMPLETE, folders[first])
    for folder in folders[first + 1:]:
        shutil.copy(WITHOUT_OPTIONAL, folder)
    report = places.report()
    assert_same_file(report["file"], places.shown(folders[first]))
    assert report["usable"] and not report["absentOptionalEntryPoints"]


def test_a_renderer_in_no_place_is_missing(places):
    report = places.report()
    assert report["file"] == NAME
    assert report["problem"] == "the renderer is in none of the places where the system looks"
    assert report["remedy"] == "name its folder with --renderer DIR"


@EACH_PLACE
def test_a_failure_is_explained_with_the_file_that_did_not_load(first, places):
    folders = places.all()
    (folders[first] / NAME).write_text("hello")
    for folder in folders[first + 1:]:
        shutil.copy(COMPLETE, folder)
    report = places.report()
    assert_same_file(report["file"], places.shown(folders[first]))
    assert report["problem"] == "it is not a Windows DLL"


def test_a_32_bit_renderer_is_named_as_such(places):
    data = bytearray(COMPLETE.read_bytes())
    header = int.from_bytes(data[0x3C:0x40], "little")
    data[header + 4:header + 6] = b"\x4C\x01"
    (places.current / NAME).write_bytes(data)
    report = places.report()
    assert_same_file(report["file"], places.shown(places.current))
    assert report["problem"] == "it is 32-bit (x86) but this program is 64-bit (x64)"


def test_a_library_that_the_renderer_lacks_is_named(places):
    shutil.copy(BIN / "libraries/lonely/needs_neighbour.dll", places.path / NAME)
    report = places.report()
    assert_same_file(report["file"], places.shown(places.path))
    assert report["missingLibraries"] == ["neighbour.dll"]
    assert "it needs neighbour.dll, which cannot be found" in report["problem"]


def test_a_missing_entry_point_is_named(places):
    shutil.copy(BIN / "renderers/without_GetSessionIcon" / NAME, places.current)
    report = places.report()
    assert_same_file(report["file"], places.shown(places.current))
    assert report["missingEntryPoints"] == ["GetSessionIcon"] and not report["usable"]
