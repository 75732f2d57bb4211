"""Looks written as files for other programs: what comes back grades as the look does."""

import math
import xml.etree.ElementTree

import numpy as np
import pytest

from conftest import (BIN, COOL, IMAGES, LOOKS, WARM, assert_alike, host, render, succeed, tiff,
                      write_png)

UNSEEN = "1/4096"
CDL = ('<ColorCorrection id="{name}"><SOPNode><Slope>{slope}</Slope><Offset>{offset}</Offset>'
       "<Power>{power}</Power></SOPNode><SatNode><Saturation>{sat}</Saturation></SatNode>"
       "</ColorCorrection>")
GENTLE = {"name": "gentle", "slope": "0.9 0.95 0.8", "offset": "0.02 0.01 0.1", "power": "1 1 1",
          "sat": "0.8"}


def write_cube(path, size, grading, *header):
    """A cube of a function of red, green and blue arrays from 0 to 1."""
    axis = np.linspace(0, 1, size)
    blue, green, red = np.meshgrid(axis, axis, axis, indexing="ij")
    rows = np.stack(grading(red, green, blue), -1).reshape(-1, 3)
    path.write_text("\n".join([*header, f"LUT_3D_SIZE {size}",
                               *(" ".join(f"{v:.7f}" for v in row) for row in rows)]) + "\n")
    return path


def film(red, green, blue):
    """A soft S with crossed channels."""
    def curve(x):
        return 0.5 + 0.5 * np.tanh(2.2 * (x - 0.45)) / math.tanh(1.2)
    return (0.04 + 0.9 * curve(0.9 * red + 0.1 * green) * 0.95,
            0.02 + 0.93 * curve(green), 0.06 + 0.85 * curve(0.8 * blue + 0.2 * red))


def rows_of(path):
    """The numbers of a .cube file."""
    return np.array([[float(word) for word in line.split()]
                     for line in path.read_text().splitlines() if line[:1] in "-.0123456789"])


def convert(source, target, *options):
    """The lines that the program says of it, by their names."""
    text = succeed(host("look", source, target, *options)).output.decode()
    said = {}
    for line in text.splitlines():
        said.setdefault(line[:15].strip(), []).append(line[15:])
    return said


@pytest.fixture
def inputs(tmp_path):
    """Pictures of all kinds: codes, display values as floats, and floats beyond black and white."""
    rng = np.random.default_rng(5)
    write_png(tmp_path / "codes.png", rng.integers(0, 256, (60, 80, 3)))
    (tmp_path / "within.tif").write_bytes(tiff(rng.random((60, 80, 3)).astype("<f4")))
    (tmp_path / "beyond.tif").write_bytes(tiff((rng.random((60, 80, 3)) * 2 - 0.5).astype("<f4")))
    return [tmp_path / "codes.png", tmp_path / "within.tif", tmp_path / "beyond.tif"]


def assert_grades_alike(first, second, pictures, folder, *options):
    for picture in pictures:
        for name, look in (("first", first), ("second", second)):
            succeed(render(picture, folder / f"{name}.tif", "--depth", "float", "--bits", 32,
                           "--linear", "off", "--overwrite", *options, look=look))
        assert_alike(folder / "first.tif", folder / "second.tif", UNSEEN)


@pytest.mark.parametrize("size", [17, 33, 65])
def test_a_cube_comes_back_as_it_is(size, inputs, tmp_path):
    source = write_cube(tmp_path / "film.cube", size, film, 'TITLE "My film"')
    said = convert(source, tmp_path / "record.look")
    convert(tmp_path / "record.look", tmp_path / "own.cube")
    said = convert(source, tmp_path / "asked.cube", "--points", size)
    assert "warning" not in said
    assert said["written"][0].split(", ")[1] == f"3D LUT of {size} points a side"
    own = (tmp_path / "own.cube").read_text()
    assert own.startswith(f'TITLE "My film"\nLUT_3D_SIZE {size}\n') and "DOMAIN" not in own
    assert own == (tmp_path / "asked.cube").read_text()
    assert np.abs(rows_of(tmp_path / "own.cube") - rows_of(source)).max() < 1 / 8192
    convert(tmp_path / "own.cube", tmp_path / "again.cube")
    assert (tmp_path / "again.cube").read_text() == own, "a look does not wear out"
    assert_grades_alike(source, tmp_path / "own.cube", inputs, tmp_path)


@pytest.mark.parametrize("keywords", [["LUT_IN_VIDEO_RANGE"], ["LUT_OUT_VIDEO_RANGE"],
                                      ["LUT_IN_VIDEO_RANGE", "LUT_OUT_VIDEO_RANGE"]])
def test_a_cube_in_video_range_becomes_one_that_every_program_reads(keywords, inputs, tmp_path):
    source = write_cube(tmp_path / "video.cube", 33, film, *keywords)
    said = convert(source, tmp_path / "full.cube")
    text = (tmp_path / "full.cube").read_text()
    assert "VIDEO" not in text and ("DOMAIN_MIN -0.07" in text) == ("LUT_IN_VIDEO_RANGE" in keywords)
    assert not [line for line in said.get("warning", []) if "error" in line or "outside" in line]
    assert_grades_alike(source, tmp_path / "full.cube", inputs, tmp_path)


def shaper(path):
    curve = [math.log2(1 + 1000 * 16 * i / 1023) / math.log2(16001) for i in range(1024)]
    cube = write_cube(path, 17, film).read_text().split("\n", 1)[1]
    path.write_text("LUT_1D_SIZE 1024\nLUT_1D_INPUT_RANGE 0 16\nLUT_3D_SIZE 17\n"
                    + "".join(f"{v:.8f} {v:.8f} {v:.8f}\n" for v in curve) + cube)
    return path


def test_a_cube_behind_curves_stays_behind_them(inputs, tmp_path):
    source = shaper(tmp_path / "shaper.cube")
    said = convert(source, tmp_path / "both.cube")
    assert said["written"][0].split(", ")[1:3] == ["1D LUT of 1024 entries",
                                                   "3D LUT of 17 points a side"]
    assert ["--points" in line for line in said["warning"]] == [True]
    assert_grades_alike(source, tmp_path / "both.cube", inputs, tmp_path)


def test_a_cube_that_cannot_follow_the_look_says_how_far_off_it_is(inputs, tmp_path):
    source = shaper(tmp_path / "shaper.cube")
    said = convert(source, tmp_path / "one.cube", "--points", 33)
    assert said["written"][0].split(", ")[1] == "3D LUT of 33 points a side"
    told = [line for line in said["warning"] if "largest error" in line][0]
    largest = float(told.split("largest error ")[1].split()[0]) / 255
    worst = [float(word) for word in told.split(", at ")[1].split()]
    (tmp_path / "worst.tif").write_bytes(tiff(np.array([[worst]], "<f4")))
    for name in ("shaper", "one"):
        succeed(render(tmp_path / "worst.tif", tmp_path / f"{name}.tif", "--linear", "off", "--bits",
                       32, look=tmp_path / f"{name}.cube"))
    apart = [tmp_path / "shaper.tif", tmp_path / "one.tif", "--fail-over"]
    succeed(host("compare", *apart, largest * 1.1))
    assert host("compare", *apart, largest * 0.9).code == 4


def test_a_correction_becomes_a_cube(inputs, tmp_path):
    source = tmp_path / "gentle.cc"
    source.write_text(CDL.format(**GENTLE))
    said = convert(source, tmp_path / "gentle.cube")
    assert said["written"][0].split(", ")[1] == "3D LUT of 33 points a side"
    assert not [line for line in said["warning"] if "largest error" in line]
    assert [line for line in said["warning"] if "outside 0 to 1 the cube clips" in line]
    assert_grades_alike(source, tmp_path / "gentle.cube", inputs[:2], tmp_path)


@pytest.mark.parametrize("source", [WARM, LOOKS / "bleach_bypass.cube", COOL],
                         ids=lambda path: path.stem)
def test_the_sample_looks_come_back(source, inputs, tmp_path):
    said = convert(source, tmp_path / "again.cube")
    assert not [line for line in said.get("warning", []) if "error" in line or "outside" in line]
    assert_grades_alike(source, tmp_path / "again.cube", inputs, tmp_path)


@pytest.mark.parametrize("tables,change", [
    ("1D", {"power": "0.8 1.4 2.5", "sat": "1"}),
    ("1D", {"slope": "0 8 1", "offset": "0.3 -2 0", "power": "0.5 1.3 1.1", "sat": "1"}),
    ("1D 3D", {"offset": "0 0.01 0", "power": "0.65 1.4 2.5", "sat": "0"}),
    ("1D 3D", {"slope": "2 4 0.5", "offset": "-0.5 -0.1 0.4", "sat": "0.5"})])
def test_a_bent_correction_comes_back_from_curves(tables, change, inputs, tmp_path):
    source = tmp_path / "bent.cc"
    source.write_text(CDL.format(**GENTLE | change))
    said = convert(source, tmp_path / "bent.cube")
    assert [part[:2] for part in said["written"][0].split(", ")[1:-1]] == tables.split()
    told = said.get("warning", [])
    assert ["--points" in line for line in told] == ([True] if tables == "1D 3D" else [])
    assert_grades_alike(source, tmp_path / "bent.cube", inputs, tmp_path)


def test_more_colour_than_a_cube_can_clamp_is_told(inputs, tmp_path):
    source = tmp_path / "vivid.cc"
    source.write_text(CDL.format(**GENTLE | {"sat": "1.5"}))
    said = convert(source, tmp_path / "vivid.cube")
    told = [line for line in said["warning"] if "largest error" in line][0]
    assert 1 < float(told.split("largest error ")[1].split()[0]) < 3


def test_a_written_cube_grades_a_photograph_alike(tmp_path):
    convert(WARM, tmp_path / "again.cube")
    for name, look in (("a", WARM), ("b", tmp_path / "again.cube")):
        succeed(render(IMAGES / "coffee.png", tmp_path / f"{name}.png", look=look))
    assert (tmp_path / "a.png").read_bytes() == (tmp_path / "b.png").read_bytes()


@pytest.mark.parametrize("options", [[], ["--unclamped"]])
def test_a_correction_comes_back_as_a_correction(options, inputs, tmp_path):
    source = tmp_path / "gentle.cc"
    source.write_text(CDL.format(**GENTLE | {"power": "1.3 0.7 1", "sat": "1.4"}))
    said = convert(source, tmp_path / "again.cc", *options)
    assert ["--unclamped" in line for line in said.get("warning", [])] == [True] * len(options)
    root = xml.etree.ElementTree.parse(tmp_path / "again.cc").getroot()
    space = "{urn:ASC:CDL:v1.2}"
    assert root.tag == space + "ColorCorrection" and root.get("id") == "gentle"
    assert root.findtext(f"{space}SOPNode/{space}Power") == "1.3 0.7 1"
    assert_grades_alike(source, tmp_path / "again.cc", inputs, tmp_path, *options)


def test_a_correction_file_of_a_cube_is_refused(tmp_path):
    result = host("look", WARM, tmp_path / "warm.cc")
    assert result.code == 1 and result.output == b""
    line = result.only_line()
    assert "the look has a 3D LUT" in line and "write a .cube" in line
    assert not (tmp_path / "warm.cc").exists()


@pytest.mark.parametrize("words", [
    ["a.cube", "--points", 1], ["a.cube", "--points", 66], ["a.cc", "--points", 17],
    ["a.look", "--points", 17], ["a.cube", "--linear", "on"], ["a.cc", "--linear", "off"],
    ["a.3dl"], ["a"]])
def test_what_a_file_cannot_have_is_wrong_usage(words, tmp_path):
    result = host("look", COOL, *words, cwd=tmp_path)
    assert result.code == 2
    result.only_line()
    assert not list(tmp_path.iterdir())


@pytest.fixture
def other_renderer(tmp_path):
    """The folder of a renderer that takes every file for a record and inverts pictures."""
    (tmp_path / "its.look").write_bytes(b"a record of another kind")
    return BIN / "renderers/reads_files"


def test_a_look_of_another_renderer_is_sampled_through_that_renderer(other_renderer, tmp_path):
    said = succeed(host("look", tmp_path / "its.look", tmp_path / "its.cube", "--points", 2,
                        "--renderer", other_renderer)).output.decode()
    assert "outside 0 to 1 the cube clips" in said
    assert (tmp_path / "its.cube").read_text() == (
        "LUT_3D_SIZE 2\n1 1 1\n0 1 1\n1 0 1\n0 0 1\n1 1 0\n0 1 0\n1 0 0\n0 0 0\n")


def test_a_correction_file_of_another_renderers_look_is_refused_by_its_name(other_renderer,
                                                                            tmp_path):
    result = host("look", tmp_path / "its.look", tmp_path / "its.cc", "--renderer", other_renderer)
    assert result.code == 1
    assert "GZ3Renderer_x64.dll can read the record" in result.only_line()
