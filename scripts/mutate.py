#!/usr/bin/env python3
"""Asks the tests whether they would notice: changes single operators, constants and statements, and runs them.

All mutants are compiled in at once, each behind a switch, so that one build serves them all; the
environment variable VANTREL_MUTANT chooses one at run time. The choice of places is the same each time for a seed.
TREE is a checkout of its own with a configured build, whose sources are spoiled and put back at the end, e.g.

    git worktree add --detach ../mutants && cmake -S ../mutants --preset dev && scripts/mutate.py ../mutants engine

Commit nothing from TREE while it runs: the mutants would go with it.

A mutant that runs for ever is known by the processor's time that it takes, so a busy machine doesn't count as a kill.
"""

import argparse
import os
import random
import re
import resource
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

# Room under src/: its test program.
ROOMS = {name: f"{name}_test" for name in
         ("platform", "engine", "correction", "platesolve", "devices", "app", "sky", "fits", "catalogs", "solver",
          "imaging", "helpers", "headless", "qt", "pictures", "hosts", "page")}
ROOMS |= {f"{room}/{name}": f"{name}_test" for room, name in
          (("correction", "stars"), ("engine", "axis"), ("observatory", "panel"), ("observatory", "telescopes"),
           ("hosts", "alpaca"), ("hosts", "indi"), ("platform", "http"))}

SWAPS = [(" < ", " <= "), (" <= ", " < "), (" > ", " >= "), (" >= ", " > "), (" == ", " != "), (" != ", " == "),
         (" && ", " || "), (" || ", " && "), (" + ", " - "), (" - ", " + "), (" * ", " / "), (" / ", " * "),
         ("true", "false"), ("false", "true")]

# Guarded, because several files may be compiled as one.
SWITCH = ('#ifndef VANTREL_MUTANT_SWITCH\n#define VANTREL_MUTANT_SWITCH\n#include <cstdlib>\n'
          'namespace { inline bool mutantIs(int n) { static const int chosen = [] { const char* text = '
          'std::getenv("VANTREL_MUTANT"); return text ? std::atoi(text) : 0; }(); return chosen == n; } }\n'
          '#endif\n')


@dataclass
class Mutant:
    room: str
    path: Path
    line: int  # from 0
    before: str
    after: str
    text: str  # of the line with the switch; NUMBER stands for the mutant's number
    number: int = 0
    fate: str = ""

    def __str__(self):
        return f"{self.fate:9} {self.path}:{self.line + 1}: {self.before.strip()}  ->  {self.after.strip() or '(nothing)'}"


def without_literals(line):
    """The line with its texts and remarks blanked, so that places in it stay the same."""
    line = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', lambda m: '"' + "_" * (len(m[0]) - 2) + '"', line)
    return re.sub(r"//.*", lambda m: " " * len(m[0]), line)


def changes(expression):
    """The expression with one place changed, for every place."""
    plain = without_literals(expression)
    for old, new in SWAPS:
        pattern = re.escape(old) if old.startswith(" ") else rf"\b{old}\b"
        for found in re.finditer(pattern, plain):
            yield expression[:found.start()] + new + expression[found.end():]
    for found in re.finditer(r"(?<![\w.])\d+(\.\d+)?(?![\w.])", plain):
        number = found[0]
        more = str(int(number) + 1) if number.isdigit() else str(float(number) + 1)
        yield expression[:found.start()] + more + expression[found.end():]
    for found in re.finditer(r"(?<=[\s(])!(?=[\w(])", plain):
        yield expression[:found.start()] + expression[found.end():]


def closing(plain, opening):
    depth = 0
    for place in range(opening, len(plain)):
        depth += {"(": 1, ")": -1}.get(plain[place], 0)
        if depth == 0:
            return place
    return None


def mutants_of_line(line):
    """Pairs: what the line becomes, and the line with both behind the switch."""
    plain = without_literals(line).rstrip()
    line = line[:len(plain)]
    condition = re.match(r"(\s+(?:\} else )?(?:if|while) )\(", plain)
    if condition:
        end = closing(plain, condition.end() - 1)
        if end is None or ";" in plain[:end] or re.match(r"\s*(const|auto)\b", plain[condition.end():]):
            return
        test, rest = line[condition.end():end], line[end + 1:]
        for changed in [*changes(test), f"!({test})"]:
            yield (f"{condition[1]}({changed}){rest}",
                   f"{condition[1]}(mutantIs(NUMBER) ? bool({changed}) : bool({test})){rest}")
        return
    if not re.match(r"\s{4,}[\w*(:].*;\s*$", plain) or plain.count(";") != 1 or set("{}") & set(plain):
        return
    statement = line.strip()
    indent = line[:len(line) - len(line.lstrip())]
    declaration = re.match(r"((?:const )?(?:auto|[\w:]+(?:<[\w:, ]+>)?)[*&]? \w+ = )(.*);$", statement)
    if declaration and not statement.startswith("return "):
        for changed in changes(declaration[2]):
            yield (f"{indent}{declaration[1]}{changed};",
                   f"{indent}{declaration[1]}mutantIs(NUMBER) ? ({changed}) : ({declaration[2]});")
        return
    if re.match(r"(using|static|constexpr|else|case|break|continue|friend|struct|class|typedef|throw)\b", statement):
        return
    replacements = list(changes(statement))
    if not statement.startswith("return") and re.match(r"[\w.:>\-\[\]()]+(\(.*\)| [-+*/]?= .*);$", statement):
        replacements.append("")
    for changed in replacements:
        yield indent + changed, f"{indent}{{ if (mutantIs(NUMBER)) {{ {changed} }} else {{ {statement} }} }}"


def mutants_of_file(room, path, tree):
    lines = (tree / path).read_text(encoding="utf-8").splitlines()
    for i, line in enumerate(lines):
        before = lines[i - 1].split("//")[0].rstrip() if i else ""
        if before and before[-1] not in ";{}:" or not line.startswith("    "):
            continue  # in the middle of a statement
        for after, text in mutants_of_line(line):
            yield Mutant(room, path, i, line, after, text)


def chosen(tree, room, count, seed, a_file):
    """Places spread over the room's files, no more than one on a line."""
    rng = random.Random(f"{seed} {room}")
    files = sorted(p.relative_to(tree) for p in (tree / "src" / room).glob("*.cpp")
                   if p.name != "main.cpp" and not p.name.endswith("_win32.cpp"))
    rng.shuffle(files)
    result = []
    for path in files:
        places = {}
        for mutant in mutants_of_file(room, path, tree):
            places.setdefault(mutant.line, []).append(mutant)
        lines = sorted(places)
        for line in rng.sample(lines, min(a_file, len(lines))):
            result.append(rng.choice(places[line]))
        if len(result) >= count:
            break
    return result[:count]


def write(tree, originals, mutants):
    for path, text in originals.items():
        lines = text.splitlines()
        for mutant in mutants:
            if mutant.path == path and mutant.fate != "unbuilt":
                lines[mutant.line] = mutant.text.replace("NUMBER", str(mutant.number))
        new = SWITCH + "\n".join(lines) + "\n"
        if (tree / path).read_text(encoding="utf-8") != new:
            (tree / path).write_text(new, encoding="utf-8")


def build(tree, preset, originals, mutants, targets):
    """Drops what doesn't compile until the rest does."""
    for _ in range(6):
        write(tree, originals, mutants)
        run = subprocess.run(["cmake", "--build", "--preset", preset, "--target", *targets, "--", "-k", "0"], cwd=tree,
                             capture_output=True, text=True)
        if run.returncode == 0:
            return
        wrong = {(m[1], int(m[2])) for m in re.finditer(r"(src/[\w/]+\.cpp):(\d+):\d+: error", run.stdout + run.stderr)}
        dropped = 0
        for mutant in mutants:
            if (str(mutant.path), mutant.line + 1 + SWITCH.count("\n")) in wrong and mutant.fate != "unbuilt":
                mutant.fate, dropped = "unbuilt", dropped + 1
        for mutant in mutants if not dropped else []:
            if str(mutant.path) in {path for path, _ in wrong} and mutant.fate != "unbuilt":
                mutant.fate, dropped = "unbuilt", dropped + 1  # the mistake shows elsewhere in the file
        if not dropped:
            break
    sys.exit("the mutants don't build:\n" + run.stdout[-3000:])


def passes(tree, preset, test, mutant, limit, arguments):
    """True when all tests pass within the limit; the seconds of the processor that they took."""
    environment = {**os.environ, "VANTREL_MUTANT": str(mutant)}
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with tempfile.TemporaryDirectory() as scratch:
        try:
            run = subprocess.run([tree.resolve() / "build" / preset / "bin" / test, "--gtest_fail_fast",
                                  "--gtest_brief=1", *arguments], cwd=scratch, env=environment,
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                 preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (limit, limit + 1)),
                                 timeout=60 + 20 * limit)  # one that waits for ever takes no processor
        except subprocess.TimeoutExpired:
            return False, limit
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return run.returncode == 0, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def survey(tree, options, mutants, test, arguments):
    """Asks the test program about those that stand; True when it killed any."""
    standing = [m for m in mutants if m.fate in ("", "survived")]
    if not standing:
        return False
    well, seconds = passes(tree, options.preset, test, 0, 1200, arguments)
    if not well:
        sys.exit(f"{test} fails without a mutant")
    for mutant in standing:
        well, _ = passes(tree, options.preset, test, mutant.number, 10 + int(4 * seconds), arguments)
        mutant.fate = "survived" if well else "killed"
    return any(m.fate == "killed" for m in standing)


def report(room, mutants):
    counts = {fate: sum(m.fate == fate for m in mutants) for fate in ("killed", "survived", "unbuilt")}
    print(f"{room}: " + ", ".join(f"{n} {fate}" for fate, n in counts.items()), flush=True)
    for mutant in mutants:
        if mutant.fate != "unbuilt":
            print(f"  {mutant.number} {mutant}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tree", type=Path)
    parser.add_argument("rooms", nargs="*", help=f"of {', '.join(ROOMS)}; all of them when left out")
    parser.add_argument("--count", type=int, default=12, help="mutants in a room, some of which won't compile")
    parser.add_argument("--per-file", type=int, default=2)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--preset", default="dev")
    parser.add_argument("--also", action="append", default=[], help="test program that is asked about survivors")
    parser.add_argument("--filter", help="of the tests, as GoogleTest's")
    options = parser.parse_args()
    unknown = set(options.rooms) - set(ROOMS)
    if unknown:
        parser.error(f"no such room: {', '.join(sorted(unknown))}")

    rooms = [room for room in ROOMS if not options.rooms or room in options.rooms]
    found = {room: chosen(options.tree, room, options.count, options.seed, options.per_file) for room in rooms}
    mutants = [mutant for room in rooms for mutant in found[room]]
    for number, mutant in enumerate(mutants, 1):
        mutant.number = number
    originals = {m.path: (options.tree / m.path).read_text(encoding="utf-8") for m in mutants}
    arguments = [f"--gtest_filter={options.filter}"] if options.filter else []
    try:
        build(options.tree, options.preset, originals, mutants, sorted({*map(ROOMS.get, rooms), *options.also}))
        for room in rooms:
            survey(options.tree, options, found[room], ROOMS[room], arguments)
            report(room, found[room])
        for test in options.also:
            if survey(options.tree, options, mutants, test, arguments):
                report(f"with {test}", mutants)
    finally:
        for path, text in originals.items():
            (options.tree / path).write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
