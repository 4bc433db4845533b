"""A script's end of vantrel-headless: start it, send commands, read replies."""

import json
import subprocess


class OperatorError(RuntimeError):
    """A command was refused, or a wait timed out."""


class Operator:
    """One running vantrel-headless; commands are keyword arguments, replies dictionaries."""

    def __init__(self, program, *options):
        self.process = subprocess.Popen([program, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def do(self, command, **arguments):
        self.process.stdin.write(json.dumps({"do": command, **arguments}) + "\n")
        self.process.stdin.flush()
        line = self.process.stdout.readline()
        if not line:
            raise OperatorError(f"the program ended at {command}")
        reply = json.loads(line)
        if not reply["ok"]:
            raise OperatorError(f"{command} {arguments}: {reply}")
        return reply

    def read(self, control):
        return self.do("read", control=control)

    def type(self, control, text):
        return self.do("type", control=control, text=text)

    def click(self, control):
        return self.do("click", control=control)

    def wait(self, seconds=3600, **condition):
        return self.do("wait", **{"for": condition}, seconds=seconds)

    def get(self, program, member):
        return self.do("automation", object=program, get=member)["value"]

    def put(self, program, member, value):
        self.do("automation", object=program, put=member, value=value)

    def call(self, program, member, *arguments):
        return self.do("automation", object=program, call=member, args=list(arguments)).get("value")

    def log(self):
        return self.do("log", **{"from": 0})["lines"]

    def close(self):
        self.process.stdin.close()
        return self.process.wait(timeout=60)
