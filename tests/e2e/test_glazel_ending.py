"""./glazel render, broken off in every way: nothing half is left, and what was there stays."""

import os
import pathlib
import resource
import signal
import subprocess
import time

import pytest

from conftest import DEADLINE, ROOT, WARM, environment, ffmpeg, wait_until

STAGES = {"decoder": 0, "host": 1, "encoder": 2}
SOON = 5.0  # seconds; one on a machine that does nothing else
# Ends itself by a signal just when Popen.poll has its lock for so many times.
SIGNALLED_IN_POLL = """
import os, signal, subprocess, sys, threading

times = int(sys.argv.pop(1))

class Lock:
    def __init__(self):
        self.lock = threading.Lock()
        self.release = self.lock.release

    def __enter__(self):
        return self.lock.__enter__()

    def __exit__(self, *error):
        return self.lock.__exit__(*error)

    def acquire(self, blocking):
        global times
        taken = self.lock.acquire(blocking)
        times -= 1
        if times == 0:
            os.kill(os.getpid(), signal.SIGINT)
        return taken

def init(self, *words, **more):
    made(self, *words, **more)
    self._waitpid_lock = Lock()

made, subprocess.Popen.__init__ = subprocess.Popen.__init__, init
from glazel.__main__ import main
sys.exit(main(sys.argv[1:]))
"""

# Kills the host program as soon as it has told that it is done, and says how that one ended.
KILLED_WHEN_DONE = """
import os, signal, sys
from glazel import pipeline

def hear(self, line):
    enough = heard(self, line)
    if self.frames is not None:
        os.kill(self.children[1].process.pid, signal.SIGKILL)
    return enough

def judge(self, ended):
    print([child.process.returncode for child in ended if child.stage == "host program"])
    judged(self, ended)

heard, pipeline.Run._hear = pipeline.Run._hear, hear
judged, pipeline.Run._judge = pipeline.Run._judge, judge
from glazel.__main__ import main
sys.exit(main(sys.argv[1:]))
"""


@pytest.fixture(scope="module")
def clip(tmp_path_factory):
    path = tmp_path_factory.mktemp("clip") / "clip.mkv"
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=640x360:rate=25", "-t", 40, "-c:v", "libx264",
           "-preset", "ultrafast", path)
    return path


def children(pid):
    """Of the process, in the order of their starts."""
    return [int(word) for task in pathlib.Path(f"/proc/{pid}/task").iterdir()
            for word in (task / "children").read_text().split()]


def begun(clip, folder, *options, limit=None, ignored=None):
    """A render to out.mkv of which something has been written already."""
    def limited():
        if ignored:
            signal.signal(ignored, signal.SIG_IGN)
        if limit:
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
    process = subprocess.Popen(
        [ROOT / "glazel", "render", clip, folder / "out.mkv", "--look", WARM, *options,
         "--codec", "ffv1"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
        stderr=subprocess.PIPE, env=environment(), preexec_fn=limited)
    wait_until(lambda: process.poll() is not None or any(
        path.stat().st_size > 100_000 for path in folder.glob(".glazel-*/*")))
    return process


def end(process):
    """Exit code, lines of standard error, and seconds that it took."""
    started = time.monotonic()
    said = process.communicate(timeout=DEADLINE)[1].decode().splitlines()
    return process.returncode, said, time.monotonic() - started


def alive(pids):
    return [pid for pid in pids if pathlib.Path(f"/proc/{pid}/stat").exists() and
            pathlib.Path(f"/proc/{pid}/stat").read_text().split()[2] != "Z"]


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_signal_ends_everything_at_once(number, clip, tmp_path):
    (tmp_path / "out.mkv").write_text("mine")
    process = begun(clip, tmp_path, "--overwrite")
    pids = children(process.pid)
    assert len(pids) == 3
    process.send_signal(number)
    code, said, seconds = end(process)
    assert code == 128 + number and seconds < SOON, said
    assert not alive(pids)
    assert os.listdir(tmp_path) == ["out.mkv"]
    assert (tmp_path / "out.mkv").read_text() == "mine"


def test_a_signal_that_a_script_ignores_for_what_it_starts_is_ignored(clip, tmp_path):
    process = begun(clip, tmp_path, "--frames", "1-200", ignored=signal.SIGINT)
    process.send_signal(signal.SIGINT)
    assert end(process)[0] == 0
    assert os.listdir(tmp_path) == ["out.mkv"]


# Before the encoder is started, as the host program tells the size of pictures; after; and of a farm.
@pytest.mark.parametrize("source, times, words", [
    ("in_%02d.png", 1, ["render"]), (None, 100, ["render"]),
    (None, 3, ["farm", "local", "--jobs", "2", "--chunks", "2"])], ids=["early", "late", "farm"])
def test_a_signal_while_a_child_is_looked_at_ends_everything_too(
        source, times, words, clip, tmp_path):
    if source:
        ffmpeg("-i", clip, "-frames:v", 50, tmp_path / source)
    (tmp_path / "out").mkdir()
    process = subprocess.Popen(
        ["/usr/bin/python3", "-B", "-c", SIGNALLED_IN_POLL, str(times), *words,
         tmp_path / source if source else clip, tmp_path / "out/out.mkv", "--look", WARM,
         "--codec", "ffv1"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
        stderr=subprocess.PIPE, env=environment() | {"PYTHONPATH": str(ROOT / "tools")})
    try:
        code, said, _ = end(process)
    finally:
        process.kill()
    assert code == 128 + signal.SIGINT and "interrupted" in said[-1], said
    assert os.listdir(tmp_path / "out") == (["out.mkv.farm"] if words[0] == "farm" else [])


@pytest.mark.parametrize("stage", STAGES)
@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_a_stage_that_is_killed_is_never_taken_for_the_end(stage, number, clip, tmp_path):
    if (stage, number) == ("host", signal.SIGTERM):
        pytest.skip("Wine's own business: some of its versions ignore it")
    (tmp_path / "out.mkv").write_text("mine")
    process = begun(clip, tmp_path, "--overwrite")
    pids = children(process.pid)
    os.kill(pids[STAGES[stage]], number)
    code, said, seconds = end(process)
    assert code == 1 and seconds < SOON, said
    assert not alive(pids)
    assert os.listdir(tmp_path) == ["out.mkv"]
    assert (tmp_path / "out.mkv").read_text() == "mine"


def test_a_host_program_that_crashes_when_all_is_done_has_done_all(clip, tmp_path):
    result = subprocess.run(
        ["/usr/bin/python3", "-B", "-c", KILLED_WHEN_DONE, "render", clip, tmp_path / "out.mkv",
         "--look", WARM, "--frames", "1-50", "--codec", "ffv1"], capture_output=True, check=False,
        timeout=DEADLINE, env=environment() | {"PYTHONPATH": str(ROOT / "tools")})
    assert result.stdout == b"[-9]\n" and result.returncode == 0, result.stderr
    frames = ffmpeg("-i", tmp_path / "out.mkv", "-f", "framemd5", "-").decode().splitlines()
    assert len([line for line in frames if line[0] != "#"]) == 50


def test_a_file_that_cannot_grow_is_an_error(clip, tmp_path):
    code, said, _ = end(begun(clip, tmp_path, limit=1 << 20))
    assert code == 1 and "out.mkv" in said[-1], said
    assert not os.listdir(tmp_path)


@pytest.mark.parametrize("words", [["--help"], ["render", "--help"], ["look", "--help"]])
def test_help_that_cannot_be_written_is_an_error(words):
    with open("/dev/full", "w") as full:
        result = subprocess.run([ROOT / "glazel", *words], stdout=full, stderr=subprocess.PIPE,
                                timeout=DEADLINE, check=False, env=environment())
    lines = result.stderr.decode().splitlines()
    assert result.returncode == 1 and len(lines) == 1, lines
    assert lines[0].startswith("glazel") and "; " in lines[0]


def test_a_file_that_appears_meanwhile_is_not_replaced(tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25", "-t", 4, tmp_path / "in.mkv")
    process = begun(tmp_path / "in.mkv", tmp_path)
    (tmp_path / "out.mkv").write_text("theirs")
    code, said, _ = end(process)
    assert code == 1 and "exists already" in said[-1]
    assert (tmp_path / "out.mkv").read_text() == "theirs"
    assert sorted(os.listdir(tmp_path)) == ["in.mkv", "out.mkv"]


def test_the_next_render_cleans_up_after_one_that_was_killed_outright(clip, tmp_path):
    process = begun(clip, tmp_path)
    pids = children(process.pid)
    process.kill()
    assert end(process)[0] == -signal.SIGKILL
    wait_until(lambda: not alive(pids))
    assert len(os.listdir(tmp_path)) == 1
    other = begun(clip, tmp_path, "--frames", "1-3")  # a running render's own file stays
    assert end(other)[0] == 0
    assert os.listdir(tmp_path) == ["out.mkv"]
