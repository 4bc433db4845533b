#!/usr/bin/env python3
"""How long a picture of 16 million pixels takes from the end of its exposure into the program, and until it is
solved: over INDI and Alpaca, from servers on this machine.

    device_latency.py BUILD-FOLDER [--pictures N]
"""

import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tools"), str(ROOT / "tests" / "hosts" / "measurement")]
import measure  # noqa: E402
from operator_session import Operator  # noqa: E402

WIDTH, HEIGHT = 4656, 3520
EXPOSURE = 2.0
CAMERA = "Vantrel.CCDCamera"
SETTINGS = {
    "PolarAlign": {"ImagingSoftware": "BuiltIn", "PlateSolveMethod": "0"},
    "Solve": {"CamBin": "1", "ScaleH": "3.6", "ScaleV": "3.6", "ExposeInterval": str(EXPOSURE)},
}


def seconds(operator):
    """From the end of an exposure to the picture, and to its solution."""
    operator.click("frmMain.cmdExposeSolve")
    begin = time.monotonic() + EXPOSURE
    time.sleep(EXPOSURE / 2)
    while not operator.get(CAMERA, "ImageReady"):
        time.sleep(0.002)
    picture = time.monotonic() - begin
    operator.wait(log="Solved using", seconds=60)
    solution = time.monotonic() - begin
    operator.wait(idle=True, seconds=60)
    return picture, solution


def run(name, devices, program, pictures):
    with tempfile.TemporaryDirectory() as home:
        stored = pathlib.Path(home) / "settings.json"
        stored.write_text(json.dumps({**SETTINGS, "Hosts": devices["Hosts"]}))
        operator = Operator(program, "--home", f"{home}/home", "--settings", str(stored))
        try:
            operator.wait(window="frmMain", seconds=60)
            operator.wait(idle=True, seconds=60)
            measure.choose_devices(operator, devices["mount"], devices["camera"])
            seconds(operator)
            found = [seconds(operator) for _ in range(pictures)]
        except Exception:
            print("\n".join(operator.log()), file=sys.stderr)
            raise
        finally:
            operator.close()
    for what, values in zip(("picture", "solution"), zip(*found)):
        print(f"{name}: {what} after {statistics.median(values):.2f} s ({min(values):.2f} to {max(values):.2f})")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--pictures", type=int, default=7)
    options = parser.parse_args()
    build = options.build.resolve()
    program = build / "bin" / "vantrel-headless"
    loopback = next((build / "tests" / "hosts" / "real_server").glob("libloopback_only.*"))
    with measure.indi_server(build / "bin" / "indi", loopback, (WIDTH, HEIGHT)) as devices:
        run("INDI", devices, program, options.pictures)
    with measure.alpaca_server(ROOT / "tests/hosts/alpaca_server.py", build / "bin" / "sky-picture",
                               {"width": WIDTH, "height": HEIGHT}) as devices:
        run("Alpaca", devices, program, options.pictures)


if __name__ == "__main__":
    main()
