"""What a file holds, as facts with names that a person knows, and which of them another file lacks.
"""

from __future__ import annotations

from dataclasses import replace
from fractions import Fraction

from .formats import CONTAINERS, Choice, Container, HDR_ENCODERS, NO_COLOURS, NO_FIELDS
from .probe import Colour, Media, pixel_formats

Facts = dict[str, str]
_KINDS = {
    "audio": "sound",
    "subtitle": "subtitle",
    "attachment": "attachment",
    "cover": "cover picture",
    "data": "data stream",
    "video": "second video",
}
_CHROMA = {"gray": 0, "4:1:1": 1, "4:2:0": 1, "4:2:2": 2, "4:4:4": 3, "RGB": 3}
_FEW = "256 at most"
_OF_YCBCR = ("colour matrix", "colour range", "chroma place")


def _points(values: dict[str, str]) -> str:
    return " ".join(f"{key}={float(Fraction(v)):.4g}" for key, v in sorted(values.items()))


def facts(media: Media) -> Facts:
    """Everything that a render should keep."""
    number, colour = media.format, media.colour
    says_range = not number.rgb and (colour.full_range or colour.range_said)
    is_few = media.codec == "gif" or number.name == "pal8" or (number.gray and number.depth <= 8)
    found: Facts = {
        "size": f"{media.width} x {media.height}",
        "depth": "float" if number.is_float else f"{number.depth} bits",
        "chroma": number.chroma(),
        "alpha": ("none or all" if media.codec == "gif" else "yes") if number.alpha else "",
        "colours": _FEW if is_few else "any",
        "pixel aspect": str(media.aspect) if media.aspect != 1 else "",
        "fields": media.fields,
        "rotation": media.turned,
        "times of single frames": "variable rate" if media.times else "",
        "colour range": ("full" if colour.full_range else "limited") if says_range else "",
        "colour primaries": colour.primaries,
        "colour transfer": colour.transfer,
        "colour matrix": colour.matrix,
        "chroma place": colour.place if colour.place != "left" else "",
        "mastering display": _points(media.mastering),
        "chromaticities": _points(media.chromaticities),
        "light level": "{}, {}".format(*media.light) if media.light else "",
        "metadata of single frames": "yes" if media.dynamic else "",
        "timecode": media.timecode,
        "chapters": "; ".join(f"{n}. {t}" for n, t in enumerate(media.chapters, 1)),
    }
    for kind, name in _KINDS.items():
        for count, track in enumerate(media.of(kind), 1):
            words = (track.codec, track.language, track.title, track.name, track.detail)
            found[f"{name} {count}"] = ", ".join(filter(None, words))
    found |= {f"metadata {key.lower()}": value for key, value in media.tags.items()}
    found |= {f"picture's {key.lower()}": value for key, value in media.picture_tags.items()}
    return {name: value for name, value in found.items() if value}


def predicted(media: Media, container: Container, choice: Choice, colour: Colour) -> Media:
    """What the output will hold of `media`, which is upright; the pipeline decides the tracks."""
    has_colours = "colours" in container.holds and choice.codec not in NO_COLOURS
    hdr = choice.encoder in HDR_ENCODERS
    any_tag = "any" in container.tags
    return replace(
        media,
        codec=choice.codec,
        format=choice.format,
        colour=colour if has_colours else Colour(full_range=colour.full_range),
        fields="" if choice.codec in NO_FIELDS else media.fields,
        times=() if container.even else media.times,
        mastering=media.mastering if hdr else {},
        chromaticities={},
        light=media.light if hdr else None,
        dynamic=False,
        timecode=media.timecode if "timecode" in container.holds else "",
        chapters=media.chapters if "chapters" in container.holds else (),
        tags={k: v for k, v in media.tags.items() if any_tag or k.lower() in container.tags},
        picture_tags={
            k: v for k, v in media.picture_tags.items() if any_tag or k in container.holds
        },
    )


def pictured(media: Media, bits: int) -> Media:
    """What pictures hold that the host program writes of raw frames of `media`, which is upright.
    Of alpha it tells itself: it looks whether there is any."""
    pixels = pixel_formats()[{8: "gbrp", 16: "gbrp16le", 32: "gbrpf32le"}[bits]]
    choice = Choice("png", "", replace(pixels, alpha=media.format.alpha))
    held = predicted(media, CONTAINERS["qoi"], choice, Colour(full_range=True))
    return replace(held, aspect=Fraction(1), tracks=())


def _is_loss(name: str, before: str, after: Facts) -> bool:
    now = after.get(name, "")
    if now == before or (name in _OF_YCBCR and after["chroma"] == "RGB"):
        return False
    if name == "chroma":
        return _CHROMA.get(now, 1) < _CHROMA.get(before, 1)
    if name == "depth":
        return now != "float" and (before == "float" or int(now[:-5]) < int(before[:-5]))
    if name in ("alpha", "colours"):
        return now not in ("yes", "any")
    return name != "chroma place" or after["chroma"] not in ("4:4:4", "gray")


def losses(before: Facts, after: Facts) -> dict[str, str]:
    """Fact -> what became of it, of those that the second file does not hold as they were."""
    return {
        name: f"{name}: {value} " + (f"becomes {after[name]}" if name in after else "is lost")
        for name, value in before.items()
        if _is_loss(name, value, after)
    }
