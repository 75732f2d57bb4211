"""A run that is broken off leaves no half output."""

import signal
import subprocess
import time

import pytest

from conftest import DEADLINE, WARM, environment, host_command, write_y4m
from wine_exit import exit_code


@pytest.mark.parametrize("stop", [signal.SIGINT, signal.SIGTERM, signal.SIGKILL])
def test_an_interrupted_run_leaves_nothing(stop, tmp_path):
    clip = tmp_path / "clip.y4m"
    write_y4m(clip, 400, (640, 480))
    folder = tmp_path / "out"
    folder.mkdir()
    command = [str(word) for word in
               host_command("render", clip, folder / "out.y4m", "--look", WARM)]
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env=environment()) as process:
        wait_until(lambda: any(path.stat().st_size > 10_000_000 for path in folder.iterdir())
                   or process.poll() is not None)
        assert process.poll() is None, process.stderr.read().decode()
        process.send_signal(stop)
        lines = process.stderr.read().decode().splitlines()
        code = process.wait(DEADLINE)
    assert code != 0
    if stop == signal.SIGINT:
        assert exit_code(code) == 1
        assert "interrupted" in lines[-1], lines
    # Wine's server removes what a killed program had open, a moment later.
    wait_until(lambda: not list(folder.iterdir()))


def wait_until(condition):
    deadline = time.monotonic() + DEADLINE
    while not condition():
        assert time.monotonic() < deadline, "it did not happen in time"
        time.sleep(0.02)
