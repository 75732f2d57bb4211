"""One pixel through the plug-in, told in numbers, against what is rendered and against numpy."""

import json

import numpy as np
import pytest

from conftest import (BIN, CLIP, COOL, ROOT, WARM, host, pixels, render, succeed, tiff, write_clip,
                      write_png)

SLOPE, OFFSET = np.array([0.74, 0.84, 1.04]), np.array([0, 0.006, 0.022])
POWER, SATURATION = np.array([1.28, 1.2, 1.08]), 0.72


def explain(*words, look=COOL, **more):
    return json.loads(succeed(host("explain", *words, "--look", look, "--json", **more)).output)


def step(told, name):
    return [row for row in told["steps"] if row["step"] == name][0]


def test_each_step_of_a_correction_is_that_of_the_formula(small):
    value = pixels(small)[7, 3] / 255
    told = explain("3,7", small)
    assert told["version"] == 1
    assert told["place"] == {"path": str(small), "frame": 1, "x": 3, "y": 7}
    assert told["depth"] == "8" and told["linear"] is False
    assert told["input"]["values"] == pytest.approx(value, abs=1e-6)
    moved = value * SLOPE
    assert step(told, "slope")["result"] == pytest.approx(moved, abs=1e-5)
    moved = moved + OFFSET
    assert step(told, "offset")["result"] == pytest.approx(moved, abs=1e-5)
    assert step(told, "clamp") == {"step": "clamp", "on": True,
                                   "result": pytest.approx(np.clip(moved, 0, 1), abs=1e-5)}
    graded = np.clip(moved, 0, 1) ** POWER
    assert step(told, "power")["result"] == pytest.approx(graded, abs=1e-5)
    luma = graded @ [0.2126, 0.7152, 0.0722]
    assert step(told, "saturation")["luma"] == pytest.approx(luma, abs=1e-5)
    graded = luma + SATURATION * (graded - luma)
    assert told["result"]["values"] == pytest.approx(graded, abs=1e-5)
    assert told["agrees"] is True and told["difference"] == 0


@pytest.mark.parametrize("depth", ["8", "float"])
@pytest.mark.parametrize("look", [COOL, WARM], ids=lambda path: path.stem)
def test_what_the_plug_in_gives_is_what_a_render_gives(depth, look, small, tmp_path):
    succeed(render(small, tmp_path / "out.png", "--depth", depth, "--bits", 16, look=look))
    told = explain("15,11", small, "--depth", depth, look=look)
    assert told["depth"] == depth and told["agrees"] is True
    rendered = pixels(tmp_path / "out.png", "rgb48le")[11, 15] / 65535
    assert told["rendered"]["values"] == pytest.approx(rendered, abs=1 / 65535)
    assert told["result"]["codes"] == told["rendered"]["codes"]


def test_a_cube_is_told_by_its_nodes_and_their_weights():
    told = explain("--colour", "0.31,0.52,0.93", look=WARM)
    cube = step(told, "cube")
    assert cube["points"] == 25 and cube["cell"] == [7, 12, 22]
    assert cube["fractions"] == pytest.approx([0.44, 0.48, 0.32], abs=1e-4)
    assert cube["tetrahedron"] == ["green", "red", "blue"]
    rows = np.array([line.split() for line in WARM.read_text().splitlines()
                     if line[:1].isdigit()], float).reshape(25, 25, 25, 3)
    total = 0
    for corner in cube["corners"]:
        red, green, blue = corner["node"]
        assert corner["value"] == pytest.approx(rows[blue, green, red], abs=1e-4)
        total = total + corner["weight"] * rows[blue, green, red]
    assert [c["weight"] for c in cube["corners"]] == pytest.approx([0.52, 0.04, 0.12, 0.32],
                                                                   abs=1e-4)
    assert told["result"]["values"] == pytest.approx(total, abs=1e-4)
    assert step(told, "strength")["by"] == 1


def test_curves_are_told_by_their_entries(tmp_path):
    (tmp_path / "half.cube").write_text("LUT_1D_SIZE 3\n0 0 0\n0.1 0.2 0.3\n1 1 1\n")
    told = explain("--colour", "0.25,0.5,0.75", look=tmp_path / "half.cube")
    curves = step(told, "curves")
    assert curves["entries"] == 3
    assert curves["channels"][0] == {"entry": 0, "fraction": 0.5, "low": 0,
                                     "high": pytest.approx(0.1, abs=1e-5)}
    assert curves["channels"][2]["entry"] == 1
    assert told["result"]["values"] == pytest.approx([0.05, 0.2, 0.65], abs=1e-4)


def test_linear_light_follows_the_picture_and_the_option(linear, small):
    told = explain("2,3", linear, look=WARM)
    assert told["linear"] is True and "as linear light (it holds floats" in told["manner"]
    assert told["steps"][0]["step"] == "encode" and told["steps"][-1]["step"] == "decode"
    assert told["agrees"] is True
    told = explain("2,3", linear, "--linear", "off", look=WARM)
    assert told["linear"] is False and told["steps"][0]["step"] == "cube" and told["agrees"] is True
    told = explain("2,3", small, "--depth", "float", look=WARM)
    assert told["linear"] is False and "its codes are whole numbers" in told["manner"]
    told = explain("--colour", "0.5,0.5,0.5", look=WARM)
    assert told["linear"] is False and "given in display values" in told["manner"]
    assert explain("--colour", "0.5,0.5,0.5", "--linear", "on", look=WARM)["linear"] is True


def test_values_beyond_black_and_white_are_explained_too(tmp_path):
    (tmp_path / "beyond.tif").write_bytes(tiff(np.array([[[-0.5, 1.5, 40.0]]], "<f4")))
    for options in ([], ["--linear", "off"], ["--unclamped"]):
        told = explain("0,0", tmp_path / "beyond.tif", *options)
        assert told["input"]["values"] == [-0.5, 1.5, 40.0]
        assert told["agrees"] is True
        assert step(told, "clamp")["on"] is (options != ["--unclamped"])
    assert told["result"]["values"][2] > 20
    assert explain("--colour", "-0.5,1.5,40", "--unclamped")["input"]["values"] == [-0.5, 1.5, 40]


def test_a_colour_in_8_bits_is_the_nearest_code():
    told = explain("--colour", "0.5001,64/255,2", "--depth", "8")
    assert told["input"]["codes"] == [128, 64, 255]
    assert told["input"]["values"] == pytest.approx([128 / 255, 64 / 255, 1])
    assert told["agrees"] is True and told["place"] is None


def test_the_text_tells_the_same(small):
    told = explain("3,7", small, look=WARM)
    result = succeed(host("explain", "3,7", small, "--look", WARM))
    assert not result.lines
    text = result.output.decode()
    codes = " ".join(str(code) for code in told["rendered"]["codes"])
    for part in ("pixel 3,7", "8 bits, not as linear light", "3D LUT of 25 points a side",
                 "tetrahedron along", f"({codes} of 255), as told"):
        assert part in text, part
    assert text.count("weight") == 4


def test_frames_are_chosen_by_their_numbers(tmp_path):
    for number in (1001, 1002):
        write_png(tmp_path / f"shot_{number}.png", np.full((4, 4, 3), number - 1000))
    sequence = tmp_path / "shot_%04d.png"
    assert explain("0,0", sequence)["input"]["codes"] == [1, 1, 1]
    assert explain("0,0", sequence, "--frame", 1002)["input"]["codes"] == [2, 2, 2]
    clip = tmp_path / "clip.bgra"
    write_clip(clip, 3)
    told = [explain("9,9", clip, *CLIP, "--frame", number) for number in (1, 3)]
    assert [row["place"]["frame"] for row in told] == [1, 3]
    result = host("explain", "9,9", clip, *CLIP, "--frame", 4, "--look", COOL)
    assert result.code == 1 and "it has no frame 4" in result.only_line()


@pytest.mark.parametrize("words, said", [
    (["16,3", "small.png", "--look", WARM], "16 x 12 pixels, and 16,3 is not among them"),
    (["0,12", "small.png", "--look", WARM], "0,12 is not among them"),
    (["0,0", "nowhere.png", "--look", WARM], "nowhere.png"),
    (["0,0", "small.png", "--look", "nowhere.cube"], "nowhere.cube"),
    (["--colour", "1,1,1", "--look", "nowhere.cube"], "nowhere.cube")])
def test_what_is_not_there_is_one_line(words, said, small, tmp_path):
    result = host("explain", *words, cwd=tmp_path)
    assert result.code == 1 and result.output == b""
    assert said in result.only_line()


def test_of_another_renderers_look_only_the_ends_are_told(small, tmp_path):
    (tmp_path / "its.look").write_bytes(b"a record of another kind")
    words = ["3,7", small, "--look", tmp_path / "its.look", "--renderer",
             BIN / "renderers/reads_files"]
    told = json.loads(succeed(host("explain", *words, "--json")).output)
    assert told["readable"] is False and told["steps"] == [] and told["agrees"] is None
    assert told["rendered"]["codes"] == list(255 - pixels(small)[7, 3])
    text = succeed(host("explain", *words)).output.decode()
    assert "only " in text and "GZ3Renderer_x64.dll can read this look's record" in text


def test_a_renderer_that_does_something_else_is_found_out(small, tmp_path):
    succeed(host("look", WARM, tmp_path / "warm.look"))
    for depth in ("8", "float"):
        result = host("explain", "3,7", small, "--look", tmp_path / "warm.look", "--depth", depth,
                      "--renderer", BIN / "renderers/reads_files")
        assert result.code == 1
        assert b"more than rounding explains" in result.output
        assert "differs from the steps of the look" in result.only_line()


def test_the_document_names_every_member_and_step(linear, tmp_path):
    (tmp_path / "shaper.cube").write_text(
        "LUT_1D_SIZE 2\nLUT_3D_SIZE 2\n0 0 0\n1 1 1\n"
        + "".join(f"{r} {g} {b}\n" for b in (0, 1) for g in (0, 1) for r in (0, 1)))
    document = (ROOT / "docs/explain.md").read_text()
    told = explain("1,1", linear, look=f"{COOL}|{tmp_path / 'shaper.cube'}")
    names = {row["step"] for row in told["steps"]}
    assert names == {"encode", "slope", "offset", "clamp", "power", "saturation", "curves", "cube",
                     "strength", "decode"}
    members = set(told) | names
    for row in told["steps"]:
        members |= set(row)
    for member in members:
        assert f"`{member}`" in document, member
