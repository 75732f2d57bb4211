"""./glazel farm: the output of an unbroken render, in pieces, whatever breaks off on the way."""

import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import time

import pytest

import slurm_cluster
from conftest import BUILD, DEADLINE, LOOKS, ROOT, WARM, environment, ffmpeg, run, wait_until

GLAZEL = ROOT / "glazel"
COOL = LOOKS / "cool_night.cc"
SOON = 5.0  # seconds; one on a machine that does nothing else
LOSSLESS = ("--encoder-options", "-crf 0")


def farm(*words, cwd, how="local", **more):
    jobs = ("--jobs", 2) if how == "local" else ()
    return run([GLAZEL, "farm", how, *words, *jobs], cwd=cwd, **more)


@pytest.fixture(scope="module")
def clip(tmp_path_factory):
    """Two seconds of an odd rate with long groups of pictures, sound, subtitles, chapters."""
    folder = tmp_path_factory.mktemp("clip")
    (folder / "words.srt").write_text("1\n00:00:00,500 --> 00:00:01,200\nHello\n")
    (folder / "chapters").write_text(";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=900\n"
                                     "title=One\n")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=30000/1001", "-f", "lavfi", "-i", "sine",
           "-i", folder / "words.srt", "-i", folder / "chapters", "-map", 0, "-map", 1, "-map", 2,
           "-map_chapters", 3, "-frames:v", 48, "-t", 1.6, "-c:v", "libx264", "-g", 12,
           "-x264-params", "open-gop=1", "-c:a", "aac", folder / "clip.mkv")
    return folder / "clip.mkv"


def decoded(path):
    """The hash of each frame."""
    lines = ffmpeg("-i", path, "-map", "0:v:0", "-fps_mode", "passthrough", "-f", "framemd5", "-")
    return [line.split()[-1] for line in lines.decode().splitlines() if line[0] != "#"]


def packets(path, stream="v:0"):
    """Time and size of each, in the order of the times."""
    shown = json.loads(subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", stream, "-show_entries", "packet=pts,size",
         "-of", "json", path], capture_output=True, check=True, timeout=DEADLINE).stdout)
    return sorted((row["pts"], row["size"]) for row in shown["packets"])


def moments(path):
    return [pts for pts, _ in packets(path)]


def assert_like_unbroken(source, made, folder, *words):
    whole = folder / f"whole{made.suffix}"
    result = run([GLAZEL, "render", source, whole, *words])
    assert result.code == 0, result.lines
    assert decoded(made) == decoded(whole)
    assert moments(made) == moments(whole)
    return whole


@pytest.mark.parametrize("target, words", [
    ("out.mkv", ("--look", WARM, *LOSSLESS)),
    ("out.mp4", ("--look", WARM, *LOSSLESS)),
    ("out.mov", ("--look", WARM, "--codec", "ffv1", "--frames", "3-9,12-47x2")),
    ("out.mkv", ("--key", f"0={WARM}", "--key", f"40f={COOL}", "--codec", "ffv1"))])
def test_a_farm_makes_what_an_unbroken_render_makes(target, words, clip, tmp_path):
    made = tmp_path / target
    result = farm(clip, made, *words, "--chunks", 3, cwd=tmp_path)
    assert result.code == 0, result.lines
    assert os.listdir(tmp_path) == [target]
    whole = assert_like_unbroken(clip, made, tmp_path, *words)
    for stream in ("a", "s"):
        assert packets(made, stream) == packets(whole, stream)
    chapters = ["ffprobe", "-v", "error", "-show_chapters", "-of", "json"]
    assert subprocess.check_output([*chapters, made]) == subprocess.check_output([*chapters, whole])


def test_each_piece_begins_with_a_seek_and_not_at_the_start(tmp_path):
    source = tmp_path / "in.mkv"  # whose key frames the decoder calls incomplete when it begins there
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=25", "-frames:v", 150, "-c:v", "libx264",
           "-g", 12, "-x264-params", "open-gop=1", source)
    words = ("--look", WARM, *LOSSLESS)
    assert farm(source, "out.mkv", *words, "--chunks", 3, "--keep", cwd=tmp_path).code == 0
    assert_like_unbroken(source, tmp_path / "out.mkv", tmp_path, *words)
    for log in (tmp_path / "out.mkv.farm").glob("log-*.txt"):
        assert "after a seek" not in log.read_text()


def test_frames_of_a_variable_rate_keep_their_times(tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=60", "-t", 1, "-vf",
           "select='not(mod(n,3))+lt(n,20)'", "-fps_mode", "vfr", "-c:v", "libx264",
           "-video_track_timescale", 15360, tmp_path / "in.mp4")
    words = ("--look", WARM, *LOSSLESS)
    for name in ("out.mkv", "out.mp4"):
        assert farm("in.mp4", name, *words, "--chunks", 5, cwd=tmp_path).code == 0
        assert_like_unbroken(tmp_path / "in.mp4", tmp_path / name, tmp_path, *words, "--overwrite")
    result = farm("in.mp4", "out.avi", *words, "--quiet", cwd=tmp_path)
    assert result.code == 1 and "variable rate" in result.only_line()


def test_pieces_of_a_stream_without_an_index_are_exact(tmp_path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=25", "-frames:v", 36, "-c:v",
           "mpeg2video", "-g", 12, "-bf", 2, tmp_path / "in.ts")
    words = ("--look", WARM, "--codec", "ffv1")
    assert farm("in.ts", "out.mkv", *words, "--chunks", 3, cwd=tmp_path).code == 0
    assert_like_unbroken(tmp_path / "in.ts", tmp_path / "out.mkv", tmp_path, *words)


def move_index(path):
    """A Matroska file's index says now that each key frame comes twice as early as it does."""
    data = bytearray(path.read_bytes())
    at = data.index(b"\x1c\x53\xbb\x6b")  # Cues; each time in them is B3, length, number
    cue = re.compile(rb"\xbb.\xb3([\x81-\x84])", re.DOTALL)
    found = list(cue.finditer(data, at))
    assert len(found) > 3
    for place in found:
        number = slice(place.end(), place.end() + (place[1][0] & 0xF))
        time = int.from_bytes(data[number], "big") // 2
        data[number] = time.to_bytes(number.stop - number.start, "big")
    path.write_bytes(data)


def test_a_piece_after_a_wrong_seek_is_decoded_from_the_start(tmp_path):
    source = tmp_path / "in.mkv"
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x48:rate=25", "-frames:v", 150, "-c:v", "libx264",
           "-g", 12, "-cluster_time_limit", 400, source)
    move_index(source)
    words = ("--look", WARM, *LOSSLESS)
    result = farm(source, "out.mkv", *words, "--chunks", 3, "--keep", cwd=tmp_path)
    assert result.code == 0, result.lines
    assert_like_unbroken(source, tmp_path / "out.mkv", tmp_path, *words)
    logs = [path.read_text() for path in (tmp_path / "out.mkv.farm").glob("log-*.txt")]
    assert sum("now from the start" in log for log in logs) == 1, "the seek was wrong indeed"


@pytest.mark.parametrize("kind, words", [
    ("exr", ("--key", f"0f={WARM}", "--key", f"10f={COOL}")),
    ("png", ("--key", f"0f={WARM}", "--key", f"10f={COOL}"))])
def test_a_sequence_is_split_into_ranges(kind, words, tmp_path):
    folder = tmp_path / "100% it's"
    folder.mkdir()
    pixels = {"exr": "gbrpf32le", "png": "rgb24"}[kind]
    inside = str(folder).replace("%", "%%")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=32x24", "-frames:v", 12, "-pix_fmt", pixels,
           "-start_number", 1001, f"{inside}/in_%04d.{kind}")
    for name in ("farm", "whole"):
        (tmp_path / name).mkdir()
    source = folder / f"in_%04d.{kind}"
    result = farm(source, tmp_path / f"farm/o_%04d.{kind}", *words, "--chunks", 3, cwd=tmp_path)
    assert result.code == 0, result.lines
    result = run([GLAZEL, "render", source, tmp_path / f"whole/o_%04d.{kind}", *words])
    assert result.code == 0, result.lines
    names = [f"o_{number}.{kind}" for number in range(1001, 1013)]
    assert sorted(os.listdir(tmp_path / "farm")) == names
    for name in names:
        assert (tmp_path / "farm" / name).read_bytes() == (tmp_path / "whole" / name).read_bytes()


def test_strict_holds_in_the_pieces_too(tmp_path):
    ffmpeg("-f", "lavfi", "-i", "color=red:size=32x24,format=rgba,geq=r='r(X,Y)':"
           "a='if(eq(N,3),9,255)'", "-frames:v", 4, tmp_path / "in_%d.png")
    words = ("in_%d.png", "o_%d.jpg", "--look", WARM, "--chunks", 2, "--folder", "pieces")
    result = farm(*words, "--strict", cwd=tmp_path)
    assert result.code == 1 and "its transparency" in result.lines[-1], result.lines
    assert not list(tmp_path.glob("o_*.jpg"))


@pytest.mark.parametrize("kind", ["exr", "png"])
def test_a_sequence_with_a_hole_is_refused_unless_it_is_left_out(kind, tmp_path):
    for number in (1, 2, 4, 5):
        ffmpeg("-f", "lavfi", "-i", f"color=0x{number}05030:s=32x16", "-frames:v", 1, "-update", 1,
               tmp_path / f"in_{number}.{kind}")
    words = ("--key", f"0f={WARM}", "--key", f"5f={COOL}")
    result = farm(f"in_%d.{kind}", f"o_%d.{kind}", *words, "--quiet", cwd=tmp_path)
    assert result.code == 1 and f"in_3.{kind}" in result.only_line()
    words += ("--frames", "1-2,4-5")
    assert run([GLAZEL, "render", f"in_%d.{kind}", f"w_%d.{kind}", *words], cwd=tmp_path).code == 0
    for chunks in (1, 3):
        result = farm(f"in_%d.{kind}", f"o{chunks}_%d.{kind}", *words, "--chunks", chunks,
                      cwd=tmp_path)
        assert result.code == 0, result.lines
        made = [(tmp_path / f"o{chunks}_{number}.{kind}").read_bytes() for number in (1, 2, 4, 5)]
        assert made == [(tmp_path / f"w_{number}.{kind}").read_bytes() for number in (1, 2, 4, 5)]


@pytest.mark.parametrize("source, target, more, code, part", [
    ("clip.mkv", "old.mkv", (), 1, "--overwrite"),
    ("clip.mkv", "out.mkv", ("--chunks", "49"), 2, "only 48 frames"),
    ("clip.mkv", "out.mkv", ("--chunk", "4"), 2, "did you mean --chunks?"),
    ("clip.mkv", "out.mkv", ("--look", "warm.cub"), 1, "warm.cub"),
    ("clip.mkv", "out.gif", (), 2, ".gif"),
    ("clip.mkv", "out.png", (), 2, "one picture"),
    ("one.png", "out.png", (), 2, "one picture"),
    ("-", "out.mkv", (), 2, "pipes"),
    ("clp.mkv", "out.mkv", (), 1, "did you mean clip.mkv?"),
])
def test_mistakes_are_answered_at_once(source, target, more, code, part, clip, tmp_path):
    (tmp_path / "clip.mkv").symlink_to(clip)
    (tmp_path / "old.mkv").write_text("mine")
    (tmp_path / "one.png").write_bytes((ROOT / "samples/images/coffee.png").read_bytes())
    before = sorted(os.listdir(tmp_path))
    result = farm(source, target, *(more if "--look" in more else ("--look", WARM, *more)),
                  "--quiet", cwd=tmp_path)
    assert result.code == code and part in result.only_line()
    assert sorted(os.listdir(tmp_path)) == before
    result = farm(source, target, "--look", WARM, how="locl", cwd=tmp_path)
    assert result.code == 2 and "did you mean local?" in result.only_line()


def test_a_farm_of_which_nothing_is_whole_is_begun_anew_with_other_options(clip, tmp_path):
    (tmp_path / "out.mkv").write_text("old")
    words = (clip, "out.mkv", "--overwrite", "--quiet", "--look", WARM)
    result = farm(*words, "--key", f"0={WARM}", cwd=tmp_path)
    assert result.code == 2 and "has one of them only" in result.only_line()
    assert (tmp_path / "out.mkv").read_text() == "old"
    result = farm(*words, cwd=tmp_path)
    assert result.code == 0, result.lines
    assert sorted(os.listdir(tmp_path)) == ["out.mkv"] and len(decoded(tmp_path / "out.mkv")) == 48


def test_a_folder_that_holds_other_files_is_left_alone(clip, tmp_path):
    (tmp_path / "mine").mkdir()
    (tmp_path / "mine/file").write_text("mine")
    result = farm(clip, "out.mkv", "--look", WARM, "--folder", "mine", "--quiet", cwd=tmp_path)
    assert result.code == 1 and "other files" in result.only_line()
    assert os.listdir(tmp_path / "mine") == ["file"]


# What is broken off: large enough to be caught in the middle.


@pytest.fixture(scope="module")
def long_clip(tmp_path_factory):
    path = tmp_path_factory.mktemp("long") / "clip.mkv"
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=960x540:rate=25", "-frames:v", 48, "-c:v", "libx264",
           "-preset", "ultrafast", path)
    return path


def begin(clip, target, *more, limit=None, how="local", env=None):
    def limited():
        if limit:
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
    jobs = ("--jobs", "2") if how == "local" else ()
    return subprocess.Popen(
        [GLAZEL, "farm", how, clip, target, "--look", WARM, "--codec", "ffv1", "--chunks", "4",
         *jobs, *more], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, preexec_fn=limited,
        env=environment() | (env or {}))


def end(process):
    said = process.communicate(timeout=DEADLINE)[1].decode().splitlines()
    return process.returncode, said


def begun(folder, piece):
    """Whether something of that piece has been written."""
    return any(path.stat().st_size for path in (folder / str(piece)).glob(".glazel-*/*"))


def pieces(folder):
    """The whole ones, with what tells whether they were rendered again."""
    return {n: (folder / f"{n}/piece.mkv").stat().st_mtime_ns for n in range(1, 5)
            if (folder / f"{n}.json").exists()}


def processes(word):
    """Those with it in their command line."""
    found = []
    for path in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
        try:
            if str(word).encode() in path.read_bytes():
                found.append(int(path.parent.name))
        except OSError:
            continue
    return found


def task(folder, piece):
    """The process that renders a piece."""
    return [pid for pid in processes(folder) if
            pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().endswith(f"\0{piece}\0".encode())][0]


def test_a_task_that_is_killed_is_tried_again(long_clip, tmp_path):
    folder = tmp_path / "out.mkv.farm"
    process = begin(long_clip, tmp_path / "out.mkv")
    wait_until(lambda: begun(folder, 2))
    os.kill(task(folder, 2), signal.SIGKILL)
    code, said = end(process)
    assert code == 0, said
    assert any("piece 2" in line and "SIGKILL" in line and "again" in line for line in said), said
    assert os.listdir(tmp_path) == ["out.mkv"]
    assert_like_unbroken(long_clip, tmp_path / "out.mkv", tmp_path, "--look", WARM, "--codec",
                         "ffv1")


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_a_farm_that_ends_goes_on_where_it_was(number, long_clip, tmp_path):
    folder = tmp_path / "out.mkv.farm"
    process = begin(long_clip, tmp_path / "out.mkv")
    wait_until(lambda: pieces(folder) and (begun(folder, 3) or begun(folder, 4)))
    started = time.monotonic()
    process.send_signal(number)
    code, said = end(process)
    wait_until(lambda: not processes(folder))
    assert time.monotonic() - started < SOON
    assert code == (-number if number == signal.SIGKILL else 128 + number), said
    assert os.listdir(tmp_path) == ["out.mkv.farm"]
    whole = pieces(folder)
    assert whole
    result = farm(long_clip, tmp_path / "out.mkv", "--look", WARM, "--codec", "ffv1", "--keep",
                  cwd=tmp_path)
    assert result.code == 1 and "other options" in result.lines[-1], "it was begun elsewhere"
    code, said = end(begin(long_clip, tmp_path / "out.mkv", "--keep"))
    assert code == 0, said
    assert {n: pieces(folder)[n] for n in whole} == whole, "these were not rendered again"
    assert len(decoded(tmp_path / "out.mkv")) == 48


def waits_when_joining(folder):
    """An ffmpeg that joins as ever and then does not end; `folder`/joined is there by then."""
    program = folder / "bin/ffmpeg"
    program.parent.mkdir()
    program.write_text(f"""#!/bin/sh
case " $* " in *" concat "*) ;; *) exec {shutil.which("ffmpeg")} "$@" ;; esac
{shutil.which("ffmpeg")} "$@" && touch "{folder}/joined" && exec sleep {DEADLINE}
""")
    program.chmod(0o755)
    return {"PATH": f"{program.parent}:{os.environ['PATH']}"}


def test_a_farm_that_is_killed_while_it_joins_joins_again(long_clip, tmp_path):
    folder = tmp_path / "out.mkv.farm"
    process = begin(long_clip, tmp_path / "out.mkv", env=waits_when_joining(tmp_path))
    wait_until((tmp_path / "joined").exists)
    process.kill()
    end(process)
    wait_until(lambda: not processes(folder))
    assert not (tmp_path / "out.mkv").exists()
    whole = pieces(folder)
    assert len(whole) == 4
    code, said = end(begin(long_clip, tmp_path / "out.mkv", "--keep"))
    assert code == 0, said
    assert pieces(folder) == whole, "these were not rendered again"
    assert sorted(os.listdir(tmp_path)) == ["bin", "joined", "out.mkv", "out.mkv.farm"]
    assert_like_unbroken(long_clip, tmp_path / "out.mkv", tmp_path, "--look", WARM, "--codec",
                         "ffv1")


def damage(folder, piece):
    """The same size as ever, but another byte in the middle."""
    path = folder / f"{piece}/piece.mkv"
    data = bytearray(path.read_bytes())
    data[len(data) // 2] ^= 0xFF
    path.write_bytes(data)


def assert_mends_a_damaged_piece(clip, made, **more):
    words = (clip, made, "--look", WARM, "--codec", "ffv1", "--chunks", 4, "--keep")
    assert farm(*words, cwd=made.parent, **more).code == 0
    made.unlink()
    folder = made.with_name(f"{made.name}.farm")
    before = pieces(folder)
    path = folder / "2/piece.mkv"
    data = bytearray(path.read_bytes())
    data[len(data) // 2] ^= 0xFF
    path.write_bytes(data)  # of the size that it had
    result = farm(*words, cwd=made.parent, **more)
    assert result.code == 0, result.lines
    assert any("piece 2" in line and "damaged" in line for line in result.lines), result.lines
    after = pieces(folder)
    assert [n for n in before if after[n] != before[n]] == [2]
    assert_like_unbroken(clip, made, made.parent, "--look", WARM, "--codec", "ffv1")


def test_a_piece_that_was_damaged_is_rendered_again(clip, tmp_path):
    assert_mends_a_damaged_piece(clip, tmp_path / "out.mkv")


def test_what_has_changed_meanwhile_is_refused(clip, tmp_path):
    shutil.copy(clip, tmp_path / "in.mkv")
    shutil.copy(WARM, tmp_path / "look.cube")
    words = ("in.mkv", "out.mkv", "--look", "look.cube", "--codec", "ffv1", "--quiet")
    (tmp_path / "out.mkv.farm").mkdir()
    assert farm(*words, "--keep", cwd=tmp_path).code == 0
    (tmp_path / "out.mkv").unlink()
    shutil.copy(COOL, tmp_path / "look.cube")
    result = farm(*words, cwd=tmp_path)
    assert result.code == 1 and "look.cube: it has changed" in result.only_line()
    shutil.copy(WARM, tmp_path / "look.cube")
    os.utime(tmp_path / "in.mkv")
    result = farm(*words, cwd=tmp_path)
    assert result.code == 1 and "in.mkv: it has changed" in result.only_line()


def test_a_full_disk_is_told_with_the_piece_and_its_log(long_clip, tmp_path):
    folder = tmp_path / "out.mkv.farm"
    code, said = end(begin(long_clip, tmp_path / "out.mkv", limit=300_000))
    assert code == 1 and "piece " in said[-1] and f"{folder}/log-" in said[-1], said
    assert os.listdir(tmp_path) == ["out.mkv.farm"]
    assert not list(folder.glob("*/piece.mkv")) and not list(folder.glob("*/.glazel-*"))
    code, said = end(begin(long_clip, tmp_path / "out.mkv"))
    assert code == 0 and os.listdir(tmp_path) == ["out.mkv"], said


def test_of_two_farms_for_one_output_the_second_is_refused(long_clip, tmp_path):
    first = begin(long_clip, tmp_path / "out.mkv")
    wait_until(lambda: begun(tmp_path / "out.mkv.farm", 1))
    other = begin(long_clip, tmp_path / "other.mkv")
    code, said = end(begin(long_clip, tmp_path / "out.mkv"))
    assert code == 1 and "another farm" in said[-1]
    assert [end(process)[0] for process in (first, other)] == [0, 0]
    assert decoded(tmp_path / "out.mkv") == decoded(tmp_path / "other.mkv")
    assert sorted(os.listdir(tmp_path)) == ["other.mkv", "out.mkv"]


def test_a_file_that_appears_meanwhile_is_not_replaced(long_clip, tmp_path):
    process = begin(long_clip, tmp_path / "out.mkv")
    wait_until(lambda: pieces(tmp_path / "out.mkv.farm"))
    (tmp_path / "out.mkv").write_text("theirs")
    code, said = end(process)
    assert code == 1 and "exists already" in said[-1]
    assert (tmp_path / "out.mkv").read_text() == "theirs"
    assert len(pieces(tmp_path / "out.mkv.farm")) == 4, "the pieces stay for another try"


# A real cluster of one node.


@pytest.fixture(scope="module")
def cluster(tmp_path_factory):
    if slurm_cluster.why_not():
        pytest.skip(slurm_cluster.why_not())
    with slurm_cluster.cluster(tmp_path_factory.mktemp("slurm")) as environment_of:
        # What each node makes once is made once for all runs of this test.
        names = {name: environment_of[name] for name in ("SLURM_CONF", "PATH")}
        yield names | {"GLAZEL_NODE_FOLDER": str(BUILD / "farm-node")}


def test_a_cluster_makes_what_an_unbroken_render_makes(cluster, clip, tmp_path):
    words = ("--look", WARM, *LOSSLESS)
    folder = tmp_path / "100% it's"
    folder.mkdir()
    result = farm(clip, folder / "out.mkv", *words, "--chunks", 3, how="slurm", env=cluster,
                  cwd=tmp_path)
    assert result.code == 0, result.lines
    assert any(" of 48, " in line for line in result.lines), "it shows progress"
    assert os.listdir(folder) == ["out.mkv"]
    whole = assert_like_unbroken(clip, folder / "out.mkv", tmp_path, *words)
    assert packets(folder / "out.mkv", "a") == packets(whole, "a")


def test_a_cluster_survives_a_killed_task_and_the_end_of_who_submitted(cluster, long_clip, tmp_path):
    folder = tmp_path / "out.mkv.farm"
    process = begin(long_clip, tmp_path / "out.mkv", how="slurm", env=cluster)
    wait_until(lambda: begun(folder, 1) and b'"join"' in (folder / "state.json").read_bytes())
    process.kill()
    end(process)
    ids = json.loads((folder / "state.json").read_bytes())["slurm"].values()
    os.kill(task(folder, 1), signal.SIGKILL)
    refused = begin(long_clip, tmp_path / "out.mkv", env=cluster)
    code, said = end(refused)
    assert code == 1 and "Slurm jobs" in said[-1], said
    code, said = end(begin(long_clip, tmp_path / "out.mkv", how="slurm", env=cluster))
    assert code == 0, said
    assert sum(f"Slurm jobs {' '.join(ids)} " in line for line in said) == 1, "the same jobs"
    assert sum("Slurm jobs" in line for line in said) == 1, "and no others"
    assert os.listdir(tmp_path) == ["out.mkv"]
    assert len(decoded(tmp_path / "out.mkv")) == 48


def test_a_cluster_mends_a_piece_that_was_damaged(cluster, clip, tmp_path):
    assert_mends_a_damaged_piece(clip, tmp_path / "out.mkv", how="slurm", env=cluster)


def test_a_piece_that_fails_for_good_on_a_cluster_is_told(cluster, clip, tmp_path):
    shutil.copy(WARM, tmp_path / "look.cube")
    process = begin(clip, tmp_path / "out.mkv", "--encoder-options", "-nonsense 1", how="slurm",
                    env=cluster)
    code, said = end(process)
    assert code == 1 and "piece 1" in said[-1] and "nonsense" in said[-1], said
    assert (tmp_path / "out.mkv.farm/state.json").exists()
    queue = subprocess.run(["squeue", "--noheader"], env=environment() | cluster,
                           capture_output=True, check=True, timeout=DEADLINE).stdout
    assert not queue.strip(), "no join waits for what will never come"
