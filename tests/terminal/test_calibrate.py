import json
import re
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, hear_signals, run


class Calibrate(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.file = self.folder / "VRK_Cal_Data.txt"
        self.log = self.folder / "wire.log"
        self.scenario = self.folder / "scenario.jsonl"

    def calibrate(self, *args):
        return run("calibrate", "--simulate", "--folder", self.folder, "--wire-log", self.log, *args)

    def supplies_left(self):
        return [int(value, 16) & 0x60 for value in re.findall(r" out 0 01 12 00 A0 (..)", self.log.read_text())][-1]

    def test_levels_and_their_use(self):
        code, out, err = self.calibrate("--json", "--save")
        self.assertEqual((code, err), (0, ""))
        told = json.loads(out)
        self.assertEqual((told["vref"], told["saved"], told["ended"]), (3.3, str(self.file), "completed"))
        self.assertEqual([point["code"] for point in told["codes"]], [f"{code:02X}" for code in range(128)])
        self.assertEqual([target["target"] for target in told["targets"]], [2.7, 3.0, 3.3, 3.5, 4.0, 4.5, 5.0])
        saved = self.file.read_text().splitlines()
        for target, line in zip(told["targets"], saved[2:]):
            self.assertEqual(line, f"{target['target']},{target['code']},{target['pinVolts']:.4f},{target['volts']:.4f}")
            self.assertAlmostEqual(target["residual"], target["volts"] - target["target"], delta=0.00011)
            self.assertLess(abs(target["residual"]), 0.02)
        self.assertEqual(self.supplies_left(), 0)
        # The level comes from the file, whatever its row says.
        self.file.write_text(re.sub(r"(?m)^3.3,..", "3.3,47", self.file.read_text()))
        run("wiper", "write", "0", "63", "--simulate", "--vcc", "3.3", "--folder", self.folder, "--wire-log", self.log)
        self.assertIn(" 50 C0 47", self.log.read_text())
        self.assertEqual(self.calibrate("--vref", "3.2", "--csv")[1].splitlines()[:2],
                         ["code,pinVolts,volts", "00,0.606843,1.213685"])

    def test_what_cannot_be_calibrated_is_saved_by_force_alone(self):
        self.scenario.write_text('{"op":"input","channel":10,"volts":1.2,"atMs":0}\n')
        args = ("--save", "--json", "--scenario", self.scenario)
        code, out, err = self.calibrate(*args)
        self.assertEqual((code, json.loads(out)["saved"], self.file.exists()), (1, None, False))
        self.assertIn("the supply does not move: 2.400 to 2.400 V", err)
        code, out, _ = self.calibrate(*args, "--force")
        self.assertEqual((code, json.loads(out)["saved"], self.file.exists()), (1, str(self.file), True))

    def test_what_is_refused_before_anything_is_sent(self):
        for args, wanted, says in [(["--vref", "0"], 2, "above 0"), (["--vref", "3,3"], 2, "above 0"),
                                   (["--csv", "--json"], 2, "exclude"), (["--save"], 5, "Is a directory")]:
            self.file.exists() or self.file.mkdir()
            with self.subTest(args=args):
                code, out, err = self.calibrate(*args)
                self.assertEqual((code, out), (wanted, ""))
                self.assertIn(says, err)
                self.assertNotIn(" out ", self.log.read_text() if self.log.exists() else "")

    def test_a_lost_board(self):
        self.scenario.write_text('{"op":"unplug","board":0,"atMs":500}\n{"op":"plug","board":0,"atMs":900}\n')
        code, out, err = self.calibrate("--json", "--scenario", self.scenario)
        self.assertEqual((code, json.loads(out)["ended"]), (0, "completed"), err)
        self.assertIn("VCC is switched on again", err)
        volts = [point["pinVolts"] for point in json.loads(out)["codes"]]
        self.assertEqual(volts, sorted(volts), "no reading of another channel or code")
        self.scenario.write_text('{"op":"unplug","board":0,"atMs":500}\n')
        code, out, err = self.calibrate("--json", "--save", "--scenario", self.scenario, "--link-wait", "1")
        told = json.loads(out)
        self.assertEqual((code, told["ended"], told["targets"], told["saved"]), (4, "link lost", [], None))
        self.assertGreater(len(told["codes"]), 3)
        self.assertFalse(self.file.exists())

    def test_however_it_ends_vcc_goes_off(self):
        for end, wanted in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (None, 141)]:
            with self.subTest(wanted=wanted):
                sweep = subprocess.Popen([PROGRAM, "calibrate", "--simulate", "--real-time", "--csv", "--save", "--folder",
                                          self.folder, "--wire-log", self.log], stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL, text=True, env=ENVIRONMENT, preexec_fn=hear_signals)
                for _ in range(4):
                    sweep.stdout.readline()
                sweep.stdout.close() if end is None else sweep.send_signal(end)
                self.assertEqual(sweep.wait(TIMEOUT), wanted)
                sweep.stdout.close()
                self.assertEqual((self.supplies_left(), self.file.exists()), (0, False))


if __name__ == "__main__":
    unittest.main()
