"""Pictures come out as their makers meant them: upright, with the numbers that they hold, or not."""

import struct

import numpy as np
import pytest

from conftest import ffmpeg, host, pixels, render, succeed, tiff, write_png

ORIENTATION_TAG = 274
# As a viewer turns what is stored.
UPRIGHT = {1: lambda a: a, 2: np.fliplr, 3: lambda a: np.rot90(a, 2), 4: np.flipud,
           5: lambda a: a.transpose(1, 0, 2), 6: lambda a: np.rot90(a, -1),
           7: lambda a: np.rot90(a, 2).transpose(1, 0, 2), 8: np.rot90}


@pytest.fixture
def neutral(tmp_path):
    """A look that changes nothing."""
    path = tmp_path / "neutral.cc"
    path.write_text('<ColorCorrection id="x"><SOPNode><Slope>1 1 1</Slope><Offset>0 0 0</Offset>'
                    "<Power>1 1 1</Power></SOPNode></ColorCorrection>")
    return path


def equal(first, second, most="0"):
    return host("compare", first, second, "--fail-over", most).code == 0


@pytest.mark.parametrize("orientation", UPRIGHT)
def test_a_tiff_is_turned_as_its_tag_says(orientation, neutral, tmp_path):
    stored = np.random.default_rng(orientation).integers(0, 256, (5, 7, 3)).astype("u1")
    (tmp_path / "a.tif").write_bytes(tiff(stored, tags={ORIENTATION_TAG: ("H", [orientation])}))
    result = succeed(render(tmp_path / "a.tif", tmp_path / "b.png", look=neutral))
    assert np.array_equal(pixels(tmp_path / "b.png"), UPRIGHT[orientation](stored))
    assert ("turned upright" in result.lines[0]) == (orientation != 1)


def with_exif(jpeg, orientation):
    """The bytes of a JPEG with an EXIF block behind its first marker."""
    block = b"MM\0*\0\0\0\x08\0\x01" + struct.pack(">HHIHH", ORIENTATION_TAG, 3, 1, orientation, 0)
    block = b"Exif\0\0" + block + bytes(4)
    return jpeg[:2] + b"\xff\xe1" + struct.pack(">H", len(block) + 2) + block + jpeg[2:]


def test_a_jpeg_is_turned_as_its_exif_block_says_once(neutral, tmp_path):
    ramp = np.arange(24 * 16).reshape(16, 24, 1).repeat(3, axis=2) // 2
    write_png(tmp_path / "a.png", ramp)
    ffmpeg("-i", tmp_path / "a.png", "-q:v", 1, "-pix_fmt", "yuvj444p", tmp_path / "plain.jpg")
    plain = (tmp_path / "plain.jpg").read_bytes()
    (tmp_path / "turned.jpg").write_bytes(with_exif(plain, 6))
    for name in ("plain", "turned"):
        succeed(render(tmp_path / f"{name}.jpg", tmp_path / f"{name}.png", look=neutral))
    assert np.array_equal(pixels(tmp_path / "turned.png"),
                          np.rot90(pixels(tmp_path / "plain.png"), -1))
    succeed(render(tmp_path / "turned.jpg", tmp_path / "again.jpg", look=neutral))
    assert b"Exif" not in (tmp_path / "again.jpg").read_bytes(), "a viewer would turn it again"


@pytest.mark.parametrize("shape", [(6, 9, 3), (6, 9, 4), (6, 9, 1)])
def test_floats_of_16_bits_are_the_floats_that_they_are(shape, neutral, tmp_path):
    half = (np.random.default_rng(2).random(shape) * 0.9).astype("<f2")
    half[0, 0, 0] = 0.733
    tags = {262: ("H", [1])} if shape[2] == 1 else None
    (tmp_path / "half.tif").write_bytes(tiff(half, tags=tags))
    (tmp_path / "single.tif").write_bytes(tiff(half.astype("<f4"), tags=tags))
    assert equal(tmp_path / "half.tif", tmp_path / "single.tif")
    result = succeed(render(tmp_path / "half.tif", tmp_path / "out.tif", look=neutral))
    assert "16-bit float" in result.lines[0] and "as linear light" in result.lines[0]
    assert equal(tmp_path / "out.tif", tmp_path / "single.tif", "0.0001"), "written as floats"


@pytest.mark.parametrize("kind, said", [
    ("<f8", "64-bit floats"), ("<i2", "16-bit numbers with a sign"),
    ("<u4", "32-bit whole numbers")])
def test_numbers_that_would_be_misread_are_refused_by_name(kind, said, neutral, tmp_path):
    numbers = np.ones((4, 4, 3), kind)
    tags = {339: ("H", [2] * 3)} if kind == "<i2" else None
    (tmp_path / "a.tif").write_bytes(tiff(numbers, tags=tags))
    result = render(tmp_path / "a.tif", tmp_path / "out.png", look=neutral)
    assert result.code == 1
    line = result.only_line()
    assert "a.tif" in line and "not supported" in line, line
    assert said in line, line
    assert not (tmp_path / "out.png").exists()


def test_further_pages_are_named_as_left_out(neutral, tmp_path):
    rng = np.random.default_rng(4)
    pages = [rng.integers(0, 256, (4, 6, 3)).astype("u1") for _ in range(3)]
    (tmp_path / "a.tif").write_bytes(tiff(*pages))
    result = succeed(render(tmp_path / "a.tif", tmp_path / "b.png", look=neutral))
    assert "page 1 of 3 (the others are left out)" in result.lines[0]
    assert np.array_equal(pixels(tmp_path / "b.png"), pages[0])


@pytest.mark.parametrize("kind", ["u2", "f2"])
def test_both_byte_orders_of_16_bit_channels_are_read(kind, neutral, tmp_path):
    rng = np.random.default_rng(5)
    numbers = rng.random((6, 9, 3)) if kind == "f2" else rng.integers(0, 65536, (6, 9, 3))
    for order, name in (("<", "little"), (">", "big")):
        (tmp_path / f"{name}.tif").write_bytes(tiff(numbers.astype(order + kind), order=order))
    assert equal(tmp_path / "little.tif", tmp_path / "big.tif")


def test_cmyk_and_planar_pictures_are_refused_by_name(neutral, tmp_path):
    inks = np.zeros((4, 4, 4), "u1")
    cases = {"CMYK": tiff(inks, tags={262: ("H", [5])}),
             "planar": tiff(inks[:, :, :3], tags={284: ("H", [2])}),
             "JPEG compression within TIFF": tiff(inks[:, :, :3], tags={259: ("H", [7])}),
             "BigTIFF": b"II+\0\x08\0\0\0" + bytes(100)}
    for said, data in cases.items():
        (tmp_path / "a.tif").write_bytes(data)
        result = render(tmp_path / "a.tif", tmp_path / "out.png", look=neutral)
        assert result.code == 1
        assert said in result.only_line() and "not supported" in result.only_line()
        assert not (tmp_path / "out.png").exists()
