#!/usr/bin/env python3
"""How good the measured axis is: by slew, seeing, field, declination, latitude and more. Writes tables and plots.

Every figure comes from whole measurements by vantrel-headless in virtual time, solver included. Beside it stands
the theoretical limit: three points on an arc of s degrees in all, each known to sigma along the radius, fix the axis
to sigma / (sqrt 2 sin(s/2)) in one direction and to 1.2247 sigma / (1 - cos(s/2)) in the other. The errors of
single plates are taken from a mount without axis error, which stands still among the stars, and drawn from.
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
    sign, d, minutes, seconds = re.findall(r"Dec = (-?)\+?(\d+)° (\d+)' (\d+\.\d+)\"", text)[-1]
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


def axis_error_of(radial, slew):
    """Distance of the axis through three points whose distances from it are wrong by so much, in the same unit."""
    half = math.radians(slew)  # of the arc, which is two slews long
    across = (radial[2] - radial[0]) / (2 * math.sin(half))
    along = ((radial[0] + radial[2]) / 2 - radial[1]) / (1 - math.cos(half))
    return math.hypot(across, along)


def distances_at_limit(errors, slew, draws=20000):
    """Median and 95 % point of what three plates allow at best, each as wrong as one of these at random."""
    rng = random.Random(1)
    drawn = [axis_error_of(rng.choices(errors, k=3), slew) for _ in range(draws)]
    return statistics.median(drawn), campaign.percentile(drawn, 0.95)


@dataclasses.dataclass
class Row:
    value: float  # of the studied quantity
    runs: int
    distances: list  # arc-seconds
    errors: list  # arc-seconds, coordinates of plates' centres

    def sigma(self):
        """Of one coordinate of a plate's centre, arc-seconds; None without plates."""
        return math.sqrt(statistics.fmean(e * e for e in self.errors)) if self.errors else None

    def limit(self, study):
        """Median and 95 % point, arc-seconds; None without plates."""
        slew = self.value if study.parameter == "slew" else STANDARD["slew"]
        return distances_at_limit(self.errors, slew) if self.errors else None


def measured_row(pool, program, study, value, options, old):
    """What `old` has already isn't measured again."""
    setups = [(program, setup_for(study, value, seed)) for seed in range(1, options.runs + 1)]
    row = Row(value, options.runs, [], [])
    if old and old.runs == options.runs:
        row.distances, row.errors = old.distances, old.errors
    if not row.distances:
        row.distances = [d for d in pool.map(distance, setups, chunksize=1) if d is not None]
    if study.limit and not row.errors:
        row.errors = [e for some in pool.map(plate_errors, setups[:options.plate_runs], chunksize=1) for e in some]
    return row


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
        cells = [f"{study.shown(row.value):g}", f"{len(row.distances)} of {row.runs}", *map(seconds, measured)]
        if study.limit:
            cells += [seconds(row.sigma()), *map(seconds, row.limit(study) or (None, None))]
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def chart(study, rows):
    drawing = Chart(study.title, study.axis, "distance from the true axis", study.logarithmic)
    known = [(study.shown(row.value), row) for row in rows if row.distances]
    drawing.line("95 % of measurements", "upper", [(x, campaign.percentile(row.distances, 0.95)) for x, row in known])
    drawing.line("median", "middle", [(x, statistics.median(row.distances)) for x, row in known])
    limits = [(x, row.limit(study)) for x, row in known if row.errors]
    if limits:
        drawing.dashes("limit, 95 %", "upper", [(x, limit[1]) for x, limit in limits])
        drawing.dashes("limit, median", "middle", [(x, limit[0]) for x, limit in limits])
    return drawing.svg()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", nargs="?", help="path of vantrel-headless; without it the --rows are shown")
    parser.add_argument("--runs", type=int, default=60, help="measurements for each value")
    parser.add_argument("--plate-runs", type=int, default=24, help="of them for the plates' own errors")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", help="names of studies, with commas")
    parser.add_argument("--rows", default="build/accuracy-rows.json", help="where results are kept; what is there already stays")
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
            old = {row.value: row for row in kept.get(study.file, [])}
            kept[study.file] = [measured_row(pool, options.program, study, value, options, old.get(value))
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
