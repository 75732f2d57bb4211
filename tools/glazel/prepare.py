"""Installs and builds what rendering needs, the first time, and brings the build up to date later.
"""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

from . import system
from .failure import Failure

if sys.platform != "win32":
    import fcntl

_LONG = 3.0  # seconds: what takes longer is told
_SHOWN = 30  # lines of a failed step
_LAUNCHER = """#!/bin/sh
PYTHONPATH='{}' PYTHONDONTWRITEBYTECODE=1 exec python3 -P -m glazel "$@"
"""
_TARGETS = ["glazelhost", "GlazelDX_x64", "GZ3Renderer_x64"]


def programs() -> None:
    """Sees to it that the programs are there. Throws Failure."""
    root = system.find_root()
    if root is None or system.WINDOWS:
        if not (system.programs_folder() / system.HOST).exists():
            why = f"{system.HOST} is not in {system.programs_folder()}"
            raise Failure("glazel", why, "unpack the whole archive, or install again")
        return
    build = system.programs_folder().parent
    if not os.access(root, os.W_OK) and (system.programs_folder() / system.HOST).exists():
        return  # somebody else's tree, which is built
    _step("installing packages", [str(root / "setup.sh"), "--render"], None)
    (root / "build").mkdir(exist_ok=True)
    # Two renders at once must not build at once.
    with open(root / "build/render.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        first = not (build / "build.ninja").exists()
        log = root / "build/render.log"
        if first:
            configure = ["cmake", "--preset", "release", "-B", str(build), "-DGLAZEL_TESTS=OFF"]
            _step("configuring", configure, log, root, True)
        build_words = ["cmake", "--build", str(build), "--target", *_TARGETS]
        _step("building", build_words, log, root, first)
        if first:
            wine = [*system.host_command()[:1], "cmd", "/c", "exit"]
            _step("preparing Wine", wine, log, root, True)


def install(prefix: str) -> None:
    """Copies what rendering needs, so that the tree may go, or is of no concern to other users."""
    root = system.find_root()
    if root is None or system.WINDOWS:
        why = "this is no source tree"
        raise Failure("install", why, "run ./glazel install in the tree that is to be installed")
    programs()
    place = Path(prefix).resolve() / "lib/glazel"
    try:
        for folder in (place / "bin", place / "glazel", Path(prefix) / "bin"):
            folder.mkdir(parents=True, exist_ok=True)
        for name in (system.HOST, "GlazelDX_x64.dll", "GZ3Renderer_x64.dll"):
            shutil.copy2(system.programs_folder() / name, place / "bin")
        for module in system.PACKAGE.glob("*.*"):
            shutil.copy2(module, place / "glazel")
        shutil.copy2(root / "cmake/wine-run.sh", place)
        shutil.copytree(root / "samples/looks", place / "looks", dirs_exist_ok=True)
        launcher = Path(prefix) / "bin/glazel"
        launcher.write_text(_LAUNCHER.format(str(place).replace("'", "'\\''")), encoding="utf-8")
        launcher.chmod(0o755)
    except OSError as error:
        why = f"it cannot be written: {error.strerror}"
        raise Failure(error.filename or prefix, why, "choose a folder of your own") from error


def _step(
    name: str, command: list[str], log: Path | None, cwd: Path | None = None, told: bool = False
) -> None:
    """Runs one step; tells of it when it takes its time, and shows its words when it fails."""
    started = time.monotonic()
    if told:
        print(f"glazel: {name} ...", file=sys.stderr, end="", flush=True)
    if log:
        with open(log, "ab") as words:
            begin = words.tell()
            code = subprocess.run(
                command, cwd=cwd, stdin=subprocess.DEVNULL, stdout=words, stderr=words, check=False
            ).returncode
    else:
        code = subprocess.run(command, cwd=cwd, stdin=subprocess.DEVNULL, check=False).returncode
    seconds = time.monotonic() - started
    if told or seconds > _LONG:
        print(f" {seconds:.0f} s" if told else f"glazel: {name}: {seconds:.0f} s", file=sys.stderr)
    if code == 0:
        return
    if log:
        with open(log, "rb") as words:
            words.seek(begin)
            lines = words.read().decode("utf-8", "replace").splitlines()
        print("\n".join(line[:300] for line in lines[-_SHOWN:]), file=sys.stderr)
        raise Failure(name, f"it failed, see above and {log}", "mend that and run again")
    raise Failure(name, "it failed, see above", "mend that and run again")
