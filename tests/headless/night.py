#!/usr/bin/env python3
"""A night by vantrel-headless: whether its log is, letter by letter, the one that is kept beside this script.

It holds the words, the simulator's noise and the solver's sums on every system.
Two measurements in virtual time, one with misplaced adjusters and one after they were turned further, in a folder with an odd name.
`--update` keeps the log of this run instead.
"""

import argparse
import difflib
import os
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "tools"))
from operator_session import Operator  # noqa: E402

SIMULATOR = "AxisSimulator.Telescope"


def spend(program, home, seed):
    """The lines of the night's log, and those that were written to its file."""
    vantrel = Operator(program, "--virtual-time", "--seed", str(seed), "--home", home)
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
    lines = [line["text"] if isinstance(line, dict) else line for line in vantrel.log()]
    vantrel.do("quit")
    if vantrel.close() != 0:
        sys.exit("the program failed")
    folder = os.path.join(home, "Documents", "Vantrel", "Message Logs")
    (log,) = [name for name in os.listdir(folder) if name.endswith(".log")]
    with open(os.path.join(folder, log), encoding="utf-8", newline="") as file:
        return lines, file.read().splitlines(keepends=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("--seed", type=int, default=3)
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    kept = os.path.join(HERE, "night.log")
    with tempfile.TemporaryDirectory(prefix="Grüße 測 ") as home:
        _, written = spend(options.program, home, options.seed)
    if options.update:
        with open(kept, "w", encoding="utf-8", newline="") as file:
            file.writelines(written)
        return
    with open(kept, encoding="utf-8", newline="") as file:
        expected = file.read().splitlines(keepends=True)
    difference = list(difflib.unified_diff(expected, written, "kept", "written"))
    sys.stdout.writelines(difference)
    if difference:
        sys.exit("the night's log isn't the one that is kept")
    print(f"{len(written)} lines of the log are as they are kept")


if __name__ == "__main__":
    main()
