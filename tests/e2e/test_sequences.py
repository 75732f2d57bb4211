"""Numbered sequences: which pictures are rendered, and under which numbers."""

import numpy as np
import pytest

from conftest import COOL, WARM, clip_frames, host, render, write_png


@pytest.fixture
def shot(tmp_path):
    """Pictures 7 to 11 of a sequence."""
    for number in range(7, 12):
        write_png(tmp_path / f"shot_{number:04}.png", np.full((4, 6, 3), number * 20))
    return tmp_path / "shot_%04d.png"


def names(folder, start):
    return sorted(path.name for path in folder.iterdir() if path.name.startswith(start))


def test_a_sequence_keeps_its_numbers(shot, tmp_path):
    result = render(shot, tmp_path / "out_%04d.png")
    assert result.code == 0, result.lines
    assert names(tmp_path, "out") == [f"out_{n:04}.png" for n in range(7, 12)]
    assert render(tmp_path / "shot_0009.png", tmp_path / "alone.png").code == 0
    assert (tmp_path / "alone.png").read_bytes() == (tmp_path / "out_0009.png").read_bytes()


def test_chosen_frames_have_the_numbers_of_their_files(shot, tmp_path):
    assert render(shot, tmp_path / "out_%d.png", "--frames", "1-2,8-11x2").code == 0
    assert names(tmp_path, "out") == ["out_10.png", "out_8.png"]


def test_frames_outside_the_sequence_are_told_its_numbers(shot, tmp_path):
    result = render(shot, tmp_path / "out_%d.png", "--frames", "1-5")
    assert result.code == 1
    assert "7 to 11" in result.only_line()
    assert not names(tmp_path, "out")


def test_a_sequence_may_begin_at_0(tmp_path):
    for number in range(3):
        write_png(tmp_path / f"shot_{number}.png", np.full((4, 6, 3), number * 20))
    assert render(tmp_path / "shot_%d.png", tmp_path / "all_%d.png").code == 0
    assert names(tmp_path, "all") == ["all_0.png", "all_1.png", "all_2.png"]
    assert render(tmp_path / "shot_%d.png", tmp_path / "out_%d.png", "--frames", "0,2").code == 0
    assert names(tmp_path, "out") == ["out_0.png", "out_2.png"]


def test_keyframes_count_from_the_first_picture_that_there_is(shot, tmp_path):
    assert render(shot, tmp_path / "plain_%d.png", look=COOL).code == 0
    result = host("render", shot, tmp_path / "out_%d.png", "--frames", "8-9", "--key",
                  f"0f={WARM}", "--key", f"2f={COOL}")
    assert result.code == 0, result.lines
    assert (tmp_path / "out_9.png").read_bytes() == (tmp_path / "plain_9.png").read_bytes()
    assert (tmp_path / "out_8.png").read_bytes() != (tmp_path / "plain_8.png").read_bytes()


def test_the_first_number_can_be_given(shot, tmp_path):
    assert render(shot, tmp_path / "out_%d.png", "--first", "10").code == 0
    assert names(tmp_path, "out") == ["out_10.png", "out_11.png"]


def test_a_gap_is_an_error_that_names_the_missing_picture(shot, tmp_path):
    (tmp_path / "shot_0009.png").unlink()
    result = render(shot, tmp_path / "out_%04d.png")
    assert result.code == 1
    assert "shot_0009.png" in result.lines[-1]
    assert names(tmp_path, "out") == ["out_0007.png", "out_0008.png"]


def test_bad_frames_are_skipped_on_demand_and_still_told(shot, tmp_path):
    (tmp_path / "shot_0008.png").write_bytes(b"damaged")
    (tmp_path / "shot_0010.png").unlink()
    result = render(shot, tmp_path / "out_%04d.png", "--skip-bad-frames")
    assert result.code == 1
    warnings = [line for line in result.lines if "warning" in line]
    assert len(warnings) == 2
    assert "shot_0008.png" in warnings[0] and "shot_0010.png" in warnings[1]
    assert "2 frames could not be read" in result.lines[-1]
    assert names(tmp_path, "out") == [f"out_{n:04}.png" for n in (7, 9, 11)]


def test_without_skipping_the_first_bad_frame_ends_the_job(shot, tmp_path):
    (tmp_path / "shot_0008.png").write_bytes(b"damaged")
    result = render(shot, tmp_path / "out_%04d.png")
    assert result.code == 1
    assert "shot_0008.png" in result.lines[-1]
    assert names(tmp_path, "out") == ["out_0007.png"]


@pytest.mark.parametrize("target", ["shot_%04d.png", "./shot_%04d.png", "shot_####.png",
                                    "../{here}/shot_%d.png"])
def test_a_sequence_is_not_rendered_over_itself(target, shot, tmp_path):
    write_png(tmp_path / "shot_1000.png", np.full((4, 6, 3), 200))
    before = {path: path.read_bytes() for path in tmp_path.iterdir()}
    for first in ((), ("--first", "1000")):
        result = render(shot.name, target.format(here=tmp_path.name), "--overwrite", *first,
                        cwd=tmp_path)
        line = result.only_line()
        assert result.code == 2 and "it is the input too" in line, line
    assert {path: path.read_bytes() for path in tmp_path.iterdir()} == before


def test_a_picture_whose_name_looks_like_a_number_is_that_picture(small, tmp_path):
    small.rename(tmp_path / "x%d.png")
    result = render(tmp_path / "x%d.png", tmp_path / "q%d.png")
    assert result.code == 0, result.lines
    assert "q%d.png: 1 frame" in result.lines[-1]
    assert names(tmp_path, "q") == ["q%d.png"]


def test_number_signs_are_the_digits_of_a_number(shot, tmp_path):
    assert render(tmp_path / "shot_####.png", tmp_path / "out_###.png").code == 0
    assert names(tmp_path, "out") == [f"out_{n:03}.png" for n in range(7, 12)]


def test_a_sequence_without_pictures_is_an_error(tmp_path):
    result = render(tmp_path / "none_%04d.png", tmp_path / "out_%04d.png")
    assert result.code == 1
    assert "none_%04d.png" in result.only_line()


def test_pictures_of_different_sizes_are_rendered_each_in_its_own(shot, tmp_path):
    write_png(tmp_path / "shot_0008.png", np.full((5, 3, 3), 99))
    assert render(shot, tmp_path / "out_%04d.png").code == 0
    assert names(tmp_path, "out") == [f"out_{n:04}.png" for n in range(7, 12)]


def test_a_sequence_becomes_a_stream(shot, tmp_path):
    result = render(shot, tmp_path / "out.bgra", look=WARM)
    assert result.code == 0, result.lines
    frames = clip_frames((tmp_path / "out.bgra").read_bytes(), (6, 4))
    assert len(set(frames)) == len(frames) == 5


def test_frames_that_are_not_wanted_need_not_be_good(shot, tmp_path):
    (tmp_path / "shot_0008.png").write_bytes(b"damaged")
    assert render(shot, tmp_path / "out_%04d.png", "--frames", "9-10").code == 0
    assert names(tmp_path, "out") == ["out_0009.png", "out_0010.png"]
