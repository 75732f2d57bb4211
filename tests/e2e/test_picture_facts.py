"""What a picture says of its colours and its resolution goes into the picture that is made of it."""

import struct
import zlib

import numpy as np
import pytest

from conftest import ffmpeg, pixels, render, succeed, tiff, write_png


def profile(space=b"RGB ", size=1000):
    body = np.random.default_rng(3).integers(0, 256, size - 128, np.uint8).tobytes()
    head = struct.pack(">I", size) + bytes(12) + space + bytes(16) + b"acsp"
    return head.ljust(128, b"\0") + body


# Readers that share nothing with the program.

def png_chunks(data):
    place, chunks = 8, {}
    while place < len(data):
        length, name = struct.unpack_from(">I4s", data, place)
        contents = data[place + 8:place + 8 + length]
        check = struct.unpack_from(">I", data, place + 8 + length)[0]
        assert zlib.crc32(name + contents) == check, name
        assert name == b"IDAT" or name not in chunks, name
        assert b"IDAT" not in chunks or name in (b"IDAT", b"IEND"), "facts stand before pixels"
        chunks[name] = contents
        place += 12 + length
    return chunks


def jpeg_segments(data):
    place, segments = 2, []
    while data[place + 1] != 0xDA:
        length = struct.unpack_from(">H", data, place + 2)[0]
        segments.append((data[place + 1], data[place + 4:place + 2 + length]))
        place += 2 + length
    return segments


def tiff_tags(data, place=None):
    assert data[:4] == b"II*\0"
    place = struct.unpack_from("<I", data, 4)[0] if place is None else place
    tags = {}
    for index in range(struct.unpack_from("<H", data, place)[0]):
        tag, kind, count = struct.unpack_from("<HHI", data, place + 2 + 12 * index)
        code, size = {1: ("B", 1), 2: ("s", 1), 3: ("H", 2), 4: ("I", 4), 5: ("II", 8),
                      7: ("s", 1)}[kind]
        at = place + 10 + 12 * index
        if count * size > 4:
            at = struct.unpack_from("<I", data, at)[0]
        if code == "s":
            tags[tag] = data[at:at + count]
        else:
            values = struct.unpack_from("<" + code * count, data, at)
            tags[tag] = [a / b for a, b in zip(values[::2], values[1::2])] \
                if kind == 5 else list(values)
    return tags


def facts(path):
    """Profile, resolution by the inch, and whether it says that it is sRGB."""
    data = path.read_bytes()
    if data[:2] == b"\xff\xd8":
        segments = jpeg_segments(data)
        unit, across, down = struct.unpack_from(">BHH", segments[0][1], 7)
        assert unit in (0, 1)
        icc = b"".join(s[14:] for n, s in segments if n == 0xE2 and s.startswith(b"ICC_PROFILE\0"))
        exif = [tiff_tags(s[6:]) for n, s in segments if n == 0xE1]
        pointer = exif[0].get(34665) if exif else None
        srgb = pointer and tiff_tags(segments[1][1][6:], pointer[0]).get(40961) == [1]
        return icc, (across, down) if unit else None, bool(srgb)
    if data[:4] == b"II*\0":
        tags = tiff_tags(data)
        resolution = (tags[282][0], tags[283][0]) if 282 in tags and tags[296] == [2] else None
        srgb = 34665 in tags and tiff_tags(data, tags[34665][0]).get(40961) == [1]
        return tags.get(34675, b""), resolution, srgb
    chunks = png_chunks(data)
    icc = chunks.get(b"iCCP", b"")
    icc = icc and zlib.decompress(icc[icc.index(b"\0") + 2:])
    across, down, unit = struct.unpack(">IIB", chunks.get(b"pHYs", bytes(9)))
    return icc, (round(across * 0.0254), round(down * 0.0254)) if unit else None, b"sRGB" in chunks


# Pictures that say something, made of one that says nothing.

def png_with(data, *chunks):
    end = 8 + 25  # behind the header
    made = b"".join(struct.pack(">I", len(contents)) + name + contents +
                    struct.pack(">I", zlib.crc32(name + contents)) for name, contents in chunks)
    return data[:end] + made + data[png_first_pixels(data):]


def png_first_pixels(data):
    return data.index(b"IDAT") - 4


def make(path, icc=b"", resolution=None, srgb=False):
    """8 bits, 12 x 16."""
    picture = np.random.default_rng(7).integers(0, 256, (12, 16, 3), np.uint8)
    if path.suffix == ".tif":
        tags = {34675: ("B", icc)} if icc else {}
        path.write_bytes(tiff(picture, tags=tags))
        if resolution:  # fractions, which stand behind the file
            data = bytearray(tiff(picture, tags=tags | {282: ("I", [0]), 283: ("I", [0]),
                                                        296: ("H", [2])}))
            for tag, number in ((282, resolution[0]), (283, resolution[1])):
                at = data.index(struct.pack("<HHII", tag, 4, 1, 0))
                struct.pack_into("<HHII", data, at, tag, 5, 1, len(data))
                data += struct.pack("<II", number, 1)
            path.write_bytes(data)
    elif path.suffix == ".png":
        write_png(path, picture)
        chunks = [(b"iCCP", b"p\0\0" + zlib.compress(icc))] if icc else []
        chunks += [(b"sRGB", b"\1")] if srgb else []
        chunks += [(b"pHYs", struct.pack(">IIB", *[round(n / 0.0254) for n in resolution], 1))] \
            if resolution else []
        path.write_bytes(png_with(path.read_bytes(), *chunks))
    else:
        write_png(path.with_suffix(".png"), picture)
        ffmpeg("-i", path.with_suffix(".png"), "-q:v", 1, "-pix_fmt", "yuvj444p", path)
        data = path.read_bytes()
        head = struct.pack(">BHH", 1, *resolution) if resolution else struct.pack(">BHH", 0, 1, 1)
        head = b"JFIF\0\1\1" + head + b"\0\0"
        made = b"\xff\xe0" + struct.pack(">H", len(head) + 2) + head
        pieces = [icc[i:i + 60000] for i in range(0, len(icc), 60000)]
        for number, piece in enumerate(pieces, 1):
            piece = b"ICC_PROFILE\0" + bytes([number, len(pieces)]) + piece
            made += b"\xff\xe2" + struct.pack(">H", len(piece) + 2) + piece
        first = 4 + struct.unpack_from(">H", data, 4)[0]
        path.write_bytes(data[:2] + made + data[first:])
    return path


KINDS = (".png", ".jpg", ".tif")


@pytest.mark.parametrize("target", KINDS)
@pytest.mark.parametrize("source", KINDS)
def test_profile_and_resolution_go_from_every_kind_into_every_other(source, target, tmp_path):
    icc = profile(size=130000)
    made = make(tmp_path / f"a{source}", icc, (300, 150))
    result = succeed(render(made, tmp_path / f"b{target}"))
    assert facts(tmp_path / f"b{target}") == (icc, (300, 150), False)
    assert not any("left out" in line for line in result.lines), result.lines
    plain = make(tmp_path / f"plain{source}")
    succeed(render(plain, tmp_path / f"plain_b{target}"))
    assert facts(tmp_path / f"plain_b{target}") == (b"", None, False)
    assert np.array_equal(pixels(tmp_path / f"b{target}"), pixels(tmp_path / f"plain_b{target}"))


@pytest.mark.parametrize("target, bits", [("b.png", 16), ("b.tif", 16), ("b.tif", 32)])
def test_they_go_into_deep_pictures_too(target, bits, tmp_path):
    made = make(tmp_path / "a.png", profile(), (300, 150))
    succeed(render(made, tmp_path / target, "--depth", "float", "--bits", bits))
    assert facts(tmp_path / target) == (profile(), (300, 150), False)


@pytest.mark.parametrize("target", KINDS)
def test_what_is_srgb_is_said_to_be_srgb(target, tmp_path):
    succeed(render(make(tmp_path / "a.png", srgb=True), tmp_path / f"b{target}"))
    assert facts(tmp_path / f"b{target}")[2]
    succeed(render(tmp_path / f"b{target}", tmp_path / "c.png"))
    assert facts(tmp_path / "c.png")[2]


def test_the_statements_of_a_png_stay_as_they_are(tmp_path):
    chunks = {b"cICP": bytes([9, 16, 0, 1]), b"gAMA": struct.pack(">I", 45455),
              b"cHRM": struct.pack(">8I", 31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000)}
    made = make(tmp_path / "a.png")
    made.write_bytes(png_with(made.read_bytes(), *chunks.items()))
    succeed(render(made, tmp_path / "b.png"))
    written = png_chunks((tmp_path / "b.png").read_bytes())
    assert {name: written.get(name) for name in chunks} == chunks
    result = succeed(render(made, tmp_path / "b.jpg"))
    assert [line for line in result.lines if "left out" in line and "cICP" in line]
    succeed(render(tmp_path / "b.jpg", tmp_path / "c.png"))
    again = png_chunks((tmp_path / "c.png").read_bytes())
    assert again[b"gAMA"] == chunks[b"gAMA"] and again[b"cHRM"] == chunks[b"cHRM"]


def test_a_bmp_keeps_the_resolution_and_says_that_the_profile_is_left_out(tmp_path):
    made = make(tmp_path / "a.png", profile(), (300, 150))
    result = succeed(render(made, tmp_path / "b.bmp"))
    assert struct.unpack_from("<II", (tmp_path / "b.bmp").read_bytes(), 38) == (11811, 5906)
    said = [line for line in result.lines if "left out" in line]
    assert len(said) == 1
    assert "b.bmp: left out of the picture is its colour profile, which a BMP does not hold" \
        in said[0]
    succeed(render(tmp_path / "b.bmp", tmp_path / "c.png"))
    assert facts(tmp_path / "c.png")[1] == (300, 150)
    result = render(made, tmp_path / "d.bmp", "--strict")
    assert result.code == 1 and "colour profile" in result.lines[-1]
    assert not (tmp_path / "d.bmp").exists()


def test_what_is_left_out_of_a_sequence_is_said_once(tmp_path):
    for number in range(3):
        make(tmp_path / f"a_{number}.png", profile())
    result = succeed(render(tmp_path / "a_%d.png", tmp_path / "b_%d.bmp"))
    assert len([line for line in result.lines if "left out" in line]) == 1


@pytest.mark.parametrize("space", [b"GRAY", b"CMYK"])
def test_a_profile_of_other_colours_is_not_given_to_rgb(space, tmp_path):
    made = make(tmp_path / "a.tif", profile(space))
    result = succeed(render(made, tmp_path / "b.tif"))
    assert facts(tmp_path / "b.tif")[0] == b""
    assert any(f"which is of {space.decode()} and not of RGB" in line for line in result.lines)


def test_a_turned_picture_has_its_resolution_turned_too(tmp_path):
    made = make(tmp_path / "a.png", resolution=(300, 150))
    exif = b"MM\0*\0\0\0\x08\0\x01" + struct.pack(">HHIHH", 274, 3, 1, 6, 0) + bytes(4)
    chunks = png_chunks(made.read_bytes())
    made.write_bytes(png_with(made.read_bytes(), (b"pHYs", chunks[b"pHYs"]), (b"eXIf", exif)))
    succeed(render(made, tmp_path / "b.png"))
    assert facts(tmp_path / "b.png")[1] == (150, 300)
    assert b"eXIf" not in png_chunks((tmp_path / "b.png").read_bytes())


def test_transparency_that_a_jpeg_does_not_hold_is_named(tmp_path):
    write_png(tmp_path / "a.png", np.random.default_rng(1).integers(0, 256, (4, 6, 4)))
    result = succeed(render(tmp_path / "a.png", tmp_path / "b.jpg"))
    assert any("its transparency, which a JPEG does not hold" in line for line in result.lines)
