"""A run that is broken off leaves no half output."""

import json
import signal
import subprocess

import pytest

from conftest import DEADLINE, WARM, environment, host_command, wait_until, write_clip
from wine_exit import exit_code


@pytest.mark.parametrize("stop", [signal.SIGINT, signal.SIGTERM, signal.SIGKILL])
def test_an_interrupted_run_leaves_nothing(stop, tmp_path):
    lines, code = interrupted_render(stop, tmp_path)
    assert code != 0
    if stop == signal.SIGINT:
        assert exit_code(code) == 1
        assert "interrupted" in lines[-1], lines


def test_an_interruption_is_told_in_json_too(tmp_path):
    lines, code = interrupted_render(signal.SIGINT, tmp_path, "--progress", "json")
    assert exit_code(code) == 1
    events = [json.loads(line) for line in lines]
    assert events[-1]["event"] == "error"
    assert "interrupted" in events[-1]["text"]


def interrupted_render(stop, tmp_path, *options):
    """Lines of standard error and the exit code of a render that got the signal `stop`. Checks that
    it leaves nothing."""
    clip = tmp_path / "clip.bgra"
    write_clip(clip, 150, (640, 480))
    folder = tmp_path / "out"
    folder.mkdir()
    command = [str(word) for word in
               host_command("render", clip, folder / "out.bgra", "--size", "640x480", "--look",
                            WARM, *options)]
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env=environment()) as process:
        wait_until(lambda: any(path.stat().st_size > 10_000_000 for path in folder.iterdir())
                   or process.poll() is not None)
        assert process.poll() is None, process.stderr.read().decode()
        process.send_signal(stop)
        lines = process.stderr.read().decode().splitlines()
        code = process.wait(DEADLINE)
    # Wine's server removes what a killed program had open, a moment later.
    wait_until(lambda: not list(folder.iterdir()))
    return lines, code
