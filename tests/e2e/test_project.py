"""Projects: kept by one process, rendered by another, read by an independent program."""

import base64
import json
import zlib

import numpy as np
import pytest

from conftest import (CLIP, COOL, ROOT, WARM, clip_frames, ffmpeg, host, render, run, succeed,
                      write_clip, write_png)

SHAPE = (*CLIP, "--fps", 25)
EFFECT_CLASS = "B47A199B-15E2-4836-BD39-419904B5D292"


@pytest.fixture
def clip(tmp_path):
    path = tmp_path / "clip.bgra"
    write_clip(path, 10)
    return path


@pytest.fixture
def project(tmp_path, small):
    """A project that holds one look."""
    path = tmp_path / "a project.glz"
    succeed(render(small, tmp_path / "graded.png", "--save-project", path))
    return path


def record_of(look, path, *options):
    succeed(host("look", look, path, *options))
    return path.read_bytes()


def test_a_look_kept_by_one_process_renders_the_same_in_another(project, small, tmp_path):
    succeed(host("render", small, tmp_path / "again.png", "--project", project))
    assert (tmp_path / "again.png").read_bytes() == (tmp_path / "graded.png").read_bytes()


def test_the_linear_option_is_kept_with_the_look(linear, tmp_path):
    def picture(name, *options):
        succeed(host("render", linear, tmp_path / name, *options))
        return (tmp_path / name).read_bytes()
    path = tmp_path / "off.glz"
    off = picture("off.png", "--look", WARM, "--linear", "off", "--save-project", path)
    assert picture("again.png", "--project", path) == off
    on = picture("on.png", "--look", WARM)
    assert on != off
    assert picture("changed.png", "--project", path, "--linear", "on") == on


def test_an_independent_program_finds_exactly_the_records_bytes(project, tmp_path):
    stored = json.loads(project.read_text())
    assert base64.b64decode(stored["look"]) == record_of(WARM, tmp_path / "warm.look")
    assert stored["effect"] == "{" + EFFECT_CLASS + "}"
    assert stored["keyframes"] == []
    seal = stored.pop("crc32")
    assert seal == zlib.crc32(json.dumps(stored, separators=(",", ":")).encode())


def test_an_animation_is_kept_with_its_keyframes(clip, tmp_path):
    path = tmp_path / "animated.glz"
    succeed(host("render", clip, *SHAPE, tmp_path / "out.bgra", "--key", f"8f={WARM}", "--key",
                 f"0.08={COOL}", "--ease", "smooth", "--save-project", path))
    succeed(host("render", clip, *SHAPE, tmp_path / "again.bgra", "--project", path))
    assert (tmp_path / "again.bgra").read_bytes() == (tmp_path / "out.bgra").read_bytes()

    cool = record_of(COOL, tmp_path / "cool.look")
    stored = json.loads(path.read_text())
    looks = [base64.b64decode(holder["look"]) for holder in (stored, *stored["keyframes"])]
    assert looks == [cool, cool, record_of(WARM, tmp_path / "warm.look")], "the first one first"
    assert [keyframe["time"] for keyframe in stored["keyframes"]] == ["0.08", "8f"]
    assert stored["ease"] == "smooth"


def test_the_ease_of_a_project_can_be_changed_and_kept(clip, tmp_path):
    keys = ["--key", f"0f={COOL}", "--key", f"8f={WARM}"]
    succeed(host("render", clip, *SHAPE, tmp_path / "linear.bgra", *keys, "--save-project",
                 tmp_path / "a.glz"))
    succeed(host("render", clip, *SHAPE, tmp_path / "smooth.bgra", *keys, "--ease", "smooth"))
    succeed(host("render", clip, *SHAPE, tmp_path / "1.bgra", "--project", tmp_path / "a.glz",
                 "--ease", "smooth", "--save-project", tmp_path / "b.glz"))
    succeed(host("render", clip, *SHAPE, tmp_path / "2.bgra", "--project", tmp_path / "b.glz"))
    smooth = (tmp_path / "smooth.bgra").read_bytes()
    assert (tmp_path / "1.bgra").read_bytes() == smooth
    assert (tmp_path / "2.bgra").read_bytes() == smooth
    assert (tmp_path / "linear.bgra").read_bytes() != smooth


def test_a_project_that_exists_is_replaced_only_with_overwrite(project, small, tmp_path):
    before = project.read_bytes()
    refused = render(small, tmp_path / "b.png", "--save-project", project, look=COOL)
    assert refused.code == 1
    assert "exists already" in refused.only_line() and str(project) in refused.only_line()
    assert project.read_bytes() == before
    assert not (tmp_path / "b.png").exists()
    succeed(render(small, tmp_path / "b.png", "--save-project", project, "--overwrite", look=COOL))
    succeed(host("render", small, tmp_path / "c.png", "--project", project))
    assert (tmp_path / "c.png").read_bytes() == (tmp_path / "b.png").read_bytes()


def flipped(data):
    """One character of the look is another."""
    place = data.index(b'"look"') + 300
    return data[:place] + (b"B" if data[place : place + 1] == b"A" else b"A") + data[place + 1:]


BAD = {
    "text": (lambda data: b"no project at all", "not a project"),
    "empty": (lambda data: b"", "not a project"),
    "foreign": (lambda data: data.replace(b"glazelhost", b"glazeghost"), "not a project"),
    "cut": (lambda data: data[:len(data) // 2], "damaged"),
    "flipped": (flipped, "damaged"),
    "newer": (lambda data: data.replace(b'"version": 1', b'"version": 2'), "newer version"),
}


@pytest.mark.parametrize("kind", BAD)
def test_a_bad_project_is_one_line_and_stays_as_it_is(kind, project, small, tmp_path):
    make, words = BAD[kind]
    data = make(project.read_bytes())
    project.write_bytes(data)
    used = host("render", small, tmp_path / "b.png", "--project", project)
    assert used.code == 1
    assert words in used.only_line() and str(project) in used.only_line()
    assert not (tmp_path / "b.png").exists()
    kept = render(small, tmp_path / "b.png", "--save-project", project, "--overwrite")
    assert kept.code == 1
    assert "it is not replaced" in kept.only_line() and str(project) in kept.only_line()
    assert project.read_bytes() == data
    assert not (tmp_path / "b.png").exists()


def test_a_picture_is_never_taken_for_a_project_to_replace(small, tmp_path):
    before = small.read_bytes()
    result = render(small, tmp_path / "b.png", "--save-project", small, "--overwrite")
    assert result.code == 1
    assert small.read_bytes() == before


def test_a_missing_project_is_named(small, tmp_path):
    result = host("render", small, tmp_path / "b.png", "--project", tmp_path / "nowhere.glz")
    assert result.code == 1
    assert "nowhere.glz" in result.only_line()


def test_a_render_that_cannot_begin_keeps_no_project(tmp_path):
    write_png(tmp_path / "in.png", np.zeros((4, 4, 3)))
    (tmp_path / "out.png").write_bytes(b"there already")
    result = render(tmp_path / "in.png", tmp_path / "out.png", "--save-project",
                    tmp_path / "a.glz")
    assert result.code == 1
    assert sorted(path.name for path in tmp_path.iterdir()) == ["in.png", "out.png"]


def test_the_front_door_animates_a_video_and_keeps_the_project(tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=24", "-frames:v", 12, tmp_path / "a.mp4")
    succeed(run([ROOT / "glazel", "render", "a.mp4", "b.y4m", "--key", f"0={WARM}", "--key",
                 f"00:00:00.250={COOL}", "--ease", "smooth", "--save-project", "a.glz"],
                cwd=tmp_path))
    succeed(run([ROOT / "glazel", "render", "a.mp4", "c.y4m", "--project", "a.glz"], cwd=tmp_path))
    succeed(run([ROOT / "glazel", "render", "a.mp4", "cool.y4m", "--look", COOL], cwd=tmp_path))
    as_raw = ("-f", "rawvideo", "-pix_fmt", "bgra", "-")
    frames = [clip_frames(ffmpeg("-i", tmp_path / name, *as_raw))
              for name in ("b.y4m", "c.y4m", "cool.y4m")]
    assert len(frames[0]) == 12
    assert frames[0] == frames[1]
    assert frames[0][6:] == frames[2][6:] and frames[0][5] != frames[2][5]
