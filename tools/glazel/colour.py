"""Filters between a video's samples and the raw frames of the host program. Everything about the
colours is said at both ends, because what is left out is guessed differently by different filters.
"""

from __future__ import annotations

from dataclasses import dataclass, replace

from .formats import PLANAR
from .probe import Colour, Media, PixelFormat

_EXACT = "accurate_rnd+full_chroma_int+full_chroma_inp"
_HD_WIDTH, _HD_HEIGHT = 1280, 576  # larger pictures of which nobody says it have the matrix of HD


def _names(text: str) -> dict[str, str]:
    """From ffprobe's to zscale's, which are mostly alike."""
    pairs = (word.split("=") for word in text.split())
    return {pair[0]: pair[-1] for pair in pairs}


_MATRICES = _names(
    "bt709=709 smpte170m=170m bt470bg=470bg smpte240m=smpte2400m bt2020nc=2020_ncl bt2020c=2020_cl "
    "fcc ycgco chroma-derived-nc chroma-derived-c ictcp"
)
_TRANSFERS = _names(
    "bt709=709 smpte170m=601 bt2020-10=2020_10 bt2020-12=2020_12 bt470m bt470bg linear log100 "
    "log316 iec61966-2-4 iec61966-2-1 smpte2084 arib-std-b67"
)
_PRIMARIES = _names(
    "bt709=709 smpte170m=170m smpte240m=240m bt2020=2020 bt470m bt470bg film smpte428 smpte431 "
    "smpte432"
)
_RGB = ("gbr", "full")


@dataclass(frozen=True)
class Raw:
    """What goes through a pipe: the host's name, ffmpeg's, and ffmpeg's for planes of it."""

    name: str
    pixels: str
    planes: str


BGRA8 = Raw("bgra8", "bgra", "gbrap")
BGRA16 = Raw("bgra16", "bgra64le", "gbrap16le")
FLOATS = Raw("gbraf32", "gbrapf32le", "gbrapf32le")


def raw_for(number: PixelFormat, depth: str | None) -> Raw:
    """8 bits go as they are. Of what is deeper, codes of YCbCr go as floats, since a third of them
    stand for colours outside RGB, which whole numbers would cut; RGB loses nothing in 16 bits, and
    alpha keeps its scale only there."""
    if depth == "8" or (depth is None and number.depth <= 8):
        return BGRA8
    if number.is_float or (not number.rgb and not number.gray and not number.alpha):
        return FLOATS
    return BGRA16


def understood(media: Media, matrix: str | None, range_: str | None) -> Colour:
    """The colours with what nobody says filled in."""
    colour = media.colour
    if media.format.rgb:
        return colour
    if range_:
        colour = replace(colour, full_range=range_ == "full")
    guess = "bt709" if media.width >= _HD_WIDTH or media.height > _HD_HEIGHT else "smpte170m"
    known = colour.matrix if colour.matrix in _MATRICES else ""
    given = {"bt601": "smpte170m", "bt2020": "bt2020nc"}.get(matrix or "", matrix)
    return replace(colour, matrix=given or known or guess)


def output_colour(media: Media, read: Colour, target: PixelFormat, is_picture: bool) -> Colour:
    """Of the encoded frame: the input's where it has any. Gray of a picture's file is full."""
    if target.rgb:
        return replace(read, matrix="", full_range=True, place="")
    full = read.full_range and not media.format.rgb
    colour = replace(read, full_range=full or target.name.startswith("yuvj"))
    if media.format.rgb:
        transfer = "linear" if media.linear else "iec61966-2-1"
        colour = Colour("bt709", False, read.primaries or "bt709", read.transfer or transfer)
    colour = replace(colour, full_range=colour.full_range or (target.gray and is_picture))
    has_place = bool(target.sub_w or target.sub_h)
    return replace(colour, place=colour.place if has_place else "")


def _range(colour: Colour) -> str:
    return "full" if colour.full_range else "limited"


def _zscale(source: tuple[str, str], target: tuple[str, str], *more: str) -> str:
    """`source` and `target` are a matrix and a range each."""
    words = [f"min={source[0]}", f"rin={source[1]}", f"m={target[0]}", f"r={target[1]}"]
    return "zscale=" + ":".join([*words, "filter=spline36", *filter(None, more)])


def _tags(colour: Colour) -> str:
    """Matrices of constant luminance are worked out with these; equal on both sides they convert
    nothing."""
    transfer, primaries = _TRANSFERS.get(colour.transfer), _PRIMARIES.get(colour.primaries)
    if not transfer or not primaries:
        return ""
    return f"tin={transfer}:t={transfer}:pin={primaries}:p={primaries}"


def _place(colour: Colour, number: PixelFormat, side: str) -> str:
    return f"{side}={colour.place or 'left'}" if number.sub_w or number.sub_h else ""


def _resample_chroma(media: Media, colour: Colour) -> str:
    """For sizes that zscale refuses."""
    same = f"in_range={_range(colour)}:out_range={_range(colour)}"
    return f"scale={same}:interl={1 if media.fields else 0}:flags=bicubic+{_EXACT}"


def _full_chroma(number: PixelFormat) -> str:
    return "format=yuva444p16le" if number.alpha else "format=yuv444p16le"


def _dither(falls: bool) -> str:
    return "dither=error_diffusion" if falls else "dither=none"


def planar(number: PixelFormat) -> str:
    """The planes that the conversion takes without losing anything of `number`."""
    if number.name in PLANAR:  # yuvj420p is not yuv420p: on the way between them ffmpeg converts
        return number.name
    sub = {(1, 1): "420", (1, 0): "422", (0, 1): "440", (2, 0): "411", (2, 2): "410"}
    alpha = "a" if number.alpha else ""
    chroma = sub.get((number.sub_w, number.sub_h), "444")
    depth = number.depth if not alpha or number.depth in (8, 9, 10) else 16
    name = f"yuv{alpha}{chroma}p" + ("" if depth == 8 else f"{depth}le")
    return name if name in PLANAR else f"yuv{alpha}444p16le"


def _divides(media: Media, number: PixelFormat) -> bool:
    rows = number.sub_h + (1 if media.fields and number.sub_h else 0)
    return media.width % (1 << number.sub_w) == 0 and media.height % (1 << rows) == 0


def _by_fields(media: Media, number: PixelFormat, steps: list[str]) -> list[str]:
    """Chroma of interlaced 4:2:0 belongs to the fields: each is converted alone."""
    if not media.fields or not number.sub_h:
        return steps
    weave = "weave=first_field=" + ("top" if media.fields == "tff" else "bottom")
    field = f"setfield={media.fields}"
    return [field, "separatefields", *steps, weave, field]


def decode_filters(media: Media, colour: Colour, raw: Raw) -> list[str]:
    """From the decoded samples to raw frames."""
    number = media.format
    dither = _dither(number.depth > 8 and raw is BGRA8)
    planes = f"format={raw.planes}"
    last = [f"format={raw.pixels}"] if raw.pixels != raw.planes else []
    if number.gray:
        ends = f"in_range={_range(colour)}:out_range=full"
        return [f"scale={ends}:flags={_EXACT}", planes, *last]
    if number.rgb:
        if number.depth == 8 and raw is BGRA8:
            return ["format=bgra"]
        if number.depth == 16 and not number.is_float and raw is BGRA16:
            return ["format=gbrap16le", "format=bgra64le"]
        steps = [f"format={_rgb_planes(number)}", _zscale(_RGB, _RGB, dither), planes]
        return steps + _full_alpha(number, raw) + last
    source = _MATRICES[colour.matrix], _range(colour)
    if _divides(media, number):
        turn = _zscale(source, _RGB, _place(colour, number, "cin"), _tags(colour), dither)
        steps = _by_fields(media, number, [f"format={planar(number)}", turn, planes])
    else:
        turn = _zscale(source, _RGB, _tags(colour), dither)
        steps = [_resample_chroma(media, colour), _full_chroma(number), turn, planes]
    return steps + _full_alpha(number, raw) + last


def _rgb_planes(number: PixelFormat) -> str:
    if number.is_float:
        return "gbrapf32le" if number.alpha else "gbrpf32le"
    if number.alpha:
        return "gbrap" if number.depth == 8 else "gbrap16le"
    return "gbrp" if number.depth == 8 else f"gbrp{number.depth}le"


def _full_alpha(number: PixelFormat, raw: Raw) -> list[str]:
    """Alpha of fewer than 16 bits has been shifted up, not scaled: opaque would be 65472."""
    if not number.alpha or raw is not BGRA16 or number.depth not in (9, 10):
        return []
    top = ((1 << number.depth) - 1) << (16 - number.depth)
    return [f"colorchannelmixer=aa={65535 / top:.9f}"]


def encode_filters(media: Media, colour: Colour, raw: Raw, target: PixelFormat) -> list[str]:
    """From raw frames to the samples of the encoder; `media` is what was decoded."""
    if target.name in _PALETTES:
        palette = "split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1"
        return ["format=bgra", palette]
    bits = min(media.format.depth, 8 if raw is BGRA8 else 16)
    dither = _dither(target.depth < bits and not target.is_float)
    last = [f"format={target.name}"]
    steps = ["format=gbrp" if raw is BGRA8 and not target.alpha else f"format={raw.planes}"]
    if target.rgb:
        if raw is BGRA8 and target.depth == 8:
            return last
        through = "gbrap" if target.depth == 8 else "gbrap16le"
        if target.is_float or target.name in _RGB_PLANES:
            through = target.name
        if raw is not BGRA16 or through != raw.planes:
            steps += [_zscale(_RGB, _RGB, dither), f"format={through}"]
        return steps + (last if through != target.name else [])
    ends = _MATRICES[colour.matrix], _range(colour)
    if target.gray:
        plane = f"{target.depth}le" if target.depth > 8 else ""
        turn = _zscale(_RGB, ends, _tags(colour), dither)
        return steps + [turn, f"format=yuv444p{plane}", "extractplanes=y", f"format=gray{plane}"]
    if not _divides(media, target):
        turn = _zscale(_RGB, ends, _tags(colour), _dither(False))
        return steps + [turn, _full_chroma(target), _resample_chroma(media, colour), *last]
    middle = planar(target)
    turn = _zscale(_RGB, ends, _place(colour, target, "c"), _tags(colour), dither)
    steps = _by_fields(media, target, [*steps, turn, f"format={middle}"])
    return steps + (last if middle != target.name else [])


_PALETTES = ("rgb8", "bgr8", "rgb4_byte", "bgr4_byte", "pal8")  # formats that GIF's encoder takes
_RGB_PLANES = ["gbrp", "gbrap", "gbrap16le", "gbrpf32le", "gbrapf32le"]
_RGB_PLANES += [f"gbrp{depth}le" for depth in (9, 10, 12, 14, 16)]


def tag_filter(colour: Colour, target: PixelFormat) -> str:
    """Tags on the frames themselves: some encoders look nowhere else. What nobody said is not said
    now, though the conversion has had to assume it."""
    words = [f"range={_range(colour)}", f"color_primaries={colour.primaries or 'unknown'}"]
    words += [f"color_trc={colour.transfer or 'unknown'}"]
    words += [] if target.rgb else [f"colorspace={colour.matrix or 'unknown'}"]
    return "setparams=" + ":".join(words)


def tag_options(colour: Colour) -> list[str]:
    """For muxers and encoders that look at the stream."""
    words = ["-color_range", "pc" if colour.full_range else "tv"]
    words += ["-color_primaries", colour.primaries] if colour.primaries else []
    transfer = {"bt470m": "4", "bt470bg": "5"}.get(colour.transfer, colour.transfer)
    words += ["-color_trc", transfer] if transfer else []  # numbers for names that ffmpeg lacks
    words += ["-colorspace", colour.matrix] if colour.matrix else []
    words += ["-chroma_sample_location", colour.place] if colour.place else []
    return words
