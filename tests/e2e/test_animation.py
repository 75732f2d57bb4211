"""Looks animated over a clip, against plain renders of the looks and of their blends."""

import numpy as np
import pytest

from conftest import (COOL, IMAGES, LOOKS, WARM, clip_frames, ffmpeg, float_tiff, host, render,
                      succeed)

BLEACH = LOOKS / "bleach_bypass.cube"
RATE = 24
SHAPE = ("--size", "320x180", "--fps", RATE)  # of the clip
KEYS = {0: WARM, 120: COOL, 239: BLEACH}  # by frame


def frames_of(path):
    return clip_frames(path.read_bytes(), (320, 180))


@pytest.fixture(scope="module")
def clip(tmp_path_factory):
    """Ten seconds that zoom into a photograph."""
    path = tmp_path_factory.mktemp("clip") / "clip.bgra"
    zoom = f"zoompan=z='1+0.002*on':d=240:s=320x180:fps={RATE}"
    ffmpeg("-loop", 1, "-i", IMAGES / "rocket.jpg", "-vf", zoom, "-frames:v", 240,
           "-f", "rawvideo", "-pix_fmt", "bgra", path)
    return path


@pytest.fixture(scope="module")
def plain(clip, tmp_path_factory):
    """Frames of the whole clip with each look alone."""
    folder = tmp_path_factory.mktemp("plain")
    for look in KEYS.values():
        succeed(render(clip, folder / f"{look.stem}.bgra", *SHAPE, "--quiet", look=look))
    return {look: frames_of(folder / f"{look.stem}.bgra") for look in KEYS.values()}


@pytest.fixture
def blended(clip, tmp_path):
    """One frame of the clip with the record between two looks."""
    def make(earlier, later, fraction, frame):
        look = tmp_path / f"blend {frame}.look"
        out = tmp_path / f"blend {frame}.bgra"
        succeed(host("blend", earlier, later, repr(fraction), look))
        succeed(render(clip, out, *SHAPE, "--frames", frame + 1, look=look))
        return frames_of(out)[0]
    return make


def test_a_ten_second_grade_between_three_looks(clip, plain, blended, tmp_path):
    result = succeed(host("render", clip, *SHAPE, tmp_path / "out.bgra", "--key", f"239f={BLEACH}",
                          "--key", f"0={WARM}", "--key", f"00:00:05.000={COOL}"))
    assert any("3 keyframes, the first at 0, the last at 239f, linear" in line
               for line in result.lines)
    frames = frames_of(tmp_path / "out.bgra")
    assert len(frames) == 240
    for frame, look in KEYS.items():
        assert frames[frame] == plain[look][frame], frame
    assert frames[60] == blended(WARM, COOL, 60 / 120, 60)
    assert frames[119] == blended(WARM, COOL, 119 / 120, 119)
    assert frames[121] == blended(COOL, BLEACH, 1 / 119, 121)
    assert frames[200] == blended(COOL, BLEACH, 80 / 119, 200)
    others = [index for index in range(240) if index not in KEYS]
    assert not any(frames[index] == plain[look][index] for index in others for look in plain)


def test_the_first_and_the_last_keyframe_hold(clip, plain, tmp_path):
    succeed(host("render", clip, *SHAPE, tmp_path / "out.bgra", "--frames", "1-60,200-240",
                 "--key", f"2={WARM}", "--key", f"200f={COOL}"))
    frames = frames_of(tmp_path / "out.bgra")
    assert frames[:49] == plain[WARM][:49]  # to frame 48, which is at two seconds
    assert frames[49] != plain[WARM][49]
    assert frames[61:] == plain[COOL][200:]
    assert frames[60] != plain[COOL][199]


def test_chosen_frames_are_those_of_the_whole(clip, tmp_path):
    keys = ["--key", f"1.02={WARM}", "--key", f"3={COOL}", "--ease", "smooth", "--depth",
            "float"]
    succeed(host("render", clip, *SHAPE, tmp_path / "all.bgra", "--frames", "1-80", *keys))
    succeed(host("render", clip, *SHAPE, tmp_path / "some.bgra", "--frames", "30-70x8", *keys))
    assert frames_of(tmp_path / "some.bgra") == frames_of(tmp_path / "all.bgra")[29:70:8]


def test_smooth_changes_what_lies_between_and_not_the_ends(clip, plain, blended, tmp_path):
    succeed(host("render", clip, *SHAPE, tmp_path / "out.bgra", "--frames", "1-41", "--ease",
                 "smooth", "--key", f"0f={WARM}", "--key", f"40f={COOL}"))
    frames = frames_of(tmp_path / "out.bgra")
    assert frames[0] == plain[WARM][0]
    assert frames[40] == plain[COOL][40]
    assert frames[10] == blended(WARM, COOL, 0.15625, 10)  # 3t^2 - 2t^3 at a quarter
    assert frames[20] == blended(WARM, COOL, 0.5, 20)


@pytest.mark.parametrize("linear", ["on", "off"])
def test_the_linear_option_holds_between_keyframes_too(linear, clip, tmp_path):
    options = ["--frames", 16, "--depth", "float"]
    succeed(host("render", clip, *SHAPE, tmp_path / "out.bgra", *options, "--linear", linear,
                 "--key", f"0f={WARM}", "--key", f"20f={COOL}"))
    succeed(host("blend", WARM, COOL, "0.75", tmp_path / "blend.look"))
    succeed(render(clip, tmp_path / "plain.bgra", *SHAPE, *options, "--linear", linear,
                   look=tmp_path / "blend.look"))
    assert frames_of(tmp_path / "out.bgra") == frames_of(tmp_path / "plain.bgra")


def test_looks_whose_options_differ_keep_them_at_their_keyframes(tmp_path):
    rng = np.random.default_rng(5)
    for number in range(1, 11):
        (tmp_path / f"in_{number}.tif").write_bytes(float_tiff(rng))
    for look, linear in ((WARM, "off"), (COOL, "on"), (BLEACH, "off")):
        succeed(host("look", look, tmp_path / f"{look.stem}.look", "--linear", linear))
    keys = []
    for frame, look in ((0, WARM), (4, COOL), (8, BLEACH)):
        keys += ["--key", f"{frame}f={tmp_path / look.stem}.look"]
    result = succeed(host("render", tmp_path / "in_%d.tif", tmp_path / "out_%d.png", *keys))
    assert "as linear light where a keyframe's option is on" in result.lines[0]
    for frame, look, linear in ((0, WARM, "off"), (4, COOL, "on"), (8, BLEACH, "off"),
                                (9, BLEACH, "off")):
        succeed(render(tmp_path / f"in_{frame + 1}.tif", tmp_path / f"alone_{frame + 1}.png",
                       "--linear", linear, look=look))
        assert (tmp_path / f"out_{frame + 1}.png").read_bytes() == \
            (tmp_path / f"alone_{frame + 1}.png").read_bytes(), frame


def test_a_picture_needs_frames_or_a_rate(small, tmp_path):
    result = host("render", small, tmp_path / "out.png", "--key", f"1.5={COOL}")
    assert result.code == 2
    assert "keyframe at 1.5" in result.only_line() and "--fps" in result.only_line()
    succeed(host("render", small, tmp_path / "out.png", "--key", f"1.5={COOL}", "--fps", 24))
    succeed(render(small, tmp_path / "plain.png", look=COOL))
    assert (tmp_path / "out.png").read_bytes() == (tmp_path / "plain.png").read_bytes()


def test_two_keyframes_at_one_frame_are_wrong_usage(clip, tmp_path):
    result = host("render", clip, *SHAPE, tmp_path / "out.bgra", "--key", f"1={COOL}", "--key",
                  f"24f={WARM}")
    assert result.code == 2
    assert "1 and 24f" in result.only_line()
    assert not (tmp_path / "out.bgra").exists()


def test_a_look_that_is_missing_is_named(clip, tmp_path):
    result = host("render", clip, *SHAPE, tmp_path / "out.bgra", "--key", f"0={COOL}", "--key",
                  "1=nowhere.cube")
    assert result.code == 1
    assert "nowhere.cube" in result.only_line()
