#!/usr/bin/env python3
"""An Alpaca server for tests: a mount, a camera and a filter wheel, by the book.

    alpaca_server.py [--port N] [--discovery-port N] [--set JSON]

Listens on 127.0.0.1 only; port 0 takes a free one. Prints one line of JSON when it is ready:
{"port": ..., "discoveryPort": ...}, and ends when its standard input does. What servers do wrong is played by
another one, in virtual time (alpaca/fake_server.h).

Everything that can be set (see Settings) is given at the start by --set or at run time by

    PUT /private/set        a JSON object of settings
    PUT /private/reset      all settings as they were at the start
    PUT /private/away       {"seconds": S}: nobody listens for so long, open connections are reset
    PUT /private/restart    as if the server had been started anew: devices disconnected, other numbers
"""

import argparse
import array
import json
import math
import re
import socket
import struct
import subprocess
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

INVALID_VALUE, VALUE_NOT_SET = 0x401, 0x402
NOT_CONNECTED, PARKED, INVALID_OPERATION = 0x407, 0x408, 0x40B


class Settings:
    """What a test may change. Names are those of the JSON objects."""

    def __init__(self):
        self.management = True  # has lists of devices
        self.renumber = 7  # added to the numbers at each restart
        self.platform = 6
        # The mount.
        self.latitude = 50.0
        self.longitude = 10.0
        self.axisAzimuth = 0.0  # arc-minutes, as the tool that draws pictures counts them
        self.axisElevation = 0.0
        self.slewRate = 4.0  # degrees a second
        self.connectSeconds = 0.0
        # The camera.
        self.width = 1392
        self.height = 1040
        self.pixelSize = 6.45  # micrometres
        self.focalLength = 370.0  # millimetres
        self.maxBin = 4
        self.bytesNever = False  # JSON although ImageBytes were asked for
        self.readOutSeconds = 0.05
        self.pictureTool = []  # a command that writes raw pixels, see Camera.draw

    def update(self, values):
        for name, value in values.items():
            if not hasattr(self, name):
                raise KeyError(name)
            setattr(self, name, value)


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


class Device:
    """Members are the methods get_NAME and put_NAME; put_... take the parameters as a dictionary."""

    def __init__(self, kind, name, world):
        self.kind = kind
        self.name = name
        self.world = world
        self.connected = False
        self.connecting_until = 0.0

    @property
    def settings(self):
        return self.world.settings

    @property
    def is_platform7(self):
        return self.settings.platform >= 7

    def require_connected(self):
        if not self.get_connected():
            raise AlpacaError(NOT_CONNECTED, f"{self.name} is not connected")

    def get_name(self):
        return self.name

    def get_description(self):
        return self.name + " for tests"

    def get_driverinfo(self):
        return "A test server"

    def get_driverversion(self):
        return "1.0"

    def get_interfaceversion(self):
        version = {"telescope": 3, "camera": 3, "filterwheel": 2}[self.kind]
        return version + 1 if self.is_platform7 else version

    def get_connected(self):
        if self.connecting_until and time.time() >= self.connecting_until:
            self.connecting_until, self.connected = 0.0, True
        return self.connected

    def put_connected(self, parameters):
        if boolean(parameters, "Connected"):
            time.sleep(self.settings.connectSeconds)
            self.connected = True
        else:
            self.connected = False

    def get_connecting(self):
        if not self.is_platform7:
            raise Unknown
        return not self.get_connected() and self.connecting_until > 0

    def put_connect(self, _parameters):
        if not self.is_platform7:
            raise Unknown
        self.connecting_until = time.time() + self.settings.connectSeconds

    def put_disconnect(self, _parameters):
        if not self.is_platform7:
            raise Unknown
        self.connected, self.connecting_until = False, 0.0

    def get_devicestate(self):
        if not self.is_platform7:
            raise Unknown
        return [{"Name": name, "Value": getattr(self, "get_" + name.lower())()} for name in self.state_members]


class Mount(Device):
    state_members = ["RightAscension", "Declination", "Slewing", "Tracking", "AtPark"]

    def __init__(self, world):
        super().__init__("telescope", "Test mount", world)
        self.ra, self.dec = 3.0, 40.0  # hours and degrees of date, when it stands
        self.slew = None  # (start time, seconds, from, to)
        self.tracking = True
        self.parked = False

    def position(self):
        if self.slew:
            start, seconds, origin, target = self.slew
            part = (time.time() - start) / seconds if seconds > 0 else 1
            if part < 1:
                return tuple(a + part * (b - a) for a, b in zip(origin, target))
            (self.ra, self.dec), self.slew = target, None
            self.ra %= 24
        return self.ra, self.dec

    def get_rightascension(self):
        self.require_connected()
        return self.position()[0] % 24

    def get_declination(self):
        self.require_connected()
        return self.position()[1]

    def get_siderealtime(self):
        return sidereal_time(time.time(), self.settings.longitude)

    def get_utcdate(self):
        return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())

    def get_equatorialsystem(self):
        return 1

    def get_sitelatitude(self):
        return self.settings.latitude

    def get_sitelongitude(self):
        return self.settings.longitude

    def get_siteelevation(self):
        return 300.0

    def get_tracking(self):
        return self.tracking

    def put_tracking(self, parameters):
        self.tracking = boolean(parameters, "Tracking")

    def get_canslew(self):
        return True

    get_canslewasync = get_cansettracking = get_canpark = get_canunpark = get_cansync = get_canslew

    def get_alignmentmode(self):
        return 2

    def get_atpark(self):
        return self.parked

    def put_park(self, _parameters):
        self.parked = True

    def put_unpark(self, _parameters):
        self.parked = False

    def get_slewing(self):
        self.require_connected()
        self.position()
        return bool(self.slew)

    def put_slewtocoordinatesasync(self, parameters):
        self.require_connected()
        ra, dec = number(parameters, "RightAscension"), number(parameters, "Declination")
        if not (0 <= ra < 24 and -90 <= dec <= 90):
            raise AlpacaError(INVALID_VALUE, "no such place")
        if self.parked:
            raise AlpacaError(PARKED, "the mount is parked")
        if not self.tracking:
            raise AlpacaError(INVALID_OPERATION, "the mount isn't tracking")
        origin, target = self.position(), (ra, dec)
        turn = (target[0] - origin[0] + 12) % 24 - 12
        distance = max(abs(turn) * 15, abs(target[1] - origin[1]))
        self.slew = (time.time(), distance / self.settings.slewRate, origin, (origin[0] + turn, target[1]))

    def put_abortslew(self, _parameters):
        (self.ra, self.dec), self.slew = self.position(), None

    def put_synctocoordinates(self, parameters):
        self.ra, self.dec = number(parameters, "RightAscension"), number(parameters, "Declination")


class Camera(Device):
    state_members = ["CameraState", "CCDTemperature", "ImageReady", "PercentCompleted"]

    def __init__(self, world):
        super().__init__("camera", "Test camera", world)
        self.bin = 1
        self.frame = [0, 0, world.settings.width, world.settings.height]
        self.gain, self.offset, self.target, self.cooler = 100, 10, 0.0, False
        self.exposure = 0  # counts them
        self.state, self.image, self.failure = 0, None, ""
        self.pixel_bytes, self.pixel_json = None, None  # the image as it is sent
        self.began, self.duration = None, 0.0

    def member(name):  # one that is a setting
        return lambda self: getattr(self.settings, name)

    get_cameraxsize, get_cameraysize = member("width"), member("height")
    get_pixelsizex = get_pixelsizey = member("pixelSize")
    get_maxbinx = get_maxbiny = member("maxBin")

    def fixed(value):
        return lambda self: value

    get_canasymmetricbin = fixed(False)
    get_canabortexposure = get_canstopexposure = get_cansetccdtemperature = fixed(True)
    get_exposuremin, get_exposuremax, get_exposureresolution = fixed(0.001), fixed(3600.0), fixed(0.001)
    get_sensortype, get_maxadu, get_sensorname = fixed(0), fixed(65535), fixed("Test sensor")

    def get_ccdtemperature(self):
        return self.target if self.cooler else 15.0

    def get_gain(self):
        return self.gain

    def get_offset(self):
        return self.offset

    def get_binx(self):
        return self.bin

    get_biny = get_binx

    def put_gain(self, parameters):
        self.gain = int(number(parameters, "Gain"))

    def put_offset(self, parameters):
        self.offset = int(number(parameters, "Offset"))

    def put_cooleron(self, parameters):
        self.cooler = boolean(parameters, "CoolerOn")

    def put_setccdtemperature(self, parameters):
        self.target = number(parameters, "SetCCDTemperature")

    def set_bin(self, value):
        if not 1 <= value <= self.settings.maxBin:
            raise AlpacaError(INVALID_VALUE, f"binning {value} isn't possible")
        self.bin = value

    def put_binx(self, parameters):
        self.set_bin(int(number(parameters, "BinX")))

    def put_biny(self, parameters):
        self.set_bin(int(number(parameters, "BinY")))

    def place(index, name):
        def put(self, parameters):
            self.frame[index] = int(number(parameters, name))

        return put

    put_startx, put_starty = place(0, "StartX"), place(1, "StartY")
    put_numx, put_numy = place(2, "NumX"), place(3, "NumY")

    def put_startexposure(self, parameters):
        self.require_connected()
        if self.state:
            raise AlpacaError(INVALID_OPERATION, "an exposure is under way")
        left, top, width, height = self.frame
        if left < 0 or top < 0 or left + width > self.settings.width // self.bin or (
            top + height > self.settings.height // self.bin
        ):
            raise AlpacaError(INVALID_VALUE, "the frame isn't on the sensor")
        self.exposure += 1
        self.state, self.image, self.failure = 2, None, ""
        self.began, self.duration = time.time(), number(parameters, "Duration")
        light = boolean(parameters, "Light")
        threading.Thread(target=self.expose, args=(self.exposure, light), daemon=True).start()

    def expose(self, exposure, light):
        place = self.world.mount.position()
        began = time.time()
        try:
            image = self.draw(place, light)
            pixel_bytes = None if self.settings.bytesNever else self.as_bytes(image[2])
            pixel_json = self.as_json(*image)
            failure = ""
        except Exception as error:  # pylint: disable=broad-except
            image, pixel_bytes, pixel_json, failure = None, None, None, f"no picture: {error}"
        time.sleep(max(0.0, self.duration - (time.time() - began)) + self.settings.readOutSeconds)
        with self.world.lock:
            if exposure == self.exposure and self.state:
                self.image, self.failure = image, failure
                self.pixel_bytes, self.pixel_json = pixel_bytes, pixel_json
                self.state = 5 if failure else 0

    def draw(self, place, light):
        """The picture column after column, as 16-bit numbers: (width, height, pixels)."""
        settings = self.settings
        left, top, width, height = self.frame
        if not (settings.pictureTool and light):
            return width, height, pattern(width, height)
        rows = self.run_tool(place)
        if (settings.width, settings.height) != (width, height):
            rows = array.array("H", b"".join(
                rows[(top + y) * settings.width + left : (top + y) * settings.width + left + width].tobytes()
                for y in range(height)))
        columns = array.array("H")
        for x in range(width):
            columns.extend(rows[x::width])
        return width, height, columns

    def run_tool(self, place):
        """Asks sky-picture, which knows where a mount with this axis truly points."""
        settings = self.settings
        middle = self.began + self.duration / 2
        utc = time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(middle)) + f"{middle % 1:.3f}"[1:] + "Z"
        options = {
            "--mount-ra": place[0] % 24, "--mount-dec": place[1], "--latitude": settings.latitude,
            "--longitude": settings.longitude, "--azimuth": settings.axisAzimuth,
            "--elevation": settings.axisElevation, "--utc": utc, "--width": settings.width,
            "--height": settings.height, "--pixel": settings.pixelSize, "--focal": settings.focalLength,
            "--seconds": self.duration, "--seed": self.exposure,
        }
        command = list(settings.pictureTool)
        for name, value in options.items():
            command += [name, str(value)]
        return little_endian("H", subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout)

    def end(self):
        self.exposure += 1
        self.state = 0

    def put_abortexposure(self, _parameters):
        self.end()
        self.image = None

    def put_stopexposure(self, _parameters):
        self.end()

    def get_imageready(self):
        self.require_connected()
        if self.failure:
            raise AlpacaError(0x500, self.failure)
        return self.image is not None

    def get_camerastate(self):
        return self.state

    def get_percentcompleted(self):
        return 100 if self.image else 50

    def get_lastexposurestarttime(self):
        if self.began is None:
            raise AlpacaError(VALUE_NOT_SET, "no exposure so far")
        return time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(self.began)) + f"{self.began % 1:.3f}"[1:]

    def get_lastexposureduration(self):
        return self.duration

    def as_bytes(self, pixels):
        if sys.byteorder == "big":
            pixels = pixels[:]
            pixels.byteswap()
        return pixels.tobytes()

    def as_json(self, width, height, pixels):
        texts = list(map(str, pixels))
        columns = ("[" + ",".join(texts[x * height : (x + 1) * height]) + "]" for x in range(width))
        return ("[" + ",".join(columns) + "]").encode()

    def image_bytes(self, transaction):
        if self.image is None:
            text = b"no picture"
            return struct.pack("<iiIIiiiiiii", 1, INVALID_OPERATION, transaction, 1, 44, 0, 0, 0, 0, 0, 0) + text
        width, height, _ = self.image
        head = struct.pack("<iiIIiiiiiii", 1, 0, transaction, 1, 44, 2, 8, 2, width, height, 0)
        return head + self.pixel_bytes

    def image_json(self, transaction):
        if self.image is None:
            raise AlpacaError(INVALID_OPERATION, "no picture")
        head = b'{"Type":2,"Rank":2,"Value":'
        tail = b',"ErrorNumber":0,"ErrorMessage":"","ClientTransactionID":%d,"ServerTransactionID":1}' % transaction
        return head + self.pixel_json + tail


class FilterWheel(Device):
    state_members = ["Position"]

    def __init__(self, world):
        super().__init__("filterwheel", "Test wheel", world)
        self.at, self.moving_until = 0, 0.0

    def get_names(self):
        return ["Luminance", "Red", "Green", "Blue"]

    def get_focusoffsets(self):
        return [0, 0, 0, 0]

    def get_position(self):
        return -1 if time.time() < self.moving_until else self.at

    def put_position(self, parameters):
        position = int(number(parameters, "Position"))
        if not 0 <= position < 4:
            raise AlpacaError(INVALID_VALUE, "no such filter")
        self.at, self.moving_until = position, time.time() + 0.2


def pattern(width, height):
    """Something to look at: every pixel tells its column and row."""
    column = array.array("H", (1000 + y % 1000 for y in range(height)))
    columns = array.array("H")
    for x in range(width):
        columns.extend(column[x % height:] + column[: x % height])
    return columns


def little_endian(code, data):
    numbers = array.array(code, data)
    if sys.byteorder == "big":
        numbers.byteswap()
    return numbers


def number(parameters, name):
    try:
        return float(parameters[name])
    except (KeyError, ValueError) as error:
        raise ValueError(f"{name} is missing or no number") from error


def boolean(parameters, name):
    text = parameters.get(name, "").lower()
    if text not in ("true", "false"):
        raise ValueError(f"{name} is neither true nor false")
    return text == "true"


class World:
    """The devices and the settings."""

    def __init__(self, settings):
        self.lock = threading.RLock()
        self.settings = settings
        self.transaction = 0
        self.shift = 0  # of the devices' numbers
        self.start_devices()

    def start_devices(self):
        self.mount, self.camera, self.wheel = Mount(self), Camera(self), FilterWheel(self)

    def restart(self):
        self.shift += self.settings.renumber
        place = self.mount.position()
        self.start_devices()
        self.mount.ra, self.mount.dec = place

    def devices(self):
        """(number, device), as the server numbers them now."""
        return [(self.shift + i, device) for i, device in enumerate([self.mount, self.camera, self.wheel])]

    def find(self, kind, number):
        for its_number, device in self.devices():
            if device.kind == kind and its_number == number:
                return device
        return None

    def configured(self):
        kinds = {"telescope": "Telescope", "camera": "Camera", "filterwheel": "FilterWheel"}
        return [{"DeviceName": device.name,
                 "DeviceType": kinds[device.kind],
                 "DeviceNumber": number,
                 "UniqueID": f"test-{device.kind}"}
                for number, device in self.devices()]

class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def log_message(self, *_arguments):
        pass

    def do_GET(self):
        self.serve()

    def do_PUT(self):
        self.serve()

    def serve(self):
        address = urllib.parse.urlsplit(self.path)
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        self.server.connections.add(self.connection)
        if address.path.startswith("/private/"):
            return self.serve_private(address.path[len("/private/"):], body)
        is_put = self.command == "PUT"
        pairs = urllib.parse.parse_qsl(body.decode() if is_put else address.query, keep_blank_values=True)
        # The keys of a PUT have to be spelt right, those of a GET needn't.
        parameters = dict(pairs) if is_put else {name.lower(): value for name, value in pairs}
        transaction = int(parameters.get("ClientTransactionID" if is_put else "clienttransactionid", 0))
        self.answer(*self.reply(address.path, is_put, parameters, transaction))

    # ---- the right answer: status, content type, body

    def reply(self, path, is_put, parameters, transaction):
        world = self.server.world
        try:
            if path.startswith("/management/"):
                return self.management(path, transaction)
            match = re.fullmatch(r"/api/v1/([a-z]+)/(\d+)/([a-z0-9]+)", path)
            if match is None:
                return 404, "text/plain", b"no such page"
            with world.lock:
                device = world.find(match[1], int(match[2]))
            if device is None:
                return 404, "text/plain", b"no such device"
            if match[3] == "imagearray" and not is_put and device.kind == "camera":
                return self.picture(device, transaction)
            method = getattr(device, ("put_" if is_put else "get_") + match[3], None)
            if method is None:
                raise Unknown
            if match[3] == "connected" and is_put:  # may take its time, without holding others up
                return self.good(method(parameters), transaction, is_put)
            with world.lock:
                return self.good(method(parameters) if is_put else method(), transaction, is_put)
        except Unknown:
            return 404, "text/plain", b"no such member"
        except AlpacaError as error:
            return self.json({"Value": None, "ErrorNumber": error.number, "ErrorMessage": str(error)}, transaction)
        except ValueError as error:
            return 400, "text/plain", str(error).encode()

    def management(self, path, transaction):
        world = self.server.world
        if not world.settings.management:
            return 404, "text/plain", b"no such page"
        with world.lock:
            description = {"ServerName": "Test server", "Manufacturer": "Nobody", "ManufacturerVersion": "1",
                           "Location": "Here"}
            values = {"/management/apiversions": [1],
                      "/management/v1/description": description,
                      "/management/v1/configureddevices": world.configured()}
        if path not in values:
            return 404, "text/plain", b"no such page"
        return self.good(values[path], transaction)

    def picture(self, camera, transaction):
        accepts = self.headers.get("Accept", "")
        if "application/imagebytes" in accepts and not camera.settings.bytesNever:
            return 200, "application/imagebytes", camera.image_bytes(transaction)
        return 200, "application/json; charset=utf-8", camera.image_json(transaction)

    def good(self, value, transaction, is_put=False):
        answer = {"ErrorNumber": 0, "ErrorMessage": ""}
        if not is_put:
            answer["Value"] = value
        return self.json(answer, transaction)

    def json(self, answer, transaction):
        world = self.server.world
        with world.lock:
            world.transaction += 1
            answer["ServerTransactionID"] = world.transaction
        answer["ClientTransactionID"] = transaction
        return 200, "application/json; charset=utf-8", json.dumps(answer).encode()

    # ---- as it is sent

    def answer(self, status, content_type, body):
        head = (f"HTTP/1.1 {status} Status\r\nContent-Type: {content_type}\r\n"
                f"Content-Length: {len(body)}\r\n\r\n").encode()
        try:
            self.wfile.write(head)
            self.wfile.write(body)
        except OSError:
            self.close_connection = True

    # ---- the tests' own door

    def serve_private(self, name, body):
        world = self.server.world
        values = json.loads(body) if body else {}
        with world.lock:
            if name == "set":
                world.settings.update(values)
                world.camera.frame = [0, 0, world.settings.width, world.settings.height]
            elif name == "reset":
                world.settings.__dict__.update(vars(Settings()), **self.server.given)
                world.camera.frame = [0, 0, world.settings.width, world.settings.height]
            elif name == "restart":
                world.restart()
        self.wfile.write(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 2\r\n\r\n{}")
        self.close_connection = True
        if name == "away":
            threading.Thread(target=self.server.go_away, args=(values["seconds"],), daemon=True).start()


class Server(ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 64

    def __init__(self, address, world):
        super().__init__(address, Handler)
        self.world = world
        self.connections = set()
        self.present = threading.Event()
        self.present.set()

    def handle_error(self, request, client_address):
        pass  # a client that went away

    def close_request(self, request):
        self.connections.discard(request)
        super().close_request(request)

    shutdown_request = close_request

    def go_away(self, seconds):
        """Nobody listens for a while."""
        self.present.clear()
        address = self.server_address
        self.shutdown()
        self.socket.close()
        for connection in list(self.connections):
            try:
                connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
        time.sleep(seconds)
        self.socket = socket.socket(self.address_family, self.socket_type)
        self.server_bind_to(address)
        self.present.set()
        self.serve_forever(poll_interval=0.05)

    def server_bind_to(self, address):
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.bind(address)
        self.socket.listen(self.request_queue_size)


def answer_searches(udp, server):
    while True:
        question, address = udp.recvfrom(1024)
        if server.present.is_set() and question.startswith(b"alpacadiscovery"):
            udp.sendto(json.dumps({"AlpacaPort": server.server_address[1]}).encode(), address)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--discovery-port", type=int, default=0)
    parser.add_argument("--set", default="{}")
    options = parser.parse_args()

    settings = Settings()
    settings.update(json.loads(options.set))
    server = Server(("127.0.0.1", options.port), World(settings))
    server.given = json.loads(options.set)
    udp = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    udp.bind(("127.0.0.1", options.discovery_port))
    for target, arguments in ((server.serve_forever, (0.05,)), (answer_searches, (udp, server))):
        threading.Thread(target=target, args=arguments, daemon=True).start()
    print(json.dumps({"port": server.server_address[1], "discoveryPort": udp.getsockname()[1]}), flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
