#!/usr/bin/env python3
"""Kills vantrel-headless at random moments and looks at what is left.

Each time the settings file has to be whole, the log file has to hold every line that was logged until then, and
the next start has to work. Virtual time makes every life of a phase the same as its undisturbed one, so that the
log can be compared with it byte by byte.
"""

import argparse
import contextlib
import json
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time

SIMULATOR = {
    "Main": {"MyTelescopeID": "AxisSimulator.Telescope"},
    "PolarAlign": {"PlateSolveMethod": "0"},
    "Solve": {"ScaleH": "3.0", "ScaleV": "3.0"},
}
NOT_IN_FILE = 2  # the first lines come before the log file
LOGS = "Documents/Vantrel/Message Logs"
AFTERWARDS = "2026-11-25T20:00:00Z"


def wait(**condition):
    return {"do": "wait", "for": condition, "seconds": 36000}


UP = [wait(window="frmMain"), wait(idle=True)]
LINE = dict(wait(log=""), id="line")  # is answered when one more line was logged
STARTED = UP + [{"do": "time", "id": "begin"}]
PHASES = {
    "start-up": [{"do": "time", "id": "begin"}] + [LINE] * 6 + [wait(idle=True)],
    "run": STARTED
    + [
        {"do": "type", "control": "frmMain.txtDeltaRA", "text": "15"},
        {"do": "click", "control": "frmMain.cmdRun"},
    ]
    + [LINE] * 40
    + [
        wait(control="frmMain.cmdSkip", property="enabled", **{"is": True}),
        {"do": "click", "control": "frmMain.cmdSkip"},
        wait(idle=True),
    ],
    "series": STARTED
    + [
        {"do": "check", "control": "frmMain.chkExposeContinuousEnable", "value": 1},
        {"do": "type", "control": "frmMain.txtContinuousExposeDelay", "text": "1"},
        {"do": "click", "control": "frmMain.cmdExpose"},
        {"do": "advance", "seconds": 120},
        {"do": "click", "control": "frmMain.cmdExpose"},
        wait(idle=True),
    ],
    "shutdown": UP
    + [
        {"do": "type", "control": f"frmMain.{box}", "text": "7"}
        for box in ("txtSolveMinSiz", "txtSolveMinBrt", "txtPostExpDelay", "txtMaxSolveStars")
    ]
    + [{"do": "time", "id": "begin"}],
}


class Life:
    """One run of the program in a home of its own."""

    def __init__(self, program, home, commands, *options):
        self.home = pathlib.Path(home)
        self.began = time.monotonic()
        self.process = subprocess.Popen(
            [program, "--virtual-time", "--home", str(home), *options],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
        with contextlib.suppress(BrokenPipeError):
            self.process.stdin.write("".join(json.dumps(command) + "\n" for command in commands))
            self.process.stdin.close()
        self.begin = None  # when the phase began, seconds after the start
        self.replies = []

    def read_on(self, until_begin=False):
        for line in self.process.stdout:
            if not line.endswith("\n"):
                break
            self.replies.append(json.loads(line))
            if self.replies[-1].get("id") == "begin":
                self.begin = time.monotonic() - self.began
                if until_begin:
                    break

    def finish(self):
        self.read_on()
        status = self.process.wait()
        self.seconds = time.monotonic() - self.began
        return status

    def kill_in_phase(self, seconds):
        """True when the program was still alive so many seconds after its phase began."""
        self.read_on(until_begin=True)
        try:
            self.process.wait(timeout=seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
        return self.finish() == -9

    def lines_seen(self):
        return sum(1 for reply in self.replies if reply.get("id") == "line" and reply["ok"])

    def log(self):
        files = sorted((self.home / LOGS).glob("*.log"))
        return files[-1].read_bytes() if files else b""


def settings_of(home):
    """The stored values; raises ValueError when the file isn't whole."""
    text = (pathlib.Path(home) / "settings").read_bytes().decode()
    if not text.endswith("\n"):
        raise ValueError("the settings end in the middle of a line")
    lines = [line.split("\t") for line in text.splitlines()]
    return {(section.lower(), key.lower()): value for section, key, value in lines}


def faults_of(life, undisturbed, keys, program):
    """What is wrong with what the killed program left; an empty list when all is well."""
    faults = []
    try:
        lost = keys - settings_of(life.home).keys()
        if lost:
            faults.append(f"settings lost: {sorted(lost)}")
    except ValueError as error:
        faults.append(f"settings: {error}")

    log = life.log()
    if not undisturbed.log().startswith(log) or (log and not log.endswith(b"\r\n")):
        faults.append("the log differs from an undisturbed one")
    if log.count(b"\r\n") < life.lines_seen() - NOT_IN_FILE:
        faults.append(f"{life.lines_seen()} lines were logged, {log.count(bytes([13, 10]))} are in the file")

    commands = UP + [{"do": "log", "from": 0, "id": "log"}]
    again = Life(program, life.home, commands, "--start", AFTERWARDS)
    if again.finish() != 0:
        faults.append("the next start fails")
    lines = next((reply["lines"] for reply in again.replies if reply.get("id") == "log"), [])
    if not any("is connected" in line for line in lines) or any("Error" in line for line in lines):
        faults.append(f"the next start is not as usual: {lines}")
    if list(life.home.glob("*.damaged")):
        faults.append("the settings were found damaged")
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    killed = bad = 0
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        preset = folder / "preset.json"
        preset.write_text(json.dumps(SIMULATOR))
        Life(arguments.program, folder / "usual", UP, "--settings", str(preset)).finish()
        for log in (folder / "usual" / LOGS).iterdir():
            log.unlink()  # it has the name that the others' will have
        keys = settings_of(folder / "usual").keys()

        undisturbed, lasts = {}, {}
        for phase, commands in PHASES.items():
            shutil.copytree(folder / "usual", folder / phase)
            undisturbed[phase] = Life(arguments.program, folder / phase, commands)
            if undisturbed[phase].finish() != 0 or undisturbed[phase].begin is None:
                sys.exit(f"{phase}: the undisturbed life fails: {undisturbed[phase].replies[-3:]}")
            lasts[phase] = undisturbed[phase].seconds - undisturbed[phase].begin

        for number in range(arguments.kills):
            phase = list(PHASES)[number % len(PHASES)]
            home = folder / "killed"
            shutil.copytree(folder / "usual", home)
            life = Life(arguments.program, home, PHASES[phase])
            if life.kill_in_phase(chance.uniform(0, lasts[phase])):
                killed += 1
            else:
                lasts[phase] *= 0.8  # the machine is faster than it was
            for fault in faults_of(life, undisturbed[phase], keys, arguments.program):
                bad += 1
                print(f"{phase}, kill {number}: {fault}")
            shutil.rmtree(home)

    print(f"{killed} were killed, {arguments.kills - killed} had ended before: {bad} faults")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
