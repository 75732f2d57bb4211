"""What a user is told while a render goes on, on standard error."""

from __future__ import annotations

import json
import shutil
import sys
import time
from typing import Any

_BETWEEN_LINES = 5.0  # seconds


class Report:
    """`style`: auto, bar, plain, json or none."""

    def __init__(self, style: str) -> None:
        usual = "bar" if sys.stderr.isatty() else "plain"
        self.style = usual if style == "auto" else style
        self._bar = 0  # letters of the line that is being written over
        self._shown = time.monotonic()

    def say(self, text: str, kind: str = "note") -> None:
        """`kind`: note, warning or error."""
        if self.style == "json":
            self._event({"event": kind, "text": text})
        elif self.style != "none" or kind == "error":
            blank = "\r" + " " * self._bar + "\r" if self._bar else ""
            self._bar = 0
            self._write(f"{blank}glazel: {'warning: ' if kind == 'warning' else ''}{text}\n")

    def progress(self, event: dict[str, Any]) -> None:
        frame, total = event.get("frame", 0), event.get("frames")
        rate, left = event.get("framesPerSecond"), event.get("secondsLeft")
        text = f"frame {frame}" + (f" of {total}, {100 * frame // total} %" if total else "")
        text += f", {rate:.1f} frames/s" if rate else ""
        text += f", {int(left)} s left" if left else ""
        now = time.monotonic()
        if self.style == "json":
            self._event(event)
        elif self.style == "bar":
            text = text[: shutil.get_terminal_size().columns - 1]
            self._write("\r" + text.ljust(self._bar))
            self._bar = len(text)
        elif now - self._shown > _BETWEEN_LINES:
            self._shown = now
            self.say(text)

    def done(self, output: str, frames: int, seconds: float) -> None:
        rate = frames / max(seconds, 0.001)
        if self.style == "json":
            event = {"event": "done", "output": output, "frames": frames}
            self._event(event | {"seconds": round(seconds, 3), "framesPerSecond": round(rate, 3)})
        elif frames == 1:
            self.say(f"{output}: 1 frame in {seconds:.1f} s")
        else:
            self.say(f"{output}: {frames} frames in {seconds:.1f} s, {rate:.1f} frames/s")

    def _event(self, event: dict[str, Any]) -> None:
        self._write(json.dumps(event) + "\n")

    @staticmethod
    def _write(text: str) -> None:
        sys.stderr.write(text.encode("utf-8", "surrogateescape").decode("utf-8", "replace"))
        sys.stderr.flush()
