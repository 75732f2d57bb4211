"""What "validate" says of our own plug-in and renderer, and of a zoo of broken ones."""

import concurrent.futures
import json
import os
import random
import re
import shutil
import subprocess
import time
import xml.etree.ElementTree

import pytest

from conftest import (BIN, BUILD, DEADLINE, ROOT, Result, environment, finished,
                      host_command)

PLUG_IN = BIN / "GlazelDX_x64.dll"
RENDERER = BIN / "GZ3Renderer_x64.dll"
SOURCES = ROOT / "tests/doubles/zoo"
DOCUMENT = ROOT / "docs/validate.md"
DIFFERS, NOT_HELD = 3, 4
# In a usual run: animals that all groups judge, and groups that judge each other one beside its own.
JUDGED_BY_ALL, OTHERS = 6, 2

# What is asked of a file that starts, and of a plug-in that can be loaded as COM does it.
_STARTED = ("import record blend frames in_place thumbnail determinism frame_errors import_errors unload"
            " hostile_records hostile_pixels no_desktop concurrency")
_LOADED = ("identity aggregation setup properties pages presets extension state frames keyframes"
           " automation page exchange streams page_window storage safety failing_surfaces unload"
           " hostile_state threads")

# Each animal has one defect; these groups of checks must find it, and no other: first the one that it
# is for, then those that meet the same defect on their way.
RENDERERS = {
    "without_RenderFrame": f"exports start {_STARTED}",
    "init_fails": f"start {_STARTED}",
    "starts_only_once": "start",
    "shows_a_box": f"start {_STARTED}",
    "writes_small_buffers": "import",
    "keeps_what_failed": "import import_errors",
    "forgets_the_option_chunk": "record blend frames thumbnail hostile_pixels",
    "new_records_are_off": "record",
    "blends_the_option": "blend hostile_records",
    "blends_too_far": "blend hostile_records",
    "writes_between_rows": "frames hostile_pixels",
    "writes_past_the_end": "frames record in_place determinism unload hostile_pixels concurrency",
    "writes_before_the_start": "frames in_place unload hostile_pixels concurrency",
    "believes_flipped_pitches": "frames hostile_pixels",
    "loses_alpha": "frames hostile_pixels",
    "differs_in_place": "in_place",
    "draws_no_thumbnail": "thumbnail",
    "draws_anything": "thumbnail",
    "waits_for_ever": "thumbnail unload hostile_records",
    "differs_every_time": "determinism record in_place hostile_pixels concurrency",
    "differs_on_threads": "determinism concurrency",
    "writes_refused_frames": "frame_errors",
    "refuses_no_frame": "frame_errors",
    "imports_anything": "import_errors",
    "leaks_handles": "unload",
    "leaks_slots": "unload",
    "leaks_memory": "unload",
    "trusts_records": "hostile_records",
    "believes_later_versions": "hostile_records",
    "refuses_longer_records": "hostile_records",
    "changes_records": "hostile_records thumbnail",
    "trusts_numbers": "hostile_pixels",
    "differs_where_no_number_is": "hostile_pixels",
    "pretends_to_edit": "no_desktop",
    "shares_a_buffer": "concurrency",
}
PLUG_INS = {
    "without_DllCanUnloadNow": f"exports factory {_LOADED}",
    "creates_unknown_classes": "exports",
    "never_unloads": "factory exports aggregation threads",
    "always_unloads": "factory",
    "shows_a_box": f"factory exports {_LOADED}",
    "answers_unknown_interfaces": "identity",
    "leaks_references": "identity",
    "hides_in_aggregates": "aggregation identity",
    "takes_two_inputs": "setup",
    "takes_any_progress": "properties",
    "names_no_page": "pages",
    "terminates_full_names": "presets",
    "applies_any_preset": "presets",
    "tells_too_much": "extension",
    "stores_a_byte_more": "state storage",
    "stays_clean": "state streams",
    "executes_nothing": "frames setup automation exchange hostile_state",
    "needs_aligned_rows": "frames",
    "holds_keyframes": "keyframes",
    "limits_no_fraction": "automation",
    "takes_a_second_site": "page",
    "tells_nobody": "exchange",
    "hides_broken_streams": "streams",
    "stays_open": "page_window",
    "stays_small": "page_window",
    "stores_elsewhere": "storage",
    "is_safe_for_all": "safety",
    "hides_failed_frames": "failing_surfaces",
    "leaks_slots": "unload",
    "refuses_strange_looks": "hostile_state",
    "refuses_longer_looks": "hostile_state",
    "dies_on_threads": "threads",
}
# Whoever loads these ends so: every group of checks, of renderers and of plug-ins.
WHEN_LOADED = {"ends_when_loaded": "CRASHED", "hangs_when_loaded": "TIMED OUT"}
RENDERERS_BUILT_ALONE = ("without_RenderFrame", "init_fails")
PLUG_IN_BUILT_ALONE = "without_DllCanUnloadNow"


# Where nobody ever has a desktop: other tests of this time may have one in the usual prefix.
NO_DESKTOP = {"GLAZEL_WINEPREFIX": str(BUILD / "wineprefix-without-desktop")}


# Under Wine, a process that has ended may still say this on the standard error of the one that has
# started it, in the middle of a line, too. The end of each is judged by the program that is tested.
NOISE = re.compile(rb"wine client error:[0-9a-f]+: ?|sendmsg: Socket operation on non-socket\n")


def judge(*words, env=None):
    """As `host`, without what Wine says when a group's process ends."""
    done = finished(host_command("validate", *words), env=env, timeout=5 * DEADLINE)
    if done.returncode in (0, DIFFERS, NOT_HELD):
        done.stderr = NOISE.sub(b"", done.stderr).replace(b"\r", b"").strip(b"\n")
    return Result(done)


def desktop():
    display = os.environ.get("DISPLAY")
    assert display, "the page needs a display: run this under xvfb-run"
    return {"DISPLAY": display}


def validate(file, *options):
    """Plug-ins have a page to show; editors of renderers have to refuse."""
    env = NO_DESKTOP if "enderer" in file.name else desktop()
    return judge(file, "--level", 10, *options, env=env)


def cage(folder, animal, kind):
    """A file of the animal, in a folder whose name tells it what to be."""
    if animal in RENDERERS_BUILT_ALONE:
        return BIN / "renderers" / animal / RENDERER.name
    name = "zoo_plug_in_without_unload" if animal == PLUG_IN_BUILT_ALONE else f"zoo_{kind}"
    path = folder / animal / f"{name}.dll"
    path.parent.mkdir(parents=True)
    shutil.copy(BIN / f"zoo/{name}.dll", path)
    return path


def states(result):
    return {name: state for state, name in
            re.findall(r"^([A-Za-z ]+?) +(\w+\.\w+) \(level", result.output.decode(), re.M)}


def groups():
    """Name, level and sentence of each."""
    listed = judge("--list", "--level", 10).output.decode()
    return re.findall(r"^(\w+\.\w+) \(level (\d+)\): (.+?)\r?$", listed, re.M)


def caught_by(animal, kind):
    """All groups that it must fail; that which it is for first."""
    prefix, animals = {"renderer": ("renderer", RENDERERS), "plug_in": ("plugin", PLUG_INS)}[kind]
    return [f"{prefix}.{name}" for name in animals[animal].split()]


def zoo():
    """Name and kind of each."""
    return [(animal, kind) for kind, animals in (("renderer", RENDERERS), ("plug_in", PLUG_INS))
            for animal in animals]


def kill_matrix():
    """The table of the document; this file as a program prints it."""
    lines = ["| Group | Level | What holds | Animals that it is for | Others that it catches |",
             "|---|---|---|---|---|"]
    for name, level, sentence in groups():
        cells = ["", ""]
        for animal, kind in zoo():
            caught = caught_by(animal, kind)
            if name in caught:
                other = name != caught[0]
                cells[other] += (", " if cells[other] else "") + f"`{animal}`"
        lines.append(f"| `{name}` | {level} | {sentence} | {cells[0]} | {cells[1]} |")
    for animal, state in WHEN_LOADED.items():
        lines.append(f"| each group | | can load the file | `{animal}`: {state.lower()} | |")
    return "\n".join(lines) + "\n"


@pytest.fixture(scope="module", autouse=True)
def prefixes():
    """Both kept in memory. Wine's own programs inherit the outputs of the run that starts them, which
    would then not end while another one goes on; here they have got outputs that nobody reads. And a
    desktop that goes with the last window of a run would take those of the next one along."""
    pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
    silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    shells = []
    for env in (environment() | NO_DESKTOP, environment() | desktop()):
        shells.append(subprocess.Popen(host_command(program="cmd"), env=env, **pipes))
        shells[-1].stdout.readline()  # it greets when it is there
    window = subprocess.Popen(host_command(program="notepad"), env=env, **silent)
    subprocess.run(host_command("validate", PLUG_IN, "--only", "plugin.page_window"), env=env,
                   timeout=DEADLINE, check=False, **silent)
    yield
    window.terminate()
    window.wait()
    for shell in shells:
        shell.stdin.close()
        shell.wait()


@pytest.fixture(scope="module")
def report(tmp_path_factory):
    """Of our own plug-in."""
    folder = tmp_path_factory.mktemp("report")
    result = validate(PLUG_IN, "--json", folder / "report.json", "--junit", folder / "report.xml",
                      "--seed", 7)
    assert result.code == 0, result.output.decode()
    return folder


def test_every_animal_is_caught_by_its_checks_and_by_no_other(tmp_path):
    """Each by all that must catch it; by the others, which take most of the time, some animals, and
    each by some of them, drawn anew each time. All by all with GLAZEL_WHOLE_ZOO=1."""
    seed = int(os.environ.get("GLAZEL_ZOO_SEED", time.time()))
    drawn = random.Random(seed)
    whole = (zoo() if os.environ.get("GLAZEL_WHOLE_ZOO") else drawn.sample(zoo(), JUDGED_BY_ALL))
    everything = [name for name, _, _ in groups()]

    def judges(row):
        caught = caught_by(*row)
        others = [name for name in everything
                  if name not in caught and name.split(".")[0] == caught[0].split(".")[0]]
        return caught + (others if row in whole else drawn.sample(others, min(OTHERS, len(others))))

    def misjudged(row, asked):
        animal, kind = row
        caught = caught_by(animal, kind)
        file = cage(tmp_path / kind, animal, kind)
        # Who waits for ever does so in each group that catches it, which then need not take long.
        runs = ([(caught, "TIMED OUT"), (asked[len(caught):], "passed")]
                if animal == "waits_for_ever" else [(asked, "FAILED")])
        for names, state in runs:
            only = [word for name in names for word in ("--only", name)]
            result = validate(file, *only, "--time-limit", patience(state), "--jobs", 1)
            text = result.output.decode()
            judged = states(result)
            found = {group for group, state in judged.items() if state.isupper()}
            wanted = {name for name in caught if name in names}
            if found != wanted or set(judged) != set(names) or (
                    (result.code, "verdict: NOT held" in text.splitlines()[-1])
                    != ((NOT_HELD, True) if wanted else (0, False))):
                return (f"{animal}: also caught by {found - wanted}, not by {wanted - found}: "
                        f"{result.code} {text} {result.lines}")
        return None

    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        animals = sorted(zoo(), key=slow_first)
        wrong = [answer for answer in pool.map(misjudged, animals, map(judges, animals)) if answer]
    assert not wrong, f"seed {seed}\n" + "\n".join(wrong)


def patience(state):
    """Seconds: a slow machine may need long for what is to end, and not for what never does."""
    return 3 if state == "TIMED OUT" else 60


def slow_first(row):
    return row[0] != "waits_for_ever"


def test_every_check_catches_an_animal():
    assert {name for name, _, _ in groups()} == {caught_by(*row)[0] for row in zoo()}


@pytest.mark.parametrize("kind, animals", [("renderer", RENDERERS), ("plug_in", PLUG_INS)])
def test_every_animal_of_the_sources_is_in_the_zoo(kind, animals):
    text = (SOURCES / f"zoo_{kind}.cpp").read_text()
    table = text[text.index("const Animal kAnimals"):text.index("// clang-format on")]
    assert (set(re.findall(r'^    \{"(\w+)"', table, re.M))
            == {*animals, *WHEN_LOADED} - {*RENDERERS_BUILT_ALONE})


def test_the_document_has_the_whole_kill_matrix():
    assert kill_matrix() in DOCUMENT.read_text()


def test_our_own_renderer_holds_at_every_level():
    result = validate(RENDERER)
    assert result.code == 0, result.output.decode()
    assert set(states(result).values()) == {"passed"}


def test_our_own_plug_in_holds_at_every_level_and_its_report_says_where(report):
    told = json.loads((report / "report.json").read_text())
    assert told["version"] == 1 and told["kind"] == "plug-in"
    assert [file["role"] for file in told["files"]] == ["plug-in", "renderer"]
    assert all(re.fullmatch("[0-9a-f]{64}", file["sha256"]) for file in told["files"])
    assert told["machine"]["wine"] and told["machine"]["processor"]
    assert told["options"]["seed"] == 7 and told["options"]["level"] == 10
    assert {group["state"] for group in told["groups"]} == {"passed"}
    assert told["verdict"].startswith("held: ")


def test_the_report_for_build_servers_is_xml_with_a_case_for_each_group(report):
    suite = xml.etree.ElementTree.parse(report / "report.xml").getroot()
    told = json.loads((report / "report.json").read_text())
    assert [case.get("name") for case in suite] == [group["name"] for group in told["groups"]]
    assert suite.get("failures") == "0" and suite.get("errors") == "0"


def test_the_same_seed_gives_the_same_report_again(report):
    result = judge("--again", report / "report.json", env=desktop())
    assert result.code == 0, result.output.decode()
    assert "the same as" in result.output.decode()


def test_again_tells_where_it_differs(report, tmp_path):
    changed = tmp_path / "changed.json"
    told = json.loads((report / "report.json").read_text())
    told["options"]["only"] = ["plugin.state", "plugin.pages"]
    told["groups"] = [group for group in told["groups"] if group["name"] == "plugin.state"]
    told["groups"][0]["state"] = "failed"
    told["files"][1]["sha256"] = "0" * 64
    changed.write_text(json.dumps(told))
    result = judge("--again", changed, env=desktop())
    text = result.output.decode()
    assert result.code == DIFFERS, text
    assert 'differs: plugin.state: was "failed", is "passed"' in text
    assert 'differs: plugin.pages: was not asked, is "passed"' in text
    assert "differs: renderer, SHA-256: was" in text


def test_a_crash_and_a_hang_are_results_and_not_the_end(tmp_path):
    for animal, group, state in (("waits_for_ever", "renderer.thumbnail", "TIMED OUT"),
                                 ("blends_too_far", "renderer.blend", "CRASHED")):
        file = cage(tmp_path, animal, "renderer")
        result = validate(file, "--only", group, "--time-limit", patience(state))
        assert states(result) == {group: state}
        assert len(result.lines) == 1, result.lines


def test_a_page_that_is_none_fails_its_checks_and_crashes_none():
    for group in ("plugin.page", "plugin.page_window"):
        assert states(validate(BIN / "fake_effect.dll", "--only", group)) == {group: "FAILED"}


@pytest.mark.parametrize("kind, groups", [("renderer", ("renderer.exports", "renderer.start")),
                                          ("plug_in", ("plugin.exports", "plugin.factory"))])
@pytest.mark.parametrize("animal, state", WHEN_LOADED.items())
def test_what_a_file_does_when_it_is_loaded_is_a_result_of_each_group(kind, groups, animal, state,
                                                                      tmp_path):
    result = validate(cage(tmp_path, animal, kind), "--only", groups[0], "--only", groups[1],
                      "--time-limit", patience(state))
    assert result.code == NOT_HELD and states(result) == dict.fromkeys(groups, state)


@pytest.mark.parametrize("animal, state", WHEN_LOADED.items())
def test_what_the_renderer_of_a_plug_in_does_when_it_is_loaded_is_a_result(animal, state, tmp_path):
    file = cage(tmp_path, animal, "renderer")
    file.rename(file.with_name(RENDERER.name))
    result = validate(PLUG_IN, "--renderer", file.parent, "--only", "plugin.state",
                      "--time-limit", patience(state))
    assert result.code == NOT_HELD and states(result) == {"plugin.state": state}


def test_what_is_no_plug_in_or_renderer_cannot_be_judged(tmp_path):
    words = tmp_path / "words.dll"
    words.write_text("no DLL at all")
    for file in (tmp_path / "nowhere.dll", words, "C:\\windows\\system32\\version.dll"):
        result = judge(file)
        assert result.code == 1 and not result.output, result.output
        assert len(result.lines) == 1


def test_a_report_that_is_none_is_refused(tmp_path):
    for text in ("words", "{}", '{"format": "glazelhost validate report", "version": 2}'):
        path = tmp_path / "report.json"
        path.write_text(text)
        result = judge("--again", path)
        assert result.code == 1 and "report.json" in result.only_line()


@pytest.mark.parametrize("words", [
    [], ["--list", "a.dll"], ["a.dll", "--level", "11"], ["a.dll", "--level", "0"],
    ["--again", "a.json", "--level", "3"], ["a.dll", "--time-limit", "0"]])
def test_wrong_words_are_told(words):
    result = judge(*words)
    assert result.code == 2 and result.only_line().startswith("glazelhost: ")


if __name__ == "__main__":
    print(kill_matrix(), end="")
