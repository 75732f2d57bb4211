"""The command "farm": one render as many pieces, made by many processes or by a Slurm cluster."""

from __future__ import annotations

import hashlib
import json
import os
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import time
from argparse import Namespace
from collections import Counter
from collections.abc import Iterator
from contextlib import contextmanager
from dataclasses import replace
from fractions import Fraction
from itertools import accumulate, count
from pathlib import Path
from typing import Any

from . import prepare, system
from .command_line import render_job
from .failure import Failure, Interrupted, WRONG_USAGE
from .formats import HOST_PICTURES, PICTURES, RAW_FILES
from .names import Pattern, check_target, extension, ffmpeg_name, input_pattern, suggestion
from .output import Unfinished
from .pipeline import Child, parts
from .plan import MILLISECONDS, Job, Part, Plan, chosen_frames, mux_command, runs
from .probe import probe, with_times
from .render import check, extracted, planned, render, tell, wanted
from .report import Report

_USUAL = 500  # frames in a piece
_MOST = 1000  # pieces: Slurm's own limit for an array is 1001 unless it was raised
_TRIES = 3
_POLL = 0.1  # seconds
_POLL_SLURM = 2.0
_GRACE = 0.7  # for pieces to clean up when all is to end
_OWN = ("how", "jobs", "chunks", "sbatch", "folder", "keep", "progress", "quiet")
_MISSING = "size input_format input_light output_format expect save_project skip_bad_frames".split()
_COUNTED = ("frames", "rate", "times", "ticks", "stamps", "clock")
_JOINED = "mp4 m4v mov mkv webm mxf avi nut flv ts mts m2ts".split()
_SEEKS = ("mov", "matroska", "mxf")  # what begins at the key frame that was asked for
_AGAIN = "run the same command again: what is whole is not rendered again"


def run(options: Namespace, report: Report) -> None:
    if options.how == "piece":  # of the job in the folder that stands where INPUT does
        Farm(Path(options.input)).render_piece(int(options.output), report)
    elif options.how == "join":
        Farm(Path(options.input)).join(report)
    elif options.how in ("local", "slurm"):
        _run(options, report)
    else:
        near = suggestion(options.how, ["local", "slurm"])
        why = "it is neither local nor slurm"
        raise Failure(f"farm {options.how}", why, near or 'see "glazel farm --help"', WRONG_USAGE)


def _run(options: Namespace, report: Report) -> None:
    started = time.monotonic()
    if options.how == "slurm" and not shutil.which("sbatch"):
        why = "sbatch is not installed here"
        raise Failure("farm slurm", why, "run it where jobs are submitted, or use farm local")
    jobs = _count(options, "jobs") or max(1, (os.cpu_count() or 2) // 2)
    options.input, options.output = (
        word if word == "-" else os.path.abspath(word) for word in (options.input, options.output)
    )
    folder = Path(os.path.abspath(options.folder or options.output + ".farm"))
    given = {k: v for k, v in vars(options).items() if k not in _OWN}
    job = _job(given)
    _check_kinds(job)
    state = _state(job, given, report)
    prepare.programs()
    with _owned(folder):
        farm = Farm(folder)
        if farm.state and (len(farm.missing()) < len(farm.pieces) or farm.tasks()):
            farm.check_same(state)
            now = {"options": given, "keep": options.keep, "joined": False}
            farm.save(farm.state | now)
            report.note(f"{folder}: {len(farm.missing())} of {len(farm.pieces)} pieces are missing")
        else:
            numbers = state.pop("numbers")
            pieces = _split(
                numbers, _count(options, "chunks"), jobs if options.how == "local" else 1
            )
            for log in folder.glob("log-*.txt"):  # of one that came to nothing
                log.unlink()
            farm.save(state | {"pieces": pieces, "slurm": {}, "keep": options.keep})
        if options.how == "slurm":
            _slurm(farm, options.sbatch, report)
        elif farm.tasks():
            ids = " ".join(farm.state["slurm"].values())
            why = f"Slurm jobs {ids} are making it"
            raise Failure(job.output, why, f"wait for them, or end them: scancel {ids}")
        else:
            _render_and_join(farm, jobs, report)
    report.done(options.output, sum(map(len, farm.pieces)), time.monotonic() - started)


def _count(options: Namespace, name: str) -> int | None:
    text = getattr(options, name)
    if text is not None and (not text.isdigit() or int(text) < 1):
        why = "it is a number from 1 on"
        raise Failure(f"--{name} {text}", why, 'see "glazel farm --help"', WRONG_USAGE)
    return int(text) if text else None


def _job(given: dict[str, Any]) -> Job:
    job, _ = render_job(Namespace(**dict.fromkeys(_MISSING), **given))
    return job


def _check_kinds(job: Job) -> None:
    remedy = "use glazel render"
    for path in (job.input, job.output):
        if path == "-" or extension(path) in RAW_FILES:
            raise Failure(path, "raw frames and pipes are not split", remedy, WRONG_USAGE)
    is_picture = extension(job.input) in HOST_PICTURES | PICTURES
    if is_picture and not input_pattern(job.input) and os.path.exists(job.input):
        raise Failure(job.input, "it is one picture", remedy, WRONG_USAGE)
    kind = extension(job.output)
    if kind in HOST_PICTURES | PICTURES:
        if not Pattern.parse(job.output):
            why, remedy = "it is one picture", "name a sequence like out_%04d.png"
            raise Failure(job.output, why, remedy, WRONG_USAGE)
    elif kind not in _JOINED:
        why = f"pieces of .{kind} are not joined"
        raise Failure(
            job.output, why, f"name one like .mkv, .mov or .mp4, or {remedy}", WRONG_USAGE
        )


def _state(job: Job, given: dict[str, Any], report: Report) -> dict[str, Any]:
    """What a farm starts from, as JSON. Throws Failure for what would be wrong with the render."""
    plan, target, _ = planned(job, {}, (False, False))
    pattern = input_pattern(job.input)
    tell(job, report, plan)
    if pattern:
        have = wanted(job, pattern, pattern.numbers())
        numbers = chosen_frames(job.frames, have[0], len(have))
        counted: dict[str, Any] = {}
        origin = have[0]
    else:
        media = plan.source
        if plan.expected is None:
            why = "frames of a variable rate would come at an even one"
            remedy = "name a file like .mkv or .mp4, or use glazel render"
            raise Failure(job.output, why, remedy)
        numbers = chosen_frames(job.frames, 1, media.frames or 0)
        counted = {name: getattr(media, name) for name in _COUNTED}
        counted |= {name: str(counted[name]) for name in ("rate", "clock")}
        origin = 1
    for name in map(target.path, numbers) if isinstance(target, Pattern) else ():
        check_target(name, job.overwrite)
    identity = _identity(job, pattern, given)
    state = {"version": 1, "cwd": os.getcwd(), "options": given, "identity": identity}
    state |= {"counted": counted, "origin": origin, "numbers": numbers}
    result: dict[str, Any] = json.loads(json.dumps(state))
    return result


def _identity(job: Job, pattern: Pattern | None, given: dict[str, Any]) -> dict[str, Any]:
    """Of the files that a piece depends on: input by size and time, looks by what they hold."""
    files = [pattern.path(number) for number in pattern.numbers()] if pattern else [job.input]
    facts = [(os.path.basename(file), os.stat(file)) for file in files]
    text = json.dumps([(name, fact.st_size, fact.st_mtime_ns) for name, fact in facts])
    found = {job.input: hashlib.sha256(text.encode()).hexdigest()}
    words = [given[name] for name in ("look", "project") if given.get(name)]
    for word in words + [key.partition("=")[2] for key in given.get("key") or []]:
        for part in [word] if os.path.exists(word) else word.split("|"):
            file = part if os.path.exists(part) else part.rpartition("#")[0]
            if file:
                found[file] = _hash(Path(file))
    return found


def _hash(file: Path) -> str:
    with open(file, "rb") as contents:
        return hashlib.file_digest(contents, "sha256").hexdigest()


def _split(numbers: list[int], chunks: int | None, least: int) -> list[str]:
    """The frames of each piece, as --frames has them."""
    pieces = chunks or min(len(numbers), _MOST, max(least, len(numbers) // _USUAL))
    if pieces > len(numbers):
        why = f"there are only {len(numbers)} frames"
        raise Failure(f"--chunks {pieces}", why, "choose fewer", WRONG_USAGE)
    ends = [len(numbers) * at // pieces for at in range(pieces + 1)]
    return [runs(numbers[begin:end]) for begin, end in zip(ends, ends[1:])]


@contextmanager
def _owned(folder: Path) -> Iterator[None]:
    """The folder, which is made, is this process's alone."""
    try:
        folder.mkdir(exist_ok=True)
        held = os.listdir(folder)
        if "state.json" not in held and set(held) - {"lock"}:
            raise Failure(str(folder), "it holds other files", "name another with --folder")
        lock = open(folder / "lock", "ab")
    except OSError as error:
        why = f"it cannot be made: {error.strerror}"
        raise Failure(str(folder), why, "name another with --folder") from error
    with lock:
        if not system.try_lock(lock):
            why = "another farm is at work on it"
            raise Failure(str(folder), why, "wait for it, or name another OUTPUT")
        try:
            yield
        finally:
            if not (folder / "state.json").exists():  # nothing has begun
                shutil.rmtree(folder, ignore_errors=True)


class Farm:
    """A job in pieces, as its folder holds it; each piece, counted from 1, has a folder in it."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        self.state: dict[str, Any] = {}
        self.pieces: list[list[int]] = []  # the frames of each
        if (folder / "state.json").exists():
            self._take(json.loads((folder / "state.json").read_bytes()))

    def _take(self, state: dict[str, Any]) -> None:
        self.state = state
        self.pieces = [chosen_frames(text, 0, 1 << 62) for text in state["pieces"]]

    def save(self, state: dict[str, Any]) -> None:
        self._take(state)
        _write(self.folder / "state.json", state)

    def job(self) -> Job:
        if not self.state:
            raise Failure(str(self.folder), "there is no farm in it", _AGAIN)
        os.chdir(self.state["cwd"])
        job = _job(self.state["options"])
        identity = _identity(job, input_pattern(job.input), self.state["options"])
        self._check_identity(identity)
        counted = dict(self.state["counted"])
        for name in ("rate", "clock") if counted else ():
            counted[name] = Fraction(counted[name])
        return replace(job, part=Part(counted, self.state["origin"], False))

    def check_same(self, state: dict[str, Any]) -> None:
        def essence(of: dict[str, Any]) -> list[Any]:  # the rest may be otherwise now
            return [of["cwd"], of["options"] | {"overwrite": None, "strict": None}]

        if essence(state) != essence(self.state):
            why = f"a farm that was begun in {self.state['cwd']} with other options is there"
            remedy = "repeat its command, remove the folder to begin anew, or give --folder"
            raise Failure(str(self.folder), why, remedy)
        self._check_identity(state["identity"])

    def _check_identity(self, identity: dict[str, Any]) -> None:
        for file, was in self.state["identity"].items():
            if identity.get(file) != was:
                why = f"it has changed since pieces of it were rendered into {self.folder}"
                raise Failure(file, why, "put it back, or remove that folder to begin anew")

    def log(self, piece: int | str) -> Path:
        return self.folder / f"log-{piece}.txt"

    def files(self, piece: int) -> list[Path]:
        kind = extension(self.state["options"]["output"])
        place = self.folder / str(piece)
        if kind in HOST_PICTURES | PICTURES:
            return [place / f"{number:08}.{kind}" for number in self.pieces[piece - 1]]
        return [place / f"piece.{kind}"]

    def record(self, piece: int) -> dict[str, Any] | None:
        """What is known of a piece that is whole."""
        try:
            found: dict[str, Any] = json.loads((self.folder / f"{piece}.json").read_bytes())
            sizes = [file.stat().st_size for file in self.files(piece)]
        except (OSError, ValueError):
            return None
        return found if found["bytes"] == sizes else None

    def forget_damaged(self) -> list[int]:
        """The pieces whose files are no longer what was rendered; they are missing then."""
        damaged = []
        for piece in range(1, len(self.pieces) + 1):
            record = self.record(piece)
            if record and record["sha256"] != [_hash(file) for file in self.files(piece)]:
                (self.folder / f"{piece}.json").unlink()
                damaged.append(piece)
        return damaged

    def missing(self) -> list[int]:
        return [n for n in range(1, len(self.pieces) + 1) if not self.record(n)]

    def render_piece(self, piece: int, report: Report) -> None:
        """What a task does."""
        job = self.job()
        if self.record(piece):
            return
        files = self.files(piece)
        files[0].parent.mkdir(exist_ok=True)
        is_many = extension(job.output) in HOST_PICTURES | PICTURES
        target = str(files[0].parent / f"%08d{files[0].suffix}") if is_many else str(files[0])
        part, frames = job.part, self.state["pieces"][piece - 1]
        assert part
        job = replace(job, output=target, frames=frames, overwrite=True, strict=False, part=part)
        with _own_wine():
            if part.counted and probe(job.input).container.split(",")[0] in _SEEKS:
                try:
                    render(replace(job, part=replace(part, seek=True)), report, {}, (False, False))
                except Failure as error:
                    if "encoding failed" in str(error):  # it is not the seek's fault
                        raise
                    report.note(f"after a seek: {error}; now from the start")
                    render(job, report, {}, (False, False))
            else:
                render(job, report, {}, (False, False))
        sizes = [file.stat().st_size for file in files]
        facts = {} if is_many else _stream(target)
        _write(
            self.folder / f"{piece}.json",
            {"bytes": sizes, "sha256": [_hash(file) for file in files], "stream": facts}
            | {"machine": socket.gethostname()},
        )

    def failure(self, piece: int | str, code: int | None) -> Failure:
        what = "joining"
        if isinstance(piece, int):
            what = f"piece {piece} (frames {self.state['pieces'][piece - 1]})"
        events = _tail(self.log(piece))
        said = [event["text"] for event in events if event.get("event") == "error"]
        if code == WRONG_USAGE and said:  # by the options that all pieces have
            return Failure(*parts(said[-1]), code=code)
        why = f"it was killed ({signal.Signals(-code).name})" if code and code < 0 else ""
        why = why or (said[-1] if said else "it ended and gives no reason")
        return Failure(what, why, f"see {self.log(piece)}, mend that, and {_AGAIN}")

    def done(self) -> int:
        """Frames, those of unfinished pieces too."""
        frames = 0
        for piece, numbers in enumerate(self.pieces, 1):
            if self.record(piece):
                frames += len(numbers)
                continue
            seen = [e["frame"] for e in _tail(self.log(piece)) if e.get("event") == "progress"]
            frames += seen[-1] if seen else 0
        return frames

    def tasks(self, state: str = "") -> list[str]:
        """Those that Slurm still has to run or runs, or that ended in that state."""
        ids = ",".join(self.state["slurm"].values())
        if not ids or not shutil.which("squeue"):
            return []
        command = ["squeue", "--noheader", "--array", "--format=%i", f"--jobs={ids}"]
        command += [f"--states={state}"] if state else []
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode and "Invalid job id" not in done.stderr:
            why = f"it does not answer: {' '.join(done.stderr.split())}"
            raise Failure("squeue", why, f"the jobs {ids} go on if they can; {_AGAIN}")
        return done.stdout.split()

    def join(self, report: Report) -> None:
        """Makes the output of the pieces, and removes the folder."""
        job = replace(self.job(), strict=False)
        if self.missing():
            raise self.failure(self.missing()[0], None)
        if damaged := self.forget_damaged():
            why = "it has been damaged since it was rendered"
            raise Failure(f"piece {damaged[0]}", why, f"check the disk, and {_AGAIN}")
        plan, target, _ = planned(job, {}, (False, False))
        if isinstance(target, Pattern):
            self._join_pictures(job, target)
        else:
            self._join_video(job, plan, target)
        if self.state["keep"]:
            self.save(self.state | {"joined": True})
        else:
            (self.folder / "state.json").unlink()
            shutil.rmtree(self.folder, ignore_errors=True)

    def _join_pictures(self, job: Job, target: Pattern) -> None:
        pieces = range(1, len(self.pieces) + 1)
        numbers = [number for numbers in self.pieces for number in numbers]
        files = [file for piece in pieces for file in self.files(piece)]
        unfinished = Unfinished(target, "", job.overwrite, True)
        try:
            for file in files:
                try:
                    os.link(file, os.path.join(unfinished.path, file.name))
                except OSError:  # another file system, or one without hard links
                    shutil.copyfile(file, os.path.join(unfinished.path, file.name))
            unfinished.commit([target.path(number) for number in numbers])
        finally:
            unfinished.discard()

    def _join_video(self, job: Job, plan: Plan, target: str) -> None:
        records = [self.record(piece) or {} for piece in range(1, len(self.pieces) + 1)]
        for piece, record in enumerate(records, 1):
            if record["stream"] != records[0]["stream"]:
                why = f"it is encoded otherwise than piece 1, by {record['machine']}"
                remedy = f"see that all machines have the same ffmpeg, remove {piece}.json, and "
                raise Failure(f"piece {piece}", why, remedy + _AGAIN)
        encoding = plan.encoding
        assert encoding
        media, times = encoding.media, encoding.times
        frames = [0, *accumulate(map(len, self.pieces))]
        rate = media.rate
        begin = Fraction(times[0], media.ticks) if times else media.start
        begin = Fraction(0) if encoding.container.even else begin
        at = [
            Fraction(times[n] - times[0], media.ticks) if times else n / rate
            for n in frames[: -1 if times else None]
        ]
        micro = [round(moment * 1_000_000) for moment in at]
        lines = ["ffconcat version 1.0"]
        for piece, file in enumerate(self.files(n)[0] for n in range(1, len(frames))):
            lines.append(f"file {file.parent.name}/{file.name}")
            if piece + 1 < len(micro):
                lines.append(f"duration {micro[piece + 1] - micro[piece]}us")
        (self.folder / "list.txt").write_text("\n".join(lines) + "\n", encoding="ascii")
        source = ["-xerror", "-itsoffset", f"{float(begin):.6f}", "-f", "concat", "-i", "list.txt"]
        picture = ["-c:v:0", "copy"]
        if not times and extension(target) in MILLISECONDS:
            picture += ["-bsf:v:0", _even_times(rate, begin)]
        covers = [extracted(media, cover.index, self.folder) for cover in encoding.covers]
        unfinished = Unfinished(target, "." + extension(target), job.overwrite, False)
        try:
            words = mux_command(encoding, source, picture, unfinished.path, covers)
            streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL}
            child = Child("join", words, 0, cwd=self.folder, **streams)
            try:
                child.finish()
            finally:
                child.kill()
            if child.process.returncode or child.complaints():
                ended = "it was killed" if child.process.returncode < 0 else "it gives no reason"
                reason = (child.complaints() or [ended])[0]
                raise Failure(target, f"joining failed: {reason}", f"check the disk, and {_AGAIN}")
            made = with_times(probe(unfinished.path))
            if bool(made.times) != bool(times):
                raise Failure(target, "the times at its seams are uneven", "use glazel render")
            names = check(job, Report("none"), plan, unfinished, target, frames[-1])
            unfinished.commit(names)
        finally:
            unfinished.discard()


def _even_times(rate: Fraction, begin: Fraction) -> str:
    """Each piece has had its times rounded by a coarse clock: the frame's own are put back."""
    words = []
    for name in ("pts", "dts"):
        frame = f"round(({name.upper()}*TB-{float(begin):.6f})*{rate})"
        moment = f"{frame}/{rate.numerator}*{rate.denominator}+{float(begin):.6f}"
        words.append(f"{name}=round(({moment})/TB+0.000001)")
    return "setts=" + ":".join(words)


def _stream(path: str) -> dict[str, Any]:
    """What must be the same of all pieces."""
    entries = "stream=codec_name,width,height,pix_fmt,extradata_hash"
    command = ["ffprobe", "-v", "error", "-of", "json", "-select_streams", "V:0"]
    command += ["-show_data_hash", "md5", "-show_entries", entries, ffmpeg_name(path)]
    done = subprocess.run(command, capture_output=True, check=False)
    result: dict[str, Any] = json.loads(done.stdout)["streams"][0]
    return result


def _write(path: Path, value: dict[str, Any]) -> None:
    """The file has its old contents or the new ones, whatever happens."""
    beside = path.with_name(f".{path.name}.{socket.gethostname()}.{os.getpid()}")
    with open(beside, "w", encoding="ascii") as file:
        json.dump(value, file)
        file.flush()
        os.fsync(file.fileno())
    os.replace(beside, path)


def _tail(log: Path) -> list[dict[str, Any]]:
    """The last events of a task."""
    events = []
    try:
        with open(log, "rb") as file:
            file.seek(max(0, file.seek(0, os.SEEK_END) - 4096))
            lines = file.read().splitlines()
    except OSError:
        return []
    for line in lines:
        try:
            events.append(json.loads(line))
        except ValueError:
            continue
    return [event for event in events if isinstance(event, dict)]


def _program(how: str, farm: Farm) -> list[str]:
    words = [sys.executable, "-P", "-m", "glazel", "farm", "--progress", "json"]
    return [*words, how, str(farm.folder)]


@contextmanager
def _own_wine() -> Iterator[None]:
    """Under Slurm, a Wine folder on the node's own disk that no other task uses at the same time:
    the end of a task is the end of all that it has started, Wine's server included."""
    if system.WINDOWS or "SLURM_JOB_ID" not in os.environ or "GLAZEL_WINEPREFIX" in os.environ:
        yield
        return
    place = Path(os.environ.get("GLAZEL_NODE_FOLDER", f"/var/tmp/glazel-{os.getuid()}"))
    place.mkdir(mode=0o700, parents=True, exist_ok=True)
    if place.stat().st_uid != os.getuid():
        raise Failure(str(place), "it is somebody else's", "set GLAZEL_NODE_FOLDER to another")
    for number in count(1):
        lock = open(place / f"wine-{number}.task", "wb")
        if system.try_lock(lock):
            break
        lock.close()
    os.environ["GLAZEL_WINEPREFIX"] = str(place / f"wine-{number}")
    with lock:
        try:
            yield
        finally:
            words = {"WINEPREFIX": os.environ["GLAZEL_WINEPREFIX"]}
            subprocess.run(["wineserver", "-k"], env=dict(os.environ) | words, check=False)


def _render_and_join(farm: Farm, jobs: int, report: Report) -> None:
    _local(farm, jobs, report)
    try:
        farm.join(report)
    except Failure as error:
        if not farm.missing():
            raise
        report.warn(f"{str(error).partition('; ')[0]}; it is rendered again")
        _local(farm, jobs, report)
        farm.join(report)


def _local(farm: Farm, jobs: int, report: Report) -> None:
    waiting, tries = farm.missing(), Counter[int]()
    running: dict[int, subprocess.Popen[bytes]] = {}
    progress = _Progress(farm, report)
    try:
        while waiting or running:
            while waiting and len(running) < jobs:
                piece = waiting.pop(0)
                command = [*_program("piece", farm), str(piece)]
                with open(farm.log(piece), "wb") as log:
                    streams = {"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log}
                    environment = os.environ | {"PYTHONPATH": str(system.PACKAGE.parent)}
                    running[piece] = system.start(command, 0, env=environment, **streams)
            time.sleep(_POLL)
            for piece, process in list(running.items()):
                code = process.poll()
                if code is None:
                    continue
                del running[piece]
                if code == 0 and farm.record(piece):
                    continue
                failure = farm.failure(piece, code)
                tries[piece] += 1
                if tries[piece] == _TRIES or failure.code == WRONG_USAGE:
                    raise failure
                report.warn(f"{str(failure).partition('; ')[0]}; it is tried again")
                waiting.append(piece)
            progress.show()
    finally:
        _end(list(running.values()))


def _end(processes: list[subprocess.Popen[bytes]]) -> None:
    for process in processes:
        process.terminate()
    deadline = time.monotonic() + _GRACE
    for process in processes:
        try:
            process.wait(max(0.0, deadline - time.monotonic()))
        except subprocess.TimeoutExpired:
            system.kill(process)
            process.wait()


class _Progress:
    def __init__(self, farm: Farm, report: Report) -> None:
        self._farm, self._report = farm, report
        self._before, self._started, self._next = farm.done(), time.monotonic(), 0.0

    def show(self) -> None:
        now = time.monotonic()
        if now < self._next:
            return
        frame, total = self._farm.done(), sum(map(len, self._farm.pieces))
        self._next = time.monotonic() + max(0.5, 20 * (time.monotonic() - now))
        event = {"event": "progress", "frame": frame, "frames": total}
        if frame > self._before:
            rate = (frame - self._before) / (now - self._started)
            event |= {"framesPerSecond": round(rate, 3), "secondsLeft": (total - frame) / rate}
        self._report.progress(event)


def _slurm(farm: Farm, more: str | None, report: Report) -> None:
    for last in (False, True):
        if not farm.tasks():
            _submit(farm, shlex.split(more or ""))
        ids = " ".join(farm.state["slurm"].values())
        report.note(f"{farm.folder}: Slurm jobs {ids} make and join it")
        try:
            cancelled = _watch(farm, report)
        except Interrupted:
            report.note(
                f"the jobs go on; the same command shows them again, scancel {ids} ends them"
            )
            raise
        ended = Farm(farm.folder).state
        if not ended or ended.get("joined"):
            return
        if cancelled:
            raise Failure(farm.state["options"]["output"], "its jobs were cancelled", _AGAIN)
        missing = farm.missing()
        joined = farm.log("join").exists()  # and so all pieces were there
        failure = farm.failure("join" if joined or not missing else missing[0], None)
        if last or not missing:
            raise failure
        report.warn(f"{str(failure).partition('; ')[0]}; it is tried again")


def _watch(farm: Farm, report: Report) -> bool:
    """Until nothing goes on. Whether somebody else has cancelled the join."""
    progress, join = _Progress(farm, report), farm.state["slurm"].get("join")
    while tasks := farm.tasks():
        progress.show()
        if tasks == [join] and farm.missing():  # a piece has failed: it would wait for ever
            subprocess.run(["scancel", join], check=False)
            return False
        time.sleep(_POLL_SLURM)
    return join in farm.tasks("CANCELLED")


def _submit(farm: Farm, more: list[str]) -> None:
    """An array of the pieces that are missing, and the join behind it."""
    ids: dict[str, str] = {}
    behind: list[str] = []
    missing = farm.missing()
    for log in (farm.log(name) for name in ("join", *map(str, missing))):
        log.unlink(missing_ok=True)
    if missing:
        task = f"{shlex.join(_program('piece', farm))} $SLURM_ARRAY_TASK_ID"
        array = "--array=" + ",".join(map(str, missing))
        ids["array"] = _sbatch(farm, f"{task} || exec {task}", [array, *more], "%a")
        farm.save(farm.state | {"slurm": ids})
        behind = [f"--dependency=afterok:{ids['array']}"]
    ids["join"] = _sbatch(
        farm, f"exec {shlex.join(_program('join', farm))} -", behind + more, "join"
    )
    farm.save(farm.state | {"slurm": ids})


def _sbatch(farm: Farm, script: str, words: list[str], log: str) -> str:
    name = os.path.basename(farm.state["options"]["output"])
    command = ["sbatch", "--parsable", "--requeue", "--open-mode=truncate", f"--job-name={name}"]
    command += [f"--chdir={farm.folder}", f"--output=log-{log}.txt", *words]
    path = f"PYTHONPATH={shlex.quote(str(system.PACKAGE.parent))} PYTHONDONTWRITEBYTECODE=1"
    script = f"#!/bin/sh\nexport {path}\n{script}\n"
    done = subprocess.run(command, input=script, capture_output=True, text=True, check=False)
    if done.returncode:
        why = f"it does not take the job: {' '.join(done.stderr.split())}"
        raise Failure("sbatch", why, "check --sbatch and the state of the cluster (sinfo)")
    return done.stdout.strip().partition(";")[0]
