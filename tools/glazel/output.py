"""An output that appears under its name when it is whole, and never replaces another by accident."""

from __future__ import annotations

import os
import shutil
import tempfile
from contextlib import suppress

from . import system
from .failure import Failure
from .names import check_target, exists_already

_MARK = ".glazel-"  # what is left of a render that was killed begins with this
_LOCK = "lock"


class Unfinished:
    """A folder beside the output, named `first`, for what is not whole yet."""

    def __init__(self, first: str, overwrite: bool) -> None:
        self.overwrite = overwrite
        place = os.path.dirname(first) or "."
        remove_leftovers(place)
        try:
            self.path = tempfile.mkdtemp(prefix=_MARK, dir=place)
            self._lock = open(os.path.join(self.path, _LOCK), "wb")
        except OSError as error:
            why = f"it cannot be created: {error.strerror}"
            raise Failure(first, why, "check the right to write to its folder") from error
        system.try_lock(self._lock)

    def __enter__(self) -> Unfinished:
        return self

    def __exit__(self, *_: object) -> None:
        self._lock.close()
        shutil.rmtree(self.path, ignore_errors=True)

    def files(self) -> list[str]:
        """In the order of the names."""
        return sorted(set(os.listdir(self.path)) - {_LOCK})

    def commit(self, names: list[str]) -> None:
        """Gives the files, in the order of their names, the final `names`."""
        sources = [os.path.join(self.path, file) for file in self.files()]
        for source in sources:
            system.sync(source)
        for name in names:
            check_target(name, self.overwrite)
        done: list[str] = []
        try:
            for source, name in zip(sources, names, strict=True):
                try:
                    if self.overwrite:
                        os.replace(source, name)
                    else:
                        system.rename_new(source, name)
                except FileExistsError as error:
                    raise exists_already(name) from error
                except OSError as error:
                    why = f"it cannot get its name: {error.strerror}"
                    raise Failure(name, why, "check the right to write to its folder") from error
                done.append(name)
        except BaseException:
            for name in done if not self.overwrite else ():
                os.unlink(name)
            raise


def remove_leftovers(folder: str) -> None:
    """Removes what renders that no longer run have left in `folder`."""
    with suppress(OSError):
        for name in os.listdir(folder):
            path = os.path.join(folder, name)
            if name.startswith(_MARK):
                with suppress(OSError):
                    with open(os.path.join(path, _LOCK), "rb") as lock:
                        free = system.try_lock(lock)
                    if free:
                        os.unlink(lock.name)  # on Windows this is what tells whether it is free
                        shutil.rmtree(path)
