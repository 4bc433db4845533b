#!/usr/bin/env python3
"""A measurement and a correction through the calls of COM, guided by the pictures of a program that isn't ours.

The robot that corrects the built-in simulator works the same windows here. Time is real, and each mark takes the
whole picture through COM and back: the camera's pixels are few and large, in the usual field, and so are its stars.
"""

import argparse
import atexit
import os
import subprocess
import sys
import tempfile

import com_night
import robot_operator

CAMERA = {**robot_operator.camera(2), "Seeing": 6}
SCALE = "7.192"  # arc-seconds a pixel


class Robot(robot_operator.Robot):
    """One whose camera belongs to MaxIm."""

    def expose_for(self, seconds):
        self.operator.type("frmMain.txtExposeInterval", str(seconds))

    def picture(self):
        """The cross hair comes a moment after the picture: the program goes on living while it draws."""
        shown = super().picture()
        centring = "1. Center" in self.instructions()
        for _ in range(100):
            if not centring or shown.cross_hair():
                break
            self.operator.do("advance", seconds=0.1)
            path = os.path.join(self.folder, "shown.fit")
            self.save(path)
            shown = robot_operator.Picture(path)
        return shown

    def save(self, path):
        self.operator.call("MaxIm.CCDCamera", "SaveImage", "Z:" + path.replace("/", "\\"))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("observatory", help="com_observatory, started by a script")
    parser.add_argument("--demand", type=float, default=1.0, help="most that may be left, arc-minutes")
    options = parser.parse_args()
    # Whoever still serves is ended: Wine never tells a server of clients that went without letting go.
    atexit.register(subprocess.run, [options.observatory, "/program", "MaxIm"])
    robot_operator.SIMULATOR = com_night.MOUNT
    subprocess.run([options.observatory, "/register", "program"], check=True)
    subprocess.run([options.observatory, "/program", "MaxIm"], check=True)
    with tempfile.TemporaryDirectory() as folder, \
            com_night.Night(options.program, com_night.MOUNT, "MaxIm", ScaleH=SCALE, ScaleV=SCALE) as night:
        for member, value in CAMERA.items():
            night.vantrel.put(com_night.MOUNT, member, value)
        night.set_axis(com_night.AZIMUTH, com_night.ELEVATION)
        robot = Robot(night.vantrel, folder, talk=print)
        print(f"set up: {robot_operator.axis_error(night.vantrel):.2f}' from the pole")
        robot.correct_once(robot.choose_star())
        left = robot_operator.axis_error(night.vantrel)
        print(f"after the correction: {left:.2f}'")
    if left > options.demand:
        sys.exit("that is too much")


if __name__ == "__main__":
    main()
