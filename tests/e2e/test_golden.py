"""Rendered pictures against ffmpeg's tetrahedral interpolation and the published formulas."""

import struct

import numpy as np
import pytest

from conftest import (COOL, IMAGES, LOOKS, WARM, assert_alike, ffmpeg, host, pixels, render, tiff,
                      write_png)

CUBES = sorted(LOOKS.glob("*.cube"))


def planes(rgb):
    """Green, blue, red planes, as ffmpeg keeps planar RGB."""
    return np.stack([rgb[..., 1], rgb[..., 2], rgb[..., 0]])


def lut3d_float(rgb, cube):
    height, width, _ = rgb.shape
    raw = ffmpeg("-f", "rawvideo", "-pix_fmt", "gbrpf32le", "-s", f"{width}x{height}", "-i", "-",
                 "-vf", f"lut3d=file={cube}:interp=tetrahedral", "-f", "rawvideo", "-pix_fmt",
                 "gbrpf32le", "-", data=planes(rgb).astype("<f4").tobytes())
    green, blue, red = np.frombuffer(raw, "<f4").reshape(3, height, width)
    return np.stack([red, green, blue], axis=-1)


def read_float_tiff(path):
    """Rows x columns x channels of an uncompressed 32-bit float TIFF in little-endian strips."""
    data = path.read_bytes()
    assert data[:4] == b"II*\0"
    offset = struct.unpack_from("<I", data, 4)[0]
    tags = {}
    for index in range(struct.unpack_from("<H", data, offset)[0]):
        tag, kind, count = struct.unpack_from("<HHI", data, offset + 2 + index * 12)
        code, size = {3: ("H", 2), 4: ("I", 4)}.get(kind, (None, 0))
        if code:
            place = offset + 10 + index * 12
            if count * size > 4:
                place = struct.unpack_from("<I", data, place)[0]
            tags[tag] = struct.unpack_from(f"<{count}{code}", data, place)
    assert tags.get(259, (1,)) == (1,), "compressed"
    assert set(tags[258]) == {32} and set(tags[339]) == {3}, "not 32-bit float"
    raw = b"".join(data[start:start + size] for start, size in zip(tags[273], tags[279]))
    return np.frombuffer(raw, "<f4").reshape(tags[257][0], tags[256][0], tags[277][0])


def encoded(linear):
    return np.where(linear <= 0.0031308, linear * 12.92,
                    1.055 * np.maximum(linear, 0.0031308) ** (1 / 2.4) - 0.055)


def decoded(code):
    return np.where(code <= 0.04045, code / 12.92,
                    ((np.maximum(code, 0.04045) + 0.055) / 1.055) ** 2.4)


def cdl(rgb, slope, offset, power, saturation):
    graded = np.clip(rgb * slope + offset, 0, 1) ** power
    luma = graded @ np.array([0.2126, 0.7152, 0.0722])
    return np.clip(luma[..., None] + saturation * (graded - luma[..., None]), 0, 1)


@pytest.fixture(scope="module", params=["coffee.png", "rocket.jpg"])
def picture(request, tmp_path_factory):
    """A sample picture as a PNG: two JPEG decoders need not agree."""
    path = tmp_path_factory.mktemp("golden") / "picture.png"
    ffmpeg("-i", IMAGES / request.param, "-pix_fmt", "rgb24", path)
    return path


@pytest.mark.parametrize("cube", CUBES, ids=lambda path: path.stem)
def test_eight_bit_pictures_agree_with_ffmpeg_within_one_code(picture, cube, tmp_path):
    assert render(picture, tmp_path / "out.png", look=cube).code == 0
    ffmpeg("-i", picture, "-vf", f"format=gbrp,lut3d=file={cube}:interp=tetrahedral,format=rgb24",
           tmp_path / "reference.png")
    assert_alike(tmp_path / "out.png", tmp_path / "reference.png", "1/255")
    ungraded = host("compare", tmp_path / "out.png", picture, "--fail-over", "16/255")
    assert ungraded.code == 4, "nothing was graded"


@pytest.mark.parametrize("cube", CUBES, ids=lambda path: path.stem)
def test_float_pictures_agree_with_ffmpeg_within_a_4096th(picture, cube, tmp_path):
    result = render(picture, tmp_path / "out.tif", "--depth", "float", "--bits", 32, "--linear",
                    "off", look=cube)
    assert result.code == 0, result.lines
    reference = lut3d_float(pixels(picture) / 255, cube)
    (tmp_path / "reference.tif").write_bytes(tiff(reference.astype("<f4")))
    assert_alike(tmp_path / "out.tif", tmp_path / "reference.tif", "1/4096")


def test_sixteen_bit_pictures_hold_the_float_result_rounded(picture, tmp_path):
    assert render(picture, tmp_path / "out.png", "--depth", "float", "--linear", "off").code == 0
    reference = np.clip(lut3d_float(pixels(picture) / 255, WARM), 0, 1)
    (tmp_path / "reference.tif").write_bytes(tiff(reference.astype("<f4")))
    assert_alike(tmp_path / "out.png", tmp_path / "reference.tif", "17/65535")


def test_linear_pixels_are_encoded_graded_and_decoded(picture, tmp_path):
    assert render(picture, tmp_path / "out.tif", "--depth", "float", "--bits", 32, "--linear",
                  "on").code == 0
    reference = decoded(lut3d_float(encoded(pixels(picture) / 255), WARM).astype(np.float64))
    (tmp_path / "reference.tif").write_bytes(tiff(reference.astype("<f4")))
    assert_alike(tmp_path / "out.tif", tmp_path / "reference.tif", "1/1024")


def test_a_cdl_agrees_with_the_published_formula_within_one_code(picture, tmp_path):
    look = tmp_path / "look.cc"
    look.write_text("""<ColorCorrection id="x"><SOPNode><Slope>1.2 0.9 1.1</Slope>
        <Offset>-0.05 0.02 0.01</Offset><Power>1.1 0.8 1.3</Power></SOPNode>
        <SatNode><Saturation>0.7</Saturation></SatNode></ColorCorrection>""")
    assert render(picture, tmp_path / "out.png", look=look).code == 0
    reference = cdl(pixels(picture) / 255, (1.2, 0.9, 1.1), (-0.05, 0.02, 0.01), (1.1, 0.8, 1.3),
                    0.7)
    assert np.abs(pixels(tmp_path / "out.png") - reference * 255).max() <= 1


def test_the_linear_option_changes_float_results_and_no_8_bit_ones(small, tmp_path):
    for switch in ("on", "off"):
        for depth, name in (("8", "png"), ("float", "tif")):
            assert render(small, tmp_path / f"{switch}.{name}", "--depth", depth, "--linear",
                          switch).code == 0
    assert (tmp_path / "on.png").read_bytes() == (tmp_path / "off.png").read_bytes()
    difference = read_float_tiff(tmp_path / "on.tif") - read_float_tiff(tmp_path / "off.tif")
    assert np.abs(difference).max() > 0.01


@pytest.mark.parametrize("depth, written", [("8", 1), ("float", 257)])  # PNG gets 16 bits of float
def test_alpha_passes_through(depth, written, tmp_path):
    rgba = np.random.default_rng(3).integers(0, 256, (16, 24, 4))
    write_png(tmp_path / "in.png", rgba)
    assert render(tmp_path / "in.png", tmp_path / "out.png", "--depth", depth).code == 0
    graded = pixels(tmp_path / "out.png", "rgba" if written == 1 else "rgba64le")
    assert np.array_equal(graded[..., 3], rgba[..., 3] * written)
    assert not np.array_equal(graded[..., :3], rgba[..., :3] * written)


def test_a_converted_look_renders_the_same_as_its_source(small, tmp_path):
    assert host("look", COOL, tmp_path / "cool.look").code == 0
    assert render(small, tmp_path / "a.png", look=COOL).code == 0
    assert render(small, tmp_path / "b.png", look=tmp_path / "cool.look").code == 0
    assert (tmp_path / "a.png").read_bytes() == (tmp_path / "b.png").read_bytes()
