"""What ffprobe says of a file, as one value."""

from __future__ import annotations

import json
import re
import struct
import subprocess
from collections.abc import Callable
from dataclasses import dataclass, field, replace
from fractions import Fraction
from typing import Any

from .failure import Failure
from .names import Pattern, extension, ffmpeg_name, is_picture

# Codecs whose codes are limited where they say nothing; gray of others is full, as ffmpeg takes it.
_LIMITED = ("h264", "hevc", "av1", "vp9", "mpeg2video", "mpeg4", "prores")
_WITH_ALPHA = {"vp8": "libvpx", "vp9": "libvpx-vp9"}  # ffmpeg's own decoders leave it out
_SRGB = {"red_x": 0.64, "red_y": 0.33, "green_x": 0.3, "green_y": 0.6, "blue_x": 0.15}
_SRGB |= {"blue_y": 0.06, "white_point_x": 0.3127, "white_point_y": 0.329}
_ONE_PICTURE = ["-f", "image2", "-pattern_type", "none"]
# Tags that say how the file was made, not what is in it.
_OWN_TAGS = re.compile(
    r"(major_brand|minor_version|compatible_brands|encoder|creation_time|handler_name|vendor_id|"
    r"duration.*|rotate|alpha_mode|bps.*|number_of_.*|_statistics.*|language|timecode|"
    r"writing_.*|encoded_by|track|stereo_mode|.*_uid|.*umid|uid|generation_uid|modification_date|"
    r"company_name|product_.*|application_platform|operational_pattern_ul|filename|mimetype|"
    r"toolkit_version|data_type|file_package_name|comment|variant_bitrate)",
    re.IGNORECASE,
)
# What only follows from a closed pipe, or is of no concern.
_FOLLOWS = re.compile(
    r"Broken pipe|^Conversion failed|Error (writing trailer|closing file|muxing a packet)|"
    r"^Error while (processing|filtering)|Last message repeated|^Svt\[\w+\]: |"
    r"Referenced QT chapter track not found|Could not find codec parameters for stream \d+ "
    r"\(Attachment|Consider increasing the value|mastering display|^\s*$"
)


def complaints(data: bytes) -> list[str]:
    """The causes in what ffmpeg says, without addresses."""
    text = re.sub(r"\[([^\]@]*?) @ 0x[0-9a-f]+\] ?", "", data.decode("utf-8", "replace"))
    text = re.sub(r"\bfile:(?=\S)|^av_interleaved_write_frame\(\): ", "", text, flags=re.MULTILINE)
    return [line.strip() for line in text.splitlines() if not _FOLLOWS.search(line)]


def tool(*words: str, data: bytes = b"") -> subprocess.CompletedProcess[bytes]:
    """ffmpeg or ffprobe, run to its end; `data` is all of its standard input."""
    try:
        return subprocess.run(words, input=data, capture_output=True, check=False)
    except FileNotFoundError as error:
        raise Failure(words[0], "it is not installed", "install ffmpeg") from error


def ffprobe(*words: str, of: str = "", data: bytes = b"") -> Any:
    """What it prints; Failure when it cannot read `of`."""
    done = tool("ffprobe", "-v", "error", "-of", "json", *words, data=data)
    if done.returncode and of:
        reason = (complaints(done.stderr) or ["it gives no reason"])[0]
        raise Failure(of, f"ffmpeg cannot read it: {reason}", "check it")
    return json.loads(done.stdout.decode("utf-8", "replace") or "{}")


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

    def frame_size(self, width: int, height: int) -> int:
        """Bytes of a frame in planes of whole samples."""
        chroma = 0 if self.gray else 2 * -(-width >> self.sub_w) * -(-height >> self.sub_h)
        return (width * height * (2 if self.alpha else 1) + chroma) * (2 if self.depth > 8 else 1)

    def chroma(self) -> str:
        names = {(1, 1): "4:2:0", (1, 0): "4:2:2", (0, 0): "4:4:4", (2, 0): "4:1:1"}
        shared = names.get((self.sub_w, self.sub_h), "other chroma")
        return "gray" if self.gray else "RGB" if self.rgb else shared


_KNOWN_FORMATS: dict[str, PixelFormat] = {}


def pixel_formats(report: dict[str, Any] | None = None) -> dict[str, PixelFormat]:
    """By name; out of `report`, where somebody has asked ffprobe for them beside other things."""
    if _KNOWN_FORMATS:
        return _KNOWN_FORMATS
    for row in (report or ffprobe("-show_pixel_formats", of="ffprobe"))["pixel_formats"]:
        name, flags = row["name"], row["flags"]
        palette = bool(flags["palette"])
        gray = row["nb_components"] in (1, 2) and not palette and not name.startswith("bayer")
        depth = max((c["bit_depth"] for c in row.get("components", [])), default=8)
        shared = row.get("log2_chroma_w", 0), row.get("log2_chroma_h", 0)
        rgb, alpha = bool(flags["rgb"]) or palette, bool(flags["alpha"]) or palette
        _KNOWN_FORMATS[name] = PixelFormat(name, rgb, alpha, depth, *shared, gray)
    return _KNOWN_FORMATS


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
    kind: str  # audio, subtitle, attachment, data, video, cover
    codec: str
    language: str = ""
    title: str = ""
    name: str = ""  # of an attached file
    detail: str = ""  # of sound: rate and channels


@dataclass(frozen=True)
class Media:
    """A file with a picture, or raw frames."""

    path: str = ""
    container: str = ""
    index: int = 0
    codec: str = ""
    profile: str = ""
    width: int = 0
    height: int = 0
    format: PixelFormat = PixelFormat("bgra", True, True, 8, 0, 0, False)
    colour: Colour = Colour()
    rate: Fraction = Fraction(25)
    aspect: Fraction = Fraction(1)  # of a pixel
    fields: str = ""  # tff, bff or progressive (empty)
    turned: str = ""  # what ffmpeg does to the picture to make it upright, in words
    mastering: dict[str, str] = field(default_factory=dict)
    chromaticities: dict[str, str] = field(default_factory=dict)  # empty too for those of sRGB
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
    half: bool = False  # floats of 16 bits
    pattern: Pattern | None = None
    numbers: tuple[int, ...] = ()  # of the pictures of a sequence
    options: tuple[str, ...] = ()  # that ffmpeg needs before -i
    decoder: tuple[str, ...] = ()  # the same, when the picture is wanted
    source: str = "-"  # what it needs behind -i

    def of(self, kind: str) -> list[Track]:
        return [track for track in self.tracks if track.kind == kind]

    @property
    def begin(self) -> int:
        """The number of the first frame."""
        return self.numbers[0] if self.numbers else 1

    def upright(self) -> Media:
        """As it is once ffmpeg has turned it."""
        if not self.turned.startswith(("90 ", "270 ")):
            return replace(self, turned="")
        size = {"width": self.height, "height": self.width}
        return replace(self, turned="", aspect=1 / self.aspect, **size)


def _said(*rows: dict[str, Any]) -> Callable[[str], str]:
    """Looks a name up in the first of `rows` that knows it."""
    unknown = (None, "", "unknown", "reserved", "unspecified", "N/A")

    def find(name: str) -> str:
        return next((str(row[name]) for row in rows if row.get(name) not in unknown), "")

    return find


def _fraction(value: Any) -> Fraction:
    try:
        return Fraction(str(value).replace(":", "/"))
    except (ValueError, ZeroDivisionError):
        return Fraction(0)


def _tags(row: dict[str, Any]) -> dict[str, str]:
    return {key.lower(): value for key, value in row.get("tags", {}).items()}


def _content_tags(row: dict[str, Any]) -> dict[str, str]:
    tags = row.get("tags", {}).items()
    return {key: value for key, value in tags if value and not _OWN_TAGS.fullmatch(key)}


def probe(
    path: str, pattern: Pattern | None = None, numbers: list[int] | None = None, y4m: bytes = b""
) -> Media:
    """Of a file, of a sequence's pictures `numbers`, or of a Y4M stream that begins with `y4m`.
    Throws Failure when there is no picture in it."""
    options: list[str] = []
    source = ffmpeg_name(path)
    if y4m:
        options, source = ["-f", "yuv4mpegpipe"], "-"
    elif pattern and numbers:
        options = ["-f", "image2", "-start_number", str(numbers[0])]
        source = ffmpeg_name(pattern.for_ffmpeg())
    elif "%" in path and is_picture(path) and extension(path) != "avif":
        options = _ONE_PICTURE  # ffmpeg would look for a sequence
    first = [*options, source]
    if pattern and numbers:
        path = pattern.path(numbers[0])
        first = [*_ONE_PICTURE, ffmpeg_name(path)]
    # A start of ffprobe takes longer than what it does here: everything is asked for at once.
    shown = ["-show_pixel_formats", "-show_format", "-show_streams", "-show_chapters"]
    one = ("-show_frames", "-read_intervals", "%+#1")
    report = ffprobe(*shown, *(() if y4m else one), *first, of=path, data=y4m)
    pixel_formats(report)
    streams = [s for s in report.get("streams", []) if s.get("codec_type") == "video"]
    stream = next((s for s in streams if not s["disposition"]["attached_pic"]), None)
    if stream is None:
        why = "it holds no picture" + (", only sound" if report.get("streams") else "")
        raise Failure(path, why, "give a picture or a video")
    frame: dict[str, Any] = {}
    if not y4m:
        chosen = stream["index"]
        frames = [f for f in report.get("frames", []) if f.get("stream_index") == chosen]
        if not frames:  # the first packet was of another stream
            frames = ffprobe("-select_streams", str(chosen), *one, *first, of=path).get("frames")
        frame = (frames or [{}])[0]
    decoder: tuple[str, ...] = ()
    if stream["codec_name"] in _WITH_ALPHA and _tags(stream).get("alpha_mode") == "1":
        decoder = ("-c:v", _WITH_ALPHA[stream["codec_name"]])
        frame["pix_fmt"] = "yuva420p"
    media = _media(path, report, stream, frame)
    media = replace(media, options=tuple(options), decoder=decoder, source=source)
    if pattern and numbers:
        return replace(media, pattern=pattern, numbers=tuple(numbers), frames=len(numbers))
    return media


def _media(
    path: str, report: dict[str, Any], stream: dict[str, Any], frame: dict[str, Any]
) -> Media:
    said = _said(frame, stream)
    number = pixel_formats().get(said("pix_fmt"))
    if not number or not stream.get("width"):
        raise Failure(path, "its picture cannot be decoded", "check the file")
    container = report["format"]
    kinds = container["format_name"]
    sides = {row.get("side_data_type"): row for row in frame.get("side_data_list", [])}
    matrices = [row for row in stream.get("side_data_list", []) if "displaymatrix" in row]
    rotation = -int(matrices[0]["rotation"]) % 360 if matrices else 0
    light = sides.get("Content light level metadata")
    mastering = sides.get("Mastering display metadata", {})
    points = {k: v for k, v in mastering.items() if k != "side_data_type"}
    is_display = "max_luminance" in points  # else ffmpeg has made it of what a PNG says of itself
    is_usual = all(abs(float(_fraction(points.get(k))) - v) < 0.001 for k, v in _SRGB.items())
    # The timecode and the chapters are facts of their own.
    others = [s for s in report["streams"] if s is not stream]
    others = [s for s in others if s.get("codec_tag_string") not in ("tmcd", "text")]
    codes = [_tags(row).get("timecode") for row in (stream, *report["streams"], container)]
    language = {k: v for k, v in stream.get("tags", {}).items() if k == "language" and v != "und"}
    start = _fraction(stream.get("start_time")) - _fraction(container.get("start_time"))
    return Media(
        path=path,
        container=kinds,
        index=stream["index"],
        codec=stream["codec_name"],
        profile=stream.get("profile", ""),
        width=stream["width"],
        height=stream["height"],
        format=number,
        colour=_colour(said, number, stream["codec_name"]),
        rate=_fraction(stream.get("r_frame_rate")) or Fraction(25),
        aspect=_fraction(said("sample_aspect_ratio")) or Fraction(1),
        fields=_fields(stream, frame),
        turned=f"{rotation} degrees" if rotation else "mirrored" if matrices else "",
        mastering=points if is_display else {},
        chromaticities={} if is_display or is_usual else points,
        light=(light["max_content"], light["max_average"]) if light else None,
        timecode=next(filter(None, codes), ""),
        tracks=tuple(map(_track, others)),
        chapters=tuple(_tags(row).get("title", "") for row in report.get("chapters", [])),
        tags=_content_tags(container),
        picture_tags=_content_tags(stream) | language,
        start=Fraction(0) if "image2" in kinds or "_pipe" in kinds else start,
        dynamic=any("Dynamic" in str(kind) or "DOVI" in str(kind) for kind in sides),
        half=stream["codec_name"] in ("exr", "phm") and _is_half(path),
    )


def _colour(said: Callable[[str], str], number: PixelFormat, codec: str) -> Colour:
    named_range, matrix = said("color_range"), said("color_space")
    full = named_range == "pc" or number.rgb or number.name.startswith("yuvj")
    return Colour(
        "" if number.rgb or matrix == "gbr" else matrix,
        full or (number.gray and not named_range and codec not in _LIMITED),
        said("color_primaries"),
        said("color_transfer"),
        said("chroma_location") if number.sub_w or number.sub_h else "",
        bool(named_range),
    )


def _fields(stream: dict[str, Any], frame: dict[str, Any]) -> str:
    if not frame:
        orders = {"tt": "tff", "tb": "tff", "bb": "bff", "bt": "bff"}
        return orders.get(stream.get("field_order", ""), "")
    upper = "tff" if frame.get("top_field_first") else "bff"
    return upper if frame.get("interlaced_frame") else ""


def _track(stream: dict[str, Any]) -> Track:
    tags = _tags(stream)
    is_cover = stream["disposition"]["attached_pic"]
    kind = "cover" if is_cover else stream.get("codec_type", "data")
    detail = f"{stream.get('sample_rate', '')} Hz, {stream.get('channels', '')} channels"
    return Track(
        index=stream["index"],
        kind=kind,
        codec=stream.get("codec_name", "") or stream.get("codec_tag_string", ""),
        language=tags.get("language", "").removeprefix("und"),
        title=tags.get("title", ""),
        name="" if is_cover else tags.get("filename", ""),
        detail=detail if kind == "audio" else "",
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
    entries = ("-show_entries", "packet=pts,flags:stream=time_base,avg_frame_rate")
    chosen = ("-select_streams", str(media.index))
    found = ffprobe(*media.options, *chosen, *entries, media.source)
    times = [p.get("pts") for p in found.get("packets", []) if "D" not in p.get("flags", "")]
    if not times or not found.get("streams"):
        return media
    media = replace(media, frames=len(times))
    stream = found["streams"][-1]
    base, average = (_fraction(stream.get(name)) for name in ("time_base", "avg_frame_rate"))
    if None in times or len(times) < 2 or not base:
        return media
    times.sort()
    if len(set(times)) == len(times):
        media = replace(media, stamps=tuple(times), clock=base)
    for rate in (media.rate, average):
        if rate and is_even(times, base, rate):
            return replace(media, rate=rate)
    span = (times[-1] - times[0]) * base
    rate = average or (Fraction(len(times) - 1) / span if span else media.rate)
    ticks = base.denominator if base.numerator == 1 and base.denominator <= 1_000_000 else 90_000
    rounded = tuple(round((time - times[0]) * base * ticks) for time in times)
    return replace(media, rate=rate, times=rounded, ticks=ticks)


def is_even(times: list[int], base: Fraction, rate: Fraction) -> bool:
    """Whether no frame is further from its place than the clock of the file explains."""
    step = 1 / (rate * base)
    most = max(base, Fraction(1, 1000)) * Fraction(101, 100) / base
    return all(abs(time - times[0] - step * n) <= most for n, time in enumerate(times))
