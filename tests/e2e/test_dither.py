"""--dither puts blue noise in place of bands."""

import numpy as np
import pytest

from conftest import IMAGES, pixels, render, succeed, write_deep_png


@pytest.fixture
def neutral(tmp_path):
    """A look that changes nothing."""
    path = tmp_path / "neutral.cc"
    path.write_text('<ColorCorrection id="x"><SOPNode><Slope>1 1 1</Slope><Offset>0 0 0</Offset>'
                    "<Power>1 1 1</Power></SOPNode></ColorCorrection>")
    return path


@pytest.fixture
def ramp(tmp_path):
    """Four codes over 512 columns, 16 bits."""
    row = np.linspace(100 * 257, 104 * 257, 512).round()
    path = tmp_path / "ramp.png"
    write_deep_png(path, np.broadcast_to(row[None, :, None], (64, 512, 3)))
    return path


def test_a_gradient_keeps_its_mean_everywhere(ramp, neutral, tmp_path):
    succeed(render(ramp, tmp_path / "plain.png", "--bits", 8, look=neutral))
    succeed(render(ramp, tmp_path / "dither.png", "--bits", 8, "--dither", look=neutral))
    exact = pixels(ramp, "rgb48le") / 257
    blocks = {name: (pixels(tmp_path / f"{name}.png") - exact).reshape(64, 16, 32, 3)
              .mean(axis=(0, 2)) for name in ("plain", "dither")}
    assert np.abs(blocks["plain"]).max() > 1 / 4, "the ramp has bands"
    assert np.abs(blocks["dither"]).max() < 1 / 16
    assert np.abs(pixels(tmp_path / "dither.png") - exact).max() < 1


def test_the_noise_of_one_seed_and_frame_is_always_the_same(ramp, neutral, tmp_path):
    for number in (1, 2, 3):
        (tmp_path / f"in_{number}.png").write_bytes(ramp.read_bytes())

    def graded(name, *options):
        succeed(render(tmp_path / "in_%d.png", tmp_path / f"{name}_%d.png", "--bits", 8,
                       "--dither", *options, look=neutral))
        return {n: (tmp_path / f"{name}_{n}.png").read_bytes() for n in (1, 2, 3)
                if (tmp_path / f"{name}_{n}.png").exists()}

    first = graded("a")
    assert len(set(first.values())) == 3, "each frame has its own noise"
    assert graded("b", "--seed", 0) == first
    assert graded("c", "--frames", "2-3") == {n: first[n] for n in (2, 3)}
    assert graded("d", "--seed", 1) != first


def test_exact_codes_stay(neutral, tmp_path):
    deep = pixels(IMAGES / "coffee.png") * 257
    write_deep_png(tmp_path / "deep.png", deep)
    succeed(render(tmp_path / "deep.png", tmp_path / "a.png", "--bits", 8, "--dither",
                   look=neutral))
    assert np.array_equal(pixels(tmp_path / "a.png"), deep // 257)


def test_it_says_where_there_is_nothing_to_dither(small, linear, tmp_path):
    result = succeed(render(small, tmp_path / "a.png", "--dither"))
    assert any("--dither: it changes nothing" in line and "--depth float" in line
               for line in result.lines), result.lines
    result = succeed(render(linear, tmp_path / "a.tif", "--dither"))
    assert any("the output has 32 bits a channel" in line for line in result.lines), result.lines


def test_a_jpeg_and_a_raw_stream_are_dithered_too(ramp, neutral, tmp_path):
    for name in ("a.bgra", "a.jpg"):
        for options in ((), ("--dither",)):
            succeed(render(ramp, tmp_path / f"{len(options)}{name}", *options, look=neutral))
        assert (tmp_path / f"0{name}").read_bytes() != (tmp_path / f"1{name}").read_bytes()
    dithered = np.fromfile(tmp_path / "1a.bgra", np.uint8).reshape(64, 512, 4)[:, :, 2::-1]
    assert np.abs(dithered - pixels(ramp, "rgb48le") / 257).max() < 1
