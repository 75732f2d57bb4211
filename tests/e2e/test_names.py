"""Outputs get exactly the name that was asked for, and touch no other that Windows takes for it."""

import os

import pytest

from conftest import COOL, ROOT, WARM, ffmpeg, host, render, run, succeed

GLAZEL = ROOT / "glazel"
PNG = b"\x89PNG"
# Words of a command, each of which writes the file that it names last.
JOBS = {
    "render": ["render", "small.png", "--look", WARM, "--overwrite", "--", "photo.png"],
    "look": ["look", "--overwrite", WARM, "photo.look"],
    "blend": ["blend", "--overwrite", WARM, COOL, "0.5", "photo.look"],
    "compare": ["compare", "small.png", "small.png", "--overwrite", "--picture", "photo.png"],
    "project": ["render", "small.png", "new.png", "--look", WARM, "--overwrite", "--save-project",
                "photo.glazel"],
}


def contents(folder):
    return {path.name: path.read_bytes() for path in folder.iterdir()}


@pytest.mark.parametrize("door", ["host", "glazel"])
@pytest.mark.parametrize("job", JOBS)
def test_a_file_whose_name_differs_in_capitals_alone_stays(job, door, small, tmp_path):
    name = JOBS[job][-1]
    (tmp_path / name.upper()).write_text("precious")
    succeed(host(*JOBS[job], cwd=tmp_path) if door == "host" else
            run([GLAZEL, *JOBS[job]], cwd=tmp_path))
    left = contents(tmp_path)
    assert left.pop(name.upper()) == b"precious"
    assert left.pop(name) != b"precious"
    assert set(left) - {"new.png"} == {small.name}


@pytest.mark.parametrize("spelling", ["photo.png", "./photo.png", "../{}/photo.png", "/{}/photo.png",
                                      "Z:/{}/photo.png", "Z:{}\\photo.png"])
def test_a_name_is_free_where_only_another_has_its_letters(spelling, small, tmp_path):
    (tmp_path / "PHOTO.PNG").write_text("precious")
    path = spelling.format(tmp_path.name if spelling.startswith("..") else tmp_path)
    if "\\" in path:
        path = path.replace("/", "\\")
    succeed(render(small.name, path, cwd=tmp_path))
    assert (tmp_path / "PHOTO.PNG").read_bytes() == b"precious"
    made = (tmp_path / "photo.png").read_bytes()
    assert made.startswith(PNG)
    assert "it exists already" in render(small.name, path, cwd=tmp_path).only_line()
    succeed(render(small.name, path, "--overwrite", look=COOL, cwd=tmp_path))
    assert (tmp_path / "photo.png").read_bytes() != made
    assert sorted(contents(tmp_path)) == ["PHOTO.PNG", "photo.png", small.name]


@pytest.mark.parametrize("door", ["host", "glazel"])
@pytest.mark.parametrize("options", [[], ["--overwrite"]])
def test_a_sequence_leaves_pictures_with_other_capitals_alone(options, door, tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 3, tmp_path / "in_%d.png")
    for name in ("OUT_1.png", "OUT_3.png", "IN_2.png", "IN_9.png"):
        (tmp_path / name).write_text(name)
    words = ["render", "in_%d.png", "out_%d.png", "--look", WARM, *options]
    succeed(host(*words, cwd=tmp_path) if door == "host" else run([GLAZEL, *words], cwd=tmp_path))
    left = contents(tmp_path)
    for name in ("OUT_1.png", "OUT_3.png", "IN_2.png", "IN_9.png"):
        assert left.pop(name) == name.encode()
    assert sorted(left) == [f"{end}_{n}.png" for end in ("in", "out") for n in (1, 2, 3)]
    assert all(data.startswith(PNG) for data in left.values())


def test_a_picture_of_a_sequence_that_is_there_is_told_before_any_is_written(tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x16", "-frames:v", 2, tmp_path / "in_%d.png")
    (tmp_path / "OUT_1.png").write_text("another")
    (tmp_path / "out_2.png").write_text("old")
    result = render("in_%d.png", "out_%d.png", cwd=tmp_path)
    assert "out_2.png: it exists already" in result.only_line()
    assert not (tmp_path / "out_1.png").exists()


@pytest.mark.parametrize("door", ["host", "glazel"])
@pytest.mark.parametrize("name", ["con.png", "aux.png", "NUL.png"])
def test_a_name_that_windows_does_not_allow_is_one(name, door, small, tmp_path):
    for options in ([], ["--overwrite"]):
        words = ["render", small.name, name, "--look", WARM, *options]
        succeed(host(*words, cwd=tmp_path) if door == "host" else run([GLAZEL, *words], cwd=tmp_path))
    assert sorted(contents(tmp_path)) == sorted([name, small.name])
    assert (tmp_path / name).read_bytes().startswith(PNG)


def test_a_folder_with_other_capitals_is_another_one(small, tmp_path):
    (tmp_path / "SHOTS").mkdir()
    for target in ("shots/out.png", "shots/out_%d.png"):
        line = render(small.name, target, cwd=tmp_path).only_line()
        assert "the folder shots/ does not exist" in line
    assert not contents(tmp_path / "SHOTS")


@pytest.mark.parametrize("options", [[], ["--overwrite"]])
def test_a_device_or_a_pipe_is_not_replaced(options, small, tmp_path):
    (tmp_path / "device.png").symlink_to("/dev/null")
    line = render(small.name, "device.png", *options, cwd=tmp_path).only_line()
    assert "this is a device or a pipe" in line
    assert os.readlink(tmp_path / "device.png") == "/dev/null"
