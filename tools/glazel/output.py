"""An output that appears under its name when it is whole, and never replaces another by accident."""

from __future__ import annotations

import os
import shutil
import uuid
from typing import BinaryIO

from . import system
from .failure import Failure
from .names import Pattern, check_target, exists_already, extension

_MARK = ".glazel-"  # what is left of a render that was killed begins with this
_LOCK = "lock"


class Unfinished:
    """A file, or a folder of files, beside the output, until it is whole."""

    def __init__(self, target: str | Pattern, overwrite: bool, folder: bool) -> None:
        self.overwrite = overwrite
        first = target.path(1) if isinstance(target, Pattern) else target
        place = os.path.dirname(first) or "."
        remove_leftovers(place)
        self.path = os.path.join(place, f"{_MARK}{uuid.uuid4().hex[:12]}")
        self._lock: BinaryIO
        try:
            if folder:
                os.mkdir(self.path)
                self._lock = open(os.path.join(self.path, _LOCK), "wb")
            else:
                self.path += f".{extension(first)}"
                self._lock = open(self.path, "xb")
        except OSError as error:
            why = f"it cannot be created: {error.strerror}"
            raise Failure(first, why, "check the right to write to its folder") from error
        system.try_lock(self._lock)

    def __enter__(self) -> Unfinished:
        return self

    def __exit__(self, *_: object) -> None:
        self.discard()

    def files(self) -> list[str]:
        """What is in the folder, in the order of the names."""
        return sorted(set(os.listdir(self.path)) - {_LOCK})

    def commit(self, names: list[str]) -> None:
        """Gives the file, or those of the folder in the order of their names, the final `names`."""
        if os.path.isdir(self.path):
            sources = [os.path.join(self.path, file) for file in self.files()]
        else:
            sources = [self.path]
            self._lock.close()
        for source in sources:
            system.sync(source)
        for name in names:
            check_target(name, self.overwrite)
        done: list[str] = []
        try:
            for source, name in zip(sources, names, strict=True):
                self._rename(source, name)
                done.append(name)
        except BaseException:
            if not self.overwrite:
                for name in done:
                    os.unlink(name)
            raise

    def discard(self) -> None:
        self._lock.close()
        if os.path.isdir(self.path):
            shutil.rmtree(self.path, ignore_errors=True)
        elif os.path.exists(self.path):
            os.unlink(self.path)

    def _rename(self, source: str, target: str) -> None:
        try:
            if self.overwrite:
                os.replace(source, target)
            else:
                system.rename_new(source, target)
        except FileExistsError as error:
            raise exists_already(target) from error
        except OSError as error:
            why = f"it cannot get its name: {error.strerror}"
            raise Failure(target, why, "check the right to write to its folder") from error


def remove_leftovers(folder: str) -> None:
    """Removes what renders that no longer run have left in `folder`."""
    try:
        names = [name for name in os.listdir(folder) if name.startswith(_MARK)]
    except OSError:
        return
    for name in names:
        path = os.path.join(folder, name)
        lock = os.path.join(path, _LOCK) if os.path.isdir(path) else path
        try:
            with open(lock, "rb") as file:
                if not system.try_lock(file):
                    continue
            if os.path.isdir(path):
                shutil.rmtree(path)
            else:
                os.unlink(path)
        except OSError:
            continue  # another render's, which may have just cleaned up itself
