"""What the headers of the files that are handed out promise: hardening, no times, no paths."""

import os
import pathlib
import struct
import subprocess
import zlib

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["GLAZEL_BUILD"])
FILES = ("GlazelDX_x64.dll", "GZ3Renderer_x64.dll", "glazelhost.exe")

EXPORTS, IMPORTS, RESOURCES, RELOCATIONS = 0, 1, 2, 5  # data directories
RELOCATIONS_STRIPPED, LARGE_ADDRESSES = 0x0001, 0x0020
HIGH_ENTROPY, DYNAMIC_BASE, NO_EXECUTE = 0x0020, 0x0040, 0x0100
CODE, EXECUTE, WRITE = 0x00000020, 0x20000000, 0x80000000


class Image:
    """A 64-bit PE file, read by its published layout."""

    def __init__(self, path):
        self.data = path.read_bytes()
        start = struct.unpack_from("<I", self.data, 0x3C)[0]
        assert self.data[start:start + 4] == b"PE\0\0"
        (_, count, self.time, _, self.symbols, optional_size,
         self.characteristics) = struct.unpack_from("<HHIIIHH", self.data, start + 4)
        optional = start + 24
        assert struct.unpack_from("<H", self.data, optional)[0] == 0x20B
        self.base = struct.unpack_from("<Q", self.data, optional + 24)[0]
        self.dll_characteristics = struct.unpack_from("<H", self.data, optional + 70)[0]
        self.directories = [struct.unpack_from("<II", self.data, optional + 112 + 8 * index)
                            for index in range(16)]
        self.sections = {}
        for index in range(count):
            place = optional + optional_size + 40 * index
            name, size, address, raw_size, raw = struct.unpack_from("<8sIIII", self.data, place)
            flags = struct.unpack_from("<I", self.data, place + 36)[0]
            name = self.long_name(name.rstrip(b"\0").decode())
            self.sections[name] = (address, max(size, raw_size), raw, raw_size, flags)

    def long_name(self, name):
        if not name.startswith("/"):
            return name
        place = self.string_table() + int(name[1:])
        return self.data[place:self.data.index(b"\0", place)].decode()

    def string_table(self):
        start = struct.unpack_from("<I", self.data, 0x3C)[0]
        table, symbols = struct.unpack_from("<II", self.data, start + 12)
        return table + 18 * symbols

    def at(self, address):
        for begin, size, raw, _, _ in self.sections.values():
            if begin <= address < begin + size:
                return raw + address - begin
        raise AssertionError(f"no section holds address {address:#x}")

    def directory_time(self, index):
        """The time in a directory's table, or 0 when there is no such directory."""
        address, size = self.directories[index]
        return struct.unpack_from("<I", self.data, self.at(address) + 4)[0] if size else 0


@pytest.fixture(params=FILES)
def name(request):
    return request.param


@pytest.fixture
def image(name):
    return Image(BUILD / "bin" / name)


@pytest.fixture
def symbols(name):
    return BUILD / "symbols" / f"{name}.debug"


def test_it_can_stand_anywhere_in_64_bits_of_address_space(image):
    for flag in (HIGH_ENTROPY, DYNAMIC_BASE):
        assert image.dll_characteristics & flag
    assert image.characteristics & LARGE_ADDRESSES
    assert not image.characteristics & RELOCATIONS_STRIPPED
    assert image.directories[RELOCATIONS][1] > 0, "without relocations it stays where it is"
    assert image.base >= 1 << 32, "from a low base the system uses few bits"


def test_data_is_not_executed_and_code_not_written(image):
    assert image.dll_characteristics & NO_EXECUTE
    for section, (_, _, _, _, flags) in image.sections.items():
        assert not (flags & WRITE and flags & (EXECUTE | CODE)), section
    assert image.sections[".text"][4] & EXECUTE


def test_stacks_are_guarded_by_code_of_its_own(symbols):
    table = subprocess.run(["x86_64-w64-mingw32-nm", symbols], capture_output=True, text=True,
                           check=True).stdout.split()
    assert "__stack_chk_fail" in table and "__stack_chk_guard" in table
    imported = [word for word in table if word.startswith("__imp_")]
    assert not [word for word in imported if "stack_chk" in word]


def test_it_says_nothing_of_when_it_was_made(image):
    assert image.time == 0
    assert image.directory_time(EXPORTS) == 0
    assert image.directory_time(RESOURCES) == 0


def test_neither_it_nor_its_symbols_say_where_it_was_made(name, symbols):
    for path in (BUILD / "bin" / name, symbols):
        data = path.read_bytes()
        for place in (str(ROOT), str(BUILD), str(pathlib.Path.home()) + "/"):
            assert place == "//" or place.encode() not in data, (path, place)


def test_its_symbols_are_in_a_file_that_it_names(name, image, symbols):
    assert image.symbols == 0
    assert not [section for section in image.sections if section.startswith(".debug")]
    _, _, raw, size, _ = image.sections[".gnu_debuglink"]
    link = image.data[raw:raw + size]
    file, _, rest = link.partition(b"\0")
    assert file.decode() == symbols.name
    checksum = struct.unpack("<I", link[(len(file) + 4) & ~3:][:4])[0]
    assert checksum == zlib.crc32(symbols.read_bytes()), rest
    assert ".debug_info" in Image(symbols).sections


def test_the_plug_in_holds_no_part_of_the_run_time_that_nobody_noticed():
    # A stream, a locale or a number's text costs more than what is left to the limit.
    assert (BUILD / "bin" / "GlazelDX_x64.dll").stat().st_size <= 280 * 1024


def test_it_needs_no_library_of_the_compiler(image):
    place = image.at(image.directories[IMPORTS][0])
    libraries = []
    while address := struct.unpack_from("<I", image.data, place + 12)[0]:
        start = image.at(address)
        libraries.append(image.data[start:image.data.index(b"\0", start)].decode().lower())
        place += 20
    assert "kernel32.dll" in libraries
    assert not [library for library in libraries if library.startswith("lib")]
