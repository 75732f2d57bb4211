"""Bad input gets one line that names the file, the cause and what to do, and leaves nothing."""

import json
import shutil

import numpy as np
import pytest

from conftest import BIN, CLIP, COOL, WARM, clip_frames, host, render, write_clip, write_png


def assert_refused(result, *parts, code=1):
    line = result.only_line()
    assert result.code == code, line
    assert line.startswith("glazelhost: ") and "; " in line, line
    for part in parts:
        assert str(part) in line, (part, line)
    assert result.output == b""


def assert_nothing_written(folder, *inputs):
    left = {path.name for path in folder.iterdir()} - {path.name for path in inputs}
    assert not left, left


@pytest.fixture
def out(tmp_path):
    folder = tmp_path / "out"
    folder.mkdir()
    return folder


def cube_text(*, size=2, drop=0, extra=0, bad_line=None):
    rows = [f"{r} {g} {b}" for b in range(size) for g in range(size) for r in range(size)]
    rows = rows[:len(rows) - drop] + ["0 0 0"] * extra
    if bad_line is not None:
        rows[bad_line] = "0 zero 0"
    return "\n".join([f"LUT_3D_SIZE {size}", *rows]) + "\n"


def test_a_missing_input(out):
    assert_refused(render("nowhere.png", out / "out.png"), "nowhere.png")
    assert_nothing_written(out)


def test_an_input_that_is_a_folder(out, tmp_path):
    assert_refused(render(tmp_path, out / "out.png"), tmp_path)
    assert_nothing_written(out)


def test_an_unreadable_input(out, tmp_path):
    bad = tmp_path / "bad.png"
    bad.write_bytes(b"\x89PNG\r\n\x1a\n" + bytes(100))
    assert_refused(render(bad, out / "out.png"), "bad.png")
    assert_nothing_written(out)


def test_an_empty_input(out, tmp_path):
    (tmp_path / "empty.png").write_bytes(b"")
    assert_refused(render(tmp_path / "empty.png", out / "out.png"), "empty.png")
    assert_nothing_written(out)


def test_a_picture_that_is_cut(out, small):
    cut = small.with_name("cut.png")
    cut.write_bytes(small.read_bytes()[:-200])
    assert_refused(render(cut, out / "out.png"), "cut.png")
    assert_nothing_written(out)


def test_the_frames_before_the_cut_of_a_stream_are_delivered(out, tmp_path):
    whole = tmp_path / "whole.bgra"
    write_clip(whole, 5)
    cut = tmp_path / "cut.bgra"
    cut.write_bytes(whole.read_bytes()[:-1000])
    assert render(whole, out / "whole.bgra", *CLIP).code == 0
    result = render(cut, out / "cut.bgra", *CLIP)
    assert result.code == 1
    assert "cut.bgra" in result.lines[-1] and "5" in result.lines[-1], result.lines
    assert any("4 frames" in line for line in result.lines[:-1]), result.lines
    expected = clip_frames((out / "whole.bgra").read_bytes())[:4]
    assert clip_frames((out / "cut.bgra").read_bytes()) == expected


def test_a_stream_that_is_cut_in_its_first_frame_leaves_nothing(out, tmp_path):
    cut = tmp_path / "cut.bgra"
    write_clip(cut, 1)
    cut.write_bytes(cut.read_bytes()[:-1])
    result = render(cut, out / "out.bgra", *CLIP)
    assert result.code == 1
    assert_nothing_written(out)


def test_video_files_are_for_the_front_door(small, out, tmp_path):
    clip = tmp_path / "clip.y4m"
    clip.write_bytes(b"YUV4MPEG2 W4 H4 F25:1 C444\nFRAME\n" + bytes(48))
    remedy = 'or "glazel render", which takes every video'
    assert_refused(render(clip, out / "out.png"), "clip.y4m", remedy)
    assert_refused(render(small, out / "out.y4m"), "out.y4m", remedy, code=2)
    assert_nothing_written(out)


@pytest.mark.parametrize("text, parts", [
    (cube_text(drop=1), ("7", "8")),
    (cube_text(extra=1), ("line 10",)),
    (cube_text(bad_line=4), ("line 6",)),
    ("TITLE \"nothing\"\n", ()),
    ("", ()),
], ids=["too few", "too many", "non-numeric", "no size", "empty"])
def test_a_cube_with_wrong_entries(text, parts, small, out, tmp_path):
    look = tmp_path / "bad.cube"
    look.write_text(text)
    assert_refused(render(small, out / "out.png", look=look), "bad.cube", *parts)
    assert_nothing_written(out)


def test_a_cdl_with_a_negative_slope(small, out, tmp_path):
    look = tmp_path / "bad.cc"
    look.write_text(COOL.read_text().replace("<Slope>", "<Slope>-"))
    assert_refused(render(small, out / "out.png", look=look), "bad.cc", "lope")
    assert_nothing_written(out)


def test_a_missing_look(small, out):
    assert_refused(render(small, out / "out.png", look="nowhere.cube"), "nowhere.cube")
    assert_nothing_written(out)


def test_a_look_of_an_unknown_kind(small, out, tmp_path):
    look = tmp_path / "look.xyz"
    look.write_text("hello\n")
    assert_refused(render(small, out / "out.png", look=look), "look.xyz")
    assert_nothing_written(out)


def test_an_id_that_the_collection_has_not(small, out):
    assert_refused(render(small, out / "out.png", look=f"{COOL}#nobody"), "nobody")
    assert_nothing_written(out)


def test_an_unknown_extension_of_the_output(small, out):
    assert_refused(render(small, out / "out.xyz"), "out.xyz", code=2)
    assert_nothing_written(out)


def test_an_unknown_kind_of_input(out, tmp_path):
    (tmp_path / "in.xyz").write_text("hello\n")
    result = render(tmp_path / "in.xyz", out / "out.png")
    assert result.code in (1, 2)
    assert "in.xyz" in result.only_line()
    assert_nothing_written(out)


def test_an_output_folder_that_does_not_exist(small, out):
    assert_refused(render(small, out / "deeper/out.png"), "deeper", "does not exist")
    assert_nothing_written(out)


def test_an_output_that_exists_is_kept_without_overwrite(small, out):
    (out / "out.png").write_text("mine")
    assert_refused(render(small, out / "out.png"), "out.png", "--overwrite")
    assert (out / "out.png").read_text() == "mine"
    assert render(small, out / "out.png", "--overwrite").code == 0
    assert (out / "out.png").read_bytes()[:4] == b"\x89PNG"


def test_a_failed_overwrite_keeps_the_old_output(small, out):
    (out / "out.png").write_text("mine")
    assert_refused(render(small, out / "out.png", "--overwrite", look="nowhere.cube"), "nowhere")
    assert (out / "out.png").read_text() == "mine"
    assert_nothing_written(out, out / "out.png")


def test_no_renderer_in_the_named_folder(small, out):
    assert_refused(render(small, out / "out.png", "--renderer", out), "GZ3Renderer_x64.dll",
                   "no such file")
    assert_nothing_written(out)


def test_no_renderer_anywhere(small, out, lonely_program):
    assert_refused(render(small, out / "out.png", program=lonely_program), "GZ3Renderer_x64.dll",
                   "--renderer")
    assert_nothing_written(out)


@pytest.mark.parametrize("name", ["InitRenderer", "GetSessionIcon"])
def test_a_renderer_without_a_required_entry_point(name, small, out):
    folder = BIN / "renderers" / f"without_{name}"
    assert_refused(render(small, out / "out.png", "--renderer", folder), f"does not export {name}")
    assert_nothing_written(out)


def test_a_renderer_that_does_not_start(small, out):
    result = render(small, out / "out.png", "--renderer", BIN / "renderers/init_fails")
    assert_refused(result, "message box", "did not initialize successfully")
    assert_nothing_written(out)


def test_a_32_bit_renderer(small, out, tmp_path):
    data = bytearray((BIN / "GZ3Renderer_x64.dll").read_bytes())
    header = int.from_bytes(data[0x3C:0x40], "little")
    data[header + 4:header + 6] = b"\x4C\x01"
    (tmp_path / "GZ3Renderer_x64.dll").write_bytes(data)
    assert_refused(render(small, out / "out.png", "--renderer", tmp_path), "32-bit (x86)", "64-bit")
    assert_nothing_written(out)


def test_a_renderer_that_is_no_dll(small, out, tmp_path):
    (tmp_path / "GZ3Renderer_x64.dll").write_text("hello")
    assert_refused(render(small, out / "out.png", "--renderer", tmp_path), "not a Windows DLL")
    assert_nothing_written(out)


def test_a_missing_plugin(small, out, tmp_path):
    shutil.copy(BIN / "glazelhost.exe", tmp_path)
    assert_refused(render(small, out / "out.png", "--renderer", BIN,
                          program=tmp_path / "glazelhost.exe"), "GlazelDX_x64.dll", "--plugin")
    assert_refused(render(small, out / "out.png", "--plugin", "nowhere.dll"), "nowhere.dll")
    assert_nothing_written(out)


def test_a_plugin_that_is_none(small, out):
    assert_refused(render(small, out / "out.png", "--plugin", BIN / "GZ3Renderer_x64.dll"),
                   "not a COM server")
    assert_nothing_written(out)


# Numbers of the fake effect's behaviours: tests/tools/glazelhost/plugin/fake_effect.h.
@pytest.mark.parametrize("behaviour, part", [
    (1, "wrote no picture"), (2, "not set up yet"), (3, "refused its surfaces"),
    (4, "message box: \"out of film\""), (5, "samples outside the locked area"),
    (6, "memory before or after"), (7, "lock was not released"), (8, "was not created"),
    (9, "message box: \"no hardware\""), (10, "it crashed")])
def test_a_plugin_that_misbehaves(behaviour, part, small, out):
    result = render(small, out / "out.png", "--plugin", BIN / "fake_effect.dll", "--quiet",
                    env={"FAKE_EFFECT": str(behaviour)})
    assert_refused(result, part)
    assert_nothing_written(out)


@pytest.fixture
def crashing_plugin(tmp_path):
    """Its name has letters that no code page holds all at once."""
    path = tmp_path / "fak\u00e9 \u65e5\u672c.dll"
    shutil.copy(BIN / "fake_effect.dll", path)
    return path


def test_a_plugin_that_crashes_is_named(crashing_plugin, small, out):
    result = render(small, out / "out.png", "--plugin", crashing_plugin, "--quiet",
                    env={"FAKE_EFFECT": "10"})
    assert_refused(result, f"\\{crashing_plugin.name}: it crashed (exception 0xC0000005 at offset")
    assert_nothing_written(out)


def test_a_crash_is_told_in_json_too(crashing_plugin, small, out):
    result = render(small, out / "out.png", "--plugin", crashing_plugin, "--progress", "json",
                    env={"FAKE_EFFECT": "10"})
    assert result.code == 1
    events = [json.loads(line) for line in result.lines]
    assert events[-1]["event"] == "error"
    assert f"\\{crashing_plugin.name}: it crashed" in events[-1]["text"]
    assert_nothing_written(out)


@pytest.mark.parametrize("size", ["0x4", "4x0", "16385x4", "4x16385", "4", "axb"])
def test_raw_input_of_an_impossible_size(size, out, tmp_path):
    (tmp_path / "in.bgra").write_bytes(bytes(64))
    assert_refused(render(tmp_path / "in.bgra", out / "out.png", "--size", size), "--size", size,
                   code=2)
    assert_nothing_written(out)


def test_raw_input_without_a_size(out, tmp_path):
    (tmp_path / "in.bgra").write_bytes(bytes(64))
    assert_refused(render(tmp_path / "in.bgra", out / "out.png"), "--size", code=2)
    assert_nothing_written(out)


def test_a_picture_above_the_largest_size(out, tmp_path):
    write_png(tmp_path / "wide.png", np.zeros((1, 16385, 3)))
    assert_refused(render(tmp_path / "wide.png", out / "out.png"), "wide.png", "16384")
    assert_nothing_written(out)


def test_a_picture_of_the_largest_size_is_rendered(out, tmp_path):
    write_png(tmp_path / "wide.png", np.zeros((1, 16384, 3)))
    assert render(tmp_path / "wide.png", out / "out.png").code == 0


def test_a_video_does_not_fit_into_one_picture(out, tmp_path):
    write_clip(tmp_path / "clip.bgra", 2)
    result = render(tmp_path / "clip.bgra", out / "out.png", *CLIP)
    assert result.code in (1, 2)
    assert "out.png" in result.lines[-1]
    assert_nothing_written(out)


def test_a_bad_look_conversion_leaves_nothing(out):
    result = host("look", "nowhere.cube", out / "out.look")
    assert_refused(result, "nowhere.cube")
    assert_nothing_written(out)


def test_a_look_that_exists_is_kept_without_overwrite(out):
    (out / "out.look").write_text("mine")
    assert_refused(host("look", COOL, out / "out.look"), "out.look", "--overwrite")
    assert (out / "out.look").read_text() == "mine"


@pytest.mark.parametrize("name", ["out.cube", "out.csp", "out"])
def test_a_look_is_not_written_under_a_name_that_promises_something_else(name, out):
    commands = [["blend", COOL, WARM, "0.5"]]
    if name != "out.cube":
        commands.append(["look", COOL])
    for words in commands:
        assert_refused(host(*words, out / name), name, ".look", code=2)
    assert_refused(host("page", "--save-look", out / name), name, ".look", code=2)
    assert_nothing_written(out)


def test_frames_that_the_input_does_not_have(small, out):
    assert_refused(render(small, out / "out.png", "--frames", "7"), "its numbers are 1 to 1")
    assert_nothing_written(out)


def test_frame_0_of_what_counts_from_1(small, out):
    result = render(small, out / "out.png", "--frames", "0-3")
    assert result.code == 2
    assert "count from 1" in result.only_line()
    assert_nothing_written(out)


