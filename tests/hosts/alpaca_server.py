#!/usr/bin/env python3
"""An Alpaca server for tests: a mount and a camera that do what a measurement asks for, by the book.

    alpaca_server.py [--set JSON]

Listens on 127.0.0.1 only, at a free port. Prints one line of JSON when it is ready, {"port": ...}, and ends when its
standard input does. --set takes an object of settings (see SETTINGS). What servers do wrong is played by another one,
in virtual time (alpaca/alpaca_world.h).
"""

import argparse
import array
import json
import math
import re
import struct
import subprocess
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

NOT_CONNECTED, INVALID_OPERATION = 0x407, 0x40B
SLEW_RATE = 4.0  # degrees a second
READ_OUT = 0.05  # seconds
SETTINGS = {
    "latitude": 50.0,
    "longitude": 10.0,
    "axisAzimuth": 0.0,  # arc-minutes, as the tool that draws pictures counts them
    "axisElevation": 0.0,
    "width": 1392,
    "height": 1040,
    "bytesNever": False,  # JSON although ImageBytes were asked for
    "pictureTool": [],  # a command that writes raw pixels, see Camera.rows
}


class AlpacaError(Exception):
    def __init__(self, number, text):
        super().__init__(text)
        self.number = number


class Unknown(Exception):
    """No such member."""


def sidereal_time(seconds, longitude):
    """Local apparent sidereal time in hours at a Unix time (Meeus, Astronomical Algorithms, chapter 12)."""
    days = seconds / 86400 + 2440587.5 - 2451545.0
    centuries = days / 36525
    degrees = 280.46061837 + 360.98564736629 * days + 0.000387933 * centuries**2
    node = math.radians(125.04 - 1934.136 * centuries)
    sun = math.radians(280.47 + 36000.77 * centuries)
    nutation = (-17.20 * math.sin(node) - 1.32 * math.sin(2 * sun)) / 3600
    obliquity = math.radians(23.4393 - 0.0130 * centuries)
    return (degrees + nutation * math.cos(obliquity) + longitude) / 15 % 24


def iso(seconds):
    return time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(seconds)) + f"{seconds % 1:.3f}"[1:]


def fixed(value):
    return lambda self: value


def setting(name):
    return lambda self: self.settings[name]


class Device:
    """Members are the methods get_NAME and put_NAME; put_... take the parameters as a dictionary."""

    def __init__(self, settings):
        self.settings = settings
        self.connected = False

    get_interfaceversion = fixed(3)

    def get_connected(self):
        return self.connected

    def put_connected(self, parameters):
        self.connected = parameters["Connected"] == "True"

    def require_connected(self):
        if not self.connected:
            raise AlpacaError(NOT_CONNECTED, "not connected")


class Mount(Device):
    kind, name = "Telescope", "Test mount"

    def __init__(self, settings):
        super().__init__(settings)
        self.ra, self.dec = 3.0, 40.0  # hours and degrees of date, when it stands
        self.slew = None  # (start time, seconds, from, to)

    def position(self):
        if self.slew:
            start, seconds, origin, target = self.slew
            part = (time.time() - start) / seconds if seconds > 0 else 1
            if part < 1:
                return tuple(a + part * (b - a) for a, b in zip(origin, target))
            (self.ra, self.dec), self.slew = target, None
            self.ra %= 24
        return self.ra, self.dec

    get_equatorialsystem, get_atpark = fixed(1), fixed(False)
    get_tracking = get_canslew = get_canslewasync = fixed(True)
    get_sitelatitude, get_sitelongitude = setting("latitude"), setting("longitude")

    def get_rightascension(self):
        self.require_connected()
        return self.position()[0] % 24

    def get_declination(self):
        self.require_connected()
        return self.position()[1]

    def get_siderealtime(self):
        return sidereal_time(time.time(), self.settings["longitude"])

    def get_slewing(self):
        self.require_connected()
        self.position()
        return bool(self.slew)

    def put_slewtocoordinatesasync(self, parameters):
        self.require_connected()
        origin = self.position()
        turn = (float(parameters["RightAscension"]) - origin[0] + 12) % 24 - 12
        dec = float(parameters["Declination"])
        seconds = max(abs(turn) * 15, abs(dec - origin[1])) / SLEW_RATE
        self.slew = (time.time(), seconds, origin, (origin[0] + turn, dec))

    def put_abortslew(self, _parameters):
        (self.ra, self.dec), self.slew = self.position(), None

    def put_synctocoordinates(self, parameters):
        self.ra, self.dec = float(parameters["RightAscension"]), float(parameters["Declination"])


class Camera(Device):
    kind, name = "Camera", "Test camera"

    def __init__(self, settings, mount):
        super().__init__(settings)
        self.mount = mount
        self.exposure = 0  # counts them
        self.state, self.pixels = 0, None  # the picture column after column
        self.began, self.duration = 0.0, 0.0

    get_cameraxsize, get_cameraysize = setting("width"), setting("height")
    get_pixelsizex = get_pixelsizey = fixed(6.45)
    get_maxbinx = get_maxbiny = fixed(1)
    get_exposuremin, get_exposuremax = fixed(0.001), fixed(3600.0)
    get_canabortexposure, get_sensortype = fixed(True), fixed(0)

    def whole(self, _parameters):
        """It only reads the whole of its sensor."""

    put_binx = put_biny = put_startx = put_starty = put_numx = put_numy = whole

    def put_startexposure(self, parameters):
        self.require_connected()
        if self.state:
            raise AlpacaError(INVALID_OPERATION, "an exposure is under way")
        self.exposure += 1
        self.state, self.pixels = 2, None
        self.began, self.duration = time.time(), float(parameters["Duration"])
        threading.Thread(target=self.expose, args=(self.exposure, self.mount.position()), daemon=True).start()

    def expose(self, exposure, place):
        pixels = self.columns(place)
        time.sleep(max(0.0, self.began + self.duration - time.time()) + READ_OUT)
        if exposure == self.exposure and self.state:
            self.pixels, self.state = pixels, 0

    def columns(self, place):
        width, height = self.settings["width"], self.settings["height"]
        if not self.settings["pictureTool"]:
            return array.array("H", [1000]) * (width * height)
        rows, columns = self.rows(place), array.array("H")
        for x in range(width):
            columns.extend(rows[x::width])
        return columns

    def rows(self, place):
        """Asks sky-picture, which knows where a mount with this axis truly points."""
        options = {
            "--mount-ra": place[0] % 24, "--mount-dec": place[1], "--latitude": self.settings["latitude"],
            "--longitude": self.settings["longitude"], "--azimuth": self.settings["axisAzimuth"],
            "--elevation": self.settings["axisElevation"], "--utc": iso(self.began + self.duration / 2) + "Z",
            "--width": self.settings["width"], "--height": self.settings["height"], "--pixel": 6.45, "--focal": 370,
            "--seconds": self.duration, "--seed": self.exposure,
        }
        words = [str(word) for option in options.items() for word in option]
        tool = subprocess.run([*self.settings["pictureTool"], *words], check=True, stdout=subprocess.PIPE)
        return array.array("H", tool.stdout)

    def put_abortexposure(self, _parameters):
        self.exposure += 1
        self.state, self.pixels = 0, None

    def get_imageready(self):
        return self.pixels is not None

    def get_camerastate(self):
        return self.state

    def get_lastexposurestarttime(self):
        return iso(self.began)

    def get_lastexposureduration(self):
        return self.duration

    def image(self, as_bytes, transaction):
        """The content type and the picture."""
        width, height = self.settings["width"], self.settings["height"]
        if as_bytes:
            head = struct.pack("<iiIIiiiiiii", 1, 0, transaction, 1, 44, 2, 8, 2, width, height, 0)
            return "application/imagebytes", head + self.pixels.tobytes()
        columns = [self.pixels[x * height : (x + 1) * height].tolist() for x in range(width)]
        answer = {"Type": 2, "Rank": 2, "Value": columns, "ErrorNumber": 0, "ErrorMessage": ""}
        return "application/json", json.dumps(answer).encode()


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def log_message(self, *_arguments):
        pass

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        # The keys of a PUT have to be spelt right, those of a GET needn't.
        parameters = {name.lower(): value for name, value in urllib.parse.parse_qsl(address.query)}
        self.answer("get_", address.path, parameters, int(parameters.get("clienttransactionid", 0)))

    def do_PUT(self):
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0)).decode()
        parameters = dict(urllib.parse.parse_qsl(body))
        self.answer("put_", self.path, parameters, int(parameters.get("ClientTransactionID", 0)))

    def answer(self, kind, path, parameters, transaction):
        try:
            status, content_type, body = 200, *self.reply(kind, path, parameters, transaction)
        except Unknown:
            status, content_type, body = 404, "text/plain", b"no such page"
        except (KeyError, ValueError) as error:
            status, content_type, body = 400, "text/plain", str(error).encode()
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def reply(self, kind, path, parameters, transaction):
        """Content type and body of the right answer."""
        answer = {"ErrorNumber": 0, "ErrorMessage": "", "ServerTransactionID": 1, "ClientTransactionID": transaction}
        try:
            if path == "/management/v1/configureddevices":
                answer["Value"] = [{"DeviceName": device.name, "DeviceType": device.kind, "DeviceNumber": 0,
                                    "UniqueID": f"test-{device.kind.lower()}"} for device in self.server.devices]
            elif path == "/management/v1/description":
                answer["Value"] = {"ServerName": "Test server"}
            else:
                match = re.fullmatch(r"/api/v1/([a-z]+)/0/([a-z0-9]+)", path)
                devices = [device for device in self.server.devices if match and device.kind.lower() == match[1]]
                if devices and match[2] == "imagearray":
                    wanted = "application/imagebytes" in self.headers.get("Accept", "")
                    return devices[0].image(wanted and not devices[0].settings["bytesNever"], transaction)
                method = getattr(devices[0], kind + match[2], None) if devices else None
                if method is None:
                    raise Unknown
                with self.server.lock:
                    answer["Value"] = method() if kind == "get_" else method(parameters)
        except AlpacaError as error:
            answer.update(ErrorNumber=error.number, ErrorMessage=str(error))
        return "application/json; charset=utf-8", json.dumps(answer).encode()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--set", type=json.loads, default={})
    given = parser.parse_args().set
    if given.keys() - SETTINGS.keys():
        parser.error(f"unknown settings: {sorted(given.keys() - SETTINGS.keys())}")
    server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads, server.lock = True, threading.RLock()
    mount = Mount({**SETTINGS, **given})
    server.devices = [mount, Camera(mount.settings, mount)]
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(json.dumps({"port": server.server_address[1]}), flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
