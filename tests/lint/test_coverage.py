"""The lines that no test runs: each row of their list is still about lines that are there."""

import pathlib
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/coverage"))

import covered_lines  # noqa: E402


@pytest.mark.parametrize("row", covered_lines.explanations(), ids=lambda row: f"{row.file}: {row.first}")
def test_an_explained_line_is_there(row):
    assert row.lines((ROOT / row.file).read_text(encoding="utf-8").splitlines()) and row.reason


def record(count, *branches):
    return {"count": count, "branches": [{"count": taken, "throw": throws} for taken, throws in branches]}


def test_a_call_that_may_throw_is_no_condition():
    line = covered_lines.Line()
    line.add(record(3, (3, False), (0, True), (2, False), (1, False), (3, False), (0, True)))
    assert line.branches() == (2, 2)


def test_instances_complete_each_other_and_the_most_complete_form_counts():
    line = covered_lines.Line()
    line.add(record(1, (1, False), (0, False)))
    line.add(record(0, (0, False), (0, False), (0, False), (0, False)))
    assert (line.count, line.branches()) == (1, (1, 2))
    line.add(record(4, (0, False), (4, False)))
    assert (line.count, line.branches()) == (5, (2, 2))
