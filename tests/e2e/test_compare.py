"""How far apart pictures are, against what numpy says of the same pictures."""

import json

import numpy as np
import pytest

from conftest import CLIP, host, pixels, succeed, tiff, write_clip, write_deep_png, write_png


@pytest.fixture
def pair(tmp_path):
    """Two pictures that differ a little, and their pixels."""
    rng = np.random.default_rng(11)
    a = rng.integers(0, 200, (12, 16, 3))
    b = a + rng.integers(0, 4, a.shape)
    b[5, 9, 1] = a[5, 9, 1] + 40
    write_png(tmp_path / "a.png", a)
    write_png(tmp_path / "b.png", b)
    return a, b


def report(first, second, *options):
    return json.loads(succeed(host("compare", first, second, "--json", *options)).output)


def test_the_figures_are_those_of_the_pixels(pair, tmp_path):
    a, b = pair
    told = report(tmp_path / "a.png", tmp_path / "b.png", "--threshold", "2/255")
    difference = np.abs(a - b) / 255
    assert told["frames"] == 1 and told["identical"] is False
    assert told["largest"] == pytest.approx(40 / 255, abs=1e-6)
    assert told["mean"] == pytest.approx(difference.mean(), rel=1e-5)
    assert told["psnr"] == pytest.approx(-10 * np.log10((difference ** 2).mean()), rel=1e-5)
    assert told["shareOverThreshold"] == (np.abs(a - b).max(axis=2) > 2).mean()
    assert told["worst"] == {"frame": 1, "x": 9, "y": 5, "channel": "green",
                             "a": pytest.approx(a[5, 9, 1] / 255, abs=1e-6),
                             "b": pytest.approx(b[5, 9, 1] / 255, abs=1e-6)}


def test_the_text_says_the_same(pair, tmp_path):
    result = succeed(host("compare", tmp_path / "a.png", tmp_path / "b.png"))
    text = result.output.decode()
    assert not result.lines
    assert "(40 of 255)" in text and "frame 1, pixel 9,5, green" in text and " dB" in text
    assert "% of the pixels" in text


def test_a_picture_is_equal_to_itself_in_every_depth(pair, tmp_path):
    a, _ = pair
    write_deep_png(tmp_path / "deep.png", a * 257)
    (tmp_path / "float.tif").write_bytes(tiff((a.astype("<f4") / np.float32(255))))
    told = report(tmp_path / "a.png", tmp_path / "a.png")
    assert told["identical"] is True and told["worst"] is None and told["psnr"] is None
    assert told["largest"] == told["mean"] == told["shareOverThreshold"] == 0
    for name in ("deep.png", "float.tif"):
        assert report(tmp_path / "a.png", tmp_path / name)["largest"] < 1e-6


@pytest.mark.parametrize("options, code", [
    ([], 0), (["--fail-over", "40/255"], 0), (["--warn-over", "40/255"], 0),
    (["--warn-over", "39/255"], 3), (["--fail-over", "39/255"], 4),
    (["--warn-over", "0.01", "--fail-over", "0.9"], 3),
    (["--warn-over", "0.01", "--fail-over", "0.02"], 4)])
def test_limits_decide_the_exit_code(pair, options, code, tmp_path):
    result = host("compare", tmp_path / "a.png", tmp_path / "b.png", *options)
    assert result.code == code, result.lines
    assert b"largest" in result.output
    if code:
        line = result.only_line()
        assert "b.png" in line and "pixel 9,5, green" in line
        assert ("--fail-over" if code == 4 else "--warn-over") in line


def test_the_differences_are_drawn_amplified(pair, tmp_path):
    a, b = pair
    succeed(host("compare", tmp_path / "a.png", tmp_path / "b.png", "--picture",
                 tmp_path / "diff.png", "--amplify", 20))
    assert np.array_equal(pixels(tmp_path / "diff.png"), np.minimum(np.abs(a - b) * 20, 255))
    refused = host("compare", tmp_path / "a.png", tmp_path / "b.png", "--picture",
                   tmp_path / "diff.png")
    assert refused.code == 1 and "--overwrite" in refused.only_line()
    for name in ("a.png", "b.png"):
        refused = host("compare", tmp_path / "a.png", tmp_path / "b.png", "--picture",
                       tmp_path / name, "--overwrite")
        assert refused.code == 2 and f"{name}: it is the input too" in refused.only_line()


def test_pictures_of_two_sizes_are_an_error(pair, tmp_path):
    write_png(tmp_path / "c.png", np.zeros((12, 15, 3)))
    result = host("compare", tmp_path / "a.png", tmp_path / "c.png")
    assert result.code == 1 and result.output == b""
    assert "15 x 12" in result.only_line() and "16 x 12" in result.only_line()


def test_clips_of_two_lengths_are_an_error(tmp_path):
    write_clip(tmp_path / "a.bgra", 4)
    write_clip(tmp_path / "b.bgra", 3)
    for first, second in (("a", "b"), ("b", "a")):
        result = host("compare", tmp_path / f"{first}.bgra", tmp_path / f"{second}.bgra", *CLIP)
        assert result.code == 1 and result.output == b""
        assert "b.bgra: it ends after 3 frames" in result.only_line()


def test_clips_are_compared_frame_by_frame(tmp_path):
    for number in range(3):
        picture = np.full((4, 6, 3), 50 + 10 * number)
        write_png(tmp_path / f"a_{number + 101}.png", picture)
        picture[2, 1] += 3 * (number == 1)
        write_png(tmp_path / f"b_{number + 7}.png", picture)
    told = report(tmp_path / "a_%d.png", tmp_path / "b_%d.png")
    assert told["frames"] == 3
    assert told["worst"]["frame"] == 102, "the number in A"
    assert (told["worst"]["x"], told["worst"]["y"]) == (1, 2)


def test_alpha_is_compared_where_there_is_one(tmp_path):
    write_png(tmp_path / "a.png", np.full((4, 6, 3), 90))
    rgba = np.full((4, 6, 4), 90)
    rgba[..., 3] = 255
    rgba[3, 5, 3] = 254
    write_png(tmp_path / "b.png", rgba)
    assert report(tmp_path / "a.png", tmp_path / "b.png")["worst"]["channel"] == "alpha"


def test_what_is_missing_is_named(tmp_path):
    result = host("compare", tmp_path / "nowhere.png", tmp_path / "b.png")
    assert result.code == 1
    assert "nowhere.png" in result.only_line()
