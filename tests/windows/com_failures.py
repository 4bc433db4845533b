#!/usr/bin/env python3
"""Every member of the outside programs that a measurement uses fails, takes ten seconds, dies and hangs, through COM.

For each there is a run of its own: the fault is set, a measurement is begun, and while that goes on the window is read
again and again. It has to answer at all times, the measurement has to end and tell what failed, and with the fault gone
another one has to succeed, unless the program died, which Wine doesn't start again. Prints a table in Markdown. Takes an
hour and more; the folder that plays Windows is copied for each of the runs that go on at the same time.
"""

import argparse
import collections
import concurrent.futures
import os
import shutil
import subprocess
import sys
import tempfile
import time

import com_night
from operator_session import OperatorError

WINE = os.path.join(com_night.HERE, "..", "..", "scripts", "wine.sh")
HOW = ("fails", "slow", "dies", "hangs")
# What the log has to say first beside the usual lines when a member fails; others may fail unnoticed.
ERROR = "Error -2147220479: It is out of order "
# By what it says, with the name of the class before it where that is told.
SAID = {
    "{} modComponents Function GetTelescopeDec": "TestMount.Telescope.Declination",
    "modComponents Function GetTelescopeRA": "TestMount.Telescope.RightAscension",
    "{} Module modComponents Property Let camLinkEnabled": "MaxIm.CCDCamera.LinkEnabled CCDSoft.Camera.Connect",
    "{} Module modComponents Property Get camLinkEnabled": "CCDSoft.Camera.State",
    "{} Module modComponents Sub AcquireImage": "MaxIm.CCDCamera.BinX MaxIm.CCDCamera.BinY MaxIm.CCDCamera.SetFullFrame "
    "MaxIm.CCDCamera.MaxBinX MaxIm.CCDCamera.MaxBinY CCDSoft.Camera.BinX CCDSoft.Camera.BinY",
    "Module modComponents sub TakePicture": "MaxIm.CCDCamera.ImageReady",
    "{} Module modComponents sub TakeCCDSoftImage": "CCDSoft.Camera.Subframe CCDSoft.Camera.Frame "
    "CCDSoft.Camera.ExposureTime CCDSoft.Camera.TakeImage CCDSoft.Camera.IsExposureComplete",
    "{} Module modComponents Sub AttachCCDSoftImageToActiveImager": "CCDSoft.Image.AttachToActiveImager",
    "{} modUtilities Sub SaveImageToFile": "MaxIm.CCDCamera.SaveImage CCDSoft.Image.path CCDSoft.Image.Save",
}
MESSAGES = {
    "TestMount.Telescope.SlewToCoordinatesAsync": "Telescope Slew failed on Trial 1",
    "MaxIm.CCDCamera.Expose": "Error 32768: MaxIm DL Failed to start the exposure",
    "PinPoint.Plate.AttachFITS": "AttachFITS Failed",
    "PinPoint.Plate.FindImageStars": "Polar Align Aborted !!",
    "PinPoint.Plate.FindCatalogStars": "Polar Align Aborted !!",
    "PinPoint.Plate.Solve": "Initiating spiral search",
}
for text, members in SAID.items():
    for member in members.split():
        before = member.rpartition(".")[0] + " " if text.startswith("{} ") else ""
        MESSAGES[member] = before + ERROR + text.removeprefix("{} ")
for parameter in ("Catalog CatalogExpansion CatalogMaximumMagnitude CatalogPath MinimumBrightness MinimumStarSize "
                  "SigmaAboveMean ExclusionBorder MaxSolveStars").split():
    MESSAGES["PinPoint.Plate." + parameter] = "** PinPoint Error - Please Verify Settngs **"
LONGEST_ANSWER = 2.0  # seconds until the window has to answer
PATIENCE = 240  # seconds after which the operator presses Stop: more than three members that don't answer take
RARELY_SENT = {"Filter": "2", "MaxRes": "3"}  # parameters of the solver that are only sent when they aren't 0
BY_HAND = 90  # seconds until the operator presses Stop instead of turning the mount
BRIGHT = 1e6  # electrons per second and pixel: a sky without stars
REASON = "PinPoint.Plate.FailureReason"  # asked for when a plate isn't solved
RADIUS = "PinPoint.Plate.SearchRadius"  # sent when the operator turns the mount by hand
END = {"control": "frmMain.cmdRun", "property": "enabled", "is": True}


class Wine:
    """A folder that plays Windows, with the servers set up in it. Its services live until the end."""

    def __init__(self, options, folder):
        self.options = options
        self.environment = dict(os.environ, VANTREL_WINE_PREFIX=folder)
        # Services belong to the first program, and there are two of each when another is about to end.
        self.end_services()
        # COM's own one is started at once: whoever starts it in passing waits half a minute now and then, and does without.
        self.first = subprocess.Popen([WINE, "cmd", "/c", "net start rpcss>nul& echo started& set /p ignored="],
                                      env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                      stderr=subprocess.DEVNULL)
        self.first.stdout.readline()

    def observatory(self, *words):
        subprocess.run([self.options.observatory, *words], check=True, env=self.environment,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)

    def night(self, imaging):
        os.environ.update(self.environment)
        self.observatory("/program", imaging)
        return com_night.Night(self.options.program, com_night.MOUNT, imaging, **RARELY_SENT)

    def end_services(self):
        for option in ("-k", "-w"):
            subprocess.run(["/usr/lib/wine/wineserver64", option], check=False,
                           env=dict(os.environ, WINEPREFIX=self.environment["VANTREL_WINE_PREFIX"]))

    def end(self):
        self.end_services()
        self.first.communicate()


class Outcome(collections.namedtuple("Outcome", "imaging member how longest seconds said again")):
    def as_it_should_be(self):
        expected = MESSAGES.get(self.member, "") if self.how == "fails" else ""
        told = self.said.startswith(expected) and (self.how != "slow" or self.member in (REASON, RADIUS) or not self.said)
        return told and self.longest <= LONGEST_ANSWER and self.again != "no"


def press_run(night):
    """The click waits while a driver is being asked: until the measurement has begun, or says why it doesn't."""
    before = len(night.lines())
    night.vantrel.click("frmMain.cmdRun")
    for _ in range(900):
        if {"Start Alignment Run", "Align Aborted"} & set(night.lines()[before:]):
            return
        night.vantrel.do("advance", seconds=0.1)
    raise OperatorError("the measurement doesn't begin")


def work(vantrel, seconds):
    """Lets a measurement go on until it offers the correction or gave up; after so many seconds the operator stops it.

    The longest that an answer took, and whether it was stopped.
    """
    longest, stopped, begin = 0.0, False, time.monotonic()
    while time.monotonic() - begin < seconds + 60:
        asked = time.monotonic()
        run = vantrel.read("frmMain.cmdRun")["enabled"]
        following = vantrel.read("frmMain.cmdNext")["enabled"]
        longest = max(longest, time.monotonic() - asked)
        if following or run:
            return longest, stopped
        if not stopped and time.monotonic() - begin > seconds:
            vantrel.click("frmMain.cmdStop")
            stopped = True
        vantrel.do("advance", seconds=0.1)
    raise OperatorError("the measurement doesn't end")


def leave(vantrel):
    """Back to where Run can be pressed: past the offer to correct, or past what is said of a failure."""
    if not vantrel.read("frmMain.cmdRun")["enabled"]:
        vantrel.click("frmMain.cmdSkip" if vantrel.read("frmMain.cmdSkip")["enabled"] else "frmMain.cmdNext")
        vantrel.wait(60, **END)


def reconnect(vantrel):
    """As the Telescope window offers it, where the mount's link is down."""
    vantrel.do("advance", seconds=2)  # within which the window notices
    if vantrel.read("frmTelescope.txtTelescopeSelectionStatus")["text"] == " Connected":
        return
    if not vantrel.read("frmTelescope.cmdConnectTelescope")["enabled"]:
        vantrel.click("frmTelescope.cmdDisconnectTelescope")
        vantrel.wait(60, idle=True)
    vantrel.click("frmTelescope.cmdConnectTelescope")
    vantrel.wait(60, idle=True)


def spoil(wine, imaging, usual, member, how):
    """`usual`: the lines, without their figures, of a measurement in which nothing goes wrong."""
    begin = time.monotonic()
    try:
        with wine.night(imaging) as night:
            vantrel = night.vantrel
            night.set_axis(com_night.AZIMUTH, com_night.ELEVATION)
            dark = vantrel.get(com_night.MOUNT, "SkyLevel")
            if member == REASON:
                vantrel.put(com_night.MOUNT, "SkyLevel", BRIGHT)
            if member == RADIUS:
                vantrel.click("frmMain.chkTurnByHand")
            wine.observatory("/fault", member, how, "0")
            start = len(night.lines())
            press_run(night)
            longest, stopped = work(vantrel, BY_HAND if member == RADIUS else PATIENCE)
            leave(vantrel)
            wine.observatory("/happened")
            wine.observatory("/fault", member, "", "0")
            if member == REASON and how != "dies":
                vantrel.put(com_night.MOUNT, "SkyLevel", dark)
            if member == RADIUS:
                vantrel.click("frmMain.chkTurnByHand")
            said = [" ".join(line.split()) for line in night.lines()[start:]
                    if com_night.without_figures([line])[0] not in usual]
            if how == "dies":
                again = "-"
            else:
                reconnect(vantrel)
                start = len(night.lines())
                press_run(night)
                work(vantrel, 200)
                lines = night.lines()[start:]
                again = "yes" if any("Error Amplitude" in line for line in lines) else "no"
                if again == "no":
                    print("\n".join([f"{imaging}, {member} {how}, the next measurement:", *lines]), file=sys.stderr, flush=True)
                leave(vantrel)
            if stopped:
                said.insert(0, "(stopped by the operator)")
            return Outcome(imaging, member, how, longest, time.monotonic() - begin, "; ".join(said[:3]), again)
    except (OperatorError, AssertionError, SystemExit, OSError, ValueError,
            subprocess.CalledProcessError) as error:
        return Outcome(imaging, member, how, 99.0, time.monotonic() - begin, f"BROKEN: {error}", "no")


def calm_night(wine, imaging):
    """The lines of a measurement in which nothing goes wrong, and the members that it uses by their first use."""
    with wine.night(imaging) as night:
        night.set_axis(com_night.AZIMUTH, com_night.ELEVATION)
        night.vantrel.do("journal", object="*")
        press_run(night)
        work(night.vantrel, 200)
        used = [f"{use['object']}.{use['member']}" for use in night.vantrel.do("journal", object="*")["journal"]
                if use["kind"] != "create" and not use["object"].startswith("DriverHelper")]
        leave(night.vantrel)
        lines = set(com_night.without_figures(night.lines()))
    return lines, list(dict.fromkeys(used))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="vantrel-headless")
    parser.add_argument("observatory", help="com_observatory, started by a script")
    parser.add_argument("--jobs", type=int, default=3)
    parser.add_argument("--only", default="", help="members whose names contain this")
    options = parser.parse_args()
    own = os.environ["VANTREL_WINE_PREFIX"]
    first = Wine(options, own)
    first.observatory("/register", "program")
    first.observatory("/fault", "none", "", "0")
    cases = []
    for imaging in com_night.PROGRAMS:
        usual, members = calm_night(first, imaging)
        members += [REASON, RADIUS]
        cases += [(imaging, usual, member, how) for member in members
                  if options.only in member and (imaging == "MaxIm" or member.startswith("CCDSoft")) for how in HOW]
    first.end()

    print("| with | member | what it does | longest answer | seconds | first message | next measurement |")
    print("|---|---|---|---|---|---|---|")
    bad = 0
    with concurrent.futures.ProcessPoolExecutor(options.jobs) as pool:
        for outcome in pool.map(run_case, [(options, own, case) for case in cases]):
            bad += not outcome.as_it_should_be()
            print(f"| {outcome.imaging} | {outcome.member} | {outcome.how} | {outcome.longest:.2f} s | {outcome.seconds:.0f} | "
                  f"{outcome.said} | {outcome.again} |", flush=True)
    print(f"{len(cases)} cases, {bad} not as they should be")
    return 1 if bad else 0


def give_home(prefix):
    """Folders of the user's own: Wine takes those of Linux, where all runs would save their images over each other's."""
    users = os.path.join(prefix, "drive_c", "users")
    for user in os.listdir(users):
        for name in os.listdir(os.path.join(users, user)):
            folder = os.path.join(users, user, name)
            if os.path.islink(folder):
                os.unlink(folder)
                os.mkdir(folder)


def copied(source, destination):
    """Nobody writes to Wine's own files, which are many: all folders share them."""
    (os.link if "/drive_c/windows/" in source else shutil.copy2)(source, destination)


def run_case(order):
    options, own, case = order
    with tempfile.TemporaryDirectory(dir=os.path.dirname(os.path.abspath(own))) as folder:
        copy = os.path.join(folder, "wine")
        shutil.copytree(own, copy, symlinks=True, ignore=shutil.ignore_patterns("started"), copy_function=copied)
        give_home(copy)
        wine = Wine(options, copy)
        try:
            return spoil(wine, *case)
        finally:
            wine.end()


if __name__ == "__main__":
    raise SystemExit(main())
