"""Where a Y4M stream breaks off; ffmpeg takes one that ends within a frame for whole."""

from __future__ import annotations

import os
from dataclasses import dataclass

from .probe import Media

LONGEST_HEADER = 1024
_FRAME = b"FRAME"  # begins the line in front of each frame
_LONGEST_LINE = 80  # of these; ffmpeg takes no longer one


@dataclass(frozen=True)
class Cut:
    frame: int  # counted from 1
    missing: int  # bytes of it
    length: int

    def __str__(self) -> str:
        of = f"{self.missing} of its {self.length} bytes"
        return f"the data ends in frame {self.frame}: {of} are missing"


class Follower:
    """Counts along with the bytes behind the stream's header. What follows a line that begins no
    frame is ffmpeg's to refuse."""

    def __init__(self, media: Media) -> None:
        self.length = media.format.frame_size(media.width, media.height)
        self.frames = 0  # that have begun
        self.missing = 0  # of the last of them
        self._line = b""  # what there is of the one before the next
        self.lost = False  # nothing behind is counted

    def take(self, data: bytes) -> None:
        at = 0
        while at < len(data) and not self.lost:
            if self.missing:
                step = min(self.missing, len(data) - at)
                self.missing -= step
                at += step
                continue
            end = data.find(b"\n", at) + 1
            self._line += data[at : end or len(data)]
            at = end or len(data)
            known = self._line.startswith(_FRAME[: len(self._line)])
            self.lost = not known or len(self._line) > _LONGEST_LINE
            if end:
                self.frames, self.missing, self._line = self.frames + 1, self.length, b""

    def cut(self) -> Cut | None:
        if self.lost:
            return None
        if self._line:
            return Cut(self.frames + 1, self.length, self.length)
        return Cut(self.frames, self.missing, self.length) if self.missing else None


def cut_of(path: str, media: Media) -> Cut | None:
    follower = Follower(media)
    with open(path, "rb") as file:
        size = os.fstat(file.fileno()).st_size
        file.readline(LONGEST_HEADER)
        while not follower.lost and (line := file.read(_LONGEST_LINE)):
            follower.take(line)
            step = min(follower.missing, size - file.tell())
            file.seek(step, os.SEEK_CUR)
            follower.missing -= step
    return follower.cut()
