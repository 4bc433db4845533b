#!/usr/bin/env python3
"""Measures the axis of a mount that a server plays, in real time, as an operator would.

    measure.py indi VANTREL-HEADLESS FOLDER-OF-GSC LOOPBACK-ONLY
    measure.py alpaca VANTREL-HEADLESS ALPACA-SERVER SKY-PICTURE

The server's mount has an axis beside the pole; what the program finds has to agree with it.
"""

import contextlib
import functools
import json
import math
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request

sys.path.insert(0, str(pathlib.Path(__file__).parents[3] / "tools"))
from operator_session import Operator, OperatorError  # noqa: E402

AZIMUTH, ELEVATION = 40.0, -25.0  # arc-minutes: east of the pole and below it
LATITUDE = 50.0
SIDEREAL_TIME = 21.5  # hours: plates in the Milky Way, since INDI's camera shows few stars elsewhere
WITHIN = 30.0  # arc-seconds on the sky
SETTINGS = {
    "PolarAlign": {"ImagingSoftware": "BuiltIn", "PlateSolveMethod": "0", "DeltaRA": "30", "DelayAfterSlew": "1"},
    "Solve": {"CamBin": "1", "ScaleH": "3.6", "ScaleV": "3.6", "TelescopeFL": "370"},
}


def longitude_where_it_is(sidereal_time):
    """East, -180 to 180 degrees: the site is chosen so that the same stars stand there at any time of the test."""
    days = time.time() / 86400 + 2440587.5 - 2451545.0
    greenwich = 280.46062 + 360.98564737 * days
    return (15 * sidereal_time - greenwich + 180) % 360 - 180


LONGITUDE = longitude_where_it_is(SIDEREAL_TIME)
FIRST_RIGHT_ASCENSION = SIDEREAL_TIME - 2  # three plates 30 degrees apart then lie around the meridian


class Failure(RuntimeError):
    """The measurement didn't do what it should."""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


# ---- servers


@contextlib.contextmanager
def indi_server(stars, loopback_only, sensor=None):
    """Debian's server with its simulators, heard on this machine alone; yields what the program needs to be told."""
    with tempfile.TemporaryDirectory() as home:
        port = free_port()
        surroundings = dict(
            os.environ,
            HOME=home,
            PATH=f"{stars}:{os.environ['PATH']}",
            LD_PRELOAD=str(loopback_only),
            MISALIGNED_SKY=f"{AZIMUTH} {ELEVATION} {LATITUDE} {LONGITUDE}",
        )
        command = ["indiserver", "-p", str(port), "-u", f"{home}/socket"]
        drivers = ["indi_simulator_telescope", "indi_simulator_ccd"]
        with open(f"{home}/log", "w") as log:
            server = subprocess.Popen(
                command + drivers, env=surroundings, stdout=log, stderr=log, start_new_session=True
            )
        try:
            prepare_indi(port, sensor)
            where = f"localhost:{port}"
            yield {
                "Hosts": {"IndiServers": where},
                "mount": f"Indi:{where}/Telescope Simulator",
                "camera": f"Indi:{where}/CCD Simulator",
                "offered": ["Telescope Simulator at the INDI server"],
                "exposure": "6",  # it sees fainter stars than ten only slowly
                "trouble": lambda operator: fall_silent(operator, server.pid),
            }
        finally:
            os.killpg(server.pid, signal.SIGKILL)
            server.wait()


def prepare_indi(port, sensor):
    """What stands in these drivers' own settings at a real observatory: the site, the focal length, the sensor."""
    deadline = time.monotonic() + 20
    while True:
        try:
            client = socket.create_connection(("127.0.0.1", port), 5)
            break
        except OSError:
            if time.monotonic() > deadline:
                raise
            time.sleep(0.1)
    with client:
        client.settimeout(20)
        talk = IndiTalk(client)
        talk.say('<getProperties version="1.7"/>')
        if sensor:
            settings = talk.numbers_of("CCD Simulator", "SIMULATOR_SETTINGS")
            talk.numbers("CCD Simulator", "SIMULATOR_SETTINGS", **{**settings, "SIM_XRES": sensor[0], "SIM_YRES": sensor[1]})
        for device in ("Telescope Simulator", "CCD Simulator"):
            talk.hear(f'device="{device}" name="CONNECTION"')
            talk.switch(device, "CONNECTION", "CONNECT")
        talk.hear('device="Telescope Simulator" name="GEOGRAPHIC_COORD"')
        talk.hear('device="CCD Simulator" name="SCOPE_INFO"')
        talk.numbers("Telescope Simulator", "GEOGRAPHIC_COORD", LAT=LATITUDE, LONG=LONGITUDE % 360, ELEV=100)
        talk.numbers("CCD Simulator", "SCOPE_INFO", FOCAL_LENGTH=300, APERTURE=80)
        talk.switch("Telescope Simulator", "TELESCOPE_PARK", "UNPARK")
        talk.hear('setSwitchVector device="Telescope Simulator" name="TELESCOPE_PARK"')
        talk.switch("Telescope Simulator", "ON_COORD_SET", "SYNC")
        talk.numbers("Telescope Simulator", "EQUATORIAL_EOD_COORD", RA=FIRST_RIGHT_ASCENSION, DEC=45)
        talk.hear('setNumberVector device="Telescope Simulator" name="EQUATORIAL_EOD_COORD"')


def fall_silent(operator, server):
    """The server is connected, and says nothing, until the mount is given up."""
    os.killpg(server, signal.SIGSTOP)
    operator.wait(log="it has stopped answering", seconds=60)
    os.killpg(server, signal.SIGCONT)
    operator.wait(log="is connected again", seconds=60)
    operator.do("advance", seconds=2)  # the program looks at the mount once a second


class IndiTalk:
    def __init__(self, client):
        self.client = client
        self.heard = ""

    def say(self, text):
        self.client.sendall(text.encode())

    def hear(self, text, after=0):
        while text not in self.heard[after:]:
            got = self.client.recv(65536)
            if not got:
                raise Failure(f"the server hung up before it said {text}")
            self.heard += got.decode(errors="replace")

    def numbers_of(self, device, name):
        """As they were defined."""
        begin = f'<defNumberVector device="{device}" name="{name}"'
        self.hear(begin)
        self.hear("</defNumberVector>", self.heard.index(begin))
        text = self.heard[self.heard.index(begin):]
        text = text[: text.index("</defNumberVector>")]
        return dict(re.findall(r'<defNumber name="(\w+)"[^>]*>\s*([^<\s]+)', text))

    def switch(self, device, name, element):
        self.say(
            f'<newSwitchVector device="{device}" name="{name}"><oneSwitch name="{element}">On</oneSwitch>'
            "</newSwitchVector>"
        )

    def numbers(self, device, name, **values):
        inner = "".join(f'<oneNumber name="{key}">{value}</oneNumber>' for key, value in values.items())
        self.say(f'<newNumberVector device="{device}" name="{name}">{inner}</newNumberVector>')


@contextlib.contextmanager
def alpaca_server(program, sky_picture, others=None):
    settings = {
        "latitude": LATITUDE,
        "longitude": LONGITUDE,
        "axisAzimuth": AZIMUTH,
        "axisElevation": ELEVATION,
        "pictureTool": [str(sky_picture)],
        **(others or {}),
    }
    server = subprocess.Popen(
        [sys.executable, program, "--set", json.dumps(settings)],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
    )
    try:
        ready = json.loads(server.stdout.readline())
        put = functools.partial(put_alpaca, ready["port"])
        put("connected", Connected="True")
        put("synctocoordinates", RightAscension=FIRST_RIGHT_ASCENSION, Declination=45)
        yield {
            "Hosts": {"IndiServers": "", "AlpacaServers": f"127.0.0.1:{ready['port']}", "AlpacaPort": "1"},
            "mount": "Alpaca:test-telescope/telescope",
            "camera": "Alpaca:test-camera/camera",
            "offered": [],
            "exposure": "1",
        }
    finally:
        server.stdin.close()
        server.wait()


def put_alpaca(port, member, **values):
    body = urllib.parse.urlencode({**values, "ClientID": 1, "ClientTransactionID": 1}).encode()
    request = urllib.request.Request(f"http://127.0.0.1:{port}/api/v1/telescope/0/{member}", body, method="PUT")
    with urllib.request.urlopen(request, timeout=20) as answer:
        error = json.load(answer)["ErrorMessage"]
    if error:
        raise Failure(f"{member}: {error}")


# ---- the operator


def choose_devices(operator, mount, camera):
    """As the chooser and the camera's list offer them."""
    operator.click("frmMain.cmdTelescope")
    for button, device in (("frmTelescope.cmdPickTelescope", mount), ("frmMain.cmdCamera", camera)):
        operator.do("answer", dialog="chooser", **{"with": device})
        operator.click(button)
        operator.wait(idle=True, seconds=60)


def measured(operator):
    """The error as the log reports it, in arc-minutes of azimuth and elevation."""
    operator.click("frmMain.cmdRun")
    deadline = time.monotonic() + 150
    while "Completed Successfully" not in operator.read("frmMain.txtInstructions")["text"]:
        if time.monotonic() > deadline or any("Aborted" in line for line in operator.log()):
            raise Failure(f"the run didn't come to its end: {operator.read('frmMain.txtInstructions')['text']}")
        operator.do("advance", seconds=0.5)
    log = "\n".join(operator.log())
    return [float(re.search(rf"{name} error: *(-?[0-9.]+)", log).group(1)) for name in ("Azimuth", "Elevation")]


def look_at_header(picture):
    """What astronomers expect of it, whoever wrote it."""
    header = picture.read_bytes()[:20_000].decode("latin-1")
    cards = {header[at : at + 8].strip(): header[at + 10 : at + 80] for at in range(0, len(header) - 80, 80)}
    for keyword in ("EXPTIME", "DATE-OBS", "XPIXSZ", "FOCALLEN", "RA", "DEC", "OBJCTRA", "SITELAT", "INSTRUME", "TELESCOP"):
        if keyword not in cards:
            raise Failure(f"the picture's header has no {keyword}")
    declination = float(cards["DEC"].split("/")[0])
    if abs(declination - 45) > 0.5:
        raise Failure(f"the picture's header tells a declination of {declination}")


def measure(program, devices):
    with tempfile.TemporaryDirectory() as home:
        stored = pathlib.Path(home) / "first-settings.json"
        stored.write_text(json.dumps({**SETTINGS, "Hosts": devices["Hosts"]}))
        operator = Operator(program, "--home", f"{home}/home", "--settings", str(stored))
        try:
            operator.wait(window="frmMain", seconds=60)
            operator.wait(idle=True, seconds=60)
            for text in devices["offered"]:
                operator.wait(log=text, seconds=20)
            operator.type("frmMain.txtExposeInterval", devices["exposure"])
            choose_devices(operator, devices["mount"], devices["camera"])
            devices.get("trouble", lambda operator: None)(operator)
            result = measured(operator)
            look_at_header(next(pathlib.Path(home).glob("home/**/SavedImage.fit")))
            return result
        except (Failure, OperatorError) as error:
            raise Failure("\n".join([*operator.log(), str(error)])) from error
        finally:
            operator.close()


def main():
    kind, program, *rest = sys.argv[1:]
    with {"indi": indi_server, "alpaca": alpaca_server}[kind](*rest) as devices:
        azimuth, elevation = measure(program, devices)
    # Azimuth is an angle about the vertical; on the sky it is smaller.
    across = (azimuth - AZIMUTH) * math.cos(math.radians(LATITUDE))
    away = 60 * math.hypot(across, elevation - ELEVATION)
    print(f"azimuth {azimuth}', elevation {elevation}': {away:.1f} arc-seconds away")
    if away > WITHIN:
        raise Failure("that is too far")


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(str(failure))
