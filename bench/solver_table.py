#!/usr/bin/env python3
"""Solves the sets of fields that solver-fields has drawn, and prints CPU time and errors of each set.

    build/bench/bin/solver-fields /tmp/fields
    bench/solver_table.py /tmp/fields --program build/bench/bin/vantrel-solve --peer build/bench/bin/peer-solver

Every field is solved by a process of its own, which gets a start one degree off and a scale 3 % off. CPU is user and
system time of the whole process, start included: of each field the least of the runs, since whatever else the machine
does only adds to it, and of a set the median of its fields. Centres are held against the drawn ones, in arcseconds; the
last two columns of ours are the mean squares of the errors of centre (along each axis) and roll in units of what the program
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


def answer_of(command):
    """The solution, or nothing, and CPU seconds."""
    run = subprocess.Popen(command, stdout=subprocess.PIPE)
    output = run.stdout.read()
    _, _, used = os.wait4(run.pid, 0)
    answer = json.loads(output)
    return answer if answer["solved"] else None, used.ru_utime + used.ru_stime


def own_command(program, path, field):
    return [program, path, "--json", "--ra", str(float(field["start_ra_deg"]) % 360 / 15),
            "--dec", field["start_dec_deg"], "--scale", field["start_scale"]]


def peer_command(program, path, field):
    return [program, path, str(float(field["start_ra_deg"]) % 360), field["start_dec_deg"], field["start_scale"]]


def best_of(runs):
    """The solution of the first, and the least of the CPU times."""
    return runs[0][0], min(cpu for _, cpu in runs)


def roll_error(answer, field):
    """Arcseconds between the turns of the fitted and the drawn matrix."""
    true = [float(field[f"cd{r}_{c}"]) for r in (1, 2) for c in (1, 2)]
    hand = 1 if true[0] * true[3] - true[1] * true[2] > 0 else -1

    def turn(cd):
        return math.atan2(cd[2] - hand * cd[1], cd[0] + hand * cd[3])

    return math.remainder(turn(answer["cd"]) - turn(true), 2 * math.pi) / math.pi * 648000


def centre_offs(rows):
    """Of those that were solved, arcseconds."""
    return [3600 * separation(answer["ra_deg"], answer["dec_deg"], float(field["ra_deg"]), float(field["dec_deg"]))
            for field, answer, _ in rows if answer]


def told_errors(rows):
    """Mean squares of the errors in units of what the program tells of them: centre, roll; and the median roll's error."""
    found = [(field, answer) for field, answer, _ in rows if answer]
    turns = [abs(roll_error(answer, field)) for field, answer in found]
    centres = statistics.mean(off ** 2 / answer["centre_error_arcsec"] ** 2
                              for off, (_, answer) in zip(centre_offs(rows), found)) / 2
    rolls = statistics.mean((turn / answer["roll_error_deg"] / 3600) ** 2 for turn, (_, answer) in zip(turns, found))
    return centres, rolls, statistics.median(turns)


def summary(rows):
    """How many were solved, and the medians of CPU seconds and of the centres' errors."""
    offs = centre_offs(rows)
    cpu = statistics.median(cpu for *_, cpu in rows)
    text = f"{len(offs):>5} of {len(rows):<2}{cpu:9.4f}{statistics.median(offs) if offs else math.nan:9.3f}"
    return text, cpu


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--program", default="build/bench/bin/vantrel-solve")
    parser.add_argument("--peer", help="build/bench/bin/peer-solver: to be run beside, field by field")
    parser.add_argument("--runs", type=int, default=7)
    options = parser.parse_args()
    own, peer = collections.defaultdict(list), collections.defaultdict(list)
    with open(os.path.join(options.folder, "fields.csv"), newline="") as table:
        for field in csv.DictReader(table):
            path = os.path.join(options.folder, field["file"])
            runs, peer_runs = [], []
            for _ in range(options.runs):
                runs.append(answer_of(own_command(options.program, path, field)))
                if options.peer:
                    peer_runs.append(answer_of(peer_command(options.peer, path, field)))
            own[field["set"]].append((field, *best_of(runs)))
            if options.peer:
                peer[field["set"]].append((field, *best_of(peer_runs)))
    heading = f"{'set':>8}{'solved':>10}{'CPU s':>9}{'centre':>9}{'worst':>9}{'roll':>8}{'chi2':>6}{'chi2':>6}"
    print(heading + (f"{'peer':>10}{'CPU s':>9}{'centre':>9}{'ratio':>7}" if options.peer else ""))
    for name, rows in own.items():
        text, cpu = summary(rows)
        centres, rolls, turn = told_errors(rows)
        line = f"{name:>8}{text}{max(centre_offs(rows)):9.3f}{turn:8.1f}{centres:6.2f}{rolls:6.2f}"
        if options.peer:
            peer_text, peer_cpu = summary(peer[name])
            line += f"{peer_text}{peer_cpu / cpu:7.1f}"
        print(line)


if __name__ == "__main__":
    main()
