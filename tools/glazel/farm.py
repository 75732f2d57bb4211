"""The command "farm": one render as many pieces, made by many processes or by a Slurm cluster."""

from __future__ import annotations

import hashlib
import json
import os
import re
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import time
from argparse import Namespace
from collections import Counter
from collections.abc import Callable, Iterator
from contextlib import contextmanager, suppress
from dataclasses import replace
from fractions import Fraction
from itertools import accumulate, count
from pathlib import Path
from typing import Any

from . import interrupts, prepare, system
from .command_line import parse, render_job
from .failure import Failure, WRONG_USAGE
from .formats import RAW_FILES
from .interrupts import Interrupted
from .names import Pattern, check_target, extension, ffmpeg_name, input_pattern, is_picture
from .names import look_files, suggestion
from .output import Unfinished
from .pipeline import Child
from .plan import MILLISECONDS, SEQUENCE, Job, Part, Plan, chosen_frames, container_of, mux_command
from .plan import runs
from .probe import ffprobe, probe, with_times
from .render import check, planned, render, tell, wanted, write_beside
from .report import Report

_USUAL = 500  # frames in a piece
_MOST = 1000  # pieces: Slurm's own limit for an array is 1001 unless it was raised
_TRIES = 3
_POLL = 0.1  # seconds
_POLL_SLURM = 2.0
_GRACE = 0.7  # for pieces to clean up when all is to end
_COUNTED = ("frames", "rate", "times", "ticks", "stamps", "clock")
_JOINED = "mp4 m4v mov mkv webm mxf avi nut flv ts mts m2ts".split()
_SEEKS = ("mov", "matroska", "mxf")  # what begins at the key frame that was asked for
_AGAIN = "run the same command again: what is whole is not rendered again"


def run(options: Namespace, words: list[str], report: Report) -> None:
    """`words`: those of the command line that `options` were read from."""
    if options.how == "piece":  # of the job in the folder that stands where INPUT does
        return Farm(Path(options.input)).render_piece(int(options.output), report)
    if options.how == "join":
        return Farm(Path(options.input)).join(report)
    if options.how not in ("local", "slurm"):
        near = suggestion(options.how, ["local", "slurm"]) or 'see "glazel farm --help"'
        raise Failure(f"farm {options.how}", "it is neither local nor slurm", near, WRONG_USAGE)
    if options.how == "slurm" and not shutil.which("sbatch"):
        why = "sbatch is not installed here"
        raise Failure("farm slurm", why, "run it where jobs are submitted, or use farm local")
    jobs = options.jobs or max(1, (os.cpu_count() or 2) // 2)
    job = _job(options)
    folder = Path(os.path.abspath(options.folder or job.output + ".farm"))
    state, numbers = _begin(job, words, report)
    prepare.programs()
    started = time.monotonic()
    with _owned(folder):
        farm = Farm(folder)
        if farm.state and (len(farm.missing()) < len(farm.pieces) or farm.tasks()):
            farm.check_same(job)
            farm.save(words=words, keep=options.keep, joined=False)
            report.say(f"{folder}: {len(farm.missing())} of {len(farm.pieces)} pieces are missing")
        else:
            if not is_picture(job.output):
                check_target(job.output, job.overwrite)  # jobs of before may just have made it
            for log in folder.glob("log-*.txt"):  # of one that came to nothing
                log.unlink()
            pieces = _split(numbers, options.chunks, jobs if options.how == "local" else 1)
            farm.save(**state, pieces=pieces, slurm={}, keep=options.keep, joined=False)
        if options.how == "local" and farm.tasks():
            ids = " ".join(farm.state["slurm"].values())
            why = f"Slurm jobs {ids} are making it"
            raise Failure(job.output, why, f"wait for them, or end them: scancel {ids}")
        for last in (False, True):
            if options.how == "local":
                failure = _by_processes(farm, jobs, report)
            else:
                failure = _by_slurm(farm, shlex.split(options.sbatch or ""), report)
            if not failure:
                break
            if last or not farm.missing():
                raise failure
            report.say(f"{failure.brief}; it is tried again", "warning")
    report.done(job.output, farm.frames(), time.monotonic() - started)


def _job(options: Namespace) -> Job:
    """Throws Failure for kinds of input and output that are not split."""
    job = render_job(options)
    for path in (job.input, job.output):
        if path == "-" or extension(path) in RAW_FILES:
            why = "raw frames and pipes are not split"
            raise Failure(path, why, "use glazel render", WRONG_USAGE)
    if is_picture(job.input) and not input_pattern(job.input) and os.path.exists(job.input):
        raise Failure(job.input, "it is one picture", "use glazel render", WRONG_USAGE)
    if is_picture(job.output) and not Pattern.parse(job.output):
        remedy = "name a sequence like out_%04d.png"
        raise Failure(job.output, "it is one picture", remedy, WRONG_USAGE)
    if not is_picture(job.output) and container_of(job.output):
        if extension(job.output) not in _JOINED:
            remedy = "name one like .mkv, .mov or .mp4, or use glazel render"
            why = "pieces of such files are not joined"
            raise Failure(job.output, why, remedy, WRONG_USAGE)
    return replace(job, input=os.path.abspath(job.input), output=os.path.abspath(job.output))


def _begin(job: Job, words: list[str], report: Report) -> tuple[dict[str, Any], list[int]]:
    """What a farm starts from, as JSON, and the frames to render. Throws Failure for what would be
    wrong with the render."""
    plan = planned(job)
    media = plan.source
    tell(job, report, plan.notes, plan.losses)
    counted: dict[str, Any] = {}
    first, frames = 1, media.frames or 0
    if pattern := input_pattern(job.input):
        have = wanted(job, pattern, pattern.numbers())
        first, frames = have[0], len(have)
    elif plan.expected is None:
        why = "frames of a variable rate would come at an even one"
        remedy = "name a file like .mkv or .mp4, or use glazel render"
        raise Failure(job.output, why, remedy)
    else:
        counted = {name: getattr(media, name) for name in _COUNTED}
        counted |= {name: str(counted[name]) for name in ("rate", "clock")}
    numbers = chosen_frames(job.frames, first, frames)
    for name in map(plan.target.path, numbers) if isinstance(plan.target, Pattern) else ():
        check_target(name, job.overwrite)
    state = {"version": 1, "cwd": os.getcwd(), "words": words, "output": job.output}
    return state | {"identity": _identity(job), "counted": counted, "origin": first}, numbers


def _identity(job: Job) -> dict[str, str]:
    """Of the files that a piece depends on: input by size and time, looks by what they hold."""
    pattern = input_pattern(job.input)
    files = [pattern.path(number) for number in pattern.numbers()] if pattern else [job.input]
    facts = [(os.path.basename(file), os.stat(file)) for file in files]
    text = json.dumps([(name, fact.st_size, fact.st_mtime_ns) for name, fact in facts])
    found = {job.input: hashlib.sha256(text.encode()).hexdigest()}
    for option, word in zip(job.host, job.host[1:]):
        if option in ("--look", "--key", "--project"):
            for file in look_files(word.partition("=")[2] if option == "--key" else word):
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
        self.pieces: dict[int, list[int]] = {}  # the frames of each
        self._read()

    def _read(self) -> None:
        path = self.folder / "state.json"
        self.state = json.loads(path.read_bytes()) if path.exists() else {}
        frames = (chosen_frames(text, 0, 1 << 62) for text in self.state.get("pieces", ()))
        self.pieces = dict(enumerate(frames, 1))

    def save(self, **changes: Any) -> None:
        _write(self.folder / "state.json", self.state | changes)
        self._read()

    def job(self) -> Job:
        """Throws Failure when what it depends on has changed."""
        if not self.state:
            raise Failure(str(self.folder), "there is no farm in it", _AGAIN)
        os.chdir(self.state["cwd"])
        job = _job(parse("farm", self.state["words"]))
        identity = _identity(job)
        for file, was in self.state["identity"].items():
            if identity.get(file) != was:
                why = f"it has changed since pieces of it were rendered into {self.folder}"
                raise Failure(file, why, "put it back, or remove that folder to begin anew")
        return job

    def check_same(self, job: Job) -> None:
        """Whether `job` is the one that was begun; what is no matter of pieces may differ."""
        here = os.getcwd() == self.state["cwd"]
        begun = replace(self.job(), overwrite=job.overwrite, strict=job.strict)
        if not here or begun != job:
            why = f"a farm that was begun in {self.state['cwd']} with other options is there"
            remedy = "repeat its command, remove the folder to begin anew, or give --folder"
            raise Failure(str(self.folder), why, remedy)

    def log(self, piece: int | str) -> Path:
        return self.folder / f"log-{piece}.txt"

    def files(self, piece: int) -> list[Path]:
        names = ["piece"]
        if is_picture(self.state["output"]):
            names = [f"{number:08}" for number in self.pieces[piece]]
        return [self.folder / f"{piece}/{n}.{extension(self.state['output'])}" for n in names]

    def record(self, piece: int) -> dict[str, Any] | None:
        """What is known of a piece that is whole."""
        try:
            found: dict[str, Any] = json.loads((self.folder / f"{piece}.json").read_bytes())
        except (OSError, ValueError):
            return None
        return found if all(file.exists() for file in self.files(piece)) else None

    def missing(self) -> list[int]:
        return [piece for piece in self.pieces if not self.record(piece)]

    def frames(self) -> int:
        return sum(map(len, self.pieces.values()))

    def render_piece(self, piece: int, report: Report) -> None:
        """What a task does."""
        job = self.job()
        if self.record(piece):
            return
        files = self.files(piece)
        files[0].parent.mkdir(exist_ok=True)
        is_many = is_picture(job.output)
        target = files[0].with_stem(SEQUENCE) if is_many else files[0]
        counted = dict(self.state["counted"])
        counted |= {name: Fraction(counted[name]) for name in ("rate", "clock") if counted}
        part = Part(counted, self.state["origin"], False)
        job = replace(job, output=str(target), frames=self.state["pieces"][piece - 1], part=part)
        # What the whole loses has been told; what pictures hold only the host program sees.
        host = (*job.host, "--strict") if job.strict and is_many else job.host
        job = replace(job, host=host, overwrite=True, strict=False)
        with _own_wine():
            seek = bool(counted) and probe(job.input).container.split(",")[0] in _SEEKS
            try:
                render(replace(job, part=replace(part, seek=seek)), report)
            except Failure as error:
                if not seek or "encoding failed" in str(error):  # it is not the seek's fault
                    raise
                report.say(f"after a seek: {error}; now from the start")
                render(job, report)
        facts = {"sha256": [_hash(file) for file in files], "machine": socket.gethostname()}
        stream = {"stream": None if is_many else _stream(target)}
        _write(self.folder / f"{piece}.json", facts | stream)

    def failure(self, piece: int | str, code: int | None) -> Failure:
        what = "joining"
        if isinstance(piece, int):
            what = f"piece {piece} (frames {self.state['pieces'][piece - 1]})"
        said = [event["text"] for event in _tail(self.log(piece)) if event.get("event") == "error"]
        if code == WRONG_USAGE and said:  # by the options that all pieces have
            return Failure(said[-1], code=code)
        why = said[-1] if said else "it ended and gives no reason"
        if code and code < 0:
            why = f"it was killed ({signal.Signals(-code).name})"
        return Failure(what, why, f"see {self.log(piece)}, mend that, and {_AGAIN}")

    def done(self) -> int:
        """Frames, those of unfinished pieces too."""
        frames = 0
        for piece, numbers in self.pieces.items():
            seen = [len(numbers)]
            if not self.record(piece):
                events = _tail(self.log(piece))
                seen = [0, *(e["frame"] for e in events if e.get("event") == "progress")]
            frames += seen[-1]
        return frames

    def progress(self, report: Report) -> Callable[[], None]:
        """What shows it, when called often."""
        before, started, following = self.done(), time.monotonic(), 0.0

        def show() -> None:
            nonlocal following
            now = time.monotonic()
            if now < following:
                return
            frame, total = self.done(), self.frames()
            following = time.monotonic() + max(0.5, 20 * (time.monotonic() - now))
            event = {"event": "progress", "frame": frame, "frames": total}
            if frame > before:
                rate = (frame - before) / (now - started)
                event |= {"framesPerSecond": round(rate, 3), "secondsLeft": (total - frame) / rate}
            report.progress(event)

        return show

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
        records = [self.record(piece) or {} for piece in self.pieces]
        damaged = [
            piece
            for piece, record in enumerate(records, 1)
            if record["sha256"] != [_hash(file) for file in self.files(piece)]
        ]
        for piece in damaged:
            (self.folder / f"{piece}.json").unlink()
        if damaged:
            why = "it has been damaged since it was rendered"
            raise Failure(f"piece {damaged[0]}", why, f"check the disk, and {_AGAIN}")
        for piece, record in enumerate(records, 1):
            if record["stream"] != records[0]["stream"]:
                why = f"it is encoded otherwise than piece 1, by {record['machine']}"
                remedy = f"see that all machines have the same ffmpeg, remove {piece}.json, and "
                raise Failure(f"piece {piece}", why, remedy + _AGAIN)
        plan = planned(job)
        first = self.pieces[1][0]
        name = plan.target.path(first) if isinstance(plan.target, Pattern) else plan.target
        with Unfinished(name, job.overwrite) as unfinished:
            if isinstance(plan.target, Pattern):
                for file in (file for piece in self.pieces for file in self.files(piece)):
                    try:
                        os.link(file, os.path.join(unfinished.path, file.name))
                    except OSError:  # another file system, or one without hard links
                        shutil.copyfile(file, os.path.join(unfinished.path, file.name))
                numbers = [number for numbers in self.pieces.values() for number in numbers]
                unfinished.commit([plan.target.path(number) for number in numbers])
            else:
                self._join_video(job, plan, unfinished)
        if self.state["keep"]:
            self.save(joined=True)
        else:
            (self.folder / "state.json").unlink()
            shutil.rmtree(self.folder, ignore_errors=True)

    def _join_video(self, job: Job, plan: Plan, unfinished: Unfinished) -> None:
        encoding = plan.encoding
        assert encoding
        media, times = encoding.media, encoding.times
        *firsts, frames = accumulate(map(len, self.pieces.values()), initial=0)
        begin = Fraction(times[0], media.ticks) if times else media.start
        begin = Fraction(0) if encoding.container.even else begin
        ticks, clock = (times, Fraction(media.ticks)) if times else (range(frames), media.rate)
        micro = [round((ticks[n] - ticks[0]) / clock * 1_000_000) for n in firsts]
        lines = [f"file {piece}/{self.files(piece)[0].name}" for piece in self.pieces]
        for at, (now, then) in enumerate(zip(micro, micro[1:])):
            lines[at] += f"\nduration {then - now}us"
        (self.folder / "list.txt").write_text("ffconcat version 1.0\n" + "\n".join(lines) + "\n")
        source = ["-xerror", "-itsoffset", f"{float(begin):.6f}", "-f", "concat", "-i", "list.txt"]
        picture = ["-c:v:0", "copy"]
        if not times and extension(job.output) in MILLISECONDS:
            picture += ["-bsf:v:0", _even_times(media.rate, begin)]
        write_beside(encoding, str(self.folder))
        place = f"{unfinished.path}/output.{extension(job.output)}"
        words = mux_command(encoding, source, picture, place, str(self.folder))
        nothing = subprocess.DEVNULL
        child = Child("join", words, 0, cwd=self.folder, stdin=nothing, stdout=nothing)
        try:
            code = child.finish()
        finally:
            child.kill()
        if code or child.complaints():
            ended = "it was killed" if code < 0 else "it gives no reason"
            why = f"joining failed: {(child.complaints() or [ended])[0]}"
            raise Failure(job.output, why, f"check the disk, and {_AGAIN}")
        if bool(with_times(probe(place)).times) != bool(times):
            raise Failure(job.output, "the times at its seams are uneven", "use glazel render")
        unfinished.commit(check(job, Report("none"), plan, unfinished, frames))


def _even_times(rate: Fraction, begin: Fraction) -> str:
    """Each piece has had its times rounded by a coarse clock: the frame's own are put back."""
    words = []
    for name in ("pts", "dts"):
        frame = f"round(({name.upper()}*TB-{float(begin):.6f})*{rate})"
        moment = f"{frame}/{rate.numerator}*{rate.denominator}+{float(begin):.6f}"
        words.append(f"{name}=round(({moment})/TB+0.000001)")
    return "setts=" + ":".join(words)


def _stream(path: Path) -> Any:
    """What must be the same of all pieces."""
    entries = "stream=codec_name,width,height,pix_fmt,extradata_hash"
    shown = ("-select_streams", "V:0", "-show_data_hash", "md5", "-show_entries", entries)
    return ffprobe(*shown, ffmpeg_name(str(path)))["streams"][0]


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
    lines: list[bytes] = []
    with suppress(OSError), open(log, "rb") as file:
        file.seek(max(0, file.seek(0, os.SEEK_END) - 4096))
        lines = file.read().splitlines(keepends=True)
    return [json.loads(line) for line in lines if re.fullmatch(rb"{.*}\n", line)]


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
        with open(place / f"wine-{number}.task", "wb") as lock:
            if not system.try_lock(lock):
                continue
            os.environ["GLAZEL_WINEPREFIX"] = str(place / f"wine-{number}")
            try:
                yield
            finally:
                words = {"WINEPREFIX": os.environ["GLAZEL_WINEPREFIX"]}
                subprocess.run(["wineserver", "-k"], env=dict(os.environ) | words, check=False)
            return


def _by_processes(farm: Farm, jobs: int, report: Report) -> Failure | None:
    """Whether something is still missing in the end."""
    waiting, tries = farm.missing(), Counter[int]()
    running: dict[int, subprocess.Popen[bytes]] = {}
    show = farm.progress(report)
    environment = os.environ | {"PYTHONPATH": str(system.PACKAGE.parent)}
    try:
        while waiting or running:
            with interrupts.held_back():
                while waiting and len(running) < jobs:
                    interrupts.check()
                    piece = waiting.pop(0)
                    command = [*_program("piece", farm), str(piece)]
                    with open(farm.log(piece), "wb") as log:
                        streams = {"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log}
                        running[piece] = system.start(command, 0, env=environment, **streams)
            time.sleep(_POLL)
            with interrupts.held_back():
                ended = [n for n, process in running.items() if process.poll() is not None]
            for piece in ended:
                code = running.pop(piece).returncode
                if code == 0 and farm.record(piece):
                    continue
                failure = farm.failure(piece, code)
                tries[piece] += 1
                if tries[piece] == _TRIES or failure.code == WRONG_USAGE:
                    raise failure
                report.say(f"{failure.brief}; it is tried again", "warning")
                waiting.append(piece)
            show()
    finally:
        with interrupts.held_back():
            _end(list(running.values()))

    try:
        farm.join(report)
    except Failure as error:
        return error
    return None


def _end(running: list[subprocess.Popen[bytes]]) -> None:
    for process in running:
        process.terminate()
    deadline = time.monotonic() + _GRACE
    for process in running:
        with suppress(subprocess.TimeoutExpired):
            process.wait(max(0.0, deadline - time.monotonic()))
        if process.returncode is None:
            system.kill(process)
            process.wait()


def _by_slurm(farm: Farm, more: list[str], report: Report) -> Failure | None:
    """The same."""
    if not farm.tasks():
        _submit(farm, more)
    ids = " ".join(farm.state["slurm"].values())
    report.say(f"{farm.folder}: Slurm jobs {ids} make and join it")
    try:
        cancelled = _watch(farm, report)
    except Interrupted:
        report.say(f"the jobs go on; the same command shows them again, scancel {ids} ends them")
        raise
    ended = Farm(farm.folder).state
    if not ended or ended.get("joined"):
        return None
    if cancelled:
        raise Failure(farm.state["output"], "its jobs were cancelled", _AGAIN)
    missing = farm.missing()
    joined = farm.log("join").exists()  # and so all pieces were there
    return farm.failure("join" if joined or not missing else missing[0], None)


def _watch(farm: Farm, report: Report) -> bool:
    """Until nothing goes on. Whether somebody else has cancelled the join."""
    show, join = farm.progress(report), farm.state["slurm"].get("join")
    while tasks := farm.tasks():
        show()
        if tasks == [join] and farm.missing():  # a piece has failed: it would wait for ever
            subprocess.run(["scancel", join], check=False)
            return False
        time.sleep(_POLL_SLURM)
    return join in farm.tasks("CANCELLED")


def _submit(farm: Farm, more: list[str]) -> None:
    """An array of the pieces that are missing, and the join behind it."""
    ids: dict[str, str] = {}
    missing = farm.missing()
    for name in ("join", *map(str, missing)):
        farm.log(name).unlink(missing_ok=True)
    if missing:
        task = f"{shlex.join(_program('piece', farm))} $SLURM_ARRAY_TASK_ID"
        array = "--array=" + ",".join(map(str, missing))
        ids["array"] = _sbatch(farm, f"{task} || exec {task}", [array, *more], "%a")
        farm.save(slurm=ids)
        more = [f"--dependency=afterok:{ids['array']}", *more]
    ids["join"] = _sbatch(farm, f"exec {shlex.join(_program('join', farm))} -", more, "join")
    farm.save(slurm=ids)


def _sbatch(farm: Farm, script: str, words: list[str], log: str) -> str:
    """The number of the job."""
    name = os.path.basename(farm.state["output"])
    command = ["sbatch", "--parsable", "--requeue", "--open-mode=truncate", f"--job-name={name}"]
    command += [f"--chdir={farm.folder}", f"--output=log-{log}.txt", *words]
    path = f"PYTHONPATH={shlex.quote(str(system.PACKAGE.parent))} PYTHONDONTWRITEBYTECODE=1"
    script = f"#!/bin/sh\nexport {path}\n{script}\n"
    done = subprocess.run(command, input=script, capture_output=True, text=True, check=False)
    if done.returncode:
        why = f"it does not take the job: {' '.join(done.stderr.split())}"
        raise Failure("sbatch", why, "check --sbatch and the state of the cluster (sinfo)")
    return done.stdout.strip().partition(";")[0]
