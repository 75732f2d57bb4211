"""What the program says, where it says it, and how it ends."""

import json

import pytest

from conftest import BIN, CLIP, COOL, ROOT, WARM, host, render, write_clip


@pytest.fixture
def clip(tmp_path):
    path = tmp_path / "clip.bgra"
    write_clip(path, 8)
    return path


def test_help_goes_to_standard_output_and_succeeds():
    for words in (["--help"], ["render", "--help"], ["look", "--help"], ["info", "--help"]):
        result = host(*words)
        assert result.code == 0
        assert b"Usage: glazelhost" in result.output
        assert not result.lines


def test_the_version_is_the_projects():
    version = [line for line in (ROOT / "CMakeLists.txt").read_text().splitlines()
               if line.startswith("project(")][0].split("VERSION ")[1].split()[0]
    assert host("--version").output.decode().split() == ["glazelhost", version]


@pytest.mark.parametrize("words", [
    [], ["paint"], ["render"], ["render", "a.png", "b.png"], ["render", "a.png", "--look", "c"],
    ["render", "a.png", "b.png", "--look", "c", "--depth", "12"],
    ["render", "a.png", "b.png", "--look", "c", "--frames", "5-1"],
    ["render", "a.png", "b.png", "--look", "c", "--unknown"], ["look", "a.cube"], ["info", "x"]])
def test_wrong_usage_is_one_line_and_exit_code_2(words):
    result = host(*words)
    assert result.code == 2
    assert result.only_line().startswith("glazelhost: ")
    assert result.output == b""


def test_plain_progress_names_input_output_and_speed(clip, tmp_path):
    result = render(clip, tmp_path / "out.bgra", *CLIP)
    assert result.code == 0
    assert "clip.bgra: raw BGRA of 8 bits, rendered in" in result.lines[0]
    assert "out.bgra: 8 frames in" in result.lines[-1]
    assert all(line.startswith("glazelhost: ") for line in result.lines)


def test_quiet_says_nothing(clip, tmp_path):
    result = render(clip, tmp_path / "out.bgra", *CLIP, "--quiet")
    assert result.code == 0
    assert result.lines == [] and result.output == b""


def test_quiet_still_tells_an_error(tmp_path):
    result = render("nowhere.png", tmp_path / "out.png", "--quiet")
    assert result.code == 1
    assert "nowhere.png" in result.only_line()


def test_json_progress_is_json_on_every_line(clip, tmp_path):
    result = render(clip, tmp_path / "out.bgra", *CLIP, "--progress", "json")
    assert result.code == 0
    events = [json.loads(line) for line in result.lines]
    assert events[0]["event"] == "note"
    assert events[-1]["event"] == "done"
    assert events[-1]["frames"] == 8
    assert events[-1]["output"].endswith("out.bgra")


def test_json_progress_tells_errors_in_json_too(tmp_path):
    result = render("nowhere.png", tmp_path / "out.png", "--progress", "json")
    assert result.code == 1
    event = json.loads(result.only_line())
    assert event["event"] == "error"
    assert "nowhere.png" in event["text"]


def test_a_bar_can_be_asked_for_without_a_terminal(clip, tmp_path):
    result = render(clip, tmp_path / "out.bgra", *CLIP, "--progress", "bar")
    assert result.code == 0
    assert "8 frames" in result.lines[-1]


def test_linear_with_8_bits_is_warned_of(small, tmp_path):
    result = render(small, tmp_path / "out.png", "--linear", "on", "--depth", "8")
    assert result.code == 0
    assert any("warning" in line and "--linear" in line for line in result.lines)


def test_look_prints_what_the_look_holds(tmp_path):
    result = host("look", COOL, tmp_path / "cool.look")
    assert result.code == 0
    assert not result.lines
    text = result.output.decode()
    assert "cool_night" in text and "CDL" in text and "linear gamma   on" in text
    assert f"{(tmp_path / 'cool.look').stat().st_size} bytes" in text


def test_look_can_switch_the_linear_option(tmp_path):
    assert host("look", COOL, tmp_path / "a.look", "--linear", "off").code == 0
    result = host("look", tmp_path / "a.look", tmp_path / "b.look")
    assert "linear gamma   off" in result.output.decode()


def test_info_tells_versions_interfaces_and_the_renderer():
    result = host("info")
    assert result.code == 0
    assert not result.lines
    text = result.output.decode()
    for part in ("program", "glazelhost.exe", "renderer", "GZ3Renderer_x64.dll", "plug-in",
                 "GlazelDX_x64.dll", "class Plugin: available", "IDXTransform"):
        assert part in text, part
    assert "DOES NOT ANSWER" not in text


def test_info_in_json_lists_every_interface_of_the_effect():
    report = json.loads(host("info", "--json").output)
    assert report["renderer"]["usable"] is True
    answers = {row["name"]: row["answers"] for row in report["plugin"]["effect"]["interfaces"]}
    assert len(answers) == 17 and all(answers.values()), answers


def test_info_says_why_there_is_no_renderer(tmp_path):
    result = host("info", "--json", "--renderer", tmp_path)
    assert result.code == 1 and "GZ3Renderer_x64.dll" in result.only_line()
    report = json.loads(result.output)
    assert report["renderer"]["usable"] is False
    assert "no such file" in report["renderer"]["problem"]
    assert report["renderer"]["remedy"]


def test_info_names_missing_and_optional_entry_points():
    folder = BIN / "renderers"
    missing = json.loads(host("info", "--json", "--renderer",
                              folder / "without_GetSessionIcon").output)["renderer"]
    assert missing["missingEntryPoints"] == ["GetSessionIcon"] and not missing["usable"]
    optional = json.loads(host("info", "--json", "--renderer",
                               folder / "without_optional").output)["renderer"]
    assert optional["absentOptionalEntryPoints"] == ["DoModalUI2", "DoModalUIWithProfile"]
    assert optional["usable"]


def test_info_tells_the_message_box_of_a_failed_start():
    result = host("info", "--json", "--renderer", BIN / "renderers/init_fails")
    assert result.code == 1 and "no effect" in result.only_line()
    report = json.loads(result.output)
    effect = report["plugin"]["effect"]
    assert effect["created"] is False
    assert "did not initialize successfully" in effect["problem"]


def test_the_renderers_folder_can_come_from_the_environment(small, tmp_path):
    result = render(small, tmp_path / "out.png", env={"GLAZEL_RENDERER": str(tmp_path)})
    assert result.code == 1
    assert "GZ3Renderer_x64.dll" in result.only_line()


def test_a_renderer_elsewhere_is_used_by_the_effect_too(small, tmp_path, lonely_program):
    result = render(small, tmp_path / "out.png", "--renderer", BIN, program=lonely_program)
    assert result.code == 0, result.lines
    assert render(small, tmp_path / "here.png").code == 0
    assert (tmp_path / "out.png").read_bytes() == (tmp_path / "here.png").read_bytes()


def test_names_of_every_kind_work(small, tmp_path):
    folder = tmp_path / "it's a f\u00f6lder \u65e5\u672c"
    folder.mkdir()
    source = folder / "in put \u20ac.png"
    source.write_bytes(small.read_bytes())
    look = folder / "l\u00f6ok.cube"
    look.write_bytes(WARM.read_bytes())
    result = render(source, folder / "out 'put'.png", look=look)
    assert result.code == 0, result.lines
    assert (folder / "out 'put'.png").exists()
    assert "\u20ac" in result.lines[0]


def test_relative_paths_start_at_the_current_folder(small, tmp_path):
    result = render(small.name, "out.png", cwd=tmp_path)
    assert result.code == 0, result.lines
    assert (tmp_path / "out.png").exists()


def test_a_folder_that_wine_cannot_use_is_told(tmp_path):
    (tmp_path / "file").touch()
    prefix = tmp_path / "file" / "prefix"
    result = host("--version", env={"GLAZEL_WINEPREFIX": str(prefix)})
    assert result.code == 1
    assert str(prefix) in result.only_line()
