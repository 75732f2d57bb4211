"""What holds for the tree as a whole: who includes whom, scripts, links in documents."""

import re
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
FILES = sorted(
    path
    for path in subprocess.check_output(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT, text=True
    ).splitlines()
    if (ROOT / path).is_file()
)
DOCUMENTS = [path for path in FILES if path.endswith(".md")]


def arrows():
    """The folders that each folder may include from, as docs/architecture.md draws them."""
    text = (ROOT / "docs/architecture.md").read_text()
    drawing = re.search(r"## Who may include whom\n.*?```\n(.*?)```", text, re.S)[1]
    rows = (line.split("→") for line in drawing.splitlines())
    return {folder.strip(): below.split() for folder, below in rows}


def folder_of(path, folders):
    """The innermost of `folders` that holds a file; None for what is not drawn."""
    fitting = [folder for folder in folders if path.startswith(folder + "/")]
    return max(fitting, key=len, default=None)


def test_every_source_folder_is_drawn():
    sources = [path for path in FILES if path.endswith((".h", ".cpp")) and path[:6] != "tests/"]
    assert {path for path in sources if not folder_of(path, arrows())} == {
        "cmake/gtest_notification.h"
    }


def test_no_arrow_goes_up():
    drawn = list(arrows())
    for folder, below in arrows().items():
        assert set(below) <= set(drawn[drawn.index(folder) + 1 :]), f"{folder} is drawn too low"


def test_includes_follow_the_arrows():
    allowed = arrows()
    wrong = []
    for path in FILES:
        folder = folder_of(path, allowed)
        if folder is None or not path.endswith((".h", ".cpp")) or path.endswith("/main.cpp"):
            continue
        for include in re.findall(r'^#include "([^"]+/[^"]+)"', (ROOT / path).read_text(), re.M):
            target = folder_of(include, allowed)
            if target not in (folder, *allowed[folder]):
                wrong.append(f"{path} includes {include}")
    assert wrong == [], "\n".join(wrong)


def test_what_others_copy_needs_no_other_file_and_says_its_terms():
    for path in (ROOT / "contract").glob("*.h"):
        text = path.read_text()
        assert "SPDX-License-Identifier: MIT" in text.splitlines()[0], path
        assert set(re.findall(r'^#include "([^/"]+)/', text, re.M)) <= {"contract"}, path


def test_scripts_are_clean():
    scripts = [
        path
        for path in FILES
        if (ROOT / path).read_bytes()[:32].splitlines()[:1]
        in ([b"#!/usr/bin/env bash"], [b"#!/bin/sh"], [b"#!/bin/bash"])
    ]
    assert "test.sh" in scripts
    subprocess.run(["shellcheck", "--severity=warning", *scripts], cwd=ROOT, check=True)


def anchors(document):
    headings = re.findall(r"^#+ +(.+)$", document.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


@pytest.mark.parametrize("document", DOCUMENTS)
def test_links_lead_somewhere(document):
    text = re.sub(r"```.*?```", "", (ROOT / document).read_text(), flags=re.S)
    for link in re.findall(r"\]\(([^)\s]+)\)", text):
        if re.match(r"\w+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = (ROOT / document).parent / path if path else ROOT / document
        assert target.exists(), link
        assert not anchor or anchor in anchors(target), link
