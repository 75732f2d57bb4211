"""What ./glazel render keeps of many kinds of input: judged by ffprobe before and after, and by the
samples, held against a reference that ffmpeg makes of them in 16 bits. With -s the table is shown.
"""

import json
import subprocess
import sys
from typing import NamedTuple

import numpy as np
import pytest

from conftest import DEADLINE, ROOT, ffmpeg, run

sys.path.insert(0, str(ROOT / "tools"))
from glazel import kept, probe as probing  # noqa: E402

SIZE = "96x64"
X264 = ("-c:v", "libx264", "-qp", 1)
FFV1 = ("-c:v", "ffv1")
TAGS = "setparams=color_primaries=bt709:color_trc=bt709:colorspace=bt709:range=tv"
HDR = "setparams=color_primaries=bt2020:color_trc=smpte2084:colorspace=bt2020nc:range=tv"
HLG = HDR.replace("smpte2084", "arib-std-b67")
MASTERING = ("log-level=error:hdr10=1:repeat-headers=1:chromaloc=2:master-display=G(13250,34500)"
             "B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50):max-cll=1000,400")


class Kind(NamedTuple):
    """An input, and what becomes of it in an output of that name."""
    name: str
    target: str
    pixels: str
    words: tuple           # behind the picture's source
    most: int              # difference of a channel from the reference, of 65535
    lost: tuple = ()       # facts that the output cannot hold
    filters: str = TAGS
    matrix: str = "709"
    rate: str = "25"


def yuv(name, target, pixels, *words, most=800, **more):
    return Kind(name, target, pixels, words, most, **more)


# An 8-bit code is 257 of 65535, one of 10 bits 64; halved chroma of hard edges costs more.
KINDS = [
    yuv("h264_420.mp4", "o.mp4", "yuv420p", *X264, most=1200),
    yuv("h264_422.mkv", "o.mkv", "yuv422p", *X264, most=1200),
    yuv("h264_444.mkv", "o.mkv", "yuv444p", *X264, most=800),
    yuv("h264_10.mkv", "o.mkv", "yuv420p10le", *X264, most=1700),
    yuv("hevc_10.mp4", "o.mp4", "yuv420p10le", "-c:v", "libx265", "-x265-params",
        "log-level=error", most=6000),
    yuv("hevc_12.mkv", "o.mkv", "yuv444p12le", "-c:v", "libx265", "-x265-params",
        "log-level=error", most=6000),
    yuv("hdr10.mp4", "o.mp4", "yuv420p10le", "-c:v", "libx265", "-x265-params", MASTERING,
        most=6000, filters=HDR, matrix="2020_ncl"),
    yuv("hlg.mkv", "o.mkv", "yuv420p10le", "-c:v", "libx265", "-x265-params", "log-level=error",
        most=6000, filters=HLG, matrix="2020_ncl"),
    yuv("prores.mov", "o.mov", "yuv422p10le", "-c:v", "prores_ks", most=1200),
    yuv("prores_alpha.mov", "o.mov", "yuva444p10le", "-c:v", "prores_ks", "-profile:v", "4444",
        most=600),
    yuv("dnxhr.mov", "o.mov", "yuv422p10le", "-c:v", "dnxhd", "-profile:v", "dnxhr_hqx", "-s",
        "256x128", most=6000),
    yuv("dnxhr.mxf", "o.mxf", "yuv422p", "-c:v", "dnxhd", "-profile:v", "dnxhr_hq", "-s",
        "256x128", most=6000),
    yuv("ffv1_10.mkv", "o.mkv", "yuv422p10le", *FFV1, most=600),
    yuv("ffv1_rgb.mkv", "o.mkv", "gbrp", *FFV1, most=0, filters="null"),
    yuv("ffv1_rgb12.mkv", "o.mkv", "gbrp12le", *FFV1, most=0, filters="null"),
    yuv("ffv1_alpha.mkv", "o.mkv", "yuva420p", *FFV1, most=1200),
    yuv("utvideo.avi", "o.avi", "yuv422p", "-c:v", "utvideo", most=1000),
    yuv("v210.mov", "o.mov", "yuv422p10le", "-c:v", "v210", most=600),
    yuv("vp9.webm", "o.webm", "yuv420p", "-c:v", "libvpx-vp9", "-lossless", 1, most=9000),
    yuv("vp9_alpha.webm", "o.webm", "yuva420p", "-c:v", "libvpx-vp9", "-lossless", 1,
        "-auto-alt-ref", 0, most=9000, filters=f"lutyuv=a=100,{TAGS}"),
    yuv("mpeg2.ts", "o.ts", "yuv420p", "-c:v", "mpeg2video", "-q:v", 2, most=9000),
    yuv("interlaced.mkv", "o.mkv", "yuv420p", *X264, "-flags", "+ilme+ildct", most=3500,
        filters=f"{TAGS},setfield=tff"),
    yuv("anamorphic.mp4", "o.mp4", "yuv420p", *X264, most=1200, filters=f"{TAGS},setsar=64/45"),
    yuv("ntsc.mov", "o.mov", "yuv420p", *X264, "-timecode", "01:00:00;02", most=1200,
        rate="30000/1001"),
    yuv("odd.mkv", "o.mkv", "yuv420p", *FFV1, most=9000, filters=f"crop=95:63:0:0:exact=1,{TAGS}"),
    yuv("full.mp4", "o.mp4", "yuv420p", *X264, most=1700, filters=TAGS.replace("tv", "pc")),
    yuv("gray.mkv", "o.mkv", "gray", *FFV1, most=600, filters="setparams=range=pc"),
    yuv("animation.gif", "o.gif", "rgb8", most=3000, filters="null"),
    yuv("half_%04d.exr", "o_%04d.exr", "gbrpf32le", "-format", "half", most=40, filters="null"),
    yuv("log_%04d.dpx", "o_%04d.dpx", "gbrp10le", most=0, filters="null"),
    yuv("plain_%04d.ppm", "o_%04d.ppm", "rgb48be", most=0, filters="null"),
]

# What these lose is told; how far the samples are from the source says little.
LOSING = [
    yuv("half_%04d.exr", "o_%04d.png", "gbrpf32le", "-format", "half", filters="null",
        lost=("depth",)),
    yuv("h264_10.mkv", "o_%04d.tif", "yuv420p10le", *X264,
        lost=("colour primaries", "colour transfer")),
    yuv("interlaced.mov", "o_%04d.bmp", "yuv422p10le", "-c:v", "prores_ks", "-flags", "+ildct",
        "-timecode", "01:00:00:00", filters=f"{TAGS},setfield=tff,setsar=64/45",
        lost=("depth", "pixel aspect", "fields", "timecode", "colour primaries", "colour transfer")),
    yuv("ffv1_rgb12.mkv", "o.gif", "gbrp12le", *FFV1, filters="null", lost=("depth", "colours")),
    yuv("ffv1_alpha.mkv", "o.gif", "bgra", *FFV1, filters="null", lost=("alpha", "colours")),
]


@pytest.fixture(scope="module")
def unchanging(tmp_path_factory):
    """A look that leaves every colour as it is, also outside 0 to 1."""
    path = tmp_path_factory.mktemp("look") / "none.cc"
    path.write_text('<ColorCorrection id="none"><SOPNode><Slope>1 1 1</Slope><Offset>0 0 0</Offset>'
                    '<Power>1 1 1</Power></SOPNode></ColorCorrection>')
    return path


def make(kind, folder):
    source = folder / kind.name
    full = "full" if "range=pc" in kind.filters else "limited"
    turn = f"format=gbrp,zscale=min=gbr:rin=full:m={kind.matrix}:r={full}:c=left,"
    if kind.pixels.startswith(("gbr", "rgb", "gray")):
        turn = "format=gbrp,zscale=min=gbr:rin=full:m=gbr:r=full," if "f32" in kind.pixels else ""
    blurred = "gblur=sigma=3," if kind.pixels.startswith("yuv") else ""
    ffmpeg("-f", "lavfi", "-i", f"testsrc2=size={SIZE}:rate={kind.rate}", "-frames:v", 6, "-vf",
           f"{blurred}{turn}format={kind.pixels},{kind.filters}", *kind.words, source)
    return source


def deep_pixels(path):
    """All frames in RGBA of 16 bits, by ffmpeg's exact conversion with the file's own tags."""
    first = str(path).replace("%04d", "0001")
    stream = json.loads(subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_streams", "-of", "json", first],
        capture_output=True, check=True, timeout=DEADLINE).stdout)["streams"][0]
    # Alone that decoder reads alpha.
    decoder = ("-c:v", "libvpx-vp9") if stream["codec_name"] == "vp9" else ()
    chain = "format=gbrap16le"
    if stream["pix_fmt"].startswith("yuv"):
        matrix = "2020_ncl" if stream.get("color_space") == "bt2020nc" else "709"
        full = "full" if stream.get("color_range") == "pc" else "limited"
        alpha = "a" if stream["pix_fmt"].startswith("yuva") or decoder else ""
        wide = f"scale=flags=accurate_rnd+full_chroma_int,format=yuv{alpha}444p16le"
        chain = f"{wide},zscale=min={matrix}:rin={full}:m=gbr:r=full,format=gbrap16le"
    if "f32" in stream["pix_fmt"]:
        chain = "zscale=min=gbr:rin=full:m=gbr:r=full,format=gbrap16le"
    raw = ffmpeg(*decoder, "-i", path, "-fps_mode", "passthrough", "-vf", f"{chain},format=rgba64le",
                 "-f", "rawvideo", "-")
    return np.frombuffer(raw, "<u2").astype(np.int64)


@pytest.mark.parametrize("kind", KINDS, ids=lambda kind: kind.name)
def test_a_kind_of_input_is_kept(kind, unchanging, tmp_path):
    source, target, _ = rendered(kind, unchanging, tmp_path)
    before, after = deep_pixels(source), deep_pixels(target)
    assert before.size == after.size, "as many frames of the same size"
    difference = np.abs(before - after)
    print(f"{kind.name:20} {kind.pixels:14} largest difference {difference.max():6} of 65535")
    assert difference.max() <= kind.most


@pytest.mark.parametrize("kind", LOSING, ids=lambda kind: kind.name)
def test_what_a_kind_of_output_cannot_hold_is_told(kind, unchanging, tmp_path):
    *_, said = rendered(kind, unchanging, tmp_path)
    assert len(kind.lost) == sum("is lost" in line or "becomes" in line for line in said), said


def rendered(kind, look, folder):
    """The files and what was said, once what is lost between them has been told."""
    source, target = make(kind, folder), folder / kind.target
    result = run([ROOT / "glazel", "render", source, target, "--look", look, "--linear", "off",
                  "--quality", 100])
    assert result.code == 0, result.lines
    lost = kept.losses(facts(source), facts(target))
    told = [line for line in result.lines if line.endswith(tuple(lost.values()))]
    assert set(lost) == set(kind.lost) and len(told) == len(lost), (lost, result.lines)
    return source, target, result.lines


def facts(path):
    pattern = probing.Pattern.parse(str(path))
    numbers = pattern.numbers() if pattern else None
    return kept.facts(probing.with_times(probing.probe(str(path), pattern, numbers)))


@pytest.mark.parametrize("pixels, source, words, target, back, most", [
    ("gbrap", "i.mkv", ("-c:v", "magicyuv"), "o.mkv", "gbrap", 0),
    ("gbrap", "i.png", (), "o.exr", "gbrapf32le", 1e-6),
    ("gbrap10le", "i.mkv", FFV1, "o.mkv", "gbrap10le", 0),
    ("gbrap12le", "i.mkv", FFV1, "o.mkv", "gbrap12le", 0),
    ("gbrap16le", "i.png", (), "o.exr", "gbrapf32le", 1e-6),
    ("gbrap16le", "i.mkv", FFV1, "o.mkv", "gbrap16le", 0),
    ("gbrapf32le", "i.exr", (), "o.mkv", "gbrap16le", 0.6),
    ("gbrapf32le", "i.exr", ("-format", "half"), "o.exr", "gbrapf32le", 0),
    ("gbrp16le", "i.mkv", FFV1, "o.mkv", "gbrp16le", 0),
    ("yuva444p", "i.mkv", FFV1, "o.mkv", "yuva444p", 0),
    ("yuva420p10le", "i.mkv", FFV1, "o.mkv", "yuva420p10le", 0),
    ("gray10le", "i.mkv", (*FFV1, "-color_range", "tv"), "o.mkv", "gray10le", 0),
    ("gray12le", "i.mkv", (*FFV1, "-color_range", "pc"), "o.mkv", "gray12le", 0)])
def test_every_code_comes_back(pixels, source, words, target, back, most, unchanging, tmp_path):
    """Filters take alpha for a code of limited range, and gray for one of full range."""
    def most_of(name):
        number = probing.pixel_formats()[name]
        kind = "<f4" if number.is_float else "<u1" if number.depth == 8 else "<u2"
        return (1 if number.is_float else (1 << number.depth) - 1), kind

    (top, kind), (new_top, new_kind) = most_of(pixels), most_of(back)
    codes = np.arange(2049) / 2048 if top == 1 else np.arange(top + 1)  # halves hold these floats
    codes = codes[64:941] if "tv" in words else codes
    plane = np.resize(codes, (-(-codes.size // 4096) * 16, 256)).astype(kind)
    # Of YCbCr alpha alone is looked at: the colours of most codes are none.
    gray = np.full(plane.size * (6 if "420" in pixels else 12) // 4, top // 2, kind)
    count = 1 if "gray" in pixels else 4 if "gbra" in pixels else 3
    planes = [np.roll(plane, place) for place in range(count)]  # none may stand for another
    planes = [gray, plane] if "yuva" in pixels else planes
    ffmpeg("-f", "rawvideo", "-pix_fmt", pixels, "-s", f"256x{len(plane)}", "-i", "-", *words,
           tmp_path / source, data=b"".join(part.tobytes() for part in planes))
    result = run([ROOT / "glazel", "render", tmp_path / source, tmp_path / target,
                  "--look", unchanging])
    assert result.code == 0, result.lines
    decoded = ffmpeg("-i", tmp_path / target, "-f", "rawvideo", "-pix_fmt", back, "-")
    looked_at = 1 if "yuva" in pixels else len(planes)
    after = np.frombuffer(decoded, new_kind)[-plane.size * looked_at:].reshape(-1, *plane.shape)
    before = np.array(planes[-looked_at:]) / top
    assert np.abs(after / new_top - before).max() * new_top <= most


def test_everything_beside_the_picture_is_kept(unchanging, tmp_path):
    (tmp_path / "words.srt").write_text("1\n00:00:00,000 --> 00:00:00,200\nHello\n")
    (tmp_path / "chapters").write_text(";FFMETADATA1\ntitle=Film\n[CHAPTER]\nTIMEBASE=1/1000\n"
                                       "START=0\nEND=100\ntitle=One\n")
    source = tmp_path / "in.mkv"
    ffmpeg("-f", "lavfi", "-i", f"testsrc2=size={SIZE}:rate=25", "-f", "lavfi", "-i", "sine",
           "-f", "lavfi", "-i", "sine=500", "-i", tmp_path / "words.srt", "-i",
           tmp_path / "chapters", "-t", "0.24", "-map", 0, "-map", 1, "-map", 2, "-map", 3,
           "-map_metadata", 4, "-map_chapters", 4, *X264, "-c:a", "aac", "-metadata:s:a:0",
           "language=deu", "-metadata:s:a:1", "language=fra", "-attach", tmp_path / "words.srt",
           "-metadata:s:t", "mimetype=text/plain", source)
    result = run([ROOT / "glazel", "render", source, tmp_path / "o.mkv", "--look", unchanging,
                  "--strict"])
    assert result.code == 0, result.lines
    before = facts(source)
    assert {"sound 1", "sound 2", "subtitle 1", "attachment 1", "chapters"} <= set(before)
    assert kept.losses(before, facts(tmp_path / "o.mkv")) == {}
    result = run([ROOT / "glazel", "render", source, tmp_path / "o.mp4", "--look", unchanging])
    assert result.code == 0, result.lines
    lost = kept.losses(before, facts(tmp_path / "o.mp4"))
    assert set(lost) == {"attachment 1", "subtitle 1"}
    for line in lost.values():
        assert sum(line in said for said in result.lines) == 1, (line, result.lines)


@pytest.mark.parametrize("target, words, lost", [
    ("o.mp4", (), set()), ("o.mkv", (), set()),
    ("o.mov", ("--codec", "prores"), {"cover picture 1", "picture's language"})])
def test_a_cover_goes_where_it_can_and_is_missed_beforehand(target, words, lost, unchanging, tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=48x48", "-frames:v", 1, tmp_path / "cover.png")
    source = tmp_path / "in.mp4"
    ffmpeg("-f", "lavfi", "-i", f"testsrc2=size={SIZE}:rate=25", "-i", tmp_path / "cover.png",
           "-map", 0, "-map", 1, "-frames:v:0", 3, "-c:v:0", "libx264", "-c:v:1", "png",
           "-disposition:v:1", "attached_pic", "-metadata:s:v:0", "language=deu", "-timecode",
           "01:00:00:00", source)
    result = run([ROOT / "glazel", "render", source, tmp_path / target, "--look", unchanging, *words])
    assert result.code == 0, result.lines
    before = facts(source)
    assert {"cover picture 1", "picture's language", "timecode"} <= set(before)
    found = kept.losses(before, facts(tmp_path / target))
    assert set(found) == lost
    begun = next(n for n, line in enumerate(result.lines) if "rendered in" in line)
    assert sum(line in said for line in found.values() for said in result.lines[:begun]) == len(lost)


def test_a_rotation_is_applied_and_told(unchanging, tmp_path):
    ffmpeg("-f", "lavfi", "-i", f"testsrc2=size={SIZE}", "-frames:v", 3, *X264, tmp_path / "a.mp4")
    ffmpeg("-i", tmp_path / "a.mp4", "-c", "copy", "-metadata:s:v:0", "rotate=90",
           tmp_path / "in.mp4")
    result = run([ROOT / "glazel", "render", tmp_path / "in.mp4", tmp_path / "o.mp4", "--look",
                  unchanging])
    assert result.code == 0, result.lines
    assert any("rotation" in line and "applied" in line for line in result.lines)
    assert facts(tmp_path / "o.mp4")["size"] == "64 x 96"
    assert "rotation" not in facts(tmp_path / "o.mp4")
