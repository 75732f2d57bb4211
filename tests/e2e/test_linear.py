"""Which pictures are graded as linear light: those that are."""

import json
import struct

import numpy as np
import pytest

from conftest import (IMAGES, LOOKS, WARM, float_tiff, host, pixels, render, succeed, tiff,
                      write_deep_png)

SAMPLE_LOOKS = sorted(path for kind in ("*.cube", "*.cc") for path in LOOKS.glob(kind))
PROFILE_TAG = 34675


def profile(curve):
    """An ICC profile whose three channels have one curve."""
    tags = [(name, 176, len(curve)) for name in (b"rTRC", b"gTRC", b"bTRC")]
    table = struct.pack(">I", len(tags)) + b"".join(struct.pack(">4sII", *tag) for tag in tags)
    return (bytes(128) + table).ljust(176, b"\0") + curve


LINEAR_CURVE = b"curv" + bytes(8)
DISPLAY_CURVE = b"curv" + struct.pack(">IIH", 0, 1, 0x233)  # an exponent of 2.2


def first_line(source, folder, *options, look=WARM):
    """What the line about the input says of the light, and the picture that was rendered."""
    target = folder / "first_line.tif"
    result = succeed(render(source, target, "--bits", 16, "--overwrite", *options, look=look))
    return result.lines[0].split("rendered in ")[1], target.read_bytes()


@pytest.mark.parametrize("look", SAMPLE_LOOKS, ids=lambda path: path.stem)
def test_8_and_16_bits_of_a_picture_are_graded_alike(look, tmp_path):
    source = IMAGES / "coffee.png"
    write_deep_png(tmp_path / "deep.png", pixels(source) * 257)
    succeed(render(source, tmp_path / "8.png", look=look))
    succeed(render(tmp_path / "deep.png", tmp_path / "16.png", look=look))
    graded = pixels(tmp_path / "16.png", "rgb48le") / 257
    assert np.abs(graded - pixels(tmp_path / "8.png")).max() <= 1


def test_a_picture_of_floats_is_graded_as_linear_light(linear, tmp_path):
    line, graded = first_line(linear, tmp_path)
    assert line == "float, as linear light (it holds floats, and nothing in it says otherwise)"
    assert graded == first_line(linear, tmp_path, "--linear", "auto")[1]
    assert first_line(linear, tmp_path, "--linear", "on") == ("float, as linear light (--linear on)",
                                                              graded)
    line, other = first_line(linear, tmp_path, "--linear", "off")
    assert line == "float, not as linear light (--linear off)"
    assert other != graded


def test_whole_numbers_are_not_graded_as_linear_light(small, tmp_path):
    line, graded = first_line(small, tmp_path, "--depth", "float")
    assert line == "float, not as linear light (its codes are whole numbers)"
    assert graded == first_line(small, tmp_path, "--depth", "float", "--linear", "off")[1]
    assert graded != first_line(small, tmp_path, "--depth", "float", "--linear", "on")[1]
    assert first_line(small, tmp_path)[0] == "8 bits, not as linear light (8 bits never are)"


def test_json_says_it_too(linear, tmp_path):
    result = succeed(render(linear, tmp_path / "a.png", "--progress", "json"))
    note = json.loads(result.lines[0])
    assert note["event"] == "note"
    assert note["text"].endswith(
        "float, as linear light (it holds floats, and nothing in it says otherwise)")


def test_a_look_whose_option_is_off_is_not_linear(linear, tmp_path):
    succeed(host("look", WARM, tmp_path / "off.look", "--linear", "off"))
    line, graded = first_line(linear, tmp_path, look=tmp_path / "off.look")
    assert line == "float, not as linear light (the look's option is off)"
    assert graded == first_line(linear, tmp_path, "--linear", "off")[1]


@pytest.mark.parametrize("curve, said", [
    (LINEAR_CURVE, "as linear light (its colour profile is linear)"),
    (DISPLAY_CURVE, "not as linear light (its colour profile is not linear)")])
def test_the_colour_profile_of_floats_is_believed(curve, said, tmp_path):
    path = tmp_path / "a.tif"
    path.write_bytes(float_tiff(np.random.default_rng(1),
                                tags={PROFILE_TAG: ("B", profile(curve))}))
    assert first_line(path, tmp_path)[0] == "float, " + said


def test_a_linear_profile_makes_no_whole_numbers_linear(tmp_path):
    path = tmp_path / "a.tif"
    deep = np.random.default_rng(1).integers(0, 65536, (4, 4, 3)).astype("<u2")
    path.write_bytes(tiff(deep, tags={PROFILE_TAG: ("B", profile(LINEAR_CURVE))}))
    assert first_line(path, tmp_path)[0].startswith("float, not as linear light")


def test_what_was_rendered_into_floats_is_read_back_as_what_it_was(small, linear, tmp_path):
    for source, options, said in ((small, ["--depth", "float"], "not as linear light (its "
                                   "description says that it is display-encoded)"),
                                  (small, ["--depth", "float", "--linear", "on"],
                                   "as linear light (it holds floats"),
                                  (linear, [], "as linear light (it holds floats"),
                                  (linear, ["--linear", "off"], "not as linear light (its desc")):
        succeed(render(source, tmp_path / "floats.tif", "--bits", 32, "--overwrite", *options))
        assert first_line(tmp_path / "floats.tif", tmp_path)[0].startswith("float, " + said)


def test_a_saved_project_keeps_the_option_that_the_render_did_not_obey(small, linear, tmp_path):
    project = tmp_path / "a.glz"
    succeed(render(small, tmp_path / "a.png", "--depth", "float", "--save-project", project))
    for words in (["--project", project], ["--look", WARM]):
        succeed(host("render", linear, tmp_path / f"{words[0]}.png", *words))
    assert (tmp_path / "--project.png").read_bytes() == (tmp_path / "--look.png").read_bytes()


def test_keyframes_are_not_graded_as_linear_light_either(small, tmp_path):
    for linear in ("auto", "off"):
        succeed(host("render", small, tmp_path / f"{linear}.png", "--depth", "float", "--key",
                     f"0f={WARM}", "--linear", linear, "--save-project", tmp_path / f"{linear}.glz"))
    assert (tmp_path / "auto.png").read_bytes() == (tmp_path / "off.png").read_bytes()
    assert (tmp_path / "auto.glz").read_bytes() != (tmp_path / "off.glz").read_bytes()
