"""Measures what a person waits for, beside what ffmpeg or a plain copy takes, for ./bench.sh."""

import argparse
import contextlib
import datetime
import json
import os
import pathlib
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
BIN = BUILD / "release/bin"
WINE = ROOT / "cmake/wine-run.sh"
INSTALLED = "installed"  # in the working folder: one that does not look after its own build
VERSION = 2  # of build/bench.json
ROUNDS_AT_ONCE = 3  # of our figures, before ffmpeg has its turn
ROUNDS_A_JOB = 5  # rounds for one run of each whole job
FILTER_FRAMES = 20
CLIP_FRAMES = 100
PHOTOS, PHOTO_SIZE = 24, (6000, 4000)
MEBIBYTES_OF_ITS_OWN = 64  # that a picture job may take besides what grows with the picture
SLOWER = 1.1  # ratios move by about a tenth from run to run

FILTER = "ffmpeg lut3d, 1 thread"
LUT3D = "lut3d=file=look.cube:interp=tetrahedral"
# What is measured, the goal, and the two figures whose ratio it is. Figures are times a unit: a
# pixel, a job, a step. Whatever has one figure alone is in the words of its name.
RATIOS = [
    ("ffmpeg lut3d / LUT 8-bit", ">= 14", FILTER, "LUT 8-bit"),
    ("LUT 8-bit / copy", "<= 5.6", "LUT 8-bit", "copy 8-bit"),
    ("LUT 8-bit, 1 thread / all cores", ">= 1.8", "LUT 8-bit", "LUT 8-bit, all cores"),
    ("LUT 8-bit, 65 points / 33", "<= 1.2", "LUT 8-bit, 65 points", "LUT 8-bit"),
    (
        "the same of random pixels",
        "<= 2.5",
        "LUT 8-bit, 65 points, random pixels",
        "LUT 8-bit, random pixels",
    ),
    ("CDL / LUT 8-bit", "<= 1.3", "CDL 8-bit", "LUT 8-bit"),
    ("CDL with saturation / LUT 8-bit", "<= 1.3", "CDL 8-bit with saturation", "LUT 8-bit"),
    (
        "CDL with saturation and LUT / LUT 8-bit",
        "<= 1.3",
        "CDL with saturation and LUT 8-bit",
        "LUT 8-bit",
    ),
    ("curves / LUT 8-bit", "<= 1.3", "curves 8-bit", "LUT 8-bit"),
    ("LUT float / copy", "<= 2", "LUT float", "copy float"),
    ("LUT float, 1 thread / all cores", ">= 1.8", "LUT float", "LUT float, all cores"),
    ("LUT linear float / copy", "<= 4.5", "LUT linear float", "copy float"),
    ("CDL / LUT float", "<= 1.3", "CDL float", "LUT float"),
    ("CDL with power / LUT float", "<= 3", "CDL float with power", "LUT float"),
    ("pixel at 1280x720 / 1920x1080", "0.8 to 1.2", "LUT 8-bit, 1280x720", "LUT 8-bit"),
    ("pixel at 3840x2160 / 1920x1080", "0.8 to 1.2", "LUT 8-bit, 3840x2160", "LUT 8-bit"),
    ("pixel at 7680x4320 / 1920x1080", "0.8 to 1.2", "LUT 8-bit, 7680x4320", "LUT 8-bit"),
    *(
        (
            f"memcpy / row copy float, {size}",
            goal,
            f"memcpy float, {size}",
            f"row copy float, {size}",
        )
        for size, goal in (
            ("160x90", ">= 0.95"),
            ("640x360", ">= 0.95"),
            ("1280x720", ">= 0.95"),
            ("1920x1080", ">= 1.3"),
            ("3840x2160", ">= 1.3"),
        )
    ),
    ("video 8-bit: ffmpeg, same conversions / ours", ">= 1.7", "video 8-bit, ffmpeg", "video 8-bit"),
    (
        "video 8-bit: ffmpeg, its own conversions / ours",
        ">= 1.2",
        "video 8-bit, ffmpeg by itself",
        "video 8-bit",
    ),
    ("video 10-bit: ffmpeg / ours", ">= 1.2", "video 10-bit, ffmpeg", "video 10-bit"),
    ("24 photographs: ffmpeg / ours", ">= 1.5", "photographs, ffmpeg", "photographs"),
]
# Figures that stand for themselves, in milliseconds, and other numbers.
SLIDER = "slider 8-bit, CDL and LUT, 3840x2160"
TIMES = [
    ("slider 8-bit, CDL, 3840x2160", "<= 16"),
    (SLIDER, "<= 16"),
    ("slider linear float, CDL and LUT, 3840x2160", "<= 16"),
    *(
        (f"slider {kind}, CDL and LUT, {scope}, 3840x2160, until it shows", "<= 33")
        for kind in ("8-bit", "linear float")
        for scope in ("parade", "waveform", "vectorscope", "histogram")
    ),
    ("first effect", ""),
    ("further effect", ""),
    ("program start", ""),
    ("from a clean clone to the first picture", ""),
]
NUMBERS = [
    ("bytes a pixel, 8-bit photograph", "<= 13"),
    ("bytes a pixel, float photograph", "<= 50"),
    ("allocations a frame, 8-bit", "<= 0"),
    ("allocations a frame, float", "<= 0"),
]


def fail(what, why, remedy):
    print(f"bench: {what}: {why}; {remedy}", file=sys.stderr)
    sys.exit(1)


def run(words, folder, **more):
    """A program's standard output; ends the run with one line when it fails."""
    words = [str(word) for word in words]
    # No pipe for standard error: Wine's desktop, when it starts along the way, keeps it open.
    with tempfile.TemporaryFile("w+") as errors:
        done = subprocess.run(words, cwd=folder, stdout=subprocess.PIPE, stderr=errors, text=True,
                              check=False, **more)
        errors.seek(0)
        said = errors.read()
    if done.returncode != 0:
        lines = said.strip().splitlines() or [f"exit code {done.returncode}"]
        fail(" ".join(words[:3]), lines[-1], "see that it runs by itself")
    return done.stdout


def ffmpeg(folder, *words):
    run(["ffmpeg", "-nostdin", "-v", "error", "-y", *words], folder)


@contextlib.contextmanager
def wine_awake():
    """What Wine starts beside the first program would take a core from those that are measured."""
    pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
    with subprocess.Popen([WINE, "cmd"], **pipes) as shell:
        shell.stdout.readline()  # it greets when it is there
        yield
        shell.stdin.close()


class Figures:
    """Times by name, and how many units each was for."""

    def __init__(self):
        self.milliseconds, self.units = {}, {}

    def add(self, name, milliseconds, units=1):
        self.milliseconds.setdefault(name, []).append(milliseconds)
        self.units[name] = units

    def take(self, text):
        for figure in json.loads(text):
            for time_ in figure["ms"]:
                self.add(figure["name"], time_, figure["units"])

    def time(self, name, work, units=1):
        begin = time.perf_counter()
        work()
        self.add(name, (time.perf_counter() - begin) * 1000, units)

    def median(self, name):
        return statistics.median(self.milliseconds[name])

    def a_unit(self, name):
        return self.median(name) / self.units[name]


def measure_rows(figures, rounds, folder):
    """Our kernels and row copies, in turn with ffmpeg's filter on one thread."""
    raw = ["-f", "rawvideo", "-pix_fmt", "bgra", "-s", "1920x1080", "-i", "frame.bgra"]
    once = ["-threads", "1", "-filter_threads", "1", "-stream_loop", "-1", *raw]
    once += ["-frames:v", str(FILTER_FRAMES)]

    def seconds(video_filter):
        begin = time.perf_counter()
        ffmpeg(folder, *once, "-vf", video_filter, "-f", "null", "-")
        return time.perf_counter() - begin

    while len(figures.milliseconds.get(FILTER, [])) < rounds:
        figures.time("program start", lambda: run([WINE, BIN / "glazelhost.exe", "--version"], "/"))
        with wine_awake():
            figures.take(run([WINE, BIN / "kernel_bench.exe", ROUNDS_AT_ONCE, "."], folder))
            figures.take(run([WINE, BIN / "adapter_bench.exe", ROUNDS_AT_ONCE], folder))
        for _ in range(ROUNDS_AT_ONCE):
            filtered = seconds(LUT3D) - seconds("null")
            figures.add(FILTER, filtered * 1000 / FILTER_FRAMES, 1920 * 1080)


def measure_editor(figures, folder):
    screen = ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24"]
    figures.take(run([*screen, WINE, BIN / "editor_update_bench.exe"], folder))


def conversions(planes, samples):
    """To `planes` of RGB, through the LUT and back, as ./glazel converts."""
    there = "zscale=min=709:rin=limited:m=gbr:r=full:filter=spline36:cin=left:dither=none"
    back = "zscale=min=gbr:rin=full:m=709:r=limited:filter=spline36:c=left:dither=none"
    return f"{there},format={planes},{LUT3D},{back},format={samples}"


def glazel(folder, *words):
    run([folder / INSTALLED / "bin/glazel", *words, "--overwrite", "--quiet"], folder)


def measure_video(figures, rounds, folder):
    picture = "testsrc2=s=1920x1080:r=25,format=yuv444p,noise=alls=6:allf=t"
    units = CLIP_FRAMES * 1920 * 1080
    for bits, samples, planes in ((8, "yuv420p", "gbrp"), (10, "yuv420p10le", "gbrp16le")):
        clip = f"clip{bits}.y4m"
        more = ["-strict", "-1", "-pix_fmt", samples]
        ffmpeg(folder, "-f", "lavfi", "-i", picture, "-frames:v", str(CLIP_FRAMES), *more, clip)
        words = ["render", clip, "ours.y4m", "--look", "look.cube"]
        jobs = {
            f"video {bits}-bit": lambda: glazel(folder, *words),
            f"video {bits}-bit, ffmpeg": lambda: ffmpeg(
                folder, "-i", clip, "-vf", conversions(planes, samples), *more, "theirs.y4m"
            ),
        }
        if bits == 8:
            jobs["video 8-bit, ffmpeg by itself"] = lambda: ffmpeg(
                folder, "-i", clip, "-vf", LUT3D, *more, "theirs.y4m"
            )
        for _ in range(rounds):
            for name, job in jobs.items():
                figures.time(name, job, units)
        os.remove(folder / clip)


def measure_photographs(figures, rounds, folder):
    width, height = PHOTO_SIZE
    picture = f"testsrc2=s={width}x{height}:r=1,noise=alls=6:allf=t"
    more = ["-frames:v", str(PHOTOS), "-pix_fmt", "yuvj420p", "-q:v", "3"]
    ffmpeg(folder, "-f", "lavfi", "-i", picture, *more, "photo_%02d.jpg")
    words = ["render", "photo_%02d.jpg", "ours_%02d.jpg", "--look", "look.cube"]
    jobs = {
        "photographs": lambda: glazel(folder, *words),
        "photographs, ffmpeg": lambda: ffmpeg(
            folder, "-i", "photo_%02d.jpg", "-vf", LUT3D, *more, "theirs_%02d.jpg"
        ),
    }
    for _ in range(rounds):
        for name, job in jobs.items():
            figures.time(name, job, PHOTOS * width * height)


def most_memory(words, folder):
    """Bytes that the program had in memory at most, of its own and of its libraries."""
    with open(folder / "words.txt", "wb") as words_said:
        child = subprocess.Popen(words, cwd=folder, stdout=words_said, stderr=words_said)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        fail(words[1], f"exit code {child.returncode}", "see that it runs by itself")
    return usage.ru_maxrss * 1024


def measure_memory(folder):
    pixels = PHOTO_SIZE[0] * PHOTO_SIZE[1]
    ffmpeg(folder, "-i", "photo_01.jpg", "-pix_fmt", "rgb48le", "deep.tif")
    found = {}
    for kind, source, target in (
        ("8-bit", "photo_01.jpg", "graded.jpg"),
        ("float", "deep.tif", "graded.tif"),
    ):
        words = ["render", source, target, "--look", "look.cube", "--overwrite"]
        most = most_memory([str(WINE), str(BIN / "glazelhost.exe"), *words], folder)
        found[f"bytes a pixel, {kind} photograph"] = (most - (MEBIBYTES_OF_ITS_OWN << 20)) / pixels
    return found


def allocations(kind, count, folder):
    words = ["render", f"small.{kind}", "-", "--size", "320x180", "--frames", f"1-{count}"]
    words += ["--input-format", kind, "--output-format", kind, "--look", "look.cube"]
    done = subprocess.run(
        [WINE, BIN / "glazelhost.exe", *words],
        cwd=folder,
        env={**os.environ, "WINEDEBUG": "+heap"},
        stdout=subprocess.DEVNULL,
        stderr=subprocess.PIPE,
        check=False,
    )
    if done.returncode != 0:
        fail("glazelhost", f"exit code {done.returncode}", "see that it runs by itself")
    return done.stderr.count(b":RtlAllocateHeap ") + done.stderr.count(b":RtlReAllocateHeap ")


def measure_allocations(folder):
    """Of the whole process, as Wine sees them, by what fifty more frames add; a few of them come or
    do not come with each start."""
    found = {}
    for name, kind, pixels in (("8-bit", "bgra8", "bgra"), ("float", "gbraf32", "gbrapf32le")):
        picture = ["-f", "lavfi", "-i", "testsrc2=s=320x180", "-frames:v", "60", "-pix_fmt", pixels]
        ffmpeg(folder, *picture, "-f", "rawvideo", f"small.{kind}")
        more = allocations(kind, 60, folder) - allocations(kind, 10, folder)
        found[f"allocations a frame, {name}"] = round(more / 50)
    return found


def measure_clone(figures, folder):
    clone = folder / "clone"

    def first_picture():
        run(["git", "clone", "-q", ROOT, clone], folder)
        picture, look = "samples/images/rocket.jpg", "samples/looks/warm_print.cube"
        run(["./glazel", "render", picture, "graded.png", "--look", look], clone)

    figures.time("from a clean clone to the first picture", first_picture)
    shutil.rmtree(clone)


def machine():
    names = [
        line.split(":", 1)[1].strip()
        for line in pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
        if line.startswith("model name")
    ]
    return {
        "processor": names[0] if names else platform.processor(),
        "cores": os.cpu_count(),
        "system": platform.platform(),
        "load": os.getloadavg()[0],
    }


def measure(options):
    figures, numbers, load = Figures(), {}, os.getloadavg()[0]
    with tempfile.TemporaryDirectory(prefix="glazel-bench-", dir=BUILD) as name:
        folder = pathlib.Path(name)
        long_rounds = max(options.rounds // ROUNDS_A_JOB, 1)
        # The prefix of the build, which the first start of a fresh one would have to make.
        os.environ.setdefault("GLAZEL_WINEPREFIX", str(BUILD / "wineprefix"))
        run([ROOT / "glazel", "install", folder / INSTALLED], folder)
        measure_rows(figures, options.rounds, folder)
        measure_editor(figures, folder)
        measure_video(figures, long_rounds, folder)
        measure_photographs(figures, long_rounds, folder)
        numbers.update(measure_memory(folder))
        numbers.update(measure_allocations(folder))
        if options.clone:
            measure_clone(figures, folder)
    return summary(figures, numbers, load)


def summary(figures, numbers, load):
    results = {}
    for name, goal, above, below in RATIOS:
        results[name] = (figures.a_unit(above) / figures.a_unit(below), goal)
    for name, goal in TIMES:
        if name in figures.units:
            results[name + ", ms"] = (figures.median(name), goal)
    for name, goal in NUMBERS:
        results[name] = (numbers[name], goal)
    return {
        "version": VERSION,
        "time": datetime.datetime.now().isoformat(timespec="seconds"),
        "machine": machine() | {"load before": load},
        "figures": {
            name: {
                "median": figures.median(name),
                "least": min(runs),
                "most": max(runs),
                "runs": len(runs),
                "ns_per_unit": figures.a_unit(name) * 1e6,
                "units": figures.units[name],
            }
            for name, runs in figures.milliseconds.items()
        },
        "results": {n: {"value": v, "goal": g, "met": is_met(v, g)} for n, (v, g) in results.items()},
    }


def is_met(value, goal):
    """None where there is no goal."""
    if not goal:
        return None
    first, _, last = goal.partition(" to ")
    if last:
        return float(first) <= value <= float(last)
    sign, number = goal.split()
    return value >= float(number) if sign == ">=" else value <= float(number)


def print_table(result):
    print(f"{'time':46}{'median':>10}{'least':>10}{'most':>10}{'runs':>6}  ms")
    for name, figure in result["figures"].items():
        spread = "".join(f"{figure[key]:10.3f}" for key in ("median", "least", "most"))
        print(f"{name:46}{spread}{figure['runs']:6}")
    print(f"\n{'figure':54}{'measured':>10}  goal")
    for name, row in result["results"].items():
        mark = "  missed" if row["met"] is False else ""
        print(f"{name:54}{row['value']:10.2f}  {row['goal']}{mark}")


def write_plot(path, result):
    """Bars of nanoseconds a pixel: ours, ffmpeg's, and the copies that nothing can beat."""
    rows = [(name, row["ns_per_unit"]) for name, row in result["figures"].items() if row["units"] > 1]
    rows.sort(key=lambda row: row[1])
    scale = 460 / rows[-1][1]
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="860" height="{22 * len(rows) + 40}"'
        ' font-family="sans-serif" font-size="13">'
        '<rect width="100%" height="100%" fill="#fff"/>'
        '<text x="10" y="20">nanoseconds a pixel, medians: ours blue, ffmpeg red, copies grey'
        "</text>"
    ]
    for i, (name, nanoseconds) in enumerate(rows):
        is_copy = name.startswith(("copy", "memcpy"))
        colour = "#c0392b" if "ffmpeg" in name else "#888" if is_copy else "#2a6fb0"
        y = 22 * i + 32
        width = nanoseconds * scale
        lines.append(
            f'<text x="270" y="{y + 13}" text-anchor="end">{name}</text>'
            f'<rect x="280" y="{y}" width="{width:.1f}" height="16" fill="{colour}"/>'
            f'<text x="{286 + width:.1f}" y="{y + 13}">{nanoseconds:.2f}'
            "</text>"
        )
    path.write_text("\n".join(lines) + "\n</svg>\n", encoding="utf-8")


def read_old(path):
    try:
        old = json.loads(path.read_text(encoding="utf-8"))
        if old["version"] != VERSION:
            fail(
                path, f"it is of version {old['version']}", f"measure again with version {VERSION}"
            )
        return {name: row["value"] for name, row in old["results"].items()}
    except (OSError, ValueError, KeyError, TypeError) as error:
        fail(path, f"it cannot be read ({error})", "name a build/bench.json of an earlier run")


def print_slower(old, new):
    slower = 0
    for name, row in new.items():
        before, now = old.get(name), row["value"]
        if before is None:
            continue
        more, less = (before, now) if row["goal"].startswith(">=") else (now, before)
        if more > SLOWER * less:
            slower += 1
            print(f"slower: {name}: {before:.2f} before, {now:.2f} now")
    if slower == 0:
        print(f"nothing became slower by more than {SLOWER - 1:.0%}")


def main():
    parser = argparse.ArgumentParser(prog="./bench.sh", description=__doc__)
    parser.add_argument(
        "--compare",
        metavar="OLD.json",
        type=pathlib.Path,
        help="name what became slower since that run",
    )
    parser.add_argument(
        "--rounds",
        type=int,
        default=15,
        help="runs of each figure (default 15; whole jobs run a fifth as often)",
    )
    parser.add_argument(
        "--clone", action="store_true", help="measure also from a clean clone to the first picture"
    )
    options = parser.parse_args()
    if options.rounds < 1:
        parser.error("--rounds: at least 1")
    old = read_old(options.compare) if options.compare else None
    result = measure(options)
    print_table(result)
    (BUILD / "bench.json").write_text(json.dumps(result, indent=1) + "\n", encoding="utf-8")
    write_plot(BUILD / "bench.svg", result)
    print("\nwrote build/bench.json and build/bench.svg")
    if old is not None:
        print_slower(old, result["results"])


if __name__ == "__main__":
    main()
