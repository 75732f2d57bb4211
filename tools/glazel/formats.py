"""What containers take and how codecs are asked for: tables, and the choice among them."""

from __future__ import annotations

import functools
import re
from dataclasses import dataclass, fields, replace
from fractions import Fraction

from .failure import Failure
from .names import HOST_PICTURES, PICTURES
from .probe import Media, PixelFormat, pixel_formats, tool


@dataclass(frozen=True)
class Container:
    """A kind of file."""

    muxer: str
    codecs: list[str]
    usual: list[str]  # for 8 bits, for more, and for alpha, or one for all
    holds: list[str]  # of: attachments chapters colours covers language moments timecode
    sound: list[str]  # copied; empty: it has none
    sound_codec: str  # what other sound becomes
    sound_rate: str  # the only one that it takes; empty: any
    subtitles: list[str]
    text_codec: str  # what other texts become; empty: nothing
    tags: list[str]  # "any" stands for all
    options: list[str]

    @property
    def even(self) -> bool:
        """It has one rate only."""
        return "moments" not in self.holds


_WORDS = {
    "PCM": "pcm_s16le pcm_s24le pcm_s32le pcm_f32le pcm_s16be pcm_s24be pcm_u8",
    "LOSSLESS": "ffv1 utvideo huffyuv ffvhuff magicyuv",
    "BITMAPS": "hdmv_pgs_subtitle dvd_subtitle dvb_subtitle",
    "FILM": "chapters colours moments timecode",
    "QUICKTIME": "title artist album album_artist date genre composer copyright description "
    "grouping lyrics synopsis show episode_id network performer keywords comment",
}
_TABLE = """
mp4 m4v | mp4 | h264 hevc av1 vp9 mpeg4 mpeg2video mjpeg | h264 hevc h264 | covers language FILM
    | aac mp3 ac3 eac3 alac opus flac dts mp2 | aac | | mov_text dvd_subtitle | mov_text
    | QUICKTIME | -movflags +faststart
mov | mov | h264 hevc av1 mpeg4 mpeg2video mjpeg prores dnxhd v210 v410 r210 cfhd qtrle png rawvideo
    jpeg2000 dvvideo LOSSLESS | h264 prores prores | FILM
    | aac mp3 ac3 eac3 alac mp2 PCM | aac | | mov_text | mov_text
    | QUICKTIME | -movflags +faststart
mkv | matroska | h264 hevc av1 vp8 vp9 mpeg4 mpeg2video mpeg1video mjpeg prores png LOSSLESS
    | h264 hevc ffv1 | attachments chapters colours covers moments
    | aac mp3 mp2 ac3 eac3 dts truehd mlp flac opus vorbis alac PCM | aac |
    | subrip ass webvtt BITMAPS | srt | any |
webm | webm | vp8 vp9 av1 | vp9 | chapters colours moments
    | opus vorbis | libopus | | webvtt | webvtt | any |
ts mts m2ts | mpegts | h264 hevc mpeg2video | h264 hevc h264 | colours moments
    | aac mp3 mp2 ac3 eac3 | aac | | dvb_subtitle | | service_name service_provider |
avi | avi | h264 mpeg4 mjpeg rawvideo v210 png dvvideo LOSSLESS | h264 ffv1 ffv1 |
    | mp3 ac3 aac pcm_s16le pcm_u8 mp2 | libmp3lame | | |
    | title artist copyright date genre album comment |
mxf | mxf | mpeg2video dnxhd prores h264 jpeg2000 dvvideo | dnxhd | colours timecode
    | pcm_s16le pcm_s24le | pcm_s24le | 48000 | | | |
nut | nut | h264 mpeg4 rawvideo mjpeg mpeg2video LOSSLESS | ffv1 | chapters moments
    | aac mp3 mp2 ac3 flac opus vorbis PCM | aac | | | | any |
flv | flv | h264 | h264 | colours moments | aac mp3 | aac | | | | |
y4m | yuv4mpegpipe | wrapped_avframe | wrapped_avframe | | | | | | | | -strict -1
gif | gif | gif | gif | moments | | | | | | |
avif | avif | av1 | av1 | colours moments | | | | | | |
"""


def _containers() -> dict[str, Container]:
    """By the endings of their files."""
    found: dict[str, Container] = {}
    table = re.sub("[A-Z]{3,}", lambda name: _WORDS[name[0]], _TABLE.strip())
    kinds = [str(field.type) for field in fields(Container)]
    for row in re.split(r"\n(?! )", table):
        endings, *cells = row.split("|")
        values = [c.split() if kind != "str" else c.strip() for c, kind in zip(cells, kinds)]
        found |= dict.fromkeys(endings.split(), Container(*values))
    names = {"tga": "targa", "jp2": "jpeg2000", "j2k": "jpeg2000", "jxl": "jpegxl"}
    for ending in PICTURES - HOST_PICTURES - {"avif"}:
        codec = [names.get(ending, ending)]
        found[ending] = replace(found["gif"], muxer="image2", codecs=codec, usual=codec)
    return found


CONTAINERS = _containers()
RAW_FILES = frozenset(("bgra", "raw"))
NO_FIELDS = "av1 vp8 vp9 hevc dnxhd gif webp png mjpeg wrapped_avframe".split()
NO_COLOURS = "gif png qoi targa dpx exr ppm pgm pam pfm phm webp jpegxl jpeg2000".split()

# Planes that zscale takes as they are.
PLANAR = frozenset(
    """gray gray9le gray10le gray12le gray14le gray16le gbrp gbrap gbrap16le gbrpf32le gbrapf32le
    yuv410p yuv411p yuv440p yuv440p10le yuv440p12le yuvj420p yuvj422p yuvj444p""".split()
    + [f"gbrp{depth}le" for depth in (9, 10, 12, 14, 16)]
    + [f"yuv{s}p{d}" for s in (420, 422, 444) for d in ("", "9le", "10le", "12le", "14le", "16le")]
    + [f"yuva{s}p{d}" for s in (420, 422, 444) for d in ("", "9le", "10le", "16le")]
)
_SAMPLES = {  # of encoders that do not say
    "rawvideo": "yuv420p uyvy422 yuyv422 rgb24 argb rgba rgb48be".split(),
    "wrapped_avframe": [
        "gray",
        "yuv411p",
        *(n for n in sorted(PLANAR) if re.match("yuv4(20|22|44)p", n)),
    ],
}


@functools.cache
def encoder_formats(encoder: str) -> list[PixelFormat]:
    """What the encoder of this machine's ffmpeg takes; empty when it has no such encoder."""
    listed = _SAMPLES.get(encoder)
    if not listed:
        said = tool("ffmpeg", "-hide_banner", "-v", "error", "-h", f"encoder={encoder}").stdout
        found = re.search(r"Supported pixel formats: (.*)", said.decode())
        listed = found[1].split() if found else list(pixel_formats()) if b"Encoder " in said else []
    return [pixel_formats()[name] for name in listed if name in pixel_formats()]


_ENCODERS = {"h264": "libx264", "hevc": "libx265", "av1": "libaom-av1", "vp8": "libvpx"}
_ENCODERS |= {"vp9": "libvpx-vp9", "prores": "prores_ks", "webp": "libwebp"}
_ENCODERS |= {"jpeg2000": "libopenjpeg", "jpegxl": "libjxl"}
_NAMES = {"h265": "hevc", "x264": "h264", "x265": "hevc", "dnxhr": "dnxhd", "uncompressed": "v210"}
_NAMES |= {"mpeg2": "mpeg2video", "raw": "rawvideo"}
_LEAST_SVT = 64  # columns and rows


def encoder_of(codec: str, wanted: PixelFormat) -> str:
    """`codec` may be an encoder's own name too."""
    if codec == "h264" and wanted.rgb and not wanted.alpha:
        return "libx264rgb"
    if codec == "av1" and not wanted.rgb and (wanted.sub_w, wanted.sub_h) == (1, 1):
        return "libsvtav1"
    return _ENCODERS.get(codec, codec)


def _distance(have: PixelFormat, want: PixelFormat) -> tuple[float, ...]:
    """How much would be lost, the worst first, then what would be wasted."""
    bits = max(0, want.depth - have.depth) + (16 if want.is_float and not have.is_float else 0)
    chroma = max(0, have.sub_w - want.sub_w) + max(0, have.sub_h - want.sub_h)
    waste = max(0, have.depth - want.depth) / 8 + (have.alpha and not want.alpha)
    waste += max(0, want.sub_w - have.sub_w) + max(0, want.sub_h - have.sub_h)
    odd = have.name.startswith("yuvj") or have.name.endswith("be") or have.name in ("pal8", "nv21")
    return (
        have.gray and not want.gray,
        want.alpha and not have.alpha,
        bits,
        chroma + (have.rgb != want.rgb and not want.gray),
        have.is_float and not want.is_float,
        waste + (0.5 if want.gray and not have.gray else 0),
        odd + (have.name not in PLANAR and not have.rgb),
    )


def _nearest(media: Media, formats: list[PixelFormat]) -> PixelFormat:
    """The one of `formats` that keeps most of the samples and can have that size."""
    strange = ("nv", "p0", "p2", "x2", "xyz", "ya", "vdpau", "cuda", "vaapi")
    known = [f for f in formats if f.name in PLANAR or f.rgb]
    usable = [
        f
        for f in formats
        if media.width % (1 << f.sub_w) == 0
        and media.height % (1 << f.sub_h) == 0
        and not (f.is_float and (f.gray or "f16" in f.name))
        and not f.name.startswith(strange)
        and (f in known or f.name in _SAMPLES["rawvideo"] or f.is_float)
    ]
    return min(usable or known, key=lambda have: _distance(have, media.format))


@dataclass(frozen=True)
class Choice:
    """How a picture is encoded."""

    codec: str
    encoder: str
    format: PixelFormat


def choose(media: Media, name: str, container: Container, codec: str | None) -> Choice:
    """The input's codec and samples where the container and the codec can hold them."""
    wanted = media.format
    deep = wanted.depth > 8
    if codec:
        what, why, remedy = (
            f"--codec {codec}",
            "this ffmpeg has no such codec",
            "see ffmpeg -encoders",
        )
        codec = _NAMES.get(codec, codec)
    else:
        codec = media.codec
        if codec not in container.codecs or not encoder_formats(encoder_of(codec, wanted)):
            codec = (container.usual * 3)[2 if wanted.alpha else 1 if deep else 0]
            if container.muxer == "matroska" and (wanted.rgb and deep or wanted.is_float):
                codec = "ffv1"
        what, why = name, f"this ffmpeg has no encoder {encoder_of(codec, wanted)}"
        remedy = "choose another kind of file, or another --codec"
    encoder = encoder_of(codec, wanted)
    too_much = wanted.depth > 10 or wanted.alpha or min(media.width, media.height) < _LEAST_SVT
    if encoder == "libsvtav1" and too_much:
        encoder = "libaom-av1"
    formats = encoder_formats(encoder)
    if not formats:
        raise Failure(what, why, remedy)
    return Choice(codec, encoder, _nearest(media, formats))


_LOSSY = {  # a number for the usual, the best and the worst quality, and how it is said
    row[0]: ([int(number) for number in row[1:4]], row[4:])
    for row in map(
        str.split,
        """
        libx264     16   0 51  -crf {} -preset medium
        libx264rgb  16   0 51  -crf {} -preset medium
        libx265     16   0 51  -crf {} -preset medium -tag:v hvc1
        libvpx      10   0 63  -crf {} -b:v 50M -row-mt 1 -threads 4
        libvpx-vp9  20   0 63  -crf {} -b:v 0 -row-mt 1 -threads 4
        libaom-av1  20   0 63  -crf {} -b:v 0 -cpu-used 6 -row-mt 1
        libsvtav1   20   0 63  -crf {} -preset 8
        mpeg1video   2   1 31  -q:v {}
        mpeg2video   2   1 31  -q:v {}
        mpeg4        2   1 31  -q:v {}
        mjpeg        2   1 31  -q:v {}
        libwebp     95 100  0  -quality {}
        """.strip().splitlines(),
    )
}
_PRORES = {"Proxy": "proxy", "LT": "lt", "Standard": "standard"}
_SLICED = 16  # rows; ffmpeg 5.1 writes zeros into four slices of two


def encoder_options(choice: Choice, media: Media, quality: int | None) -> list[str]:
    """Words for ffmpeg behind the choice of the encoder."""
    encoder, number = choice.encoder, choice.format
    full, deep, words = number.sub_w == 0, number.depth > 8, []
    if encoder in _LOSSY:
        (usual, best, worst), form = _LOSSY[encoder]
        found = usual if quality is None else best + round((worst - best) * (100 - quality) / 100)
        words = [word.format(found) for word in form]
    if encoder.startswith("libvpx") and number.alpha:
        words += ["-auto-alt-ref", "0"]
    elif encoder == "libwebp" and number.rgb and quality is None:
        words += ["-lossless", "1"]
    elif encoder == "prores_ks":
        rich = "4444xq" if media.profile == "XQ" else "4444"
        words = ["-profile:v:0", rich if full else _PRORES.get(media.profile, "hq")]
        words += ["-alpha_bits", "16"] if number.alpha else []
    elif encoder == "dnxhd":
        same = media.profile.lower().replace(" ", "_")
        usual_profile = "dnxhr_444" if full else "dnxhr_hqx" if deep else "dnxhr_hq"
        is_small = same in ("dnxhr_lb", "dnxhr_sq") and not deep
        words = ["-profile:v:0", same if is_small else usual_profile]
    elif encoder == "ffv1":
        words = "-level 3 -slicecrc 1 -slices 4 -g 1".split()
        words = words if media.height >= _SLICED else ["-level", "1"]
    elif encoder == "exr":
        words = ["-compression", "zip16", "-format", "half" if media.half else "float"]
    words += _hdr_options(encoder, media)
    if media.fields and encoder in ("libx264", "mpeg2video", "mpeg4", "prores_ks"):
        words += ["-flags", "+ildct" if encoder == "prores_ks" else "+ilme+ildct"]
    elif media.fields:
        words += ["-field_order", "tt" if media.fields == "tff" else "bb"]
    return words


# Encoders that can say mastering display and light level: the option, the two words in it, and
# the units of chromaticity and luminance; 0: as decimals.
HDR_ENCODERS = {
    "libx264": ("-x264-params", "mastering-display", "cll", 50000, 10000),
    "libx265": ("-x265-params", "master-display", "max-cll", 50000, 10000),
    "libsvtav1": ("-svtav1-params", "mastering-display", "content-light", 0, 0),
}


def _hdr_options(encoder: str, media: Media) -> list[str]:
    if encoder not in HDR_ENCODERS:
        return []
    option, display, level, chroma, luminance = HDR_ENCODERS[encoder]

    def pair(first: str, second: str, unit: int) -> str:
        values = [Fraction(media.mastering[name]) for name in (first, second)]
        return ",".join(str(round(v * unit)) if unit else f"{float(v):.6g}" for v in values)

    parts = ["log-level=error"] if encoder == "libx265" else []
    if encoder == "libx265" and (media.mastering or media.light):
        parts += ["hdr10=1", "repeat-headers=1"]
    if media.mastering:
        points = {"G": "green", "B": "blue", "R": "red", "WP": "white_point"}
        text = "".join(f"{key}({pair(f'{n}_x', f'{n}_y', chroma)})" for key, n in points.items())
        parts += [f"{display}={text}L({pair('max_luminance', 'min_luminance', luminance)})"]
    parts += ["{}={},{}".format(level, *media.light)] if media.light else []
    return [option, ":".join(parts)] if parts else []
