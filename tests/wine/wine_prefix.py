"""A Wine prefix of a test's own, and its registry as a dictionary.

Making a prefix takes long, so one is made per build folder and copied for every test module.
"""

import contextlib
import fcntl
import functools
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
from typing import NamedTuple

from wine_exit import exit_code

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["GLAZEL_BUILD"])
BIN = BUILD / "bin"
NOT_STARTED = "ShellExecuteEx failed: Internal error."  # of a program that is there
REGISTRY_COPIES = {"HKEY_LOCAL_MACHINE": "machine", "HKEY_USERS": "users"}
DEADLINE = 120  # seconds that no run ever needs

# What the system itself notes about a run: nothing that a program asked it to keep.
OWN_TO_THE_SYSTEM = re.compile(
    r"\[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Control\\(Class\\|Video\\|ServiceCurrent\])",
    re.IGNORECASE)
VALUE = re.compile(r'(@|"(?:[^"\\]|\\.)*")=(.*)', re.DOTALL)


def windows_path(path):
    """How programs in a prefix see a path of this system."""
    return "Z:" + str(path).replace("/", "\\")


class Result(NamedTuple):
    code: int
    output: str
    errors: str


class WinePrefix:
    def __init__(self, folder):
        """Copies the template prefix to `folder`, which must not exist."""
        self.folder = pathlib.Path(folder)
        self.drive_c = self.folder / "drive_c"
        template = BUILD / "wine-template"
        with open(f"{template}.copying", "w", encoding="ascii") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            if not (template / ".ready").exists():
                self._wine(template, "cmd", "/c", "exit")
            self._server(template, "-w")
            subprocess.run(["cp", "-a", "--reflink=auto", template, self.folder], check=True)
        # Programs start at once while a server runs, and two that start one can fail.
        self._wine(self.folder, "cmd", "/c", "exit")
        self._server(self.folder, "-p")

    def close(self):
        self._server(self.folder, "-k")
        self._server(self.folder, "-w")
        shutil.rmtree(self.folder)

    def run(self, program, *words, cwd=None, env=None):
        """A finished run, whatever its end."""
        return self._wine(self.folder, program, *words, cwd=cwd, env=env)

    @contextlib.contextmanager
    def running(self, program, *words, ready):
        """A program for the length of a with block, from the time when it prints the line `ready`
        until its standard input ends."""
        with subprocess.Popen(self._command(program, *words), stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              env=self._environment(self.folder)) as process:
            try:
                while (line := process.stdout.readline().strip()) != ready:
                    assert line, f"{words} ended too early"
                yield
            finally:
                process.stdin.close()
                process.wait(DEADLINE)

    def registry(self, key=None):
        """Key -> {value name -> data as exported; the default value is "@"}: of everything, or of
        `key` and what is below it, which is much faster. Nothing when there is no such key."""
        file = self.folder / "export.reg"
        if key is not None and self.run("reg", "query", key).code != 0:
            return {}
        result = self.run("regedit", "/E", windows_path(file), *([key] if key else []))
        assert result.code == 0, result
        blocks = file.read_text(encoding="utf-16").replace("\\\n", "").split("\n\n")
        file.unlink()
        keys = {}
        for block in blocks[1:]:
            head, _, values = block.strip("\n").partition("\n")
            if head and not OWN_TO_THE_SYSTEM.match(head):
                keys[head[1:-1]] = dict(values_of(values))
        return keys

    def lasting_registry(self):
        """All of it, as registry(), in another form of data, and much faster: to compare with another
        time. Without what lives only as long as the system runs."""
        keys = {}
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            result = self.run(BIN / "registry_copy.exe", windows_path(folder))
            assert result.code == 0, result
            for root, file in REGISTRY_COPIES.items():
                text = (pathlib.Path(folder) / file).read_text(encoding="ascii")
                blocks = text.replace("\\\n", "").split("\n\n[")[1:]
                assert blocks, text
                for block in blocks:
                    head, *lines = block.strip("\n").split("\n")
                    key = root + "\\" + head.rpartition("] ")[0].replace("\\\\", "\\")
                    if not OWN_TO_THE_SYSTEM.match(f"[{key}]"):
                        values = [line for line in lines if not line.startswith("#")]  # its time
                        keys[key] = dict(values_of("\n".join(values)))
        # The copy leaves out a key that has keys and no values.
        for key in list(keys):
            while (key := key.rpartition("\\")[0]) and key not in keys:
                keys[key] = {}
        return keys

    def files(self):
        """Every file and folder of drive C with its size, but for what the system writes in use."""
        found = {}
        for path in self.drive_c.rglob("*"):
            name = str(path.relative_to(self.drive_c))
            if not name.startswith(("windows/temp/", "windows/Installer")):
                found[name] = path.stat().st_size if path.is_file() else None
        return found

    @staticmethod
    def _command(program, *words):
        return [str(word) for word in (ROOT / "cmake/wine-run.sh", program, *words)]

    @staticmethod
    def _environment(folder, env=None):
        kept = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WINEPREFIX")}
        return kept | {"GLAZEL_WINEPREFIX": str(folder), "LC_ALL": "C.UTF-8"} | (env or {})

    @classmethod
    def _wine(cls, folder, program, *words, cwd=None, env=None):
        for _ in range(3):
            result = cls._run_once(cls._command(program, *words), cwd, cls._environment(folder, env))
            # On a busy machine Wine now and then fails to start a process, and says nothing but
            # this. A program that ran says what is wrong, or has another exit code.
            if result != Result(1, "", "") and NOT_STARTED not in result.output:
                break
        return result

    @staticmethod
    def _run_once(command, cwd, environment):
        # Files, not pipes: programs of the desktop that start along the way keep what they inherit.
        with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
            code = subprocess.run(command, cwd=cwd, stdout=output, stderr=errors,
                                  stdin=subprocess.DEVNULL, check=False, env=environment,
                                  timeout=DEADLINE).returncode
            texts = []
            for file in (output, errors):
                file.seek(0)
                texts.append(file.read().decode("utf-8", "replace").replace("\r\n", "\n"))
        return Result(exit_code(code), *texts)

    @staticmethod
    def _server(folder, option):
        # No pipes: a server that starts would keep them open. -k fails when none runs.
        subprocess.run(["wineserver", option], env=os.environ | {"WINEPREFIX": str(folder)},
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=DEADLINE, check=False)


@functools.lru_cache(maxsize=None)
def values_of(lines):
    """The values of one key as pairs. Most keys are the same in every export of a registry."""
    pairs = []
    for line in filter(None, lines.split("\n")):
        name, data = VALUE.fullmatch(line).groups()
        pairs.append((name if name == "@" else unescaped(name), unescaped(data)))
    return tuple(pairs)


def unescaped(data):
    """A quoted text without quotes; anything else, such as dword:00000001, as it is."""
    if not data.startswith('"'):
        return data
    return re.sub(r"\\(?:x([0-9a-f]{1,4})|(.))",
                  lambda found: found[2] or chr(int(found[1], 16)), data[1:-1])


def changes(before, after):
    """What was added, and what was removed or changed, as two dictionaries of keys."""
    added = {key: values for key, values in after.items() if values != before.get(key)}
    lost = {key: values for key, values in before.items() if values != after.get(key)}
    return added, lost
