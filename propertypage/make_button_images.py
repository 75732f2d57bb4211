#!/usr/bin/env python3
"""Draws the panel's button images and writes them as button_images.cpp beside this script.

Run once; the result is committed, so that a build needs neither this script nor a font. Wants
python3-freetype and DejaVu Sans (fonts-dejavu-core). Run again after a change here, then look at
the images: --preview FILE writes them eight times enlarged as a PPM picture.
"""

import argparse
import os
import pathlib

# The interpreter that obeys the font's hints in both directions: read when the library starts.
os.environ["FREETYPE_PROPERTIES"] = "truetype:interpreter-version=35"

import freetype  # pylint: disable=wrong-import-position

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
# Coverage is raised to this power: light letters on a dark ground look thinner than they are.
COVERAGE_POWER = 1 / 1.5

PANEL = (48, 48, 48)
LABEL = (240, 240, 240)
GOLD = (255, 215, 0)
NEAR_WHITE = (240, 240, 240)
WHITE = (255, 255, 255)


class Canvas:
    def __init__(self, width, height, colour):
        self.width, self.height = width, height
        self.pixels = [[colour] * width for _ in range(height)]

    def fill(self, left, top, right, bottom, colour):
        """Both corners belong to the rectangle."""
        for y in range(top, bottom + 1):
            for x in range(left, right + 1):
                self.pixels[y][x] = colour

    def outline(self, left, top, right, bottom, colour):
        self.fill(left, top, right, top, colour)
        self.fill(left, bottom, right, bottom, colour)
        self.fill(left, top, left, bottom, colour)
        self.fill(right, top, right, bottom, colour)

    def text(self, coverage, left, baseline, colour):
        """The text's first column with ink comes to `left`, its lowest rows stand on `baseline`."""
        shift = left - min(x for x, _ in coverage)
        for (x, y), amount in coverage.items():
            under = self.pixels[baseline + y][x + shift]
            self.pixels[baseline + y][x + shift] = tuple(
                round(u + (c - u) * amount) for u, c in zip(under, colour))


def letters(text, size, widest_gap):
    """Coverage from 0 to 1 by (column, row); row 0 is the one below the baseline.

    By the font's own hints, so that stems and bars are whole pixels in the text's full colour and
    only slants and rounds are smoothed. No more than `widest_gap` columns stay free between two
    letters, a space apart.
    """
    face = freetype.Face(FONT)
    face.set_char_size(size * 64, 0, 72, 72)
    coverage = {}
    pen = 0  # the font's place for the next letter
    ink_end = None  # the column behind the last letter's ink, later by the spaces since
    for letter in text:
        face.load_char(letter, freetype.FT_LOAD_RENDER | freetype.FT_LOAD_TARGET_NORMAL)
        bitmap, advance = face.glyph.bitmap, face.glyph.advance.x // 64  # hinted: whole pixels
        ink = {(column, row - face.glyph.bitmap_top): bitmap.buffer[row * bitmap.pitch + column]
               for row in range(bitmap.rows) for column in range(bitmap.width)
               if bitmap.buffer[row * bitmap.pitch + column]}
        if ink:
            left = pen + face.glyph.bitmap_left
            start = left if ink_end is None else min(left, ink_end + widest_gap)
            pen += start - left
            coverage |= {(start + column, row): (value / 255) ** COVERAGE_POWER
                         for (column, row), value in ink.items()}
            ink_end = start + bitmap.width
        else:
            ink_end += advance
        pen += advance
    return coverage


def edit_button(face, rim, text_colour):
    canvas = Canvas(40, 20, face)
    canvas.outline(0, 0, 39, 19, rim)
    canvas.text(letters("Edit...", 11, 2), 6, 14, text_colour)
    return canvas


def check_box(checked):
    canvas = Canvas(125, 16, PANEL)
    canvas.text(letters("Assume Linear Gamma", 9, 1), 2, 12, LABEL)
    canvas.outline(112, 3, 121, 12, LABEL)
    if checked:
        canvas.fill(114, 5, 119, 10, GOLD)
    return canvas


IMAGES = [
    ("kEditNormalPixels", "bgra", edit_button((77, 78, 79), (105, 106, 106), NEAR_WHITE)),
    ("kEditPressedPixels", "bgra", edit_button((111, 78, 0), (255, 189, 0), WHITE)),
    ("kCheckBoxOffPixels", "rgb", check_box(False)),
    ("kCheckBoxOnPixels", "rgb", check_box(True)),
]


def stored_bytes(form, canvas):
    for row in canvas.pixels:
        for red, green, blue in row:
            yield from (blue, green, red, 255) if form == "bgra" else (red, green, blue)


def source_text():
    lines = ["// Made by make_button_images.py: change that, not this.",
             '#include "propertypage/button_images.h"', "", "// clang-format off"]
    for name, form, canvas in IMAGES:
        values = list(stored_bytes(form, canvas))
        lines.append(f"const std::array<std::uint8_t, {len(values)}> {name}{{")
        line = ""
        for value in values:
            item = f"{value},"
            if len(line) + len(item) > 100:
                lines.append(line)
                line = ""
            line += item
        lines += [line, "};"]
    return "\n".join(lines + ["// clang-format on", ""])


def write_preview(path, scale=8, gap=4):
    width = max(canvas.width for _, _, canvas in IMAGES) + 2 * gap
    rows = []
    for _, _, canvas in IMAGES:
        rows += [[PANEL] * width for _ in range(gap)]
        for row in canvas.pixels:
            rows.append([PANEL] * gap + row + [PANEL] * (width - gap - len(row)))
    rows += [[PANEL] * width for _ in range(gap)]
    data = bytes(value for row in rows for _ in range(scale)
                 for pixel in row for _ in range(scale) for value in pixel)
    header = f"P6 {width * scale} {len(rows) * scale} 255\n"
    pathlib.Path(path).write_bytes(header.encode() + data)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--preview", metavar="FILE")
    arguments = parser.parse_args()
    target = pathlib.Path(__file__).with_name("button_images.cpp")
    target.write_text(source_text(), encoding="utf-8", newline="\n")
    if arguments.preview:
        write_preview(arguments.preview)


if __name__ == "__main__":
    main()
