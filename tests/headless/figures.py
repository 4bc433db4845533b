#!/usr/bin/env python3
"""Measurements of random set-ups by vantrel-headless: whether each figure is, to the last digit, the one that is kept
beside this script, on every system. `--update` keeps those of this run instead.
"""

import argparse
import difflib
import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "bench"))
from accuracy_campaign import measure, random_setup  # noqa: E402

KEPT = os.path.join(HERE, "figures.log")
SETUPS = range(1, 9)
FIGURES = re.compile(r" Solved using| RA = .*\d\.\d{8}| Dec = .*\d\.\d{6}| Roll = |Least squares:|(Elevation|Azimuth) error:|"
                     r"Error (Amplitude|Angle) =|The plates agree")


def figures(program):
    for number in SETUPS:
        yield f"Set-up {number}\n"
        for line in measure(program, random_setup(number)):
            text = re.sub(r"^\S+   ", "", line)  # without the time
            if FIGURES.match(text):
                yield text + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    now = list(figures(options.program))
    if options.update:
        with open(KEPT, "w", encoding="utf-8") as file:
            file.writelines(now)
        return 0
    with open(KEPT, encoding="utf-8") as file:
        difference = list(difflib.unified_diff(list(file), now, "kept", "now"))
    sys.stdout.writelines(difference)
    return 1 if difference else 0


if __name__ == "__main__":
    raise SystemExit(main())
