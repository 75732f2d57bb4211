"""Runs decoder, host program and encoder side by side, and knows afterwards whether all was well."""

from __future__ import annotations

import json
import os
import signal
import subprocess
import sys
import threading
import time
from collections.abc import Callable
from contextlib import ExitStack, suppress
from dataclasses import dataclass, field
from typing import Any

from . import interrupts, system
from .failure import FAILED, Failure, WRONG_USAGE
from .plan import Job, reach
from .probe import complaints
from .report import Report
from .y4m import Cut, Follower

_TAIL = 1 << 16  # bytes of a child's words that are kept
_POLL = 0.01  # seconds
_LONGEST_WAIT = 5.0  # for the words of a child that has ended
_LAST_WORDS = 0.5  # for those of one that was killed
_MOST_STARTS = 3
_MMCO = "mmco: unref short failure"


class WineFailed(Exception):
    """The host program did not start and said nothing, as happens on a busy machine."""


class Child:
    """A running program whose words are read all the time: it would stop if nobody did. `hear`
    gets each line, on another thread, and says whether what follows is of no interest."""

    def __init__(
        self,
        stage: str,
        command: list[str],
        group: int,
        hear: Callable[[bytes], bool] = lambda line: False,
        **streams: Any,
    ) -> None:
        self.stage, self.words, self.killed = stage, b"", False
        self._said_all = threading.Event()
        try:
            self.process = system.start(command, group, stderr=subprocess.PIPE, **streams)
        except OSError as error:
            why = f"it cannot be started: {error.strerror}"
            raise Failure(command[0], why, "install it and run again") from error
        threading.Thread(target=self._read, args=[hear], daemon=True).start()

    def _read(self, hear: Callable[[bytes], bool]) -> None:
        for line in self.process.stderr or ():
            self.words = (self.words + line)[-_TAIL:]
            if hear(line):
                self._said_all.set()
        self._said_all.set()

    def kill(self) -> None:
        if self.process.poll() is None:
            self.killed = True
            system.kill(self.process)

    def finish(self) -> int:
        """Its exit code."""
        code = self.process.wait()
        if not self.killed:
            # Programs of Wine's desktop that started along the way may hold the pipe much longer.
            self._said_all.wait(_LONGEST_WAIT if code >= 0 else _LAST_WORDS)
            self._said_all.set()  # once is enough
        return code

    def complaints(self) -> list[str]:
        return complaints(self.words)


def undecodable(job: Job, reason: str) -> Failure:
    if job.skip_bad_frames:
        remedy = "the rest was rendered; check the file"
        return Failure(job.input, f"not all of it could be decoded: {reason}", remedy)
    remedy = "check it; glazel render --skip-bad-frames renders what can be read"
    return Failure(job.input, f"decoding failed: {reason}", remedy)


@dataclass
class Run:
    """What to start. `encoder` makes the command once the size of the frames is known."""

    job: Job
    report: Report
    host: list[str]
    decoder: list[str] = field(default_factory=list)
    encoder: Callable[[tuple[int, int]], list[str]] | None = None
    size: tuple[int, int] | None = None
    head: bytes = b""  # what the decoder reads first; the rest is standard input, if that is INPUT
    follower: Follower | None = None  # of that rest
    cut: Cut | None = None  # where the input breaks off, though the decoder takes it for whole
    told: Callable[[str], str] = str  # what the children say, as a person is to read it
    children: list[Child] = field(default_factory=list)
    frames: int | None = None  # once the host program is done
    error: str = ""  # that it has told
    left_out: Failure | None = None  # what could not be read, when the job is to go on then

    def run(self) -> int:
        """How many frames were rendered. Throws Failure; no child is left either way."""
        for _ in range(_MOST_STARTS):
            self.children = []
            with interrupts.held_back():
                try:
                    self._start()
                    self._judge(self._wait())
                    return self.frames or 0
                except WineFailed:
                    continue
                finally:
                    self._end()
        raise Failure("Wine", "it does not start the host program", "run ./glazel info to see why")

    def _end(self) -> None:
        for child in self.children:
            child.kill()
        for child in self.children:
            child.finish()

    def _hear(self, line: bytes) -> bool:
        """The host program tells in JSON what it does."""
        try:
            event = json.loads(line)
        except ValueError:
            return False
        kind, text = event.get("event"), self._plain(event.get("text", ""))
        if kind == "size":
            self.size = self.size or (event["width"], event["height"])
        elif kind == "progress":
            self.report.progress(event)
        elif kind == "done":
            self.frames = event["frames"]
        elif kind == "error":
            self.error = text
        elif kind == "warning" or (kind == "note" and not text.endswith("before the failure")):
            self.report.say(text, kind)
        # Of frames that were left out it tells at the very end.
        return bool(self.error) or (kind == "done" and not self.job.skip_bad_frames)

    def _plain(self, text: str) -> str:
        return self.told(text).replace("glazelhost ", "glazel ")

    def _start(self) -> None:
        source: Any = subprocess.DEVNULL
        target: Any = subprocess.DEVNULL
        with ExitStack() as ours:  # ends of pipes that only the children are to hold

            def pipe() -> tuple[int, int]:
                ends = system.pipe()
                for end in ends:
                    ours.callback(os.close, end)
                return ends

            def start(stage: str, command: list[str], **more: Any) -> None:
                group = self.children[0].process.pid if self.children else 0
                self.children.append(Child(stage, command, group, **more))

            if self.decoder:
                source, write = pipe()
                given: Any = subprocess.DEVNULL
                if self.head:
                    given, behind = pipe()
                    threading.Thread(target=self._copy, args=[os.dup(behind)], daemon=True).start()
                start("decoder", self.decoder, stdin=given, stdout=write)
            elif self.job.input == "-":
                source = sys.stdin.buffer
            if self.encoder:
                frames, target = pipe()
            elif self.job.output == "-":
                target = sys.stdout.buffer
            command = [*system.host_command(), *self.host, "--progress", "json"]
            streams = {"stdin": source, "stdout": target, "env": system.host_environment()}
            start("host program", command, hear=self._hear, **streams)
            if self.encoder:
                host = self.children[-1].process
                while not self.size and host.poll() is None:
                    interrupts.check()
                    time.sleep(_POLL)
                last = sys.stdout.buffer if self.job.output == "-" else subprocess.DEVNULL
                if self.size:
                    start("encoder", self.encoder(self.size), stdin=frames, stdout=last)

    def _copy(self, target: int) -> None:
        with suppress(OSError), os.fdopen(target, "wb", 0) as file:  # the decoder says why it ends
            file.write(self.head)
            while self.job.input == "-" and (block := os.read(0, 1 << 20)):
                file.write(block)
                if self.follower:
                    self.follower.take(block)
            if self.follower:
                self.cut = self.follower.cut()  # before the decoder's end

    def _wait(self) -> list[Child]:
        """Those that have ended of themselves, once all have or one has failed."""

        def failed(child: Child) -> bool:
            if not child.process.poll():
                return False
            code = child.finish()
            if child.stage == "host program":
                skips = self.job.skip_bad_frames and self.frames is not None
                return not skips and not self._died_at_its_end(code)
            # A decoder whose reader wanted no more is fine; or the reader will say what is wrong.
            left_alone = b"Broken pipe" in child.words and not child.complaints()
            return child.stage != "decoder" or code < 0 or not left_alone

        while not any(map(failed, self.children)):
            if all(child.process.poll() is not None for child in self.children):
                break
            interrupts.check()
            time.sleep(_POLL)
        time.sleep(_POLL)  # those behind a failure fail too, those before it have failed by now
        ended = [child for child in self.children if child.process.poll() is not None]
        self._end()
        return [child for child in ended if not child.killed]

    def _died_at_its_end(self, code: int) -> bool:
        """Of the host program, whose work is done and whole then: Wine now and then crashes while a
        program's threads end. What it tells of frames that it left out would come later."""
        return code < 0 and self.frames is not None and not self.job.skip_bad_frames

    def _judge(self, ended: list[Child]) -> None:
        job, skip = self.job, self.job.skip_bad_frames
        codes = {child.stage: child.process.returncode for child in ended}
        if self._died_at_its_end(codes.get("host program", 0)):
            codes["host program"] = 0
        said = {child.stage: child.complaints() for child in ended}
        for stage, code in codes.items():
            if code < 0:
                why = f"the {stage} was killed ({signal.Signals(-code).name})"
                raise Failure(job.output, why, "see that memory is free, and run it again")
        if codes.get("encoder"):
            if not said["encoder"] and job.output == "-":
                raise Failure("standard output", "its reader has gone", "let it read to the end")
            reason = self.told((said["encoder"] or ["it gives no reason"])[0])
            remedy = "check the disk, or choose another kind of file or --codec"
            raise Failure(job.output, f"encoding failed: {reason}", remedy)
        bad = said.get("decoder", [])
        if "-ss" in self.decoder:  # said of frames before the wanted ones
            bad = [text for text in bad if _MMCO not in text]
        if self.cut and reach(job, self.cut.frame):
            bad.append(str(self.cut))
        if bad and not skip:
            raise undecodable(job, bad[0])
        if bad:
            self.left_out = undecodable(job, bad[0])
        if code := codes.get("host program", 0):
            words = next(child.words for child in ended if child.stage == "host program")
            if not words:
                raise WineFailed
            line = words.decode("utf-8", "replace").strip().splitlines()[-1]
            said_so, _, text = line.partition("glazelhost: ")
            failure = Failure("the host program", line, "see ./glazel info")
            if self.error or (code == WRONG_USAGE and not said_so):
                # The second is said before it knows that it is to speak JSON.
                code = WRONG_USAGE if code == WRONG_USAGE else FAILED
                failure = Failure(self.error or self._plain(text), code=code)
            if not skip or self.frames is None:
                raise failure
            self.left_out = failure
        if codes.get("decoder", 0) > 0 and job.frames is None and not skip:
            raise Failure(job.input, "decoding was stopped before its end", "run it again")
        if self.frames is None:
            raise Failure(job.output, "the host program ended too early", "run it again")
