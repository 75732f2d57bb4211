#!/usr/bin/env python3
"""Writes the sample looks beside this script: two .cube LUTs and one CDL correction.

Run it again after changing a number; the files it writes are kept in the tree.
"""
import pathlib

FOLDER = pathlib.Path(__file__).resolve().parent
NODES = 25  # a side


def luma(rgb):
    return 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2]


def clamp(value, low=0.0, high=1.0):
    return min(max(value, low), high)


def mix(a, b, share):
    return tuple(x + share * (y - x) for x, y in zip(a, b))


def smoothstep(low, high, value):
    t = clamp((value - low) / (high - low))
    return t * t * (3.0 - 2.0 * t)


def s_curve(value, pivot, contrast):
    """A power on either side of the pivot: steeper there, and level towards black and white."""
    if value < pivot:
        return pivot * (value / pivot) ** contrast
    return 1.0 - (1.0 - pivot) * ((1.0 - value) / (1.0 - pivot)) ** contrast


def saturate(rgb, amount):
    grey = luma(rgb)
    return tuple(grey + amount * (c - grey) for c in rgb)


def warm_print(rgb):
    """A projection print: soft toe with lifted blacks, rolled-off highlights, warm light, teal shade."""
    graded = tuple(s_curve(c, 0.40, 1.22) for c in rgb)
    # Dyes absorb a little of their neighbours: strong colours get denser instead of brighter.
    chroma = max(graded) - min(graded)
    graded = tuple(c * (1.0 - 0.10 * chroma) for c in graded)
    graded = saturate(graded, 0.96 - 0.18 * smoothstep(0.55, 1.0, luma(graded)))
    light = luma(graded)
    shade = 1.0 - smoothstep(0.0, 0.42, light)
    glow = smoothstep(0.30, 0.95, light)
    tint = (
        graded[0] + 0.026 * glow - 0.012 * shade,
        graded[1] + 0.006 * glow + 0.004 * shade,
        graded[2] - 0.042 * glow + 0.016 * shade,
    )
    # The print's own black and paper white.
    black, white = (0.020, 0.021, 0.025), (0.985, 0.968, 0.930)
    return tuple(b + clamp(c) * (w - b) for c, b, w in zip(tint, black, white))


def bleach_bypass(rgb):
    """Silver left in the print: the picture laid over its own black-and-white version."""
    grey = luma(rgb)
    silver = s_curve(grey, 0.5, 1.25)

    def overlay(base, top):
        return 2.0 * base * top if base < 0.5 else 1.0 - 2.0 * (1.0 - base) * (1.0 - top)

    laid = tuple(overlay(c, silver) for c in rgb)
    graded = saturate(mix(rgb, laid, 0.62), 0.62)
    # Silver is slightly cool in the mid tones and never quite black.
    cool = 4.0 * clamp(grey) * (1.0 - clamp(grey))
    graded = (graded[0] - 0.008 * cool, graded[1], graded[2] + 0.010 * cool)
    return tuple(0.008 + 0.982 * clamp(c) for c in graded)


# Slope, offset, power and saturation of moonlight: darker, cooler, less colour; shadows keep detail.
COOL_NIGHT = {
    "slope": (0.74, 0.84, 1.04),
    "offset": (0.000, 0.006, 0.022),
    "power": (1.28, 1.20, 1.08),
    "saturation": 0.72,
}


def write_cube(name, title, comment, look):
    lines = [f'TITLE "{title}"', f"# {comment}", f"LUT_3D_SIZE {NODES}", ""]
    steps = [i / (NODES - 1) for i in range(NODES)]
    for b in steps:
        for g in steps:
            for r in steps:
                lines.append(" ".join(f"{clamp(c):.6f}" for c in look((r, g, b))))
    (FOLDER / name).write_text("\n".join(lines) + "\n", encoding="utf-8")


def write_cc(name, identifier, description, cdl):
    def row(values):
        return " ".join(f"{v:g}" for v in values)

    (FOLDER / name).write_text(
        f"""<?xml version="1.0" encoding="UTF-8"?>
<ColorCorrection xmlns="urn:ASC:CDL:v1.2" id="{identifier}">
    <SOPNode>
        <Description>{description}</Description>
        <Slope>{row(cdl["slope"])}</Slope>
        <Offset>{row(cdl["offset"])}</Offset>
        <Power>{row(cdl["power"])}</Power>
    </SOPNode>
    <SatNode>
        <Saturation>{cdl["saturation"]:g}</Saturation>
    </SatNode>
</ColorCorrection>
""",
        encoding="utf-8",
    )


def main():
    write_cube("warm_print.cube", "Warm print", "a warm projection print", warm_print)
    write_cube("bleach_bypass.cube", "Bleach bypass", "silver left in the print", bleach_bypass)
    write_cc("cool_night.cc", "cool_night", "moonlight: darker, cooler, less colour", COOL_NIGHT)


if __name__ == "__main__":
    main()
