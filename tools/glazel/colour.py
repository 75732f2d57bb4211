"""Filters between a video's samples and the raw frames of the host program. Everything about the
colours is said at both ends, because what is left out is guessed differently by different filters.
"""

from __future__ import annotations

import math
from dataclasses import replace
from typing import NamedTuple

from .formats import PLANAR
from .probe import Colour, Media, PixelFormat

_EXACT = "accurate_rnd+full_chroma_int+full_chroma_inp"
_HD_WIDTH, _HD_HEIGHT = 1280, 576  # larger pictures of which nobody says it have the matrix of HD
_PALETTES = ("rgb8", "bgr8", "rgb4_byte", "bgr4_byte", "pal8")  # formats that GIF's encoder takes
_RGB = ("gbr", "full")
_RGB_PLACES = "102000"  # green, blue and red of what extractplanes gives: red, green and blue


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
# What red and blue are of the luma, in matrices for which that says all.
_WEIGHTS = {
    "bt709": (0.2126, 0.0722),
    "smpte170m": (0.299, 0.114),
    "bt470bg": (0.299, 0.114),
    "fcc": (0.3, 0.11),
    "smpte240m": (0.212, 0.087),
    "bt2020nc": (0.2627, 0.0593),
}
_PRIMARIES = _names(
    "bt709=709 smpte170m=170m smpte240m=240m bt2020=2020 bt470m bt470bg film smpte428 smpte431 "
    "smpte432"
)


class Raw(NamedTuple):
    """What goes through a pipe: the host's name, ffmpeg's, and ffmpeg's for planes of it."""

    name: str
    pixels: str
    planes: str
    bits: int  # of a channel
    words: tuple[str, ...] = ()  # what the host has to know besides


BGRA8 = Raw("bgra8", "bgra", "gbrap", 8)
BGRA16 = Raw("bgra16", "bgra64le", "gbrap16le", 16)
FLOATS = Raw("gbraf32", "gbrapf32le", "gbrapf32le", 32)
GBR8 = Raw("gbr8", "gbrp", "gbrp", 8)
OPAQUE_FLOATS = Raw("gbrf32", "gbrpf32le", "gbrpf32le", 32)


def raw_for(number: PixelFormat, depth: str | None, matrix: str) -> Raw:
    """8 bits go as they are. Of what is deeper, codes of YCbCr go as such or as floats, since a
    third of them stand for colours outside RGB, which whole numbers would cut; RGB loses nothing in
    16 bits, and alpha keeps its scale only there. Between floats and whole numbers the host program
    converts alpha: filters take it for limited range."""
    if number.is_float and number.alpha:
        return FLOATS
    if depth == "8" or (depth is None and number.depth <= 8):
        return _planes_of(BGRA8, number, matrix)
    whole = (number.rgb or number.gray or number.alpha) and not number.is_float
    return BGRA16 if whole else _planes_of(FLOATS, number, matrix)


def _planes_of(raw: Raw, number: PixelFormat, matrix: str) -> Raw:
    """Opaque YCbCr goes in the planes that zscale makes and takes: what turns them into pixels
    costs less in the host program, and there is no alpha to carry."""
    if number.rgb or number.gray or number.alpha:
        return raw
    if raw == BGRA8:
        return GBR8
    if matrix not in _WEIGHTS:
        return OPAQUE_FLOATS
    weights = "{},{}".format(*_WEIGHTS[matrix])
    return Raw("yuv16", "yuv444p16le", "yuv444p16le", 16, ("--luma-weights", weights))


def raw_back(raw: Raw, target: PixelFormat, matrix: str) -> Raw:
    """What comes back of frames that went as `raw`, for samples of `target`."""
    if target.alpha and (target.is_float or raw == FLOATS):
        return FLOATS if target.is_float else BGRA16
    if raw == BGRA16:
        return raw
    return _planes_of(BGRA8 if raw.bits == 8 else FLOATS, target, matrix)


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
    full = target.name.startswith("yuvj") or (target.gray and is_picture)
    place = read.place if target.sub_w or target.sub_h else ""
    if not media.format.rgb:
        return replace(read, full_range=full or read.full_range, place=place)
    transfer = read.transfer or ("linear" if media.format.is_float else "iec61966-2-1")
    return Colour("bt709", full, read.primaries or "bt709", transfer)


def planar(number: PixelFormat) -> str:
    """The planes that zscale takes without losing anything of `number`."""
    if number.name in PLANAR:  # yuvj420p is not yuv420p: on the way between them ffmpeg converts
        return number.name
    sub = {(1, 1): "420", (1, 0): "422", (0, 1): "440", (2, 0): "411", (2, 2): "410"}
    alpha = "a" if number.alpha else ""
    chroma = sub.get((number.sub_w, number.sub_h), "444")
    family = f"gbr{alpha}p" if number.rgb else f"yuv{alpha}{chroma}p"
    depth = max(8, number.depth) if not alpha or number.depth in (8, 9, 10) else 16
    name = family + ("f32le" if number.is_float else "" if depth <= 8 else f"{depth}le")
    return name if name in PLANAR else "gbrap16le" if number.rgb else f"yuv{alpha}444p16le"


def _range(colour: Colour) -> str:
    return "full" if colour.full_range else "limited"


def _zscale(source: tuple[str, str], target: tuple[str, str], dither: bool, *more: str) -> str:
    """`source` and `target` are a matrix and a range each."""
    words = [f"min={source[0]}", f"rin={source[1]}", f"m={target[0]}", f"r={target[1]}"]
    words += ["filter=spline36", *filter(None, more)]
    return f"zscale={':'.join(words)}:dither={'error_diffusion' if dither else 'none'}"


def _inside(raw: Raw, ends: tuple[str, str]) -> tuple[str, str]:
    """Matrix and range of the raw frames of what has these outside."""
    return (ends[0], "limited") if raw.planes.startswith("yuv") else _RGB


def _opaque(planes: str) -> str:
    return planes.replace("gbrap", "gbrp").replace("yuva", "yuv")


def _with_alpha(number: PixelFormat) -> str:
    """Planes that hold `number`, which has alpha, in its own depth."""
    if number.name.startswith(("gbrap", "yuva")):
        return number.name.replace("be", "le")
    return "gbrap" if number.depth <= 8 else "gbrap16le"


def _plain(bits: int) -> str:
    return "gbrp" if bits <= 8 else f"gbrp{bits}le"


def _apart(planes: str, bits: int, steps: list[str], target: str, goal: int) -> list[str]:
    """`steps` for the colours alone, from planes with alpha of so many bits to others. Filters take
    alpha for a code of limited range, which gets zeros behind its bits where it becomes deeper: here
    it is changed as a colour of full range is."""
    alpha = f"mergeplanes=0x030303:{_plain(bits)},{_zscale(_RGB, _RGB, False)}"
    begin = f"split[c][a];[a]{alpha},format={_plain(goal)},extractplanes=g[k];[c]"
    names, places = ("y+u+v", "001020") if target.startswith("yuv") else ("r+g+b", _RGB_PLACES)
    end = f"format={_opaque(target)},extractplanes={names}[1][2][3]"
    end += f";[1][2][3][k]mergeplanes=0x{places}30:{target}"
    return [f"{begin}mergeplanes=0x000102:{_opaque(planes)}", *steps, end]


def _in_planes(pixels: str, planes: str) -> str:
    """A conversion of pixels of 8 bits to planes changes alpha by one; this does not."""
    if planes != "gbrap" or pixels == planes:
        return f"format={planes}"
    lone = "[red][green][blue][clear]"
    return f"format=bgra,extractplanes=r+g+b+a{lone};{lone}mergeplanes=0x{_RGB_PLACES}30:gbrap"


def _tags(colour: Colour) -> str:
    """Matrices of constant luminance are worked out with these; equal on both sides they convert
    nothing."""
    transfer, primaries = _TRANSFERS.get(colour.transfer), _PRIMARIES.get(colour.primaries)
    if not transfer or not primaries:
        return ""
    return f"tin={transfer}:t={transfer}:pin={primaries}:p={primaries}"


def _divides(media: Media, number: PixelFormat) -> bool:
    rows = number.sub_h + (1 if media.fields and number.sub_h else 0)
    return media.width % (1 << number.sub_w) == 0 and media.height % (1 << rows) == 0


def _planes(media: Media, colour: Colour, number: PixelFormat) -> list[str]:
    """From samples to what zscale takes, which refuses sizes that chroma does not divide."""
    if _divides(media, number):
        return [f"format={planar(number)}"]
    same = f"in_range={_range(colour)}:out_range={_range(colour)}"
    resample = f"scale={same}:interl={1 if media.fields else 0}:flags=bicubic+{_EXACT}"
    return [resample, "format=yuva444p16le" if number.alpha else "format=yuv444p16le"]


def _place(media: Media, colour: Colour, number: PixelFormat, side: str) -> str:
    shared = (number.sub_w or number.sub_h) and _divides(media, number)
    return f"{side}={colour.place or 'left'}" if shared else ""


def _by_fields(media: Media, number: PixelFormat, steps: list[str]) -> list[str]:
    """Chroma of interlaced 4:2:0 belongs to the fields: each is converted alone."""
    if not media.fields or not number.sub_h or not _divides(media, number):
        return steps
    weave = "weave=first_field=" + ("top" if media.fields == "tff" else "bottom")
    field = f"setfield={media.fields}"
    return [field, "separatefields", *steps, weave, field]


def decode_filters(media: Media, colour: Colour, raw: Raw) -> list[str]:
    """From the decoded samples to raw frames."""
    number = media.format
    dither = number.depth > 8 and raw.bits == 8
    last = [f"format={raw.planes}", f"format={raw.pixels}"][: 2 if raw.pixels != raw.planes else 1]
    if number.gray and (number.alpha or number.is_float):
        return [f"scale=in_range={_range(colour)}:out_range=full:flags={_EXACT}", *last]
    if number.gray:  # as luma: then zscale converts, which is exact
        same = f"scale=in_range={_range(colour)}:out_range={_range(colour)}"
        depth = f"{number.depth}le" if number.depth > 8 else ""
        steps = [same, f"format=yuv444p{depth}", _zscale(("709", _range(colour)), _RGB, dither)]
        return [*steps, *last]
    if number.rgb and number.depth <= 8 and raw is BGRA8:
        return last[1:]
    if number.rgb and number.depth == 16 and raw is BGRA16 and not number.name.startswith("gbrp"):
        return last
    apart = number.alpha and not number.is_float and number.depth != raw.bits
    planes = _with_alpha(number)
    if apart:
        number = replace(number, name=_opaque(planes), alpha=False)
    if number.rgb:
        steps = [f"format={planar(number)}", _zscale(_RGB, _RGB, dither)]
    else:
        place = _place(media, colour, number, "cin")
        source = _MATRICES[colour.matrix], _range(colour)
        turn = _zscale(source, _inside(raw, source), dither, place, _tags(colour))
        steps = [*_planes(media, colour, number), turn]
    if apart:
        steps = _apart(planes, max(8, number.depth), steps, raw.planes, raw.bits)
        steps.insert(0, _in_planes(media.format.name, planes))
    return [*_by_fields(media, number, [*steps, last[0]]), *last[1:]]


def encode_filters(media: Media, colour: Colour, raw: Raw, target: PixelFormat) -> list[str]:
    """From raw frames to the samples of the encoder; `media` is what was decoded."""
    if target.name in _PALETTES:
        palette = "split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1"
        return ["format=bgra", palette]
    last = f"format={target.name}"
    if target.rgb and target.depth == raw.bits == 8 and target.name != "gbrap":
        return [last]
    bits = min(media.format.depth, raw.bits, 16)
    dither = target.depth < bits and not target.is_float
    planes = "gbrp" if raw.bits == 8 and not target.alpha else raw.planes
    begin, number = _in_planes(raw.pixels, planes), target
    apart = target.alpha and not target.gray and not target.is_float and target.depth != raw.bits
    goal = _with_alpha(target)
    if apart:
        number = replace(target, name=_opaque(goal), alpha=False)
    if target.rgb:
        usual = "gbrap" if target.depth == 8 else "gbrap16le"
        through = number.name if number.name in PLANAR else usual
        steps = [_zscale(_RGB, _RGB, dither), f"format={through}"] if through != planes else []
    else:
        ends = _MATRICES[colour.matrix], _range(colour)
        place = _place(media, colour, number, "c")
        turn = _zscale(_inside(raw, ends), ends, dither, place, _tags(colour))
        if target.gray:
            plane = f"{target.depth}le" if target.depth > 8 else ""
            luma = [f"format=yuv444p{plane}", "extractplanes=y", f"format=gray{plane}"]
            return [begin, turn, *luma]
        steps = [turn, *reversed(_planes(media, colour, number))]
    if target.rgb and media.half:
        # The encoder drops the bits that are too many: with half a last bit more, or less, it rounds.
        steps += [f"exposure={math.log2(1 + 2**-12):.9f}"]
    if apart:
        steps = _apart(planes, raw.bits, steps, goal, target.depth)
    steps = _by_fields(media, target, [begin, *steps])
    return steps + ([last] if last not in steps else [])


def tag_filter(colour: Colour, target: PixelFormat) -> str:
    """Tags on the frames themselves: some encoders look nowhere else. What nobody said is not said
    now, though the conversion has had to assume it."""
    words = [f"range={_range(colour)}", f"color_primaries={colour.primaries or 'unknown'}"]
    words += [f"color_trc={colour.transfer or 'unknown'}"]
    words += [] if target.rgb else [f"colorspace={colour.matrix or 'unknown'}"]
    return "setparams=" + ":".join(words)


def tag_options(colour: Colour) -> list[str]:
    """For muxers and encoders that look at the stream."""
    options = {
        "color_range": "pc" if colour.full_range else "tv",
        "color_primaries": colour.primaries,
        # Numbers for names that ffmpeg lacks.
        "color_trc": {"bt470m": "4", "bt470bg": "5"}.get(colour.transfer, colour.transfer),
        "colorspace": colour.matrix,
        "chroma_sample_location": colour.place,
    }
    return [word for name, value in options.items() if value for word in (f"-{name}", value)]
