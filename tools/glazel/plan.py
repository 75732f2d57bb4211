"""From a job and what was probed to the commands that do it, and to what they cannot keep."""

from __future__ import annotations

import os
import re
import shlex
from collections import Counter
from dataclasses import dataclass, field, replace
from fractions import Fraction
from math import gcd
from typing import Any

from . import kept
from .colour import Raw, decode_filters, encode_filters, output_colour, raw_back, raw_for
from .colour import tag_filter, tag_options, understood
from .failure import Failure, WRONG_USAGE
from .formats import CONTAINERS, Choice, Container, choose, encoder_options
from .names import Pattern, extension, ffmpeg_name, is_picture
from .probe import Colour, Media, Track
from .y4m import Cut

_TEXTS = ("subrip", "ass", "ssa", "mov_text", "webvtt", "text")
_MADE_BY = {"libopus": "opus", "libmp3lame": "mp3", "srt": "subrip"}
_DROP_RATES = (Fraction(30000, 1001), Fraction(60000, 1001))
_COVERS = {"mjpeg": ("image/jpeg", "cover.jpg"), "png": ("image/png", "cover.png")}
_BEFORE = 1  # seconds that a seek aims before the frame: the key frame may be shown later
_BY_NUMBER = ("--key", "--project", "--dither")  # what they do depends on the frame's number
MILLISECONDS = ("mkv", "webm", "flv")  # files whose clock is as coarse as that
SEQUENCE = "%08d"  # the names of unfinished pictures


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


def wanted_frames(job: Job, first: int, count: int) -> list[int]:
    """The same, but Failure when there are none."""
    numbers = chosen_frames(job.frames, first, count)
    if not numbers:
        last = first + count - 1
        why = f"it has none of the chosen frames: its numbers are {first} to {last}"
        raise Failure(job.input, why, "choose from these with --frames")
    return numbers


def reach(job: Job, number: int) -> bool:
    """Whether that frame or one behind it is to be rendered."""
    if job.frames is None:
        return True
    return any(last is None or last >= number for _, last, _ in parse_frames(job.frames))


def runs(numbers: list[int]) -> str:
    """As --frames takes them."""
    parts: list[list[int]] = []  # first, last and step
    for number in numbers:
        if parts and parts[-1][2] in (0, number - parts[-1][1]):
            parts[-1][1:] = [number, number - parts[-1][1]]
        else:
            parts.append([number, number, 0])
    return ",".join(f"{a}-{b}" + (f"x{step}" if step > 1 else "") for a, b, step in parts)


@dataclass(frozen=True)
class Encoding:
    """How raw frames become the output."""

    media: Media  # as it will be, as far as is known beforehand
    container: Container
    choice: Choice
    colour_words: list[str]
    filters: list[str]
    raw: Raw
    tracks: list[str]  # maps and codecs of what comes beside the picture
    covers: list[Track]  # to be taken out and attached
    times: tuple[int, ...] = ()  # of each frame
    ticks: int = 0  # a second, of what the times of the frames are said in; 0: the rate says all

    def script(self) -> str:
        """The filters as text; long with variable rates."""
        steps = list(self.filters)
        if self.times:
            expression = times_expression(self.times)
            steps += [f"settb=1/{self.ticks}", f"setpts='{expression}'"]
        return ",".join(steps)


@dataclass(frozen=True)
class Plan:
    """What the pipeline runs. What is missing at an end is the host program's own work there."""

    source: Media
    raw_in: Raw | None = None
    raw_out: Raw | None = None
    decode: tuple[str, ...] = ()
    encoding: Encoding | None = None
    expected: int | None = None
    first: int = 1  # the number of the first frame that comes out of the decoder
    notes: tuple[str, ...] = ()
    losses: dict[str, str] = field(default_factory=dict)
    target: str | Pattern = ""  # the output's name or names
    head: bytes = b""  # what was read of standard input, or a list of pictures for the decoder
    cut: Cut | None = None  # where a file of Y4M breaks off


def container_of(output: str) -> Container:
    kind = "y4m" if output == "-" else extension(output)
    if kind not in CONTAINERS:
        why = f"files that end in .{kind} are not written" if kind else "its ending says no kind"
        known = "name one like .mp4, .mov, .mkv, .webm, .png, .tif or .exr"
        raise Failure(output, why, known, WRONG_USAGE)
    return CONTAINERS[kind]


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
    evened = encoded and bool(media.times) and container_of(job.output).even
    if evened:
        notes.append(f"times of single frames: they come at an even rate of {media.rate} now")
    raw = raw_for(source.format, job.depth, colour.matrix)
    plan = Plan(source, expected=expected, notes=tuple(notes))
    if decoded:
        filters = decode_filters(media, colour, raw)
        first, decode = _decoding(job, source, filters, media.rate if evened else None)
        plan = replace(plan, raw_in=raw, decode=decode, first=first)
    if encoded:
        encoding = _encoding(job, media, colour, raw)
        losses = kept.losses(kept.facts(source.upright()), kept.facts(encoding.media))
        if evened:
            losses.setdefault("times of single frames", "times of single frames: an even rate now")
            plan = replace(plan, expected=None)
        plan = replace(plan, raw_out=encoding.raw, encoding=encoding, losses=losses)
    elif not job.raw_out and is_picture(job.output):
        plan = replace(plan, losses=losses_of_pictures(job, source.upright(), media, raw.bits))
    return plan


def losses_of_pictures(job: Job, source: Media, media: Media, bits: int) -> dict[str, str]:
    """Of raw frames of `bits` that the host program turns into pictures; `media` is what is left of
    `source` by then."""
    asked = dict(zip(job.host, job.host[1:])).get("--bits")
    kind = extension(job.output)
    if bits == 8 or job.depth == "8" or kind not in ("png", "tif", "tiff"):
        bits = 8
    elif kind == "png":
        bits = 16
    held = kept.pictured(media, int(asked or bits))
    return kept.losses(kept.facts(source), kept.facts(held))


def _choose_frames(job: Job, media: Media) -> tuple[int | None, Media]:
    """How many frames to expect, and the media with those frames alone."""
    if media.frames is None:
        return None, media
    numbers = wanted_frames(job, media.begin, media.frames)
    if job.frames is not None and media.times:
        times = [media.times[number - media.begin] for number in numbers]
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


def _decoding(
    job: Job, source: Media, filters: list[str], rate: Fraction | None
) -> tuple[int, tuple[str, ...]]:
    """The number of the first frame in the pipe, and the command. `rate`: an even one is wanted.
    Frames of a piece are told by their own times: a seek that lands too late leaves too few."""
    first, part, seek = source.begin, job.part, list[str]()
    if part and not source.numbers:
        chosen = chosen_frames(job.frames, 1, source.frames or 0)
        first, last = chosen[0], chosen[-1]
        if source.stamps:
            begin, end = source.stamps[first - 1], source.stamps[last - 1]
            filters = [f"trim=start_pts={begin}:end_pts={end + 1}", *filters]
            seek = ["-copyts"]
            place = begin * source.clock - _BEFORE
            if part.seek and place > source.stamps[0] * source.clock:
                seek += ["-seek_timestamp", "1", "-noaccurate_seek", "-ss", f"{float(place):.6f}"]
        else:
            filters = [f"trim=start_frame={first - 1}:end_frame={last}", *filters]
    if part and first > part.origin and any(word in _BY_NUMBER for word in job.host):
        # The host program counts: the first frame stands in for those before it.
        filters = [*filters, f"loop=loop={first - part.origin}:size=1:start=0"]
        first = part.origin
    if rate:
        timing = ["-fps_mode", "cfr", "-r", str(rate)]
    else:  # raw frames need no times, but rising ones
        filters = [*filters, "settb=1/1000", "setpts=N"]
        timing = ["-fps_mode", "passthrough", "-enc_time_base", "1:1000"]
    words = ["ffmpeg", "-nostdin", "-v", "error", "-xerror", *seek, *source.options]
    words += [*source.decoder, "-i", source.source, "-map", f"0:{source.index}", *timing]
    return first, (*words, "-vf", ",".join(filters), "-f", "rawvideo", "pipe:1")


def _encoding(job: Job, media: Media, read: Colour, raw: Raw) -> Encoding:
    container = container_of(job.output)
    choice = choose(media, job.output, container, job.codec)
    colour = said = output_colour(media, read, choice.format, is_picture(job.output))
    raw = raw_back(raw, choice.format, colour.matrix)
    if not media.colour.matrix and not media.format.rgb and not job.matrix:
        said = replace(colour, matrix="")  # what nobody said is not said now
    words, tracks, covers = _tracks(job, media, container)
    expected = replace(kept.predicted(media, container, choice, said), tracks=tracks)
    read_as = replace(expected, format=media.format)
    filters = encode_filters(read_as, colour, raw, choice.format)
    if not is_picture(job.output):
        filters += [tag_filter(said, choice.format), f"setsar={media.aspect}"]
    filters += [f"setfield={expected.fields}"] if expected.fields else []
    times, ticks = expected.times, expected.ticks if expected.times else 0
    if times:
        times = tuple(time + round(media.start * media.ticks) for time in times)
    elif media.start and not container.even and not is_picture(job.output):
        ticks = 90000
        filters += [f"settb=1/{ticks}", f"setpts=PTS+{float(media.start):.6f}/TB"]
    codec = ["-c:v:0", choice.encoder, *encoder_options(choice, expected, job.quality)]
    codec += shlex.split(job.encoder_options or "")
    codec += tag_options(said) if "colours" in container.holds else []
    return Encoding(expected, container, choice, codec, filters, raw, words, covers, times, ticks)


def _tracks(
    job: Job, media: Media, container: Container
) -> tuple[list[str], tuple[Track, ...], list[Track]]:
    """Words that take the other streams along, the streams as they will be, covers to attach."""
    words, tracks, covers = list[str](), list[Track](), list[Track]()
    counts = Counter("v")
    # Sound and subtitles would not fit other frames or another rate.
    whole = job.frames is None and job.fps is None and _has_others(media)
    for track in media.tracks if whole else ():
        letter, codec = track.kind[0], "copy"
        at = counts[letter]
        if track.kind == "audio" and container.sound:
            rate = container.sound_rate
            if rate and not track.detail.startswith(f"{rate} Hz"):
                words += [f"-ar:a:{at}", rate]
                track = replace(track, detail=re.sub(r"^\d+", rate, track.detail))
                codec = container.sound_codec
            elif track.codec not in container.sound:
                codec = container.sound_codec
            if codec != "copy" and not codec.startswith("pcm"):
                words += [f"-b:a:{at}", "256k"]
        elif track.kind == "subtitle" and track.codec in container.subtitles:
            pass
        elif track.kind == "subtitle" and container.text_codec and track.codec in _TEXTS:
            codec = container.text_codec
        elif track.kind == "attachment" and "attachments" in container.holds:
            letter, at = "t", counts["t"]
        elif track.kind == "cover" and "covers" in container.holds and track.codec in _COVERS:
            if "attachments" in container.holds:
                covers.append(track)
                tracks.append(track)
                continue
            letter, at = "v", counts["v"]
            words += [f"-disposition:v:{at}", "attached_pic"]
        else:
            continue
        counts[letter] += 1
        words += ["-map", f"1:{track.index}", f"-c:{letter}:{at}", codec]
        name = track.codec if codec == "copy" else _MADE_BY.get(codec, codec)
        tracks.append(replace(track, codec=name))
    return words, tuple(tracks), covers


def _has_others(media: Media) -> bool:
    """The file itself can be read again for what comes beside the picture."""
    return media.source != "-" and not media.pattern


def encode_command(encoding: Encoding, size: tuple[int, int], output: str, work: str) -> list[str]:
    """For raw frames of `size` on standard input; the folder `work` holds filters and covers."""
    pixels = encoding.raw.pixels
    if pixels == "bgra" and not encoding.choice.format.alpha:
        pixels = "bgr0"
    source = ["-f", "rawvideo", "-pixel_format", pixels, "-video_size", f"{size[0]}x{size[1]}"]
    source += ["-framerate", str(encoding.media.rate), "-i", "pipe:0"]
    words = ["-filter_script:v:0", f"{work}/filters", "-fps_mode:v:0", "passthrough"]
    words += encoding.colour_words
    words += ["-enc_time_base:v:0", f"1:{encoding.ticks}"] if encoding.ticks else []
    return mux_command(encoding, source, words, output, work)


def mux_command(
    encoding: Encoding, source: list[str], picture: list[str], output: str, work: str
) -> list[str]:
    """The picture of `source`, with what comes beside it; `picture`: how it gets into the file."""
    media, container = encoding.media, encoding.container
    words = ["ffmpeg", "-nostdin", "-v", "error", "-y", *source]
    metadata = chapters = "-1"
    if _has_others(media):
        words += [*media.options, "-i", media.source, "-max_muxing_queue_size", "100000"]
        metadata, chapters = "1", "1" if "chapters" in container.holds else "-1"
    words += ["-map", "0:v:0", *encoding.tracks]
    words += ["-map_metadata", metadata, "-map_chapters", chapters, *picture]
    if encoding.ticks and container.muxer in ("mp4", "mov"):
        words += ["-video_track_timescale", str(encoding.ticks)]
    for key, value in media.picture_tags.items():
        words += ["-metadata:s:v:0", f"{key}={value}"]
    if media.timecode:
        drops = ";" in media.timecode and media.rate not in _DROP_RATES
        words += ["-timecode", media.timecode.replace(";", ":") if drops else media.timecode]
    for at, cover in enumerate(encoding.covers, len(media.of("attachment"))):
        mimetype, name = _COVERS[cover.codec]
        words += ["-attach", f"{work}/cover{cover.index}"]
        words += [f"-metadata:s:t:{at}", f"mimetype={mimetype}"]
        words += [f"-metadata:s:t:{at}", f"filename={name}"]
    words += container.options
    if output == "-":
        return [*words, "-f", container.muxer, "pipe:1"]
    if container.muxer == "image2":
        is_many = os.path.basename(output).startswith(SEQUENCE)
        words += ["-start_number", "1"] if is_many else ["-update", "1"]
    words += ["-still-picture", "1"] if container.muxer == "avif" else []
    return [*words, "-f", container.muxer, ffmpeg_name(output)]


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
    names = [media.pattern.for_host() if media.pattern else job.input, output]
    names = ["-" if plan.raw_in else names[0], "-" if plan.raw_out else names[1]]
    # A name that begins with a dash is no option.
    names = [f"./{name}" if name[0] == "-" and name != "-" else name for name in names]
    words = ["render", *names, *job.host]
    if plan.raw_in:
        words += ["--input-format", plan.raw_in.name, "--size", f"{media.width}x{media.height}"]
        words += ["--input-light", "linear" if media.format.is_float else "display"]
        words += [] if media.format.alpha else ["--opaque"]
        words += ["--aspect", f"{float(media.aspect):.9g}"] if media.aspect != 1 else []
    elif job.first is not None:
        words += ["--first", str(job.first)]
    if plan.raw_out:
        words += ["--output-format", plan.raw_out.name]
    elif job.quality is not None:
        words += ["--quality", str(job.quality)]
    words += next((raw.words for raw in (plan.raw_in, plan.raw_out) if raw and raw.words), ())
    if plan.raw_in or job.fps:
        words += ["--fps", str(job.fps or media.rate)]
    words += ["--depth", job.depth] if job.depth else []
    words += ["--skip-bad-frames"] if job.skip_bad_frames else []
    words += ["--strict"] if job.strict and not plan.raw_out else []
    words += ["--overwrite"] if job.overwrite else []  # what --save-project names too
    if job.frames is not None:
        chosen: list[int] = []
        if plan.raw_in and (media.numbers or job.part):  # these count from 1 in a pipe
            chosen = chosen_frames(job.frames, media.begin, media.frames or 0)
        words += ["--frames", runs([n - plan.first + 1 for n in chosen]) or job.frames]
    if plan.expected and plan.raw_in:
        words += ["--expect", str(plan.source.frames or plan.expected)]
    return words
