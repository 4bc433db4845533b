#!/usr/bin/env python3
"""How good the measured axis is: by slew, seeing, field, declination and latitude. Writes tables and plots.

Every figure comes from whole measurements by vantrel-headless in virtual time, solver included. The theoretical
limit stands beside it: three points on an arc of s degrees in all, each known to sigma across the arc, fix the axis to
sigma / (sqrt 2 sin(s/2)) in one direction and 1.2247 sigma / (1 - cos(s/2)) in the other.
"""

import argparse
import math
import multiprocessing
import os
import random
import statistics
from dataclasses import dataclass

import accuracy_campaign as campaign

STANDARD = {"latitude": 50.0, "slew": 20.0, "dec": 30.0, "seeing": 3.0, "focal_length": campaign.FOCAL_LENGTH}


@dataclass
class Study:
    name: str
    parameter: str
    unit: str
    values: list

    def title(self):
        return f"{self.name} ({self.unit})"


STUDIES = [
    Study("Slew", "slew", "degrees", [3, 5, 7, 10, 15, 20, 30, 45]),
    Study("Seeing", "seeing", "arc-seconds FWHM", [1.5, 3, 5, 8, 12]),
    Study("Focal length", "focal_length", "mm", [100, 200, 370, 600, 1000]),
    Study("Declination", "dec", "degrees", [-20, 0, 5, 15, 30, 45, 60, 75]),
    Study("Latitude", "latitude", "degrees", [-60, -35, -10, 10, 35, 50, 65]),
]


def setup_for(study, value, seed):
    """One random rig and axis, up to a degree off, with the studied quantity as given."""
    rng = random.Random(f"{study.name} {value} {seed}")
    fixed = {**STANDARD, study.parameter: float(value)}
    if fixed["latitude"] < 0 and study.parameter == "latitude":
        fixed["dec"] = -fixed["dec"]
    amplitude, direction = rng.uniform(5, 60), rng.uniform(0, 2 * math.pi)
    elevation = amplitude * math.cos(direction)
    azimuth = amplitude * math.sin(direction) / math.cos(math.radians(abs(fixed["latitude"]) + elevation / 60))
    return {
        **fixed,
        "seed": seed,
        "longitude": rng.uniform(-180, 180),
        "azimuth": azimuth,
        "elevation": elevation,
        "east": True,
        # the arc lies around the meridian: nothing sets, and no plate is more than six hours from it
        "hour_angle": fixed["slew"] / campaign.HOURS + rng.uniform(-0.3, 0.3),
        "rotation": rng.uniform(0, 360),
        "mirrored": rng.random() < 0.5,
        "ha_offset": rng.uniform(-0.1, 0.1),
        "dec_offset": rng.uniform(-0.5, 0.5),
        "sync_error": rng.uniform(0, 0.1),
        "sync_angle": rng.uniform(0, 2 * math.pi),
    }


def run(arguments):
    program, setup = arguments
    return campaign.run_setup(program, setup)[1]


def theoretical_limit(sigma, slew):
    """Both directions of the error ellipse, in the unit of sigma (one standard deviation of a point, radial)."""
    half = math.radians(slew)  # half of the arc that three plates at one slew's distance span
    return sigma / (math.sqrt(2) * math.sin(half)), 1.2247 * sigma / (1 - math.cos(half))


def table(study, rows, sigma):
    lines = [f"### {study.title()}", "",
             "| value | reported | median | 95 % | worst | limit across | limit along |", "|---|---|---|---|---|---|---|"]
    for value, runs, distances in rows:
        slew = value if study.parameter == "slew" else STANDARD["slew"]
        across, along = theoretical_limit(sigma, slew)
        shown = [f"{x:.1f}″" for x in (across, along)]
        measured = ["–"] * 3
        if distances:
            measured = [f"{60 * x:.1f}″" for x in (statistics.median(distances), campaign.percentile(distances, 0.95),
                                                   max(distances))]
        lines.append(f"| {value} | {len(distances)} of {runs} | " + " | ".join(measured + shown) + " |")
    return lines + [""]


def plot(study, rows):
    """An SVG with the median and the 95 % point of every value, on a logarithmic scale of arc-seconds."""
    width, height, left, bottom, top = 560, 300, 64, 44, 16
    known = [(value, 60 * statistics.median(d), 60 * campaign.percentile(d, 0.95)) for value, _, d in rows if d]
    low = math.floor(math.log10(max(0.05, min(p[1] for p in known))))
    high = max(low + 1, math.ceil(math.log10(max(p[2] for p in known))))
    places = {value: left + (i + 0.5) * (width - left - 16) / len(rows) for i, (value, _, _) in enumerate(rows)}

    def y(seconds):
        return height - bottom - (math.log10(max(seconds, 10**low)) - low) / (high - low) * (height - bottom - top)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" font-family="sans-serif" '
             'font-size="12">', f'<rect width="{width}" height="{height}" fill="#ffffff"/>']
    for power in range(low, high + 1):
        parts.append(f'<line x1="{left}" x2="{width - 16}" y1="{y(10**power):.1f}" y2="{y(10**power):.1f}" stroke="#ddd"/>')
        parts.append(f'<text x="{left - 8}" y="{y(10**power) + 4:.1f}" text-anchor="end">{10.0**power:g}″</text>')
    for value, place in places.items():
        parts.append(f'<text x="{place:.1f}" y="{height - bottom + 18}" text-anchor="middle">{value}</text>')
    for index, (colour, label) in enumerate((("#1f5fa8", "median"), ("#b05010", "95 %"))):
        points = " ".join(f"{places[p[0]]:.1f},{y(p[index + 1]):.1f}" for p in known)
        parts.append(f'<polyline points="{points}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [f'<circle cx="{places[p[0]]:.1f}" cy="{y(p[index + 1]):.1f}" r="3" fill="{colour}"/>' for p in known]
        parts.append(f'<text x="{width - 20}" y="{top + 14 + 16 * index}" text-anchor="end" fill="{colour}">{label}</text>')
    parts.append(f'<text x="{(left + width) / 2:.0f}" y="{height - 8}" text-anchor="middle">{study.title()}</text></svg>')
    return "\n".join(parts) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="path of vantrel-headless")
    parser.add_argument("--runs", type=int, default=40, help="measurements for each value")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--sigma", type=float, default=0.1,
                        help="radial error of one solved plate, arc-seconds, for the theoretical limit")
    parser.add_argument("--plots", help="folder for the plots")
    options = parser.parse_args()

    with multiprocessing.Pool(options.jobs) as pool:
        for study in STUDIES:
            rows = []
            for value in study.values:
                setups = [setup_for(study, value, seed) for seed in range(1, options.runs + 1)]
                results = pool.map(run, [(options.program, setup) for setup in setups], chunksize=1)
                rows.append((value, options.runs, [r for r in results if r is not None]))
            print("\n".join(table(study, rows, options.sigma)), flush=True)
            if options.plots:
                path = os.path.join(options.plots, f"accuracy-{study.parameter.replace('_', '-')}.svg")
                with open(path, "w", encoding="utf-8") as stream:
                    stream.write(plot(study, rows))


if __name__ == "__main__":
    main()
