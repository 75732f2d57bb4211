"""The same sources give the same bytes, whenever and wherever they are built."""

import hashlib
import os
import pathlib
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["GLAZEL_BUILD"])
TARGETS = ("GlazelDX_x64", "GZ3Renderer_x64")
PRODUCTS = tuple(name for target in TARGETS
                 for name in (f"bin/{target}.dll", f"symbols/{target}.dll.debug"))


def run(*words, cwd):
    finished = subprocess.run([str(word) for word in words], cwd=cwd, capture_output=True,
                              text=True, check=False)
    assert finished.returncode == 0, finished.stdout + finished.stderr
    return finished.stdout


def copy_of_the_tree(folder):
    """What git knows of, as it stands now."""
    names = run("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard",
                cwd=ROOT).split("\0")
    for name in filter(None, names):
        if (ROOT / name).is_file():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, folder / name)


def sums(build):
    return {name: hashlib.sha256((build / name).read_bytes()).hexdigest() for name in PRODUCTS}


def is_up_to_date(build):
    return "no work to do" in run("cmake", "--build", build, "--target", *TARGETS, "--", "-n",
                                  cwd=ROOT)


def build_in(folder):
    """Builds a copy of the tree."""
    copy_of_the_tree(folder)
    build = folder / "elsewhere"
    run("cmake", "--preset", "release", "-B", build, cwd=folder)
    run("cmake", "--build", build, "--target", *TARGETS, cwd=folder)
    return build


def test_two_folders_and_two_times_give_the_same_product(tmp_path):
    first = BUILD if is_up_to_date(BUILD) else build_in(tmp_path / "one")
    assert sums(build_in(tmp_path / "another folder" / "of another length")) == sums(first)
