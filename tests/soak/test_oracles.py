"""Do the oracles notice what they are there for? A bench is settled with something that should have been gone."""

import signal
import tempfile
import unittest
from pathlib import Path

from bench import Bench, Finding
from oracles import MEMORY_GROWTH, Oracles
from soak import Soak

READ_BUTTON = {"path": "frmVRK_User1.cmdI2Read(2)", "aspect": "enabled"}
SPI_TRANSFER, VIN0 = 9, 6


class StandIn:
    """What a process under test uses up."""

    def __init__(self, handles, memory, files):
        self.handles, self.used = handles, (memory, files)

    def __call__(self, method, **params):
        return {"handles": self.handles}

    def figures(self):
        return self.used


class OraclesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="soak")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def test_what_was_left_behind_is_found(self):
        soak = Soak(self.folder)
        soak.begin()
        self.addCleanup(soak.bench.kill)
        calm = soak.oracles.calm
        cases = [("KV4071", ("set", {**READ_BUTTON, "value": False}), "left disabled: frmVRK_User1.cmdI2Read(2)",
                  ("set", {**READ_BUTTON, "value": True})),
                 ("KV4184", ("sim", {"op": "reply", "command": SPI_TRANSFER, "hex": "010001020304", "times": 999}),
                  "is shown, the part is at", ("sim", {"op": "clear"})),
                 ("UPDN100", ("sim", {"op": "input", "channel": VIN0, "volts": 0.5}), "V are shown at position 50 of 100",
                  ("sim", {"op": "clear"}))]
        for part, (method, params), says, (mend, mended) in cases:
            with self.subTest(says=says):
                soak.oracles.calm = lambda: (calm(), soak.bench(method, **params))  # noqa: B023: called in this turn
                with self.assertRaises(Finding) as found:
                    soak.oracles.settle(part)
                self.assertIn(says, str(found.exception))
                soak.oracles.calm = calm
                soak.bench(mend, **mended)
                soak.oracles.settle(part)

    def test_what_grows_is_found(self):
        oracles = Oracles.__new__(Oracles)
        oracles.files_open, oracles.warm = 7, 100
        for used, says in [((2, 100 + MEMORY_GROWTH, 7), None), ((3, 100, 7), "3 handles"), ((2, 100, 8), "8 files"),
                           ((2, 101 + MEMORY_GROWTH, 7), "behind the warm-up 100")]:
            oracles.bench = StandIn(*used)
            if says is None:
                oracles.check_resources()
                continue
            with self.assertRaisesRegex(Finding, says):
                oracles.check_resources()

    def test_a_process_that_hangs_or_dies_is_found(self):
        for number, says in [(signal.SIGSTOP, "was not answered within"), (signal.SIGKILL, "the process died")]:
            bench = Bench(self.folder)
            self.addCleanup(bench.kill)
            bench("now")
            bench.rpc.process.send_signal(number)
            with self.assertRaisesRegex(Finding, says):
                bench("now", seconds=3)


if __name__ == "__main__":
    unittest.main()
