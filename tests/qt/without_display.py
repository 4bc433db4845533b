#!/usr/bin/env python3
"""Starts vantrel where no window can be opened: it has to say so in one line and to end, not to abort."""

import os
import subprocess
import sys
import tempfile

PLACES = {
    "no display": ({}, "neither DISPLAY nor WAYLAND_DISPLAY is set"),
    "a display that nobody answers at": ({"DISPLAY": ":987"}, ":987"),
    "a platform that there is no plug-in for": ({"QT_QPA_PLATFORM": "abacus"}, "abacus"),
}


def main():
    program = sys.argv[1]
    usual = {name: value for name, value in os.environ.items() if not name.startswith(("QT_", "WAYLAND_", "DISPLAY"))}
    faults = []
    with tempfile.TemporaryDirectory() as home:
        for place, (variables, reason) in PLACES.items():
            run = subprocess.run(
                [program, "--home", home], env=usual | variables, capture_output=True, text=True, timeout=60
            )
            lines = run.stderr.splitlines()
            told = len(lines) == 1 and all(word in lines[0] for word in (reason, "--measure", "vantrel-headless"))
            if run.returncode != 1 or not told:
                faults.append(f"{place}: ends with {run.returncode} and says {run.stderr!r}")
        version = subprocess.run([program, "--version"], env=usual, capture_output=True, text=True, timeout=60)
        if version.returncode != 0:
            faults.append(f"--version ends with {version.returncode}: {version.stderr!r}")
    print("\n".join(faults) or "told in one line everywhere")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
