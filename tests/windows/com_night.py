#!/usr/bin/env python3
"""Measurements by vantrel-headless through the calls of COM, against the built-in observatory served as other programs.

The same measurement is made with the built-in mount and imaging programs first, in virtual time: both must write the
same lines; the figures in them depend on the instant. Then a mount with an axis error is measured, whose error must be
found. Time is real in all but the first.
"""

import argparse
import atexit
import difflib
import json
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "tools"))
from operator_session import Operator  # noqa: E402

MOUNT = "TestMount.Telescope"
PERFECT_MOUNT = "ScopeSim.Telescope"
AZIMUTH, ELEVATION = 18, -11  # arc-minutes
MOST_OFF = 0.3  # arc-minutes: slews of 15 degrees are good to a few arc-seconds
PROGRAMS = {"MaxIm": "MaxIm.CCDCamera", "CCDSoft": "CCDSoft.Camera"}
SOLVER = 0  # PinPoint


class Night:
    """A run of the program, ready to measure. `solve`: settings of the plate solving in place of the usual ones."""

    def __init__(self, program, mount, imaging, *options, **solve):
        with tempfile.NamedTemporaryFile("w", suffix=".json", delete=False) as file:
            json.dump({"Main": {"MyTelescopeID": mount},
                       "PolarAlign": {"PlateSolveMethod": SOLVER, "ImagingSoftware": imaging, "DeltaRA": "15",
                                      "DelayAfterSlew": "0"},
                       "Solve": {"ScaleH": "3.596", "ScaleV": "3.596", "ExposeInterval": "0.2", "CamBin": "1",
                                 **solve}}, file)
        self.vantrel = Operator(program, "--seed", "1", "--settings", file.name, "--installed",
                                ",".join([mount, PROGRAMS[imaging], "PinPoint.Plate"]), *options)
        self.vantrel.wait(90, log="is the Imaging Software")
        self.vantrel.wait(90, log="Telescope Site")
        self.vantrel.wait(90, idle=True)
        os.unlink(file.name)

    def set_axis(self, azimuth, elevation):
        """Arc-minutes."""
        for member, value in (("SlewRate", 60), ("PolarAzimuthError", azimuth), ("PolarElevationError", elevation)):
            self.vantrel.put(MOUNT, member, value)

    def measure(self, seconds=120):
        self.vantrel.click("frmMain.cmdRun")
        self.vantrel.wait(seconds, control="frmMain.cmdNext", property="enabled", **{"is": True})

    def lines(self):
        """The log without the times."""
        return [re.sub(r"^\S+   ", "", line["text"] if isinstance(line, dict) else line) for line in self.vantrel.log()]

    def __enter__(self):
        return self

    def __exit__(self, kind, error, trace):
        if kind is not None:
            print("\n".join(self.lines()))
        self.vantrel.do("quit")
        if self.vantrel.close() != 0:
            sys.exit("the program failed")


def without_figures(lines):
    """What is left of the lines when all numbers are alike, and what differs from mount to mount is gone."""
    return [re.sub(r"[-+]?\d[\d:.]*", "#", line) for line in lines]


def found(lines):
    """Azimuth and elevation error in arc-minutes, as the log has them."""
    return [float(re.search(rf"{name} error: (\S+) arc-min", "\n".join(lines)).group(1))
            for name in ("Azimuth", "Elevation")]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("observatory", help="com_observatory, started by a script")
    options = parser.parse_args()
    # Whoever still serves is ended: Wine never tells a server of clients that went without letting go.
    atexit.register(subprocess.run, [options.observatory, "/program", "MaxIm"])

    def night(mount, imaging, *time):
        """One after the servers of the one before have ended."""
        subprocess.run([options.observatory, "/program", imaging], check=True)
        return Night(options.program, mount, imaging, *time)

    def log_of(imaging, *time):
        with night(PERFECT_MOUNT, imaging, *time) as session:
            session.vantrel.put(PERFECT_MOUNT, "SlewRate", 60)
            session.measure()
            lines = session.lines()
            return without_figures(lines[lines.index("Start Alignment Run"):])

    built_in = {imaging: log_of(imaging, "--virtual-time") for imaging in PROGRAMS}
    # Each imaging program and each kind of solver finds the axis once.
    for servers, finder in (("program", "MaxIm"), ("library", "CCDSoft")):
        subprocess.run([options.observatory, "/register", servers], check=True)
        for imaging in PROGRAMS:
            difference = list(difflib.unified_diff(built_in[imaging], log_of(imaging), f"built-in {imaging}",
                                                   f"{imaging} as a {servers}", lineterm=""))
            print("\n".join(difference))
            if difference:
                sys.exit("the logs differ")
        with night(MOUNT, finder) as session:
            session.set_axis(AZIMUTH, ELEVATION)
            session.measure()
            azimuth, elevation = found(session.lines())
        print(f"{finder}, {servers}: {azimuth}', {elevation}'")
        if abs(azimuth - AZIMUTH) > MOST_OFF or abs(elevation - ELEVATION) > MOST_OFF:
            sys.exit("the axis isn't where it was set")


if __name__ == "__main__":
    main()
