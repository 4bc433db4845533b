#!/usr/bin/env python3
"""Finds the axis about which one rig was turned between frames, from the frames' solved positions and orientations.

Seen from the camera the axis stands still while the rig turns, so its direction in camera coordinates must be the
same in all frames. The sky moves meanwhile: the times since the first frame are fitted along with the axis, or taken
as zero with --simultaneous. The frames are named with the position that they are solved from.
"""

import argparse
import json
import math
import subprocess

SIDEREAL_RATE = math.radians(15.041067 / 3600)  # per second


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def direction(ra, dec):
    ra, dec = math.radians(ra), math.radians(dec)
    return [math.cos(dec) * math.cos(ra), math.cos(dec) * math.sin(ra), math.sin(dec)]


def attitude(program, file, ra, dec, scale):
    """The camera's axes on the sky: along a row, down a column, and ahead."""
    run = subprocess.run([program, file, "--ra", str(ra / 15), "--dec", str(dec), "--scale", str(scale), "--json"],
                         capture_output=True, text=True)
    if run.returncode != 0:
        raise SystemExit(f"{file}: not solved. {run.stderr}")
    solved = json.loads(run.stdout)
    print(f"{file}: RA {solved['ra_deg']:.4f} Dec {solved['dec_deg']:.4f} roll {solved['rotation']:.3f}"
          f" ({solved['matched']} stars, {solved['residual_arcsec']:.1f} arcsec)")
    ahead = direction(solved["ra_deg"], solved["dec_deg"])
    east = [-math.sin(math.radians(solved["ra_deg"])), math.cos(math.radians(solved["ra_deg"])), 0.0]
    north = cross(ahead, east)
    roll, hand = math.radians(solved["rotation"]), math.copysign(1, solved["scale_y"])
    along = [math.cos(roll) * e + math.sin(roll) * n for e, n in zip(east, north)]
    down = [hand * (math.cos(roll) * n - math.sin(roll) * e) for e, n in zip(east, north)]
    return along, down, ahead


def residuals(attitudes, unknowns, simultaneous):
    """Differences of the axis in camera coordinates between each later frame and the first."""
    ra, dec, *times = unknowns
    if simultaneous:
        times = [0.0] * (len(attitudes) - 1)
    seen = []
    for axes, time in zip(attitudes, [0.0, *times]):
        # After this time the same direction on the ground points this much farther in right ascension.
        there = direction(ra + math.degrees(SIDEREAL_RATE * time), dec)
        seen.append([dot(axis, there) for axis in axes])
    return [later - first for frame in seen[1:] for later, first in zip(frame, seen[0])]


def solved(matrix, right):
    n = len(right)
    rows = [row[:] + [value] for row, value in zip(matrix, right)]
    for i in range(n):
        pivot = max(range(i, n), key=lambda r: abs(rows[r][i]))
        rows[i], rows[pivot] = rows[pivot], rows[i]
        for r in range(n):
            if r != i:
                factor = rows[r][i] / rows[i][i]
                rows[r] = [a - factor * b for a, b in zip(rows[r], rows[i])]
    return [rows[i][n] / rows[i][i] for i in range(n)]


def fitted(attitudes, start, simultaneous):
    """Gauss and Newton's method."""
    unknowns = list(start) + ([] if simultaneous else [0.0] * (len(attitudes) - 1))
    for _ in range(30):
        base = residuals(attitudes, unknowns, simultaneous)
        slopes = []
        for i in range(len(unknowns)):
            moved = unknowns[:]
            moved[i] += 1e-4
            slopes.append([(a - b) / 1e-4 for a, b in zip(residuals(attitudes, moved, simultaneous), base)])
        step = solved([[dot(a, b) for b in slopes] for a in slopes], [-dot(a, base) for a in slopes])
        unknowns = [u + s for u, s in zip(unknowns, step)]
    left = residuals(attitudes, unknowns, simultaneous)
    return unknowns, math.degrees(math.sqrt(dot(left, left) / (len(attitudes) - 1))) * 3600


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default="build/release/bin/vantrel-solve")
    parser.add_argument("--scale", type=float, required=True, help="arcseconds per pixel")
    parser.add_argument("--axis", required=True, help="RA,DEC in degrees about where the axis points")
    parser.add_argument("--simultaneous", action="store_true")
    parser.add_argument("frames", nargs="+", help="FILE@RA,DEC in degrees")
    options = parser.parse_args()
    attitudes = []
    for frame in options.frames:
        file, place = frame.rsplit("@", 1)
        attitudes.append(attitude(options.program, file, *map(float, place.split(",")), options.scale))
    unknowns, residual = fitted(attitudes, map(float, options.axis.split(",")), options.simultaneous)
    print(f"axis: RA {unknowns[0] % 360:.3f} Dec {unknowns[1]:.3f} at the first frame, residual {residual:.1f} arcsec")
    if not options.simultaneous:
        print("seconds since the first frame:", " ".join(f"{t:.1f}" for t in unknowns[2:]))


if __name__ == "__main__":
    main()
