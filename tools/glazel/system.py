"""What differs between Linux, where the programs run under Wine, and Windows."""

from __future__ import annotations

import ctypes
import errno
import os
import signal
import subprocess
import sys
from contextlib import suppress
from pathlib import Path
from typing import Any, BinaryIO

WINDOWS = sys.platform == "win32"
if sys.platform != "win32":
    import fcntl

    _LIBRARY = ctypes.CDLL(None, use_errno=True)

PACKAGE = Path(__file__).resolve().parent
_TREE = PACKAGE.parents[1]
# The source tree that this package stands in; none for an installation or an archive.
ROOT = _TREE if (_TREE / "CMakePresets.json").exists() else None
HOST = "glazelhost.exe"
_RENAME_NOREPLACE = 1
_PARENT_DEATH_SIGNAL = 1
_PIPE_SIZE = 1 << 20


def programs_folder() -> Path:
    """Where the host program is, or will be once it is built. GLAZEL_BUILD names a build folder
    that is used as it is."""
    if given := os.environ.get("GLAZEL_BUILD"):
        return Path(given).resolve() / "bin"
    if ROOT:
        return ROOT / "build/release/bin"
    return PACKAGE.parent if (PACKAGE.parent / HOST).exists() else PACKAGE.parent / "bin"


def host_command() -> list[str]:
    """What a command line of the host program begins with."""
    runner = (ROOT / "cmake" if ROOT else PACKAGE.parent) / "wine-run.sh"
    return [*([] if WINDOWS else [str(runner)]), str(programs_folder() / HOST)]


# Parts of Wine that nothing here is for; the last two, drives and the desktop, only pages have.
_LEFT_OUT = "mscoree,mshtml,winemenubuilder.exe,services.exe,explorer.exe="


def host_environment(desktop: bool = False) -> dict[str, str]:
    """The Wine prefix is the user's own where the tree is not. What needs no desktop goes without
    Wine's services and shell, which take most of the time of its start."""
    environment = dict(os.environ)
    if not WINDOWS and not desktop:
        environment.setdefault("WINEDLLOVERRIDES", _LEFT_OUT)
    if not WINDOWS and not (ROOT and os.access(ROOT / "build", os.W_OK)):
        cache = environment.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache")
        environment.setdefault("GLAZEL_WINEPREFIX", os.path.join(cache, "glazel/wineprefix"))
    return environment


def start(command: list[str], group: int, **streams: Any) -> subprocess.Popen[bytes]:
    """A child in the process group `group` (0: one of its own), which the terminal's Ctrl-C does
    not reach and which does not outlive this process."""
    if sys.platform == "win32":
        flags = subprocess.CREATE_NEW_PROCESS_GROUP
        return subprocess.Popen(command, creationflags=flags, **streams)

    def die_with_parent() -> None:
        _LIBRARY.prctl(_PARENT_DEATH_SIGNAL, signal.SIGKILL)
        # A child would inherit that this process does not listen to it any more.
        signal.signal(signal.SIGTERM, signal.SIG_DFL)

    try:
        os.killpg(group, 0)
    except ProcessLookupError:
        group = 0  # all of them have ended already
    return subprocess.Popen(command, process_group=group, preexec_fn=die_with_parent, **streams)


def kill(process: subprocess.Popen[bytes]) -> None:
    """Ends the child and whatever it has started in its group."""
    if sys.platform != "win32":
        with suppress(ProcessLookupError):
            os.killpg(os.getpgid(process.pid), signal.SIGKILL)
    process.kill()


def pipe() -> tuple[int, int]:
    """A pipe that holds much, where the system allows it."""
    ends = os.pipe()
    if sys.platform == "linux":
        with suppress(OSError):  # the user's share of such memory may be used up
            fcntl.fcntl(ends[1], fcntl.F_SETPIPE_SZ, _PIPE_SIZE)
    return ends


def try_lock(file: BinaryIO) -> bool:
    """Whether nobody else holds it; on Windows an open file cannot be deleted anyway."""
    if sys.platform != "win32":
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError as error:
            return error.errno not in (errno.EWOULDBLOCK, errno.EACCES)
    return True


def sync(path: str) -> None:
    """What was written is on the disk before it gets its name."""
    with open(path, "rb+") as file:
        os.fsync(file.fileno())


def rename_new(source: str, target: str) -> None:
    """Throws FileExistsError when there is a `target`, even one that has just been made."""
    if sys.platform == "win32":
        os.rename(source, target)
        return
    try:
        os.link(source, target)
    except FileExistsError:
        raise
    except OSError:  # no hard links on this file system
        names = os.fsencode(source), os.fsencode(target)
        if _LIBRARY.renameat2(-100, names[0], -100, names[1], _RENAME_NOREPLACE) != 0:
            number = ctypes.get_errno()
            raise OSError(number, os.strerror(number), target) from None
    else:
        os.unlink(source)
