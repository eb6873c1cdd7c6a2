"""Runs the real vrkctl, and talks to `vrkctl rpc`: what a user's script in Python would do."""

import json
import os
import signal
import subprocess
import unittest

PROGRAM = os.environ["VRKCTL"]
ENVIRONMENT = {**os.environ, "NO_COLOR": "1"}
TIMEOUT = 120  # seconds; a hang must fail, a slow machine must not


def hear_signals():
    """For a child to be interrupted: whoever runs the tests in the background lets it ignore Ctrl-C."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)


def run(*args, **options):
    """Runs a command to its end; gives exit code, stdout, stderr."""
    done = subprocess.run([PROGRAM, *map(str, args)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=TIMEOUT, env=ENVIRONMENT, **options)
    assert "\x1b" not in done.stdout + done.stderr, "colour codes in what is no terminal"
    return done.returncode, done.stdout, done.stderr


class RpcFailure(Exception):
    def __init__(self, error):
        super().__init__(error["message"])
        self.code = error["code"]


class Rpc:
    """A bench behind `vrkctl rpc`. Notifications gather in `notes`."""

    def __init__(self, *args, **options):
        options = {"stderr": subprocess.PIPE, "env": ENVIRONMENT, **options}
        self.process = subprocess.Popen([PROGRAM, "rpc", *args], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, **options)
        self.notes = []
        self.last = 0

    def __call__(self, method, **params):
        self.last += 1
        self.send({"jsonrpc": "2.0", "id": self.last, "method": method, "params": params})
        while True:
            message = self.receive()
            if "method" in message:
                self.notes.append(message)
            elif "error" in message:
                raise RpcFailure(message["error"])
            else:
                assert message["id"] == self.last, message
                return message["result"]

    def send(self, message):
        text = message if isinstance(message, str) else json.dumps(message)
        self.process.stdin.write(text + "\n")
        self.process.stdin.flush()

    def receive(self):
        line = self.process.stdout.readline()
        assert line, "vrkctl rpc has gone: " + (self.process.stderr.read() if self.process.stderr else "")
        return json.loads(line)

    def get(self, path, aspect):
        return self("get", path=path)[aspect]

    def close(self):
        """Closes its input; gives the exit code."""
        self.process.stdin.close()
        code = self.process.wait(TIMEOUT)
        self.process.stdout.close()
        if self.process.stderr:
            self.process.stderr.close()
        return code


class RpcTest(unittest.TestCase):
    """A simulated board with a KV4071, in virtual time, the I2C panel open and VCC on."""

    panel = "frmVRK_User1."

    def setUp(self):
        self.rpc = Rpc("--simulate=KV4071", "--virtual-time")
        self.addCleanup(self.closeUnlessClosed)

    def closeUnlessClosed(self):
        if not self.rpc.process.stdin.closed:
            self.rpc.close()

    def openPanel(self):
        self.rpc("select", path="frmStartup.cboVRKSelect", index=2)
        self.rpc("click", path=self.panel + "OptVCC(0)")
        self.assertEqual(self.rpc("dialogs"), [])

    def wired(self, method, **params):
        """A request, and the reports that it put on the wire: direction and bytes without the zeros behind."""
        self.rpc("wire", on=True)
        self.rpc.notes.clear()
        self.rpc(method, **params)
        self.rpc("wire", on=False)
        wire = [note["params"] for note in self.rpc.notes if note["method"] == "wire"]
        for report in wire:
            self.assertEqual(len(bytes.fromhex(report["hex"])), 64)
        return [(report["dir"], bytes.fromhex(report["hex"]).rstrip(b"\0").hex().upper()) for report in wire]
