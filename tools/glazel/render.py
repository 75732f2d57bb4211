"""The command "render": checks, probes, plans, runs, and takes the result only when it is whole."""

from __future__ import annotations

import os
import re
import subprocess
import tempfile
import time
from contextlib import ExitStack
from dataclasses import replace
from fractions import Fraction
from pathlib import Path

from . import kept, prepare
from .failure import Failure
from .formats import RAW_FILES
from .names import HOST_PICTURES, Pattern, check_apart, check_target, extension, input_pattern
from .names import is_picture, missing
from .output import Unfinished
from .pipeline import Run
from .plan import Job, Plan, container_of, encode_command, host_words, make_plan, chosen_frames
from .probe import Colour, Media, PixelFormat, complaints, pixel_formats, probe, with_times
from .report import Report

_BYTES = PixelFormat("bgra", True, True, 8, 0, 0, False)
_NO_MEDIA = Media("", "", 0, "", "", 0, 0, _BYTES, Colour(), Fraction(25), Fraction(1))
_LONGEST_HEADER = 1024  # of a Y4M stream


def render(job: Job, report: Report) -> None:
    started = time.monotonic()
    plan = planned(job)
    tell(job, report, plan)
    if not job.part:  # whoever cut the job into pieces has seen to it
        prepare.programs()
    if plan.raw_in or plan.raw_out:
        _piped(job, report, plan, started)
    else:
        _direct(job, report, plan, started)


def planned(job: Job) -> Plan:
    """Throws Failure for whatever can be known to be wrong before."""
    pattern = input_pattern(job.input) if job.input != "-" else None
    numbers = pattern.numbers() if pattern else []
    if job.input != "-" and not numbers and not os.path.exists(job.input):
        raise missing(job.input)
    if os.path.isdir(job.input):
        raise Failure(job.input, "it is a folder", "name a file, or pictures like shot_%04d.png")
    decoded = not job.raw_in and (job.input == "-" or not _host_reads(job.input))
    encoded = not job.raw_out and (job.output == "-" or not _host_reads(job.output))
    target = _target(job, pattern)
    if job.output != "-":
        if isinstance(target, Pattern):
            made = [target.path(number) for number in numbers or [1]]
        else:
            made = [target]
        check_target(made[0], job.overwrite or isinstance(target, Pattern))
        read = [pattern.path(number) for number in numbers] if pattern else [job.input]
        others = {"the input": read if job.input != "-" else []}
        for option, path in zip(job.host, job.host[1:]):
            if option in ("--project", "--save-project"):
                others[option] = [path]
        check_apart(made, others)
    if encoded:
        container_of(job.output)
    if not decoded and not encoded:
        return Plan(None, None, replace(_NO_MEDIA, pattern=pattern), target=target)
    head = _header() if job.input == "-" and decoded else b""
    if pattern:
        numbers = wanted(job, pattern, numbers)
    if decoded:
        source = probe(job.input, pattern, numbers, head)
        part = None if pattern else job.part
        source = replace(source, **part.counted) if part else with_times(source)
    else:
        source = _of_host(job, pattern, numbers)
    plan = replace(make_plan(job, source, decoded, encoded), target=target, head=head)
    if encoded:
        _check_picture(job, plan, plan.expected or 1)
    return plan


def _check_picture(job: Job, plan: Plan, frames: int) -> None:
    if frames > 1 and is_picture(job.output) and not isinstance(plan.target, Pattern):
        remedy = "name a sequence like out_%04d.exr, or choose one with --frames"
        raise Failure(job.output, f"{frames} frames do not fit into one picture", remedy)


def _host_reads(path: str) -> bool:
    return extension(path) in HOST_PICTURES | RAW_FILES


def _target(job: Job, pattern: Pattern | None) -> str | Pattern:
    """Only pictures are numbered; a video's name may hold what looks like a number."""
    found = Pattern.parse(job.output) if is_picture(job.output) else None
    is_many = pattern is not None or not is_picture(job.input)
    return found if found and (is_many or job.input == "-") else job.output


def _header() -> bytes:
    """The first line of standard input; byte by byte, for the rest is the decoder's."""
    head = b""
    while not head.endswith(b"\n") and len(head) < _LONGEST_HEADER:
        byte = os.read(0, 1)
        if not byte:
            break
        head += byte
    if not head.startswith(b"YUV4MPEG2 "):
        remedy = "give --size WxH for raw frames, or pipe Y4M: ffmpeg ... -f yuv4mpegpipe -"
        raise Failure("standard input", "it is empty" if not head else "it is no Y4M", remedy)
    return head


def wanted(job: Job, pattern: Pattern, numbers: list[int]) -> list[int]:
    """The numbers from the first to the last picture that is asked for, each of which is there."""
    if job.first is not None:
        numbers = [n for n in numbers if n >= job.first]
    if not numbers:
        raise missing(pattern.path(job.first or 1))
    chosen = chosen_frames(job.frames, numbers[0], numbers[-1] - numbers[0] + 1)
    if not chosen:
        why = f"it has none of the chosen frames: its numbers are {numbers[0]} to {numbers[-1]}"
        raise Failure(job.input, why, "choose from these with --frames")
    gaps = set(chosen).difference(numbers)
    if gaps:
        why = "this picture of the sequence is missing"
        raise Failure(pattern.path(min(gaps)), why, "make it again, or leave it out with --frames")
    return list(range(chosen[0], chosen[-1] + 1))


def _of_host(job: Job, pattern: Pattern | None, numbers: list[int]) -> Media:
    """Of pictures or raw frames that the host program reads itself."""
    path = pattern.path(numbers[0]) if pattern else job.input
    if extension(path) in RAW_FILES or path == "-":
        options = dict(zip(job.host, job.host[1:]))
        kind = options.get("--input-format", "bgra8")
        pixels = {"bgra16": "rgba64le", "gbraf32": "gbrapf32le"}.get(kind, "bgra")
        media = _guess(path, pixels)
        width, _, height = options.get("--size", "").partition("x")
        if width.isdigit() and height.isdigit():
            media = replace(media, width=int(width), height=int(height))
    else:
        try:
            media = replace(probe(path), rate=Fraction(25))
        except Failure:  # the host program reads floats that ffmpeg does not
            media = _guess(path, "gbrapf32le")
    media = replace(media, rotation=0, source="-")
    if pattern:
        media = replace(media, pattern=pattern, numbers=tuple(numbers), frames=len(numbers))
    return media


def _guess(path: str, pixels: str) -> Media:
    number = pixel_formats()[pixels]
    return replace(_NO_MEDIA, path=path, format=number, linear=number.is_float)


def tell(job: Job, report: Report, plan: Plan) -> None:
    for note in plan.notes:
        report.note(f"{job.input}: {note}")
    for line in plan.losses.values():
        report.note(f"{job.output}: {line}")
    if plan.losses and job.strict:
        first, *more = plan.losses.values()
        rest = f" (and {len(more)} more)" if more else ""
        remedy = "choose another kind of file, or leave --strict out"
        raise Failure(job.output, f"not everything can be kept: {first}{rest}", remedy)


def _direct(job: Job, report: Report, plan: Plan, started: float) -> None:
    """The host program alone does it."""
    place = plan.target.for_host() if isinstance(plan.target, Pattern) else plan.target
    words = host_words(job, plan, place) + (["--overwrite"] if job.overwrite else [])

    def told(text: str) -> str:
        return text.replace("standard input", job.input) if job.input != "-" else text

    frames = Run(job, report, words, told=told).run()
    output = "standard output" if job.output == "-" else job.output
    report.done(output, frames, time.monotonic() - started)


def _piped(job: Job, report: Report, plan: Plan, started: float) -> None:
    in_folder = isinstance(plan.target, Pattern) or plan.raw_out is None
    with ExitStack() as held:
        unfinished = None
        if job.output != "-":
            unfinished = held.enter_context(Unfinished(plan.target, job.overwrite, in_folder))
        work = held.enter_context(tempfile.TemporaryDirectory(prefix="glazel-"))
        run = _run(job, report, plan, unfinished, Path(work))
        frames = run.run()
        if unfinished:
            unfinished.commit(check(job, report, plan, unfinished, frames))
    report.done(job.output, frames, time.monotonic() - started)
    for child in run.children if job.skip_bad_frames else ():
        if child.stage == "decoder" and child.complaints():
            why = f"not all of it could be decoded: {child.complaints()[0]}"
            raise Failure(job.input, why, "the rest was rendered; check the file")


def _run(job: Job, report: Report, plan: Plan, unfinished: Unfinished | None, work: Path) -> Run:
    place = unfinished.path if unfinished else "-"
    if unfinished and os.path.isdir(place):
        name = "%08d" if isinstance(plan.target, Pattern) else "picture"
        inside = place if plan.raw_out is None else place.replace("%", "%%")
        place = os.path.join(inside, f"{name}.{extension(job.output)}")
    decoder = [word for word in plan.decode if word != "-xerror" or not job.skip_bad_frames]
    encoding = plan.encoding
    covers: list[str] = []
    if encoding:
        (work / "filters").write_text(encoding.script(), encoding="utf-8")
        covers = [extracted(plan.source, cover.index, work) for cover in encoding.covers]
    media = plan.source.upright()

    def encoder(size: tuple[int, int]) -> list[str]:
        assert encoding
        return encode_command(encoding, size, place, str(work / "filters"), covers)

    def told(text: str) -> str:
        text = text.replace(place, job.output) if unfinished else text
        text = text.replace("standard input", job.input) if job.input != "-" else text
        text = text.replace("standard output", job.output) if job.output != "-" else text
        return with_final_names(text, os.path.dirname(place), plan.target, plan.first)

    return Run(
        job,
        report,
        host_words(job, plan, place),
        decoder or None,
        encoder if encoding else None,
        (media.width, media.height) if plan.raw_in else None,
        plan.head,
        told,
    )


def with_final_names(text: str, folder: str, target: str | Pattern, first: int) -> str:
    """What is said of the pictures in `folder`, which are counted from 1 in place of `first`."""
    if not isinstance(target, Pattern):
        return text
    final = target  # which the lambda knows to be one
    form = re.escape(folder + "/") + r"(\d{8})\.\w+"
    return re.sub(form, lambda found: final.path(int(found[1]) + first - 1), text)


def extracted(media: Media, index: int, work: Path) -> str:
    """A cover as a file."""
    path = str(work / f"cover{index}")
    command = ["ffmpeg", "-nostdin", "-v", "error", "-i", media.source, "-map", f"0:{index}"]
    subprocess.run([*command, "-c", "copy", "-f", "image2", "-update", "1", path], check=False)
    return path


def check(job: Job, report: Report, plan: Plan, unfinished: Unfinished, frames: int) -> list[str]:
    """The output's names. Throws Failure when it is not what was to be made."""
    target = plan.target
    if not frames:
        raise Failure(job.input, "no frame came out of it", "check the file")
    _check_count(job, plan, frames)
    if os.path.isdir(unfinished.path):
        files = unfinished.files()
        if isinstance(target, str):
            return [target]
        if plan.encoding and len(files) != frames:
            raise _cut(job, len(files), frames)
        if plan.raw_out is None:  # the host program has left the numbers of other frames free
            return [target.path(int(Path(file).stem) + plan.first - 1) for file in files]
        most = max(frames, plan.source.frames or 0)
        numbers = chosen_frames(job.frames, plan.source.begin, most)
        return [target.path(number) for number in numbers[: len(files)]]
    assert plan.encoding and isinstance(target, str)
    if is_picture(job.output):
        _check_picture(job, plan, frames)
        return [target]
    made = with_times(probe(unfinished.path))
    if made.frames != frames:
        raise _cut(job, made.frames or 0, frames)
    before = kept.facts(plan.source.upright())
    found = kept.losses(before, kept.facts(made))
    found = {name: line for name, line in found.items() if name not in plan.losses}
    tell(job, report, Plan(None, None, plan.source, losses=found))
    return [target]


def _cut(job: Job, found: int, expected: int) -> Failure:
    why = f"{found} frames were written of {expected}"
    return Failure(job.output, why, "see that the disk has room, and run it again")


def _check_count(job: Job, plan: Plan, frames: int) -> None:
    """What the file says may be wrong; what can be decoded of it decides then."""
    if plan.expected is None or frames == plan.expected or job.skip_bad_frames:
        return
    expected = plan.expected
    if plan.raw_in and job.frames is None and plan.source.source != "-":
        expected = _decodable(plan.source)
    if frames != expected:
        why = f"{frames} frames came out of {expected}"
        raise Failure(
            job.input, why, "run it again; glazel render --skip-bad-frames takes what comes"
        )


def _decodable(media: Media) -> int:
    command = ["ffmpeg", "-nostdin", "-v", "error", *media.options, *media.decoder]
    command += [
        "-i",
        media.source,
        "-map",
        f"0:{media.index}",
        "-fps_mode",
        "passthrough",
        "-progress",
        "pipe:1",
    ]
    done = subprocess.run([*command, "-f", "null", "-"], capture_output=True, check=False)
    counts = re.findall(rb"^frame=\s*(\d+)", done.stdout, re.MULTILINE)
    return int(counts[-1]) if counts and not complaints(done.stderr) else -1
