"""Measures the rows of the reference renderer beside ffmpeg's filter, for ./bench.sh."""

import argparse
import datetime
import json
import os
import pathlib
import platform
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
BENCH = BUILD / "release/bin/kernel_bench.exe"
VERSION = 1  # of build/bench.json
FFMPEG_FRAMES = 20
ROUNDS_AT_ONCE = 3  # of our figures, before ffmpeg has its turn
SLOWER = 1.1  # ratios move by about a tenth from run to run

# Ratio, figure, figure it is compared with.
RATIOS = [
    ("ffmpeg lut3d / LUT 8-bit", "ffmpeg lut3d, 1 thread", "LUT 8-bit"),
    ("LUT 8-bit / copy", "LUT 8-bit", "copy 8-bit"),
    ("LUT 8-bit, 1 thread / all cores", "LUT 8-bit", "LUT 8-bit, all cores"),
    ("LUT 8-bit, 65 points / 33", "LUT 8-bit, 65 points", "LUT 8-bit"),
    (
        "the same of random pixels",
        "LUT 8-bit, 65 points, random pixels",
        "LUT 8-bit, random pixels",
    ),
    ("CDL / LUT 8-bit", "CDL 8-bit", "LUT 8-bit"),
    ("CDL with saturation / LUT 8-bit", "CDL 8-bit with saturation", "LUT 8-bit"),
    ("CDL with saturation and LUT / LUT 8-bit", "CDL with saturation and LUT 8-bit", "LUT 8-bit"),
    ("curves / LUT 8-bit", "curves 8-bit", "LUT 8-bit"),
    ("LUT float / copy", "LUT float", "copy float"),
    ("LUT float, 1 thread / all cores", "LUT float", "LUT float, all cores"),
    ("LUT linear float / copy", "LUT linear float", "copy float"),
    ("CDL / LUT float", "CDL float", "LUT float"),
    ("CDL with power / LUT float", "CDL float with power", "LUT float"),
    ("pixel at 1280x720 / 1920x1080", "LUT 8-bit, 1280x720", "LUT 8-bit"),
    ("pixel at 3840x2160 / 1920x1080", "LUT 8-bit, 3840x2160", "LUT 8-bit"),
    ("pixel at 7680x4320 / 1920x1080", "LUT 8-bit, 7680x4320", "LUT 8-bit"),
]
BETTER_LARGE = {
    "ffmpeg lut3d / LUT 8-bit",
    "LUT 8-bit, 1 thread / all cores",
    "LUT float, 1 thread / all cores",
}


def fail(what, why, remedy):
    print(f"bench: {what}: {why}; {remedy}", file=sys.stderr)
    sys.exit(1)


def run(words, cwd):
    """A program's standard output; ends the run with one line when it fails."""
    done = subprocess.run(words, cwd=cwd, capture_output=True, text=True)
    if done.returncode != 0:
        lines = done.stderr.strip().splitlines() or [f"exit code {done.returncode}"]
        fail(pathlib.Path(words[0]).name, lines[-1], "see that it runs by itself")
    return done.stdout


def ffmpeg_seconds(folder, video_filter):
    begin = time.perf_counter()
    run(
        [
            "ffmpeg",
            "-v",
            "error",
            "-threads",
            "1",
            "-filter_threads",
            "1",
            "-stream_loop",
            "-1",
            "-f",
            "rawvideo",
            "-pix_fmt",
            "bgra",
            "-s",
            "1920x1080",
            "-i",
            "frame.bgra",
            "-frames:v",
            str(FFMPEG_FRAMES),
            "-vf",
            video_filter,
            "-f",
            "null",
            "-",
        ],
        folder,
    )
    return time.perf_counter() - begin


def measure(rounds):
    """Milliseconds of every run, by the figure's name, and the pixels of each."""
    times, pixels = {}, {}
    with tempfile.TemporaryDirectory() as folder:
        while not times or len(times["LUT 8-bit"]) < rounds:
            text = run([ROOT / "cmake/wine-run.sh", BENCH, str(ROUNDS_AT_ONCE), "."], folder)
            for figure in json.loads(text):
                times.setdefault(figure["name"], []).extend(figure["ms"])
                pixels[figure["name"]] = figure["pixels"]
            for _ in range(ROUNDS_AT_ONCE):
                plain = ffmpeg_seconds(folder, "null")
                lut = ffmpeg_seconds(folder, "lut3d=file=look.cube:interp=tetrahedral")
                times.setdefault("ffmpeg lut3d, 1 thread", []).append(
                    (lut - plain) * 1000 / FFMPEG_FRAMES
                )
            pixels["ffmpeg lut3d, 1 thread"] = pixels["LUT 8-bit"]
    return times, pixels


def machine():
    names = [
        line.split(":", 1)[1].strip()
        for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines()
        if line.startswith("model name")
    ]
    return {
        "processor": names[0] if names else platform.processor(),
        "cores": os.cpu_count(),
        "system": platform.platform(),
        "load": os.getloadavg()[0],
    }


def summary(times, pixels):
    figures = {
        name: {
            "median": statistics.median(runs),
            "least": min(runs),
            "most": max(runs),
            "runs": len(runs),
            "ns_per_pixel": statistics.median(runs) * 1e6 / pixels[name],
        }
        for name, runs in times.items()
    }
    ratios = {
        name: figures[a]["ns_per_pixel"] / figures[b]["ns_per_pixel"] for name, a, b in RATIOS
    }
    return {
        "version": VERSION,
        "time": datetime.datetime.now().isoformat(timespec="seconds"),
        "machine": machine(),
        "figures": figures,
        "ratios": ratios,
    }


def print_table(result):
    print(f"{'figure':38}{'median':>9}{'least':>9}{'most':>9}  ms")
    for name, figure in result["figures"].items():
        print(f"{name:38}{figure['median']:9.2f}{figure['least']:9.2f}{figure['most']:9.2f}")
    print()
    for name, ratio in result["ratios"].items():
        print(f"{name:38}{ratio:9.2f}")


def write_plot(path, result):
    """Bars of nanoseconds a pixel: ours, ffmpeg's, and the copies that nothing can beat."""
    rows = sorted(result["figures"].items(), key=lambda row: row[1]["ns_per_pixel"])
    scale = 460 / rows[-1][1]["ns_per_pixel"]
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="860" height="{22 * len(rows) + 40}"'
        ' font-family="sans-serif" font-size="13">'
        '<rect width="100%" height="100%" fill="#fff"/>'
        '<text x="10" y="20">nanoseconds a pixel, medians: ours blue, ffmpeg red, copies grey'
        "</text>"
    ]
    for i, (name, figure) in enumerate(rows):
        colour = (
            "#c0392b"
            if name.startswith("ffmpeg")
            else "#888"
            if name.startswith("copy")
            else "#2a6fb0"
        )
        y = 22 * i + 32
        width = figure["ns_per_pixel"] * scale
        lines.append(
            f'<text x="270" y="{y + 13}" text-anchor="end">{name}</text>'
            f'<rect x="280" y="{y}" width="{width:.1f}" height="16" fill="{colour}"/>'
            f'<text x="{286 + width:.1f}" y="{y + 13}">{figure["ns_per_pixel"]:.2f}'
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
        return old["ratios"]
    except (OSError, ValueError, KeyError, TypeError) as error:
        fail(path, f"it cannot be read ({error})", "name a build/bench.json of an earlier run")


def print_slower(old, new):
    slower = 0
    for name, ratio in new.items():
        if name in old:
            change = old[name] / ratio if name in BETTER_LARGE else ratio / old[name]
            if change > SLOWER:
                slower += 1
                print(f"slower: {name}: {old[name]:.2f} before, {ratio:.2f} now")
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
    parser.add_argument("--rounds", type=int, default=15, help="runs of each figure (default 15)")
    options = parser.parse_args()
    if options.rounds < 1:
        parser.error("--rounds: at least 1")
    old = read_old(options.compare) if options.compare else None
    result = summary(*measure(options.rounds))
    print_table(result)
    (BUILD / "bench.json").write_text(json.dumps(result, indent=1) + "\n", encoding="utf-8")
    write_plot(BUILD / "bench.svg", result)
    print("\nwrote build/bench.json and build/bench.svg")
    if old is not None:
        print_slower(old, result["ratios"])


if __name__ == "__main__":
    main()
