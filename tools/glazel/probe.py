"""What ffprobe says of a file, as one value."""

from __future__ import annotations

import functools
import json
import re
import struct
import subprocess
from dataclasses import dataclass, field, replace
from fractions import Fraction
from typing import Any

from .failure import Failure
from .names import Pattern, extension, ffmpeg_name, is_picture

_UNKNOWN = ("", "unknown", "reserved", "unspecified", "N/A")
# Codecs whose codes are limited where they say nothing; gray of others is full, as ffmpeg takes it.
_LIMITED = ("h264", "hevc", "av1", "vp9", "mpeg2video", "mpeg4", "prores")
# Tags that say how the file was made, not what is in it.
_OWN_TAGS = re.compile(
    r"(major_brand|minor_version|compatible_brands|encoder|creation_time|handler_name|vendor_id|"
    r"duration.*|rotate|alpha_mode|bps.*|number_of_.*|_statistics.*|language|timecode|"
    r"writing_.*|encoded_by|track|stereo_mode|.*_uid|.*umid|uid|generation_uid|modification_date|"
    r"company_name|product_.*|application_platform|operational_pattern_ul|filename|mimetype|"
    r"toolkit_version|data_type|file_package_name|comment|variant_bitrate)",
    re.IGNORECASE,
)


@dataclass(frozen=True)
class PixelFormat:
    """What the samples of a picture are."""

    name: str
    rgb: bool
    alpha: bool
    depth: int  # bits of a channel
    sub_w: int  # log2 of how many columns share a chroma sample
    sub_h: int
    gray: bool

    @property
    def is_float(self) -> bool:
        return "f32" in self.name or "f16" in self.name

    def chroma(self) -> str:
        if self.gray:
            return "gray"
        names = {(1, 1): "4:2:0", (1, 0): "4:2:2", (0, 0): "4:4:4", (2, 0): "4:1:1"}
        return "RGB" if self.rgb else names.get((self.sub_w, self.sub_h), "other chroma")


@functools.cache
def pixel_formats() -> dict[str, PixelFormat]:
    rows = run_json(["ffprobe", "-v", "error", "-show_pixel_formats", "-of", "json"], "ffprobe")
    return {row["name"]: _pixel_format(row) for row in rows["pixel_formats"]}


def _pixel_format(row: dict[str, Any]) -> PixelFormat:
    name, flags = row["name"], row["flags"]
    palette = bool(flags["palette"])
    depth = max((c["bit_depth"] for c in row.get("components", [])), default=8)
    gray = row["nb_components"] in (1, 2) and not palette and not name.startswith("bayer")
    return PixelFormat(
        name,
        bool(flags["rgb"]) or palette,
        bool(flags["alpha"]) or palette,
        depth,
        row.get("log2_chroma_w", 0),
        row.get("log2_chroma_h", 0),
        gray,
    )


@dataclass(frozen=True)
class Colour:
    """As the numbers of a picture are to be understood; empty means that nobody says."""

    matrix: str = ""
    full_range: bool = False
    primaries: str = ""
    transfer: str = ""
    place: str = ""  # of the chroma samples
    range_said: bool = False


@dataclass(frozen=True)
class Track:
    """A stream beside the picture."""

    index: int
    kind: str  # audio, subtitle, attachment, data, video
    codec: str
    language: str = ""
    title: str = ""
    name: str = ""  # of an attached file
    detail: str = ""  # of sound: rate and channels


@dataclass(frozen=True)
class Media:
    """A file with a picture."""

    path: str
    container: str
    index: int
    codec: str
    profile: str
    width: int
    height: int
    format: PixelFormat
    colour: Colour
    rate: Fraction
    aspect: Fraction  # of a pixel
    fields: str = ""  # tff, bff or progressive (empty)
    rotation: int = 0  # degrees clockwise to turn the picture upright
    turned: str = ""  # what ffmpeg does to that end, in words
    mastering: dict[str, str] = field(default_factory=dict)
    light: tuple[int, int] | None = None  # largest and average content light level
    timecode: str = ""
    tracks: tuple[Track, ...] = ()
    chapters: tuple[str, ...] = ()
    tags: dict[str, str] = field(default_factory=dict)
    picture_tags: dict[str, str] = field(default_factory=dict)
    start: Fraction = Fraction(0)  # of the picture, after the file's own
    frames: int | None = None
    times: tuple[int, ...] = ()  # of frames with a variable rate, in 1 / ticks
    ticks: int = 1
    stamps: tuple[int, ...] = ()  # when each frame is shown, in units of the file's clock
    clock: Fraction = Fraction(0)
    dynamic: bool = False  # has metadata for single frames, which an encoder loses
    linear: bool = False
    pattern: Pattern | None = None
    numbers: tuple[int, ...] = ()  # of the pictures of a sequence
    half: bool = False  # floats of 16 bits
    options: tuple[str, ...] = ()  # that ffmpeg needs before -i
    decoder: tuple[str, ...] = ()  # the same, when the picture is wanted
    source: str = ""  # what it needs behind -i

    def of(self, kind: str) -> list[Track]:
        return [track for track in self.tracks if track.kind == kind]

    @property
    def begin(self) -> int:
        """The number of the first frame."""
        return self.numbers[0] if self.numbers else 1

    def upright(self) -> Media:
        """As it is once ffmpeg has turned it."""
        if self.rotation not in (90, 270):
            return replace(self, rotation=0, turned="")
        aspect = 1 / self.aspect if self.aspect else self.aspect
        size = {"width": self.height, "height": self.width}
        return replace(self, rotation=0, turned="", aspect=aspect, **size)


def run_json(command: list[str], what: str, data: bytes | None = None) -> dict[str, Any]:
    """What a probing program prints."""
    streams: dict[str, Any] = {"input": data} if data is not None else {"stdin": subprocess.DEVNULL}
    try:
        done = subprocess.run(command, capture_output=True, check=False, **streams)
    except FileNotFoundError as error:
        raise Failure(command[0], "it is not installed", "install ffmpeg") from error
    if done.returncode != 0:
        reason = (complaints(done.stderr) or ["it gives no reason"])[0]
        raise Failure(what, f"ffmpeg cannot read it: {reason}", "check it")
    result: dict[str, Any] = json.loads(done.stdout.decode("utf-8", "replace") or "{}")
    return result


def complaints(data: bytes) -> list[str]:
    """What ffmpeg says, without addresses and without what only follows from a closed pipe."""
    text = data.decode("utf-8", "replace")
    text = re.sub(r"\[([^\]@]*?) @ 0x[0-9a-f]+\] ?", "", text)
    text = re.sub(r"\bfile:(?=\S)|^av_interleaved_write_frame\(\): ", "", text, flags=re.MULTILINE)
    follows = re.compile(
        r"Broken pipe|^Conversion failed|Error (writing trailer|closing file|muxing a packet)|"
        r"^Error while (processing|filtering)|Last message repeated|^Svt\[\w+\]: |"
        r"Referenced QT chapter track not found|Could not find codec parameters for stream \d+ "
        r"\(Attachment|Consider increasing the value|mastering display|^\s*$"
    )
    return [line.strip() for line in text.splitlines() if not follows.search(line)]


def _known(value: Any) -> str:
    return "" if value in _UNKNOWN or value is None else str(value)


def _fraction(value: Any) -> Fraction:
    try:
        return Fraction(str(value).replace(":", "/"))
    except (ValueError, ZeroDivisionError):
        return Fraction(0)


def probe(
    path: str, pattern: Pattern | None = None, numbers: list[int] | None = None, y4m: bytes = b""
) -> Media:
    """Of a file, of a sequence's pictures `numbers`, or of a Y4M stream that begins with `y4m`.
    Throws Failure when there is no picture in it."""
    options, source = _source(path, pattern, numbers or [])
    first = ffmpeg_name(pattern.path(numbers[0])) if pattern and numbers else source
    literal = [] if "image2" not in options else ["-f", "image2", "-pattern_type", "none"]
    if y4m:
        options, literal, source, first = ["-f", "yuv4mpegpipe"], ["-f", "yuv4mpegpipe"], "-", "-"
    base = ["ffprobe", "-v", "error", "-of", "json", *literal]
    shown = ["-show_format", "-show_streams", "-show_chapters", first]
    report = run_json(base + shown, path, y4m or None)
    stream = next((s for s in report.get("streams", []) if _is_picture(s)), None)
    if stream is None:
        why = "it holds no picture" + (", only sound" if report.get("streams") else "")
        raise Failure(path, why, "give a picture or a video")
    frame: dict[str, Any] = {}
    if not y4m:
        chosen = ["-select_streams", str(stream["index"]), "-read_intervals", "%+#1"]
        command = ["ffprobe", "-v", "quiet", "-of", "json", *literal, *chosen, "-show_frames"]
        frame = (run_json([*command, first], path).get("frames") or [{}])[0]
    decoder: tuple[str, ...] = ()
    if stream["codec_name"] in _WITH_ALPHA and _tags(stream).get("alpha_mode") == "1":
        decoder = ("-c:v", _WITH_ALPHA[stream["codec_name"]])
        frame["pix_fmt"] = "yuva420p"  # ffprobe's own decoder leaves alpha out
    media = _media(path, report, stream, frame)
    media = replace(media, options=tuple(options), decoder=decoder, source=source)
    if pattern and numbers:
        return replace(media, pattern=pattern, numbers=tuple(numbers), frames=len(numbers))
    return media


def _source(path: str, pattern: Pattern | None, numbers: list[int]) -> tuple[list[str], str]:
    """The options before -i, and what stands behind it."""
    if pattern:
        start = ["-f", "image2", "-start_number", str(numbers[0])]
        return start, ffmpeg_name(pattern.for_ffmpeg())
    if (
        "%" in path and is_picture(path) and extension(path) != "avif"
    ):  # ffmpeg would look for a sequence
        return ["-f", "image2", "-pattern_type", "none"], ffmpeg_name(path)
    return [], ffmpeg_name(path)


_WITH_ALPHA = {"vp8": "libvpx", "vp9": "libvpx-vp9"}


def _is_picture(stream: dict[str, Any]) -> bool:
    return stream.get("codec_type") == "video" and not stream["disposition"]["attached_pic"]


def _tags(row: dict[str, Any]) -> dict[str, str]:
    return {key.lower(): value for key, value in row.get("tags", {}).items()}


def own_tags(row: dict[str, Any]) -> dict[str, str]:
    kept = {k: v for k, v in row.get("tags", {}).items() if not _OWN_TAGS.fullmatch(k)}
    return {key: value for key, value in kept.items() if value}


def _media(
    path: str, report: dict[str, Any], stream: dict[str, Any], frame: dict[str, Any]
) -> Media:
    pix_fmt = frame.get("pix_fmt") or stream.get("pix_fmt")
    if not pix_fmt or pix_fmt not in pixel_formats() or not stream.get("width"):
        raise Failure(path, "its picture cannot be decoded", "check the file")
    container = report["format"]
    sides = {row.get("side_data_type"): row for row in frame.get("side_data_list", [])}
    matrices = [row for row in stream.get("side_data_list", []) if "displaymatrix" in row]
    rotation = -int(matrices[0]["rotation"]) % 360 if matrices else 0
    light = sides.get("Content light level metadata")
    mastering = sides.get("Mastering display metadata", {})
    # The timecode and the chapters are facts of their own.
    others = [s for s in report["streams"] if s is not stream]
    others = [s for s in others if s.get("codec_tag_string") not in ("tmcd", "text")]
    tracks = tuple(_track(s) for s in others)
    codes = [_tags(row).get("timecode", "") for row in [stream, *report["streams"], container]]
    number = pixel_formats()[pix_fmt]
    is_picture = "image2" in container["format_name"] or "_pipe" in container["format_name"]
    start = _fraction(stream.get("start_time")) - _fraction(container.get("start_time"))
    return Media(
        path=path,
        container=container["format_name"],
        index=stream["index"],
        codec=stream["codec_name"],
        profile=stream.get("profile", ""),
        width=stream["width"],
        height=stream["height"],
        format=number,
        colour=_colour(stream, frame, number),
        rate=_fraction(stream.get("r_frame_rate")) or Fraction(25),
        aspect=_fraction(frame.get("sample_aspect_ratio") or stream.get("sample_aspect_ratio"))
        or Fraction(1),
        fields=_fields(stream, frame),
        rotation=rotation,
        turned=f"{rotation} degrees" if rotation else "mirrored" if matrices else "",
        mastering={k: v for k, v in mastering.items() if k != "side_data_type"},
        light=(light["max_content"], light["max_average"]) if light else None,
        timecode=next((code for code in codes if code), ""),
        tracks=tracks,
        chapters=tuple(_tags(c).get("title", "") for c in report.get("chapters", [])),
        tags=own_tags(container),
        picture_tags=own_tags(stream)
        | {k: v for k, v in stream.get("tags", {}).items() if k == "language" and v != "und"},
        start=start if not is_picture else Fraction(0),
        dynamic=any("Dynamic" in str(kind) or "DOVI" in str(kind) for kind in sides),
        linear=number.is_float,
        half=stream["codec_name"] in ("exr", "phm") and _is_half(path),
    )


def _colour(stream: dict[str, Any], frame: dict[str, Any], number: PixelFormat) -> Colour:
    def said(name: str) -> str:
        return _known(frame.get(name)) or _known(stream.get(name))

    return Colour(
        matrix="" if number.rgb or said("color_space") == "gbr" else said("color_space"),
        full_range=said("color_range") == "pc"
        or number.name.startswith("yuvj")
        or number.rgb
        or (number.gray and not said("color_range") and stream["codec_name"] not in _LIMITED),
        primaries=said("color_primaries"),
        transfer=said("color_transfer"),
        place=said("chroma_location") if number.sub_w or number.sub_h else "",
        range_said=bool(said("color_range")),
    )


def _fields(stream: dict[str, Any], frame: dict[str, Any]) -> str:
    if frame:
        if not frame.get("interlaced_frame"):
            return ""
        return "tff" if frame.get("top_field_first") else "bff"
    return {"tt": "tff", "tb": "tff", "bb": "bff", "bt": "bff"}.get(
        stream.get("field_order", ""), ""
    )


def _track(stream: dict[str, Any]) -> Track:
    tags = _tags(stream)
    cover = bool(stream["disposition"]["attached_pic"])
    detail = f"{stream.get('sample_rate', '')} Hz, {stream.get('channels', '')} channels"
    language = tags.get("language", "")
    return Track(
        index=stream["index"],
        kind="cover" if cover else stream.get("codec_type", "data"),
        codec=stream.get("codec_name", "") or stream.get("codec_tag_string", ""),
        language="" if language == "und" else language,
        title=tags.get("title", ""),
        name=tags.get("filename", ""),
        detail=detail if stream.get("codec_type") == "audio" else "",
    )


def _is_half(path: str) -> bool:
    """Whether the first channel of an EXR is of 16 bits; ffmpeg does not say."""
    try:
        with open(path, "rb") as file:
            head = file.read(4096)
    except OSError:
        return False
    at = head.find(b"channels\0chlist\0")
    if at < 0:
        return head[:2] in (b"PH", b"Ph")
    name_end = head.find(b"\0", at + 20)
    kind = head[name_end + 1 : name_end + 5]
    return len(kind) == 4 and struct.unpack("<i", kind)[0] == 1


def with_times(media: Media) -> Media:
    """Counts the frames of a video, and finds out whether they come at an even rate."""
    if media.source == "-" or media.pattern:
        return media
    entries = ["-show_entries", "packet=pts,flags:stream=time_base,avg_frame_rate"]
    command = ["ffprobe", "-v", "quiet", "-of", "json", *media.options]
    command += ["-select_streams", str(media.index), *entries, media.source]
    done = subprocess.run(command, capture_output=True, stdin=subprocess.DEVNULL, check=False)
    found = json.loads(done.stdout or "{}")
    streams = found.get("streams", [])
    shown = [p for p in found.get("packets", []) if "D" not in p.get("flags", "")]
    if not shown or not streams:
        return media
    base = _fraction(streams[-1].get("time_base"))
    average = _fraction(streams[-1].get("avg_frame_rate"))
    media = replace(media, frames=len(shown))
    times = sorted(p["pts"] for p in shown if "pts" in p)
    if len(times) < len(shown) or len(times) < 2 or not base:
        return media
    if len(set(times)) == len(times):
        media = replace(media, stamps=tuple(times), clock=base)
    for rate in (media.rate, average):
        if rate and is_even(times, base, rate):
            return replace(media, rate=rate)
    span = times[-1] - times[0]
    rate = average or Fraction(len(times) - 1) / (span * base) if span else media.rate
    ticks = base.denominator if base.numerator == 1 and base.denominator <= 1_000_000 else 90_000
    rounded = tuple(round((time - times[0]) * base * ticks) for time in times)
    return replace(media, rate=rate, times=rounded, ticks=ticks)


def is_even(times: list[int], base: Fraction, rate: Fraction) -> bool:
    """Whether no frame is further from its place than the clock of the file explains."""
    slack = max(base, Fraction(1, 1000)) * Fraction(101, 100)
    step = 1 / (rate * base)
    first = times[0]
    most = slack / base
    return all(abs(time - first - step * n) <= most for n, time in enumerate(times))
