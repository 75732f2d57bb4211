"""File names: numbered sequences, names that ffmpeg takes literally, which file is which."""

from __future__ import annotations

import difflib
import os
import re
from dataclasses import dataclass

from .failure import Failure, WRONG_USAGE

# A number in the name of a picture: %d, %04d or ####. Elsewhere a per cent sign is only a letter.
_NUMBER = re.compile(r"%(?:0(\d{1,2}))?d|(#+)")
# The host program reads and writes the first of these itself.
HOST_PICTURES = frozenset("png jpg jpeg tif tiff bmp".split())
PICTURES = HOST_PICTURES.union("exr dpx ppm pgm pam pfm phm qoi webp tga jp2 j2k jxl avif".split())
# What ffmpeg needs before -i for a list of pictures on its standard input.
LISTED = ("-f", "concat", "-safe", "0", "-protocol_whitelist", "file,pipe,fd")


def ffmpeg_name(path: str) -> str:
    """Nothing in such a name is a protocol or an option."""
    return "file:" + path


def extension(path: str) -> str:
    return os.path.splitext(path)[1][1:].lower()


def is_picture(path: str) -> bool:
    return extension(path) in PICTURES


@dataclass(frozen=True)
class Pattern:
    """The names of a numbered sequence."""

    folder: str
    before: str
    digits: int
    after: str

    @staticmethod
    def parse(path: str) -> Pattern | None:
        folder, name = os.path.split(path)
        found = list(_NUMBER.finditer(name.replace("%%", "\0\0")))
        if len(found) != 1:
            return None
        number = found[0]
        digits = len(number[2]) if number[2] else int(number[1] or 1)
        before, after = name[: number.start()], name[number.end() :]
        return Pattern(folder, before.replace("%%", "%"), digits, after.replace("%%", "%"))

    def path(self, number: int) -> str:
        return os.path.join(self.folder, f"{self.before}{number:0{self.digits}}{self.after}")

    def for_host(self) -> str:
        """It expands the file name alone."""
        number = f"%0{self.digits}d" if self.digits > 1 else "%d"
        ends = (text.replace("%", "%%") for text in (self.before, self.after))
        return os.path.join(self.folder, number.join(ends))

    def for_ffmpeg(self) -> str:
        """It expands folders too."""
        return os.path.join(self.folder.replace("%", "%%"), os.path.basename(self.for_host()))

    def listed(self, numbers: list[int]) -> bytes:
        """A list for ffmpeg of these pictures; in place of one left out between them comes the one
        before, so that places in the list go with the numbers. Durations keep the times rising."""
        lines = list[str]()
        for number, following in zip(numbers, [*numbers[1:], numbers[-1] + 1]):
            name = ffmpeg_name(self.path(number)).replace("'", r"'\''")
            rows = f"file '{name}'", "option pattern_type none", "duration 0.04"
            lines += rows * (following - number)
        return os.fsencode("\n".join(lines) + "\n")

    def numbers(self) -> list[int]:
        """Of the files that there are, in order."""
        form = re.compile(re.escape(self.before) + r"(\d+)" + re.escape(self.after), re.IGNORECASE)
        names = os.listdir(self.folder or ".") if os.path.isdir(self.folder or ".") else []
        numbers = [int(found[1]) for found in map(form.fullmatch, names) if found]
        return sorted(n for n in numbers if os.path.exists(self.path(n)))


def input_pattern(path: str) -> Pattern | None:
    """A name is a pattern only when there is no file of that very name."""
    return None if os.path.exists(path) else Pattern.parse(path)


def look_files(word: str) -> list[str]:
    """The files of FILE, FILE#ID or CDL|LUT."""
    parts = [word] if os.path.exists(word) else word.split("|")
    files = [p if os.path.exists(p) else p.rpartition("#")[0] or p for p in parts]
    return [file for file in files if file]


def suggestion(word: str, known: list[str]) -> str:
    near = difflib.get_close_matches(word, known, 1)
    return f"did you mean {near[0]}?" if near else ""


def missing(path: str) -> Failure:
    """The error for an input that is not there."""
    folder, name = os.path.split(path)
    if folder and not os.path.isdir(folder):
        return Failure(path, f"there is no folder {folder}", "check the path")
    near = suggestion(name, os.listdir(folder or "."))
    return Failure(path, "there is no such file", near or "check the path")


def check_apart(outputs: list[str], others: dict[str, list[str]]) -> None:
    """`others`: what it is -> paths."""

    def identity(path: str) -> object:
        """Equal for two names of one file, also of one that is yet to be made."""
        try:
            found = os.stat(path)
            return found.st_dev, found.st_ino
        except OSError:
            return os.path.realpath(path)

    made = {identity(path): path for path in outputs}
    for what, paths in others.items():
        for path in paths:
            if output := made.get(identity(path)):
                raise Failure(output, f"it is {what} too", "name another file", WRONG_USAGE)


def check_target(path: str, overwrite: bool) -> None:
    """Whether a file could get that name."""
    folder = os.path.dirname(path) or "."
    if not os.path.isdir(folder):
        raise Failure(path, f"the folder {folder} does not exist", "create it or choose another")
    if os.path.isdir(path):
        raise Failure(path, "it is a folder", "name a file in it")
    if os.path.exists(path) and not os.path.isfile(path):
        raise Failure(path, "it is a device or a pipe", "write to - and redirect it there")
    if os.path.lexists(path) and not overwrite:
        raise exists_already(path)


def exists_already(path: str) -> Failure:
    remedy = "give --overwrite to replace it, or choose another name"
    return Failure(path, "it exists already", remedy)
