#!/usr/bin/env python3
"""Solves the same frames with vantrel-solve and with whatever other solvers this machine has, in one run.

The folder is laid out as for solve_real_frames.py. Every solver gets the same plain FITS file without positions,
scales or lens in its header, and the same hints on its command line: a scale that is 3 % off, and, unless --blind,
a position that is a degree off. Looked for on PATH: solve-field (with its index files) and astap or astap_cli (with
a star database: --astap-database names its folder). What is missing is said, not guessed.

CPU is user and system time of the solver and of all processes that it started.
"""

import argparse
import csv
import json
import math
import os
import resource
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile

from solve_real_frames import displaced, plain_copy, separation


class Vantrel:
    name = "vantrel-solve"

    def __init__(self, program):
        self.program = program

    def command(self, frame, folder):
        words = [self.program, frame["path"], "--scale", str(frame["scale"]), "--json"]
        if frame["start"]:
            words += ["--ra", str(frame["start"][0] / 15), "--dec", str(frame["start"][1])]
        else:
            words += ["--radius", "180"]
        return words

    def centre(self, folder, output):
        answer = json.loads(output or "{}")
        return (answer["ra_deg"], answer["dec_deg"]) if answer.get("solved") else None


class SolveField:
    name = "solve-field"

    def __init__(self, program):
        self.program = program

    def command(self, frame, folder):
        words = [self.program, frame["path"], "--dir", folder, "--wcs", os.path.join(folder, "out.wcs"),
                 "--no-plots", "--overwrite", "--crpix-center", "--temp-axy", "--cpulimit", "60",
                 "--scale-units", "arcsecperpix", "--scale-low", str(frame["scale"] * 0.9), "--scale-high",
                 str(frame["scale"] * 1.1)]
        for output in ("new-fits", "index-xyls", "match", "rdls", "corr"):
            words += ["--" + output, "none"]
        if frame["start"]:
            words += ["--ra", str(frame["start"][0]), "--dec", str(frame["start"][1]), "--radius",
                      str(max(2, frame["diagonal"]))]
        return words

    def centre(self, folder, output):
        path = os.path.join(folder, "out.wcs")
        if not os.path.exists(path):
            return None
        with open(path, "rb") as stream:
            header = stream.read(28800).decode("ascii", "replace")
        values = {}
        for at in range(0, len(header), 80):
            name = header[at:at + 8].strip()
            if name in ("CRVAL1", "CRVAL2"):
                values[name] = float(header[at + 10:at + 80].split("/")[0])
        return values["CRVAL1"], values["CRVAL2"]


class Astap:
    name = "astap"

    def __init__(self, program, database):
        self.program = program
        self.database = database

    def command(self, frame, folder):
        words = [self.program, "-f", frame["path"], "-o", os.path.join(folder, "out"), "-fov",
                 str(frame["height"]), "-r", "180"]
        if frame["start"]:
            words[-1] = str(max(2, frame["diagonal"]))
            words += ["-ra", str(frame["start"][0] / 15), "-spd", str(frame["start"][1] + 90)]
        return words + (["-d", self.database] if self.database else [])

    def centre(self, folder, output):
        path = os.path.join(folder, "out.ini")
        if not os.path.exists(path):
            return None
        with open(path) as stream:
            values = dict(line.strip().split("=", 1) for line in stream if "=" in line)
        if values.get("PLTSOLVD") != "T":
            return None
        return float(values["CRVAL1"]), float(values["CRVAL2"])


def installed(options):
    solvers = [Vantrel(options.program)]
    field = shutil.which("solve-field")
    if field:
        solvers.append(SolveField(field))
    else:
        print("solve-field is not installed")
    astap = shutil.which("astap") or shutil.which("astap_cli")
    folders = [options.astap_database] if options.astap_database else ["/opt/astap", "/usr/share/astap/data"]
    filled = [f for f in folders if os.path.isdir(f) and
              any(n.endswith((".290", ".1476", ".001")) for n in os.listdir(f))]
    if astap and filled:
        solvers.append(Astap(astap, filled[0]))
    else:
        print("astap is " + ("installed, but none of its star databases is" if astap else "not installed"))
    return solvers


def frames_of(options, folder):
    with open(os.path.join(options.folder, "frames.csv"), newline="") as table:
        rows = [row for row in csv.DictReader(table) if row["ra_deg"]]
    for number, row in enumerate(rows):
        source = next((p for p in (os.path.join(options.folder, row["file"] + e) for e in (".fits", ".fits.gz"))
                       if os.path.exists(p)), None)
        if source is None:
            continue
        path = os.path.join(folder, "frame.fits")
        plain_copy(source, path)
        place = float(row["ra_deg"]), float(row["dec_deg"])
        true_scale = float(row["scale_arcsec_px"])
        width, height = float(row["nx"]), float(row["ny"])
        yield {"name": row["file"], "path": path, "place": place, "true_scale": true_scale, "width": width,
               "scale": true_scale * (1.03 if number % 2 else 0.97),
               "height": height * true_scale / 3600,
               "diagonal": math.hypot(width, height) * true_scale / 3600,
               "start": None if options.blind else displaced(*place, number * 73.0, 1.0)}


def attempt(solver, frame, seconds):
    """Whether it solved the frame, in a word, pixels off, and CPU seconds."""
    with tempfile.TemporaryDirectory() as folder:
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        run = subprocess.Popen(solver.command(frame, folder), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               text=True, start_new_session=True)
        try:
            output, word = run.communicate(timeout=seconds)[0], "unsolved"
        except subprocess.TimeoutExpired:
            os.killpg(run.pid, signal.SIGKILL)  # with whatever it has started
            run.communicate()
            output, word = "", "given up"
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        centre = solver.centre(folder, output)
    if centre is None:
        return word, math.nan, cpu
    off = separation(*centre, *frame["place"]) * 3600 / frame["true_scale"]
    return ("solved" if off < max(5, 0.02 * frame["width"]) else "WRONG"), off, cpu


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--program", default="build/release/bin/vantrel-solve")
    parser.add_argument("--blind", action="store_true", help="without a position")
    parser.add_argument("--astap-database", help="folder of its star database")
    parser.add_argument("--seconds", type=float, default=120, help="after which a solver is given up")
    options = parser.parse_args()
    solvers = installed(options)
    results = {solver.name: [] for solver in solvers}
    with tempfile.TemporaryDirectory() as folder:
        print(f"{'frame':48}" + "".join(f"{s.name:>26}" for s in solvers))
        for frame in frames_of(options, folder):
            line = f"{frame['name']:48}"
            for solver in solvers:
                word, off, cpu = attempt(solver, frame, options.seconds)
                results[solver.name].append((word, off, cpu))
                line += f"{f'{off:.2f} px' if word == 'solved' else word:>14}{cpu:10.3f} s"
            print(line, flush=True)
    for name, rows in results.items():
        offs = [off for word, off, _ in rows if word == "solved"]
        print(f"{name}: {len(offs)} of {len(rows)} solved, {sum(w == 'WRONG' for w, _, _ in rows)} wrong, "
              f"{sum(w == 'given up' for w, _, _ in rows)} given up, CPU "
              f"{statistics.median(cpu for _, _, cpu in rows):.3f} s (median) "
              f"{max(cpu for _, _, cpu in rows):.3f} s (most), centre off by "
              f"{statistics.median(offs) if offs else math.nan:.2f} px (median)")
    return 0


if __name__ == "__main__":
    sys.exit(main())
