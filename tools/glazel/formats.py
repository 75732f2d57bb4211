"""What containers take and how codecs are asked for: tables, and the choice among them."""

from __future__ import annotations

import functools
import re
import subprocess
from dataclasses import dataclass
from fractions import Fraction
from typing import Any

from .failure import Failure
from .names import HOST_PICTURES, PICTURES
from .probe import Media, PixelFormat, pixel_formats

_FRAMES = "wrapped_avframe"
RAW_FILES = frozenset(("bgra", "raw"))


def _words(text: str) -> frozenset[str]:
    return frozenset(text.split())


@dataclass(frozen=True)
class Container:
    """A kind of file."""

    muxer: str
    codecs: frozenset[str]
    usual: tuple[str, ...]  # for 8 bits, for more, and for alpha
    holds: frozenset[str]  # of: attachments chapters colours covers moments timecode
    sound: frozenset[str]  # copied; empty: it has none
    subtitles: frozenset[str]
    sound_codec: str = "aac"
    sound_rate: int = 0  # the only one that it takes; 0: any
    text_codec: str = ""  # what texts become
    tags: frozenset[str] | None = frozenset()  # None: any
    options: tuple[str, ...] = ()

    @property
    def even(self) -> bool:
        """It has one rate only."""
        return "moments" not in self.holds


def _kind(
    muxer: str,
    codecs: str,
    usual: str,
    holds: str,
    sound: str = "",
    subtitles: str = "",
    **more: Any,
) -> Container:
    """`usual`: one codec, or three of them."""
    three = tuple((usual.split() * 3)[:3])
    sets = _words(holds), _words(sound), _words(subtitles)
    return Container(muxer, _words(codecs), three, *sets, **more)


_PCM = "pcm_s16le pcm_s24le pcm_s32le pcm_f32le pcm_s16be pcm_s24be pcm_u8"
_LOSSLESS = "ffv1 utvideo huffyuv ffvhuff magicyuv"
_SUBTITLES = "subrip ass webvtt hdmv_pgs_subtitle dvd_subtitle dvb_subtitle"
_QUICKTIME: dict[str, Any] = {
    "text_codec": "mov_text",
    "tags": _words(
        "title artist album album_artist date genre composer copyright description grouping lyrics "
        "synopsis show episode_id network performer keywords comment"
    ),
    "options": ("-movflags", "+faststart"),
}
_ALL = "attachments chapters colours covers moments"
_FILM = "chapters colours covers moments timecode"
_MP4 = _kind(
    "mp4",
    "h264 hevc av1 vp9 mpeg4 mpeg2video mjpeg",
    "h264 hevc h264",
    _FILM,
    "aac mp3 ac3 eac3 alac opus flac dts mp2",
    "mov_text dvd_subtitle",
    **_QUICKTIME,
)
_TS = _kind(
    "mpegts",
    "h264 hevc mpeg2video",
    "h264 hevc h264",
    "colours moments",
    "aac mp3 mp2 ac3 eac3",
    "dvb_subtitle",
    tags=_words("service_name service_provider"),
)
CONTAINERS = {
    **dict.fromkeys(("mp4", "m4v"), _MP4),
    **dict.fromkeys(("ts", "mts", "m2ts"), _TS),
    "mov": _kind(
        "mov",
        "h264 hevc av1 mpeg4 mpeg2video mjpeg prores dnxhd v210 v410 r210 cfhd qtrle png rawvideo "
        f"jpeg2000 dvvideo {_LOSSLESS}",
        "h264 prores prores",
        _FILM,
        f"aac mp3 ac3 eac3 alac mp2 {_PCM}",
        "mov_text",
        **_QUICKTIME,
    ),
    "mkv": _kind(
        "matroska",
        f"h264 hevc av1 vp8 vp9 mpeg4 mpeg2video mpeg1video mjpeg prores png {_LOSSLESS}",
        "h264 hevc ffv1",
        _ALL,
        f"aac mp3 mp2 ac3 eac3 dts truehd mlp flac opus vorbis alac {_PCM}",
        _SUBTITLES,
        text_codec="srt",
        tags=None,
    ),
    "webm": _kind(
        "webm",
        "vp8 vp9 av1",
        "vp9",
        "chapters colours moments",
        "opus vorbis",
        "webvtt",
        sound_codec="libopus",
        text_codec="webvtt",
        tags=None,
    ),
    "avi": _kind(
        "avi",
        f"h264 mpeg4 mjpeg rawvideo v210 png dvvideo {_LOSSLESS}",
        "h264 ffv1 ffv1",
        "",
        "mp3 ac3 aac pcm_s16le pcm_u8 mp2",
        sound_codec="libmp3lame",
        tags=_words("title artist copyright date genre album comment"),
    ),
    "mxf": _kind(
        "mxf",
        "mpeg2video dnxhd prores h264 jpeg2000 dvvideo",
        "dnxhd",
        "colours timecode",
        "pcm_s16le pcm_s24le",
        sound_codec="pcm_s24le",
        sound_rate=48000,
    ),
    "nut": _kind(
        "nut",
        f"h264 mpeg4 rawvideo mjpeg mpeg2video {_LOSSLESS}",
        "ffv1",
        "chapters moments",
        f"aac mp3 mp2 ac3 flac opus vorbis {_PCM}",
        tags=None,
    ),
    "flv": _kind("flv", "h264", "h264", "colours moments", "aac mp3"),
    "gif": _kind("gif", "gif", "gif", "moments"),
    "y4m": _kind("yuv4mpegpipe", _FRAMES, _FRAMES, "", options=("-strict", "-1")),
    "avif": _kind("avif", "av1", "av1", "colours moments"),
}
_CODECS = {"tga": "targa", "jp2": "jpeg2000", "j2k": "jpeg2000", "jxl": "jpegxl"}
for _ending in PICTURES - HOST_PICTURES - {"avif"}:
    _codec = _CODECS.get(_ending, _ending)
    CONTAINERS[_ending] = _kind("image2", _codec, _codec, "moments")

ENCODERS = {
    "h264": "libx264",
    "hevc": "libx265",
    "av1": "libaom-av1",
    "vp8": "libvpx",
    "vp9": "libvpx-vp9",
    "prores": "prores_ks",
    "webp": "libwebp",
    "jpeg2000": "libopenjpeg",
    "jpegxl": "libjxl",
}
NO_FIELDS = frozenset("av1 vp8 vp9 hevc dnxhd gif webp png mjpeg wrapped_avframe".split())
NO_COLOURS = frozenset("gif png qoi targa dpx exr ppm pgm pam pfm phm webp jpegxl jpeg2000".split())
_Y4M = "gray yuv411p yuv420p yuv422p yuv444p" + "".join(
    f" yuv{chroma}p{depth}le" for depth in (9, 10, 12, 14, 16) for chroma in (420, 422, 444)
)
_RAW_MOV = "yuv420p uyvy422 yuyv422 rgb24 argb rgba rgb48be"


@functools.cache
def encoder_formats(encoder: str) -> tuple[PixelFormat, ...]:
    """What the encoder of this machine's ffmpeg takes; empty when it has no such encoder."""
    if encoder == _FRAMES:
        listed = _Y4M.split()
    else:
        command = ["ffmpeg", "-hide_banner", "-v", "error", "-h", f"encoder={encoder}"]
        done = subprocess.run(
            command, capture_output=True, stdin=subprocess.DEVNULL, text=True, check=False
        )
        found = re.search(r"Supported pixel formats: (.*)", done.stdout)
        if not found and "Encoder " not in done.stdout:
            return ()
        listed = found[1].split() if found else list(pixel_formats())
    if encoder == "rawvideo":
        listed = _RAW_MOV.split()
    return tuple(pixel_formats()[n] for n in listed if n in pixel_formats())


def encoder_of(codec: str, wanted: PixelFormat) -> str:
    """`codec` may be an encoder's own name too."""
    if codec == "h264" and wanted.rgb and not wanted.alpha:
        return "libx264rgb"
    if codec == "av1" and not wanted.rgb and (wanted.sub_w, wanted.sub_h) == (1, 1):
        return "libsvtav1"
    return ENCODERS.get(codec, codec)


def _distance(have: PixelFormat, want: PixelFormat, keep_alpha: bool) -> tuple[float, ...]:
    """How much would be lost, the worst first, then what would be wasted."""
    bits = max(0, want.depth - have.depth) + (16 if want.is_float and not have.is_float else 0)
    chroma = max(0, have.sub_w - want.sub_w) + max(0, have.sub_h - want.sub_h)
    grayed = have.gray and not want.gray
    waste = max(0, have.depth - want.depth) / 8 + (have.alpha and not keep_alpha)
    waste += max(0, want.sub_w - have.sub_w) + max(0, want.sub_h - have.sub_h)
    family = have.rgb != want.rgb and not want.gray
    odd = have.name.startswith("yuvj") or have.name.endswith("be") or have.name in ("pal8", "nv21")
    packed = have.name not in PLANAR and not have.rgb
    return (
        float(grayed),
        float(keep_alpha and not have.alpha),
        bits,
        chroma + family,
        have.is_float and not want.is_float,
        waste + (0.5 if want.gray and not have.gray else 0),
        float(odd) + packed,
    )


PLANAR = frozenset(
    [f"yuv{s}p" for s in (410, 411, 420, 422, 440, 444)]
    + [f"yuv{s}p{d}le" for d in (9, 10, 12, 14, 16) for s in (420, 422, 444)]
    + ["yuv440p10le", "yuv440p12le", "yuva420p", "yuva422p", "yuva444p"]
    + [f"yuva{s}p{d}le" for d in (9, 10, 16) for s in (420, 422, 444)]
    + ["yuvj420p", "yuvj422p", "yuvj444p"]
    + ["gray", "gray9le", "gray10le", "gray12le", "gray14le", "gray16le"]
)


def nearest(
    wanted: PixelFormat, formats: tuple[PixelFormat, ...], size: tuple[int, int]
) -> PixelFormat:
    """The one of `formats` that keeps most of `wanted` and can have that size."""
    usable = [
        f
        for f in formats
        if (size[0] % (1 << f.sub_w) == 0 and size[1] % (1 << f.sub_h) == 0)
        and not (f.is_float and (f.gray or "f16" in f.name))
        and not f.name.startswith(("nv", "p0", "p2", "x2", "xyz", "ya", "vdpau", "cuda", "vaapi"))
        and (f.rgb or f.name in PLANAR or f.name in _RAW_MOV or f.is_float)
    ]
    if not usable:
        usable = [f for f in formats if f.name in PLANAR or f.rgb]
    return min(usable, key=lambda have: _distance(have, wanted, wanted.alpha))


@dataclass(frozen=True)
class Choice:
    """How a picture is encoded."""

    codec: str
    encoder: str
    format: PixelFormat


def choose(media: Media, name: str, container: Container, codec: str | None) -> Choice:
    """The input's codec and samples where the container and the codec can hold them."""
    wanted = media.format
    size = (media.width, media.height)
    deep = wanted.depth > 8
    if codec:
        codec = _NAMES.get(codec, codec)
        listed = encoder_formats(encoder_of(codec, wanted))
        if not listed:
            why = "this ffmpeg has no such codec"
            raise Failure(f"--codec {codec}", why, "see ffmpeg -encoders for what it has")
    elif media.codec in container.codecs and encoder_formats(encoder_of(media.codec, wanted)):
        codec = media.codec
    else:
        codec = container.usual[2 if wanted.alpha else 1 if deep else 0]
        if container.muxer == "matroska" and (wanted.rgb and deep or wanted.is_float):
            codec = "ffv1"
    encoder = encoder_of(codec, wanted)
    formats = encoder_formats(encoder)
    if not formats:
        why = f"this ffmpeg has no encoder {encoder}"
        raise Failure(name, why, "choose another kind of file, or another --codec")
    too_much = wanted.depth > 10 or wanted.alpha or min(size) < _LEAST_SVT
    if encoder == "libsvtav1" and too_much:
        encoder, formats = "libaom-av1", encoder_formats("libaom-av1")
    return Choice(codec, encoder, nearest(wanted, formats, size))


_NAMES = {"h265": "hevc", "x264": "h264", "x265": "hevc", "dnxhr": "dnxhd", "uncompressed": "v210"}
_NAMES |= {"mpeg2": "mpeg2video", "raw": "rawvideo"}
_PRORES = {"Proxy": "proxy", "LT": "lt", "Standard": "standard", "HQ": "hq", "4444": "4444"}
_CRF = {"libx264": 16, "libx264rgb": 16, "libx265": 16, "libvpx-vp9": 20, "libvpx": 10}
_CRF |= {"libaom-av1": 20, "libsvtav1": 20}
_LEAST_SVT = 64  # columns and rows
_SLICED = 16  # rows; ffmpeg 5.1 writes zeros into four slices of two
_SCALE = {"libx264": 51, "libx264rgb": 51, "libx265": 51}


def encoder_options(
    choice: Choice, media: Media, quality: int | None, more: list[str]
) -> list[str]:
    """Words for ffmpeg behind the choice of the encoder; `more` are the user's own, which win."""
    encoder, words = choice.encoder, []
    if encoder in _CRF:
        worst = _SCALE.get(encoder, 63)
        crf = _CRF[encoder] if quality is None else round(worst * (100 - quality) / 100)
        words = ["-crf", str(crf)]
        if "vpx" in encoder:
            words += ["-b:v", "0" if "vp9" in encoder else "50M", "-row-mt", "1", "-threads", "4"]
            words += ["-auto-alt-ref", "0"] if choice.format.alpha else []
        elif encoder == "libaom-av1":
            words += ["-b:v", "0", "-cpu-used", "6", "-row-mt", "1"]
        else:
            words += ["-preset", "8" if "svt" in encoder else "medium"]
    elif encoder in ("mpeg2video", "mpeg4", "mjpeg", "mpeg1video"):
        words = ["-q:v", str(2 if quality is None else 1 + round(30 * (100 - quality) / 100))]
    elif encoder == "libwebp":
        words = ["-quality", str(95 if quality is None else quality)]
        words += ["-lossless", "1"] if choice.format.rgb and quality is None else []
    elif encoder == "prores_ks":
        deep = choice.format.sub_w == 0
        profile = _PRORES.get(media.profile, "hq") if not deep else "4444"
        words = ["-profile:v", "hq" if profile == "4444" and not deep else profile]
        if media.profile == "XQ" and deep:
            words[1] = "4444xq"
        words += ["-alpha_bits", "16"] if choice.format.alpha else []
    elif encoder == "dnxhd":
        rich = choice.format.depth > 8
        usual = "dnxhr_444" if choice.format.sub_w == 0 else "dnxhr_hqx" if rich else "dnxhr_hq"
        same = media.profile.lower().replace(" ", "_")
        words = ["-profile:v", same if same in ("dnxhr_lb", "dnxhr_sq") and not rich else usual]
    elif encoder == "ffv1":
        words = ["-level", "3", "-slicecrc", "1", "-slices", "4", "-g", "1"]
        words = words if media.height >= _SLICED else ["-level", "1"]
    elif encoder == "exr":
        words = ["-compression", "zip16", "-format", "half" if media.half else "float"]
    words += _colour_options(encoder, media) + _field_options(encoder, media)
    if encoder == "libx265":
        words += ["-tag:v", "hvc1"]
    return words + more


# Encoders that can say mastering display and light level: the option, the two words in it, and
# the units of chromaticity and luminance; 0: as decimals.
HDR_ENCODERS = {
    "libx264": ("-x264-params", "mastering-display", "cll", 50000, 10000),
    "libx265": ("-x265-params", "master-display", "max-cll", 50000, 10000),
    "libsvtav1": ("-svtav1-params", "mastering-display", "content-light", 0, 0),
}


def _colour_options(encoder: str, media: Media) -> list[str]:
    if encoder not in HDR_ENCODERS:
        return []
    option, display, level, chroma, luminance = HDR_ENCODERS[encoder]
    parts = ["log-level=error"] if encoder == "libx265" else []
    if encoder == "libx265" and (media.mastering or media.light):
        parts += ["hdr10=1", "repeat-headers=1"]
    parts += (
        [f"{display}={_display(media.mastering, chroma, luminance)}"] if media.mastering else []
    )
    parts += ["{}={},{}".format(level, *media.light)] if media.light else []
    return [option, ":".join(parts)] if parts else []


def _display(shown: dict[str, str], chroma: int, luminance: int) -> str:
    def numbers(first: str, second: str, unit: int) -> str:
        values = Fraction(shown[first]), Fraction(shown[second])
        return ",".join(str(round(v * unit)) if unit else f"{float(v):.6g}" for v in values)

    points = {"G": "green", "B": "blue", "R": "red", "WP": "white_point"}
    text = "".join(f"{key}({numbers(f'{n}_x', f'{n}_y', chroma)})" for key, n in points.items())
    return f"{text}L({numbers('max_luminance', 'min_luminance', luminance)})"


def _field_options(encoder: str, media: Media) -> list[str]:
    if not media.fields:
        return []
    if encoder in ("libx264", "mpeg2video", "mpeg4"):
        return ["-flags", "+ilme+ildct"]
    if encoder == "prores_ks":
        return ["-flags", "+ildct"]
    return ["-field_order", "tt" if media.fields == "tff" else "bb"]
