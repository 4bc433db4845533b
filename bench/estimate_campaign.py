#!/usr/bin/env python3
"""The written calculation and the estimate by least squares in the same nights, and whether the stated +- is right.

Each row is so many whole measurements by vantrel-headless in virtual time, solver included. Prints a table in
Markdown: the distance of either result from the set axis, how often the truth lies within the stated one- and
two-sigma ellipses (39 and 86 % if they are right), and how often a result that is wrong by more than an arc-minute
comes without a warning.
"""

import argparse
import math
import multiprocessing
import re
import statistics

import accuracy_campaign as campaign
import accuracy_report as report
from operator_session import OperatorError


def row(title, parameter, value, **others):
    return title, report.Study("estimate", title, "", parameter, [value], others=others), value


ROWS = [
    row("slews of 5°", "slew", 5),
    row("slews of 10°", "slew", 10),
    row("slews of 20°", "slew", 20),
    row("slews of 30°", "slew", 30),
    *(row(f"refraction, declination {dec}°", "dec", dec, refraction=True) for dec in (0, 15, 30, 45, 60, 75)),
    *(row(f"refraction, latitude {latitude}°", "latitude", latitude, refraction=True)
      for latitude in (-60, -35, 10, 35, 65)),
    row("astride six hours, declination 60°", "middle", 6, dec=60.0),
]


class Result:
    """What one measurement said; distances in arc-seconds, None where nothing was reported."""

    def __init__(self, setup, written, lines):
        self.written = None if written is None else 60 * written
        self.warned = any("Warning: " in line for line in lines)
        self.estimate = self.chi_square = None
        axis = number_pair(lines, r"Least squares: azimuth (\S+) arc-min, elevation (\S+) arc-min")
        ellipse = number_pair(lines, r"Least squares: ellipse (\S+) arc-sec by (\S+) arc-sec")
        direction = number_pair(lines, r"Least squares: ellipse .* arc-sec, (\S+)( )degrees")
        if not axis or not ellipse:
            return
        altitude = math.radians(abs(setup["latitude"]) + setup["elevation"] / 60)
        east = 60 * (axis[0] - setup["azimuth"]) * math.cos(altitude)
        up = 60 * (axis[1] - setup["elevation"])
        self.estimate = math.hypot(east, up)
        turn = math.radians(direction[0])
        along, across = up * math.cos(turn) + east * math.sin(turn), east * math.cos(turn) - up * math.sin(turn)
        self.chi_square = (along / ellipse[0]) ** 2 + (across / ellipse[1]) ** 2


def number_pair(lines, pattern):
    for line in reversed(lines):
        found = re.search(pattern, line)
        if found:
            return [float(text) if text.strip() else 0.0 for text in found.groups()]
    return None


def measure(arguments):
    program, setup = arguments
    try:
        lines = campaign.measure(program, setup)
    except (OperatorError, OSError):
        lines = []
    _, written, _ = campaign.judge(setup, lines)
    return Result(setup, written, lines)


def share(flags):
    flags = list(flags)
    return f"{100 * sum(flags) / len(flags):.0f} %" if flags else "-"


def seconds(values):
    values = [value for value in values if value is not None]
    return f"{statistics.median(values):.1f}″ / {max(values):.0f}″" if values else "-"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="path of vantrel-headless")
    parser.add_argument("--runs", type=int, default=60, help="measurements a row")
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()
    print("| 60 measurements each | written: median / worst | least squares: median / worst | within 1 σ | within 2 σ "
          "| wrong by > 1′, not warned of |".replace("60", str(options.runs), 1))
    print("|---|---|---|---|---|---|")
    everything = []
    with multiprocessing.Pool(options.jobs) as pool:
        for title, study, value in ROWS:
            results = pool.map(measure, [(options.program, report.setup_for(study, value, seed)) for seed in range(options.runs)], 1)
            known = [r.chi_square for r in results if r.chi_square is not None]
            everything += known
            silent = sum(r.written is not None and r.written > 60 and not r.warned for r in results)
            print(f"| {title} | {seconds(r.written for r in results)} | {seconds(r.estimate for r in results)} | "
                  f"{share(c < 1 for c in known)} | {share(c < 4 for c in known)} | {silent} |", flush=True)
    print(f"| all | | | {share(c < 1 for c in everything)} | {share(c < 4 for c in everything)} | |")


if __name__ == "__main__":
    main()
