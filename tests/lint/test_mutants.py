"""The mutants: each row is still a change of one line that its rule makes, and each has its tests."""

import collections
import pathlib
import re
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/mutants"))

import mutants  # noqa: E402

PROGRAMS = list(mutants.read_programs((ROOT / "tests/mutants/programs.txt").read_text()))
ROWS = list(mutants.read_mutants((ROOT / "tests/mutants/mutants.txt").read_text()))


@pytest.mark.parametrize("path", sorted({row.path for row in ROWS}))
def test_each_row_is_a_change_that_its_rule_makes_of_a_line_that_is_there(path):
    made = set(mutants.proposals(path))
    wrong = [row.row() for row in ROWS if row.path == path
             and row._replace(equivalent="") not in made]
    assert not wrong, "\n".join(["take these out or give the lines as they are now:", *wrong])


def test_no_row_is_there_twice():
    plain = [row._replace(equivalent="") for row in ROWS]
    assert [row for row, count in collections.Counter(plain).items() if count > 1] == []


def test_there_are_enough_and_half_of_them_in_code_for_windows_alone():
    to_kill = [row for row in ROWS if not row.equivalent]
    windows = [row for row in to_kill
               if all(p.kind == "windows" for p in mutants.programs_of(row.path, PROGRAMS))]
    assert len(to_kill) >= 150 and len(windows) * 2 >= len(to_kill)
    assert {row.rule for row in to_kill} == set(mutants.RULES)


def test_each_source_has_programs_and_each_program_is_one():
    assert [path for path in mutants.sources() if not mutants.programs_of(path, PROGRAMS)] == []
    lists = "\n".join(path.read_text() for path in (ROOT / "tests").rglob("CMakeLists.txt"))
    built = set(re.findall(r"glazel_add_test\((\w+)", lists))
    assert {program.name.rpartition("/")[2] for program in PROGRAMS} <= built
    used = {program.prefix for path in mutants.sources()
            for program in mutants.programs_of(path, PROGRAMS)}
    assert {program.prefix for program in PROGRAMS} == used


def test_a_row_that_rots_says_so():
    row = mutants.Mutant("effect/frame_number.h", "bound", 1, "no such line", "other")
    with pytest.raises(mutants.MutantError, match="no such line"):
        row.text()
    with pytest.raises(mutants.MutantError, match="what a row is"):
        list(mutants.read_mutants("- old\n+ new\n"))
