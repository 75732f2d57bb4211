"""Which lines and branches of the plug-in ran in the tests: covered_lines.py BUILD=GCOV...

BUILD is a build folder in which the tests of a coverage preset ran, GCOV the compiler's own reader of
what it counted. Prints a table, the missed lines with their reasons in missed.txt, and the branches that
were never taken; fails when there are too many, or when a line or a row of missed.txt stands alone.
"""

import argparse
import collections
import dataclasses
import json
import os
import pathlib
import subprocess
import sys
from typing import Any

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("binding", "contract", "effect", "module", "platform", "propertypage", "support")
LEAST_LINES, LEAST_BRANCHES = 98.0, 90.0
OBJECTS_A_RUN = 50


class Line:
    """How often a line ran, and each of its branches. It counts once, whatever its objects, its
    instances in templates and its builds."""

    def __init__(self) -> None:
        self.count = 0
        # By their number: what has as many branches is taken for the same code.
        self._branches: dict[int, list[int]] = {}

    def add(self, record: dict[str, Any]) -> None:
        self.count += record["count"]
        counts = conditions(record["branches"])
        if counts:
            known = self._branches.get(len(counts), [0] * len(counts))
            self._branches[len(counts)] = [a + b for a, b in zip(known, counts)]

    def branches(self) -> tuple[int, int]:
        """Those taken and all, where most of them were taken."""
        forms = ((sum(map(bool, counts)), len(counts)) for counts in self._branches.values())
        return max(forms, key=lambda form: form[0] / form[1], default=(0, 0))


def conditions(branches: list[dict[str, Any]]) -> list[int]:
    """How often each branch of a condition was taken. A call that may throw has two branches as well,
    the second one marked, which only say that some test let it."""
    counts: list[int] = []
    for branch in branches:
        if branch["throw"]:
            counts.pop()
        else:
            counts.append(branch["count"])
    return counts


Sources = dict[str, dict[int, Line]]


def read(build: pathlib.Path, gcov: str, sources: Sources) -> None:
    """Adds what a build counted. The plug-in's lines are those that its own objects have: headers also
    hold what only the programs around it use."""
    objects = sorted(str(path.relative_to(build)) for path in build.rglob("*.gcno"))
    # Its own first: what others counted is added to the lines that are known then.
    objects.sort(key=lambda path: path.split("/")[0] not in FOLDERS)
    for start in range(0, len(objects), OBJECTS_A_RUN):
        command = [gcov, "--json-format", "--branch-probabilities", "--stdout"]
        answer = subprocess.run(
            command + objects[start : start + OBJECTS_A_RUN],
            cwd=build,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, # an object whose program never ran is told there
            check=True,
        )
        for document in map(json.loads, answer.stdout.splitlines()):
            is_own = document["data_file"].split("/")[0] in FOLDERS
            for source in document["files"]:
                # Windows objects name files from the root, others name them whole.
                name = os.path.relpath(ROOT / source["file"], ROOT)
                if name.split("/")[0] in FOLDERS:
                    lines = sources[name]
                    for record in source["lines"]:
                        if is_own or record["line_number"] in lines:
                            lines.setdefault(record["line_number"], Line()).add(record)


@dataclasses.dataclass
class Explanation:
    """A row of missed.txt: why lines of a file do not run, from the one that reads `first` to the next
    that reads `last`."""

    file: str
    first: str
    last: str
    reason: str
    used: bool = False

    def lines(self, text: list[str]) -> set[int]:
        """All places that read so, numbers from 1."""
        found = set()
        stripped = [line.strip() for line in text]
        for begin, line in enumerate(stripped):
            if line == self.first and self.last in stripped[begin:]:
                found.update(range(begin + 1, stripped.index(self.last, begin) + 2))
        return found


def explanations() -> list[Explanation]:
    rows = []
    for row in (pathlib.Path(__file__).with_name("missed.txt")).read_text("utf-8").splitlines():
        if row and not row.startswith("#"):
            file, first, last, reason = (part.strip() for part in row.split(" | "))
            rows.append(Explanation(file, first, last or first, reason))
    return rows


def per_cent(part: int, whole: int) -> float:
    return 100.0 * part / whole if whole else 100.0


def report(sources: Sources) -> list[str]:
    """Prints all of it and answers what is wrong."""
    rows = explanations()
    figures: dict[str, list[int]] = collections.defaultdict(lambda: [0, 0, 0, 0])
    missed, unexplained, halves = [], [], []
    for name in sorted(sources):
        text = (ROOT / name).read_text("utf-8").splitlines()
        reasons: dict[int, Explanation] = {}
        for row in rows:
            if row.file == name:
                reasons.update(dict.fromkeys(row.lines(text), row))
        for number, line in sorted(sources[name].items()):
            taken, branches = line.branches()
            for key in (name.split("/")[0], "all"):
                for index, value in enumerate((line.count > 0, 1, taken, branches)):
                    figures[key][index] += value
            place = f"{name}:{number}: {text[number - 1].strip()}"
            if line.count == 0 and number in reasons:
                reasons[number].used = True
                missed.append(f"{place}\n    {reasons[number].reason}")
            elif line.count == 0:
                unexplained.append(place)
            elif taken < branches:
                halves.append(f"{place}\n    {taken} of {branches}")
    print(f"{'folder':14}{'lines':>18}{'branches':>20}")
    for key, (ran, lines, taken, branches) in sorted(figures.items(), key=lambda item: item[0] == "all"):
        print(
            f"{key:14}{ran:6} of {lines:5}{per_cent(ran, lines):6.1f} %"
            f"{taken:6} of {branches:5}{per_cent(taken, branches):6.1f} %"
        )
    print("\nLines that never ran:", *missed, *unexplained, sep="\n")
    print("\nLines not all of whose branches were taken:", *halves, sep="\n")

    ran, lines, taken, branches = figures["all"]
    wrong = [f"{place} never runs: test it, or say in missed.txt why not" for place in unexplained]
    wrong += [
        f'missed.txt: "{row.first}" of {row.file} is there and runs, or is not there: take the row out'
        for row in rows
        if not row.used
    ]
    if per_cent(ran, lines) < LEAST_LINES:
        wrong.append(f"less than {LEAST_LINES} % of the lines ran")
    if per_cent(taken, branches) < LEAST_BRANCHES:
        wrong.append(f"less than {LEAST_BRANCHES} % of the branches were taken")
    return wrong


def main() -> int:
    parser = argparse.ArgumentParser(description=(__doc__ or "").splitlines()[0])
    parser.add_argument("builds", nargs="+", metavar="BUILD=GCOV")
    sources: Sources = collections.defaultdict(dict)
    for build, gcov in (pair.split("=") for pair in parser.parse_args().builds):
        read(pathlib.Path(build).resolve(), gcov, sources)
    wrong = report(sources)
    for line in wrong:
        print(f"coverage: {line}", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
