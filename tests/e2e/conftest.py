"""What the end-to-end tests share: running the host program under Wine, and making inputs."""

import os
import pathlib
import shutil
import signal
import struct
import subprocess
import tempfile
import time

import numpy as np
import pytest

from wine_exit import exit_code

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.setdefault("GLAZEL_BUILD", str(ROOT / "build/release")))
BIN = BUILD / "bin"
LOOKS = ROOT / "samples/looks"
WARM = LOOKS / "warm_print.cube"
COOL = LOOKS / "cool_night.cc"
IMAGES = ROOT / "samples/images"
CLIP = ("--size", "64x48")  # of what write_clip writes
DEADLINE = 120  # seconds that no run ever needs

# What starts the tests may ignore it, as a script does for what it leaves in the background, and what
# they start would inherit that.
signal.signal(signal.SIGINT, signal.default_int_handler)


def environment():
    # No test here opens a window, and none may depend on the tester's own settings.
    kept = {k: v for k, v in os.environ.items()
            if k not in ("DISPLAY", "GLAZEL_RENDERER") and not k.startswith("PYTHON")}
    return kept | {"GLAZEL_BUILD": str(BUILD)}


class Result:
    """A finished run: exit code, standard output as bytes, lines of standard error."""

    def __init__(self, finished):
        self.code = exit_code(finished.returncode, finished.stdout + finished.stderr)
        self.output = finished.stdout
        self.lines = finished.stderr.decode("utf-8").splitlines()

    def only_line(self):
        assert len(self.lines) == 1, self.lines
        return self.lines[0]


def finished(command, data=None, cwd=None, env=None, timeout=DEADLINE):
    # No pipe for standard error: Wine's desktop, when it starts along the way, keeps it open.
    with tempfile.TemporaryFile() as errors:
        done = subprocess.run([str(word) for word in command], input=data if data else b"",
                              stdout=subprocess.PIPE, stderr=errors, cwd=cwd, timeout=timeout,
                              env=environment() | (env or {}), check=False)
        errors.seek(0)
        return subprocess.CompletedProcess(command, done.returncode, done.stdout, errors.read())


def run(command, data=None, cwd=None, env=None):
    return Result(finished(command, data, cwd, env))


def host_command(*words, program=None):
    return [ROOT / "cmake/wine-run.sh", program or BIN / "glazelhost.exe", *words]


def host(*words, data=None, cwd=None, env=None, program=None):
    return run(host_command(*words, program=program), data, cwd, env)


def succeed(result):
    assert result.code == 0, result.lines
    return result


def render(source, target, *options, look=WARM, **more):
    return host("render", source, target, "--look", look, *options, **more)


def wait_until(condition):
    deadline = time.monotonic() + DEADLINE
    while not condition():
        assert time.monotonic() < deadline, "it did not happen in time"
        time.sleep(0.02)


def assert_alike(first, second, most):
    """No channel of the two pictures is further apart than `most`."""
    succeed(host("compare", first, second, "--fail-over", most))


def ffmpeg(*words, data=None):
    """Standard output of ffmpeg, which must succeed."""
    finished = subprocess.run(["ffmpeg", "-nostdin" if data is None else "-y", "-v", "error", "-y",
                               *[str(word) for word in words]],
                              input=data, capture_output=True, timeout=DEADLINE, check=False)
    assert finished.returncode == 0, finished.stderr.decode()
    return finished.stdout


def probe(path, entries, stream="v:0"):
    text = subprocess.run(["ffprobe", "-v", "error", "-select_streams", stream, "-show_entries",
                           f"stream={entries}", "-of", "default=noprint_wrappers=1", str(path)],
                          capture_output=True, check=True, timeout=DEADLINE).stdout.decode()
    return dict(line.split("=", 1) for line in text.splitlines())


def pixels(path, pixel_format="rgb24"):
    """The picture as rows x columns x channels of integers, read by ffmpeg."""
    shape = probe(path, "width,height")
    kind, channels = {"rgb24": (np.uint8, 3), "rgba": (np.uint8, 4), "rgb48le": ("<u2", 3),
                      "rgba64le": ("<u2", 4)}[pixel_format]
    raw = ffmpeg("-i", path, "-frames:v", 1, "-f", "rawvideo", "-pix_fmt", pixel_format, "-")
    return np.frombuffer(raw, kind).reshape(int(shape["height"]), int(shape["width"]),
                                            channels).astype(np.int64)


def write_png(path, array):
    """8-bit RGB or RGBA."""
    height, width, channels = array.shape
    ffmpeg("-f", "rawvideo", "-pix_fmt", {3: "rgb24", 4: "rgba"}[channels], "-s",
           f"{width}x{height}", "-i", "-", path, data=array.astype(np.uint8).tobytes())


def write_deep_png(path, array):
    """16-bit RGB; ffmpeg's own conversion from 8 bits is not exact."""
    height, width, _ = array.shape
    ffmpeg("-f", "rawvideo", "-pix_fmt", "rgb48le", "-s", f"{width}x{height}", "-i", "-", path,
           data=array.astype("<u2").tobytes())


def tiff(*pages, tags=None, order="<"):
    """A TIFF of rows x columns x channels of numbers; `tags` {number: (type, values)} go to the
    first page. `order` is that of everything, the numbers included."""
    codes = {"B": 7, "s": 2, "H": 3, "I": 4}
    data = bytearray(struct.pack(order + "2sHI", {"<": b"II", ">": b"MM"}[order], 42, 0))
    link = 4
    for array in pages:
        height, width, channels = array.shape
        strip = len(data)
        data += array.tobytes()
        fields = {256: ("I", [width]), 257: ("I", [height]), 259: ("H", [1]), 262: ("H", [2]),
                  258: ("H", [array.dtype.itemsize * 8] * channels), 273: ("I", [strip]),
                  277: ("H", [channels]), 278: ("I", [height]), 279: ("I", [array.nbytes]),
                  339: ("H", [3 if array.dtype.kind == "f" else 1] * channels)}
        if channels == 4:
            fields[338] = ("H", [2])
        entries = b""
        for tag, (code, values) in sorted((fields | (tags or {})).items()):
            value = (values if code in "Bs" else struct.pack(f"{order}{len(values)}{code}", *values))
            count = len(values)
            if len(value) > 4:
                data += bytes(len(data) % 2)
                value, place = struct.pack(order + "I", len(data)), value
                data += place
            entries += struct.pack(order + "HHI", tag, codes[code], count) + value.ljust(4, b"\0")
        data += bytes(len(data) % 2)
        struct.pack_into(order + "I", data, link, len(data))
        data += struct.pack(order + "H", len(entries) // 12) + entries
        link = len(data)
        data += bytes(4)
        tags = None
    return bytes(data)


def float_tiff(rng, tags=None):
    """Small and colourful."""
    return tiff(rng.random((12, 16, 3)).astype("<f4"), tags=tags)


def write_clip(path, frames, size=(64, 48)):
    """A moving test picture as a raw stream of 8-bit BGRA."""
    ffmpeg("-f", "lavfi", "-i", f"testsrc=size={size[0]}x{size[1]}:rate=25", "-frames:v", frames,
           "-f", "rawvideo", "-pix_fmt", "bgra", path)


def clip_frames(data, size=(64, 48)):
    """Frames of a raw stream of 8-bit BGRA."""
    length = size[0] * size[1] * 4
    assert len(data) % length == 0, "a frame is cut"
    return [data[at:at + length] for at in range(0, len(data), length)]


@pytest.fixture
def small(tmp_path):
    """A small colourful picture."""
    path = tmp_path / "small.png"
    write_png(path, np.random.default_rng(7).integers(0, 256, (12, 16, 3)))
    return path


@pytest.fixture
def linear(tmp_path):
    """A small picture of linear light."""
    path = tmp_path / "linear.tif"
    path.write_bytes(float_tiff(np.random.default_rng(8)))
    return path


@pytest.fixture
def lonely_program(tmp_path):
    """The program with the plug-in but without a renderer beside it."""
    folder = tmp_path / "program"
    folder.mkdir()
    for name in ("glazelhost.exe", "GlazelDX_x64.dll"):
        shutil.copy(BIN / name, folder)
    return folder / "glazelhost.exe"
