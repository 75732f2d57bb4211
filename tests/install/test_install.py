"""The installer and the portable archive, used as a person would, each time in the same prefix."""

import contextlib
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import time
import zipfile

import pytest

import contents
import package
from wine_prefix import BIN, BUILD, WinePrefix, changes, windows_path

ROOT = pathlib.Path(__file__).resolve().parents[2]
CLASSES = "HKEY_LOCAL_MACHINE\\Software\\Classes\\"
SERVER = CLASSES + "CLSID\\{B47A199B-15E2-4836-BD39-419904B5D292}\\InprocServer32"
FOREIGN_INTERFACES = (CLASSES + "Interface\\{E31FB81B-1335-11D1-8189-0000F87557DB}",
                      CLASSES + "Wow6432Node\\Interface\\{A947DD96-CD97-4958-B026-BFE1CB8646EE}")
ENTRY = "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\GlazelDX"
DEFAULT = "C:\\Program Files\\Brellin\\Glazel DX"
VERSION = contents.version()
PORTABLE = f"C:\\Own\\GlazelDX-{VERSION}"
OLDER, NEWER = "0.0.1", "99.0.0"
PACKAGED = 1_700_000_000  # the time that packages are made to bear, in seconds since 1970
ENDED = 77  # as lock_probe ends a setup program
DEADLINE = 90  # seconds that no removal ever needs
DAMAGED, IN_USE, DOWNGRADE, REGISTRATION, FILES, RIGHTS, RUNNING = range(2, 9)
OTHER_WINDOWS = 10
NO_REGISTRAR = {"WINEDLLOVERRIDES": "mscoree,mshtml,atl="}  # the plug-in cannot change its entries
PLUGIN_ONLY = {"GlazelDX_x64.dll", "LICENSE.txt", "third-party-licences.txt",
               "troubleshooting.md", "uninstall.exe"}
HOST = ({"glazelhost.exe", "validate.md", "video.md", "windows.md"} |
        {f"glazel/{path.name}" for path in (ROOT / "tools/glazel").glob("*.py")})
EVERYTHING = PLUGIN_ONLY | HOST | {"GZ3Renderer_x64.dll", "looks/README.md",
                                   "looks/bleach_bypass.cube", "looks/cool_night.cc",
                                   "looks/warm_print.cube"}


@pytest.fixture(scope="session")
def out(tmp_path_factory):
    """What package.sh makes of this build, and installers that call themselves older and newer."""
    folder = tmp_path_factory.mktemp("out")
    subprocess.run([ROOT / "package.sh", folder], check=True,
                   env=os.environ | {"SOURCE_DATE_EPOCH": str(PACKAGED)})
    notices = folder / "notices.txt"
    contents.write_notices(notices)
    for version in (OLDER, NEWER):
        package.make_installer(contents.items(BUILD, notices), version, folder / setup(version))
    return folder


def setup(version):
    return f"GlazelDX-{version}-setup.exe"


class Machine:
    """A prefix with what was in it before."""

    def __init__(self, folder, out):
        self.folder = folder
        self.out = out
        self.start()

    def start(self):
        self.log_length = 0
        self.prefix = WinePrefix(self.folder)
        self.remember()

    def replace(self):
        """By one that nobody has used."""
        self.prefix.close()
        self.start()

    def remember(self):
        """From now on this is the machine as it was."""
        self.registry = without_pending_deletions(self.prefix.lasting_registry())
        self.files = self.prefix.files()
        self.found_clean = True

    def setup(self, *words, version=VERSION, env=None):
        """The exit code. The runner quotes words with spaces, which /D= must not have: such a path
        is given as several words."""
        self.found_clean = False
        return self.prefix.run(self.out / setup(version), "/S", *words, env=env).code

    def uninstall(self, folder=DEFAULT, env=None):
        """Waits, and ends with the uninstaller's exit code."""
        return self.prefix.run(f"{folder}\\uninstall.exe", "/S", *f"_?={folder}".split(" "),
                               env=env).code

    def uninstall_quietly(self, command=None):
        """As the list of programs does it, or with the command that it had. The program returns
        early; this waits for the end."""
        command = command or self.key(ENTRY)["QuietUninstallString"]
        program, words = command[1:].split('" ')
        self.log()
        self.prefix.run(program, words)
        deadline = time.monotonic() + DEADLINE
        news = ""
        while "\nuninstalled" not in news:
            assert time.monotonic() < deadline, news
            assert "failed (" not in news, news
            time.sleep(0.05)
            news += self.log()
        return news

    def key(self, name):
        """The values of one key of the registry."""
        return self.prefix.registry(name)[name]

    def path(self, windows_path):
        return self.prefix.drive_c / windows_path[3:].replace("\\", "/")

    def installed(self, folder=DEFAULT):
        top = self.path(folder)
        return {path.relative_to(top).as_posix() for path in top.rglob("*") if path.is_file()}

    def log(self):
        """What was logged since the last time."""
        text = self.log_file().read_text(encoding="utf-16")
        news, self.log_length = text[self.log_length:], len(text)
        return news

    def log_file(self):
        (file,) = (self.prefix.drive_c / "windows").glob("[Ll]ogs/GlazelDX-setup.log")
        return file

    def users_log_file(self):
        """Where somebody without an administrator's rights finds the log."""
        (user,) = (path for path in (self.prefix.drive_c / "users").iterdir()
                   if path.name != "Public")
        return user / "Temp/GlazelDX-setup.log"

    def state(self):
        """All that a setup may change: the registry, and the bytes of every file in its folders."""
        return (without_pending_deletions(self.prefix.lasting_registry()),
                {name: contents_of(self.path(name))
                 for name in (DEFAULT, PORTABLE, "C:\\Elsewhere", "C:\\Occupied")})

    def drive_for(self, letter, folder):
        """The letter stands for the folder, as a mapped drive's does, for the length of a with block."""
        return temporary_link(self.prefix.folder / f"dosdevices/{letter}:", self.path(folder))

    def leftovers(self):
        """Differences to the machine as it was: registry, files. Temporary files and the log are no
        leftovers."""
        registry = without_pending_deletions(self.prefix.lasting_registry())
        added, lost = changes(self.registry, registry)
        new, gone = changes(self.files, self.prefix.files())
        result = {**added, **lost}, {name for name in {*new, *gone}
                                     if "/Temp/" not in name and not is_log(name)}
        self.found_clean = result == NOTHING
        return result


def is_log(name):
    return name.lower() in ("windows/logs", "windows/logs/glazeldx-setup.log")


@contextlib.contextmanager
def temporary_link(link, target):
    link.symlink_to(target)
    try:
        yield
    finally:
        link.unlink()


def without_pending_deletions(registry):
    """The uninstaller runs as a temporary copy, which the system deletes when it starts again."""
    values = registry["HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Control\\Session Manager"]
    pending = values.get("PendingFileRenameOperations", "")
    text = re.sub(r"\\(.)", lambda escaped: escaped[1].replace("0", "\0"),
                  pending.removeprefix('str(7):"').removesuffix('"'))
    names = [name for name in text.split("\0") if name]
    if names and all("\\Temp\\~nsu" in name for name in names):
        del values["PendingFileRenameOperations"]
    return registry


NOTHING = ({}, set())


@pytest.fixture(scope="module")
def machine(tmp_path_factory, out):
    made = Machine(tmp_path_factory.mktemp("install") / "prefix", out)
    yield made
    made.prefix.close()


@pytest.fixture(autouse=True)
def clean(request):
    """Every test leaves the machine as it found it, but for an installation, which is removed here.
    Otherwise it fails, and the next one, or the same again after Wine cut it short, gets a new one."""
    machine = request.getfixturevalue("machine") if "machine" in request.fixturenames else None
    if machine:
        machine.found_clean = False
    yield
    if machine and not machine.found_clean:  # looking takes long: not twice
        try:
            if machine.prefix.run("reg", "query", ENTRY).code == 0:
                machine.uninstall_quietly()
            assert machine.leftovers() == NOTHING
        finally:
            if not machine.found_clean:
                machine.replace()


@pytest.fixture
def unpacked(machine, out):
    """The portable archive, unpacked to where PORTABLE says, and registered there."""
    place = machine.path(PORTABLE)
    with zipfile.ZipFile(out / f"GlazelDX-{VERSION}-portable.zip") as archive:
        archive.extractall(place.parent)
    assert machine.prefix.run("cmd", "/c", "register.cmd", cwd=place).code == 0
    yield place
    if machine.prefix.run("reg", "query", SERVER).code == 0:
        assert machine.prefix.run("cmd", "/c", "unregister.cmd", cwd=place).code == 0
    shutil.rmtree(place.parent)


def contents_of(folder):
    """File -> what stands for its bytes."""
    return {path.relative_to(folder).as_posix(): hashlib.sha256(path.read_bytes()).hexdigest()
            for path in folder.rglob("*") if path.is_file()}


def render(machine, folder=DEFAULT):
    """A picture through the installed host, plug-in, renderer and look."""
    target = machine.path(folder) / "graded.png"
    picture = windows_path(ROOT / "samples/images/coffee.png")
    result = machine.prefix.run(f"{folder}\\glazelhost.exe", "render", picture,
                                f"{folder}\\graded.png", "--look",
                                f"{folder}\\looks\\warm_print.cube")
    assert result.code == 0, result
    data = target.read_bytes()
    target.unlink()
    return data


def test_installed_used_and_removed_leaves_the_machine_as_it_was(machine):
    assert machine.setup() == 0
    assert machine.installed() == EVERYTHING
    assert machine.key(SERVER) == {"@": f"{DEFAULT}\\GlazelDX_x64.dll", "ThreadingModel": "Both"}
    assert len(render(machine)) > 1000
    info = json.loads(machine.prefix.run(f"{DEFAULT}\\glazelhost.exe", "info", "--json").output)
    assert info["renderer"]["file"] == f"{DEFAULT}\\GZ3Renderer_x64.dll"
    assert info["plugin"]["version"] == f"{VERSION}.0"
    assert info["plugin"]["effect"]["created"]
    seen = machine.prefix.run(BIN / "com_probe.exe", "create", "BrellinGlazel_x64.Plugin").output
    assert seen.splitlines() == ["create 00000000", f"module {DEFAULT}\\GlazelDX_x64.dll"]
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_the_list_of_programs_tells_version_size_publisher_and_how_to_remove(machine):
    assert machine.setup() == 0
    entry = machine.key(ENTRY)
    size = int(entry.pop("EstimatedSize").removeprefix("dword:"), 16)
    actual = sum((machine.path(DEFAULT) / name).stat().st_size for name in machine.installed())
    assert abs(size - actual / 1024) < 16
    assert entry == {
        "DisplayName": "Glazel DX", "DisplayVersion": VERSION, "Publisher": "Brellin",
        "DisplayIcon": f"{DEFAULT}\\uninstall.exe", "InstallLocation": DEFAULT,
        "ExistingFolder": "C:\\Program Files",
        "UninstallString": f'"{DEFAULT}\\uninstall.exe"',
        "QuietUninstallString": f'"{DEFAULT}\\uninstall.exe" /S',
        "NoModify": "dword:00000001", "NoRepair": "dword:00000001"}


def test_upgraded_not_downgraded_repaired_and_removed(machine):
    assert machine.setup(version=OLDER) == 0
    assert machine.key(ENTRY)["DisplayVersion"] == OLDER
    own = machine.path(DEFAULT) / "looks" / "my own.cube"
    own.write_text("TITLE mine\n")
    (machine.path(DEFAULT) / "looks/warm_print.cube").chmod(0o444)
    machine.log()

    assert machine.setup() == 0
    assert f"upgrade from {OLDER}" in machine.log()
    assert machine.key(ENTRY)["DisplayVersion"] == VERSION

    before = machine.prefix.lasting_registry(), machine.prefix.files()
    assert machine.setup(version=OLDER) == DOWNGRADE
    assert f"newer version, {VERSION}" in machine.log()
    registry, files = machine.prefix.lasting_registry(), machine.prefix.files()
    assert registry == before[0]
    assert {name for name in changes(before[1], files)[0] if "/Temp/" not in name} <= {
        str(machine.log_file().relative_to(machine.prefix.drive_c))}

    good = (machine.path(DEFAULT) / "GlazelDX_x64.dll").read_bytes()
    (machine.path(DEFAULT) / "GlazelDX_x64.dll").write_bytes(b"damaged")
    (machine.path(DEFAULT) / "looks/warm_print.cube").unlink()
    assert machine.setup() == 0
    assert "repair" in machine.log()
    assert (machine.path(DEFAULT) / "GlazelDX_x64.dll").read_bytes() == good
    assert machine.installed() == EVERYTHING | {"looks/my own.cube"}
    assert len(render(machine)) > 1000

    machine.uninstall_quietly()
    assert machine.installed() == {"looks/my own.cube"}, "a file of the user"
    own.unlink()
    own.parent.rmdir()
    machine.path(DEFAULT).rmdir()
    machine.path(DEFAULT).parent.rmdir()
    assert machine.leftovers() == NOTHING


def test_parts_are_left_out_and_come_later(machine):
    assert machine.setup("/NORENDERER", "/NOHOST", "/NOLOOKS") == 0
    assert machine.installed() == PLUGIN_ONLY
    assert machine.setup("/NOHOST") == 0
    assert machine.installed() == EVERYTHING - HOST
    assert machine.setup("/NORENDERER", "/NOHOST", "/NOLOOKS") == 0
    assert machine.installed() == PLUGIN_ONLY
    assert machine.setup("/ALL") == 0
    assert machine.installed() == EVERYTHING


def test_a_repeated_setup_keeps_the_parts_that_were_chosen(machine):
    assert machine.setup("/NOHOST", "/NOLOOKS", version=OLDER) == 0
    chosen = PLUGIN_ONLY | {"GZ3Renderer_x64.dll"}
    (machine.path(DEFAULT) / "GZ3Renderer_x64.dll").unlink()
    assert machine.setup() == 0
    assert machine.installed() == chosen


def test_the_files_of_an_installation_without_a_list_of_them_are_known(machine):
    assert machine.setup(version=OLDER) == 0
    assert machine.prefix.run("reg", "delete", f"{ENTRY}\\Files", "/f").code == 0
    assert machine.setup("/NOHOST") == 0
    assert machine.installed() == EVERYTHING - HOST


def test_without_a_renderer_the_host_program_says_why_none_was_loaded(machine):
    assert machine.setup("/NORENDERER") == 0
    info = json.loads(machine.prefix.run(f"{DEFAULT}\\glazelhost.exe", "info", "--json").output)
    assert not info["renderer"]["usable"]
    assert "in none of the places where the system looks" in info["renderer"]["problem"]
    assert not info["plugin"]["effect"]["created"]


def test_a_folder_with_spaces_an_apostrophe_and_other_letters(machine):
    folder = "C:\\Somebody's Grüße\\фильтр 映像\\Glazel DX"
    assert machine.setup(*f"/D={folder}".split(" ")) == 0
    assert machine.installed(folder) == EVERYTHING
    assert machine.key(SERVER)["@"] == f"{folder}\\GlazelDX_x64.dll"
    assert len(render(machine, folder)) > 1000
    assert machine.setup(version=NEWER) == 0
    assert machine.installed(folder) == EVERYTHING, "an upgrade stays where it is"
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_another_folder_moves_the_installation(machine):
    assert machine.setup() == 0
    assert machine.setup("/D=C:\\Elsewhere") == 0
    assert machine.installed("C:\\Elsewhere") == EVERYTHING
    assert not machine.path(DEFAULT).parent.exists()
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_a_plugin_in_use_is_neither_replaced_nor_removed(machine):
    assert machine.setup(version=OLDER) == 0
    before = machine.prefix.lasting_registry(), machine.installed()
    machine.log()
    with machine.prefix.running(BIN / "com_probe.exe", "hold", "BrellinGlazel_x64.PluginPP",
                                ready="holding"):
        assert machine.setup() == IN_USE
        log = machine.log()
        assert "is in use. Close the video editor" in log
        assert machine.uninstall() == IN_USE
        assert "is in use. Close the video editor" in machine.log()
        assert (machine.prefix.lasting_registry(), machine.installed()) == before
    assert machine.setup() == 0
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


@pytest.mark.parametrize("name", ["GZ3Renderer_x64.dll", "glazelhost.exe"])
def test_neither_are_its_other_programs(machine, name):
    assert machine.setup() == 0
    with machine.prefix.running(BIN / "com_probe.exe", "hold-file", f"{DEFAULT}\\{name}",
                                ready="holding"):
        assert machine.setup() == IN_USE
        assert machine.uninstall() == IN_USE
        assert f"{name} is in use" in machine.log()
        assert machine.installed() == EVERYTHING


def test_an_installation_stays_when_it_cannot_move_to_a_folder_in_use(machine, unpacked):
    assert machine.setup(version=OLDER) == 0
    before = machine.state()
    with machine.prefix.running(BIN / "com_probe.exe", "hold-file", f"{PORTABLE}\\glazelhost.exe",
                                ready="holding"):
        assert machine.setup(f"/D={PORTABLE}") == IN_USE
    assert machine.state() == before
    machine.uninstall_quietly()


def test_removal_tells_of_a_file_that_stays_and_can_be_run_again(machine):
    assert machine.setup() == 0
    with machine.prefix.running(BIN / "com_probe.exe", "hold-file",
                                f"{DEFAULT}\\looks\\warm_print.cube", ready="holding"):
        assert machine.uninstall() == FILES
    assert "warm_print.cube cannot be deleted" in machine.log()
    assert machine.installed() == {"looks/warm_print.cube", "uninstall.exe"}
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_a_damaged_uninstaller_is_replaced(machine):
    assert machine.setup(version=OLDER) == 0
    shutil.copy(BIN / "com_probe.exe", machine.path(DEFAULT) / "uninstall.exe")
    assert machine.setup() == 0
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_an_upgrade_with_a_look_held_open_leaves_the_old_version_working(machine):
    name = "looks\\warm_print.cube"
    assert machine.setup(version=OLDER) == 0
    before = machine.state()
    machine.log()
    with machine.prefix.running(BIN / "com_probe.exe", "hold-file", f"{DEFAULT}\\{name}",
                                ready="holding"):
        assert machine.setup() == IN_USE
        assert machine.setup("/D=C:\\Elsewhere") == IN_USE
    assert f"{DEFAULT}\\{name} is in use" in machine.log()
    assert machine.state() == before
    assert len(render(machine)) > 1000


def test_a_failed_registration_leaves_the_old_version_working(machine):
    assert machine.setup(version=OLDER) == 0
    before = machine.state()
    assert machine.setup("/NOHOST", env=NO_REGISTRAR) == REGISTRATION
    assert machine.state() == before
    assert len(render(machine)) > 1000


def test_a_registration_that_fails_half_way_leaves_the_old_version_registered(machine):
    assert machine.setup(version=OLDER) == 0
    before = machine.state()
    page = "Software\\Classes\\BrellinGlazel_x64.PluginPP"  # after the effect's entries
    with machine.prefix.running(BIN / "lock_probe.exe", "read-only-key", page, ready="holding"):
        assert machine.setup("/D=C:\\Elsewhere") == REGISTRATION
    assert machine.state() == before


def test_an_entry_that_cannot_be_kept_leaves_the_old_version_alone(machine):
    assert machine.setup(version=OLDER) == 0
    before = machine.state()
    machine.log()
    with machine.prefix.running(BIN / "lock_probe.exe", "locked-key", ENTRY.partition("\\")[2],
                                ready="holding"):
        assert machine.setup() == FILES
    assert "regsvr32" not in machine.log()
    assert machine.state() == before


@pytest.fixture
def small_disk(machine):
    """A folder on a disk that has room for one installation but not for two."""
    if os.geteuid() != 0:
        pytest.skip("only root can make a small disk")
    folder = machine.prefix.drive_c / "Small"
    folder.mkdir()
    if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=8m", "small", folder],
                      check=False).returncode != 0:
        folder.rmdir()
        pytest.skip("this system does not let root make a small disk")
    yield folder
    subprocess.run(["umount", folder], check=True)
    folder.rmdir()


def test_a_full_disk_leaves_the_old_version_working(machine, small_disk):
    home = "C:\\Small\\Glazel DX"
    assert machine.setup(*f"/D={home}".split(" "), version=OLDER) == 0
    before = machine.prefix.registry(ENTRY), contents_of(small_disk)
    machine.log()
    assert machine.setup() == FILES
    assert "Check the space on the disk" in machine.log()
    assert (machine.prefix.registry(ENTRY), contents_of(small_disk)) == before
    assert len(render(machine, home)) > 1000
    (small_disk / "ballast").write_bytes(bytes(1 << 20))
    assert machine.setup("/NORENDERER", "/NOHOST", "/NOLOOKS") == 0, "there is room for a part"
    machine.uninstall_quietly()
    assert list(small_disk.iterdir()) == [small_disk / "ballast"]


def test_a_disk_that_is_full_from_the_first_leaves_nothing_there(machine, small_disk):
    (small_disk / "ballast").write_bytes(bytes(4 << 20))
    assert machine.setup("/D=C:\\Small\\Glazel") == FILES
    assert list(small_disk.iterdir()) == [small_disk / "ballast"]
    (small_disk / "ballast").unlink()
    assert machine.leftovers()[0] == {}


def test_a_setup_that_was_ended_is_taken_back_by_the_next(machine):
    assert machine.setup(version=OLDER) == 0
    before = machine.state()
    regsvr32 = machine.prefix.drive_c / "windows/system32/regsvr32.exe"
    good = regsvr32.read_bytes()
    shutil.copy(BIN / "lock_probe.exe", regsvr32)  # ends whoever starts it to register
    ending = {"WINEDLLOVERRIDES": "mscoree,mshtml=;regsvr32.exe=n"}
    assert machine.setup("/D=C:\\Elsewhere", env=ending) == ENDED
    regsvr32.write_bytes(good)
    assert "GlazelDX_x64.dll" not in machine.installed()
    assert machine.setup("/D=C:\\a|b") == FILES
    assert "a setup in C:\\Elsewhere was interrupted" in machine.log()
    assert machine.state() == before


# What a drive X: stands for, and how the installation is spelled then.
SPELLINGS = [("C:\\Program Files\\Brellin", "X:\\Glazel DX"), (DEFAULT, "X:")]


@pytest.mark.parametrize("folder, path", SPELLINGS)
def test_a_repair_through_another_drive_knows_the_installation(machine, folder, path):
    assert machine.setup(version=OLDER) == 0
    with machine.drive_for("x", folder):
        assert machine.setup(*f"/D={path}\\".split(" ")) == 0
        assert machine.installed() == EVERYTHING
        assert machine.key(ENTRY)["InstallLocation"] == DEFAULT
        assert machine.key(SERVER)["@"] == f"{DEFAULT}\\GlazelDX_x64.dll"


@pytest.mark.parametrize("folder, path", SPELLINGS)
def test_a_removal_through_another_drive_knows_the_installation(machine, folder, path):
    assert machine.setup() == 0
    with machine.drive_for("x", folder):
        machine.uninstall_quietly(f'"{path}\\uninstall.exe" /S')
    assert machine.leftovers() == NOTHING


def test_a_removal_through_another_drive_unregisters_without_an_entry(machine):
    assert machine.setup() == 0
    assert machine.prefix.run("reg", "delete", ENTRY, "/f").code == 0
    (machine.path(DEFAULT) / "GlazelDX_x64.dll").unlink()
    with machine.drive_for("x", "C:\\Program Files\\Brellin"):
        machine.uninstall_quietly('"X:\\Glazel DX\\uninstall.exe" /S')
    machine.path(DEFAULT).parent.rmdir()  # only the entry says whose it was
    assert machine.leftovers() == NOTHING


def test_setup_on_windows_for_arm64_says_so(machine):
    key = "HKLM\\System\\CurrentControlSet\\Control\\Session Manager\\Environment"
    value = ("/v", "PROCESSOR_ARCHITECTURE", "/f", "/d")
    assert machine.prefix.run("reg", "add", key, *value, "ARM64").code == 0
    assert machine.setup() == OTHER_WINDOWS
    assert "This is Windows for ARM64" in machine.log()
    assert machine.prefix.run("reg", "add", key, *value, "AMD64").code == 0
    assert machine.leftovers() == NOTHING


def test_setup_on_a_windows_that_is_too_old_says_so(machine):
    key = f"HKCU\\Software\\Wine\\AppDefaults\\{setup(VERSION)}"
    assert machine.prefix.run("reg", "add", key, "/v", "Version", "/d", "vista", "/f").code == 0
    assert machine.setup() == OTHER_WINDOWS
    assert "This is Windows 6.0. Glazel DX needs Windows 10.0 or later." in machine.log()
    assert machine.prefix.run("reg", "delete", key.rpartition("\\")[0], "/f").code == 0
    assert machine.leftovers() == NOTHING


def test_interfaces_that_belong_to_others_do_so_again_after_removal(machine):
    for key in FOREIGN_INTERFACES:
        for words in (("/ve", "/d", "theirs"), ("/v", "own", "/t", "REG_DWORD", "/d", "7")):
            assert machine.prefix.run("reg", "add", f"{key}\\TypeLib", *words, "/f").code == 0
    machine.remember()
    assert machine.setup(env=NO_REGISTRAR) == REGISTRATION
    assert machine.setup() == 0
    assert machine.setup(version=NEWER) == 0
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING
    for key in FOREIGN_INTERFACES:
        assert machine.prefix.run("reg", "delete", key, "/f").code == 0
    machine.remember()


def test_a_damaged_setup_program_does_nothing(machine, out):
    data = bytearray((out / setup(VERSION)).read_bytes())
    data[len(data) // 2] ^= 0xFF
    damaged = machine.prefix.drive_c / "damaged.exe"
    damaged.write_bytes(data)
    assert machine.prefix.run(damaged, "/S").code == DAMAGED
    damaged.unlink()
    assert machine.leftovers() == NOTHING


def test_setup_needs_the_rights_of_an_administrator(machine, out):
    program = windows_path(out / setup(VERSION))
    seen = machine.prefix.run(BIN / "com_probe.exe", "run-without-rights", f'"{program}" /S')
    assert seen.output.strip() == f"exit {RIGHTS}"
    assert "rights of an administrator" in machine.users_log_file().read_text(encoding="utf-16")
    assert machine.leftovers() == NOTHING


def test_so_does_removal(machine):
    assert machine.setup() == 0
    command = f'"{DEFAULT}\\uninstall.exe" /S _?={DEFAULT}'
    seen = machine.prefix.run(BIN / "com_probe.exe", "run-without-rights", command)
    assert seen.output.strip() == f"exit {RIGHTS}"
    assert machine.users_log_file().read_text(encoding="utf-16").count("of an administrator") == 2
    assert machine.installed() == EVERYTHING


def test_a_failed_registration_takes_everything_back(machine):
    assert machine.setup(env=NO_REGISTRAR) == REGISTRATION
    assert "could not be registered" in machine.log()
    assert machine.leftovers() == NOTHING


def test_removal_tells_of_a_registration_that_stays_and_can_be_run_again(machine):
    assert machine.setup() == 0
    machine.log()
    assert machine.uninstall(env=NO_REGISTRAR) == REGISTRATION
    assert "still registered: CLSID\\{B47A199B-15E2-4836-BD39-419904B5D292} " in machine.log()
    assert machine.installed() == {"uninstall.exe"}
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


@pytest.mark.parametrize("name", ["GlazelDX_x64.dll", "glazelhost.exe"])
def test_a_file_that_cannot_be_replaced_takes_everything_back(machine, name):
    (machine.prefix.drive_c / "Occupied" / name).mkdir(parents=True)
    assert machine.setup("/D=C:\\Occupied") == FILES
    assert f"{name} cannot be replaced" in machine.log()
    (machine.prefix.drive_c / "Occupied" / name).rmdir()
    (machine.prefix.drive_c / "Occupied").rmdir()
    assert machine.leftovers() == NOTHING


@pytest.mark.parametrize("name", ["GlazelDX_x64.dll", "uninstall.exe"])
def test_a_setup_leaves_a_portable_copy_in_use_as_it_was(machine, unpacked, name):
    (unpacked / "uninstall.exe").write_text("another program's")
    before = machine.state()
    with machine.prefix.running(BIN / "com_probe.exe", "hold-file", f"{PORTABLE}\\{name}",
                                ready="holding"):
        assert machine.setup(f"/D={PORTABLE}") == IN_USE
    assert f"{name} is in use. Close the video editor" in machine.log()
    assert machine.state() == before


@pytest.mark.parametrize("folder", [PORTABLE, DEFAULT])
def test_a_setup_that_fails_in_the_end_leaves_a_portable_copy_as_it_was(machine, unpacked, folder):
    before = machine.state()
    with machine.prefix.running(BIN / "lock_probe.exe", "volatile-key", ENTRY.partition("\\")[2],
                                ready="holding"):
        assert machine.setup(*f"/D={folder}".split(" ")) == FILES
    log = machine.log()
    assert "regsvr32 /s: 0" in log
    assert "entry in the list of installed programs cannot be written" in log
    assert machine.state() == before


def test_an_installation_stays_when_it_cannot_move_to_an_occupied_folder(machine):
    assert machine.setup(version=OLDER) == 0
    occupied = machine.prefix.drive_c / "Occupied"
    (occupied / "glazelhost.exe").mkdir(parents=True)
    before = machine.state()
    assert machine.setup("/D=C:\\Occupied") == FILES
    assert machine.state() == before
    (occupied / "glazelhost.exe").rmdir()
    (occupied / "looks").write_text("not a folder")
    before = machine.state()
    assert machine.setup("/D=C:\\Occupied") == FILES
    assert machine.state() == before
    shutil.rmtree(occupied)


def test_a_folder_that_cannot_be_made_or_is_a_whole_drive_is_an_error(machine):
    (machine.prefix.drive_c / "file").write_text("not a folder")
    assert machine.setup("/D=C:\\file\\below") == FILES
    assert machine.setup("/D=C:\\") == FILES
    assert "cannot be used. Choose one below it." in machine.log()
    (machine.prefix.drive_c / "file").unlink()
    assert machine.leftovers() == NOTHING


MUTEX_HOLDERS = [("com_probe.exe", "hold-mutex"), ("lock_probe.exe", "foreign-mutex")]


@pytest.mark.parametrize("program, deed", MUTEX_HOLDERS)
def test_a_second_setup_is_refused(machine, program, deed):
    with machine.prefix.running(BIN / program, deed, "Global\\GlazelDX-setup", ready="holding"):
        assert machine.setup() == RUNNING
    assert machine.leftovers() == NOTHING


@pytest.mark.parametrize("program, deed", MUTEX_HOLDERS)
def test_removal_is_refused_while_a_setup_runs(machine, program, deed):
    assert machine.setup() == 0
    with machine.prefix.running(BIN / program, deed, "Global\\GlazelDX-setup", ready="holding"):
        assert machine.uninstall() == RUNNING
    assert machine.installed() == EVERYTHING
    assert machine.key(SERVER)["@"] == f"{DEFAULT}\\GlazelDX_x64.dll"


def test_removal_tells_of_an_entry_that_stays_and_can_be_run_again(machine):
    assert machine.setup() == 0
    command = machine.key(ENTRY)["QuietUninstallString"]
    with machine.prefix.running(BIN / "lock_probe.exe", "locked-key", ENTRY.partition("\\")[2],
                                ready="holding"):
        with pytest.raises(AssertionError, match=rf"failed \({FILES}\)"):
            machine.uninstall_quietly(command)
        assert machine.uninstall() == FILES
    assert "the entry in the list of installed programs cannot be removed" in machine.log()
    assert machine.key(ENTRY)["DisplayVersion"] == VERSION
    assert machine.installed() == {"uninstall.exe"}
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_removal_works_when_the_entry_was_deleted_by_hand(machine):
    assert machine.setup() == 0
    command = machine.key(ENTRY)["QuietUninstallString"]
    assert machine.prefix.run("reg", "delete", ENTRY, "/f").code == 0
    machine.uninstall_quietly(command)
    machine.path(DEFAULT).parent.rmdir()  # only the entry says whose it was
    assert machine.leftovers() == NOTHING


def test_removal_works_when_the_plugin_was_deleted_by_hand(machine):
    assert machine.setup() == 0
    (machine.path(DEFAULT) / "GlazelDX_x64.dll").unlink()
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


@pytest.mark.parametrize("key", ["CLSID\\{B47A199B-15E2-4836-BD39-419904B5D292}",
                                 "CLSID\\{EE3AFD2C-FB57-41ac-ABDE-90421C4140C3}",
                                 "TypeLib\\{CF41FD25-F1F3-4B65-A240-3D4E880D868D}"])
def test_removal_works_when_a_part_of_the_registration_is_gone(machine, key):
    assert machine.setup() == 0
    assert machine.prefix.run("reg", "delete", f"HKLM\\Software\\Classes\\{key}", "/f").code == 0
    machine.uninstall_quietly()
    assert machine.leftovers() == NOTHING


def test_removal_leaves_a_plugin_alone_that_is_registered_from_elsewhere(machine):
    assert machine.setup() == 0
    other = windows_path(BIN / "GlazelDX_x64.dll")
    assert machine.prefix.run("regsvr32", "/s", other).code == 0
    assert "left alone" in machine.uninstall_quietly()
    assert machine.key(SERVER)["@"] == other
    assert machine.prefix.run("regsvr32", "/s", "/u", other).code == 0
    assert machine.leftovers() == NOTHING


def test_nobody_without_rights_can_lead_the_log_to_another_file(machine):
    planted = machine.users_log_file()
    planted.unlink(missing_ok=True)
    victim = machine.prefix.drive_c / "victim.txt"
    victim.write_text("precious")
    with temporary_link(planted, victim):
        assert machine.setup() == 0
        machine.uninstall_quietly()
    assert victim.read_text() == "precious"
    victim.unlink()


def test_the_log_file_can_be_chosen(machine, out):
    assert machine.setup("/LOG=C:\\own.log") == 0
    log = machine.prefix.drive_c / "own.log"
    assert log.read_text(encoding="utf-16").rstrip().endswith("installed")
    log.unlink()
    script = machine.prefix.drive_c / "repair.cmd"
    script.write_text(f'"{windows_path(out / setup(VERSION))}" /S /LOG="C:\\a log.txt"\n')
    assert machine.prefix.run("cmd", "/c", "C:\\repair.cmd").code == 0
    log = machine.prefix.drive_c / "a log.txt"
    assert "\nrepair\n" in log.read_text(encoding="utf-16")
    log.unlink()
    script.unlink()


def test_a_chosen_log_file_that_cannot_be_opened_is_an_error(machine):
    option = "/LOG=C:\\missing\\own.log"
    problem = "The log file 'C:\\missing\\own.log' cannot be opened."
    assert machine.setup(option) == FILES
    assert problem in machine.log(), "in the log that is not chosen"
    assert machine.leftovers() == NOTHING
    assert machine.setup() == 0
    machine.log()
    removal = machine.prefix.run(f"{DEFAULT}\\uninstall.exe", "/S", option,
                                 *f"_?={DEFAULT}".split(" "))
    assert removal.code == FILES
    assert problem in machine.log()
    assert machine.installed() == EVERYTHING


def test_the_portable_archive_registers_where_it_is_unpacked(machine, out):
    folder = machine.prefix.drive_c / "Somebody's Grüße 映像"
    with zipfile.ZipFile(out / f"GlazelDX-{VERSION}-portable.zip") as archive:
        archive.extractall(folder)
    place = folder / f"GlazelDX-{VERSION}"
    assert machine.prefix.run("cmd", "/c", "register.cmd", cwd=place).code == 0
    expected = f"C:\\{folder.name}\\{place.name}\\GlazelDX_x64.dll"
    assert machine.key(SERVER)["@"] == expected
    seen = machine.prefix.run(BIN / "com_probe.exe", "create", "BrellinGlazel_x64.Plugin").output
    assert seen.splitlines() == ["create 00000000", f"module {expected}"]
    assert machine.prefix.run("cmd", "/c", "validate.cmd", "quietly", cwd=place).code == 0
    for judged in ("plugin", "renderer"):
        report = json.loads((place / f"validate-{judged}.json").read_text(encoding="utf-8"))
        assert report["verdict"].startswith("held: "), report["verdict"]
    result = machine.prefix.run("cmd", "/c", "unregister.cmd", cwd=place, env=NO_REGISTRAR)
    assert result.code == 1 and "could not be unregistered" in result.errors
    assert machine.key(SERVER)["@"] == expected
    assert machine.prefix.run("cmd", "/c", "register.cmd", cwd=place).code == 0, "a part was gone"
    assert machine.prefix.run("cmd", "/c", "unregister.cmd", cwd=place).code == 0
    assert {path.name for path in place.glob("*.tmp")} == set()
    shutil.rmtree(folder)
    assert machine.leftovers() == NOTHING


def test_registering_the_portable_archive_says_what_failed(machine, unpacked):
    def problem(env=None):
        result = machine.prefix.run("cmd", "/c", "register.cmd", cwd=unpacked, env=env)
        assert (result.code, result.output) == (1, "")
        return result.errors.strip()

    with machine.prefix.running(BIN / "lock_probe.exe", "locked-key", "Software\\Classes\\CLSID",
                                ready="holding"):
        assert "needs the rights of an administrator" in problem(NO_REGISTRAR)
    assert "the registry entries could not be written" in problem(NO_REGISTRAR)
    plugin = unpacked / "GlazelDX_x64.dll"
    good = plugin.read_bytes()
    plugin.write_bytes(b"damaged")
    assert "cannot load GlazelDX_x64.dll" in problem()
    plugin.unlink()
    assert "is not beside this file" in problem()
    plugin.write_bytes(good)


def test_unregistering_the_portable_archive_is_refused_when_another_copy_is_registered(machine,
                                                                                       unpacked):
    other = windows_path(BIN / "GlazelDX_x64.dll")
    assert machine.prefix.run("regsvr32", "/s", other).code == 0
    before = contents_of(unpacked)
    result = machine.prefix.run("cmd", "/c", "unregister.cmd", cwd=unpacked)
    assert result.code == 1 and f'the registered copy is "{other}"' in result.errors
    assert machine.key(SERVER)["@"] == other
    assert contents_of(unpacked) == before
    assert machine.prefix.run("regsvr32", "/s", f"{PORTABLE}\\GlazelDX_x64.dll").code == 0


def test_unregistering_the_portable_archive_works_through_another_drive(machine, unpacked):
    with machine.drive_for("x", PORTABLE):
        assert machine.prefix.run("cmd", "/c", "X:\\unregister.cmd").code == 0
    assert machine.prefix.registry(SERVER) == {}


def test_the_list_of_contents_names_every_file_with_its_checksums(out):
    document = json.loads((out / f"GlazelDX-{VERSION}.spdx.json").read_text(encoding="utf-8"))
    assert document["spdxVersion"] == "SPDX-2.3" and document["dataLicense"] == "CC0-1.0"
    with zipfile.ZipFile(out / f"GlazelDX-{VERSION}-portable.zip") as archive:
        actual = {"./" + name.partition("/")[2]: archive.read(name)
                  for name in archive.namelist()}
    listed = {}
    for entry in document["files"]:
        listed[entry["fileName"]] = {sum["algorithm"]: sum["checksumValue"]
                                     for sum in entry["checksums"]}
    assert listed == {name: {"SHA1": hashlib.sha1(data).hexdigest(),
                             "SHA256": hashlib.sha256(data).hexdigest()}
                      for name, data in actual.items()}
    identifiers = [entry["SPDXID"] for entry in document["files"] + document["packages"]]
    assert len(identifiers) == len(set(identifiers))
    known = {*identifiers, document["SPDXID"]}
    for relation in document["relationships"]:
        assert {relation["spdxElementId"], relation["relatedSpdxElement"]} <= known, relation


def test_the_licences_of_what_is_inside_are_handed_out(out):
    with zipfile.ZipFile(out / f"GlazelDX-{VERSION}-portable.zip") as archive:
        text = archive.read(f"GlazelDX-{VERSION}/third-party-licences.txt").decode("utf-8")
    document = json.loads((out / f"GlazelDX-{VERSION}.spdx.json").read_text(encoding="utf-8"))
    libraries = [package for package in document["packages"] if package["name"] != "GlazelDX"]
    assert libraries
    for library in libraries:
        assert f"{library['name']} ({library['licenseConcluded']}), in " in text
    # The programs that install and remove are the work of NSIS.
    nsis = text.partition("\r\nNSIS (Zlib AND CPL-1.0 WITH LZMA-exception AND MIT), in the setup "
                          "program, uninstall.exe\r\n")[2]
    for part in ("NSIS Contributors", "Igor Pavlov", "The zlib License",
                 "Common Public License version 1.0",
                 "Special exception for LZMA compression module", "The MIT License"):
        assert part in nsis, part


def test_the_same_build_and_the_same_time_give_the_same_packages(out, tmp_path):
    package.make_all(BUILD, tmp_path, PACKAGED)
    assert {path.name for path in tmp_path.iterdir()} == {
        f"GlazelDX-{VERSION}{end}" for end in ("-setup.exe", "-portable.zip", "-symbols.zip",
                                               ".spdx.json")}
    for path in sorted(tmp_path.iterdir()):
        assert path.read_bytes() == (out / path.name).read_bytes(), path.name
