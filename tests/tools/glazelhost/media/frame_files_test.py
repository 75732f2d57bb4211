"""What ffmpeg writes is read as ffmpeg reads it, and the other way round; pipes, paths and
interruptions with real processes."""

import os
import signal
import struct
import subprocess
import time
import zlib

import numpy as np
import pytest

from wine_exit import exit_code

RUN = [os.environ["WINE_RUN"], os.environ["FRAME_COPY"]]
WIDTH, HEIGHT = 96, 64
SIZE = f"size={WIDTH}x{HEIGHT}"
PATTERN = f"testsrc2=size={WIDTH}x{HEIGHT}:rate=25"
# Two sine waves in each plane: what decoders must agree on.
SMOOTH = (f"nullsrc=size={WIDTH}x{HEIGHT}:rate=25,format=yuv444p,geq="
          "lum='126+90*sin(X/17+N)*cos(Y/13)':cb='128+60*sin(X/19)*cos(Y/23)':"
          "cr='128+60*cos(X/21)*sin(Y/18+1)'")


# The flags with which ffmpeg's scaler computes exactly. It does so only into planes: straight into
# packed pixels it takes chroma rows to be where they are not.
EXACT = "accurate_rnd+full_chroma_int+full_chroma_inp+bitexact+bilinear"


def copy(source, target, *options, check=True, **settings):
    result = subprocess.run([*RUN, str(source), str(target), *options], timeout=60,
                            stderr=subprocess.PIPE, **settings)
    code = exit_code(result.returncode, result.stderr)
    if check:
        assert code == 0, result.stderr.decode()
    return result


def ffmpeg(*words, **settings):
    return subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, words)],
                          check=True, timeout=60, stdout=subprocess.PIPE, **settings).stdout


def picture(path, pixel_format, *options):
    ffmpeg("-f", "lavfi", "-i", PATTERN, "-frames:v", 1, "-pix_fmt", pixel_format, *options, path)


def pixels_by_ffmpeg(path, pixel_format, dtype=np.uint8, *options):
    raw = ffmpeg("-i", path, *options, "-f", "rawvideo", "-pix_fmt", pixel_format, "-")
    return np.frombuffer(raw, dtype)


def pixels_by_copy(path, tmp_path, *options):
    target = tmp_path / "copied.bgra"
    copy(path, target, "overwrite=1", *options)
    return np.fromfile(target, np.uint8)


@pytest.mark.parametrize("name, pixel_format", [
    ("a.png", "rgb24"), ("a.png", "rgba"), ("a.png", "gray"), ("a.png", "ya8"),
    ("a.png", "pal8"), ("a.png", "monob"),
    ("a.tif", "rgb24"), ("a.tif", "rgba"), ("a.tif", "gray"),
    ("a.bmp", "bgr24"), ("a.bmp", "rgb565le"), ("a.bmp", "pal8"), ("a.bmp", "gray"),
])
def test_8_bit_pictures_decode_to_the_same_bytes(tmp_path, name, pixel_format):
    picture(tmp_path / name, pixel_format)
    ours = pixels_by_copy(tmp_path / name, tmp_path)
    # ffmpeg's own conversion of 5-bit and 6-bit codes to bytes fills the low bits in another way.
    tolerance = 7 if pixel_format == "rgb565le" else 0
    theirs = pixels_by_ffmpeg(tmp_path / name, "bgra")
    assert np.abs(ours.astype(int) - theirs.astype(int)).max() <= tolerance


@pytest.mark.parametrize("compression", ["raw", "packbits", "lzw", "deflate"])
def test_every_compression_of_tiff_is_read(tmp_path, compression):
    picture(tmp_path / "a.tif", "rgb24", "-compression_algo", compression)
    assert np.array_equal(pixels_by_copy(tmp_path / "a.tif", tmp_path),
                          pixels_by_ffmpeg(tmp_path / "a.tif", "bgra"))


@pytest.mark.parametrize("name, pixel_format, native", [
    ("a.png", "rgb48be", "rgb48le"), ("a.png", "rgba64be", "rgba64le"),
    ("a.png", "gray16be", "gray16le"), ("a.tif", "rgb48le", "rgb48le"),
    ("a.tif", "rgba64le", "rgba64le"), ("a.tif", "gray16le", "gray16le"),
])
@pytest.mark.parametrize("target", ["b.png", "b.tif"])
def test_16_bit_pictures_keep_every_code_in_both_directions(tmp_path, name, pixel_format, native,
                                                            target):
    picture(tmp_path / name, pixel_format)
    copy(tmp_path / name, tmp_path / target, "depth=float", "bits=16")
    theirs = pixels_by_ffmpeg(tmp_path / name, native, np.uint16)
    channels = 1 if native == "gray16le" else 0
    if channels:  # grey is written as three equal colours
        theirs = np.repeat(theirs, 3)
        native = "rgb48le"
    assert np.array_equal(pixels_by_ffmpeg(tmp_path / target, native, np.uint16), theirs)


@pytest.mark.parametrize("target, pixel_format", [
    ("b.png", "bgra"), ("b.tif", "bgra"), ("b.bmp", "bgra")])
def test_alpha_that_is_written_is_read_by_others(tmp_path, target, pixel_format):
    raw = np.random.default_rng(1).integers(0, 256, WIDTH * HEIGHT * 4, np.uint8)
    raw.tofile(tmp_path / "a.bgra")
    copy(tmp_path / "a.bgra", tmp_path / target, SIZE)
    assert np.array_equal(pixels_by_ffmpeg(tmp_path / target, pixel_format), raw)


def test_a_float_tiff_is_read_by_others(tmp_path):
    raw = np.random.default_rng(2).integers(0, 256, WIDTH * HEIGHT * 4, np.uint8)
    raw.tofile(tmp_path / "a.bgra")
    copy(tmp_path / "a.bgra", tmp_path / "b.tif", SIZE, "depth=float", "bits=32")
    file = (tmp_path / "b.tif").read_bytes()
    # One directory, strips one after the other up to the end of the file.
    values = np.frombuffer(file[-WIDTH * HEIGHT * 16:], "<f4").reshape(-1, 4)
    expected = raw.reshape(-1, 4)[:, [2, 1, 0, 3]].astype(np.float32) / np.float32(255)
    assert np.array_equal(values, expected)


@pytest.mark.parametrize("pixel_format, chroma, most", [
    ("yuvj444p", "", 3), ("yuvj420p", ":in_h_chr_pos=128:in_v_chr_pos=128", 6)])
def test_jpeg_decodes_nearly_to_the_same_bytes(tmp_path, pixel_format, chroma, most):
    ffmpeg("-f", "lavfi", "-i", SMOOTH, "-frames:v", 1, "-pix_fmt", pixel_format, "-q:v", 1,
           tmp_path / "a.jpg")
    ours = pixels_by_copy(tmp_path / "a.jpg", tmp_path).astype(int)
    theirs = pixels_by_ffmpeg(
        tmp_path / "a.jpg", "bgra", np.uint8, "-vf",
        f"scale=flags={EXACT}{chroma},format=gbrp").astype(int)
    # The decoders round their transforms, and chroma once more where it is of half size.
    assert np.abs(ours - theirs).max() <= most
    assert np.abs(ours - theirs).mean() < 0.5


def test_jpeg_is_written_so_that_others_read_it(tmp_path):
    ffmpeg("-f", "lavfi", "-i", SMOOTH, "-frames:v", 1, "-pix_fmt", "rgb24", tmp_path / "a.png")
    copy(tmp_path / "a.png", tmp_path / "b.jpg")
    ours = pixels_by_ffmpeg(tmp_path / "b.jpg", "rgb24").astype(int)
    theirs = pixels_by_ffmpeg(tmp_path / "a.png", "rgb24").astype(int)
    assert np.abs(ours - theirs).max() <= 8
    assert np.abs(ours - theirs).mean() < 1


def test_frames_of_a_cut_clip_are_delivered_before_the_error(tmp_path):
    clip = tmp_path / "a.bgra"
    clip.write_bytes(bytes(3 * WIDTH * HEIGHT * 4 - 100))
    result = copy(clip, "-", SIZE, "out=bgra8", check=False, stdout=subprocess.PIPE)
    assert result.returncode == 1
    assert len(result.stdout) == 2 * WIDTH * HEIGHT * 4
    assert f"frame 3 of {clip}: the data ends in this frame: 100 of its 24576".encode() \
        in result.stderr


def test_pipes_carry_the_same_bytes_as_files(tmp_path):
    clip = tmp_path / "a.raw"
    raw = np.random.default_rng(4).integers(0, 256, 5 * WIDTH * HEIGHT * 8, np.uint8)
    raw.tofile(clip)
    formats = ("in=bgra16", "out=gbraf32", "depth=float", SIZE)
    copy(clip, tmp_path / "b.raw", *formats)
    # Every byte that a text mode would change occurs in pixels; slow writers give short reads.
    with open(clip, "rb") as source:
        reader = subprocess.Popen(["dd", "bs=777", "status=none"], stdin=source,
                                  stdout=subprocess.PIPE)
        piped = copy("-", "-", *formats, stdin=reader.stdout, stdout=subprocess.PIPE)
        reader.wait()
    assert piped.stdout == (tmp_path / "b.raw").read_bytes()
    assert len(piped.stdout) == 2 * raw.size
    with open(clip, "rb") as source:
        redirected = copy("-", "-", *formats, stdin=source, stdout=subprocess.PIPE)
    assert redirected.stdout == piped.stdout


def test_an_empty_input_pipe_is_an_error_and_no_wait(tmp_path):
    for settings in ({"stdin": subprocess.DEVNULL}, {"input": b""}):
        result = copy("-", tmp_path / "b.bgra", "in=bgra8", SIZE, check=False, **settings)
        assert result.returncode == 1
        assert b"there was no frame to write" in result.stderr
    assert list(tmp_path.iterdir()) == []


def test_a_closed_output_pipe_is_one_clear_error(tmp_path):
    clip = tmp_path / "a.bgra"
    clip.write_bytes(bytes(50 * WIDTH * HEIGHT * 4))
    process = subprocess.Popen([*RUN, str(clip), "-", "out=bgra8", SIZE], stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
    process.stdout.read(1000)
    process.stdout.close()
    error = process.stderr.read()
    assert exit_code(process.wait(30), error) == 1
    assert b"standard output: the program that reads it closed the pipe" in error


def test_a_killed_run_leaves_nothing(tmp_path):
    process = subprocess.Popen([*RUN, "-", str(tmp_path / "b.bgra"), "in=bgra8", "size=64x64"],
                               stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
    process.stdin.write(b"x" * 64 * 64 * 4 * 3 + b"half a frame")
    process.stdin.flush()
    wait_until(lambda: any(p.stat().st_size == 64 * 64 * 4 * 3 for p in tmp_path.iterdir()))
    assert not (tmp_path / "b.bgra").exists()
    process.send_signal(signal.SIGKILL)
    process.wait(30)
    wait_until(lambda: not list(tmp_path.iterdir()))


def wait_until(condition, seconds=20):
    deadline = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < deadline, "it did not happen in time"
        time.sleep(0.02)


@pytest.mark.parametrize("name", ["plain.png", "with space & 'quotes'.png", "größe 映像.png",
                                  "n" * 200 + ".png"])
def test_unix_and_windows_forms_of_a_path_name_the_same_file(tmp_path, name):
    picture(tmp_path / "a.png", "rgb24")
    os.rename(tmp_path / "a.png", tmp_path / name)
    windows = "Z:" + str(tmp_path / name).replace("/", "\\")
    copy(tmp_path / name, tmp_path / "unix.bmp", cwd="/")
    copy(windows, "Z:" + str(tmp_path / "windows.bmp").replace("/", "\\"))
    copy(name, "relative.bmp", cwd=tmp_path)
    content = (tmp_path / "unix.bmp").read_bytes()
    assert content == (tmp_path / "windows.bmp").read_bytes()
    assert content == (tmp_path / "relative.bmp").read_bytes()
    assert len(list(tmp_path.iterdir())) == 4


def test_names_in_every_script_work_without_a_locale(tmp_path):
    picture(tmp_path / "a.png", "rgb24")
    environment = {name: value for name, value in os.environ.items()
                   if name != "LANG" and not name.startswith("LC_")}
    copy(tmp_path / "a.png", tmp_path / "größe 映像.bmp", env=environment)
    assert (tmp_path / "größe 映像.bmp").exists()


def png_of_size(width, height):
    """A PNG that is right in everything but its pixels, which it has not."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(b"")) + chunk(b"IEND", b""))


@pytest.mark.parametrize("width, height", [(16385, 1), (1, 16385), (2_000_000_000, 2_000_000_000)])
def test_pictures_that_are_too_large_are_refused_by_their_header(tmp_path, width, height):
    (tmp_path / "a.png").write_bytes(png_of_size(width, height))
    result = copy(tmp_path / "a.png", tmp_path / "b.png", check=False)
    assert result.returncode == 1
    assert f"a.png: its size is {width} x {height}".encode() in result.stderr
    assert sorted(p.name for p in tmp_path.iterdir()) == ["a.png"]


@pytest.mark.parametrize("width, height", [(16384, 3), (3, 16384)])
def test_pictures_of_the_largest_side_are_taken(tmp_path, width, height):
    raw = np.random.default_rng(3).integers(0, 256, width * height * 4, np.uint8)
    raw.tofile(tmp_path / "a.bgra")
    for name in ("b.png", "b.tif", "b.bmp"):
        copy(tmp_path / "a.bgra", tmp_path / name, f"size={width}x{height}")
        assert np.array_equal(pixels_by_copy(tmp_path / name, tmp_path), raw)


def test_paths_beyond_the_old_limit_work(tmp_path):
    folder = tmp_path
    for _ in range(4):
        folder = folder / ("d" * 100)
    folder.mkdir(parents=True)
    picture(tmp_path / "a.png", "rgb24")
    copy(tmp_path / "a.png", folder / "b.png")
    copy(folder / "b.png", folder / "c_007.png")
    copy(folder / "c_%03d.png", folder / "d_####.png")
    assert sorted(p.name for p in folder.iterdir()) == ["b.png", "c_007.png", "d_0007.png"]


def test_a_sequence_of_ffmpeg_becomes_a_clip_and_back(tmp_path):
    ffmpeg("-f", "lavfi", "-i", PATTERN, "-frames:v", 4, "-start_number", 98, "-pix_fmt", "rgb24",
           tmp_path / "s_%02d.png")
    copy(tmp_path / "s_%02d.png", tmp_path / "clip.bgra")
    copy(tmp_path / "s_%02d.png", tmp_path / "t_%02d.tif")
    assert sorted(p.name for p in tmp_path.glob("t_*")) == [
        "t_100.tif", "t_101.tif", "t_98.tif", "t_99.tif"]
    raw = np.fromfile(tmp_path / "clip.bgra", np.uint8).reshape(4, -1)
    for row, number in zip(raw, (98, 99, 100, 101)):
        assert np.array_equal(row, pixels_by_ffmpeg(tmp_path / f"t_{number}.tif", "bgra"))


def test_a_folder_that_must_not_be_written_is_an_error(tmp_path):
    if os.geteuid() == 0:
        pytest.skip("nothing is forbidden to this user")
    picture(tmp_path / "a.png", "rgb24")
    (tmp_path / "closed").mkdir(mode=0o555)
    result = copy(tmp_path / "a.png", tmp_path / "closed" / "b.png", check=False)
    assert result.returncode == 1 and b"it cannot be created" in result.stderr


def test_a_full_disk_is_an_error():
    with open("/dev/full", "wb") as full:
        result = copy("-", "-", "in=bgra8", "out=bgra8", "size=64x64", check=False, stdout=full,
                      input=b"x" * 64 * 64 * 4)
    assert result.returncode == 1
    assert b"standard output: writing failed: " in result.stderr


def test_a_device_or_pipe_is_no_output_file_and_stays_what_it_is(tmp_path):
    os.mkfifo(tmp_path / "pipe")
    for path in ("/dev/null", tmp_path / "pipe"):
        result = copy("-", path, "in=bgra8", "out=bgra8", "size=1x1", "overwrite=1", check=False,
                      input=b"abcd")
        assert result.returncode == 1
        assert b"this is a device or a pipe" in result.stderr
        assert not os.path.isfile(path)
