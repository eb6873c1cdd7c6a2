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

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, hear_signals, run

WRITE = ["wiper", "write", "0", "63"]
EXAMPLE = Path(__file__).parents[2] / "examples/kv4071-wiper.txt"


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
        self.assertEqual((code, err), (0, "vrkctl: VCC stays on: a volatile position would be lost with it\n"))
        result = json.loads(out)
        volts = result.pop("volts")
        self.assertAlmostEqual(volts, 5.0 * 63 / 128, delta=0.02)
        self.assertEqual(result, {"channel": 0, "written": {"value": 63, "hex": "3F"},
                                  "read": {"value": 63, "hex": "3F"}, "status": 8})
        for args, volts in [(["--simulate", "kv4078"], r"4\.9\d\d"), (["--simulate=KV4078", "--vcc", "3.3"], r"3\.2\d\d")]:
            code, out, _ = run("wiper", "write", "3", "0xff", *args)
            self.assertEqual(code, 0)
            self.assertRegex(out, rf"^channel 3  written 255 \(FF\)  read 255 \(FF\)  {volts} V  bus ok\n$")

    def test_the_tour_of_the_readme(self):
        readme = (Path(__file__).parents[2] / "README.md").read_text()
        tour = re.findall(r"^    vrkctl (.*--simulate.*)$", readme, re.M)
        self.assertEqual(len(tour), 2)
        for line in tour:
            code, out, _ = run(*line.split())
            self.assertEqual(code, 0, line)
            self.assertRegex(out, r"\d\.\d{3}")

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
            ([*WRITE, "--simulate", "--wire-log", ""], 2, "--wire-log: the value is empty"),
            (["wiper", "sweep", "0", "--simulate", "--csv", "--json"], 2, "exclude"),
            (["wiper", "sweep", "0", "--simulate", "--step", "0"], 2, "--step"),
            (["wiper", "write", "--simulate"], 2, "CHANNEL"),
            ([], 2, "Say what keeps"),
            (["wiper"], 2, "sweep  Write, read back"),
            (["wipre"], 2, "did you mean 'wiper'?"),
            (["help", "wiper", "swep"], 2, "did you mean 'sweep'?"),
            (["boards", "--simulte"], 2, "did you mean '--simulate'?"),
            (["wiper", "read", "0", "--simulate", "KV4017"], 2, "did you mean 'KV4071'?"),
            (["wiper", "read", "0", "1"], 2, "one word too many"),
            (["wiper", "read", "0", "--simulate=UPDN100"], 2, "no part on a bus"),
            (["wiper", "write", "0", "1024", "--simulate=Q3318"], 2, "0 to 1023"),
            (["register", "read", "AC", "--simulate"], 2, "did you mean 'ACR'?"),
            (["register", "read", "0A", "--simulate"], 2, "WR0, GP0, ACR"),
            (["register", "read", "ACR", "--part", "KV4071", "--volatile", "--nonvolatile", "--simulate"], 2, "exclude"),
            (["register", "read", "WCR0", "--volatile", "--simulate=Q4410"], 2, "no choice"),
            (["register", "write", "ACR", "100", "--simulate"], 2, "0 to FF"),
            (["register", "write", "ACR", "G0", "--simulate"], 2, "no hexadecimal value"),
            (["register", "read", "ACR"], 2, "--part"),
            (["register", "read", "ACR", "--simulate", "--map", "/nonexistent/map.toml"], 5, "/nonexistent/map.toml"),
            (["register", "read", "ACR", "--simulate", "--vcc", "off", "--json"], 1, "without VCC"),
            (["register", "write", "GP0", "1", "--simulate", "--address", "52"], 1, "does not answer"),
            (["supply", "on", "--vcc", "6", "--simulate"], 2, "2.7, 3.0"),
            (["supply", "on", "--vcc", "off", "--simulate"], 2, "supply off"),
            (["wiper", "read", "0", "--simulate", "--taps", "0"], 2, "--taps"),
            (["wiper", "read", "0", "--simulate", "--address="], 2, "--address"),
            (["wiper", "read", "0", "--simulate", "--vcc", "6"], 2, "2.7, 3.0"),
            ([*WRITE, "--replay", __file__, "--wire-log", __file__], 2, "overwrite"),
            ([*WRITE, "--simulate", "--wire-log", "/nonexistent/wire.log"], 5, "/nonexistent/wire.log"),
            ([*WRITE, "--simulate", "--wire-log", "/dev/full"], 5, "No space left"),
            ([*WRITE, "--replay", "/nonexistent/wire.log"], 5, "/nonexistent/wire.log"),
            ([*WRITE, "--simulate", "--folder", "/nonexistent"], 5, "/nonexistent"),
        ]
        for args, wanted, says in cases:
            with self.subTest(args=args):
                code, out, err = run(*args)
                self.assertEqual(code, wanted, err)
                self.assertIn(says, err)
                self.assertTrue(err.startswith("vrkctl: "), err)
                self.assertNotIn("vrkctl: VCC stays on", err)
                if wanted != 1:
                    self.assertEqual(out, "")

    def test_pipes_that_nobody_serves_keep_no_command_waiting(self):
        pipe = self.log.with_name("pipe")
        os.mkfifo(pipe)
        script, runin = ["script", "run", EXAMPLE, "--simulate"], ["runin", "run", "--simulate=UPDN100", "--steps", 4, "--log-every", 4]
        for args in ([*WRITE, "--simulate", "--wire-log"], [*WRITE, "--replay"], [*WRITE, "--simulate", "--sim-memory"],
                     [*WRITE, "--simulate", "--scenario"], ["register", "list", "--simulate", "--map"], ["script", "check"],
                     [*script, "--save"], [*script, "--junit"], [*runin, "--log"], [*runin, "--junit"], [*runin, "--journal"],
                     ["runin", "report"], ["runin", "resume"]):
            with self.subTest(args=args):
                code, _, err = run(*args, pipe)
                self.assertEqual((code, str(pipe) in err), (5, True), err)

    def test_registers(self):
        stays = "vrkctl: VCC stays on: a volatile value would be lost with it\n"
        cases = [
            (["read", "acr", "--simulate=KV4074"], "ACR", "08", "40", {"STORE": "0", "SHDN": "1"}),
            (["read", "10", "--simulate=KV4078"], "ACR", "10", "40", {"STORE": "0", "SHDN": "1"}),
            (["write", "gp1", "a5", "--simulate=KV4074"], "GP1", "05", "A5", {}),
            (["write", "WR2", "3f", "--simulate=KV4184", "--volatile"], "WR2", "02", "3F", {"POSITION": "3F"}),
            (["write", "ACR", "C0", "--simulate=KV4180"], "ACR", "10", "C0", {"STORE": "1", "SHDN": "1"}),
            (["write", "DR3.1", "2a", "--simulate=Q4410"], "DR3.1", "B7", "2A", {}),
            (["write", "wcr2", "2b", "--simulate=Q4420"], "WCR2", "92", "2B", {}),
            (["write", "DR0.3", "2a5", "--simulate=Q3318"], "DR0.3", "AC", "2A5", {}),
            (["write", "WCR0", "17", "--simulate=Q3310"], "WCR0", "80", "017", {}),
            (["write", "DR1.2", "5a", "--simulate=Q4422"], "DR1.2", "19", "5A", {}),
        ]
        for args, name, address, value, fields in cases:
            with self.subTest(args=args):
                code, out, err = run("register", *args, "--json")
                self.assertEqual((code, err), (0, stays if args[0] == "write" else ""))
                self.assertEqual(json.loads(out), {"name": name, "address": address, "access": "read-write",
                                                   "value": value, "fields": fields, "status": 8})
        code, out, _ = run("register", "read", "ACR", "--simulate")
        self.assertEqual((code, out), (0, "ACR (02)  40  STORE 0 (IVR EEPROM)  SHDN 1 (running)  bus ok\n"))
        code, out, _ = run("register", "list", "--part", "kv4071", "--json")
        self.assertEqual([(one["name"], "value" in one) for one in json.loads(out)],
                         [("WR0", False), ("GP0", False), ("ACR", False)])

    def transfers(self):
        return [report[2:5 + report[4] + (0 if report[2] % 2 else report[3])].hex(" ").upper()
                for report in self.reports() if report[1] == 6]

    def test_the_control_register_is_put_back(self):
        run("register", "write", "WR0", "11", "--volatile", "--simulate", "--wire-log", self.log)
        self.assertEqual(self.transfers(), ["51 01 01 02", "50 01 01 02 C0", "50 01 01 00 11", "51 01 01 00",
                                            "50 01 01 02 40"])
        run("register", "write", "WR0", "11", "--nonvolatile", "--simulate", "--wire-log", self.log)
        self.assertEqual(self.transfers(), ["51 01 01 02", "50 01 01 00 11", "51 01 01 00"], "it stood so")

    def test_a_map_of_the_users_own(self):
        own = self.log.parent / "own.toml"
        own.write_text('part = "X"\nbus = "i2c"\nprotocol = "registers"\naddress = 0x50\n[[registers]]\nname = "Mine"\n'
                       'addressOffset = 1\naccess = "read-only"\nstorage = "volatile"\nresetValue = 0\n')
        args = ("--map", own, "--simulate")
        self.assertEqual(run("register", "read", "mine", *args)[0], 0)
        for command, code, says in [(["write", "mine", "1"], 2, "read-only"), (["read", "ACR"], 2, "no register of X"),
                                    (["read", "mine", "--volatile"], 2, "no choice between")]:
            done = run("register", *command, *args, "--wire-log", self.log)
            self.assertEqual(done[0], code)
            self.assertIn(says, done[2])
            self.assertEqual(self.reports(), [])
        own.write_text(own.read_text().replace("read-only", "read"))
        code, _, err = run("register", "list", *args)
        self.assertEqual(code, 5)
        self.assertIn("own.toml:8:10: expected access = one of \"read-write\"", err)

    def test_supplies(self):
        code, out, err = run("supply", "on", "--vcc", "3.3", "--simulate", "--json", "--wire-log", self.log)
        told = json.loads(out)
        self.assertEqual((code, err), (0, "vrkctl: VCC stays on\n"))
        self.assertAlmostEqual(told.pop("vcc"), 3.3, delta=0.05)
        self.assertEqual(told, {"on": True, "code": "3E", "vminus": "on"})
        last = [report[4] for report in self.reports() if report[1:4] == bytes([18, 0, 0xA0])][-1]
        self.assertEqual(last & 0x70, 0x70, "both on, and the part has the bus again")
        for command in ("status", "off"):
            code, out, err = run("supply", command, "--simulate", "--json", "--wire-log", self.log)
            told = json.loads(out)
            self.assertEqual((code, err, told["on"], told["vminus"]), (0, "", False, "off"))
            self.assertLess(told["vcc"], 0.05)
            self.assertEqual(max(self.supplies(), default=0), 0, "switches nothing on")
        scenario = self.log.parent / "refused.jsonl"  # the level is not taken, the DAC keeps its own
        scenario.write_text('{"op":"fault","kind":"writeFails","times":1,"command":9,"atMs":0}\n')
        code, _, err = run("supply", "on", "--vcc", "3.3", "--simulate", "--scenario", scenario)
        self.assertEqual((code, "VCC was switched on, but measures 4.374 V" in err), (1, True), err)

    def test_wipers_of_other_families(self):
        for part, channel, position, hex_text in [("KV4184", 3, 77, "4D"), ("KV4180", 1, 200, "C8"),
                                                  ("Q4410", 2, 99, "63"), ("Q4420", 1, 98, "62"),
                                                  ("Q3318", 0, 777, "309"), ("Q3310", 0, 600, "258"),
                                                  ("Q4422", 3, 40, "28")]:
            with self.subTest(part=part):
                code, out, _ = run("wiper", "write", channel, position, f"--simulate={part}", "--json")
                result = json.loads(out)
                taps = {"KV4184": 128}.get(part, 1024 if part.startswith("Q33") else 256)
                self.assertAlmostEqual(result.pop("volts"), 5.0 * position / taps, delta=0.03)
                both = {"value": position, "hex": hex_text}
                self.assertEqual((code, result), (0, {"channel": channel, "written": both, "read": both, "status": 8}))

    def test_behind_a_loss_of_the_link_only_the_parts_own_reply_counts(self):
        scenario = self.log.parent / "lost.jsonl"
        scenario.write_text('{"op":"fault","kind":"noReply","times":1,"command":9,"atMs":100}\n')
        code, out, _ = run("register", "read", "WR1", "--simulate=KV4184", "--scenario", scenario)
        self.assertEqual((code, out), (0, "WR1 (01)  40  POSITION 40  bus ok\n"))
        code, out, _ = run("wiper", "write", "2", "33", "--simulate=KV4184", "--scenario", scenario, "--json")
        self.assertEqual((code, json.loads(out)["read"]), (0, {"value": 33, "hex": "21"}))
        scenario.write_text('{"op":"unplug","board":0,"atMs":125}\n')  # with the read pin up
        args = ("register", "read", "WCR1", "--simulate=Q4410", "--scenario", scenario, "--link-wait", "1")
        self.assertEqual(run(*args)[0], 4)

    def test_a_volatile_write_stays_one_when_the_board_loses_its_power(self):
        scenario, memory = (self.log.parent / name for name in ("gone.jsonl", "memory"))
        for part in ("KV4071", "KV4184"):
            for moment in range(104, 146, 4):  # around the control register, the write and its read-back
                with self.subTest(part=part, moment=moment):
                    scenario.write_text(f'{{"op":"unplug","board":0,"atMs":{moment}}}\n'
                                        f'{{"op":"plug","board":0,"atMs":{moment + 500}}}\n')
                    memory.unlink(missing_ok=True)
                    _, out, _ = run("register", "write", "WR0", "11", "--volatile", f"--simulate={part}", "--scenario",
                                    scenario, "--sim-memory", memory, "--json")
                    self.assertIn(json.loads(out)["value"], ("11", "40"))
                    _, out, _ = run("register", "read", "WR0", f"--simulate={part}", "--sim-memory", memory, "--json")
                    self.assertEqual(json.loads(out)["value"], "40")

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
        code, out, _ = run("wiper", "sweep", "2", "--simulate=KV4074", "--from", "9", "--to", "2", "--step", "3", "--json")
        sweep = json.loads(out)
        self.assertEqual([point["read"]["value"] for point in sweep["points"]], [9, 6, 3, 2])
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

    def supplies(self):
        """What was written to P2's two supply switches."""
        return [report[4] & 0x60 for report in self.reports() if report[1:4] == bytes([18, 0, 0xA0])]

    def test_however_it_ends_the_supplies_go_off(self):
        close = None
        for end, wanted in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129), (close, 141)]:
            with self.subTest(wanted=wanted):
                sweep = subprocess.Popen([PROGRAM, "wiper", "sweep", "0", "--simulate", "--real-time", "--wire-log",
                                          self.log], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                         env=ENVIRONMENT, preexec_fn=hear_signals)
                for _ in range(3):
                    sweep.stdout.readline()
                if end is close:
                    sweep.stdout.close()
                else:
                    sweep.send_signal(end)
                self.assertEqual(sweep.wait(TIMEOUT), wanted)
                self.assertEqual(sweep.stderr.read().count("interrupted after"), 0 if end is close else 1)
                sweep.stderr.close()
                if end is not close:
                    sweep.stdout.close()
                self.assertEqual((max(self.supplies()), self.supplies()[-1]), (0x60, 0))

    def test_vcc_stays_on_after_a_write_that_succeeded(self):
        for args, left in [(WRITE, 0x60), ([*WRITE, "--address", "52"], 0), (["wiper", "read", "0"], 0)]:
            run(*args, "--simulate", "--wire-log", self.log)
            self.assertEqual((max(self.supplies()), self.supplies()[-1]), (0x60, left), args)

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
        for args in (["wiper", "read", "0"], WRITE, ["boards"], ["--help"]):
            with open("/dev/full", "wb") as full, self.subTest(args=args):
                done = subprocess.run([PROGRAM, *args, "--simulate", "--wire-log", self.log], stdout=full,
                                      stderr=subprocess.PIPE, text=True, timeout=TIMEOUT, check=False)
                self.assertEqual(done.returncode, 5)
                self.assertIn("the output could not be written", done.stderr)
                self.assertNotIn("stays on", done.stderr)

    def test_boards_and_doctor(self):
        code, out, _ = run("boards", "--simulate", "--board", "1", "--json", "--wire-log", self.log)
        boards = json.loads(out)
        self.assertEqual((code, [board["board"] for board in boards]), (0, [0, 1]))
        self.assertEqual(boards[1]["firmware"], "1.2 - 2008/June/12")
        self.log.write_text(re.sub(r"^ *\d+ in  0 .*\n", "", self.log.read_text(), flags=re.M))
        code, out, err = run("boards", "--replay", self.log, "--json")
        first, second = json.loads(out)
        self.assertEqual((code, first["firmware"], second["firmware"]), (4, None, "1.2 - 2008/June/12"))
        self.assertIn("board 0 does not answer: " + first["error"], err)
        code, out, _ = run("doctor", "--simulate", "--json")
        self.assertEqual((code, json.loads(out)["good"]), (0, True))
        plugged_in = run("boards")[0] == 0
        code, out, _ = run("doctor")
        self.assertIn("udev rule", out)
        if not plugged_in:
            self.assertEqual(code, 3)
            code, out, err = run("wiper", "read", "0")
            self.assertEqual((code, out), (3, ""))
            self.assertIn("try --simulate, or \"vrkctl doctor\"", err)


if __name__ == "__main__":
    unittest.main()
