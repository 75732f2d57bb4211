"""From a job and what was probed to the commands that do it, and to what they cannot keep."""

from __future__ import annotations

import re
import shlex
from dataclasses import dataclass, field, replace
from fractions import Fraction
from math import gcd
from typing import Any

from . import kept
from .colour import Raw, decode_filters, encode_filters, output_colour, raw_for
from .colour import tag_filter, tag_options, understood
from .failure import Failure, WRONG_USAGE
from .formats import CONTAINERS, Choice, Container, choose, encoder_options
from .names import Pattern, extension, ffmpeg_name, is_picture
from .probe import Colour, Media, Track

_TEXTS = ("subrip", "ass", "ssa", "mov_text", "webvtt", "text")
_MADE_BY = {"libopus": "opus", "libmp3lame": "mp3", "srt": "subrip"}
_DROP_RATES = (Fraction(30000, 1001), Fraction(60000, 1001))
_COVERS = {"mjpeg": ("image/jpeg", "cover.jpg"), "png": ("image/png", "cover.png")}
_BEFORE = 1  # seconds that a seek aims before the frame: the key frame may be shown later
_BY_NUMBER = ("--key", "--project", "--dither")  # what they do depends on the frame's number
MILLISECONDS = ("mkv", "webm", "flv")  # files whose clock is as coarse as that


@dataclass(frozen=True)
class Part:
    """Makes of a job one piece of a larger one."""

    counted: dict[str, Any]  # of the source: what only a pass through all of it tells
    origin: int  # the number of the frame that keyframes count from
    seek: bool  # or decode from the start


@dataclass(frozen=True)
class Job:
    """One render as a value: what to do, not yet how."""

    input: str
    output: str
    host: tuple[str, ...] = ()  # options that the host program gets as they were given
    frames: str | None = None
    fps: Fraction | None = None
    first: int | None = None
    aspect: Fraction | None = None
    depth: str | None = None
    codec: str | None = None
    quality: int | None = None
    encoder_options: str | None = None
    matrix: str | None = None  # bt601, bt709 or bt2020
    range: str | None = None  # limited or full
    overwrite: bool = False
    strict: bool = False
    skip_bad_frames: bool = False
    raw_in: bool = False  # raw frames on standard input, which the host program itself reads
    raw_out: bool = False
    part: Part | None = None


def parse_frames(text: str) -> list[tuple[int, int | None, int]]:
    """First, last (none: the end) and step of each range of "1-10,15,20-40x2,50-"."""
    ranges = []
    for part in text.split(","):
        try:
            span, _, step = part.strip().partition("x")
            first, dash, last = span.partition("-")
            end = (int(last) if last else None) if dash else int(first)
            ranges.append((int(first), end, int(step or 1)))
            if ranges[-1][2] < 1 or (end is not None and end < int(first)):
                raise ValueError
        except ValueError as error:
            why, remedy = "these are no frame numbers", "write them like 1-10,15,20-40x2"
            raise Failure(f"--frames {text}", why, remedy, WRONG_USAGE) from error
    return ranges


def chosen_frames(text: str | None, first: int, count: int) -> list[int]:
    """Of the frames numbered from `first`, those to render."""
    most = first + count
    found: set[int] = set()
    for begin, end, step in parse_frames(text) if text is not None else [(first, None, 1)]:
        begin += -(-max(0, first - begin) // step) * step  # the first of its steps that is there
        found.update(range(begin, most if end is None else min(end + 1, most), step))
    return sorted(found)


@dataclass(frozen=True)
class Encoding:
    """How raw frames become the output."""

    media: Media  # as it will be, as far as is known beforehand
    container: Container
    choice: Choice
    colour_words: tuple[str, ...]
    filters: list[str]
    raw: Raw
    tracks: list[str]  # maps and codecs of what comes beside the picture
    covers: list[Track]  # to be taken out and attached
    times: tuple[int, ...] = ()

    def script(self) -> str:
        """The filters as text; long with variable rates."""
        steps = list(self.filters)
        if self.times:
            expression = times_expression(self.times)
            steps += [f"settb=1/{self.media.ticks}", f"setpts='{expression}'"]
        return ",".join(steps)


@dataclass(frozen=True)
class Plan:
    """What the pipeline runs. What is missing at an end is the host program's own work there."""

    raw_in: Raw | None
    raw_out: Raw | None
    source: Media
    decode: tuple[str, ...] = ()
    encoding: Encoding | None = None
    expected: int | None = None
    first: int = 1  # the number of the first frame that comes out of the decoder
    notes: tuple[str, ...] = ()
    losses: dict[str, str] = field(default_factory=dict)
    target: str | Pattern = ""  # the output's name or names
    head: bytes = b""  # what was read of standard input


def make_plan(job: Job, source: Media, decoded: bool, encoded: bool) -> Plan:
    """`decoded`, `encoded`: ffmpeg stands at that end. `source` has its frames counted."""
    media = source.upright()
    media = replace(media, aspect=job.aspect or media.aspect)
    if job.fps:
        media = replace(media, rate=job.fps, times=(), start=Fraction(0))
    notes = []
    if decoded and source.turned:
        notes.append(f"rotation: {source.turned}, applied: the picture is stored upright")
    colour = understood(media, job.matrix, job.range)
    guessed = colour.matrix != media.colour.matrix and not job.matrix and not media.format.gray
    if decoded and guessed:
        notes.append(f"colour matrix: not said; taken for {colour.matrix}, as usual for its size")
    expected, media = _choose_frames(job, media)
    raw = raw_for(source.format, job.depth)
    plan = Plan(raw if decoded else None, raw if encoded else None, source, expected=expected)
    even = _is_even(job, encoded)
    if media.times and even:
        notes.append(f"times of single frames: they come at an even rate of {media.rate} now")
    if decoded:
        filters = decode_filters(media, colour, raw)
        seek: list[str] = []
        first = source.begin
        if job.part:
            first, seek, filters = _cut_out(job, job.part, source, filters)
        decode = _decode_words(source, media, seek, filters, even)
        plan = replace(plan, decode=tuple(decode), first=first)
    if encoded:
        encoding = _encoding(job, media, colour, raw)
        found = kept.losses(kept.facts(source.upright()), kept.facts(encoding.media))
        if even and media.times:
            found.setdefault("times of single frames", "times of single frames: an even rate now")
            plan = replace(plan, expected=None)
        plan = replace(plan, encoding=encoding, losses=found)
    return replace(plan, notes=tuple(notes))


def _is_even(job: Job, encoded: bool) -> bool:
    kind = "y4m" if job.output == "-" else extension(job.output)
    return encoded and (kind not in CONTAINERS or CONTAINERS[kind].even)


def _choose_frames(job: Job, media: Media) -> tuple[int | None, Media]:
    """How many frames to expect, and the media with those frames alone."""
    if media.frames is None:
        return None, media
    first = media.begin
    numbers = chosen_frames(job.frames, first, media.frames)
    if not numbers:
        last = first + media.frames - 1
        why = f"it has none of the chosen frames: its numbers are {first} to {last}"
        raise Failure(job.input, why, "choose from these with --frames")
    if job.frames is not None and media.times:
        times = [media.times[number - first] for number in numbers]
        begin = times[0]
        if job.part and extension(job.output) in MILLISECONDS:
            # Moments of the whole are rounded, not distances within the piece.
            scale = 1000 // gcd(1000, media.ticks)
            media = replace(media, ticks=media.ticks * scale)
            times = [time * scale for time in times]
            begin = round(Fraction(times[0] * 1000, media.ticks)) * media.ticks // 1000
        media = replace(media, times=tuple(time - begin for time in times))
    if job.frames is not None:
        media = replace(media, start=Fraction(0))
    return len(numbers), media


def _cut_out(
    job: Job, part: Part, source: Media, filters: list[str]
) -> tuple[int, list[str], list[str]]:
    """The number of the first frame in the pipe, the words before -i that get there, and `filters`
    with those that let only the frames of the piece pass. The frames are told by their own times:
    a seek that lands too late leaves too few of them."""
    seek: list[str] = []
    if source.numbers:
        first = source.numbers[0]
    else:
        chosen = chosen_frames(job.frames, 1, source.frames or 0)
        first, last = chosen[0], chosen[-1]
        if source.stamps:
            stamps = source.stamps[first - 1], source.stamps[last - 1]
            filters = [f"trim=start_pts={stamps[0]}:end_pts={stamps[1] + 1}", *filters]
            seek = ["-copyts"]
            place = stamps[0] * source.clock - _BEFORE
            if part.seek and place > source.stamps[0] * source.clock:
                seek += ["-seek_timestamp", "1", "-noaccurate_seek", "-ss", f"{float(place):.6f}"]
        else:
            filters = [f"trim=start_frame={first - 1}:end_frame={last}", *filters]
    if first > part.origin and any(word in _BY_NUMBER for word in job.host):
        # The host program counts: the first frame stands in for those before it.
        filters = [*filters, f"loop=loop={first - part.origin}:size=1:start=0"]
        first = part.origin
    return first, seek, filters


def _decode_words(
    source: Media, media: Media, seek: list[str], filters: list[str], even: bool
) -> list[str]:
    if even and media.times:
        rate = ["-fps_mode", "cfr", "-r", str(media.rate)]
    else:  # raw frames need no times, but rising ones
        filters = [*filters, "settb=1/1000", "setpts=N"]
        rate = ["-fps_mode", "passthrough", "-enc_time_base", "1:1000"]
    words = [
        "ffmpeg",
        "-nostdin",
        "-v",
        "error",
        "-xerror",
        *seek,
        *source.options,
        *source.decoder,
    ]
    words += ["-i", source.source, "-map", f"0:{source.index}", *rate]
    return words + ["-vf", ",".join(filters), "-f", "rawvideo", "pipe:1"]


def container_of(output: str) -> Container:
    if output == "-":
        return CONTAINERS["y4m"]
    kind = extension(output)
    if kind not in CONTAINERS:
        why = f"files that end in .{kind} are not written" if kind else "its ending says no kind"
        known = "name one like .mp4, .mov, .mkv, .webm, .png, .tif or .exr"
        raise Failure(output, why, known, WRONG_USAGE)
    return CONTAINERS[kind]


def _encoding(job: Job, media: Media, read: Colour, raw: Raw) -> Encoding:
    container = container_of(job.output)
    choice = choose(media, job.output, container, job.codec)
    colour = output_colour(media, read, choice.format, is_picture(job.output))
    said = colour
    if not media.colour.matrix and not media.format.rgb and not job.matrix:
        said = replace(colour, matrix="")  # what nobody said is not said now
    words, tracks, covers = _tracks(job, media, container)
    expected = replace(kept.predicted(media, container, choice, said), tracks=tracks)
    read_as = replace(expected, format=media.format)
    filters = encode_filters(read_as, colour, raw, choice.format)
    if not is_picture(job.output):
        filters += [tag_filter(said, choice.format), f"setsar={media.aspect}"]
    filters += [f"setfield={expected.fields}"] if expected.fields else []
    times = expected.times
    if times and media.start:
        times = tuple(time + round(media.start * media.ticks) for time in times)
    elif media.start and not container.even and not is_picture(job.output):
        filters += ["settb=1/90000", f"setpts=PTS+{float(media.start):.6f}/TB"]
        expected = replace(expected, ticks=90000)
    options = shlex.split(job.encoder_options or "")
    codec = ["-c:v:0", choice.encoder, *encoder_options(choice, expected, job.quality, options)]
    tags = tag_options(said) if "colours" in container.holds else []
    picture = (*codec, *tags)
    return Encoding(expected, container, choice, picture, filters, raw, words, covers, times)


def _tracks(
    job: Job, media: Media, container: Container
) -> tuple[list[str], tuple[Track, ...], list[Track]]:
    """Words that take the other streams along, the streams as they will be, covers to attach."""
    words: list[str] = []
    tracks: list[Track] = []
    covers: list[Track] = []
    counts = {"a": 0, "s": 0, "t": 0, "v": 1}

    def add(letter: str, track: Track, codec: str, name: str) -> None:
        at = counts[letter]
        counts[letter] += 1
        words.extend(["-map", f"1:{track.index}", f"-c:{letter}:{at}", codec])
        tracks.append(replace(track, codec=name))

    # Sound and subtitles would not fit other frames or another rate.
    whole = job.frames is None and job.fps is None
    for track in media.tracks if whole and media.source != "-" and not media.pattern else ():
        if track.kind == "audio" and container.sound:
            rate = container.sound_rate
            fits = not rate or track.detail.startswith(f"{rate} Hz")
            copied = track.codec in container.sound and fits
            codec = "copy" if copied else container.sound_codec
            if not fits:
                words += [f"-ar:a:{counts['a']}", str(rate)]
                track = replace(track, detail=re.sub(r"^\d+", str(rate), track.detail))
            if not copied and not codec.startswith("pcm"):
                words += [f"-b:a:{counts['a']}", "256k"]
            add("a", track, codec, track.codec if copied else _MADE_BY.get(codec, codec))
        elif track.kind == "subtitle" and track.codec in container.subtitles:
            add("s", track, "copy", track.codec)
        elif track.kind == "subtitle" and container.text_codec and track.codec in _TEXTS:
            codec = container.text_codec
            add("s", track, codec, _MADE_BY.get(codec, codec))
        elif track.kind == "attachment" and "attachments" in container.holds:
            add("t", track, "copy", track.codec)
        elif track.kind == "cover" and "covers" in container.holds and track.codec in _COVERS:
            if "attachments" in container.holds:
                covers.append(track)
                tracks.append(track)
            else:
                words += [f"-disposition:v:{counts['v']}", "attached_pic"]
                add("v", track, "copy", track.codec)
    return words, tuple(tracks), covers


def encode_command(
    encoding: Encoding, size: tuple[int, int], output: str, script: str, covers: list[str]
) -> list[str]:
    """For raw frames of `size` on standard input; `script` is the file that holds the filters."""
    media = encoding.media
    pixels = encoding.raw.pixels
    if pixels == "bgra" and not encoding.choice.format.alpha:
        pixels = "bgr0"
    source = ["-f", "rawvideo", "-pixel_format", pixels, "-video_size", f"{size[0]}x{size[1]}"]
    source += ["-framerate", str(media.rate), "-i", "pipe:0"]
    words = ["-filter_script:v:0", script, "-fps_mode:v:0", "passthrough", *encoding.colour_words]
    if (encoding.times or media.start) and media.ticks > 1:
        words += ["-enc_time_base:v:0", f"1:{media.ticks}"]
    return mux_command(encoding, source, words, output, covers)


def mux_command(
    encoding: Encoding, source: list[str], picture: list[str], output: str, covers: list[str]
) -> list[str]:
    """The picture of `source`, with what comes beside it; `picture`: how it gets into the file."""
    media, container = encoding.media, encoding.container
    words = ["ffmpeg", "-nostdin", "-v", "error", "-y", *source]
    beside = not media.pattern and media.source != "-"
    if beside:
        words += [*media.options, "-i", media.source, "-max_muxing_queue_size", "100000"]
    words += ["-map", "0:v:0", *encoding.tracks]
    words += ["-map_metadata", "1" if beside else "-1"]
    words += ["-map_chapters", "1" if beside and "chapters" in container.holds else "-1"]
    words += picture
    if (encoding.times or media.start) and container.muxer in ("mp4", "mov") and media.ticks > 1:
        words += ["-video_track_timescale", str(media.ticks)]
    for key, value in media.picture_tags.items():
        words += ["-metadata:s:v:0", f"{key}={value}"]
    if media.timecode:
        drops = ";" in media.timecode and media.rate not in _DROP_RATES
        words += ["-timecode", media.timecode.replace(";", ":") if drops else media.timecode]
    for at, (cover, path) in enumerate(zip(encoding.covers, covers), len(media.of("attachment"))):
        mimetype, name = _COVERS[cover.codec]
        words += ["-attach", path, f"-metadata:s:t:{at}", f"mimetype={mimetype}"]
        words += [f"-metadata:s:t:{at}", f"filename={name}"]
    words += list(container.options)
    if output == "-":
        return words + ["-f", container.muxer, "pipe:1"]
    if container.muxer == "image2":
        single = Pattern.parse(output) is None or "%08d" not in output
        words += ["-update", "1"] if single else ["-start_number", "1"]
    words += ["-still-picture", "1"] if container.muxer == "avif" else []
    return words + ["-f", container.muxer, ffmpeg_name(output)]


def times_expression(times: tuple[int, ...], first: int = 0) -> str:
    """A tree: ffmpeg cannot work out a flat sum of many terms."""
    if len(times) == 1:
        return str(times[0])
    middle = len(times) // 2
    left = times_expression(times[:middle], first)
    right = times_expression(times[middle:], first + middle)
    return f"if(lt(N,{first + middle}),{left},{right})"


def host_words(job: Job, plan: Plan, output: str) -> list[str]:
    """The host program's command line for `plan`; `output` is where its own pictures go."""
    media = plan.source.upright()
    source = media.pattern.for_host() if media.pattern else job.input
    words = ["render", "-" if plan.raw_in else _plain(source)]
    words += ["-" if plan.raw_out else _plain(output), *job.host]
    if plan.raw_in:
        words += ["--input-format", plan.raw_in.name, "--size", f"{media.width}x{media.height}"]
        words += ["--input-light", "linear" if media.linear else "display"]
        words += [] if media.format.alpha else ["--opaque"]
        words += ["--aspect", f"{float(media.aspect):.9g}"] if media.aspect != 1 else []
    elif job.first is not None:
        words += ["--first", str(job.first)]
    if plan.raw_out:
        words += ["--output-format", plan.raw_out.name]
    elif job.quality is not None:
        words += ["--quality", str(job.quality)]
    if plan.raw_in or job.fps:
        words += ["--fps", str(job.fps or media.rate)]
    words += ["--depth", job.depth] if job.depth else []
    words += ["--skip-bad-frames"] if job.skip_bad_frames else []
    if job.frames is not None:
        chosen: list[int] = []
        if plan.raw_in and (media.numbers or job.part):  # these count from 1 in a pipe
            chosen = chosen_frames(job.frames, media.begin, media.frames or 0)
        words += ["--frames", runs([n - plan.first + 1 for n in chosen]) or job.frames]
    if plan.expected and plan.raw_in:
        words += ["--expect", str(plan.source.frames or plan.expected)]
    return words


def _plain(path: str) -> str:
    """A name that is no option."""
    return "./" + path if path.startswith("-") and path != "-" else path


def runs(numbers: list[int]) -> str:
    """As the host program takes a list of frames."""
    parts: list[list[int]] = []  # first, last and step
    for number in numbers:
        if parts and parts[-1][2] in (0, number - parts[-1][1]):
            parts[-1][1:] = [number, number - parts[-1][1]]
        else:
            parts.append([number, number, 0])
    return ",".join(f"{a}-{b}" + (f"x{step}" if step > 1 else "") for a, b, step in parts)
