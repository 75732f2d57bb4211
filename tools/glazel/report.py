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
        self.style = style
        if style == "auto":
            self.style = "bar" if sys.stderr.isatty() else "plain"
        self._bar = 0
        self._shown = time.monotonic()

    def note(self, text: str) -> None:
        self._say("note", text)

    def warn(self, text: str) -> None:
        self._say("warning", text, "warning: ")

    def fail(self, text: str) -> None:
        self._say("error", text)

    def progress(self, event: dict[str, Any]) -> None:
        now = time.monotonic()
        if self.style == "json":
            self._event(event)
        elif self.style == "bar":
            text = _progress_text(event)[: shutil.get_terminal_size().columns - 1]
            self._write("\r" + text.ljust(self._bar))
            self._bar = len(text)
        elif self.style == "plain" and now - self._shown > _BETWEEN_LINES:
            self._shown = now
            self._line(_progress_text(event))

    def done(self, output: str, frames: int, seconds: float) -> None:
        rate = frames / max(seconds, 0.001)
        if self.style == "json":
            event = {"event": "done", "output": output, "frames": frames}
            self._event(event | {"seconds": round(seconds, 3), "framesPerSecond": round(rate, 3)})
            return
        count = "1 frame" if frames == 1 else f"{frames} frames"
        rate_text = f", {rate:.1f} frames/s" if frames > 1 else ""
        self.note(f"{output}: {count} in {seconds:.1f} s{rate_text}")

    def _say(self, event: str, text: str, before: str = "") -> None:
        if self.style == "json":
            self._event({"event": event, "text": text})
        elif self.style != "none" or event == "error":
            self._line(before + text)

    def _event(self, event: dict[str, Any]) -> None:
        self._write(json.dumps(event) + "\n")

    def _line(self, text: str) -> None:
        blank = "\r" + " " * self._bar + "\r" if self._bar else ""
        self._bar = 0
        self._write(f"{blank}glazel: {text}\n")

    @staticmethod
    def _write(text: str) -> None:
        sys.stderr.write(text.encode("utf-8", "surrogateescape").decode("utf-8", "replace"))
        sys.stderr.flush()


def _progress_text(event: dict[str, Any]) -> str:
    frame, total = event.get("frame", 0), event.get("frames")
    text = f"frame {frame}" + (f" of {total}, {100 * frame // total} %" if total else "")
    rate, left = event.get("framesPerSecond"), event.get("secondsLeft")
    text += f", {rate:.1f} frames/s" if rate else ""
    return text + (f", {int(left)} s left" if left else "")
