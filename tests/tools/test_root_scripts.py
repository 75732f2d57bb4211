"""./fuzz.sh, ./soak.sh, ./mutants.sh and ./coverage.sh: what they offer, and refuse before they build anything."""

import pathlib
import re
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
WRONG_USAGE = 2


def run(script, *words):
    return subprocess.run([ROOT / f"{script}.sh", *words], capture_output=True, text=True, timeout=60,
                          check=False)


@pytest.mark.parametrize("words", [(), ("--help",), ("-h",)])
def test_without_a_target_it_lists_those_that_are_built(words):
    finished = run("fuzz", *words)
    assert finished.returncode == 0 and not finished.stderr
    listed = finished.stdout.split("Targets:\n")[1].split()
    built = re.findall(r"^glazel_add_fuzzer\((\w+)", (ROOT / "tests/fuzz/CMakeLists.txt").read_text(),
                       re.M)
    assert listed == sorted(built)


@pytest.mark.parametrize("script, words, named", [("fuzz", words, named) for words, named in [
    (("nowhere",), "nowhere"), (("look_import look_record",), "look_import look_record"), (("",), '""'),
    (("words", "0"), "0"), (("words", "-1"), "-1"), (("words", "1.5"), "1.5"), (("words", ""), '""'),
    (("words", "1h"), "1h"), (("words", "99999999"), "99999999"), (("words", "1", "2"), "too many"),
    (("--quick",), "--quick")]] + [("soak", words, named) for words, named in [
    (("0",), "0"), (("",), '""'), (("1.5",), "1.5"), (("--quick",), "--quick"),
    (("1", "2"), "too many")]] + [("mutants", words, named) for words, named in [
    (("no_such_line",), "no_such_line"), (("--quick",), "--quick"), (("a", "b"), "too many")]] + [("coverage", ("effect",), "effect")])
def test_wrong_words_are_refused_in_one_line(script, words, named):
    finished = run(script, *words)
    assert finished.returncode == WRONG_USAGE and not finished.stdout
    lines = finished.stderr.splitlines()
    assert len(lines) == 1 and lines[0].startswith(f"{script}: ") and named in lines[0]


@pytest.mark.parametrize("script, usage", [
    ("soak", "./soak.sh SECONDS"), ("mutants", "./mutants.sh TEXT"), ("coverage", "build/coverage.txt")])
def test_what_it_does_is_told_on_demand(script, usage):
    finished = run(script, "--help")
    assert finished.returncode == 0 and usage in finished.stdout


def test_no_seed_lies_where_no_target_reads_it():
    targets = {path.name.removesuffix("_fuzz.cpp") for path in (ROOT / "tests/fuzz").glob("*_fuzz.cpp")}
    assert {path.name for path in (ROOT / "tests/fuzz/seeds").iterdir()} <= targets
