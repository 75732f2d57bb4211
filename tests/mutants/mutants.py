"""Breaks the product one line at a time and sees whether its tests notice.

A mutant is a line of the product in a changed form, as a row of mutants.txt says. Only what the
change reaches is compiled and linked again, by the commands of a build folder that is up to date,
into a folder of its own; then the tests that can see the line run. One that fails, or does not end
in time, kills the mutant. No source and nothing of the build is touched.
"""

import argparse
import concurrent.futures
import contextlib
import fcntl
import functools
import itertools
import os
import pathlib
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from typing import NamedTuple

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = pathlib.Path(__file__).resolve().parent
FOLDERS = ("binding", "effect", "module", "platform", "propertypage", "support")
# Made by a script; declared by others; mostly for the programs in tools/.
OUTSIDE = ("propertypage/button_images.cpp", "platform/dxtransform/dxtrans.h", "support/win32/")

# How a line is broken: rule -> what is replaced by what. A match is one change.
RULES = {
    "negate": [(r"\bif \(((?!const )(?:(?! [!=]= ).)+)\)$", r"if (!(\1))"), (r" == ", " != "),
               (r" != ", " == "), (r"\? (.+) : (.+?)([;,)])", r"? \2 : \1\3")],
    "bound": [(r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > ")],
    "drop": [(r"^(\s+)(?!return\b)[^\s/].*\)(?<!\(\));$", r"\1;"), (r"^(\s+)[\w.:>-]+\(\);$", r"\1;"),
             (r"^(\s+)[\w.\[\]>*-]+ [|^+-]?= .*;$", r"\1;"), (r"^(\s+)(?:return;|continue;)$", r"\1;")],
    "swap": [(r"(?<!swap|:min|:max)(?<!add_overflow|mul_overflow)\(([\w.*&>-]+), ([\w.*&>-]+)(?=[,)])",
              r"(\2, \1"),
             (r", ([\w.*&>-]+), ([\w.*&>-]+)(?=[,)])", r", \2, \1"), (r" && ", " || "),
             (r" \|\| ", " && ")],
    "off by one": [(r" ([+-]) 1\b", ""), (r" \+ (?!1\b)", " - "), (r" - (?!1\b)", " + "),
                   (r"\+\+", "--"), (r"(?<![\w.\"'])([0-9])(?![\w.\"'])",
                                     lambda match: str(int(match[1]) + 1))],
    "constant": [(r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bTRUE\b", "FALSE"),
                 (r"\bFALSE\b", "TRUE"), (r"\b0\.0(F?)\b", r"1.0\1"), (r"\b1\.0(F?)\b", r"0.0\1"),
                 (r"(?<![\w.\"'])(\d\d+)(?=[;,)F ])", lambda match: str(int(match[1]) + 1))],
    "result": [(r"\bS_OK\b", "S_FALSE"), (r"\bS_FALSE\b", "S_OK"), (r"\bE_FAIL\b", "E_UNEXPECTED"),
               (r"\b(?:E_(?!FAIL\b)|DXTERR_|DISP_E_|CLASS_E_|CO_E_)[A-Z_]+\b", "E_FAIL")],
}


DISPLAY = threading.Lock()  # for programs that want it to themselves


class Mutant(NamedTuple):
    path: str  # from the root
    rule: str
    occurrence: int  # of that line in the file, from 1
    old: str
    new: str
    equivalent: str = ""  # why nothing can tell it from the original

    def __str__(self):
        line = nth_line(self) + 1
        return f"{self.path}:{line}: {self.rule}: {self.old.strip()}  ->  {self.new.strip()}"

    def row(self):
        number = f" #{self.occurrence}" if self.occurrence > 1 else ""
        reason = f"= {self.equivalent}\n" if self.equivalent else ""
        return f"{self.path}: {self.rule}{number}\n- {self.old}\n+ {self.new}\n{reason}"

    def text(self):
        lines = source(self.path)
        at = nth_line(self)
        return "\n".join([*lines[:at], self.new, *lines[at + 1:]]) + "\n"


class Program(NamedTuple):
    prefix: str
    kind: str  # native or windows
    name: str  # below bin/, without ending
    filter: str
    alone: bool
    display: bool
    beside: tuple[str, ...]


# One that never ends must not take all memory meanwhile.
ENVIRONMENT = os.environ | {"ASAN_OPTIONS": "hard_rss_limit_mb=2000"}


class MutantError(Exception):
    """Something that keeps a mutant from being judged."""


@functools.cache
def source(path):
    return (ROOT / path).read_text(encoding="utf-8").split("\n")[:-1]


def nth_line(mutant):
    """The index of its line."""
    places = [i for i, line in enumerate(source(mutant.path)) if line == mutant.old]
    if len(places) < mutant.occurrence:
        raise MutantError(f"{mutant.path} has no line {mutant.occurrence} like \"{mutant.old}\"; "
                       "take the row out of mutants.txt or give the line's present text")
    return places[mutant.occurrence - 1]


def sources():
    return sorted(str(path.relative_to(ROOT)) for folder in FOLDERS
                  for path in (ROOT / folder).rglob("*") if path.suffix in (".cpp", ".h")
                  and not str(path.relative_to(ROOT)).startswith(OUTSIDE))


def proposals(path):
    """All mutants that the rules make of a file."""
    seen = {}
    for old in source(path):
        seen[old] = seen.get(old, 0) + 1
        code = re.sub(r"\s*//.*", "", old)
        if not code.strip() or re.match(r"\s*(#|assert|static_assert|template)", code):
            continue
        tail = old[len(code):]
        made = set()
        for rule, changes in RULES.items():
            for pattern, replacement in changes:
                for match in re.finditer(pattern, code):
                    new = code[:match.start()] + match.expand(replacement) \
                        if isinstance(replacement, str) else code[:match.start()] + replacement(match)
                    new += code[match.end():] + tail
                    if new != old and new not in made:
                        made.add(new)
                        yield Mutant(path, rule, seen[old], old, new)


ROW = re.compile(r"(?P<path>\S+): (?P<rule>[a-z ]+?)(?: #(?P<number>\d+))?\n- (?P<old>.*)\n"
                 r"\+ (?P<new>.*)\n(?:= (?P<reason>.+)\n)?\n?")


def read_mutants(text):
    """The rows of mutants.txt."""
    text = re.sub(r"^# .*\n+", "", text, flags=re.M)
    at = 0
    while at < len(text):
        row = ROW.match(text, at)
        if not row:
            raise MutantError(f"mutants.txt: no row begins with \"{text[at:at + 60].splitlines()[0]}\"; "
                           "its head says what a row is")
        at = row.end()
        yield Mutant(row["path"], row["rule"], int(row["number"] or 1), row["old"], row["new"],
                     row["reason"] or "")


def read_programs(text):
    for line in text.splitlines():
        if line and not line.startswith("#"):
            prefix, kind, name, *words = line.split()
            filters = [word for word in words if word not in ("alone", "display") and word[0] != "+"]
            yield Program(prefix, kind, name, "".join(filters) or "*", "alone" in words,
                          "display" in words, tuple(word[1:] for word in words if word[0] == "+"))


def programs_of(path, programs):
    fitting = [program for program in programs if path.startswith(program.prefix)]
    longest = max((len(program.prefix) for program in fitting), default=0)
    return [program for program in fitting if len(program.prefix) == longest]


class Build:
    """A build folder that is up to date, and the commands that it was made by."""

    def __init__(self, folder):
        self.folder = folder.resolve()
        if not (folder / "CMakeCache.txt").is_file():
            raise MutantError(f"{folder} is no build folder; ./test.sh makes build/native and build/release")
        cache = (self.folder / "CMakeCache.txt").read_text(encoding="utf-8")
        self.kind = "windows" if "toolchain-mingw64" in cache else "native"
        self._commands = {}
        self._lock = threading.Lock()
        self._read = {}  # what is compiled -> the files that it reads
        for block in self._ninja("-t", "deps").split("\n\n"):
            output, *files = block.splitlines() or [""]
            self._read[output.split(":")[0]] = {
                os.path.normpath(self.folder / file.strip()) for file in files}

    def claim(self):
        """For one run alone, until the process ends."""
        (self.folder / "mutants").mkdir(exist_ok=True)
        self._claim = open(self.folder / "mutants/lock", "w", encoding="ascii")
        try:
            fcntl.flock(self._claim, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError as error:
            raise MutantError(f"another run judges mutants in {self.folder}; wait for its end") from error

    def require_current(self, programs):
        wanted = {file for p in programs for file in self.wanted(p)}
        if wanted and "no work to do" not in self._ninja("-n", *sorted(wanted)):
            raise MutantError(f"{self.folder} is not up to date; cmake --build {self.folder} makes it so")

    def _ninja(self, *words):
        return subprocess.run(["ninja", "-C", self.folder, *words], text=True, check=True,
                              stdout=subprocess.PIPE).stdout

    def file_of(self, program):
        return f"bin/{program.name}" + (".exe" if self.kind == "windows" else "")

    def commands(self, program):
        """Output -> the words of its command, in their order, for what the program and what stands
        beside it are made of."""
        with self._lock:
            if program not in self._commands:
                self._commands[program] = self._commands_of(program)
        return self._commands[program]

    def wanted(self, program):
        return {self.file_of(program), *(f"bin/{name}" for name in program.beside)}

    def _commands_of(self, program):
        wanted = self.wanted(program)
        made = {}
        for line in self._ninja("-t", "commands", *wanted).splitlines():
            # What follows a change of folder is done to the finished file.
            for command in re.sub(r" && cd .*", "", line).split(" && "):
                words = shlex.split(command)
                if "-o" in words[1:]:
                    made[words[words.index("-o") + 1]] = words
                elif "qc" in words:
                    made[words[words.index("qc") + 1]] = words
        for output in reversed(made):
            if output in wanted:
                wanted.update(made[output])
        return {output: words for output, words in made.items() if output in wanted}

    def reads(self, output, path):
        return str(path) in self._read.get(output, ())


class Workshop:
    """A folder beside the build, where one mutant at a time is made and tested."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        shutil.rmtree(folder, ignore_errors=True)
        for path in (build.folder / "bin").rglob("*"):
            if path.is_file():
                self._restore(path.relative_to(build.folder))

    def _restore(self, file):
        place = self.folder / file
        place.parent.mkdir(parents=True, exist_ok=True)
        place.unlink(missing_ok=True)
        place.symlink_to(self.build.folder / file)

    def make(self, mutant, program):
        """Builds the program with the mutant in it."""
        overlay = self.folder / "sources"
        shutil.rmtree(overlay, ignore_errors=True)
        changed = overlay / mutant.path
        changed.parent.mkdir(parents=True)
        changed.write_text(mutant.text(), encoding="utf-8")
        original = ROOT / mutant.path
        new = {}  # of the build's files that differ now
        for output, words in self.build.commands(program).items():
            if "-c" in words:
                if not self.build.reads(output, original):
                    continue
                words = self._compiling(words, original, changed)
            elif not new.keys() & set(words):
                continue
            new[output] = str(self.folder / output)
            pathlib.Path(new[output]).parent.mkdir(parents=True, exist_ok=True)
            pathlib.Path(new[output]).unlink(missing_ok=True)
            words = [new.get(word, word) for word in words if "--out-implib" not in word]
            run = subprocess.run(words, cwd=self.build.folder, text=True, check=False,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            if run.returncode:
                errors = [line for line in run.stdout.splitlines() if "error" in line]
                raise MutantError(f"does not build: {(errors or run.stdout.splitlines())[0]}")
        if not new.keys() & self.build.wanted(program):
            raise MutantError(f"{program.name} does not contain {mutant.path}; "
                           "give the program that does in programs.txt")
        return new

    def _compiling(self, words, original, changed):
        source_file = pathlib.Path(words[words.index("-c") + 1])
        text = source_file.read_text(encoding="utf-8")
        if source_file == original:
            source_file = changed
        elif f'"{original}"' in text:  # compiled together with others
            source_file = self.folder / "sources" / source_file.name
            source_file.write_text(text.replace(f'"{original}"', f'"{changed}"'), encoding="utf-8")
        kept = []
        skip = False
        for word in words:
            if not skip and word not in ("-MD", "-MT", "-MF", "-c"):
                kept.append(word)
            skip = word in ("-MT", "-MF", "-c")
        # First a header's changed form. No warnings: tests are to tell, not the compiler.
        at = kept.index("-o") if "-o" in kept else len(kept)
        first = next(i for i, word in enumerate(kept) if word[:2] in ("-I", "-D") or i == at)
        return [*kept[:first], f"-I{self.folder / 'sources'}", *kept[first:], "-w", "-c",
                str(source_file)]

    def restore(self, new):
        for output in new:
            if output.startswith("bin/"):
                self._restore(output)

    def run(self, program, limit):
        """Runs the tests: what failed, or None."""
        path = self.folder / self.build.file_of(program)
        command = [path] if self.build.kind == "native" else [ROOT / "cmake/wine-test.sh", path.name]
        filters = [program.filter]
        if program.alone:
            filters = self._tests(program)
        with DISPLAY if program.display else contextlib.nullcontext():
            return self._run_each(path, command, filters, limit)

    def _run_each(self, path, command, filters, limit):
        deadline = time.monotonic() + limit
        for each in filters:
            failed = self._run_once(path.parent, [*command, f"--gtest_filter={each}",
                                                  "--gtest_fail_fast", "--gtest_brief=1"],
                                    max(deadline - time.monotonic(), 1))
            if failed:
                return failed
        return None

    @functools.cache
    def _tests(self, program):
        path = self.build.folder / self.build.file_of(program)
        command = [path] if self.build.kind == "native" else [ROOT / "cmake/wine-run.sh", path.name]
        listed = subprocess.run([*command, "--gtest_list_tests", f"--gtest_filter={program.filter}"],
                                cwd=path.parent, text=True, check=True, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
        suite = ""
        tests = []
        for line in listed.splitlines():
            name = line.split("#")[0].rstrip()
            if not name.startswith(" "):
                suite = name
            elif suite.endswith("."):
                tests.append(suite + name.strip())
        return tests

    def _run_once(self, folder, command, limit):
        with tempfile.TemporaryFile() as output:  # no pipe: what outlives the program would hold it
            with subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=subprocess.STDOUT, start_new_session=True,
                                  env=ENVIRONMENT) as process:
                try:
                    code = process.wait(limit)
                except subprocess.TimeoutExpired:
                    return "timed out"
                finally:
                    with contextlib.suppress(ProcessLookupError):
                        os.killpg(process.pid, signal.SIGKILL)
            output.seek(0)
            text = output.read().decode("utf-8", "replace")
        if code == 0:
            return None
        failed = re.search(r"^\[  FAILED  \] (\S+?),? ", text, re.M)
        crash = re.search(r"ERROR: \w+Sanitizer: \S+|runtime error: .*|Unhandled exception", text)
        return failed[1] if failed else crash[0] if crash else f"ended with {code}"


def judge(mutant, workshop, programs, limits):
    """("dead", by what), ("survived", ""), ("equivalent", why) or ("error", why)."""
    try:
        for _, those in itertools.groupby(programs, lambda program: (program.name, program.beside)):
            tests = list(those)
            new = workshop.make(mutant, tests[0])
            try:
                failed = next(filter(None, (workshop.run(t, limits[t]) for t in tests)), None)
            finally:
                workshop.restore(new)
            if failed and mutant.equivalent:
                return "error", f"is listed as equivalent, and yet {failed} notices it"
            if failed:
                return "dead", failed
    except MutantError as error:
        return "error", str(error)
    return ("equivalent", mutant.equivalent) if mutant.equivalent else ("survived", "")


def chosen_mutants(options, build, programs):
    if options.propose:
        unknown = [path for path in options.propose if path not in sources()]
        if unknown:
            raise MutantError(f"{unknown[0]} is no source of the product; give a path from the root")
        mutants = [mutant for path in options.propose for mutant in proposals(path)]
    else:
        rows = read_mutants(options.table.read_text(encoding="utf-8"))
        mutants = [mutant for mutant in rows if options.equivalent or not mutant.equivalent]
    mutants = [mutant for mutant in mutants if options.only in str(mutant)
               and (not build or any(p.kind == build.kind
                                     for p in programs_of(mutant.path, programs)))]
    if options.sample is not None:
        mutants = random.Random(options.seed).sample(mutants, min(options.sample, len(mutants)))
    return mutants


def parse(words):
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path, help="a build folder that is up to date; any for "
                        "--list")
    parser.add_argument("--list", action="store_true", help="prints them and ends")
    parser.add_argument("--only", default="", metavar="TEXT",
                        help="those in whose printed line this text stands")
    parser.add_argument("--sample", type=int, metavar="COUNT", help="as many by chance")
    parser.add_argument("--seed", default=os.environ.get("GLAZEL_MUTANTS_SEED"),
                        help="makes chance the same again; also GLAZEL_MUTANTS_SEED")
    parser.add_argument("--equivalent", action="store_true",
                        help="with those that are listed as equivalent, which must survive")
    parser.add_argument("--jobs", type=int, default=1, help="how many at a time")
    parser.add_argument("--table", type=pathlib.Path, default=HERE / "mutants.txt", metavar="FILE",
                        help="rows from there in place of mutants.txt")
    parser.add_argument("--propose", nargs="+", metavar="FILE",
                        help="all that the rules make of these files, in place of mutants.txt")
    parser.add_argument("--rows", type=pathlib.Path, metavar="FOLDER",
                        help="writes the rows to dead.txt and survived.txt there")
    options = parser.parse_args(words)
    options.seed = options.seed or str(random.SystemRandom().randrange(10**6))
    return options


def main(words=None):
    options = parse(words)
    programs = list(read_programs((HERE / "programs.txt").read_text(encoding="utf-8")))
    try:
        build = None if options.list else Build(options.build)
        mutants = chosen_mutants(options, build, programs)
        if options.list:
            print(*mutants, sep="\n")
            return 0
        here = {mutant: [program for program in programs_of(mutant.path, programs)
                         if program.kind == build.kind] for mutant in mutants}
        used = dict.fromkeys(program for those in here.values() for program in those)
        build.require_current(used)
        build.claim()
    except (MutantError, OSError) as error:
        print(f"mutants: {error}", file=sys.stderr)
        return 2
    if options.sample is not None:
        print(f"seed {options.seed}: GLAZEL_MUTANTS_SEED={options.seed} takes these again", flush=True)

    shops = [Workshop(build, build.folder / "mutants" / str(job)) for job in range(options.jobs)]
    limits = {}
    for program in used:
        begin = time.monotonic()
        failed = shops[0].run(program, 600)
        if failed:
            print(f"mutants: {program.name} fails without any mutant: {failed}; mend that first",
                  file=sys.stderr)
            return 2
        limits[program] = 15 + 6 * (time.monotonic() - begin)

    idle = list(shops)
    counts = dict.fromkeys(("dead", "equivalent", "survived", "error"), 0)
    begin = time.monotonic()

    def work(mutant):
        shop = idle.pop()
        try:
            return judge(mutant, shop, here[mutant], limits)
        finally:
            idle.append(shop)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for mutant, (verdict, by) in zip(mutants, pool.map(work, mutants)):
            counts[verdict] += 1
            how = {"dead": "by ", "equivalent": "= "}.get(verdict, "")
            print(f"{verdict}: {mutant}  {how}{by}".rstrip(), flush=True)
            if options.rows:
                options.rows.mkdir(parents=True, exist_ok=True)
                with open(options.rows / f"{verdict}.txt", "a", encoding="utf-8") as rows:
                    rows.write(mutant.row() + "\n")
    print(f"{len(mutants)} mutants of {build.kind} programs in {time.monotonic() - begin:.0f} s: " +
          ", ".join(f"{count} {verdict}" for verdict, count in counts.items() if count))
    return 1 if counts["survived"] or counts["error"] else 0


if __name__ == "__main__":
    sys.exit(main())
