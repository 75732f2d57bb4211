"""When packages are installed and the programs are built: with fakes of what does it."""

import fcntl
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import threading
import time
import types

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tools"))
from glazel import prepare, render, system  # noqa: E402
from glazel.failure import Failure  # noqa: E402
from glazel.report import Report  # noqa: E402

STEPS = """#!/bin/sh
echo "${{0##*/}} $1 $2" >> '{tree}/steps'
case $1 in --preset) touch '{tree}/build/release/build.ninja' ;; esac
"""


@pytest.fixture(name="tree")
def new_tree(tmp_path, monkeypatch):
    """A source tree whose steps only note that they were taken."""
    monkeypatch.setattr(system, "ROOT", tmp_path)
    monkeypatch.delenv("GLAZEL_BUILD", raising=False)
    monkeypatch.setenv("PATH", f"{tmp_path}/path:{os.environ['PATH']}")
    (tmp_path / "build/release/bin").mkdir(parents=True)
    for name in ("setup.sh", "path/cmake", "cmake/wine-run.sh"):
        (tmp_path / name).parent.mkdir(exist_ok=True)
        (tmp_path / name).write_text(STEPS.format(tree=tmp_path))
        (tmp_path / name).chmod(0o755)
    return tmp_path


def steps(tree):
    return [line.split()[:2] for line in (tree / "steps").read_text().splitlines()]


def test_the_first_time_all_is_made_and_later_only_what_has_changed(tree, capsys, monkeypatch):
    monkeypatch.setattr(prepare, "_LONG", 60)
    prepare.programs()
    again = [["setup.sh", "--render"], ["cmake", "--build"]]
    assert steps(tree) == [again[0], ["cmake", "--preset"], again[1],
                           ["wine-run.sh", "cmd"]]
    (tree / "steps").unlink()
    prepare.programs()
    assert steps(tree) == again
    assert capsys.readouterr().err == ""


def test_a_build_folder_that_is_named_is_used_as_it_is(tree, monkeypatch):
    monkeypatch.setenv("GLAZEL_BUILD", str(tree / "build/release"))
    with pytest.raises(Failure, match="unset GLAZEL_BUILD"):
        prepare.programs()
    (tree / "build/release/bin" / system.HOST).touch()
    prepare.programs()
    assert not (tree / "steps").exists()


@pytest.mark.parametrize("long, told", [(60, False), (0, True)])
def test_another_build_is_waited_for_and_told_of_when_it_takes_its_time(
        tree, capsys, monkeypatch, long, told):
    monkeypatch.setattr(prepare, "_LONG", long)
    waits = threading.Event()

    try_lock = system.try_lock

    def refused(file):
        got = try_lock(file)
        if not got:
            waits.set()
        return got

    def waited_for(*words):
        waits.set()
        fcntl.flock(*words)

    if told:
        fake = types.SimpleNamespace(flock=waited_for, LOCK_EX=fcntl.LOCK_EX)
        monkeypatch.setattr(prepare, "fcntl", fake)
    else:
        monkeypatch.setattr(system, "try_lock", refused)
    waiting = threading.Thread(target=prepare.programs)
    with open(tree / "build/render.lock", "wb") as other:
        assert try_lock(other)
        waiting.start()
        assert waits.wait(60)
        assert steps(tree) == [["setup.sh", "--render"]]
    waiting.join(60)
    assert steps(tree)[-1][0] == "wine-run.sh"
    assert ("waiting for another glazel" in capsys.readouterr().err) == told


def test_a_long_step_is_told_while_it_runs_and_a_failed_one_with_its_words(
        tmp_path, capsys, monkeypatch):
    monkeypatch.setattr(prepare, "_LONG", 0)
    monkeypatch.setattr(system, "ROOT", tmp_path)
    (tmp_path / "build").mkdir()
    prepare._step("waiting", "sleep", "0.5")
    assert capsys.readouterr().err.startswith("glazel: waiting ... ")
    with pytest.raises(Failure, match="see above"):
        prepare._step("building", "sh", "-c", "echo why; exit 3")
    assert capsys.readouterr().err.endswith("why\n")


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_a_signal_ends_a_step_and_every_command_with_one_line(tree, number):
    # Whoever started the tests may ignore it, and the command would inherit that.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    shutil.copytree(system.PACKAGE, tree / "tools/glazel")
    (tree / "CMakePresets.json").touch()
    (tree / "setup.sh").write_text(f"#!/bin/sh\necho $$ > '{tree}/begun'\nexec sleep 1000\n")
    environment = {k: v for k, v in os.environ.items() if not k.startswith("PYTHON")}
    with subprocess.Popen(["/usr/bin/python3", "-B", "-P", "-m", "glazel", "presets"], cwd=tree,
                          stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                          env=environment | {"PYTHONPATH": str(tree / "tools")}) as process:
        begun, deadline = tree / "begun", time.monotonic() + 60
        while not (begun.exists() and begun.read_text()):
            assert process.poll() is None and time.monotonic() < deadline
            time.sleep(0.01)
        process.send_signal(number)
        said = process.stderr.read()
    assert process.returncode == 128 + number
    assert said.splitlines()[-1] == f"glazel: interrupted by signal {number}", said
    assert "Traceback" not in said
    assert not os.path.exists(f"/proc/{int(begun.read_text())}")


def test_what_a_render_took_is_told_without_what_its_programs_took_to_build(monkeypatch, capsys):
    clock = types.SimpleNamespace(now=0.0)

    def passing(seconds, result=None):
        def step(*_words, **_more):
            clock.now += seconds
            return result
        return step

    picture = types.SimpleNamespace(upright=lambda: None)
    plan = types.SimpleNamespace(raw_in=False, raw_out=False, target="out.png", source=picture,
                                 encoding=None, notes=(), losses={}, head=b"", cut=None, decode=[])
    job = types.SimpleNamespace(part=None, input="in.png", output="out.png", skip_bad_frames=False)
    run = types.SimpleNamespace(run=passing(3, 1), left_out=None)
    for name, value in {"planned": lambda _job: plan, "host_words": lambda *_words: [],
                        "Run": lambda *_words, **_more: run,
                        "time": types.SimpleNamespace(monotonic=lambda: clock.now)}.items():
        monkeypatch.setattr(render, name, value)
    monkeypatch.setattr(prepare, "programs", passing(200))
    render.render(job, Report("plain"))
    assert capsys.readouterr().err == "glazel: out.png: 1 frame in 3.0 s\n"


def test_wine_has_its_services_where_a_desktop_is_needed_or_the_user_says_so(monkeypatch):
    monkeypatch.setattr(system, "WINDOWS", False)
    monkeypatch.delenv("WINEDLLOVERRIDES", raising=False)
    assert "services.exe" in system.host_environment()["WINEDLLOVERRIDES"].strip("=").split(",")
    assert "WINEDLLOVERRIDES" not in system.host_environment(desktop=True)
    monkeypatch.setenv("WINEDLLOVERRIDES", "mine")
    assert system.host_environment()["WINEDLLOVERRIDES"] == "mine"
