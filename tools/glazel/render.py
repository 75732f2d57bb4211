"""The command "render": checks, probes, plans, runs, and takes the result only when it is whole."""

from __future__ import annotations

import os
import re
import tempfile
import time
from contextlib import ExitStack
from dataclasses import replace
from pathlib import Path

from . import kept, prepare
from .failure import Failure
from .formats import RAW_FILES
from .names import HOST_PICTURES, LISTED, Pattern, check_apart, check_target, extension
from .names import input_pattern, is_picture, missing
from .output import Unfinished
from .pipeline import Run, undecodable
from .plan import SEQUENCE, Encoding, Job, Plan, chosen_frames, container_of, encode_command
from .plan import host_words, losses_of_pictures, make_plan, reach, wanted_frames
from .probe import Media, complaints, pixel_formats, probe, tool, with_times
from .report import Report
from .y4m import LONGEST_HEADER, Follower, cut_of

_Y4M = "yuv4mpegpipe"  # as ffmpeg calls it


def render(job: Job, report: Report) -> None:
    plan = planned(job)
    tell(job, report, plan.notes, plan.losses)
    if not job.part:  # whoever cut the job into pieces has seen to it
        prepare.programs()
    started = time.monotonic()
    # The host program alone takes care of its output itself; but of a sequence it gives each picture
    # its name at once, which a later loss cannot take back.
    alone = not plan.raw_in and not plan.raw_out
    alone = alone and not (isinstance(plan.target, Pattern) and job.strict)
    target, place, media, encoding = plan.target, job.output, plan.source.upright(), plan.encoding
    unfinished: Unfinished | None = None
    with ExitStack() as held:
        work = held.enter_context(tempfile.TemporaryDirectory(prefix="glazel-"))
        if alone and isinstance(target, Pattern):
            place = target.for_host()
        elif not alone and job.output != "-":
            first = target.path(1) if isinstance(target, Pattern) else target
            unfinished = held.enter_context(Unfinished(first, job.overwrite))
            place = f"{unfinished.path}/output.{extension(job.output)}"
            if isinstance(target, Pattern):
                inside = unfinished.path.replace("%", "%%") if encoding else unfinished.path
                place = f"{inside}/{SEQUENCE}.{extension(job.output)}"

        def encoder(size: tuple[int, int]) -> list[str]:
            assert encoding
            return encode_command(encoding, size, place, work)

        def told(text: str) -> str:
            text = text.replace(place, job.output)
            text = text.replace("standard input", job.input) if job.input != "-" else text
            text = text.replace("standard output", job.output) if job.output != "-" else text
            return with_final_names(text, os.path.dirname(place), target, plan.first)

        run = Run(job, report, host_words(job, plan, place), told=told, head=plan.head)
        run.cut = plan.cut
        run.follower = Follower(plan.source) if plan.head and job.input == "-" else None
        run.decoder = [w for w in plan.decode if w != "-xerror" or not job.skip_bad_frames]
        run.size = (media.width, media.height) if plan.raw_in else None
        if encoding:
            write_beside(encoding, work)
            run.encoder = encoder
        frames = run.run()
        if unfinished:
            unfinished.commit(check(job, report, plan, unfinished, frames))
    output = "standard output" if job.output == "-" else job.output
    report.done(output, frames, time.monotonic() - started)
    if run.left_out:
        raise run.left_out


def planned(job: Job) -> Plan:
    """Throws Failure for whatever can be known to be wrong before."""
    piped_in, piped_out = job.input == "-", job.output == "-"
    pattern = None if piped_in else input_pattern(job.input)
    numbers = pattern.numbers() if pattern else []
    if not piped_in and not numbers and not os.path.exists(job.input):
        raise missing(job.input)
    if os.path.isdir(job.input):
        raise Failure(job.input, "it is a folder", "name a file, or pictures like shot_%04d.png")
    decoded = not job.raw_in and (piped_in or not _host_reads(job.input))
    encoded = not job.raw_out and (piped_out or not _host_reads(job.output))
    # Only pictures are numbered; a video's name may hold what looks like a number.
    is_many = is_picture(job.output) and (piped_in or pattern or not is_picture(job.input))
    target = (Pattern.parse(job.output) if is_many else None) or job.output
    if not piped_out:
        made = [job.output]
        if isinstance(target, Pattern):
            made = [target.path(number) for number in numbers or [1]]
        check_target(made[0], job.overwrite or isinstance(target, Pattern))
        read = [] if piped_in else [job.input]
        others = {"the input": [pattern.path(n) for n in numbers] if pattern else read}
        for option, path in zip(job.host, job.host[1:]):
            if option in ("--project", "--save-project"):
                others[option] = [path]
        check_apart(made, others)
    if encoded:
        container_of(job.output)
    if not decoded and not encoded:
        losses: dict[str, str] = {}
        if job.raw_in and is_picture(job.output):
            source = _of_host(job, None, [])
            losses = losses_of_pictures(job, source, source, source.format.depth)
        if job.strict and isinstance(target, Pattern) and numbers:
            first = max(numbers[0], job.first or 0)
            for number in chosen_frames(job.frames, first, numbers[-1] - first + 1):
                check_target(target.path(number), job.overwrite)
        return Plan(Media(pattern=pattern), target=target, losses=losses)
    head, listed = _header() if piped_in and decoded else b"", b""
    if pattern:
        there, numbers = numbers, wanted(job, pattern, numbers)
        chosen = chosen_frames(job.frames, numbers[0], len(numbers))
        if decoded and not chosen == numbers == [n for n in there if n >= numbers[0]]:
            listed = pattern.listed(chosen)  # ffmpeg itself would come upon others, or upon a gap
    if not decoded:
        source = _of_host(job, pattern, numbers)
    elif job.part and not pattern:
        source = replace(probe(job.input), **job.part.counted)
    else:
        source = with_times(probe(job.input, pattern, numbers, head))
    if listed:
        source = replace(source, options=LISTED, source="-")
    cut = cut_of(job.input, source) if source.container == _Y4M and not head else None
    if cut and reach(job, cut.frame) and not job.skip_bad_frames:
        raise undecodable(job, str(cut))
    plan = replace(make_plan(job, source, decoded, encoded), target=target, cut=cut)
    plan = replace(plan, head=head or listed)
    _check_picture(job, plan, plan.expected or 1)
    for name in _final_names(job, plan, plan.expected or 0):
        check_target(name, job.overwrite)
    return plan


def _final_names(job: Job, plan: Plan, frames: int) -> list[str]:
    """Of a sequence, as far as it can be known beforehand."""
    if not isinstance(plan.target, Pattern) or not frames:
        return []
    numbers = chosen_frames(job.frames, plan.source.begin, max(frames, plan.source.frames or 0))
    return [plan.target.path(number) for number in numbers]


def _check_picture(job: Job, plan: Plan, frames: int) -> None:
    if plan.encoding and frames > 1 and is_picture(job.output) and plan.target == job.output:
        remedy = "name a sequence like out_%04d.exr, or choose one with --frames"
        raise Failure(job.output, f"{frames} frames do not fit into one picture", remedy)


def _host_reads(path: str) -> bool:
    return extension(path) in HOST_PICTURES | RAW_FILES


def _header() -> bytes:
    """The first line of standard input; byte by byte, for the rest is the decoder's."""
    head = b""
    while not head.endswith(b"\n") and len(head) < LONGEST_HEADER and (byte := os.read(0, 1)):
        head += byte
    if not head.startswith(b"YUV4MPEG2 "):
        remedy = "give --size WxH for raw frames, or pipe Y4M: ffmpeg ... -f yuv4mpegpipe -"
        raise Failure("standard input", "it is no Y4M" if head else "it is empty", remedy)
    return head


def wanted(job: Job, pattern: Pattern, numbers: list[int]) -> list[int]:
    """The numbers from the first to the last picture that is asked for, each of which is there."""
    numbers = [n for n in numbers if n >= (job.first or 0)]
    if not numbers:
        raise missing(pattern.path(job.first or 1))
    chosen = wanted_frames(job, numbers[0], numbers[-1] - numbers[0] + 1)
    if gaps := set(chosen).difference(numbers):
        why = "this picture of the sequence is missing"
        raise Failure(pattern.path(min(gaps)), why, "make it again, or leave it out with --frames")
    return list(range(chosen[0], chosen[-1] + 1))


def _of_host(job: Job, pattern: Pattern | None, numbers: list[int]) -> Media:
    """Of pictures or raw frames that the host program reads itself."""
    path = pattern.path(numbers[0]) if pattern else job.input
    options = dict(zip(job.host, job.host[1:]))
    is_raw = extension(path) in RAW_FILES or path == "-"
    kinds = {"bgra16": "rgba64le", "gbraf32": "gbrapf32le"} | {
        "gbr8": "gbrp",
        "gbrf32": "gbrpf32le",
    }
    pixels = kinds.get(options.get("--input-format", ""), "bgra") if is_raw else "gbrapf32le"
    media = Media(path, format=pixel_formats()[pixels])
    size = re.fullmatch(r"(\d+)x(\d+)", options.get("--size", ""))
    if is_raw and size:
        media = replace(media, width=int(size[1]), height=int(size[2]))
    elif not is_raw:
        try:
            media = replace(probe(path), rate=media.rate, turned="", source="-")
        except Failure:
            pass  # the host program reads floats that ffmpeg does not
    if pattern:
        media = replace(media, pattern=pattern, numbers=tuple(numbers), frames=len(numbers))
    return media


def tell(job: Job, report: Report, notes: tuple[str, ...], losses: dict[str, str]) -> None:
    for note in notes:
        report.say(f"{job.input}: {note}")
    for line in losses.values():
        report.say(f"{job.output}: {line}")
    if losses and job.strict:
        first, *more = losses.values()
        rest = f" (and {len(more)} more)" if more else ""
        remedy = "choose another kind of file, or leave --strict out"
        raise Failure(job.output, f"not everything can be kept: {first}{rest}", remedy)


def with_final_names(text: str, folder: str, target: str | Pattern, first: int) -> str:
    """What is said of the pictures in `folder`, which are counted from 1 in place of `first`."""
    if not isinstance(target, Pattern):
        return text
    final = target  # which the lambda knows to be one
    form = re.escape(folder + "/") + r"(\d{8})\.\w+"
    return re.sub(form, lambda found: final.path(int(found[1]) + first - 1), text)


def write_beside(encoding: Encoding, work: str) -> None:
    """What the encoder reads from the folder `work`: its filters, and covers as files."""
    Path(work, "filters").write_text(encoding.script(), encoding="utf-8")
    for cover in encoding.covers:
        words = ("-v", "error", "-i", encoding.media.source, "-map", f"0:{cover.index}")
        tool("ffmpeg", *words, *"-c copy -f image2 -update 1".split(), f"{work}/cover{cover.index}")


def check(job: Job, report: Report, plan: Plan, unfinished: Unfinished, frames: int) -> list[str]:
    """The output's names. Throws Failure when it is not what was to be made."""
    target, files = plan.target, unfinished.files()
    if not frames:
        raise Failure(job.input, "no frame came out of it", "check the file")
    _check_count(job, plan, frames)
    _check_picture(job, plan, frames)
    if isinstance(target, Pattern) and not plan.encoding:
        # The host program has left the numbers of other frames free.
        return [target.path(int(Path(file).stem) + plan.first - 1) for file in files]
    if isinstance(target, Pattern):
        _check_written(job, len(files), frames)
        return _final_names(job, plan, frames)[: len(files)]
    if not is_picture(job.output):
        made = with_times(probe(f"{unfinished.path}/output.{extension(job.output)}"))
        _check_written(job, made.frames or 0, frames)
        found = kept.losses(kept.facts(plan.source.upright()), kept.facts(made))
        unsaid = {name: line for name, line in found.items() if name not in plan.losses}
        tell(job, report, (), unsaid)
    return [target]


def _check_written(job: Job, found: int, expected: int) -> None:
    if found != expected:
        why = f"{found} frames were written of {expected}"
        raise Failure(job.output, why, "see that the disk has room, and run it again")


def _check_count(job: Job, plan: Plan, frames: int) -> None:
    """What the file says may be wrong; what can be decoded of it decides then."""
    expected = plan.expected
    if expected in (None, frames) or job.skip_bad_frames:
        return
    if plan.raw_in and job.frames is None and plan.source.source != "-":
        expected = _decodable(plan.source)
    if frames != expected:
        why = f"{frames} frames came out of {expected}"
        remedy = "run it again; glazel render --skip-bad-frames takes what comes"
        raise Failure(job.input, why, remedy)


def _decodable(media: Media) -> int:
    words = [*media.options, *media.decoder, "-i", media.source, "-map", f"0:{media.index}"]
    words += "-fps_mode passthrough -progress pipe:1 -f null -".split()
    done = tool("ffmpeg", "-v", "error", *words)
    counts = re.findall(rb"^frame=\s*(\d+)", done.stdout, re.MULTILINE)
    return int(counts[-1]) if counts and not complaints(done.stderr) else -1
