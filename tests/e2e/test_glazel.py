"""./glazel render: the whole job for pictures and for video, with ffmpeg around the host program."""

import pathlib
import re
import struct
import subprocess
import zlib

import numpy as np
import pytest

from conftest import COOL, IMAGES, ROOT, WARM, ffmpeg, host, pixels, probe, render, run

GLAZEL = ROOT / "glazel"


def script(*words, cwd, env=None):
    return run([GLAZEL, "render", *words], cwd=cwd, env=env)


@pytest.fixture
def folder(tmp_path):
    path = tmp_path / "it's a folder"
    path.mkdir()
    return path


@pytest.fixture
def clip(folder):
    """One second with sound."""
    path = folder / "my 'clip'.mp4"
    make_clip(path)
    return path


def make_clip(path, size="160x90", pixel_format="yuv420p", options=(), rate="24", scale=""):
    ffmpeg("-f", "lavfi", "-i", f"testsrc=size={size}:rate={rate}", "-f", "lavfi", "-i",
           "sine=frequency=440:sample_rate=48000", "-t", 1, "-vf",
           f"scale=out_color_matrix=bt709{scale}", "-pix_fmt", pixel_format, "-c:v", "libx264",
           "-qp", 4, *options, "-c:a", "aac", path)


TAGS = ("-colorspace", "bt709", "-color_primaries", "bt709", "-color_trc", "bt709",
        "-color_range", "tv")


def left(folder, *kept):
    return {path.name for path in folder.iterdir()} - {pathlib.Path(name).name for name in kept}


def test_a_picture_is_rendered_like_by_the_host_itself(folder, tmp_path):
    result = script(IMAGES / "coffee.png", "out put.png", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines
    assert render(IMAGES / "coffee.png", tmp_path / "direct.png").code == 0
    assert (folder / "out put.png").read_bytes() == (tmp_path / "direct.png").read_bytes()


def test_floats_of_an_exr_reach_a_tiff_as_linear_light(folder):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 1, "-pix_fmt", "gbrpf32le",
           folder / "a.exr")
    result = script("a.exr", "a.tif", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines
    assert any("as linear light" in line for line in result.lines)
    assert left(folder, "a.exr", "a.tif") == set()


def test_three_seconds_of_a_photograph_in_720p_are_rendered_frame_by_frame(folder, tmp_path):
    ffmpeg("-loop", 1, "-framerate", 25, "-i", IMAGES / "coffee.png", "-t", 3, "-vf",
           "scale=1280:720,format=yuv420p", "-c:v", "libx264", "-qp", 8, folder / "clip.mp4")
    result = script("clip.mp4", "graded.mp4", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines
    entries = "width,height,r_frame_rate,nb_frames"
    assert probe(folder / "graded.mp4", entries) == {"width": "1280", "height": "720",
                                                     "r_frame_rate": "25/1", "nb_frames": "75"}
    ffmpeg("-i", folder / "clip.mp4", "-frames:v", 1, tmp_path / "first.png")
    assert render(tmp_path / "first.png", tmp_path / "expected.png").code == 0
    first = pixels(folder / "graded.mp4")
    difference = np.abs(first - pixels(tmp_path / "expected.png"))
    assert difference.mean() < 2, "apart from coding and colour conversion it is that picture"
    assert np.abs(first - pixels(tmp_path / "first.png")).mean() > 5, "the look shows"


def test_a_video_keeps_its_size_rate_length_sound_and_tags(folder, clip):
    make_clip(clip, options=TAGS, rate="30000/1001")
    result = script(clip.name, "out's.mp4", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines
    kept = "width,height,r_frame_rate,nb_frames,pix_fmt,color_range,color_space,color_transfer," \
           "color_primaries,sample_aspect_ratio"
    assert probe(folder / "out's.mp4", kept) == probe(clip, kept)
    sound = "codec_name,nb_frames,sample_rate,channels"
    assert probe(folder / "out's.mp4", sound, "a:0") == probe(clip, sound, "a:0")
    assert left(folder, clip) == {"out's.mp4"}


def test_the_frames_of_a_video_are_graded_right(folder, clip):
    make_clip(clip, options=TAGS)
    assert script(clip.name, "out.mp4", "--look", WARM, cwd=folder).code == 0
    to_rgb = "scale=in_color_matrix=bt709:flags=accurate_rnd+full_chroma_int+bicubic,format=gbrp"
    pick = "select=eq(n\\,12)"
    ffmpeg("-i", folder / "out.mp4", "-vf", f"{pick},{to_rgb}", "-frames:v", 1, folder / "o.png")
    ffmpeg("-i", clip, "-vf",
           f"{pick},{to_rgb},lut3d=file={WARM}:interp=tetrahedral,format=rgb24", "-frames:v", 1,
           folder / "r.png")
    # Both went through a lossy codec and halved chroma: judged where colour is even.
    difference = np.abs(pixels(folder / "o.png") - pixels(folder / "r.png"))
    assert np.median(difference) <= 2
    assert difference.mean() < 6


def test_full_range_and_444_survive(folder, clip):
    make_clip(clip, pixel_format="yuvj444p", scale=":out_range=pc")
    assert script(clip.name, "out.mp4", "--look", COOL, cwd=folder).code == 0
    assert probe(folder / "out.mp4", "color_range,pix_fmt") == \
        {"color_range": "pc", "pix_fmt": "yuvj444p"}


def test_an_odd_size_is_kept(folder):
    make_clip(folder / "odd.mkv", size="161x91", pixel_format="yuv444p")
    assert script("odd.mkv", "out.mp4", "--look", WARM, cwd=folder).code == 0
    shape = probe(folder / "out.mp4", "width,height")
    assert shape == {"width": "161", "height": "91"}


def test_sound_that_the_container_does_not_take_becomes_aac(folder, clip):
    ffmpeg("-i", clip, "-c:v", "copy", "-c:a", "pcm_s16le", folder / "pcm.mkv")
    assert script("pcm.mkv", "copied.mkv", "--look", WARM, cwd=folder).code == 0
    assert probe(folder / "copied.mkv", "codec_name", "a:0")["codec_name"] == "pcm_s16le"
    assert script("pcm.mkv", "encoded.mp4", "--look", WARM, cwd=folder).code == 0
    assert probe(folder / "encoded.mp4", "codec_name", "a:0")["codec_name"] == "aac"


def test_a_video_becomes_a_sequence_and_a_sequence_a_video(folder, clip):
    assert script(clip.name, "f_%02d.png", "--look", WARM, "--frames", "3-5", cwd=folder).code == 0
    assert left(folder, clip) == {"f_03.png", "f_04.png", "f_05.png"}
    result = script("f_%02d.png", "back.mp4", "--look", COOL, "--fps", "12", cwd=folder)
    assert result.code == 0, result.lines
    assert probe(folder / "back.mp4", "nb_frames,r_frame_rate") == \
        {"nb_frames": "3", "r_frame_rate": "12/1"}


@pytest.mark.parametrize("kind", ["pgm", "dpx", "mkv"])
def test_gray_keeps_its_shadows_and_lights(kind, folder, tmp_path):
    ramp = bytes(range(256)) * 16
    ffmpeg("-f", "rawvideo", "-pix_fmt", "gray", "-s", "256x16", "-i", "-", "-c:v",
           "ffv1" if kind == "mkv" else kind, folder / f"in.{kind}", data=ramp)
    (folder / "same.cc").write_text(IDENTITY)
    result = script(f"in.{kind}", f"out.{kind}", "--look", "same.cc", cwd=folder)
    assert result.code == 0, result.lines
    assert ffmpeg("-i", folder / f"out.{kind}", "-pix_fmt", "gray", "-f", "rawvideo", "-") == ramp


def test_gray_floats_stay_an_exr(folder):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 1, "-pix_fmt", "grayf32le",
           folder / "in.exr")
    result = script("in.exr", "out.exr", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines
    assert probe(folder / "out.exr", "pix_fmt") == {"pix_fmt": "gbrpf32le"}


def test_half_floats_of_a_sequence_stay_half(folder):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 2, "-pix_fmt", "gbrpf32le",
           "-format", "half", folder / "in_%04d.exr")
    result = script("in_%04d.exr", "out_%04d.exr", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines
    for number in (1, 2):
        head = (folder / f"out_000{number}.exr").read_bytes()[:400]
        assert re.findall(rb"[BGR]\0(.)\0\0\0", head, re.DOTALL) == [b"\1"] * 3, "each channel's type"


@pytest.mark.parametrize("kind, then", [("png", "jpg"), ("exr", "dpx"), ("exr", "png"),
                                        ("png", "exr")])
def test_a_sequence_is_named_with_either_sign_in_any_folder(kind, then, folder):
    place = folder / "100%_%d"
    place.mkdir()
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 6, "-start_number", 98,
           folder / f"s_%03d.{kind}")
    for picture in folder.glob("s_*"):
        picture.rename(place / picture.name)
    result = script(f"{place.name}/s_###.{kind}", f"{place.name}/t_####.{then}", "--look", WARM,
                    "--frames", "1-99,100-9999999999x2", cwd=folder)
    assert result.code == 0, result.lines
    assert {path.name for path in place.glob("t_*")} == \
        {f"t_{number:04}.{then}" for number in (98, 99, 100, 102)}


@pytest.mark.parametrize("kind", ["exr", "png"])
def test_a_picture_of_a_sequence_that_is_there_is_told_before_rendering(kind, folder, clip):
    (folder / f"f_07.{kind}").write_text("mine")
    result = script(clip.name, f"f_%02d.{kind}", "--look", WARM, "--frames", "3-9x2", cwd=folder)
    assert result.code == 1 and f"f_07.{kind}: it exists already" in result.only_line()
    assert left(folder, clip) == {f"f_07.{kind}"}


def test_chosen_frames_go_without_sound(folder, clip):
    result = script(clip.name, "out.mp4", "--look", WARM, "--frames", "1-6", cwd=folder)
    assert result.code == 0
    assert probe(folder / "out.mp4", "nb_frames")["nb_frames"] == "6"
    assert not probe(folder / "out.mp4", "codec_name", "a:0")
    assert any("sound 1" in line and "is lost" in line for line in result.lines)


@pytest.mark.parametrize("source, target, options, parts", [
    ("nowhere.mp4", "out.mp4", (), ("nowhere.mp4", "no such file")),
    ("text.mp4", "out.mp4", (), ("text.mp4", "cannot read")),
    ("my 'clip.mp4", "out.mp4", (), ("did you mean my 'clip'.mp4",)),
    ("my 'clip'.mp4", "deeper/out.mp4", (), ("deeper", "does not exist")),
    ("my 'clip'.mp4", "old.mp4", (), ("old.mp4", "--overwrite")),
    ("my 'clip'.mp4", "out.mp4", ("--look", "nowhere.cube"), ("nowhere.cube",)),
    ("my 'clip'.mp4", "out.exr", (), ("24 frames do not fit",)),
    ("my 'clip'.mp4", "out.avif", (), ("24 frames do not fit",)),
    ("my 'clip'.mp4", "out.nonsense", (), (".nonsense", "not written")),
])
def test_bad_input_is_told_once_and_leaves_nothing(source, target, options, parts, folder, clip):
    (folder / "old.mp4").write_text("mine")
    (folder / "text.mp4").write_text("hello")
    result = script(source, target, *(options or ("--look", WARM)), "--quiet", cwd=folder)
    assert result.code == (2 if target == "out.nonsense" else 1)
    line = result.only_line()
    for part in parts:
        assert part in line, line
    assert left(folder, clip) == {"old.mp4", "text.mp4"}
    assert (folder / "old.mp4").read_text() == "mine"


def test_a_video_that_is_cut_is_told_and_rendered_on_demand(folder, clip):
    ffmpeg("-i", clip, "-c", "copy", folder / "whole.mkv")
    data = (folder / "whole.mkv").read_bytes()
    (folder / "cut.mkv").write_bytes(data[:len(data) * 2 // 3])
    result = script("cut.mkv", "out.mp4", "--look", WARM, "--quiet", cwd=folder)
    assert result.code == 1
    assert "cut.mkv" in result.only_line()
    assert not (folder / "out.mp4").exists()

    result = script("cut.mkv", "out.mp4", "--look", WARM, "--skip-bad-frames", cwd=folder)
    assert result.code == 1
    assert "cut.mkv" in result.lines[-1]
    assert int(probe(folder / "out.mp4", "nb_frames")["nb_frames"]) > 5


def test_a_video_of_the_pictures_that_can_be_read_is_made_on_demand(folder):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 4, folder / "p_%d.png")
    (folder / "p_3.png").write_bytes((folder / "p_3.png").read_bytes()[:60])
    result = script("p_%d.png", "out.mkv", "--look", WARM, "--quiet", cwd=folder)
    assert result.code == 1 and not (folder / "out.mkv").exists()
    result = script("p_%d.png", "out.mkv", "--look", WARM, "--skip-bad-frames", cwd=folder)
    assert result.code == 1 and "1 frame could not be read" in result.lines[-1], result.lines
    assert ffmpeg("-i", folder / "out.mkv", "-f", "framemd5", "-").count(b"\n0,") == 3


def test_a_project_is_replaced_where_the_output_is(folder, clip):
    words = (clip.name, "out.mkv", "--save-project", "a.glz", "--look")
    assert script(*words, WARM, cwd=folder).code == 0
    before = (folder / "a.glz").read_bytes()
    result = script(*words, COOL, "--quiet", cwd=folder)
    assert result.code == 1 and "a.glz" in result.only_line()
    assert (folder / "a.glz").read_bytes() == before
    result = script(*words, COOL, "--overwrite", cwd=folder)
    assert result.code == 0, result.lines
    assert (folder / "a.glz").read_bytes() != before


IDENTITY = """<ColorCorrection id="same"><SOPNode><Slope>1 1 1</Slope><Offset>0 0 0</Offset>
<Power>1 1 1</Power></SOPNode></ColorCorrection>"""


def test_what_the_host_program_finds_wrong_is_told_like_the_rest(folder, clip):
    result = script(clip.name, "a.mkv", "--key", f"abc={WARM}", "--quiet", cwd=folder)
    assert result.code == 2 and result.only_line().startswith("glazel: --key abc="), result.lines
    assert "glazelhost" not in result.only_line()


def test_wrong_usage_is_exit_code_2(folder):
    assert script(cwd=folder).code == 2
    assert script("a.png", "b.png", cwd=folder).code == 2


def test_help_and_wrong_words_answer_without_the_programs(folder, tmp_path):
    nowhere = {"GLAZEL_BUILD": str(tmp_path / "no/such/build")}
    result = script("--help", cwd=folder, env=nowhere)
    assert result.code == 0
    assert b"glazel render" in result.output and b"--skip-bad-frames" in result.output
    result = script("a.png", "b.png", "--lok", "x", cwd=folder, env=nowhere)
    assert result.code == 2 and "did you mean --look?" in result.only_line()
    result = run([GLAZEL, "rendre"], cwd=folder, env=nowhere)
    assert result.code == 2 and "did you mean render?" in result.only_line()
    assert not (tmp_path / "no").exists()


def test_a_link_from_another_folder_works(folder, tmp_path):
    (tmp_path / "front door").symlink_to(GLAZEL)
    result = run([tmp_path / "front door", "look", WARM, "a.look"], cwd=folder)
    assert result.code == 0, result.lines
    assert (folder / "a.look").exists()


@pytest.mark.parametrize("name", ["-in.mkv", "100% %d.mkv", "a 'b' \"c\".mkv", "f\u00f6\u00f6.mkv"])
def test_odd_names_are_only_names(name, folder):
    make_clip(folder / "in.mkv", size="32x16")
    (folder / "in.mkv").rename(folder / name)
    result = script("--look", WARM, "--", name, "-out " + name, cwd=folder)
    assert result.code == 0, result.lines
    assert left(folder, name) == {"-out " + name}


def test_input_output_and_project_are_different_files(folder, clip):
    before = clip.read_bytes()
    (folder / "link.mp4").symlink_to(clip)
    for target in (clip.name, "link.mp4", "./" + clip.name):
        result = script(clip.name, target, "--look", WARM, "--overwrite", cwd=folder)
        assert result.code == 2 and "the input" in result.only_line()
    result = script(clip.name, "a.mkv", "--look", WARM, "--save-project", "a.mkv", cwd=folder)
    assert result.code == 2 and "--save-project" in result.only_line()
    assert clip.read_bytes() == before


@pytest.mark.parametrize("kind, target", [
    ("png", "s_%04d.png"), ("png", "./s_####.png"), ("png", "s_0002.png"), ("exr", "s_%04d.exr"),
    ("exr", "folder/s_%04d.exr")])
def test_no_picture_of_a_sequence_is_its_own_output(kind, target, folder):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 3, folder / f"s_%04d.{kind}")
    (folder / "folder").symlink_to(".")
    before = [path.read_bytes() for path in sorted(folder.glob("s_*"))]
    result = script(f"s_%04d.{kind}", target, "--look", WARM, "--overwrite", cwd=folder)
    assert result.code == 2 and "the input" in result.only_line()
    assert [path.read_bytes() for path in sorted(folder.glob("s_*"))] == before
    result = script(f"s_%04d.{kind}", f"s_%05d.{kind}", "--look", WARM, cwd=folder)
    assert result.code == 0, result.lines


@pytest.mark.parametrize("kind", ["png", "exr", "dpx", "tga"])
def test_pictures_that_are_not_wanted_need_not_be_good_nor_there(kind, folder):
    inside = folder / "100%d it's"
    inside.mkdir()
    for number in range(1, 9):
        ffmpeg("-f", "lavfi", "-i", f"color=0x{number}05030:s=32x16", "-frames:v", 1, "-update", 1,
               inside / f"s_{number:04}.{kind}")

    def rendered(name, *words):
        (folder / name).mkdir()
        result = script(inside / f"s_%04d.{kind}", f"{name}/o_%04d.{kind}", "--key", f"0f={WARM}",
                        "--key", f"8f={COOL}", *words, cwd=folder)
        assert result.code == 0, result.lines
        return {path.name: path.read_bytes() for path in (folder / name).iterdir()}

    whole = rendered("whole")
    assert len(set(whole.values())) == 8
    (inside / f"s_0004.{kind}").unlink()
    (inside / f"s_0007.{kind}").write_bytes(b"damaged")
    for name, words, numbers in (("a", "1-3", (1, 2, 3)), ("b", "1-3,5-6,8", (1, 2, 3, 5, 6, 8))):
        kept = [f"o_{number:04}.{kind}" for number in numbers]
        assert rendered(name, "--frames", words) == {name: whole[name] for name in kept}
    result = script(inside / f"s_%04d.{kind}", f"c_%04d.{kind}", "--look", WARM, "--frames", "2-4",
                    "--quiet", cwd=folder)
    assert result.code == 1 and f"s_0004.{kind}" in result.lines[-1], result.lines


def test_y4m_goes_through_pipes(folder, clip):
    data = ffmpeg("-i", clip, "-an", "-f", "yuv4mpegpipe", "-")
    result = run([GLAZEL, "render", "-", "-", "--look", WARM, "--quiet"], data, cwd=folder)
    assert result.code == 0, result.lines
    (folder / "out.y4m").write_bytes(result.output)
    assert script(clip.name, "file.y4m", "--look", WARM, cwd=folder).code == 0
    shown = [ffmpeg("-i", folder / n, "-f", "framemd5", "-") for n in ("out.y4m", "file.y4m")]
    assert shown[0] == shown[1] and shown[0].count(b"\n0,") == 24


@pytest.mark.parametrize("way", ["file", "pipe"])
def test_y4m_that_breaks_off_in_a_frame_is_told_and_rendered_on_demand(way, folder):
    data = ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x32", "-frames:v", 10, "-f", "yuv4mpegpipe",
                  "-")
    length = 64 * 32 * 3 // 2
    cut = data[:-3 * (length + len(b"FRAME\n")) - 100]
    (folder / "cut.y4m").write_bytes(cut)

    def rendered(*words):
        (folder / "out.mkv").unlink(missing_ok=True)
        words = ("out.mkv", "--look", WARM, "--quiet", *words)
        if way == "file":
            return script("cut.y4m", *words, cwd=folder)
        return run([GLAZEL, "render", "-", *words, "--expect", 10, "--strict"], cut, cwd=folder)

    told = f"the data ends in frame 7: 100 of its {length} bytes are missing"
    for words in ((), ("--frames", "5-")):
        result = rendered(*words)
        assert result.code == 1 and told in result.only_line(), result.lines
        assert left(folder, "cut.y4m") == set()
    result = rendered("--skip-bad-frames")
    assert result.code == 1 and told in result.only_line(), result.lines
    assert ffmpeg("-i", folder / "out.mkv", "-f", "framemd5", "-").count(b"\n0,") == 6
    result = rendered("--frames", "2,5-6")
    assert result.code == 0, result.lines
    assert ffmpeg("-i", folder / "out.mkv", "-f", "framemd5", "-").count(b"\n0,") == 3


def test_an_input_without_a_picture_is_refused(folder):
    ffmpeg("-f", "lavfi", "-i", "sine", "-t", 1, folder / "sound.wav")
    result = script("sound.wav", "out.mp4", "--look", WARM, cwd=folder)
    assert result.code == 1 and "no picture, only sound" in result.only_line()


def test_strict_refuses_what_cannot_be_kept_before_rendering(folder, clip):
    ffmpeg("-i", clip, "-c:v", "copy", "-c:a", "pcm_s24le", folder / "pcm.mkv")
    result = script("pcm.mkv", "out.mp4", "--look", WARM, "--strict", cwd=folder)
    assert result.code == 1 and "sound 1" in result.lines[-1]
    assert left(folder, "pcm.mkv", clip) == set()


SOURCES = {  # what ffmpeg makes them of
    "plain.png": "testsrc2=s=32x16,format=rgb24",
    "opaque.png": "testsrc2=s=32x16,format=rgba",
    "opaque16.png": "testsrc2=s=32x16,format=rgba64be",
    "clear.png": "color=red@0:s=32x16,format=rgba",
    "gray.png": "testsrc2=s=32x16,format=gray",
    "deep.png": "testsrc2=s=32x16,format=rgb48",
    "deep.tif": "testsrc2=s=32x16,format=rgb48",
    "deep.bgra": "testsrc2=s=32x16,format=bgra64le",
    "float.exr": "testsrc2=s=32x16,format=gbrpf32le",
    "ten.mkv": "testsrc2=s=32x16:d=0.1,format=yuv422p10le",
    "clear.mov": "color=red@0.4:s=32x16:d=0.1,format=rgba",
    "few.gif": "testsrc2=s=32x16:d=0.1",
    "s_%d.png": "color=red:s=32x16:d=0.12,format=rgba,geq=r='r(X,Y)':a='if(eq(N,1),9,255)'",
}
RAW = ("--size", "32x16", "--input-format", "bgra16")


def make_source(folder, name):
    codec = {"mkv": ("-c:v", "ffv1"), "mov": ("-c:v", "png"), "bgra": ("-f", "rawvideo")}
    one = () if "%" in name or ":d=" in SOURCES[name] else ("-frames:v", 1)
    ffmpeg("-f", "lavfi", "-i", SOURCES[name], *one, *codec.get(name.rpartition(".")[2], ()),
           folder / name)
    return [path.name for path in folder.iterdir()]


@pytest.mark.parametrize("source, target, words, lost", [
    ("clear.png", "o.jpg", (), "transparency, which a JPEG does not hold"),
    ("s_%d.png", "o_%d.jpg", (), "transparency, which a JPEG does not hold"),
    ("clear.mov", "o_%d.jpg", (), "transparency, which a JPEG does not hold"),
    ("deep.png", "o.jpg", (), "depth: 16 bits becomes 8 bits"),
    ("deep.png", "o.png", ("--bits", 8), "depth: 16 bits becomes 8 bits"),
    ("deep.png", "o.png", ("--depth", 8), "depth: 16 bits becomes 8 bits"),
    ("deep.png", "o.gif", (), "depth: 16 bits becomes 8 bits"),
    ("deep.tif", "o.bmp", (), "depth: 16 bits becomes 8 bits"),
    ("deep.bgra", "o.bmp", RAW, "depth: 16 bits becomes 8 bits"),
    ("float.exr", "o.png", (), "depth: float becomes 16 bits"),
    ("float.exr", "o.tif", ("--bits", 16), "depth: float becomes 16 bits"),
    ("float.exr", "o.jpg", (), "depth: float becomes 8 bits"),
    ("ten.mkv", "o_%d.jpg", (), "depth: 10 bits becomes 8 bits"),
    ("ten.mkv", "o_%d.png", ("--depth", 8), "depth: 10 bits becomes 8 bits"),
    ("clear.mov", "o.gif", (), "alpha: yes becomes none or all"),
    ("plain.png", "o.gif", (), "colours: any becomes 256 at most")])
def test_a_loss_is_told_once_and_with_strict_nothing_is_written(source, target, words, lost, folder):
    made = make_source(folder, source)
    result = script(source, target, "--look", WARM, *words, "--strict", cwd=folder)
    assert result.code == 1 and "not everything can be kept" in result.lines[-1], result.lines
    assert any(lost in line for line in result.lines) and left(folder, *made) == set()
    result = script(source, target, "--look", WARM, *words, cwd=folder)
    assert result.code == 0 and left(folder, *made), result.lines
    assert len([line for line in result.lines if lost in line]) == 1, result.lines


def test_a_loss_of_raw_frames_on_standard_input_is_told(folder):
    make_source(folder, "deep.bgra")
    data = (folder / "deep.bgra").read_bytes()
    words = [GLAZEL, "render", "-", "o.png", "--look", WARM, *RAW, "--strict"]
    assert run(words, data, cwd=folder).code == 0
    result = run([*words, "--overwrite", "--bits", 8], data, cwd=folder)
    assert result.code == 1 and "depth: 16 bits becomes 8 bits" in result.lines[-1]


@pytest.mark.parametrize("source, target", [
    ("plain.png", "o.jpg"), ("opaque.png", "o.jpg"), ("gray.png", "o.gif"), ("deep.png", "o.tif"),
    ("deep.tif", "o.png"), ("float.exr", "o.tif"), ("ten.mkv", "o_%d.png"), ("ten.mkv", "o_%d.tif"),
    ("clear.mov", "o_%d.bmp"), ("few.gif", "o.gif"), ("few.gif", "o_%d.jpg"), ("s_%d.png", "o_%d.png")])
def test_what_keeps_all_passes_with_strict(source, target, folder):
    make_source(folder, source)
    result = script(source, target, "--look", WARM, "--strict", cwd=folder)
    assert result.code == 0, result.lines
    assert not any("lost" in line or "becomes" in line or "warning" in line for line in result.lines)


def test_an_opaque_channel_of_deep_pictures_is_no_loss(folder):
    make_source(folder, "opaque16.png")
    result = script("opaque16.png", "o.jpg", "--look", WARM, cwd=folder)
    assert result.code == 0 and not any("transparency" in line for line in result.lines)


def test_a_strict_sequence_refuses_names_that_are_taken_before_rendering(folder):
    made = make_source(folder, "s_%d.png")
    (folder / "o_2.png").write_bytes(b"old")
    result = script("s_%d.png", "o_%d.png", "--look", WARM, "--strict", cwd=folder)
    assert result.code == 1 and "o_2.png: it exists already" in result.only_line()
    assert left(folder, *made) == {"o_2.png"}
    words = ("--look", WARM, "--strict", "--frames", "3")
    assert script("s_%d.png", "o_%d.png", *words, cwd=folder).code == 0
    assert left(folder, *made) == {"o_2.png", "o_3.png"}


@pytest.mark.parametrize("red, told", [(64000, []), (70800, ["chromaticities"])])
def test_the_chromaticities_of_a_png_are_no_mastering_display(red, told, folder):
    make_source(folder, "plain.png")
    data = (folder / "plain.png").read_bytes()
    body = b"cHRM" + struct.pack(">8I", 31270, 32900, red, 33000, 30000, 60000, 15000, 6000)
    chunk = struct.pack(">I", 32) + body + struct.pack(">I", zlib.crc32(body))
    (folder / "plain.png").write_bytes(data[:33] + chunk + data[33:])
    for target, words in (("o.exr", ()), ("o.mkv", ("--codec", "hevc"))):
        result = script("plain.png", target, "--look", WARM, *words, cwd=folder)
        assert result.code == 0, result.lines
        lost = [line.split(": ")[2] for line in result.lines if line.endswith("is lost")]
        assert lost == told, result.lines


def test_frames_of_a_variable_rate_keep_their_times(folder):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=50", "-t", 2, "-vf",
           "select='not(mod(n,3))+lt(n,20)'", "-fps_mode", "vfr", "-c:v", "libx264",
           folder / "vfr.mkv")
    for name in ("out.mkv", "out.mp4"):
        assert script("vfr.mkv", name, "--look", WARM, cwd=folder).code == 0
        assert times(folder / name) == times(folder / "vfr.mkv")
    result = script("vfr.mkv", "out.y4m", "--look", WARM, cwd=folder)
    assert result.code == 0 and any("even" in line for line in result.lines)


def times(path):
    text = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                           "packet=pts_time", "-of", "csv=p=0", path], capture_output=True,
                          check=True).stdout.decode()
    return sorted(round(float(word.strip(",")), 3) for word in text.split())


def test_every_command_of_the_readme_works_in_a_fresh_clone(tmp_path):
    subprocess.run(["git", "clone", "-q", ROOT, tmp_path / "clone"], check=True)
    text = (ROOT / "README.md").read_text()
    commands = "".join(part.partition("```")[0] for part in text.split("```sh\n")[1:])
    commands = commands.replace("./test.sh\n", "")
    assert "./glazel render" in commands
    (tmp_path / "clone/glazel").write_bytes(GLAZEL.read_bytes())
    result = run(["bash", "-euc", commands], cwd=tmp_path / "clone")
    assert result.code == 0, result.lines
    for name in ("graded.png", "cool.mp4", "moving.mov", "grade.glz", "frame_0005.exr"):
        assert (tmp_path / "clone" / name).exists(), name


def test_an_installation_renders_without_the_tree_and_leaves_nothing_in_the_home(small, tmp_path):
    assert run([GLAZEL, "install", tmp_path / "prefix"]).code == 0
    home = tmp_path / "home"
    home.mkdir()
    result = run([tmp_path / "prefix/bin/glazel", "render", small, tmp_path / "out.png", "--look",
                  WARM], env={"GLAZEL_BUILD": "", "XDG_CACHE_HOME": str(tmp_path / "cache"),
                             "HOME": str(home)})
    assert result.code == 0, result.lines
    assert (tmp_path / "out.png").exists() and not list(home.iterdir())
    assert (tmp_path / "cache/glazel/wineprefix").exists()


@pytest.mark.parametrize("command", ["render", "page", "look", "blend", "presets", "info", "compare",
                                     "explain", "validate"])
def test_the_front_door_knows_every_option_of_the_host_program(command):
    def options(text):
        return set(re.findall(r"^ +(?:-h,)?(--[a-z-]+)", text.decode(), re.MULTILINE))
    # What only the front door says to it.
    own = {"--opaque", "--luma-weights", "--range", "--matrix", "--chroma", "--help"}
    known = options(run([GLAZEL, command, "--help"]).output.replace(b"-h, --", b"--"))
    missing = options(host(command, "--help").output) - known - own
    assert not missing
