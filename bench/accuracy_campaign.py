#!/usr/bin/env python3
"""Measures many random set-ups of the built-in simulator and compares the reported axis with the set one.

Everything goes through vantrel-headless in virtual time. Each set-up has its own latitude, axis error, camera,
seeing, index offsets, declination, hour angle and slew; the operator syncs on a star first, a little off.
"""

import argparse
import json
import math
import multiprocessing
import os
import random
import re
import statistics
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools"))
from operator_session import Operator, OperatorError  # noqa: E402

SIMULATOR = "AxisSimulator.Telescope"
HOURS = 15.0
FOCAL_LENGTH = 370.0  # mm, the simulator's own
PIXEL_SIZE = 6.45  # micrometres


def unit(azimuth, altitude):
    """East, north, up."""
    a, h = math.radians(azimuth), math.radians(altitude)
    return (math.cos(h) * math.sin(a), math.cos(h) * math.cos(a), math.sin(h))


def horizon_from_equatorial(hour_angle, dec, latitude):
    """Vector (east, north, up) of an hour angle (hours) and declination (degrees)."""
    h, d, p = math.radians(hour_angle * HOURS), math.radians(dec), math.radians(latitude)
    x, y, z = math.cos(d) * math.cos(h), -math.cos(d) * math.sin(h), math.sin(d)
    return (y, z * math.cos(p) - x * math.sin(p), x * math.cos(p) + z * math.sin(p))


def angle_between(a, b):
    cross = (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])
    return math.degrees(math.atan2(math.hypot(*cross), sum(x * y for x, y in zip(a, b))))


def set_axis(latitude, azimuth_error, elevation_error):
    """The northern end of the set axis; errors in arc-minutes, as the simulator takes them."""
    if latitude >= 0:
        return unit(azimuth_error / 60, latitude + elevation_error / 60)
    southern = unit(180 - azimuth_error / 60, -latitude + elevation_error / 60)
    return tuple(-x for x in southern)


def reported_axis(latitude, amplitude, angle):
    return horizon_from_equatorial(-angle / HOURS, 90 - amplitude, latitude)


def random_setup(seed):
    rng = random.Random(seed)
    latitude = rng.uniform(-60, 70)
    amplitude = math.exp(rng.uniform(math.log(1), math.log(180)))  # arc-minutes
    direction = rng.uniform(0, 2 * math.pi)
    elevation = amplitude * math.cos(direction)
    azimuth = amplitude * math.sin(direction) / max(0.2, math.cos(math.radians(abs(latitude) + elevation / 60)))
    slew = rng.uniform(10, 45)
    east = rng.random() < 0.5
    while True:
        dec = rng.uniform(-70, 70)
        start = rng.uniform(-5.5, 5.5)
        hour_angles = [start + k * slew / HOURS * (-1 if east else 1) for k in range(3)]
        altitudes = [math.degrees(math.asin(horizon_from_equatorial(h, dec, latitude)[2])) for h in hour_angles]
        if max(map(abs, hour_angles)) < 5.6 and min(altitudes) > 15:
            break
    return {
        "seed": seed,
        "latitude": latitude,
        "longitude": rng.uniform(-180, 180),
        "azimuth": azimuth,
        "elevation": elevation,
        "slew": slew,
        "east": east,
        "dec": dec,
        "hour_angle": start,
        "rotation": rng.uniform(0, 360),
        "mirrored": rng.random() < 0.5,
        "seeing": rng.uniform(2, 5),
        "ha_offset": rng.uniform(-0.5, 0.5),
        "dec_offset": rng.uniform(-3, 3),
        "sync_error": rng.uniform(0, 0.2),
        "sync_angle": rng.uniform(0, 2 * math.pi),
    }


def started(program, home, setup):
    """The operator of a program whose simulator is set up and whose camera looks near the field."""
    scale = 206.265 * PIXEL_SIZE / setup.get("focal_length", FOCAL_LENGTH)
    settings = {
        "Main": {"MyTelescopeID": SIMULATOR, "SiteLatitude": str(setup["latitude"]),
                 "SiteLongitude": str(setup["longitude"]), "SlewEast": str(setup["east"])},
        "PolarAlign": {"PlateSolveMethod": "0", "DeltaRA": f"{setup['slew']:.3f}",
                       "Plates": str(setup.get("plates", 3)),
                       "ClosingPlate": "1" if setup.get("closing") else "0"},
        "Solve": {"ScaleH": f"{scale:.3f}", "ScaleV": f"{scale:.3f}"},
    }
    file = os.path.join(home, "settings.json")
    with open(file, "w", encoding="utf-8") as stream:
        json.dump(settings, stream)
    operator = Operator(program, "--virtual-time", "--start", "2026-11-24T20:00:00Z", "--home", home, "--seed",
                        str(setup["seed"]), "--settings", file)
    operator.wait(idle=True)
    for member, value in (("SiteLatitude", setup["latitude"]), ("SiteLongitude", setup["longitude"]),
                          ("PolarAzimuthError", setup["azimuth"]), ("PolarElevationError", setup["elevation"]),
                          ("CameraRotation", setup["rotation"]), ("CameraMirrored", setup["mirrored"]),
                          ("FocalLength", setup.get("focal_length", FOCAL_LENGTH)),
                          ("Refraction", setup.get("refraction", False)),
                          ("Seeing", setup["seeing"]), ("HourAngleOffset", setup["ha_offset"]),
                          ("DeclinationOffset", setup["dec_offset"])):
        operator.put(SIMULATOR, member, value)
    for member, value in setup.get("simulator", {}).items():
        operator.put(SIMULATOR, member, value)
    point_and_sync(operator, setup)
    for member, value in setup.get("jump", {}).items():  # whose slews are counted from here
        operator.put(SIMULATOR, member, value)
    return operator


def measure(program, setup):
    """The log lines of one measurement from start-up to the operator's Skip."""
    with tempfile.TemporaryDirectory() as home:
        operator = started(program, home, setup)
        operator.click("frmMain.cmdRun")
        operator.wait(control="frmMain.cmdNext", property="enabled", **{"is": True})
        solved = operator.read("frmMain.cmdSkip")["enabled"]
        if solved and setup.get("leave_out"):
            leave_out(operator, setup["leave_out"])
        operator.click("frmMain.cmdSkip" if solved else "frmMain.cmdNext")
        operator.wait(idle=True)
        lines = operator.log()
        operator.close()
    return lines


def leave_out(operator, plate):
    """What the operator does about a plate that disagrees; the log then tells the result without it as well."""
    for control, window in (("frmMain.cmdPolarPlot", "frmPolarPlot"), ("frmPolarPlot.cmdPlates", "frmPlates")):
        operator.click(control)
        operator.wait(window=window)
    operator.do("check", control=f"frmPlates.chkPlate({plate})", value=0)
    operator.wait(log=f"Calculated anew: plate {plate} left out")


def point_and_sync(operator, setup):
    """Slews near the field and tells the mount, a little wrongly, where the camera really looks."""
    lst = operator.get(SIMULATOR, "SiderealTime")
    ra = (lst - setup["hour_angle"] - setup["ha_offset"]) % 24
    operator.call(SIMULATOR, "SlewToCoordinatesAsync", ra, max(-89, min(89, setup["dec"] + setup["dec_offset"])))
    while operator.get(SIMULATOR, "Slewing"):
        operator.do("advance", seconds=5)
    ha = operator.get(SIMULATOR, "CameraAxisHourAngle")
    dec = operator.get(SIMULATOR, "CameraAxisDeclination")
    lst = operator.get(SIMULATOR, "SiderealTime")
    off_ra = setup["sync_error"] * math.cos(setup["sync_angle"]) / HOURS / math.cos(math.radians(dec))
    off_dec = setup["sync_error"] * math.sin(setup["sync_angle"])
    operator.call(SIMULATOR, "SyncToCoordinates", (lst - ha + off_ra) % 24, dec + off_dec)


def number_after(lines, label):
    for line in reversed(lines):
        found = re.search(re.escape(label) + r" ?(-?[0-9.]+)", line)
        if found:
            return float(found.group(1))
    return None


def run_seed(arguments):
    program, seed = arguments
    return run_setup(program, random_setup(seed))


def run_setup(program, setup):
    """The set-up, how far the reported axis lies from the set one (arc-minutes; None: nothing reported), the log."""
    try:
        lines = measure(program, setup)
    except (OperatorError, OSError) as error:
        return setup, None, [str(error)]
    return judge(setup, lines)


def judge(setup, lines):
    """As run_setup, of a measurement's log."""
    amplitude = number_after(lines, "Error Amplitude =")
    angle = number_after(lines, "Error Angle =")
    if amplitude is None or angle is None or any("Calculation Failed" in line for line in lines):
        return setup, None, lines
    expected = set_axis(setup["latitude"], setup["azimuth"], setup["elevation"])
    return setup, 60 * angle_between(expected, reported_axis(setup["latitude"], amplitude, angle)), lines


def percentile(values, part):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(part * len(ordered)))]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="path of vantrel-headless")
    parser.add_argument("--runs", type=int, default=200)
    parser.add_argument("--first-seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--verbose", action="store_true", help="print the log of every run that reports nothing")
    options = parser.parse_args()

    seeds = range(options.first_seed, options.first_seed + options.runs)
    with multiprocessing.Pool(options.jobs) as pool:
        results = pool.map(run_seed, [(options.program, seed) for seed in seeds], chunksize=1)

    failed = [r for r in results if r[1] is None]
    distances = [r[1] for r in results if r[1] is not None]
    wide = [r[1] for r in results if r[1] is not None and r[0]["slew"] >= 15]
    print(f"{len(distances)} of {len(results)} reported an axis")
    for name, values in (("all", distances), ("slews of 15 degrees and more", wide)):
        if values:
            print(f"{name}: median {statistics.median(values):.3f}', 95 % {percentile(values, 0.95):.3f}', "
                  f"worst {max(values):.3f}' ({len(values)} runs)")
    for setup, distance, lines in results:
        if distance is None or distance > 0.6:
            shown = ", ".join(f"{k} {v:.3f}" if isinstance(v, float) else f"{k} {v}" for k, v in setup.items())
            print(f"{'nothing' if distance is None else f'{distance:.3f}'}: {shown}")
            if options.verbose:
                print("    " + "\n    ".join(lines))
    return 1 if failed else 0


if __name__ == "__main__":
    raise SystemExit(main())
