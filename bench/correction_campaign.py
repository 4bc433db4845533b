#!/usr/bin/env python3
"""Corrects many random set-ups of the built-in simulator with the robot operator, twice each.

Each set-up has its own latitude in either hemisphere, axis error, camera rotation and handedness, seeing, and
correction star near the meridian. Printed is how far the axis stands from the pole before, after one pass and
after two.
"""

import argparse
import datetime
import multiprocessing
import os
import random
import statistics
import sys
import tempfile
import types

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools"))
from operator_session import OperatorError  # noqa: E402
from robot_operator import SIMULATOR, Robot, RobotError, altitude, axis_error, bright_stars, start_program  # noqa: E402

START = datetime.datetime(2026, 11, 24, 20, tzinfo=datetime.timezone.utc)


def greenwich_sidereal_time(instant):
    """Mean, in hours (Astronomical Almanac's short formula, good to a second)."""
    days = (instant - datetime.datetime(2000, 1, 1, 12, tzinfo=datetime.timezone.utc)).total_seconds() / 86400
    return (18.697374558 + 24.06570982441908 * days) % 24


def random_setup(seed, declination, reach, altitudes):
    rng = random.Random(seed)
    setup = types.SimpleNamespace(seed=seed)
    while True:
        setup.latitude = rng.choice((-1, 1)) * rng.uniform(20, 60)
        star = rng.choice(bright_stars())
        ra, dec = star.place(2026.9)
        hour_angle = rng.uniform(-1, 1)
        high = altitude(hour_angle, dec, setup.latitude)
        if abs(abs(dec) - declination) <= reach and altitudes[0] < high < altitudes[1]:
            break
    setup.star = star
    setup.longitude = ((ra + hour_angle - greenwich_sidereal_time(START)) * 15 + 180) % 360 - 180
    setup.azimuth = rng.choice((-1, 1)) * rng.uniform(10, 120)
    setup.elevation = rng.choice((-1, 1)) * rng.uniform(10, 120)
    setup.rotation = rng.uniform(-180, 180)
    setup.mirrored = rng.random() < 0.5
    setup.seeing = rng.uniform(2, 4)
    return setup


def run_one(arguments):
    program, seed, declination, reach, altitudes, passes, binning, exact = arguments
    setup = random_setup(seed, declination, reach, altitudes)
    errors, notes = [], []
    with tempfile.TemporaryDirectory() as home:
        operator = start_program(program, home, setup, START.strftime("%Y-%m-%dT%H:%M:%SZ"), seed, binning,
                                 exact)
        try:
            operator.put(SIMULATOR, "Seeing", setup.seeing)
            robot = Robot(operator, home)
            errors.append(axis_error(operator))
            for _ in range(passes):
                robot.correct_once(setup.star)
                errors.append(axis_error(operator))
                notes.append(dict(robot.notes))
        except (OperatorError, RobotError, ArithmeticError, KeyError) as error:
            notes.append(f"{type(error).__name__}: {error}")
        operator.close()
    return setup, errors, notes


def percentile(values, part):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(part * len(ordered)))]


def describe(setup):
    return (f"seed {setup.seed}: latitude {setup.latitude:.1f}, azimuth {setup.azimuth:.0f}', elevation "
            f"{setup.elevation:.0f}', camera {setup.rotation:.0f} degrees{' mirrored' if setup.mirrored else ''}, "
            f"{setup.star.name}")


def report(setup, errors, notes):
    print(describe(setup) + ": " + " ".join(f"{error:.2f}'" for error in errors))
    for note in notes:
        if isinstance(note, str):
            print("    " + note)
    sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="path of vantrel-headless")
    parser.add_argument("--runs", type=int, default=100)
    parser.add_argument("--first-seed", type=int, default=1)
    parser.add_argument("--declination", type=float, default=0, help="of the stars, north or south")
    parser.add_argument("--reach", type=float, default=10, help="how far from that they may be")
    parser.add_argument("--altitude", type=float, nargs=2, default=(25, 75), metavar=("LOW", "HIGH"),
                        help="between which they stand, degrees")
    parser.add_argument("--passes", type=int, default=2)
    parser.add_argument("--binning", type=int, default=2, help="larger pixels, which saves time")
    parser.add_argument("--exact", action="store_true", help="marks by full rotations")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--demand", type=float, default=None, help="most that the last pass may leave, arc-minutes")
    parser.add_argument("--verbose", action="store_true", help="a line for every run")
    options = parser.parse_args()

    work = [(options.program, seed, options.declination, options.reach, options.altitude, options.passes,
             options.binning, options.exact)
            for seed in range(options.first_seed, options.first_seed + options.runs)]
    with multiprocessing.Pool(options.jobs) as pool:
        results = []
        for result in pool.imap(run_one, work):
            results.append(result)
            if options.verbose:
                report(*result)

    through = [r for r in results if len(r[1]) == options.passes + 1]
    print(f"{len(through)} of {len(results)} set-ups came through {options.passes} passes")
    names = ["before"] + [f"after pass {i}" for i in range(1, options.passes + 1)]
    for number, name in enumerate(names):
        values = [r[1][number] for r in through]
        if values:
            print(f"{name:13} median {statistics.median(values):7.2f}', 95 % {percentile(values, 0.95):7.2f}', "
                  f"worst {max(values):7.2f}'")
    off = sum(not note["on image"] for r in through for note in r[2][0].values())
    print(f"first targets off the image: {off} of {2 * len(through)}")
    if not options.verbose:
        for result in results:
            if len(result[1]) <= options.passes:
                report(*result)
    worst = max((r[1][-1] for r in through), default=0)
    return 1 if len(through) < len(results) or (options.demand is not None and worst > options.demand) else 0


if __name__ == "__main__":
    raise SystemExit(main())
