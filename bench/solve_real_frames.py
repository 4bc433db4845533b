#!/usr/bin/env python3
"""Solves a folder of real frames and prints how well that went.

The folder holds the frames (NAME.fits or NAME.fits.gz) and frames.csv with their reference positions: columns file,
nx, ny, ra_deg, dec_deg, scale_arcsec_px. Each frame with a position is solved from a start position that is off by a
degree, in a direction that differs from frame to frame, and from a scale that is 3 % off. With --blind no position is
given, neither on the command line nor by the header; frames without a reference position are then tried too, with the
scale of frames whose names begin alike.
"""

import argparse
import csv
import gzip
import json
import math
import os
import resource
import subprocess
import sys
import tempfile


POINTING = {"RA", "DEC", "OBJCTRA", "OBJCTDEC", "FOCALLEN", "XPIXSZ", "YPIXSZ", "XBINNING", "CRVAL1", "CRVAL2",
            "CRPIX1", "CRPIX2", "CTYPE1", "CTYPE2", "CD1_1", "CD1_2", "CD2_1", "CD2_2", "CDELT1", "CDELT2",
            "CROTA2", "SCALE", "PIXSCALE"}


def plain_copy(source, target):
    """The file unpacked, with the cards that tell where it points turned into comments."""
    with (gzip.open(source) if source.endswith(".gz") else open(source, "rb")) as stream:
        data = bytearray(stream.read())
    for at in range(0, len(data), 80):
        name = bytes(data[at:at + 8]).decode("ascii", "replace").strip()
        if name == "END":
            break
        if name in POINTING:
            data[at:at + 80] = b"COMMENT".ljust(80)
    with open(target, "wb") as stream:
        stream.write(data)


def separation(ra1, dec1, ra2, dec2):
    ra1, dec1, ra2, dec2 = map(math.radians, (ra1, dec1, ra2, dec2))
    h = math.sin((dec2 - dec1) / 2) ** 2 + math.cos(dec1) * math.cos(dec2) * math.sin((ra2 - ra1) / 2) ** 2
    return math.degrees(2 * math.asin(min(1, math.sqrt(h))))


def displaced(ra, dec, angle, distance):
    """The position this many degrees away at this position angle."""
    d, a, r = math.radians(dec), math.radians(angle), math.radians(distance)
    dec2 = math.asin(math.sin(d) * math.cos(r) + math.cos(d) * math.sin(r) * math.cos(a))
    ra2 = math.radians(ra) + math.atan2(
        math.sin(a) * math.sin(r) * math.cos(d), math.cos(r) - math.sin(d) * math.sin(dec2))
    return math.degrees(ra2) % 360, math.degrees(dec2)


def solve(options, path, place, scale, number):
    """The program's answer (nothing when it can't read the file) and its CPU time in milliseconds."""
    with tempfile.TemporaryDirectory() as folder:
        words = ["--radius", "180"]
        if options.blind:
            plain_copy(path, os.path.join(folder, "frame.fits"))
            path = os.path.join(folder, "frame.fits")
        else:
            start = displaced(*place, number * 73.0, options.offset)
            words = ["--ra", str(start[0] / 15), "--dec", str(start[1])]
        told = scale * (1 + (1 if number % 2 else -1) * options.scale_error)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        run = subprocess.run([options.program, path, *words, "--scale", str(told), "--json"], capture_output=True,
                             text=True)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = 1000 * (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
    if run.returncode == 2:
        print(run.stderr.strip())
        return None, cpu
    return json.loads(run.stdout), cpu


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--program", default="build/release/bin/vantrel-solve")
    parser.add_argument("--offset", type=float, default=1.0, help="degrees that the start is off")
    parser.add_argument("--scale-error", type=float, default=0.03)
    parser.add_argument("--blind", action="store_true", help="give no position")
    options = parser.parse_args()

    with open(os.path.join(options.folder, "frames.csv"), newline="") as table:
        rows = list(csv.DictReader(table))
    scales = {row["file"].split("__")[0]: float(row["scale_arcsec_px"]) for row in rows if row["ra_deg"]}
    solved = wrong = positions = 0
    print(f"{'frame':50} {'result':10} {'offset px':>9} {'scale':>9} {'stars':>5} {'match':>5} {'rms':>6} {'CPU ms':>7}")
    for number, row in enumerate(rows):
        name = row["file"]
        path = next((p for p in (os.path.join(options.folder, name + e) for e in (".fits", ".fits.gz"))
                     if os.path.exists(p)), None)
        known = bool(row["ra_deg"])
        if path is None or not (known or options.blind):
            print(f"{name:50} {'missing' if path is None else 'no position':10}")
            continue
        positions += known
        scale = float(row["scale_arcsec_px"] or scales[name.split("__")[0]])
        place = (float(row["ra_deg"]), float(row["dec_deg"])) if known else None
        answer, cpu = solve(options, path, place, scale, number)
        if answer is None:
            print(f"{name:50} {'error':10}")
            continue
        if not answer["solved"]:
            print(f"{name:50} {'not solved':10} {'':9} {'':9} {answer['stars_found']:5} {'':5} {'':6} {cpu:7.1f}")
            continue
        off = separation(*place, answer["ra_deg"], answer["dec_deg"]) * 3600 / scale if known else math.nan
        good = off < max(5, 0.02 * float(row["nx"]))
        solved += good
        wrong += known and not good
        print(f"{name:50} {'solved' if good or not known else 'WRONG':10} {off:9.2f} {answer['scale_x'] / scale:9.5f}"
              f" {answer['stars_found']:5} {answer['matched']:5} {answer['residual_arcsec'] / scale:6.2f} {cpu:7.1f}")
    print(f"{solved} of {positions} frames with a position solved, {wrong} wrong")
    return 0 if wrong == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
