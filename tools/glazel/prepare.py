"""Installs and builds what rendering needs, the first time, and brings the build up to date later.
"""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
import time
from pathlib import Path
from typing import BinaryIO

from . import interrupts, system
from .failure import Failure

if sys.platform != "win32":
    import fcntl

_LONG = 1.0  # seconds: what takes longer is told
_POLL = 0.005  # seconds
_SHOWN = 30  # lines of a failed step
_LAUNCHER = """#!/bin/sh
GLAZEL_COMMAND=$0 PYTHONPATH='{}' PYTHONDONTWRITEBYTECODE=1 exec '{}' -P -m glazel "$@"
"""
_TARGETS = ("glazelhost", "GlazelDX_x64", "GZ3Renderer_x64")


def programs() -> None:
    """Sees to it that the programs are there. Throws Failure."""
    root, folder = system.ROOT, system.programs_folder()
    build, is_there = folder.parent, (folder / system.HOST).exists()
    given = os.environ.get("GLAZEL_BUILD")
    if not root or system.WINDOWS or given:
        if not is_there:
            what = "build it, or unset GLAZEL_BUILD" if given else "unpack or install all again"
            raise Failure("glazel", f"{system.HOST} is not in {folder}", what)
        return
    if is_there and not os.access(root, os.W_OK):
        return  # somebody else's tree, which is built
    (root / "build").mkdir(exist_ok=True)
    _step("installing packages", root / "setup.sh", "--render")
    # Two renders at once must not build at once.
    with open(root / "build/render.lock", "wb") as lock:
        _wait_for(lock)
        first = not (build / "build.ninja").exists()
        if first:
            words = ("--preset", "release", "-B", build, "-DGLAZEL_TESTS=OFF")
            _step("configuring", "cmake", *words)
        _step("building", "cmake", "--build", build, "--target", *_TARGETS)
        if first:
            _step("preparing Wine", system.host_command()[0], "cmd", "/c", "exit")


def install(prefix: str) -> None:
    """Copies what rendering needs, so that the tree may go, or is of no concern to other users."""
    root = system.ROOT
    if not root or system.WINDOWS:
        why = "this is no source tree"
        raise Failure("install", why, "run ./glazel install in the tree that is to be installed")
    programs()
    place = Path(prefix).resolve() / "lib/glazel"
    launcher = Path(prefix) / "bin/glazel"
    try:
        for folder in (place / "bin", place / "glazel", launcher.parent):
            folder.mkdir(parents=True, exist_ok=True)
        for name in (system.HOST, "GlazelDX_x64.dll", "GZ3Renderer_x64.dll"):
            shutil.copy2(system.programs_folder() / name, place / "bin")
        for module in system.PACKAGE.glob("*.*"):
            shutil.copy2(module, place / "glazel")
        shutil.copy2(root / "cmake/wine-run.sh", place)
        shutil.copytree(root / "samples/looks", place / "looks", dirs_exist_ok=True)
        words = [str(word).replace("'", "'\\''") for word in (place, sys.executable)]
        launcher.write_text(_LAUNCHER.format(*words), encoding="utf-8")
        launcher.chmod(0o755)
    except OSError as error:
        why = f"it cannot be written: {error.strerror}"
        raise Failure(error.filename or prefix, why, "choose a folder of your own") from error


def _wait_for(lock: BinaryIO) -> None:
    """Takes the lock; tells of the other one once it takes its time."""
    long_after = time.monotonic() + _LONG
    while not system.try_lock(lock):
        if time.monotonic() > long_after:
            print("glazel: waiting for another glazel that builds ...", file=sys.stderr)
            fcntl.flock(lock, fcntl.LOCK_EX)
            return
        time.sleep(0.02)


def _step(name: str, *command: str | Path) -> None:
    """Runs one step; tells of it once it takes its time, and shows its words when it fails."""
    assert system.ROOT
    log = system.ROOT / "build/render.log"
    started, told = time.monotonic(), False
    with open(log, "a+b") as words:
        begin = words.tell()
        with interrupts.held_back(), subprocess.Popen(
            command, cwd=system.ROOT, stdin=subprocess.DEVNULL, stdout=words, stderr=words
        ) as process:
            try:
                while process.poll() is None:
                    if not told and time.monotonic() - started > _LONG:
                        told = True
                        print(f"glazel: {name} ...", file=sys.stderr, end="", flush=True)
                    interrupts.check()
                    time.sleep(_POLL)
            finally:
                process.kill()  # after Ctrl-C
                if told:
                    print(f" {time.monotonic() - started:.0f} s", file=sys.stderr)
        words.seek(begin)
        lines = words.read().decode("utf-8", "replace").splitlines()
    if process.returncode != 0:
        print("\n".join(line[:300] for line in lines[-_SHOWN:]), file=sys.stderr)
        raise Failure(name, f"it failed, see above and {log}", "mend that and run again")
