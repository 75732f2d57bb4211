"""regsvr32 and regsvr32 /u for real, in a prefix of their own: what is written, found and left."""

import contextlib
import pathlib
import shutil

import pytest

from wine_prefix import BIN, WinePrefix, changes, windows_path

CLASSES = "HKEY_LOCAL_MACHINE\\Software\\Classes\\"
EFFECT = "{B47A199B-15E2-4836-BD39-419904B5D292}"
PAGE = "{EE3AFD2C-FB57-41ac-ABDE-90421C4140C3}"
EFFECT_TYPE_LIBRARY = "{C04E8340-76B5-4edd-9885-E92E7727498C}"
LIBRARY = "{CF41FD25-F1F3-4B65-A240-3D4E880D868D}"
ODD_FOLDER = "Somebody's Grüße – фильтр 映像"

NOT_REGISTERED = "8002801D"  # TYPE_E_LIBNOTREGISTERED
NO_SUCH_CLASS = "800401F3"  # CO_E_CLASSSTRING, for a ProgID
NOT_A_CLASS = "80040154"  # REGDB_E_CLASSNOTREG


def interface(name):
    """What the system writes for an interface of a type library."""
    marshaler = {"@": "{00020424-0000-0000-C000-000000000046}"}
    return {"": {"@": name}, "\\ProxyStubClsid": marshaler, "\\ProxyStubClsid32": marshaler,
            "\\TypeLib": {"@": LIBRARY, "Version": "1.0"}}


def expected_entries(path):
    """Every key and value that registration adds, for a DLL at `path`."""
    folder = path.rpartition("\\")[0]
    server = {"@": path, "ThreadingModel": "Both"}
    entries = {
        "BrellinGlazel_x64.Plugin.1": {"@": "Brellin Glazel"},
        "BrellinGlazel_x64.Plugin.1\\CLSID": {"@": EFFECT},
        "BrellinGlazel_x64.Plugin": {"@": "Brellin Glazel"},
        "BrellinGlazel_x64.Plugin\\CLSID": {"@": EFFECT},
        "BrellinGlazel_x64.Plugin\\CurVer": {"@": "BrellinGlazel_x64.Plugin.1"},
        f"CLSID\\{EFFECT}": {"@": "Brellin Glazel"},
        f"CLSID\\{EFFECT}\\ProgID": {"@": "BrellinGlazel_x64.Plugin.1"},
        f"CLSID\\{EFFECT}\\VersionIndependentProgID": {"@": "BrellinGlazel_x64.Plugin"},
        f"CLSID\\{EFFECT}\\Programmable": {},
        f"CLSID\\{EFFECT}\\InprocServer32": server,
        f"CLSID\\{EFFECT}\\TypeLib": {"@": EFFECT_TYPE_LIBRARY},
        "BrellinGlazel_x64.PluginPP.1": {"@": "Brellin Glazel Props"},
        "BrellinGlazel_x64.PluginPP.1\\CLSID": {"@": PAGE},
        "BrellinGlazel_x64.PluginPP": {"@": "Brellin Glazel Props"},
        "BrellinGlazel_x64.PluginPP\\CLSID": {"@": PAGE},
        "BrellinGlazel_x64.PluginPP\\CurVer": {"@": "BrellinGlazel_x64.PluginPP.1"},
        f"CLSID\\{PAGE}": {"@": "Brellin Glazel Props"},
        f"CLSID\\{PAGE}\\Programmable": {},
        f"CLSID\\{PAGE}\\InprocServer32": server,
        # From here on by the system's registration of the type library.
        f"Typelib\\{LIBRARY}": {},
        f"Typelib\\{LIBRARY}\\1.0": {"@": "Main 1.0 Type Library"},
        f"Typelib\\{LIBRARY}\\1.0\\409": {},
        f"Typelib\\{LIBRARY}\\1.0\\409\\win64": {"@": path},
        f"Typelib\\{LIBRARY}\\1.0\\FLAGS": {"@": "8"},
        f"Typelib\\{LIBRARY}\\1.0\\HELPDIR": {"@": folder},
    }
    for identifier, name in (("{E31FB81B-1335-11D1-8189-0000F87557DB}", "IDXEffect"),
                             ("{A947DD96-CD97-4958-B026-BFE1CB8646EE}", "IPlugin")):
        entries |= {f"Interface\\{identifier}{key}": values
                    for key, values in interface(name).items()}
    return {CLASSES + key: values for key, values in entries.items()}


def without_mirror(keys):
    """The system shows type libraries and their interfaces to 32-bit programs as well."""
    return {key: values for key, values in keys.items() if "\\Wow6432Node\\" not in key}


class Story:
    """One life of a registration: everything that was seen on the way."""

    def __init__(self, prefix, dll):
        self.dll = dll
        self.before = prefix.lasting_registry()
        self.register = self.regsvr32(prefix, "/s")
        self.registered = prefix.lasting_registry()
        self.probes = {
            words: self.probe(prefix, *words)
            for words in (("create", EFFECT), ("create", "BrellinGlazel_x64.Plugin"),
                          ("create", "BrellinGlazel_x64.Plugin.1"), ("create", PAGE),
                          ("create", "BrellinGlazel_x64.PluginPP"),
                          ("create", "BrellinGlazel_x64.PluginPP.1"), ("dispatch", EFFECT))}
        self.script = {name: script(prefix, name)
                       for name in ("BrellinGlazel_x64.Plugin", "BrellinGlazel_x64.PluginPP",
                                    "No.Such.Class")}
        self.plain_script = script(prefix, "BrellinGlazel_x64.Plugin", "js")
        self.again = self.regsvr32(prefix, "/s")
        self.registered_again = prefix.lasting_registry()
        self.unregister = self.regsvr32(prefix, "/s", "/u")
        self.after = prefix.lasting_registry()
        self.script_after = script(prefix, "BrellinGlazel_x64.Plugin")
        self.plain_script_after = script(prefix, "BrellinGlazel_x64.Plugin", "js")
        self.probes_after = {name: self.probe(prefix, "create", name)
                             for name in (EFFECT, PAGE, "BrellinGlazel_x64.Plugin",
                                          "BrellinGlazel_x64.PluginPP.1")}

    def regsvr32(self, prefix, *words):
        return prefix.run("regsvr32", *words, self.dll).code

    @staticmethod
    def probe(prefix, *words):
        """What the probe printed, as word -> rest of the line."""
        result = prefix.run(BIN / "com_probe.exe", *words)
        assert result.code == 0, result
        return dict(line.split(" ", 1) for line in result.output.splitlines())


def script(prefix, name, language="vbs"):
    """What create_object.vbs or .js says of a class. The renderer stands in the current folder."""
    file = pathlib.Path(__file__).with_name(f"create_object.{language}")
    result = prefix.run("cscript", windows_path(file), name, cwd=BIN)
    assert result.code == 0, result
    return result.output.strip()


@contextlib.contextmanager
def new_prefix(tmp_path_factory):
    with contextlib.closing(WinePrefix(tmp_path_factory.mktemp("registration") / "prefix")) as made:
        script(made, "No.Such.Class")  # the script host registers a library of its own when first run
        yield made


@pytest.fixture
def prefix(tmp_path_factory):
    with new_prefix(tmp_path_factory) as made:
        yield made


# No story shares its prefix: one that Wine cut short left its registration there, and is told again.
@pytest.fixture(scope="module", params=["where it was built", "odd folder"])
def story(request, tmp_path_factory):
    with new_prefix(tmp_path_factory) as prefix:
        if request.param == "odd folder":
            folder = prefix.drive_c / ODD_FOLDER
            folder.mkdir()
            shutil.copy(BIN / "GlazelDX_x64.dll", folder)
            return Story(prefix, f"C:\\{ODD_FOLDER}\\GlazelDX_x64.dll")
        return Story(prefix, windows_path(BIN / "GlazelDX_x64.dll"))


def test_registering_writes_exactly_these_entries(story):
    assert story.register == 0
    added, lost = changes(story.before, story.registered)
    assert lost == {}
    assert without_mirror(added) == expected_entries(story.dll)
    mirrored = {key.replace("Wow6432Node\\", "") for key in added} - set(added)
    assert all("\\TypeLib\\" in key or "\\Interface\\" in key for key in mirrored)


def test_the_effects_type_library_entry_names_another_library_than_the_registered(story):
    named = story.registered[f"{CLASSES}CLSID\\{EFFECT}\\TypeLib"]["@"]
    assert f"{CLASSES}Typelib\\{named}" not in story.registered
    assert f"{CLASSES}Typelib\\{LIBRARY}" in story.registered


def test_registering_again_changes_nothing(story):
    assert story.again == 0
    assert changes(story.registered, story.registered_again) == ({}, {})


def test_unregistering_leaves_the_registry_as_it_was(story):
    assert story.unregister == 0
    assert changes(story.before, story.after) == ({}, {})
    assert CLASSES + "CLSID" in story.after


def test_both_classes_are_created_by_identifier_and_by_name(story):
    for words, seen in story.probes.items():
        assert seen["create"] == "00000000", words
        assert seen["module"] == story.dll, words


def test_no_class_is_found_after_unregistering(story):
    assert {name: seen["create"] for name, seen in story.probes_after.items()} == {
        EFFECT: NOT_A_CLASS, PAGE: NOT_A_CLASS, "BrellinGlazel_x64.Plugin": NO_SUCH_CLASS,
        "BrellinGlazel_x64.PluginPP.1": NO_SUCH_CLASS}


def test_dispatch_asks_for_a_library_that_nobody_has_registered(story):
    seen = story.probes["dispatch", EFFECT]
    assert seen["dispatch"] == "00000000"
    assert (seen["type-info-count"], seen["count"]) == ("00000000", "1")
    assert {seen[deed] for deed in ("type-info", "name", "put", "get")} == {NOT_REGISTERED}


def test_a_script_finds_the_effect_and_cannot_use_its_properties(story):
    assert story.script["BrellinGlazel_x64.Plugin"] == \
        f"create 0 put {NOT_REGISTERED} get {NOT_REGISTERED} value"
    assert story.plain_script == "create 0"


def test_a_script_does_not_find_the_effect_after_unregistering(story):
    assert story.script_after.startswith("create 1AD ")  # 429, cannot create the object
    assert story.plain_script_after == "create 429"


def test_a_script_cannot_hold_the_page_which_has_no_dispatch(story):
    assert story.script["BrellinGlazel_x64.PluginPP"].startswith("create 1AE ")  # 430
    assert story.script["No.Such.Class"].startswith("create 1AD ")  # 429


def test_dispatch_works_for_whoever_registers_the_library_that_the_effect_asks_for(prefix):
    dll = windows_path(BIN / "GlazelDX_x64.dll")
    before = prefix.lasting_registry()
    assert prefix.run("regsvr32", "/s", dll).code == 0
    library = windows_path(BIN / "dispatch_library.tlb")
    assert Story.probe(prefix, "register-typelib", library)["register"] == "00000000"
    seen = Story.probe(prefix, "dispatch", EFFECT)
    assert {seen[deed] for deed in ("type-info", "name", "put", "get")} == {"00000000"}
    assert (seen["id"], seen["value"]) == ("10001", "0.25")
    assert script(prefix, "BrellinGlazel_x64.Plugin") == "create 0 put 0 get 0 value 0.25"
    assert prefix.run("regsvr32", "/s", "/u", dll).code == 0
    assert Story.probe(prefix, "unregister-typelib", library)["unregister"] == "00000000"
    assert changes(before, prefix.lasting_registry()) == ({}, {}), "nobody took what belongs to another"


def test_a_failing_registrar_fails_the_registration_and_nothing_is_written(prefix):
    before = prefix.lasting_registry()
    result = prefix.run("regsvr32", "/s", windows_path(BIN / "GlazelDX_x64.dll"),
                        env={"WINEDLLOVERRIDES": "mscoree,mshtml,atl="})
    assert result.code != 0
    assert changes(before, prefix.lasting_registry()) == ({}, {})


def add_foreign_interface(prefix, name):
    """As another program does that registers one of our interfaces for a library of its own."""
    for key, values in ((f"HKLM\\Software\\Classes\\Interface\\{name}", ["/d", "theirs"]),
                        (f"HKLM\\Software\\Classes\\Interface\\{name}\\TypeLib",
                         ["/d", "{11111111-2222-3333-4444-555555555555}"])):
        assert prefix.run("reg", "add", key, "/ve", *values, "/f").code == 0


def test_interfaces_that_others_registered_before_or_meanwhile_are_theirs_again(prefix):
    dll = windows_path(BIN / "GlazelDX_x64.dll")
    effect, plugin = "{E31FB81B-1335-11D1-8189-0000F87557DB}", "{A947DD96-CD97-4958-B026-BFE1CB8646EE}"
    before = prefix.lasting_registry()
    add_foreign_interface(prefix, effect)
    theirs = changes(before, prefix.lasting_registry())
    for _ in range(2):
        assert prefix.run("regsvr32", "/s", dll).code == 0
    library = f"{CLASSES}Interface\\{effect}\\TypeLib"
    assert prefix.registry(library)[library]["@"] == LIBRARY
    assert prefix.run("regsvr32", "/s", "/u", dll).code == 0
    assert changes(before, prefix.lasting_registry()) == theirs

    assert prefix.run("regsvr32", "/s", dll).code == 0
    library = f"{CLASSES}Interface\\{plugin}\\TypeLib"
    add_foreign_interface(prefix, plugin)
    assert prefix.run("regsvr32", "/s", "/u", dll).code == 0
    assert prefix.registry(library)[library]["@"] != LIBRARY
    for name in (effect, plugin):
        key = f"HKLM\\Software\\Classes\\Interface\\{name}"
        assert prefix.run("reg", "delete", key, "/f").code == 0
    assert changes(before, prefix.lasting_registry()) == ({}, {})


def test_unregistering_what_is_not_registered_harms_nothing(prefix):
    before = prefix.lasting_registry()
    prefix.run("regsvr32", "/s", "/u", windows_path(BIN / "GlazelDX_x64.dll"))
    assert changes(before, prefix.lasting_registry()) == ({}, {})


def test_the_type_library_holds_exactly_what_is_declared(prefix):
    result = prefix.run(BIN / "com_probe.exe", "typelib", windows_path(BIN / "GlazelDX_x64.dll"))
    declared = pathlib.Path(__file__).with_name("type_library.txt").read_text(encoding="utf-8")
    assert result.output == declared
