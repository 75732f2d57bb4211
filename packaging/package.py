#!/usr/bin/python3
"""Makes what is handed out from a release build: package.py --build FOLDER --out FOLDER

Writes GlazelDX-<version>-setup.exe, -portable.zip, -symbols.zip and .spdx.json. The same build and
the same SOURCE_DATE_EPOCH give the same bytes.
"""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import zipfile

import contents
import spdx

HERE = pathlib.Path(__file__).resolve().parent


def source_time():
    """Seconds since 1970: SOURCE_DATE_EPOCH, or else when the sources were committed."""
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if given is None:
        given = subprocess.run(["git", "-C", contents.ROOT, "log", "-1", "--format=%ct"],
                               capture_output=True, text=True, check=True).stdout
    return int(given)


def write_zip(path, entries, when):
    """`entries`: name -> bytes. Every entry gets the time `when`, so that the bytes repeat."""
    date = time.gmtime(max(when, 315532800))[:6]  # the format begins with 1980
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, data in sorted(entries.items()):
            entry = zipfile.ZipInfo(name, date)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            archive.writestr(entry, data)


def windows_name(name):
    return name.replace("/", "\\")


def windows_lines(path):
    return path.read_bytes().replace(b"\r\n", b"\n").replace(b"\n", b"\r\n")


def portable_entries(items, folder):
    entries = {f"{folder}/{item.name}": item.source.read_bytes() for item in items}
    for name in ("register.cmd", "unregister.cmd", "validate.cmd"):
        entries[f"{folder}/{name}"] = windows_lines(HERE / name)
    return entries


def file_macros(items):
    """The file lists that glazel.nsi includes: Stage_<component>, EachKnownFile and
    RemoveKnownFolders."""
    lines = []
    for component in contents.COMPONENTS:
        lines.append(f"!macro Stage_{component}")
        folder = None
        for item in (item for item in items if item.component == component):
            name = windows_name(item.name)
            parent, _, file = name.rpartition("\\")
            if parent != folder:
                folder = parent
                lines.append('  SetOutPath "$INSTDIR\\~setup-new{}"'.format(parent and "\\" + parent))
            lines.append(f'  !insertmacro StageFile "{item.source}" "{file}" "{name}" {component}')
        lines.append("!macroend")
    folders = {str(pathlib.PurePosixPath(item.name).parent) for item in items} - {"."}
    lines += ["!macro EachKnownFile deed",
              *(f'  !insertmacro ${{deed}} "{windows_name(item.name)}" {item.component}'
                for item in items), "!macroend"]
    lines += ["!macro RemoveKnownFolders",
              *(f'  RMDir "$INSTDIR\\{windows_name(folder)}"'
                for folder in sorted(folders, reverse=True)), "!macroend"]
    return "\n".join(lines) + "\n"


def make_installer(items, version, target):
    """Runs makensis; it says what is wrong by itself."""
    plugin = next(item.source for item in items if item.name == contents.PLUGIN)
    with tempfile.TemporaryDirectory() as work:
        macros = pathlib.Path(work) / "files.nsh"
        macros.write_text(file_macros(items), encoding="utf-8")
        subprocess.run(["makensis", "-V2", "-NOCD", "-INPUTCHARSET", "UTF8",
                        f"-DVERSION={version}", f"-DFILES={macros}", f"-DPLUGIN_SOURCE={plugin}",
                        f"-DOLDEST_WINDOWS={contents.oldest_windows()}", f"-DTARGET={target}",
                        f"-DHERE={HERE}", str(HERE / "glazel.nsi")],
                       check=True)


def make_all(build, out, when):
    """All documents, from one list of files."""
    version = contents.version()
    out.mkdir(parents=True, exist_ok=True)
    stem = f"GlazelDX-{version}"
    with tempfile.TemporaryDirectory() as work:
        notices = pathlib.Path(work) / "third-party-licences.txt"
        contents.write_notices(notices)
        items = contents.items(build, notices)
        missing = [str(item.source) for item in items if not item.source.exists()]
        if missing:
            sys.exit(f"package: {', '.join(missing)}: not there; build the release preset first")
        for item in items:
            if item.source == notices:
                os.utime(notices, (when, when))
        make_installer(items, version, out / f"{stem}-setup.exe")
        portable = portable_entries(items, stem)
        write_zip(out / f"{stem}-portable.zip", portable, when)
        symbols = sorted((pathlib.Path(build) / "symbols").glob("*.debug"))
        write_zip(out / f"{stem}-symbols.zip",
                  {path.name: path.read_bytes() for path in symbols}, when)
        spdx.write(out / f"{stem}.spdx.json", version, items, portable, when)
    return sorted(out.glob(f"{stem}*"))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--out", type=pathlib.Path, required=True)
    words = parser.parse_args()
    for path in make_all(words.build.resolve(), words.out.resolve(), source_time()):
        print(path)


if __name__ == "__main__":
    main()
