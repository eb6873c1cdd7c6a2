import csv
import io
import json
import os
import pty
import re
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, run

WRITE = ["wiper", "write", "0", "63"]


class Commands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.log = Path(folder.name) / "wire.log"

    def reports(self):
        """Bytes of the reports that went out, as recorded."""
        lines = re.findall(r"^ *\d+ out \d ((?:[0-9A-F]{2} ?){64})", self.log.read_text(), re.M)
        return [bytes.fromhex(line) for line in lines]

    def test_write(self):
        code, out, err = run(*WRITE, "--simulate=KV4071", "--json")
        self.assertEqual((code, err), (0, ""))
        result = json.loads(out)
        volts = result.pop("volts")
        self.assertAlmostEqual(volts, 5.0 * 63 / 128, delta=0.02)
        self.assertEqual(result, {"channel": 0, "written": {"value": 63, "hex": "3F"},
                                  "read": {"value": 63, "hex": "3F"}, "status": 8})
        code, out, _ = run("wiper", "write", "3", "0xff", "--simulate=KV4078")
        self.assertEqual(code, 0)
        self.assertRegex(out, r"^channel 3  written 255 \(FF\)  read 255 \(FF\)  4\.9\d\d V  bus status 8\n$")

    def test_exit_codes_and_what_is_said(self):
        cases = [
            ([*WRITE, "--simulate", "--vcc", "off"], 1, "VCC is not turned on"),
            ([*WRITE, "--simulate", "--address", "52"], 1, "address 52 does not answer"),
            (["wiper", "read", "0", "--simulate", "--address", "52"], 1, "address 52 does not answer"),
            (["wiper", "sweep", "0", "--simulate", "--address", "52"], 1, "1 of 1 positions bad"),
            (["wiper", "write", "0", "128", "--simulate"], 2, "0 to 127"),
            (["wiper", "write", "0", "3G", "--simulate"], 2, "'3G' is no position"),
            (["wiper", "write", "0", "", "--simulate"], 2, "no position"),
            (["wiper", "write", "0", "99999999999", "--simulate"], 2, "no position"),
            (["wiper", "write", "1", "5", "--simulate"], 2, "channel 0 alone"),
            (["wiper", "write", "0", "64", "--simulate", "--taps", "64"], 2, "0 to 63"),
            ([*WRITE, "--simulate=KX1"], 2, "unknown part 'KX1'"),
            ([*WRITE, "--simulate", "--part", "KX1"], 2, "'KX1' is no part"),
            ([*WRITE, "--simulate", "--address", "51"], 2, "no even hexadecimal address"),
            ([*WRITE, "--virtual-time"], 2, "real board"),
            ([*WRITE, "--simulate", "--start-time", "noon"], 2, "noon"),
            (["wiper", "sweep", "0", "--simulate", "--csv", "--json"], 2, "exclude"),
            (["wiper", "sweep", "0", "--simulate", "--step", "0"], 2, "--step"),
            (["wiper", "write", "--simulate"], 2, "CHANNEL"),
            (["wiper"], 2, "subcommand"),
            (["wipe"], 2, "wipe"),
            ([*WRITE, "--simulate", "--wire-log", "/nonexistent/wire.log"], 5, "/nonexistent/wire.log"),
            ([*WRITE, "--replay", "/nonexistent/wire.log"], 5, "/nonexistent/wire.log"),
            ([*WRITE, "--simulate", "--folder", "/nonexistent"], 5, "/nonexistent"),
        ]
        for args, wanted, says in cases:
            with self.subTest(args=args):
                code, out, err = run(*args)
                self.assertEqual(code, wanted, err)
                self.assertIn(says, err)
                if wanted != 1:
                    self.assertEqual(out, "")

    def test_nothing_is_sent_for_a_position_that_the_part_has_not(self):
        run("wiper", "write", "0", "200", "--simulate", "--wire-log", self.log)
        self.assertEqual(self.reports(), [])

    def test_sweep(self):
        code, out, err = run("wiper", "sweep", "0", "--simulate", "--csv")
        self.assertEqual((code, err), (0, ""), "progress is for terminals")
        rows = list(csv.DictReader(io.StringIO(out)))
        self.assertEqual([int(row["read"]) for row in rows], list(range(128)))
        volts = [float(row["volts"]) for row in rows]
        self.assertEqual(volts, sorted(volts))
        code, out, _ = run("wiper", "sweep", "2", "--simulate=KV4074", "--from", "9", "--to", "3", "--step", "3", "--json")
        sweep = json.loads(out)
        self.assertEqual([point["read"]["value"] for point in sweep["points"]], [9, 6, 3])
        self.assertEqual((code, sweep["complete"], sweep["bad"], sweep["address"]), (0, True, 0, "A0"))
        code, out, _ = run("wiper", "sweep", "0", "--simulate", "--to", "1")
        self.assertEqual(len({len(line) for line in out.splitlines()}), 1, "columns stand under one another")

    def test_progress_and_colour_are_for_terminals(self):
        ours, theirs = pty.openpty()
        done = subprocess.run([PROGRAM, "wiper", "sweep", "0", "--simulate"], stdout=subprocess.PIPE, stderr=theirs,
                              timeout=TIMEOUT, env=ENVIRONMENT)
        os.close(theirs)
        shown = ""
        try:
            while block := os.read(ours, 65536):
                shown += block.decode()
        except OSError:
            pass  # how a terminal's end of file looks
        os.close(ours)
        self.assertIn("sweep [", shown)
        self.assertTrue(shown.endswith("\r\033[K"), "the bar is taken away")
        self.assertNotIn(b"\033", done.stdout)

    def test_interrupted_sweep_leaves_vcc_off(self):
        sweep = subprocess.Popen([PROGRAM, "wiper", "sweep", "0", "--simulate", "--real-time", "--wire-log", self.log],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=ENVIRONMENT)
        for _ in range(3):
            sweep.stdout.readline()
        sweep.send_signal(signal.SIGINT)
        _, err = sweep.communicate(timeout=TIMEOUT)
        self.assertEqual(sweep.returncode, 130)
        self.assertIn("interrupted after", err)
        port2 = [report[4] for report in self.reports() if report[1:4] == bytes([18, 0, 0xA0])]
        self.assertTrue(any(value & 0x20 for value in port2), "VCC was on")
        self.assertFalse(port2[-1] & 0x20)

    def test_replay(self):
        run(*WRITE, "--simulate", "--wire-log", self.log)
        recorded = self.log.read_text()
        self.assertEqual(run(*WRITE, "--replay", self.log)[0], 0)

        other = run("wiper", "write", "0", "62", "--replay", self.log)
        self.assertEqual(other[0], 1)
        self.assertIn("differs from the recording", other[2])

        read_back = recorded.replace(" in  0 01 00 3F", " in  0 01 00 3E")
        self.assertNotEqual(read_back, recorded)
        self.log.write_text(read_back)
        code, _, err = run(*WRITE, "--replay", self.log)
        self.assertEqual(code, 1)
        self.assertIn("wrote 63 but read 62 back", err)

        refused = re.sub(r"( out 0 01 06 50(?: [0-9A-F]{2}){61})\n.* in .*\n", r"\1 failed\n", recorded, count=1)
        self.assertNotEqual(refused, recorded)
        self.log.write_text(refused)
        code, _, err = run(*WRITE, "--replay", self.log)
        self.assertEqual(code, 4, err)
        self.assertIn("link to the board was lost while writing the wiper", err)

    def test_output_that_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM, "wiper", "read", "0", "--simulate"], stdout=full, stderr=subprocess.PIPE,
                                  text=True, timeout=120, check=False)
        self.assertEqual(done.returncode, 5)
        self.assertIn("the output could not be written", done.stderr)

    def test_boards_and_doctor(self):
        code, out, _ = run("boards", "--simulate", "--board", "1", "--json")
        boards = json.loads(out)
        self.assertEqual((code, [board["board"] for board in boards]), (0, [0, 1]))
        self.assertEqual(boards[1]["firmware"], "1.2 - 2008/June/12")
        plugged_in = run("boards")[0] == 0
        code, out, _ = run("doctor")
        self.assertIn("udev rule", out)
        if not plugged_in:
            self.assertEqual(code, 3)
            code, out, err = run("wiper", "read", "0")
            self.assertEqual((code, out), (3, ""))
            self.assertIn("no evaluation board is plugged in", err)

    def test_help(self):
        for args in (["--help"], ["wiper", "sweep", "--help"]):
            code, out, err = run(*args)
            self.assertEqual((code, err), (0, ""))
            self.assertIn("Usage: vrkctl", out)


if __name__ == "__main__":
    unittest.main()
