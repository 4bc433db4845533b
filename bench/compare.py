#!/usr/bin/env python3
"""How the speed of two states of the program compares, by the whole benchmark suite.

    bench/compare.py                   the working tree with the stored baseline
    bench/compare.py COMMIT            the working tree with a commit
    bench/compare.py COMMIT COMMIT     two commits, the older one first
    bench/compare.py --store           measures the working tree and makes it the baseline

Each commit is built with the bench preset in a temporary worktree; the working tree has to be built. The two states
are measured in turns, so that a busy machine is busy for both; what counts is the median of the CPU times. Marked
is what differs by more than --least and by more than three times what the repetitions scatter.
"""

import argparse
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BASELINE = ROOT / "bench" / "baseline.json"
PROGRAMS = "build/bench/bin"
UNITS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def checkout(commit, folder):
    """A worktree of the commit with its benchmarks built."""
    tree = Path(folder) / re.sub(r"\W", "-", commit)
    subprocess.run(["git", "worktree", "add", "--detach", str(tree), commit], cwd=ROOT, check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    print(f"building {commit}", file=sys.stderr)
    for command in (["cmake", "--preset", "bench"], ["cmake", "--build", "--preset", "bench"]):
        subprocess.run(command, cwd=tree, check=True, stdout=subprocess.DEVNULL)
    return tree


def run_once(tree, options, catalogs):
    """One pass over every benchmark program: name to seconds of CPU time. Catalogues are made in the folder once."""
    times = {}
    programs = sorted((tree / PROGRAMS).glob("*bench"))
    if not programs:
        sys.exit(f"no benchmarks in {tree / PROGRAMS}: build with the bench preset first")
    for program in programs:
        if options.only and not re.search(options.only, program.name):
            continue
        with tempfile.TemporaryDirectory() as folder:
            out = Path(folder) / "out.json"
            environment = {"VANTREL_BENCH_TREES": catalogs, **os.environ, "TMPDIR": folder}
            subprocess.run([program, f"--benchmark_out={out}", "--benchmark_out_format=json",
                            f"--benchmark_min_time={options.seconds}"], cwd=folder, check=True, env=environment,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            measured = json.loads(out.read_text(encoding="utf-8"))["benchmarks"]
        for entry in measured:
            if entry.get("run_type") != "aggregate" and not entry.get("error_occurred"):
                times[f"{program.name}: {entry['name']}"] = entry["cpu_time"] * UNITS[entry["time_unit"]]
    return times


def machine():
    """What the figures were measured on."""
    cpu = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                if line.startswith("model name")), platform.processor())
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]
    commit = subprocess.run(["git", "describe", "--always", "--dirty"], cwd=ROOT, capture_output=True, text=True,
                            check=True).stdout.strip()
    return {"cpu": cpu, "num_cpus": os.cpu_count(), "system": f"{platform.system()} {platform.machine()}",
            "compiler": compiler, "commit": commit, "load_avg": list(os.getloadavg())}


def store(passes, context):
    """In the form of Google Benchmark's own output: one entry for every repetition."""
    entries = [{"name": name, "run_name": name, "run_type": "iteration", "repetitions": len(passes),
                "repetition_index": index, "cpu_time": times[name], "time_unit": "s"}
               for name in passes[0] for index, times in enumerate(passes) if name in times]
    rows = ",\n".join("    " + json.dumps(entry) for entry in entries)
    BASELINE.write_text(f'{{\n  "context": {json.dumps(context)},\n  "benchmarks": [\n{rows}\n  ]\n}}\n',
                        encoding="utf-8")


def stored():
    """The baseline's passes, and what they were measured on."""
    if not BASELINE.exists():
        sys.exit("there is no baseline yet: make one with --store")
    whole = json.loads(BASELINE.read_text(encoding="utf-8"))
    passes = []
    for entry in whole["benchmarks"]:
        while len(passes) <= entry["repetition_index"]:
            passes.append({})
        passes[entry["repetition_index"]][entry["name"]] = entry["cpu_time"] * UNITS[entry["time_unit"]]
    return passes, whole["context"]


def scatter(values):
    """Standard deviation, from the median of the distances from the median."""
    middle = statistics.median(values)
    return 1.4826 * statistics.median([abs(value - middle) for value in values])


def shown(seconds):
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= factor:
            return f"{seconds / factor:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def compare(before, after, least):
    """Prints the table; gives the number of benchmarks that became slower."""
    slower = 0
    print(f"{'benchmark':62} {'before':>9} {'after':>9} {'ratio':>6}  noise")
    names = list(dict.fromkeys(name for times in (*before, *after) for name in times))
    for name in names:
        old, new = ([times[name] for times in passes if name in times] for passes in (before, after))
        if not old or not new:
            print(f"{name[:62]:62} {'only ' + ('after' if new else 'before'):>19}")
            continue
        was, now = statistics.median(old), statistics.median(new)
        noise = 3 * (scatter(old) ** 2 + scatter(new) ** 2) ** 0.5 / was
        mark = ""
        if abs(now / was - 1) > max(noise, least):
            mark = "slower" if now > was else "faster"
            slower += now > was
        print(f"{name[:62]:62} {shown(was):>9} {shown(now):>9} {now / was:6.2f}  {noise:4.0%} {mark}")
    return slower


def measured(trees, options):
    """The passes over each tree, in turns."""
    passes = [[] for _ in trees]
    with tempfile.TemporaryDirectory() as catalogs:
        for turn in range(options.repetitions):
            print(f"pass {turn + 1} of {options.repetitions}", file=sys.stderr)
            for tree, done in zip(trees, passes):
                done.append(run_once(tree, options, catalogs))
    return passes


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("commits", nargs="*", metavar="COMMIT")
    parser.add_argument("--store", action="store_true", help="keep what is measured as the baseline")
    parser.add_argument("--repetitions", type=int, default=7)
    parser.add_argument("--seconds", type=float, default=0.2, help="that each benchmark runs in a pass, at least")
    parser.add_argument("--least", type=float, default=0.05, help="smallest difference that is marked")
    parser.add_argument("--only", help="programs whose name has this in it (regular expression)")
    options = parser.parse_args()
    if len(options.commits) > 2 or (options.store and options.commits):
        parser.error("two commits at most, and none with --store")

    if options.store:
        store(measured([ROOT], options)[0], machine())
        return 0
    if not options.commits:
        before, context = stored()
        print(f"baseline: {context['commit']} on {context['cpu']} ({context['num_cpus']} CPUs), {context['compiler']}")
        if context["cpu"] != machine()["cpu"]:
            print("this is another machine: ratios say little")
        return min(1, compare(before, measured([ROOT], options)[0], options.least))
    with tempfile.TemporaryDirectory() as folder:
        try:
            trees = [checkout(commit, folder) for commit in options.commits]
            before, after = measured(trees + [ROOT] * (2 - len(trees)), options)
        finally:
            for tree in Path(folder).iterdir():
                subprocess.run(["git", "worktree", "remove", "--force", str(tree)], cwd=ROOT, check=False)
    return min(1, compare(before, after, options.least))


if __name__ == "__main__":
    raise SystemExit(main())
