"""The effect's presets: listed, applied, and what the only one does."""

import json

from conftest import COOL, WARM, host, render, succeed


def test_the_list_is_text_or_json():
    assert succeed(host("presets")).output.decode().split() == ["0", "(Default)"]
    listed = json.loads(succeed(host("presets", "--json")).output)
    assert listed == {"presets": [{"index": 0, "name": "(Default)"}]}


def test_the_list_needs_a_renderer_and_says_so(lonely_program):
    result = host("presets", program=lonely_program)
    assert result.code == 1
    assert "GZ3Renderer_x64.dll" in result.only_line()


def test_default_keeps_the_look_and_turns_its_option_on(linear, tmp_path):
    succeed(host("look", WARM, tmp_path / "off.look", "--linear", "off"))

    def picture(name, *options, look):
        succeed(render(linear, tmp_path / name, *options, look=look))
        return (tmp_path / name).read_bytes()
    off = picture("off.png", look=tmp_path / "off.look")
    preset = picture("preset.png", "--preset", "(Default)", "--save-project", tmp_path / "a.glz",
                     look=tmp_path / "off.look")
    on = picture("on.png", "--linear", "on", look=tmp_path / "off.look")
    assert preset == on
    assert preset != off
    succeed(host("render", linear, tmp_path / "again.png", "--project", tmp_path / "a.glz"))
    assert (tmp_path / "again.png").read_bytes() == preset, "the project keeps the option"


def test_a_preset_alone_is_a_look(small, tmp_path):
    succeed(host("render", small, tmp_path / "a.png", "--preset", "(Default)"))
    assert (tmp_path / "a.png").exists()


def test_an_unknown_preset_is_told_what_there_is(small, tmp_path):
    result = render(small, tmp_path / "a.png", "--preset", "Night", look=COOL)
    assert result.code == 1
    assert '"Night"' in result.only_line() and '"(Default)"' in result.only_line()
    assert not (tmp_path / "a.png").exists()


def test_a_preset_does_not_go_with_keyframes(small, tmp_path):
    path = tmp_path / "animated.glz"
    succeed(host("render", small, tmp_path / "a.png", "--key", f"0f={COOL}", "--save-project",
                 path))
    for words in (["--key", f"0f={COOL}"], ["--project", path]):
        result = host("render", small, tmp_path / "b.png", *words, "--preset", "(Default)")
        assert result.code == 2
        assert "keyframes" in result.only_line()
