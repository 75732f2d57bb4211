#!/usr/bin/python3
"""Puts a fixed time into a type library: settle_type_library.py FILE.

The IDL compiler writes the time of its run into the library, as text and as a number, and has no
option for it. With the time fixed the same source always gives the same bytes.
"""

import re
import sys

SIGNATURE = b"Created by WIDL"
# The text ends in a time as ctime() writes it, then padding, then the number as a VT_UI4 (0x0013).
TIME = re.compile(rb"( at )[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]{2} [0-9:]{8} [0-9]{4}(\nW*\x13\x00)....(?=WW)",
                  re.DOTALL)
FIXED_TIME = rb"\1Thu Jan  1 00:00:00 1970\2\0\0\0\0"


def main() -> None:
    with open(sys.argv[1], "r+b") as file:
        library = file.read()
        settled, count = TIME.subn(FIXED_TIME, library)
        if count != library.count(SIGNATURE):
            sys.exit(f"{sys.argv[1]}: the compiler's time is not where it is known to be")
        file.seek(0)
        file.write(settled)


main()
