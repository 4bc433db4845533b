#!/usr/bin/env python3
"""How good the measured axis is: by slew, seeing, field, declination, latitude and more. Writes tables and plots.

Every figure comes from whole measurements by vantrel-headless in virtual time, solver included. Beside it stands
the theoretical limit: three points on an arc of s degrees in all, each known to sigma along the radius, fix the axis
to sigma / (sqrt 2 sin(s/2)) across the middle of the arc and to 1.2247 sigma / (1 - cos(s/2)) along it. Sigma is
taken from plates of the same kind by a mount without axis error, which stands still among the stars.
"""

import argparse
import dataclasses
import json
import math
import multiprocessing
import os
import random
import re
import statistics
import sys
import tempfile

import accuracy_campaign as campaign
from accuracy_chart import Chart

STANDARD = {"latitude": 50.0, "slew": 20.0, "dec": 30.0, "seeing": 3.0, "focal_length": campaign.FOCAL_LENGTH,
            "middle": 0.0, "axis_error": None, "refraction": False}
SENSOR = (1392, 1040)  # pixels of the simulator's camera


@dataclasses.dataclass
class Study:
    """One quantity on the horizontal axis; everything else stays as in STANDARD and `others`."""
    file: str
    title: str
    axis: str
    parameter: str
    values: list
    others: dict = dataclasses.field(default_factory=dict)
    shown: object = staticmethod(lambda value: value)  # what stands on the axis for a value
    logarithmic: bool = False
    limit: bool = True  # whether the theoretical limit is to be compared with


def field_width(focal_length):
    """Degrees."""
    return 2 * math.degrees(math.atan(SENSOR[0] * campaign.PIXEL_SIZE / 1000 / 2 / focal_length))


STUDIES = [
    Study("slew", "The longer the slew, the better", "slew between plates (degrees)", "slew",
          [5, 7, 10, 15, 20, 30, 45], logarithmic=True),
    Study("seeing", "Seeing", "seeing (arc-seconds, full width at half maximum)", "seeing", [1.5, 3, 5, 8, 12],
          logarithmic=True),
    Study("field", "Field of view, the camera staying the same", "width of the field (degrees)", "focal_length",
          [1000, 600, 370, 200, 135], shown=lambda focal: round(field_width(focal), 2), logarithmic=True),
    Study("declination", "Declination of the plates", "declination (degrees)", "dec",
          [-20, -5, 0, 5, 15, 30, 45, 60, 75, 85]),
    Study("latitude", "Latitude of the site", "latitude (degrees)", "latitude", [-60, -35, -10, 10, 35, 50, 65]),
    Study("axis-error", "Size of the error that is measured", "axis error (arc-minutes)", "axis_error",
          [2, 10, 60, 120, 300], logarithmic=True),
    Study("hour-angle", "Distance from the meridian, declination 60°", "hour angle of the middle plate (hours)",
          "middle", [0, 2, 4, 4.5, 5, 5.5, 6, 7.5], others={"dec": 60.0}, limit=False),
    Study("refraction", "With refraction", "declination (degrees)", "dec", [0, 15, 30, 45, 60, 75],
          others={"refraction": True}, limit=False),
]


def setup_for(study, value, seed):
    """One random rig and axis, up to a degree off, with the studied quantity as given."""
    rng = random.Random(f"{study.file} {value} {seed}")
    fixed = {**STANDARD, **study.others, study.parameter: float(value)}
    if fixed["latitude"] < 0:
        fixed["dec"] = -fixed["dec"]
    amplitude, direction = rng.uniform(5, 60), rng.uniform(0, 2 * math.pi)
    if fixed["axis_error"] is not None:
        amplitude = fixed["axis_error"]
    elevation = amplitude * math.cos(direction)
    azimuth = amplitude * math.sin(direction) / math.cos(math.radians(abs(fixed["latitude"]) + elevation / 60))
    return {
        **fixed,
        "seed": seed,
        "longitude": rng.uniform(-180, 180),
        "azimuth": azimuth,
        "elevation": elevation,
        "east": True,
        "hour_angle": fixed["middle"] + fixed["slew"] / campaign.HOURS + rng.uniform(-0.3, 0.3),
        "rotation": rng.uniform(0, 360),
        "mirrored": rng.random() < 0.5,
        "ha_offset": rng.uniform(-0.1, 0.1),
        "dec_offset": rng.uniform(-0.5, 0.5),
        "sync_error": rng.uniform(0, 0.1),
        "sync_angle": rng.uniform(0, 2 * math.pi),
    }


def distance(arguments):
    """Arc-seconds between the reported and the set axis; None when nothing was reported."""
    program, setup = arguments
    arc_minutes = campaign.run_setup(program, setup)[1]
    return None if arc_minutes is None else 60 * arc_minutes


def solved_centre(lines):
    """Right ascension and declination of the newest plate, in degrees."""
    text = "\n".join(lines)
    h, m, s = re.findall(r"RA = (\d+)h (\d+)m ([\d.]+)s", text)[-1]
    sign, d, minutes, seconds = re.findall(r"Dec = (-?)\+?(\d+)° (\d+)' ([\d.]+)\"", text)[-1]
    ra = 15 * (int(h) + int(m) / 60 + float(s) / 3600)
    return ra, (-1 if sign else 1) * (int(d) + int(minutes) / 60 + float(seconds) / 3600)


def plate_errors(arguments):
    """Solved less true centre of three plates: arc-seconds along right ascension and along declination."""
    program, setup = arguments
    setup = {**setup, "azimuth": 0.0, "elevation": 0.0}
    errors = []
    with tempfile.TemporaryDirectory() as home:
        operator = campaign.started(program, home, setup)
        try:
            operator.click("frmMain.cmdRun")
            for plate in (1, 2, 3):
                operator.wait(log=f"Plate {plate} Solved", seconds=600)
                ra, dec = solved_centre(operator.log())
                true = [operator.get(campaign.SIMULATOR, member)
                        for member in ("SiderealTime", "CameraAxisHourAngle", "CameraAxisDeclination")]
                off = (ra - 15 * (true[0] - true[1]) + 180) % 360 - 180
                errors += [3600 * off * math.cos(math.radians(dec)), 3600 * (dec - true[2])]
        except campaign.OperatorError:
            pass  # a plate that isn't solved has no error
        operator.close()
    return errors


def theoretical_limit(sigma, slew):
    """Across and along, in the unit of sigma: one standard deviation of the axis, the arc being two slews long."""
    half = math.radians(slew)
    return sigma / (math.sqrt(2) * math.sin(half)), 1.2247 * sigma / (1 - math.cos(half))


def distances_at_limit(across, along, draws=20000):
    """Median and 95 % point of the distance that errors of these two standard deviations make."""
    rng = random.Random(1)
    drawn = [math.hypot(rng.gauss(0, across), rng.gauss(0, along)) for _ in range(draws)]
    return statistics.median(drawn), campaign.percentile(drawn, 0.95)


@dataclasses.dataclass
class Row:
    value: float  # as shown
    runs: int
    distances: list  # arc-seconds
    sigma: float  # arc-seconds, one coordinate of a plate's centre; None without plates
    limit: tuple  # median and 95 % point, arc-seconds; None without sigma


def measured_row(pool, program, study, value, runs, plate_runs):
    setups = [(program, setup_for(study, value, seed)) for seed in range(1, runs + 1)]
    distances = [d for d in pool.map(distance, setups, chunksize=1) if d is not None]
    sigma = limit = None
    if study.limit:
        errors = [e for some in pool.map(plate_errors, setups[:plate_runs], chunksize=1) for e in some]
        if errors:
            sigma = math.sqrt(statistics.fmean(e * e for e in errors))
            limit = distances_at_limit(*theoretical_limit(sigma, setups[0][1]["slew"]))
    return Row(study.shown(value), runs, distances, sigma, limit)


def seconds(value):
    if value is None:
        return "–"
    return f"{value:.2f}″" if value < 1 else f"{value:.1f}″" if value < 300 else f"{value / 60:.0f}′"


def table(study, rows):
    heads = [study.axis, "reported", "median", "95 %", "worst"]
    if study.limit:
        heads += ["σ of a plate", "limit, median", "limit, 95 %"]
    lines = [f"### {study.title}", "", "| " + " | ".join(heads) + " |", "|" + "---|" * len(heads)]
    for row in rows:
        measured = [None] * 3
        if row.distances:
            measured = [statistics.median(row.distances), campaign.percentile(row.distances, 0.95), max(row.distances)]
        cells = [f"{row.value:g}", f"{len(row.distances)} of {row.runs}", *map(seconds, measured)]
        if study.limit:
            cells += [seconds(row.sigma), *map(seconds, row.limit or (None, None))]
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def chart(study, rows):
    drawing = Chart(study.title, study.axis, "distance from the true axis", study.logarithmic)
    known = [row for row in rows if row.distances]
    drawing.line("95 % of measurements", "upper",
                 [(row.value, campaign.percentile(row.distances, 0.95)) for row in known])
    drawing.line("median", "middle", [(row.value, statistics.median(row.distances)) for row in known])
    limits = [row for row in known if row.limit]
    if limits:
        drawing.dashes("limit, 95 %", "upper", [(row.value, row.limit[1]) for row in limits])
        drawing.dashes("limit, median", "middle", [(row.value, row.limit[0]) for row in limits])
    return drawing.svg()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", nargs="?", help="path of vantrel-headless; without it the --rows are shown")
    parser.add_argument("--runs", type=int, default=60, help="measurements for each value")
    parser.add_argument("--plate-runs", type=int, default=12, help="of them for sigma, three plates each")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", help="names of studies, with commas")
    parser.add_argument("--rows", default="build/accuracy-rows.json", help="where the results are kept")
    parser.add_argument("--plots", help="folder for the plots")
    options = parser.parse_args()

    kept = {}
    if os.path.exists(options.rows):
        with open(options.rows, encoding="utf-8") as stream:
            kept = {name: [Row(**row) for row in rows] for name, rows in json.load(stream).items()}
    wanted = options.only.split(",") if options.only else [study.file for study in STUDIES]
    studies = [study for study in STUDIES if study.file in wanted]
    with multiprocessing.Pool(options.jobs) as pool:
        for study in studies if options.program else []:
            kept[study.file] = [measured_row(pool, options.program, study, value, options.runs, options.plate_runs)
                                for value in study.values]
            with open(options.rows, "w", encoding="utf-8") as stream:
                json.dump({name: [dataclasses.asdict(row) for row in rows] for name, rows in kept.items()}, stream)
            print(f"{study.title}: done", file=sys.stderr)
    for study in (s for s in studies if s.file in kept):
        print(table(study, kept[study.file]))
        if options.plots:
            path = os.path.join(options.plots, f"accuracy-{study.file}.svg")
            with open(path, "w", encoding="utf-8") as stream:
                stream.write(chart(study, kept[study.file]))


if __name__ == "__main__":
    main()
