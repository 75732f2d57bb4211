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
from dataclasses import dataclass, field
from typing import Any, BinaryIO

from . import system
from .failure import Failure
from .plan import Job
from .probe import complaints
from .report import Report

_TAIL = 1 << 16  # bytes of a child's words that are kept
_POLL = 0.01  # seconds
_LONGEST_WAIT = 5.0  # for the words of a child that has ended
_MOST_STARTS = 3
_MMCO = "mmco: unref short failure"


class WineFailed(Exception):
    """The host program did not start and said nothing, as happens on a busy machine."""


class Child:
    """A running program whose words are read all the time: it would stop if nobody did."""

    def __init__(self, stage: str, command: list[str], group: int, **streams: Any) -> None:
        self.stage = stage
        try:
            self.process = system.start(command, group, stderr=subprocess.PIPE, **streams)
        except OSError as error:
            why = f"it cannot be started: {error.strerror}"
            raise Failure(command[0], why, "install it and run again") from error
        self.words = b""
        self.killed = False
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self) -> None:
        for line in self.process.stderr or ():
            self.hear(line)

    def hear(self, line: bytes) -> None:
        """On the reader's thread."""
        self.words = (self.words + line)[-_TAIL:]

    def kill(self) -> None:
        if self.process.poll() is None:
            self.killed = True
            system.kill(self.process)

    def said_all(self) -> bool:
        """What it says after this is of no interest."""
        return self.killed or (self.process.returncode or 0) < 0

    def finish(self) -> None:
        self.process.wait()
        # Programs of Wine's desktop that started along the way may hold the pipe much longer.
        deadline = time.monotonic() + _LONGEST_WAIT
        while not self.said_all() and self._reader.is_alive() and time.monotonic() < deadline:
            self._reader.join(_POLL)

    def complaints(self) -> list[str]:
        return complaints(self.words)


class Host(Child):
    """The host program tells in JSON what it does."""

    def __init__(
        self,
        report: Report,
        told: Callable[[str], str],
        command: list[str],
        group: int,
        **more: Any,
    ) -> None:
        self._report, self._told = report, told
        self.size: tuple[int, int] | None = None
        self.frames: int | None = None  # once it is done
        self.error = ""
        super().__init__("host program", command, group, **more)

    def hear(self, line: bytes) -> None:
        super().hear(line)
        try:
            event = json.loads(line)
        except ValueError:
            return
        kind, text = event.get("event"), self.told(event.get("text", ""))
        if kind == "size":
            self.size = (event["width"], event["height"])
        elif kind == "progress":
            self._report.progress(event)
        elif kind == "done":
            self.frames = event["frames"]
        elif kind == "error":
            self.error = text
        elif kind == "warning":
            self._report.warn(text)
        elif kind == "note" and not text.endswith("before the failure"):
            self._report.note(text)

    def said_all(self) -> bool:
        return super().said_all() or self.frames is not None or bool(self.error)

    def told(self, text: str) -> str:
        return self._told(text).replace("glazelhost ", "glazel ")


@dataclass
class Run:
    """What to start. `encoder` makes the command once the size of the frames is known."""

    job: Job
    report: Report
    host: list[str]
    decoder: list[str] | None = None
    encoder: Callable[[tuple[int, int]], list[str]] | None = None
    size: tuple[int, int] | None = None
    head: bytes = b""  # of standard input, read already
    told: Callable[[str], str] = str  # what the host program says, as a person is to read it
    children: list[Child] = field(default_factory=list)

    def run(self) -> int:
        """How many frames were rendered. Throws Failure; no child is left either way."""
        for _ in range(_MOST_STARTS):
            self.children = []
            try:
                return self._run()
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

    def _run(self) -> int:
        ours = []  # ends of pipes that only the children are to hold
        source: int | BinaryIO = subprocess.DEVNULL
        target: int | BinaryIO = subprocess.DEVNULL
        try:
            if self.decoder:
                source, write = system.pipe()
                ours += [source, write]
                given = self._standard_input() if self.job.input == "-" else subprocess.DEVNULL
                self._start("decoder", self.decoder, given, write)
            elif self.job.input == "-":
                source = sys.stdin.buffer
            if self.encoder:
                frames, target = system.pipe()
                ours.append(target)
            elif self.job.output == "-":
                target = sys.stdout.buffer
            streams = {"stdin": source, "stdout": target, "env": system.host_environment()}
            command = [*system.host_command(), *self.host, "--progress", "json"]
            host = Host(self.report, self.told, command, self._group(), **streams)
            self.children.append(host)
        finally:
            for end in ours:
                os.close(end)
        if self.encoder:
            try:
                while not (size := self.size or host.size) and host.process.poll() is None:
                    time.sleep(_POLL)
                if size:
                    last = sys.stdout.buffer if self.job.output == "-" else subprocess.DEVNULL
                    self._start("encoder", self.encoder(size), frames, last)
            finally:
                os.close(frames)
        self._wait(host)
        return host.frames or 0

    def _group(self) -> int:
        return self.children[0].process.pid if self.children else 0

    def _start(self, stage: str, command: list[str], source: Any, target: Any) -> None:
        child = Child(stage, command, self._group(), stdin=source, stdout=target)
        self.children.append(child)

    def _standard_input(self) -> int:
        """Standard input with what was read of it in front."""
        read, write = system.pipe()

        def copy() -> None:
            with os.fdopen(write, "wb", 0) as target:
                try:
                    target.write(self.head)
                    while block := sys.stdin.buffer.raw.read(1 << 20):  # type: ignore
                        target.write(block)
                except OSError:
                    pass  # the decoder has ended, and says why

        threading.Thread(target=copy, daemon=True).start()
        return read

    def _wait(self, host: Host) -> None:
        while True:
            codes = [child.process.poll() for child in self.children]
            failed = any(code and not self._may(child) for child, code in zip(self.children, codes))
            if failed or None not in codes:
                break
            time.sleep(_POLL)
        time.sleep(_POLL)  # those behind a failure fail too, those before it have failed by now
        ended = [child for child in self.children if child.process.poll() is not None]
        self._end()
        self._judge(host, [child for child in ended if not child.killed])

    def _may(self, child: Child) -> bool:
        """A decoder whose reader wanted no more, or has failed and will say so itself."""
        child.finish()
        left_alone = b"Broken pipe" in child.words and not child.complaints()
        return child.stage == "decoder" and child.process.returncode > 0 and left_alone

    def _judge(self, host: Host, ended: list[Child]) -> None:
        job = self.job
        codes = {child.stage: child.process.returncode for child in ended}
        said = {child.stage: child.complaints() for child in ended}
        for stage, code in codes.items():
            if code < 0:
                why = f"the {stage} was killed ({signal.Signals(-code).name})"
                raise Failure(job.output, why, "see that memory is free, and run it again")
        if codes.get("encoder"):
            if not said["encoder"] and job.output == "-":
                raise Failure("standard output", "its reader has gone", "let it read to the end")
            reason = (said["encoder"] or ["it gives no reason"])[0]
            remedy = "check the disk, or choose another kind of file or --codec"
            raise Failure(job.output, f"encoding failed: {reason}", remedy)
        if "-ss" in (self.decoder or ()):  # said of frames before the wanted ones
            said["decoder"] = [text for text in said.get("decoder", []) if _MMCO not in text]
        if said.get("decoder") and not job.skip_bad_frames:
            why = f"decoding failed: {said['decoder'][0]}"
            remedy = "check it; glazel render --skip-bad-frames renders what can be read"
            raise Failure(job.input, why, remedy)
        code = codes.get("host program", 0)
        if code:
            if host.error:
                raise Failure(*parts(host.error), code=2 if code == 2 else 1)
            if not host.words:
                raise WineFailed
            line = host.words.decode("utf-8", "replace").strip().splitlines()[-1]
            said_so, _, text = line.partition("glazelhost: ")
            if code == 2 and not said_so:  # before it knew that it is to speak JSON
                raise Failure(*parts(host.told(text)), code=2)
            raise Failure("the host program", line, "see ./glazel info")
        if codes.get("decoder", 0) > 0 and job.frames is None and not job.skip_bad_frames:
            raise Failure(job.input, "decoding was stopped before its end", "run it again")
        if host.frames is None:
            raise Failure(job.output, "the host program ended too early", "run it again")


def parts(text: str) -> tuple[str, str, str]:
    """The host's own line in three, as far as it has so many."""
    what, _, rest = text.partition(": ")
    why, _, remedy = rest.rpartition("; ")
    return (what, why, remedy) if why else (what, rest, "see ./glazel render --help")
