"""What is handed out: the one list that installer, archive and SPDX document are made from."""

import pathlib
import re
from typing import NamedTuple

ROOT = pathlib.Path(__file__).resolve().parents[1]


class Item(NamedTuple):
    component: str  # one of COMPONENTS
    name: str       # path below the installation folder, with forward slashes
    source: pathlib.Path
    licence: str    # SPDX expression


class Library(NamedTuple):
    """Something that is linked or compiled into the files that `used_by` names."""
    name: str
    package: str  # the package that it is built from, whose copyright file is handed out too
    licence: str
    used_by: tuple


# The plug-in first: the others are optional.
COMPONENTS = ("plugin", "renderer", "host", "looks")

PLUGIN, RENDERER, HOST = "GlazelDX_x64.dll", "GZ3Renderer_x64.dll", "glazelhost.exe"

LIBRARIES = (
    Library("GCC run time", "g++-mingw-w64-x86-64-win32",
            "GPL-3.0-or-later WITH GCC-exception-3.1", (PLUGIN, RENDERER, HOST)),
    Library("MinGW-w64 run time", "mingw-w64-x86-64-dev", "ZPL-2.1", (PLUGIN, RENDERER, HOST)),
    Library("RapidXML", "librapidxml-dev", "BSL-1.0 OR MIT", (RENDERER,)),
    Library("CLI11", "libcli11-dev", "BSD-3-Clause", (HOST,)),
    Library("JSON for Modern C++", "nlohmann-json3-dev", "MIT", (HOST,)),
    Library("stb_image_write", "libstb-dev", "MIT OR Unlicense", (HOST,)),
)

# The programs that install and remove are its stub, decoder and plug-ins.
INSTALLER_LIBRARIES = (
    Library("NSIS", "nsis-common", "Zlib AND CPL-1.0 WITH LZMA-exception AND MIT",
            ("the setup program", "uninstall.exe")),
)


def version():
    """The project's, as its build knows it."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(GlazelDX VERSION (\d+\.\d+\.\d+)", text).group(1)


def oldest_windows():
    """The one whose functions the build allows itself to use, as major.minor."""
    text = (ROOT / "cmake/warnings.cmake").read_text(encoding="utf-8")
    number = int(re.search(r"_WIN32_WINNT=0x([0-9A-F]{4})", text).group(1), 16)
    return f"{number >> 8}.{number & 0xFF}"


def items(build, notices):
    """Everything of a release build; `notices` is the file with the libraries' licences."""
    binaries = pathlib.Path(build) / "bin"
    looks = ROOT / "samples/looks"
    found = [Item("plugin", PLUGIN, binaries / PLUGIN, "MIT"),
             Item("plugin", "LICENSE.txt", ROOT / "LICENSE", "MIT"),
             Item("plugin", "third-party-licences.txt", notices, "NOASSERTION"),
             Item("plugin", "troubleshooting.md", ROOT / "docs/troubleshooting.md", "MIT"),
             Item("renderer", RENDERER, binaries / RENDERER, "MIT"),
             Item("host", HOST, binaries / HOST, "MIT")]
    found += [Item("host", f"{name}.md", ROOT / f"docs/{name}.md", "MIT")
              for name in ("validate", "video", "windows")]
    found += [Item("host", f"glazel/{path.name}", path, "MIT")
              for path in sorted((ROOT / "tools/glazel").glob("*.py"))]
    found += [Item("looks", f"looks/{path.name}", path, "CC0-1.0")
              for path in sorted(looks.iterdir()) if path.suffix in (".cube", ".cc", ".md")]
    return found


def write_notices(path):
    """Gathers the libraries' licences, as their packages state them."""
    parts = ["Glazel DX and its installer contain parts of what is listed below. The licences "
             "follow.\n"]
    for library in LIBRARIES + INSTALLER_LIBRARIES:
        copyright_file = pathlib.Path("/usr/share/doc") / library.package / "copyright"
        title = f"{library.name} ({library.licence}), in {', '.join(library.used_by)}"
        parts.append(f"{title}\n{'=' * len(title)}\n\n"
                     + copyright_file.read_text(encoding="utf-8"))
    pathlib.Path(path).write_text("\n\n".join(parts), encoding="utf-8", newline="\r\n")
