#!/usr/bin/env python3
"""A night by vantrel-headless, and measurements of random set-ups: whether they say, to the last letter and digit, what is
kept beside this script, on every system.

The night's log holds the words, the simulator's noise and the solver's sums: two measurements in virtual time, one with
misplaced adjusters and one after they were turned further, in a folder with an odd name.
`--update` keeps what this run says instead.
"""

import argparse
import difflib
import os
import re
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in ("tools", "bench"):
    sys.path.insert(0, os.path.join(HERE, "..", "..", folder))
from accuracy_campaign import measure, random_setup  # noqa: E402
from operator_session import Operator  # noqa: E402

SIMULATOR = "AxisSimulator.Telescope"
SETUPS = range(1, 9)
FIGURES = re.compile(r" Solved using| RA = .*\d\.\d{8}| Dec = .*\d\.\d{6}| Roll = |Least squares:|(Elevation|Azimuth) error:|"
                     r"Error (Amplitude|Angle) =|The plates agree")


def night(program):
    """The lines of the night's log file."""
    with tempfile.TemporaryDirectory(prefix="Grüße 測 ") as home:
        vantrel = Operator(program, "--virtual-time", "--seed", "3", "--home", home)
        vantrel.do("setting", section="Main", key="MyTelescopeID", value=SIMULATOR)
        vantrel.do("setting", section="PolarAlign", key="PlateSolveMethod", value=0)
        vantrel.wait(60, log="Polar Axis Simulator is connected")
        vantrel.put(SIMULATOR, "PolarAzimuthError", 18)
        vantrel.put(SIMULATOR, "PolarElevationError", -11)
        vantrel.type("frmMain.txtDeltaRA", "15")
        measured = {"control": "frmMain.cmdNext", "property": "enabled", "is": True}
        vantrel.click("frmMain.cmdRun")
        vantrel.wait(600, **measured)
        vantrel.click("frmMain.cmdSkip")
        vantrel.wait(600, idle=True)
        vantrel.call(SIMULATOR, "TurnAzimuthAdjuster", 14)
        vantrel.call(SIMULATOR, "TurnElevationAdjuster", -18)
        vantrel.click("frmMain.cmdRun")
        vantrel.wait(600, **measured)
        vantrel.do("quit")
        if vantrel.close() != 0:
            sys.exit("the program failed")
        folder = os.path.join(home, "Documents", "Vantrel", "Message Logs")
        (log,) = [name for name in os.listdir(folder) if name.endswith(".log")]
        with open(os.path.join(folder, log), encoding="utf-8", newline="") as file:
            return file.read().splitlines(keepends=True)


def figures(program):
    lines = []
    for number in SETUPS:
        lines.append(f"Set-up {number}\n")
        texts = [re.sub(r"^\S+   ", "", line) for line in measure(program, random_setup(number))]  # without the time
        lines += [text + "\n" for text in texts if FIGURES.match(text)]
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    differ = False
    for name, say in (("night.log", night), ("figures.log", figures)):
        now = say(options.program)
        with open(os.path.join(HERE, name), "w" if options.update else "r", encoding="utf-8", newline="") as file:
            if options.update:
                file.writelines(now)
                continue
            difference = list(difflib.unified_diff(file.read().splitlines(keepends=True), now, "kept", "now"))
        sys.stdout.writelines(difference)
        differ = differ or bool(difference)
    return 1 if differ else 0


if __name__ == "__main__":
    raise SystemExit(main())
