"""Pipes and streams: what goes through standard input and output is what files get."""

import subprocess

import numpy as np
import pytest

from conftest import (DEADLINE, WARM, environment, ffmpeg, host, host_command, pixels, render,
                      succeed, write_y4m, y4m_frames)
from wine_exit import exit_code


@pytest.fixture
def clip(tmp_path):
    path = tmp_path / "clip.y4m"
    write_y4m(path, 6)
    return path


def test_y4m_through_pipes_equals_y4m_through_files(clip, tmp_path):
    assert render(clip, tmp_path / "out.y4m").code == 0
    piped = render("-", "-", data=clip.read_bytes())
    assert piped.code == 0
    assert piped.output == (tmp_path / "out.y4m").read_bytes()


@pytest.mark.parametrize("pixel_format, rate, size", [
    ("yuv420p", "30000/1001", (64, 48)), ("yuv422p", "24", (65, 48)), ("yuv444p", "50", (63, 47)),
    ("yuv420p", "12", (33, 21))])
def test_y4m_keeps_size_rate_chroma_and_number_of_frames(pixel_format, rate, size, tmp_path):
    write_y4m(tmp_path / "clip.y4m", 3, size, pixel_format, rate)
    result = render("-", "-", data=(tmp_path / "clip.y4m").read_bytes())
    assert result.code == 0
    before = (tmp_path / "clip.y4m").read_bytes().partition(b"\n")[0].split()
    after = result.output.partition(b"\n")[0].split()
    for letter in (b"W", b"H", b"F", b"C"):
        assert [w for w in after if w[:1] == letter] == [w for w in before if w[:1] == letter]
    assert result.output.count(b"FRAME") == 3


def test_graded_y4m_agrees_with_ffmpeg(tmp_path):
    write_y4m(tmp_path / "clip.y4m", 1, (96, 64), "yuv444p")
    result = render(tmp_path / "clip.y4m", "-", "--matrix", "bt709", "--range", "full")
    (tmp_path / "out.y4m").write_bytes(result.output)
    spaces = "in_color_matrix=bt709:out_color_matrix=bt709:in_range=pc:out_range=pc"
    ffmpeg("-i", tmp_path / "clip.y4m", "-vf",
           f"scale={spaces}:flags=accurate_rnd+full_chroma_int,format=gbrp,"
           f"lut3d=file={WARM}:interp=tetrahedral,format=rgb24", tmp_path / "reference.png")
    ffmpeg("-i", tmp_path / "out.y4m", "-vf",
           f"scale={spaces}:flags=accurate_rnd+full_chroma_int,format=rgb24", tmp_path / "out.png")
    difference = np.abs(pixels(tmp_path / "out.png") - pixels(tmp_path / "reference.png"))
    assert difference.max() <= 4, "more than three roundings to 8-bit codes explain"
    assert difference.mean() < 1


def test_raw_bgra_through_pipes_equals_the_picture(small, tmp_path):
    raw = ffmpeg("-i", small, "-f", "rawvideo", "-pix_fmt", "bgra", "-")
    piped = render("-", "-", "--size", "16x12", data=raw + raw)
    assert piped.code == 0, piped.lines
    assert render(small, tmp_path / "out.png").code == 0
    graded = ffmpeg("-i", tmp_path / "out.png", "-f", "rawvideo", "-pix_fmt", "bgra", "-")
    assert piped.output == graded + graded


# Channels of BGRA in the order of RGBA and of the planes; each is its own inverse.
RGBA, PLANES = [2, 1, 0, 3], [1, 0, 2, 3]


@pytest.mark.parametrize("name", ["bgra16", "gbraf32"])
def test_deep_raw_streams_equal_the_deep_picture(name, tmp_path):
    as_png = ("-f", "rawvideo", "-pix_fmt", "rgba64be")  # as the file has it, so not converted
    noise = np.random.default_rng(7).integers(0, 65536, (12, 16, 4), np.uint16)
    ffmpeg(*as_png, "-s", "16x12", "-i", "-", tmp_path / "in.png",
           data=noise[..., RGBA].astype(">u2").tobytes())
    floats = (noise[..., PLANES] / np.float32(65535)).transpose(2, 0, 1)
    raw = noise.tobytes() if name == "bgra16" else floats.tobytes()
    piped = succeed(render("-", "-", "--size", "16x12", "--input-format", name, "--output-format",
                           name, data=raw + raw))
    assert any("float" in line for line in piped.lines), piped.lines
    succeed(render(tmp_path / "in.png", tmp_path / "out.png", "--bits", 16))
    expected = np.frombuffer(ffmpeg("-i", tmp_path / "out.png", *as_png, "-"),
                             ">u2").reshape(12, 16, 4)[..., RGBA]
    for half in (piped.output[:len(raw)], piped.output[len(raw):]):
        if name == "bgra16":
            graded = np.frombuffer(half, np.uint16).reshape(12, 16, 4)
        else:
            planes = np.frombuffer(half, np.float32).reshape(4, 12, 16)
            codes = np.clip(planes, 0, 1).astype(np.float64) * 65535
            graded = np.floor(codes + 0.5)[PLANES].transpose(1, 2, 0)
        assert np.array_equal(graded, expected)


def test_linear_light_counts_in_a_raw_stream_that_is_said_to_be(tmp_path):
    raw = np.full((4, 12, 16), 0.18, np.float32).tobytes()
    shape = ("--size", "16x12", "--input-format", "gbraf32")
    display = succeed(render("-", "-", *shape, data=raw))
    linear = succeed(render("-", "-", *shape, "--input-light", "linear", data=raw))
    forced = succeed(render("-", "-", *shape, "--linear", "on", data=raw))
    assert display.output != linear.output
    assert linear.output == forced.output


def test_one_kind_of_stream_becomes_another(small):
    raw = ffmpeg("-i", small, "-f", "rawvideo", "-pix_fmt", "bgra", "-")
    result = render("-", "-", "--size", "16x12", "--output-format", "y4m", "--chroma", "444",
                    "--fps", "30", data=raw * 2)
    assert result.code == 0, result.lines
    header, frames = y4m_frames(result.output)
    assert "W16 H12" in header and "F30:1" in header and "C444" in header
    assert len(frames) == 2 and frames[0] == frames[1]


def test_frames_are_chosen_and_the_rest_of_the_stream_is_left(clip):
    everything = y4m_frames(render(clip, "-").output)[1]
    chosen = y4m_frames(render(clip, "-", "--frames", "2,4-6x2").output)[1]
    assert chosen == [everything[1], everything[3], everything[5]]


def test_raw_input_that_ends_within_a_frame_is_an_error(small):
    raw = ffmpeg("-i", small, "-f", "rawvideo", "-pix_fmt", "bgra", "-")
    result = render("-", "-", "--size", "16x12", data=raw + raw[:-4])
    assert result.code == 1
    assert len(result.output) == len(raw)
    assert "frame 2" in result.lines[-1], result.lines


def test_an_empty_standard_input_is_an_error():
    for options in ((), ("--size", "16x12")):
        result = render("-", "-", *options)
        assert result.code == 1
        assert result.output == b""
        assert result.lines[-1].startswith("glazelhost: ")


def test_an_output_pipe_that_is_closed_early_is_an_error(tmp_path):
    write_y4m(tmp_path / "clip.y4m", 30, (320, 240))
    command = [str(word) for word in
               host_command("render", tmp_path / "clip.y4m", "-", "--look", WARM, "--quiet")]
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          stdin=subprocess.DEVNULL, env=environment()) as process:
        process.stdout.read(10)
        process.stdout.close()
        lines = process.stderr.read().decode().splitlines()
        assert exit_code(process.wait(DEADLINE)) == 1
    assert len(lines) == 1 and "standard output" in lines[0], lines


def test_standard_output_carries_nothing_but_the_pixels(small, tmp_path):
    for depth in ("8", "float"):
        result = render(small, tmp_path / f"{depth}.png", "--depth", depth)
        assert result.code == 0
        assert result.output == b""


def test_an_interlaced_stream_is_refused(tmp_path):
    clip = tmp_path / "clip.y4m"
    clip.write_bytes(b"YUV4MPEG2 W4 H4 F25:1 It C444\nFRAME\n" + bytes(48))
    result = host("render", clip, "-", "--look", WARM)
    assert result.code == 1
    assert "nterlace" in result.only_line()
