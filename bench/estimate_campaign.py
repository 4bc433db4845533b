#!/usr/bin/env python3
"""The written calculation and the estimate by least squares in the same nights, and whether the stated +- is right.

Each row is so many whole measurements by vantrel-headless in virtual time, solver included. Prints two tables in
Markdown, of sound mounts and of mounts with mechanical faults: the distance of either result from the set axis, how
often the truth lies within the stated one- and two-sigma ellipses (39 and 86 % if they are right; with faults also
within three, 99 %), how often a warning comes, how often it names the fault, how often the rolls hint at one, and how
often a result that is wrong by more than an arc-minute comes without a warning.

The air moves each picture as a whole as much as the estimate allows for. Where it refracts, its pressure and
temperature are drawn anew for each measurement, so that the refraction is off the standard atmosphere's by 5 % (one
sigma).
"""

import argparse
import dataclasses
import math
import multiprocessing
import random
import re
import statistics

import accuracy_campaign as campaign
import accuracy_report as report
from operator_session import OperatorError

# Arc-seconds in the one second that the simulator's own camera exposes for: what is left of the air's motion after the
# ten seconds that the window has, and that the estimate therefore reckons with.
IMAGE_MOTION = 0.12 / math.sqrt(10)
MOVED = "the telescope moved in declination"
READING = "the mount's hour angle is off"
TURNED = "the camera turned"


@dataclasses.dataclass
class Row:
    """A kind of measurement: one study's value; what is wrong with the simulator; the jump's arc-seconds and the
    plate that comes after it; which verdicts name that fault; the plate that is left out afterwards; whether a closing plate is taken."""
    title: str
    parameter: str
    value: float
    others: dict = dataclasses.field(default_factory=dict)
    simulator: dict = dataclasses.field(default_factory=dict)
    jump: float = 0
    jump_plate: int = 2
    names: tuple = ()
    plates: int = 3
    leave_out: int = 0
    closing: bool = False

    @property
    def faulty(self):
        return bool(self.simulator or self.jump)

    def setup(self, seed):
        study = report.Study("estimate", self.title, "", self.parameter, [self.value], others=self.others)
        setup = report.setup_for(study, self.value, seed)
        setup["plates"] = self.plates
        setup["leave_out"] = self.leave_out
        setup["closing"] = self.closing
        setup["hour_angle"] += (self.plates - 3) / 2 * setup["slew"] / campaign.HOURS  # the same middle
        rng = random.Random(f"{self.title} {seed} night")
        setup["simulator"] = {"ImageMotion": IMAGE_MOTION, **self.simulator}
        if setup["refraction"]:
            setup["simulator"].update(air_of_a_night(rng))
        if self.jump:
            setup["jump"] = {"DeclinationJumpSlew": self.jump_plate - 1,
                             "DeclinationJump": rng.choice((-1, 1)) * self.jump}
        return setup


def air_of_a_night(rng):
    """About the standard atmosphere at sea level: 4.2 % by the temperature and 2.5 % by the pressure."""
    return {"AirTemperature": max(-60, min(60, rng.gauss(15, 12))), "AirPressure": min(1100, rng.gauss(1013.25, 25))}


def fault_rows():
    for slew in (15, 20, 30):
        for noise in (10, 20):
            yield Row(f"roll noise {noise}″, slews of {slew}°", "slew", slew, simulator={"RollNoise": noise},
                      names=(TURNED,))
    for slew in (15, 20, 30):
        yield Row(f"flexure 3″, slews of {slew}°", "slew", slew, simulator={"Flexure": 3}, names=(MOVED, TURNED))
    for slew in (20, 30):
        yield Row(f"flexure 3″, slews of {slew}°, declination 60°", "slew", slew, {"dec": 60.0},
                  simulator={"Flexure": 3}, names=(MOVED, TURNED))
    for plates, slew in ((3, 15), (3, 30), (4, 10), (5, 7.5), (4, 20), (5, 15)):
        for plate, which in ((2, "second"), (3, "third")):
            for flexure in (0, 3):
                yield Row(f"jump of 5″ at the {which} of {plates} plates" + (" and flexure 3″" if flexure else "") +
                          f", slews of {slew}°", "slew", slew, jump=5, jump_plate=plate, names=(MOVED,),
                          plates=plates, simulator={"Flexure": 3} if flexure else {})
    yield Row("jump of 5″ at the third of 7 plates, slews of 5°", "slew", 5, jump=5, jump_plate=3, names=(MOVED,), plates=7)
    for slew in (15, 30):
        for plate, which in ((2, "second"), (3, "third")):
            for flexure in (0, 3):
                yield Row(f"jump of 5″ at the {which} of 3 plates and a closing one" +
                          (", flexure 3″" if flexure else "") + f", slews of {slew}°", "slew", slew, jump=5,
                          jump_plate=plate, names=(MOVED,), closing=True,
                          simulator={"Flexure": 3} if flexure else {})
    for left_out in (0, 5):
        yield Row("jump of 5″ at the last of 5 plates, slews of 15°" + (", which is then left out" if left_out else ""),
                  "slew", 15, jump=5, jump_plate=5, names=(MOVED,), plates=5, leave_out=left_out)
    yield Row("periodic error 10″, slews of 20°", "slew", 20, simulator={"PeriodicError": 10}, names=(READING,))
    yield Row("clock off by 10 s, slews of 20°", "slew", 20, simulator={"ClockError": 10})


ROWS = [
    *(Row(f"slews of {slew}°", "slew", slew) for slew in (5, 10, 20, 30)),
    *(Row(f"refraction, declination {dec}°", "dec", dec, {"refraction": True}) for dec in (0, 15, 30, 45, 60, 75)),
    *(Row(f"refraction, latitude {latitude}°", "latitude", latitude, {"refraction": True})
      for latitude in (-60, -35, 10, 35, 65)),
    Row("astride six hours, declination 60°", "middle", 6, {"dec": 60.0}),
    *(Row(f"{plates} plates, slews of {slew}°", "slew", slew, plates=plates) for plates, slew in ((3, 15), (7, 5), (4, 10), (5, 15))),
    *fault_rows(),
]


def turned_by_clock(setup):
    """The set axis (azimuth and elevation error, arc-minutes) as it looks by a clock that is ahead: turned about the
    pole by 15″ of hour angle a second."""
    turn = math.radians(setup["simulator"].get("ClockError", 0) * 15.041 / 3600)
    latitude = math.radians(abs(setup["latitude"]))
    east, north, up = campaign.unit(setup["azimuth"] / 60, abs(setup["latitude"]) + setup["elevation"] / 60)
    x, z = up * math.cos(latitude) - north * math.sin(latitude), up * math.sin(latitude) + north * math.cos(latitude)
    # x is the meridian's direction on the equator; hour angles grow from it to the west.
    x, east = x * math.cos(turn) + east * math.sin(turn), east * math.cos(turn) - x * math.sin(turn)
    north, up = z * math.cos(latitude) - x * math.sin(latitude), z * math.sin(latitude) + x * math.cos(latitude)
    altitude = math.degrees(math.atan2(up, math.hypot(north, east)))
    return 60 * math.degrees(math.atan2(east, north)), 60 * (altitude - abs(setup["latitude"]))


class Result:
    """What one measurement said; distances in arc-seconds, None where nothing was reported."""

    def __init__(self, setup, written, lines):
        self.setup, self.lines = setup, lines
        self.written = None if written is None else 60 * written
        self.warned = any("Warning: " in line for line in lines)
        verdicts = [line.split("The plates don't agree: ", 1)[1] for line in lines if "The plates don't agree: " in line]
        self.verdict = verdicts[-1] if verdicts else None
        hidden = number_pair(lines, r"could hide here and move the axis by up to (\S+)( )arc-sec")
        self.hidden = hidden[0] if hidden else 0  # what it says that a jump of 5″ could do
        hinted = number_pair(lines, r"a jump would have moved the axis by (\S+)( )arc-sec")
        self.hint = hinted[0] if hinted else None  # what the jump that the rolls hint at did to the axis
        self.estimate = self.turned = self.chi_square = self.stated = None
        axis = number_pair(lines, r"Least squares: azimuth (\S+) arc-min, elevation (\S+) arc-min")
        ellipse = number_pair(lines, r"Least squares: ellipse (\S+) arc-sec by (\S+) arc-sec")
        direction = number_pair(lines, r"Least squares: ellipse .* arc-sec, (\S+)( )degrees")
        if not axis or not ellipse:
            return
        altitude = math.radians(abs(setup["latitude"]) + setup["elevation"] / 60)

        def offset(azimuth, elevation):
            return 60 * (axis[0] - azimuth) * math.cos(altitude), 60 * (axis[1] - elevation)

        east, up = offset(setup["azimuth"], setup["elevation"])
        self.estimate = math.hypot(east, up)
        self.turned = math.hypot(*offset(*turned_by_clock(setup)))
        self.stated = math.hypot(*ellipse) / math.sqrt(2)
        turn = math.radians(direction[0])
        along, across = up * math.cos(turn) + east * math.sin(turn), east * math.cos(turn) - up * math.sin(turn)
        self.chi_square = (along / ellipse[0]) ** 2 + (across / ellipse[1]) ** 2

    @property
    def covered(self):
        """Whether the truth lies no farther than three sigmas away."""
        return self.chi_square is not None and self.chi_square < 9

    @property
    def foretold(self):
        """Whether the truth lies within what it says that a jump could do, and three times the uncertainty."""
        said = max(self.hidden, self.hint or 0)
        return self.estimate is not None and self.estimate < said + 3 * self.stated

    def names(self, faults):
        return self.verdict is not None and self.verdict.startswith(tuple(faults))


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


def silent(results):
    return sum(r.written is not None and r.written > 60 and not r.warned for r in results)


def hinted(results):
    return share(r.hint is not None for r in results)


def told(row, result):
    """Whether the fault is named, or hinted at: a hint speaks of jumps and of cameras that turn."""
    return result.names(row.names) or result.hint is not None and bool({MOVED, TURNED} & set(row.names))


def within(results, sigmas):
    return share(r.chi_square < sigmas**2 for r in results if r.chi_square is not None)


def table(head, rows, measured, cells):
    print("| " + " | ".join(head) + " |\n|" + "---|" * len(head), flush=True)
    everything = []
    for row in rows:
        results = measured(row)
        everything += results
        print("| " + " | ".join([row.title, *cells(row, results)]) + " |", flush=True)
    return everything


def sound_cells(_, results):
    return [seconds(r.written for r in results), seconds(r.estimate for r in results), within(results, 1),
            within(results, 2), share(r.verdict is not None for r in results), hinted(results),
            str(silent(results))]


def faulty_cells(row, results):
    estimate = seconds(r.estimate for r in results)
    if "ClockError" in row.simulator:
        estimate += f" (of the axis turned about the pole: {seconds(r.turned for r in results)})"
    return [seconds(r.written for r in results), estimate, *(within(results, sigmas) for sigmas in (1, 2, 3)),
            share(r.warned for r in results), share(r.names(row.names) for r in results), hinted(results),
            share(r.covered or told(row, r) for r in results),
            share(r.covered or r.foretold or told(row, r) for r in results) if row.jump else "-"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="path of vantrel-headless")
    parser.add_argument("--runs", type=int, default=60, help="measurements a row")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", default="", help="rows whose title contains this")
    options = parser.parse_args()
    rows = [row for row in ROWS if options.only in row.title]
    common = ["written: median / worst", "least squares: median / worst", "within 1 σ", "within 2 σ"]
    with multiprocessing.Pool(options.jobs) as pool:
        def measured(row):
            return pool.map(measure, [(options.program, row.setup(seed)) for seed in range(options.runs)], 1)

        sound = [row for row in rows if not row.faulty]
        if sound:
            results = table([f"{options.runs} measurements each", *common, "plates don't agree", "hinted",
                             "wrong by > 1′, not warned of"], sound, measured, sound_cells)
            print(f"| all | | | {within(results, 1)} | {within(results, 2)} | "
                  f"{share(r.verdict is not None for r in results)} | {hinted(results)} | |\n")
        faulty = [row for row in rows if row.faulty]
        if faulty:
            table([f"{options.runs} measurements each", *common, "within 3 σ", "warned", "fault named", "hinted",
                   "covered, named or hinted", "or foretold"], faulty, measured, faulty_cells)


if __name__ == "__main__":
    main()
