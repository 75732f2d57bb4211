"""One table in files of all kinds: it grades alike whatever file it comes in."""

import re

import numpy as np
import pytest

from conftest import IMAGES, assert_alike, host, render, succeed

SIZE = 17
STEPS = np.arange(SIZE) / (SIZE - 1)
TOP = 65535


def graded(rgb):
    """Crossed channels with a soft contrast, within 0 to 1, in whole codes of 16 bits."""
    mixed = rgb @ np.array([[0.8, 0.1, 0.1], [0.15, 0.75, 0.05], [0.05, 0.15, 0.85]])
    return np.round(mixed * mixed * (3 - 2 * mixed) * TOP) / TOP


def table(slowest_first):
    """The nodes, with red or blue as the slowest axis."""
    axes = np.stack(np.meshgrid(STEPS, STEPS, STEPS, indexing="ij"), axis=-1).reshape(-1, 3)
    return graded(axes if slowest_first == "red" else axes[:, ::-1])


def lines(rows, form="{:.7f}"):
    return "".join(" ".join(form.format(value) for value in row) + "\n" for row in rows)


def cube():
    return f"LUT_3D_SIZE {SIZE}\n" + lines(table("blue"))


def three_dl():
    positions = " ".join(str(min(i * 64, 1023)) for i in range(SIZE))
    return positions + "\n" + lines(table("red") * TOP, "{:.0f}")


def csp():
    points = "2\n0 1\n0 1\n" * 3
    return f"CSPLUTV100\n3D\n\n{points}\n{SIZE} {SIZE} {SIZE}\n" + lines(table("blue"))


def spi3d():
    numbers = [f"{r} {g} {b} " for r in range(SIZE) for g in range(SIZE) for b in range(SIZE)]
    nodes = lines(table("red")).splitlines()
    return f"SPILUT 1.0\n3 3\n{SIZE} {SIZE} {SIZE}\n" + "\n".join(
        number + node for number, node in zip(numbers, nodes)) + "\n"


def clf():
    return (f'<ProcessList id="a" compCLFversion="3"><LUT3D inBitDepth="8i" outBitDepth="16i" '
            f'interpolation="tetrahedral"><Array dim="{SIZE} {SIZE} {SIZE} 3">'
            + lines(table("red") * TOP, "{:.0f}") + "</Array></LUT3D></ProcessList>")


FILES = {"a.3dl": three_dl, "a.csp": csp, "a.spi3d": spi3d, "a.clf": clf}


@pytest.fixture(scope="module")
def expected(tmp_path_factory):
    folder = tmp_path_factory.mktemp("expected")
    (folder / "a.cube").write_text(cube(), "ascii")
    succeed(render(IMAGES / "coffee.png", folder / "out.png", look=folder / "a.cube"))
    return folder / "out.png"


@pytest.mark.parametrize("name", FILES)
def test_a_table_grades_alike_in_every_file(name, expected, tmp_path):
    (tmp_path / name).write_text(FILES[name](), "ascii")
    result = succeed(render(IMAGES / "coffee.png", tmp_path / "out.png", look=tmp_path / name))
    assert not any("warning" in line for line in result.lines), result.lines
    assert_alike(expected, tmp_path / "out.png", "0")
    ungraded = host("compare", tmp_path / "out.png", IMAGES / "coffee.png", "--fail-over", "16/255")
    assert ungraded.code == 4, "nothing was graded"


def test_a_chain_that_no_look_holds_is_rendered_with_its_error_told(tmp_path):
    (tmp_path / "steps.clf").write_text(
        '<ProcessList id="a"><Exponent inBitDepth="16f" outBitDepth="16f" style="basicFwd">'
        '<ExponentParams exponent="2.4"/></Exponent><Matrix inBitDepth="16f" outBitDepth="16f">'
        '<Array dim="3 3">1.6 -0.5 -0.1 -0.1 1.3 -0.2 0 -0.2 1.2</Array></Matrix><Exponent '
        'inBitDepth="16f" outBitDepth="16f" style="basicRev"><ExponentParams exponent="2.4"/>'
        "</Exponent></ProcessList>", "ascii")
    result = succeed(render(IMAGES / "coffee.png", tmp_path / "out.png",
                            look=tmp_path / "steps.clf"))
    told = " ".join(result.lines)
    assert re.search(r"cannot be kept exactly: largest error [0-9.]+ of an 8-bit code", told), told


@pytest.mark.parametrize("name, text, parts", [
    ("a.3dl", "0 64 1023\n1 2 3\n", ("a.3dl", "line 1", "27 nodes")),
    ("a.csp", "CSPLUTV100\n4D\n", ("a.csp", "line 2", "4D")),
    ("a.clf", '<ProcessList id="a"><Gamma inBitDepth="8i" outBitDepth="8i"/></ProcessList>',
     ("a.clf", "Gamma", "is not read")),
])
def test_what_cannot_be_read_is_refused_by_name(name, text, parts, tmp_path):
    (tmp_path / name).write_text(text, "ascii")
    result = render(IMAGES / "coffee.png", tmp_path / "out.png", look=tmp_path / name)
    assert result.code == 1
    assert all(part in result.only_line() for part in parts), result.lines
    assert not (tmp_path / "out.png").exists()
