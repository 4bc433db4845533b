#!/usr/bin/env python3
"""An operator made of code: measures the simulator's polar axis and corrects it, as a person would.

All it knows comes through vantrel-headless: what the window says, and the picture that the imaging program
shows. It points at a bright star, presses Run and Next, turns an adjuster until the star sits on the cross
hair of the picture, and presses Next again. It uses nothing but Python's own library.
"""

import argparse
import array
import math
import os
import re
import statistics
import sys
import tempfile

from operator_session import Operator

SIMULATOR = "AxisSimulator.Telescope"
FIELD_EXPOSURE = 1  # seconds: enough stars to solve a field by
STAR_EXPOSURE = 0.001  # a bright star hardly saturates, so that it can be told from others by its light
EXPOSING, PAUSING = 0xFF, 0x80000003  # the colours of the light "Expose"
NOISE = 150  # counts above the sky that are no light yet
ADJUSTERS = {"Azimuth": "TurnAzimuthAdjuster", "Elevation": "TurnElevationAdjuster"}


class RobotError(RuntimeError):
    """The robot doesn't know how to go on."""


# ---- stars


class Star:
    """A bright star: ICRS place in degrees, proper motion in arc-seconds a year."""

    def __init__(self, name, ra, dec, motion_ra, motion_dec, magnitude):
        self.name, self.magnitude = name, magnitude
        self.ra, self.dec = ra, dec
        self.motion_ra, self.motion_dec = motion_ra, motion_dec

    def place(self, year):
        """Right ascension in hours and declination in degrees, mean equinox of the year.

        Precession by Capitaine, Wallace and Chapront (2003, A&A 412, 567); without nutation and aberration,
        which come to 0.6' at most.
        """
        years = year - 2000
        dec = math.radians(self.dec + self.motion_dec * years / 3600)
        ra = math.radians(self.ra + self.motion_ra * years / 3600 / math.cos(dec))
        t = years / 100
        zeta = math.radians((2306.083227 * t + 0.2988499 * t * t) / 3600)
        z = math.radians((2306.077181 * t + 1.0927348 * t * t) / 3600)
        theta = math.radians((2004.191903 * t - 0.4294934 * t * t) / 3600)
        a = math.cos(dec) * math.sin(ra + zeta)
        b = math.cos(theta) * math.cos(dec) * math.cos(ra + zeta) - math.sin(theta) * math.sin(dec)
        c = math.sin(theta) * math.cos(dec) * math.cos(ra + zeta) + math.cos(theta) * math.sin(dec)
        return math.degrees(math.atan2(a, b) + z) / 15 % 24, math.degrees(math.asin(c))


def bright_stars():
    """The stars that the simulator's own panel offers."""
    here = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(here, "..", "src", "observatory", "panel", "bright_stars.inc"), encoding="utf-8") as lines:
        rows = [re.findall(r'"([^"]*)"|(-?[0-9.]+)', line) for line in lines]
    return [Star(row[0][0], *(float(value) for _, value in row[1:])) for row in rows if row]


def altitude(hour_angle, dec, latitude):
    """Degrees, of an hour angle in hours."""
    h, d, f = math.radians(hour_angle * 15), math.radians(dec), math.radians(latitude)
    return math.degrees(math.asin(math.sin(f) * math.sin(d) + math.cos(f) * math.cos(d) * math.cos(h)))


# ---- pictures


class Picture:
    """A FITS image of whole numbers, row by row; the scale's zero point is left out."""

    BYTES = {8: "B", 16: "h", 32: "i"}

    def __init__(self, path):
        with open(path, "rb") as stream:
            data = stream.read()
        cards, at = {}, 0
        while "END" not in cards:
            block = data[at:at + 2880].decode("ascii", "replace")
            at += 2880
            for start in range(0, 2880, 80):
                cards[block[start:start + 8].strip()] = block[start + 10:start + 80].split("/")[0].strip()
        self.width, self.height = int(cards["NAXIS1"]), int(cards["NAXIS2"])
        pixels = array.array(self.BYTES[int(cards["BITPIX"])])
        pixels.frombytes(data[at:at + self.width * self.height * pixels.itemsize])
        if sys.byteorder == "little":
            pixels.byteswap()
        self.rows = [pixels[r * self.width:(r + 1) * self.width] for r in range(self.height)]

    def cross_hair(self):
        """Column and row of the cross hair's bands; None without one."""
        row = [y for y, line in enumerate(self.rows) if line[0] == line[-1] and line.count(line[0]) == self.width]
        if not row:
            return None
        value = self.rows[row[0]][0]
        columns = [x for x in range(self.width) if all(line[x] == value for line in self.rows[::37])]
        column = [x for x in columns if all(line[x] == value for line in self.rows)]
        return (column[0], row[0]) if column else None

    def without(self, line_pixels, steep):
        """Puts the mean of both neighbours across the line in place of its pixels."""
        for x, y in line_pixels:
            if steep:
                a, b = max(x - 1, 0), min(x + 1, self.width - 1)
                self.rows[y][x] = (self.rows[y][a] + self.rows[y][b]) // 2
            else:
                a, b = max(y - 1, 0), min(y + 1, self.height - 1)
                self.rows[y][x] = (self.rows[a][x] + self.rows[b][x]) // 2

    def erase_cross_hair(self, column, row):
        self.without([(x, row) for x in range(self.width)], False)
        self.without([(column, y) for y in range(self.height)], True)

    def erase_line(self, start, end):
        """A line as the program draws it, from pixel to pixel."""
        (x1, y1), (x2, y2) = start, end
        steep = abs(y2 - y1) > abs(x2 - x1)
        length = max(abs(x2 - x1), abs(y2 - y1), 1)
        pixels = [(round(x1 + (x2 - x1) * i / length), round(y1 + (y2 - y1) * i / length)) for i in range(length + 1)]
        self.without([(x, y) for x, y in pixels if 0 <= x < self.width and 0 <= y < self.height], steep)

    def erase_rectangle(self):
        """The placing rectangle: the middle fifth."""
        left, right = round(0.4 * self.width), round(0.6 * self.width)
        top, bottom = round(0.4 * self.height), round(0.6 * self.height)
        for y in (top, bottom):
            self.erase_line((left, y), (right, y))
        for x in (left, right):
            self.erase_line((x, top), (x, bottom))

    def sky(self):
        return statistics.median(value for line in self.rows[::23] for value in line[::29])

    def brightest_star(self, sky, near=None, radius=0):
        """Column, row and light of the star that gives most, in the whole picture or in a square."""
        left, right, top, bottom = 0, self.width, 0, self.height
        if near:
            left, right = max(0, int(near[0] - radius)), min(self.width, int(near[0] + radius) + 1)
            top, bottom = max(0, int(near[1] - radius)), min(self.height, int(near[1] + radius) + 1)
        if left >= right or top >= bottom:
            return 0, 0, 0
        peaks = [max(line[left:right]) for line in self.rows[top:bottom]]
        least = sky + max(NOISE, 0.4 * (max(peaks) - sky))
        found = [(0, 0, 0)]
        for y, peak in enumerate(peaks, top):
            for x in range(left, right) if peak >= least else ():
                if self.rows[y][x] >= least and all(abs(x - s[0]) > 8 or abs(y - s[1]) > 8 for s in found):
                    found.append(self.star_at(x, y, sky))
        return max(found, key=lambda star: star[2])

    def star_at(self, x, y, sky):
        for _ in range(3):
            light = moment_x = moment_y = 0.0
            for r in range(max(0, y - 6), min(self.height, y + 7)):
                for c in range(max(0, x - 6), min(self.width, x + 7)):
                    excess = max(0.0, self.rows[r][c] - sky - NOISE)
                    light += excess
                    moment_x += excess * c
                    moment_y += excess * r
            if light == 0:
                return x, y, 0.0
            centre = moment_x / light, moment_y / light
            if (round(centre[0]), round(centre[1])) == (x, y):
                break
            x, y = round(centre[0]), round(centre[1])
        return centre[0], centre[1], light


# ---- the robot


class Robot:
    """Works one running program whose simulator stands somewhere under the sky."""

    def __init__(self, operator, folder, talk=lambda text: None):
        self.operator, self.folder, self.talk = operator, folder, talk
        self.notes = {}  # how the last correction went, by adjuster

    # what an operator sees

    def year(self):
        date = self.operator.do("time")["utc"]
        return int(date[:4]) + (int(date[5:7]) - 0.5) / 12

    def latitude(self):
        return self.operator.get(SIMULATOR, "SiteLatitude")

    def instructions(self):
        return self.operator.read("frmMain.txtInstructions")["text"]

    def number(self, label, after=0):
        """The number behind the label in the newest log line that has one."""
        for line in reversed(self.operator.log()[after:]):
            found = re.search(re.escape(label) + r" *(-?[0-9.]+)", line)
            if found:
                return float(found.group(1))
        return None

    def picture(self):
        """The first picture that was begun after now, with its marks."""
        light = self.operator.read("frmMain.lblExpose")["backColor"]
        for color in (EXPOSING, PAUSING) if light == PAUSING else (PAUSING, EXPOSING, PAUSING):
            self.operator.wait(control="frmMain.lblExpose", property="backColor", **{"is": color})
        path = os.path.join(self.folder, "shown.fit")
        self.save(path)
        return Picture(path)

    def save(self, path):
        self.operator.do("image", save=path)

    # what an operator does

    def expose_for(self, seconds):
        self.operator.put(SIMULATOR, "ExposureTime", seconds)

    def hour_angle(self, star):
        ra, _ = star.place(self.year())
        return (self.operator.get(SIMULATOR, "SiderealTime") - ra + 12) % 24 - 12

    def choose_star(self, declination=0, reach=10):
        """The star nearest to the meridian whose declination is about this one (or this one's opposite)."""
        up = []
        for star in bright_stars():
            _, dec = star.place(self.year())
            hour_angle = self.hour_angle(star)
            if abs(abs(dec) - declination) <= reach and altitude(hour_angle, dec, self.latitude()) > 20:
                up.append((abs(hour_angle), star.name, star))
        if not up:
            raise RobotError("no star near that declination is up")
        return min(up)[2]

    def slew(self, ra, dec):
        self.operator.call(SIMULATOR, "SlewToCoordinatesAsync", ra % 24, max(-90.0, min(90.0, dec)))
        while self.operator.get(SIMULATOR, "Slewing"):
            self.operator.do("advance", seconds=1)

    def point_at(self, star):
        """Go to the star, look by "Expose & Solve" where that led, sync there, until it is near the middle."""
        for _ in range(5):
            ra, dec = star.place(self.year())
            self.slew(ra, dec)
            start = len(self.operator.log())
            self.operator.click("frmMain.cmdExposeSolve")
            self.operator.wait(idle=True)
            lines = self.operator.log()[start:]
            solved = [re.search(r" (RA|Dec) = .* (-?[0-9.]+)$", line) for line in lines]
            place = {match.group(1): float(match.group(2)) for match in solved if match}
            if "RA" not in place or any("Failed" in line for line in lines):
                raise RobotError("\n".join(["the field was not solved:"] + lines))
            self.operator.call(SIMULATOR, "SyncToCoordinates", place["RA"], place["Dec"])
            off = math.hypot(((place["RA"] - ra + 12) % 24 - 12) * 15 * math.cos(math.radians(dec)), place["Dec"] - dec)
            if off < 0.03:
                return
        raise RobotError(f"{star.name} doesn't come to the middle")

    def measure(self):
        """Runs the measurement up to its offer; the reported error as {"Azimuth": ', "Elevation": '}."""
        start = len(self.operator.log())
        self.operator.click("frmMain.cmdRun")
        self.operator.wait(control="frmMain.cmdNext", property="enabled", **{"is": True})
        if "Completed Successfully" not in self.instructions():
            raise RobotError(self.instructions())
        error = {name: self.number(f"{name} error:", start) for name in ADJUSTERS}
        self.talk(f"measured: azimuth {error['Azimuth']}', elevation {error['Elevation']}'")
        return error

    def correct(self, star, error):
        """From the offer to the start: both adjusters, one after the other."""
        self.operator.click("frmMain.cmdNext")
        self.wait_for("Polar Azimuth Correction\r\n1. Slew")
        for adjuster in ADJUSTERS:
            self.place(star)
            self.operator.click("frmMain.cmdNext")
            self.wait_for(f"Polar {adjuster} Correction\r\n1. Center")
            self.centre(adjuster, error[adjuster])
            self.operator.click("frmMain.cmdNext")
            following = "Polar Elevation Correction\r\n1. Slew" if adjuster == "Azimuth" else "Polar Alignment Correction"
            self.wait_for(following)
        self.operator.click("frmMain.cmdNext")
        self.operator.wait(idle=True)

    def wait_for(self, beginning):
        for _ in range(300):
            if self.instructions().startswith(beginning):
                return
            if self.operator.read("frmMain.cmdRun")["enabled"]:
                break
            self.operator.do("advance", seconds=1)
        raise RobotError("\n".join(["waited in vain for " + beginning] + self.operator.log()[-30:]))

    def place(self, star):
        """Slews until the star is in the rectangle, and syncs."""
        x, y, _ = self.star_in_rectangle()
        step = 4 / 60
        ra = self.operator.get(SIMULATOR, "RightAscension")
        dec = self.operator.get(SIMULATOR, "Declination")
        east = step / 15 / math.cos(math.radians(dec))
        for _ in range(4):
            width, height = self.size
            if abs(x - width / 2) < 0.04 * width and abs(y - height / 2) < 0.04 * height:
                break
            # Two small slews tell which way the picture moves.
            self.slew(ra + east, dec)
            x1, y1, _ = self.star_in_rectangle()
            self.slew(ra + east, dec + step)
            x2, y2, _ = self.star_in_rectangle()
            a, c, b, d = x1 - x, y1 - y, x2 - x1, y2 - y1
            determinant = a * d - b * c
            if abs(determinant) < 1:
                raise RobotError("the star doesn't follow the hand controller")
            u, v = width / 2 - x2, height / 2 - y2
            ra += east * (1 + (u * d - b * v) / determinant)
            dec += step * (1 + (a * v - c * u) / determinant)
            self.slew(ra, dec)
            x, y, _ = self.star_in_rectangle()
        self.operator.call(SIMULATOR, "SyncToCoordinates", *star.place(self.year()))
        self.expose_for(STAR_EXPOSURE)
        _, _, self.light = self.star_in_rectangle()
        self.expose_for(FIELD_EXPOSURE)

    def star_in_rectangle(self):
        picture = self.picture()
        self.size = picture.width, picture.height
        picture.erase_rectangle()
        return picture.brightest_star(picture.sky())

    def clean_picture(self, line_from):
        """The picture without its marks, its cross hair, and its sky."""
        picture = self.picture()
        cross = picture.cross_hair()
        if cross is None:
            raise RobotError("there is no cross hair")
        picture.erase_cross_hair(*cross)
        picture.erase_line(line_from, cross)
        return picture, cross, picture.sky()

    def search(self, adjuster, direction, line_from):
        """Turns the adjuster until the star comes into view; where it is, and by how much it was turned."""
        self.expose_for(STAR_EXPOSURE)
        for turns in range(1, 40):
            self.operator.call(SIMULATOR, ADJUSTERS[adjuster], direction * 10)
            picture, _, sky = self.clean_picture(line_from)
            x, y, light = picture.brightest_star(sky)
            if light > 0.5 * self.light:
                self.expose_for(FIELD_EXPOSURE)
                return (x, y), direction * 10.0 * turns
        raise RobotError("the star doesn't come into view")

    def follow(self, line_from, expected, radius, sure=True):
        """Where the star is, which can't be far from where it is expected, and the cross hair."""
        picture, cross, sky = self.clean_picture(line_from)
        x, y, light = picture.brightest_star(sky, expected, radius)
        if sure and math.hypot(expected[0] - cross[0], expected[1] - cross[1]) < 4:  # half hidden
            x, y, light = picture.star_at(*cross, sky)
            return ((x, y) if light > 1000 else cross), cross
        if light < 1000:
            raise RobotError("the star left the picture")
        return (x, y), cross

    def centre(self, adjuster, reported):
        """Turns the adjuster until the star is as near to the cross hair as it comes."""
        line_from = round(self.number("Brightest Star X =")), round(self.number("Brightest Star Y ="))
        on_image = "Star is on Plate" in "\n".join(self.operator.log()[-12:])
        # The plot tells the direction; in the south it shows the axis' other end.
        direction = -math.copysign(1, reported) * (1 if self.latitude() >= 0 else -1)
        star, turns = line_from, 0.0
        if not on_image:
            star, turns = self.search(adjuster, direction, line_from)
        before, _ = self.follow(line_from, star, 20)
        step, pace = 4.0 * direction, None
        for _ in range(12):
            self.operator.call(SIMULATOR, ADJUSTERS[adjuster], step)
            turns += step
            if pace is None:
                after, cross = self.follow(line_from, before, 0.06 * self.size[0], sure=False)
            else:
                expected = before[0] + step * pace[0], before[1] + step * pace[1]
                after, cross = self.follow(line_from, expected, max(20, 0.1 * abs(step) * math.hypot(*pace)))
            if pace is None or abs(step) > 1:
                pace = (after[0] - before[0]) / step, (after[1] - before[1]) / step  # pixels an arc-minute
            speed = math.hypot(*pace)
            if speed < 0.2:
                raise RobotError("the star doesn't follow the adjuster")
            to_go = cross[0] - after[0], cross[1] - after[1]
            along = (to_go[0] * pace[0] + to_go[1] * pace[1]) / speed
            before, step = after, along / speed
            if abs(along) < 0.4:
                break
        aside = math.hypot(*to_go)
        self.notes[adjuster] = {"turned": turns, "left": aside, "on image": on_image}
        self.talk(f"{adjuster}: turned {turns:.1f}', the star is {aside:.1f} pixels from the cross hair")

    def correct_once(self, star):
        self.point_at(star)
        self.correct(star, self.measure())


def axis_error(operator):
    """Arc-minutes between the simulator's axis and the pole, for judging the robot."""
    latitude = math.radians(operator.get(SIMULATOR, "SiteLatitude"))
    azimuth = math.radians(operator.get(SIMULATOR, "PolarAzimuthError") / 60)
    elevation = math.radians(operator.get(SIMULATOR, "PolarElevationError") / 60)
    pole, axis = abs(latitude), abs(latitude) + elevation
    cosine = math.sin(pole) * math.sin(axis) + math.cos(pole) * math.cos(axis) * math.cos(azimuth)
    east = math.cos(axis) * math.sin(azimuth)
    up = math.cos(pole) * math.sin(axis) - math.sin(pole) * math.cos(axis) * math.cos(azimuth)
    return math.degrees(math.atan2(math.hypot(east, up), cosine)) * 60


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="path of vantrel-headless")
    parser.add_argument("--latitude", type=float, default=48.0)
    parser.add_argument("--longitude", type=float, default=10.0)
    parser.add_argument("--azimuth", type=float, default=40.0, help="the axis' error, arc-minutes")
    parser.add_argument("--elevation", type=float, default=-25.0)
    parser.add_argument("--rotation", type=float, default=30.0, help="of the camera, degrees")
    parser.add_argument("--mirrored", action="store_true")
    parser.add_argument("--declination", type=float, default=0.0, help="about where the star stands")
    parser.add_argument("--passes", type=int, default=2)
    parser.add_argument("--demand", type=float, default=1.0, help="most that may be left, arc-minutes")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as home:
        operator = start_program(options.program, home, options)
        robot = Robot(operator, home, talk=lambda text: print("    " + text))
        print(f"set up: {axis_error(operator):.2f}' from the pole")
        for number in range(1, options.passes + 1):
            star = robot.choose_star(options.declination)
            print(f"pass {number} on {star.name}")
            robot.correct_once(star)
            print(f"after pass {number}: {axis_error(operator):.2f}'")
        left = axis_error(operator)
        operator.close()
    return 0 if left <= options.demand else 1


def camera(binning):
    """The simulator's members of a camera with fewer and larger pixels in the same field, which saves time."""
    return {"PixelSize": 6.45 * binning, "CameraWidth": 1392 // binning, "CameraHeight": 1040 // binning}


def start_program(program, home, setup, start="2026-11-24T20:00:00Z", seed=1, binning=1, exact=False):
    """A program in virtual time whose simulator stands as the set-up's attributes say.

    `binning`: of its camera. `exact`: marks by full rotations instead of the written ones.
    """
    settings = os.path.join(home, "settings.json")
    with open(settings, "w", encoding="utf-8") as stream:
        stream.write('{"Main": {"MyTelescopeID": "%s", "SiteLatitude": "%s", "SiteLongitude": "%s"}, '
                     '"PolarAlign": {"PlateSolveMethod": "0", "DeltaRA": "20", "ExactMark": "%d"}, '
                     '"Solve": {"ScaleH": "%.2f", "ScaleV": "%.2f", "ExposeInterval": "1"}}'
                     % (SIMULATOR, setup.latitude, setup.longitude, exact, 3.6 * binning, 3.6 * binning))
    operator = Operator(program, "--virtual-time", "--start", start, "--home", home, "--seed", str(seed), "--settings",
                        settings)
    operator.wait(idle=True)
    for member, value in (("SiteLatitude", setup.latitude), ("SiteLongitude", setup.longitude),
                          ("PolarAzimuthError", setup.azimuth),
                          ("PolarElevationError", setup.elevation), ("CameraRotation", setup.rotation),
                          ("CameraMirrored", setup.mirrored), *camera(binning).items()):
        operator.put(SIMULATOR, member, value)
    return operator


if __name__ == "__main__":
    raise SystemExit(main())
