#!/usr/bin/env python3
"""Solves the sets of fields that solver-fields has drawn, and prints CPU time and errors of each set.

    build/bench/bin/solver-fields /tmp/fields
    bench/solver_table.py /tmp/fields --program build/bench/bin/vantrel-solve

Every field is solved by a process of its own, which gets a start one degree off and a scale 3 % off. CPU is user and
system time of the whole process, start included: of each field the least of the runs, since whatever else the machine
does only adds to it, and of a set the median of its fields. Centres are held against the drawn ones, in arcseconds; the
last two columns are the mean squares of the errors of centre (along each axis) and roll in units of what the program
tells of them: 1 where that is right. Fields may also be photographs: a folder with a fields.csv of the same columns.
"""

import argparse
import collections
import csv
import json
import math
import os
import statistics
import subprocess

from solve_real_frames import separation


def solved(program, folder, field):
    """The solution, or nothing, and CPU seconds."""
    command = [program, os.path.join(folder, field["file"]), "--json", "--ra", str(float(field["start_ra_deg"]) % 360 / 15),
               "--dec", field["start_dec_deg"], "--scale", field["start_scale"]]
    run = subprocess.Popen(command, stdout=subprocess.PIPE)
    output = run.stdout.read()
    _, _, used = os.wait4(run.pid, 0)
    answer = json.loads(output)
    return answer if answer["solved"] else None, used.ru_utime + used.ru_stime


def roll_error(answer, field):
    """Arcseconds between the turns of the fitted and the drawn matrix."""
    true = [float(field[f"cd{r}_{c}"]) for r in (1, 2) for c in (1, 2)]
    hand = 1 if true[0] * true[3] - true[1] * true[2] > 0 else -1

    def turn(cd):
        return math.atan2(cd[2] - hand * cd[1], cd[0] + hand * cd[3])

    return math.remainder(turn(answer["cd"]) - turn(true), 2 * math.pi) / math.pi * 648000


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--program", default="build/bench/bin/vantrel-solve")
    parser.add_argument("--runs", type=int, default=7)
    options = parser.parse_args()
    sets = collections.defaultdict(list)
    with open(os.path.join(options.folder, "fields.csv"), newline="") as table:
        for field in csv.DictReader(table):
            runs = [solved(options.program, options.folder, field) for _ in range(options.runs)]
            sets[field["set"]].append((field, runs[0][0], min(cpu for _, cpu in runs)))
    print(f"{'set':>8}{'solved':>10}{'CPU s':>9}{'centre':>10}{'worst':>9}{'roll':>9}{'chi2':>7}{'chi2':>7}")
    for name, rows in sets.items():
        found = [(field, answer) for field, answer, _ in rows if answer]
        offs = [3600 * separation(a["ra_deg"], a["dec_deg"], float(f["ra_deg"]), float(f["dec_deg"]))
                for f, a in found]
        turns = [abs(roll_error(a, f)) for f, a in found]
        sizes = statistics.mean(off ** 2 / a["centre_error_arcsec"] ** 2 for off, (_, a) in zip(offs, found)) / 2
        rolls = statistics.mean((t / a["roll_error_deg"] / 3600) ** 2 for t, (_, a) in zip(turns, found))
        print(f"{name:>8}{len(found):>5} of {len(rows):<2}{statistics.median(cpu for *_, cpu in rows):9.4f}"
              f"{statistics.median(offs):10.3f}{max(offs):9.3f}{statistics.median(turns):9.1f}"
              f"{sizes:7.2f}{rolls:7.2f}")


if __name__ == "__main__":
    main()
