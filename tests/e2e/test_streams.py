"""Pipes and streams: what goes through standard input and output is what files get."""

import contextlib
import subprocess
import threading

import numpy as np
import pytest

from conftest import (CLIP, DEADLINE, WARM, clip_frames, environment, ffmpeg, host_command, render,
                      succeed, write_clip)
from wine_exit import exit_code


@pytest.fixture
def clip(tmp_path):
    path = tmp_path / "clip.bgra"
    write_clip(path, 6)
    return path


def test_a_stream_through_pipes_equals_one_through_files(clip, tmp_path):
    succeed(render(clip, tmp_path / "out.bgra", *CLIP))
    piped = succeed(render("-", "-", *CLIP, data=clip.read_bytes()))
    assert piped.output == (tmp_path / "out.bgra").read_bytes()
    assert len(clip_frames(piped.output)) == 6


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


def test_codes_of_ycbcr_are_what_the_filter_for_their_matrix_makes_of_them():
    noise = np.random.default_rng(8).integers(28000, 37000, (3, 12, 16), np.uint16)  # all in RGB
    shape = ("--size", "16x12", "--output-format", "gbrf32")
    planes = ("-f", "rawvideo", "-s", "16x12", "-pix_fmt", "yuv444p16le", "-i", "-", "-vf",
              "zscale=min=170m:rin=limited:m=gbr:r=full,format=gbrpf32le", "-f", "rawvideo", "-")
    ours = render("-", "-", *shape, "--input-format", "yuv16", "--luma-weights", "0.299,0.114",
                  data=noise.tobytes())
    theirs = render("-", "-", *shape, "--input-format", "gbrf32",
                    data=ffmpeg(*planes, data=noise.tobytes()))
    found, expected = (np.frombuffer(succeed(done).output, np.float32) for done in (ours, theirs))
    assert any("float" in line for line in ours.lines), ours.lines
    assert found.std() > 0.05 and np.abs(found - expected).max() < 1e-5


def test_linear_light_counts_in_a_raw_stream_that_is_said_to_be(tmp_path):
    raw = np.full((4, 12, 16), 0.18, np.float32).tobytes()
    shape = ("--size", "16x12", "--input-format", "gbraf32")
    display = succeed(render("-", "-", *shape, data=raw))
    linear = succeed(render("-", "-", *shape, "--input-light", "linear", data=raw))
    forced = succeed(render("-", "-", *shape, "--linear", "on", data=raw))
    assert display.output != linear.output
    assert linear.output == forced.output


def test_one_kind_of_stream_becomes_another(clip):
    data = clip.read_bytes()
    bytes8 = np.frombuffer(succeed(render("-", "-", *CLIP, data=data)).output, np.uint8)
    result = succeed(render("-", "-", *CLIP, "--output-format", "bgra16", data=data))
    words = np.frombuffer(result.output, np.uint16)
    assert np.array_equal(words, bytes8 * np.uint16(257))


def test_frames_are_chosen_and_the_rest_of_the_stream_is_left(clip):
    everything = clip_frames(render(clip, "-", *CLIP).output)
    chosen = clip_frames(render(clip, "-", *CLIP, "--frames", "2,4-6x2").output)
    assert chosen == [everything[1], everything[3], everything[5]]


def test_raw_input_that_ends_within_a_frame_is_an_error(small):
    raw = ffmpeg("-i", small, "-f", "rawvideo", "-pix_fmt", "bgra", "-")
    result = render("-", "-", "--size", "16x12", data=raw + raw[:-4])
    assert result.code == 1
    assert len(result.output) == len(raw)
    assert "frame 2" in result.lines[-1], result.lines


def test_an_empty_standard_input_is_an_error():
    for options, code in (((), 2), (CLIP, 1)):
        result = render("-", "-", *options)
        assert result.code == code
        assert result.output == b""
        assert result.lines[-1].startswith("glazelhost: ")


def test_a_picture_goes_to_standard_output_in_a_format_that_is_given(small):
    result = render(small, "-")
    assert result.code == 2
    assert "give --output-format bgra8, bgra16, gbraf32, gbr8, gbrf32 or yuv16" in result.only_line()
    assert len(succeed(render(small, "-", "--output-format", "bgra16")).output) == 16 * 12 * 8


def test_an_output_pipe_that_is_closed_early_is_an_error(tmp_path):
    write_clip(tmp_path / "clip.bgra", 30, (320, 240))
    command = [str(word) for word in
               host_command("render", tmp_path / "clip.bgra", "-", "--size", "320x240", "--look",
                            WARM, "--quiet")]
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          stdin=subprocess.DEVNULL, env=environment()) as process:
        process.stdout.read(10)
        process.stdout.close()
        lines = process.stderr.read().decode().splitlines()
        assert exit_code(process.wait(DEADLINE)) == 1
    assert len(lines) == 1 and "standard output" in lines[0], lines


@contextlib.contextmanager
def render_between_pipes():
    """A render of frames of 640 x 480 whose pipes are the test's."""
    command = [str(word) for word in
               host_command("render", "-", "-", "--size", "640x480", "--input-format", "bgra8",
                            "--output-format", "bgra8", "--look", WARM, "--quiet")]
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env=environment(), bufsize=0) as process:
        try:
            yield process
        finally:
            process.kill()


def test_an_output_that_nobody_reads_ends_a_job_that_waits_for_its_input():
    with render_between_pipes() as process:
        process.stdin.write(bytes(640 * 480 * 4))
        process.stdout.read(10)
        process.stdout.close()
        # The input stays open, with nothing in it.
        assert exit_code(process.wait(DEADLINE)) == 1
        lines = process.stderr.read().decode().splitlines()
    assert len(lines) == 1 and "standard output" in lines[0], lines


def test_frames_are_read_while_the_output_still_waits_for_its_reader():
    # Two frames each wait behind the reading and before the writing end; pipes hold less than one.
    ahead = bytes(4 * 640 * 480 * 4)
    with render_between_pipes() as process:
        writing = threading.Thread(target=process.stdin.write, args=[ahead], daemon=True)
        writing.start()
        writing.join(DEADLINE)
        assert not writing.is_alive()
        process.stdin.close()
        assert len(process.stdout.read()) == len(ahead)
        assert exit_code(process.wait(DEADLINE)) == 0


def test_standard_output_carries_nothing_but_the_pixels(small, tmp_path):
    for depth in ("8", "float"):
        result = render(small, tmp_path / f"{depth}.png", "--depth", depth)
        assert result.code == 0
        assert result.output == b""
