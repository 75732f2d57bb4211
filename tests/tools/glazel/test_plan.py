"""From what was probed to the commands: pure, without any program."""

import pathlib
import re
import shlex
import subprocess
import sys
from fractions import Fraction

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tools"))
from glazel import (colour, command_line, formats, kept, names, output, plan, probe, render,  # noqa: E402
                    system, y4m)
from glazel.failure import Failure  # noqa: E402


def media(pixels="yuv420p", **more):
    usual = {"path": "in.mkv", "container": "matroska", "index": 0, "codec": "h264", "profile": "",
             "width": 64, "height": 48, "format": probe.pixel_formats()[pixels],
             "colour": probe.Colour("bt709", False, "bt709", "bt709", "left", True),
             "rate": Fraction(25), "aspect": Fraction(1), "frames": 10, "source": "file:in.mkv"}
    return probe.Media(**(usual | more))


def planned(source, output="out.mkv", **more):
    return plan.make_plan(plan.Job("in.mkv", output, **more), source, True, True)


@pytest.mark.parametrize("pixels, raw", [
    ("yuv420p", "gbr8"), ("yuva420p", "bgra8"), ("rgba", "bgra8"), ("gray", "bgra8"),
    ("yuv422p10le", "yuv16"), ("gbrp12le", "bgra16"), ("yuva444p10le", "bgra16"),
    ("gray16le", "bgra16"), ("gbrpf32le", "gbraf32")])
def test_samples_take_the_way_that_keeps_them(pixels, raw):
    assert colour.raw_for(probe.pixel_formats()[pixels], None, "bt709").name == raw


def test_matrices_of_more_than_two_weights_are_left_to_the_filters():
    number = probe.pixel_formats()["yuv422p10le"]
    assert colour.raw_for(number, None, "ictcp").name == "gbrf32"
    assert colour.raw_back(colour.FLOATS, number, "ycgco").name == "gbrf32"


def test_the_host_program_hears_of_the_matrix_once():
    made = planned(media("yuv420p10le", colour=probe.Colour("bt2020nc")))
    words = plan.host_words(plan.Job("in.mkv", "out.mkv"), made, "")
    assert words.count("--luma-weights") == 1 and "0.2627,0.0593" in words
    assert "min=2020_ncl:rin=limited:m=2020_ncl:r=limited" in " ".join(made.decode)


@pytest.mark.parametrize("there, pixels, back", [
    ("gbr8", "yuv420p", "gbr8"), ("gbr8", "rgba", "bgra8"), ("gbr8", "bgr0", "bgra8"),
    ("bgra8", "yuv444p", "gbr8"), ("gbrf32", "yuv422p10le", "yuv16"),
    ("gbraf32", "yuv422p10le", "yuv16"), ("gbrf32", "gbrapf32le", "gbraf32"),
    ("bgra16", "yuv422p10le", "bgra16")])
def test_planes_come_back_where_the_output_is_opaque_ycbcr(there, pixels, back):
    raws = (colour.BGRA8, colour.BGRA16, colour.FLOATS, colour.GBR8, colour.OPAQUE_FLOATS)
    went = next(raw for raw in raws if raw.name == there)
    assert colour.raw_back(went, probe.pixel_formats()[pixels], "bt709").name == back


def test_everything_about_the_colours_is_said_at_both_ends():
    made = planned(media("yuv420p10le"))
    for text in (" ".join(made.decode), made.encoding.script()):
        for word in ("min=", "rin=", ":m=", ":r=", "filter=spline36", "dither="):
            assert word in text, text
    assert "cin=left" in " ".join(made.decode) and ":c=left" in made.encoding.script()


def test_chroma_of_fields_is_converted_field_by_field():
    made = planned(media(fields="bff"))
    for text in (" ".join(made.decode), made.encoding.script()):
        assert "setfield=bff,separatefields" in text and "weave=first_field=bottom" in text
    assert "separatefields" not in " ".join(planned(media("yuv422p", fields="bff")).decode)


@pytest.mark.parametrize("pixels", ["gray", "gray10le", "yuv411p", "yuv420p", "yuv422p",
                                    "yuv444p", "yuva444p", "yuv420p10le", "yuv422p12le"])
def test_what_y4m_lacks_of_its_last_frame_is_known(pixels, tmp_path):
    words = f"-f lavfi -i color=s=6x3,format=gbrp,format={pixels} -frames:v 3 -strict -1"
    data = subprocess.run(["ffmpeg", "-v", "error", *words.split(), "-f", "yuv4mpegpipe", "-"],
                          capture_output=True, check=True).stdout
    data = data.replace(b"FRAME\n", b"FRAME Ip\n")
    start = data.index(b"\n") + 1
    whole = (len(data) - start) // 3
    length = whole - len(b"FRAME Ip\n")
    source = media(pixels, width=6, height=3)
    for lacks in range(1 + whole):
        (tmp_path / "a.y4m").write_bytes(data[:len(data) - lacks])
        follower = y4m.Follower(source)
        for at in range(start, len(data) - lacks, 7):
            follower.take(data[at:min(at + 7, len(data) - lacks)])
        expected = y4m.Cut(3, min(lacks, length), length) if 0 < lacks < whole else None
        assert follower.cut() == y4m.cut_of(tmp_path / "a.y4m", source) == expected


def test_what_is_no_y4m_is_left_to_ffmpeg():
    for line in (b"what", b"FRAME " + bytes(1000)):
        follower = y4m.Follower(media())
        follower.take(line)
        follower.take(b"is that?")
        assert follower.cut() is None


@pytest.mark.parametrize("codec, dither", [("mpeg2video", "error_diffusion"), ("ffv1", "none")])
def test_rounding_is_spread_where_the_output_has_fewer_bits(codec, dither):
    made = planned(media("yuv420p10le"), codec=codec)
    assert f"dither={dither}" in made.encoding.script()


def test_a_size_that_chroma_does_not_divide_goes_through_full_chroma():
    made = planned(media(width=63))
    assert "format=yuv444p16le,zscale" in " ".join(made.decode)
    assert made.encoding.choice.format.chroma() == "4:4:4"


@pytest.mark.parametrize("codec, pixels, output, expected", [
    ("h264", "yuv420p", "o.mp4", ("h264", "yuv420p")),
    ("hevc", "yuv420p10le", "o.mkv", ("hevc", "yuv420p10le")),
    ("prores", "yuva444p12le", "o.mov", ("prores", "yuva444p10le")),
    ("ffv1", "yuv422p12le", "o.mkv", ("ffv1", "yuv422p12le")),
    ("prores", "yuv422p10le", "o.webm", ("vp9", "yuv422p10le")),
    ("ffv1", "gbrap", "o.mov", ("ffv1", "bgra")),
    ("vc1", "yuv420p", "o.mkv", ("h264", "yuv420p")),
    ("exr", "gbrapf32le", "o.exr", ("exr", "gbrapf32le")),
    ("rawvideo", "yuv444p", "o.y4m", ("wrapped_avframe", "yuv444p"))])
def test_the_codec_and_the_samples_stay_or_are_the_nearest(codec, pixels, output, expected):
    choice = planned(media(pixels, codec=codec), output).encoding.choice
    assert (choice.codec, choice.format.name) == expected


@pytest.mark.parametrize("height, encoder", [(48, "libaom-av1"), (64, "libsvtav1")])
def test_small_pictures_go_to_the_encoder_that_takes_them(height, encoder):
    made = planned(media(codec="av1", height=height))
    assert made.encoding.choice.encoder == encoder


def test_what_is_lost_is_named_and_what_is_gained_is_not():
    tracks = (probe.Track(1, "audio", "aac", "deu"), probe.Track(2, "attachment", "ttf", name="a.ttf"))
    before = kept.facts(media("yuv420p", tracks=tracks, chapters=("One",), timecode="01:00:00:00"))
    after = kept.facts(media("yuv444p10le", tracks=tracks[:1]))
    assert set(kept.losses(before, after)) == {"attachment 1", "chapters", "timecode"}
    assert set(kept.losses(kept.facts(media("yuv422p10le")), kept.facts(media("yuv420p")))) == \
        {"chroma", "depth"}


def test_times_are_even_only_within_what_the_clock_of_the_file_explains():
    base, rate = Fraction(1, 1000), Fraction(30000, 1001)
    even = [round(n * 1001 / 30) for n in range(300)]
    assert probe.is_even(even, base, rate)
    assert not probe.is_even(even[:100] + [time + 20 for time in even[100:]], base, rate)


def test_the_expression_of_the_times_gives_each_frame_its_own():
    times = tuple(n * n for n in range(37))
    text = plan.times_expression(times)

    def value(frame):
        return eval(text.replace("if(", "choose("),
                    {"N": frame, "choose": lambda c, a, b: a if c else b, "lt": lambda a, b: a < b})
    assert [value(frame) for frame in range(37)] == list(times)


def test_frames_are_chosen_by_number_and_step():
    assert plan.chosen_frames("3-8x2,20-", 1, 21) == [3, 5, 7, 20, 21]
    assert plan.chosen_frames(None, 1001, 3) == [1001, 1002, 1003]
    assert plan.chosen_frames("1-10x3,1-1000000000000x5", 5, 10) == [6, 7, 10, 11]
    assert plan.chosen_frames("1-4,9-", 5, 4) == []
    for text in ("", "a", "5-1", "1-4x0", "1,,2"):
        with pytest.raises(Failure):
            plan.parse_frames(text)


def test_a_pattern_is_one_number_in_the_name(tmp_path):
    pattern = names.Pattern.parse(str(tmp_path / "a%%_####.exr"))
    assert pattern.path(7) == str(tmp_path / "a%_0007.exr")
    assert pattern.for_host() == str(tmp_path / "a%%_%04d.exr")
    assert names.Pattern.parse("5%_d/a_#.exr").for_ffmpeg() == "5%%_d/a_%d.exr"
    for number in (7, 9, 12345):
        pathlib.Path(pattern.path(number)).touch()
    assert pattern.numbers() == [7, 9, 12345]
    (tmp_path / "100%d.png").touch()
    assert names.input_pattern(str(tmp_path / "100%d.png")) is None
    assert names.Pattern.parse("a.png") is None and names.Pattern.parse("%d_%d.png") is None


def test_names_that_ffprobe_and_ffmpeg_spell_differently_are_understood():
    tagged = media(colour=probe.Colour("bt470bg", False, "bt470bg", "bt470bg", "left", True))
    made = planned(tagged)
    assert "color_trc=bt470bg" in made.encoding.script()
    words = made.encoding.colour_words
    assert words[words.index("-color_trc") + 1] == "5"


def test_words_for_other_programs_may_begin_like_options():
    words = ["--sbatch", "--time=10", "--encoder-options", "-an", "--look", "", "in", "out"]
    options = command_line.parse("farm", ["local", *words])
    assert (options.sbatch, options.encoder_options) == ("--time=10", "-an")


def test_frames_to_expect_are_those_of_any_pipe():
    for words in ((), ("--size", "4x4")):
        given = command_line.parse("render", ["-", "-", "--preset", "x", "--expect", "10", *words])
        assert "--expect" in command_line.render_job(given).host


def test_sound_in_mxf_is_of_48_kilohertz():
    sound = probe.Track(1, "audio", "pcm_s16le", detail="44100 Hz, 2 channels")
    made = planned(media(tracks=(sound,)), "out.mxf", codec="mpeg2video")
    assert "-ar:a:0 48000" in " ".join(made.encoding.tracks)
    assert "becomes pcm_s24le, 48000 Hz" in made.losses["sound 1"]


@pytest.mark.parametrize("command", sorted(set(command_line.COMMANDS) - {"render", "install"}))
def test_options_are_close_to_what_was_meant(command):
    with pytest.raises(Failure) as failure:
        command_line.parse(command, ["--helpp"])
    assert "did you mean --help?" in str(failure.value) and failure.value.code == 2


def test_mastering_display_is_written_in_the_units_of_the_encoder():
    shown = {"red_x": "34000/50000", "red_y": "16000/50000", "green_x": "13250/50000",
             "green_y": "34500/50000", "blue_x": "7500/50000", "blue_y": "3000/50000",
             "white_point_x": "15635/50000", "white_point_y": "16450/50000",
             "min_luminance": "50/10000", "max_luminance": "10000000/10000"}
    source = media("yuv420p10le", codec="hevc", mastering=shown, light=(1000, 400))
    words = " ".join(planned(source).encoding.colour_words)
    assert "G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)" in words
    assert "max-cll=1000,400" in words
    assert "mastering display" in planned(source, codec="ffv1").losses


def test_of_what_ffmpeg_says_only_the_cause_is_told():
    said = (b"Svt[info]: -----\n[libx264 @ 0x5581] file:a.mp4: full\nConversion failed!\n"
            b"av_interleaved_write_frame(): Broken pipe\n")
    assert probe.complaints(said) == ["a.mp4: full"]


def test_every_kind_of_file_names_encoders_that_there_are():
    for name, container in formats.CONTAINERS.items():
        for codec in container.usual:
            encoder = formats.encoder_of(codec, probe.pixel_formats()["yuv420p"])
            assert formats.encoder_formats(encoder), (name, encoder)


@pytest.mark.parametrize("words", [["black", "-q", "-l", "100", "--check"], ["pyflakes3"],
                                   ["mypy", "--strict"]], ids=lambda words: words[0])
def test_the_code_is_as_its_checkers_want_it(words):
    done = subprocess.run([*words, ROOT / "tools/glazel"], capture_output=True, check=False)
    assert done.returncode == 0, (done.stdout + done.stderr).decode()


def test_the_archive_for_windows_holds_every_module():
    sys.path.insert(0, str(ROOT / "packaging"))
    import contents
    held = {item.name for item in contents.items(ROOT / "build/release", ROOT / "none")}
    modules = {f"glazel/{path.name}" for path in (ROOT / "tools/glazel").glob("*.py")}
    assert modules and modules | {"windows.md", "video.md"} <= held


def test_a_name_that_was_taken_at_the_last_moment_is_left_alone(tmp_path):
    (tmp_path / "mine").write_text("mine")
    (tmp_path / "theirs").write_text("theirs")
    with pytest.raises(FileExistsError):
        system.rename_new(str(tmp_path / "mine"), str(tmp_path / "theirs"))
    assert (tmp_path / "theirs").read_text() == "theirs" and (tmp_path / "mine").exists()
    system.rename_new(str(tmp_path / "mine"), str(tmp_path / "new"))
    assert sorted(path.name for path in tmp_path.iterdir()) == ["new", "theirs"]


@pytest.mark.parametrize("held", [False, True])
def test_what_a_render_has_left_goes_only_once_its_lock_can_be_deleted(held, tmp_path, monkeypatch):
    left = tmp_path / ".glazel-left"
    left.mkdir()
    for name in ("00000001.png", "lock"):
        (left / name).touch()

    def unlink(path):
        raise PermissionError(path)  # as on Windows, where there is no other lock
    if held:
        monkeypatch.setattr(output.os, "unlink", unlink)
    output.remove_leftovers(str(tmp_path))
    assert (left / "00000001.png").exists() == held


def test_a_picture_that_fails_is_called_by_its_final_name():
    target = names.Pattern.parse("out/p_%03d.tif")
    text = render.with_final_names("out/.glazel-1/00000002.tif: writing failed", "out/.glazel-1",
                                   target, 1001)
    assert text == "out/p_1002.tif: writing failed"


def commands_of_documents():
    """Every command of the front door in a block of any document; README's are run besides."""
    for document in (ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))):
        for block in re.findall(r"^```.*?\n(.*?)^```", document.read_text(), re.S | re.M):
            for line in block.replace("\\\n", " ").splitlines():
                if found := re.match(r"(?:\./glazel|py -m glazel|glazel|glazelhost) ([a-z].*)", line):
                    yield found[1].partition("  #")[0]


@pytest.mark.parametrize("line", sorted(set(commands_of_documents())))
def test_every_command_in_a_document_is_understood(line, monkeypatch):
    monkeypatch.setattr(command_line.os.path, "exists", lambda path: True)
    command, *words = shlex.split(line.replace("\\", "/"))
    if "--help" not in words:
        command_line.parse(command, words)
