import csv
import io
import json
import os
import pty
import re
import signal
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, hear_signals, run

EXAMPLES = Path(__file__).parents[2] / "examples"
KV4071 = "--simulate=KV4071"


class Scripts(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def script(self, text, name="s.txt"):
        path = self.folder / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def junit(self, path):
        """State of the report, and its cases: name, what it came to, the message."""
        suite = ElementTree.parse(path).getroot().find("testsuite")
        state = suite.find("properties/property[@name='state']").get("value")
        cases = [(case.get("name"), *[(inner.tag, inner.get("message")) for inner in case]) for case in suite.iter("testcase")]
        for count, tag in [("failures", "failure"), ("errors", "error"), ("skipped", "skipped")]:
            self.assertEqual(int(suite.get(count)), len(list(suite.iter(tag))))
        self.assertEqual(int(suite.get("tests")), len(cases))
        return state, cases

    def test_the_examples_run_as_rehearsed(self):
        cases = [("kv4071-wiper.txt", "KV4071", "i2c", 0, 5, 0, {"00": 1}),
                 ("kv4074-quad.txt", "KV4074", "i2c", 0, 4, 0, {"04": 1, "05": 1}),
                 ("kv4071-interrupt.txt", "KV4071", "i2c", 0, 4, 0, {}),
                 ("kv4071-fails.txt", "KV4071", "i2c", 1, 2, 1, {}),
                 ("kv4184-spi.txt", "KV4184", "spi", 0, 3, 0, {})]
        self.assertEqual({case[0] for case in cases}, {file.name for file in EXAMPLES.glob("kv*.txt")})
        for file, part, bus, code, passed, failed, writes in cases:
            with self.subTest(file=file):
                self.assertEqual(run("script", "check", EXAMPLES / file, "--bus", bus), (0, "", ""))
                options = [EXAMPLES / file, f"--simulate={part}", "--bus", bus, "--json"]
                ended, out, err = run("script", "run", *options)
                self.assertEqual((ended, err), (code, ""))
                result = json.loads(out)
                (only,) = result["passes"]
                self.assertEqual((result["script"], result["bus"], result["verdict"], result["ended"]),
                                 (file, bus, "fail" if code else "pass", "completed"))
                self.assertEqual((only["pass"], only["passed"], only["failed"]), (1, passed, failed))
                ended, out, _ = run("script", "rehearse", *options)
                rehearsed = json.loads(out)
                about = rehearsed.pop("rehearsal")
                self.assertEqual(ended, code)
                self.assertEqual(rehearsed, result)
                self.assertEqual((about["nonvolatileWrites"], about["neverPass"]), (writes, []))
                self.assertAlmostEqual(about["seconds"], only["seconds"])
                self.assertGreater(about["reports"], 3)

    def test_report_of_a_failed_comparison(self):
        report = self.folder / "r.xml"
        code, out, _ = run("script", "run", EXAMPLES / "kv4071-fails.txt", KV4071, "--junit", report, "--csv")
        self.assertEqual(code, 1)
        state, cases = self.junit(report)
        self.assertEqual(state, "completed")
        self.assertEqual([case for case in cases if len(case) > 1],
                         [("pass 1 line 005", ("failure", "line 005: expected FF, read 7F"))])
        rows = list(csv.reader(io.StringIO(out)))
        self.assertEqual(",".join(rows[0]), "pass,line,operation,address,register,write,expected,read,verdict,ms")
        self.assertEqual(rows[5][:9], ["1", "5", " Reg:1 W:1 R:1", "50", "00", "FF", "FF", "7F", "fail"])
        self.assertEqual([row[1] for row in rows[1:]], ["1", "2", "3", "4", "5", "6"])

    def test_which_rows_run(self):
        text = "02,C0,\n00,11,11\n00,22,33\n00,44,44\n`IE\n00,66,66\n`ENDM\n`EISTART\n00,55,55\n`EIEND\n"
        all_rows = [1, 2, 3, 4, 5, 8, 9, 10, 6]
        cases = [([], 1, all_rows, [], "completed"),
                 (["--stop-on-fail"], 1, [1, 2, 3], [4, 5, 6], "stopped on fail"),
                 (["--from", "4"], 0, [4, 5, 8, 9, 10, 6], [1, 2, 3], "completed"),
                 (["--to", "2"], 0, [1, 2], [3, 4, 5, 6], "completed"),
                 (["--from", "9", "--to", "9"], 0, [9], [1, 2, 3, 4, 5, 6], "completed")]
        for options, code, ran, missed, ended in cases:
            with self.subTest(options=options):
                done, out, _ = run("script", "run", self.script(text), KV4071, "--json", "--loop", "2", *options)
                result = json.loads(out)
                self.assertEqual((done, result["ended"]), (code, ended))
                rows = result["passes"][0]["rows"]
                self.assertEqual([row["line"] for row in rows], ran + missed)
                self.assertEqual([row["line"] for row in rows if row["verdict"] == "not reached"], missed)
                self.assertEqual([one["pass"] for one in result["passes"]], [1] if "stopped" in ended else [1, 2])

    def test_errors_outweigh_fails(self):
        script = self.script("00,22,33\n`A70\n00,,11\n`AFF\n00,,11\n`w\n`ENDM")
        code, out, err = run("script", "run", script, KV4071, "--json", "--pauses", "continue")
        result = json.loads(out)
        self.assertEqual((code, result["verdict"], result["ended"]), (1, "error", "completed"))
        self.assertEqual([row["verdict"] for row in result["passes"][0]["rows"]],
                         ["fail", "ran", "error", "ran", "error", "ran"])
        self.assertIn("line 3: the read got no good answer", err)
        self.assertIn("Illegal I2C address Script Row  5 Value = FF", err)

    def test_check(self):
        script = self.script("`wx\n\n0102,,\n`AFF\n00,,XX\n")
        code, out, err = run("script", "check", script)
        self.assertEqual((code, err), (1, ""))
        self.assertEqual([re.sub(r"(error|warning): .*", r"\1", line).removeprefix(f"{script}:") for line in out.splitlines()],
                         ["1: error", "2: warning", "3: warning", "4: error", "5: warning", "5: warning"])
        found = json.loads(run("script", "check", script, "--json")[1])
        self.assertEqual(found[1], {"line": 2, "severity": "warning", "text": "blank line: it is a step that does nothing"})
        self.assertEqual(run("script", "check", self.script("00,,11\n`ENDM"), "--bus", "spi")[0], 1)
        self.assertEqual(run("script", "check", self.script("")), (0, f"{script}:1: warning: the script is empty\n", ""))

    def test_files_that_are_no_scripts(self):
        long_line = self.folder / "long.txt"
        with open(long_line, "wb") as file:
            file.truncate(1 << 30)
        cases = [(self.script(b"00,,\x0011", "binary"), 5, "NUL"), (long_line, 5, "longer than 16 MiB"),
                 (self.script("," * 70000, "line"), 5, "line 1 is longer"), (self.folder, 5, "directory"),
                 (self.folder / "none", 5, "No such file"), (self.script("#\n" * 1001, "many"), 5, "1000 lines"),
                 (Path("/dev/zero"), 5, "pipe or a device")]
        if os.geteuid() != 0:
            closed = self.script("#", "closed")
            closed.chmod(0)
            cases.append((closed, 5, "Permission denied"))
        for path, wanted, says in cases:
            for command in ("check", "run", "rehearse"):
                with self.subTest(path=path, command=command):
                    code, _, err = run("script", command, path, *([] if command == "check" else [KV4071]))
                    self.assertEqual(code, wanted)
                    self.assertIn(says, err)
        self.assertEqual(run("script", "run", self.script("", "empty"), KV4071)[0], 5)
        for text in (b"\xEF\xBB\xBF02,C0,\r\n00,11,11\r\n`ENDM\r\n", b"02,C0,\r00,11,11\r`ENDM"):
            self.assertEqual(run("script", "run", self.script(text), KV4071)[0], 0)

    def test_entries_that_cannot_be(self):
        script = self.script("00,,11\n00,,11\n`ENDM")
        for options, says in [(["--address", "FF"], "00 to FE"), (["--address", "5G"], "5G"), (["--from", "4"], "1 to 3"),
                              (["--from", "2", "--to", "1"], "behind"), (["--from", "3"], "behind the main part"),
                              (["--loop", "0"], "--loop"), (["--bus", "usb"], "--bus"), (["--pauses", "no"], "--pauses"),
                              (["--part", "KV4184"], "no part on this bus"), (["--vcc", "9"], "no level"),
                              (["--csv", "--json"], "exclude"), (["--junit", script], "one file"),
                              (["--wire-log", script], "one file"), (["--link-wait", "-1"], "--link-wait")]:
            with self.subTest(options=options):
                code, out, err = run("script", "run", script, KV4071, *options)
                self.assertEqual((code, out), (2, ""), err)
                self.assertIn(says, err)
        self.assertEqual(script.read_text(), "00,,11\n00,,11\n`ENDM")

    def test_files_asked_for(self):
        script = EXAMPLES / "kv4071-fails.txt"
        log = self.folder / "wire.log"
        for option in ("--junit", "--save"):
            code, out, err = run("script", "run", script, KV4071, option, "/nonexistent/f", "--wire-log", log)
            self.assertEqual((code, out), (5, ""))
            self.assertIn("/nonexistent/f", err)
            self.assertNotIn(" out ", log.read_text(), "nothing is sent")
        code, out, err = run("script", "run", script, KV4071, "--save", "/dev/full", "--json")
        self.assertEqual((code, json.loads(out)["verdict"]), (5, "fail"), "told, and the rest is done")
        self.assertIn("/dev/full", err)
        saved = self.folder / "saved.txt"
        self.assertEqual(run("script", "run", script, KV4071, "--save", saved, "--start-time", "2021-02-03 04:05:06")[0], 1)
        stamp = "# AutoUpdated: 2021-02-03 04:05 Looping: 1"
        wanted = script.read_text().replace("00,FF,FF ", "00,FF,7F ").replace("\n", stamp + "\n", 1).replace("\n", "\r\n")
        self.assertEqual(saved.read_bytes().decode(), wanted + "\r\n")
        # Rows that were not read would lose what they expect.
        own = self.script("02,C0,\n00,11,12\n00,,13\n`ENDM")
        self.assertEqual(run("script", "run", own, KV4071, "--save", own, "--stop-on-fail")[0], 5)
        self.assertEqual(own.read_text(), "02,C0,\n00,11,12\n00,,13\n`ENDM")

    def test_a_row_that_saves(self):
        script = self.script("00,11,12\n`S\n`ENDM")
        run("script", "rehearse", script, KV4071)
        self.assertEqual(list(self.folder.iterdir()), [script])
        run("script", "run", script, KV4071, "--loop", "2")
        self.assertEqual((self.folder / "s_DL.txt").read_text().count("00,11,11# AutoUpdated"), 2)

    def test_pauses(self):
        script = self.script("`w\n00,11,11\n`ENDM")
        ask, unasked = ["--pauses", "ask"], []
        for options, typed, code, ended in [(ask, "\n", 0, "completed"), (ask, "q\n", 1, "stopped"), (ask, "", 1, "stopped"),
                                            (unasked, "\n", 1, "stopped"), (["--pauses", "continue"], "", 0, "completed")]:
            with self.subTest(options=options, typed=typed):
                done = subprocess.run([PROGRAM, "script", "run", script, KV4071, "--json", *options], input=typed, text=True,
                                      capture_output=True, timeout=TIMEOUT, env=ENVIRONMENT, check=False)
                self.assertEqual((done.returncode, json.loads(done.stdout)["ended"]), (code, ended))
                self.assertIn("Script Pause Line :1", done.stderr)
        ours, theirs = pty.openpty()
        with subprocess.Popen([PROGRAM, "script", "run", script, KV4071], stdin=theirs, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, env=ENVIRONMENT) as asked:
            self.assertIn(b"Enter goes on", asked.stderr.readline())
            os.write(ours, b"\n")
            self.assertEqual(asked.wait(TIMEOUT), 0, "a terminal is asked by itself")
        os.close(ours)
        os.close(theirs)

    def test_wear_is_told(self):
        script = self.script("00,11,\n" * 400 + "`ENDM")
        for loop, told in [(2, False), (3, True)]:
            err = run("script", "run", script, KV4071, "--loop", str(loop))[2]
            self.assertEqual("1200 non-volatile writes" in err, told)

    def started(self, *options):
        script = self.script("02,C0,\n00,11,11\n`w20\n`ENDM")
        return subprocess.Popen([PROGRAM, "script", "run", script, KV4071, "--real-time", "--loop", "100000", *map(str, options)],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=ENVIRONMENT,
                                preexec_fn=hear_signals)

    def test_killed_midway_the_report_is_whole(self):
        report = self.folder / "r.xml"
        with self.started("--junit", report, "--csv") as running:
            for _ in range(20):
                running.stdout.readline()
            running.kill()
            running.wait(TIMEOUT)
        state, cases = self.junit(report)
        self.assertEqual(state, "incomplete")
        self.assertGreater(len(cases), 2)
        self.assertEqual(len({case[0] for case in cases}), len(cases))

    def test_however_it_ends(self):
        log, report = self.folder / "wire.log", self.folder / "r.xml"
        for end, wanted in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129), (None, 141)]:
            with self.subTest(wanted=wanted), self.started("--wire-log", log, "--junit", report) as running:
                for _ in range(8):
                    running.stdout.readline()
                if end is None:
                    running.stdout.close()
                else:
                    running.send_signal(end)
                self.assertEqual(running.wait(TIMEOUT), wanted)
            port2 = re.findall(r" out \d 01 12 00 A0 (..)", log.read_text())
            self.assertEqual(max(int(value, 16) & 0x60 for value in port2), 0x60)
            self.assertEqual(int(port2[-1], 16) & 0x60, 0)
            self.assertEqual(self.junit(report)[0], "interrupted")

    def test_a_signal_ends_a_long_wait(self):
        began = time.monotonic()
        script = self.script("`w\n`w30000\n`w30000\n`ENDM")
        with subprocess.Popen([PROGRAM, "script", "run", script, KV4071, "--real-time", "--json", "--pauses", "continue"], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, env=ENVIRONMENT, preexec_fn=hear_signals) as running:
            self.assertIn("passed over", running.stderr.readline(), "the first row has begun")
            running.send_signal(signal.SIGINT)
            out, _ = running.communicate(timeout=TIMEOUT)
        self.assertLess(time.monotonic() - began, 20)
        self.assertEqual((running.returncode, json.loads(out)["ended"]), (130, "interrupted"))

    def test_a_signal_ends_a_long_rehearsal(self):
        script, report = self.script("00,11,\n`ENDM"), self.folder / "r.xml"
        with subprocess.Popen([PROGRAM, "script", "rehearse", script, KV4071, "--loop", "1000000", "--junit", report],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=ENVIRONMENT,
                              preexec_fn=hear_signals) as running:
            while not report.exists() and running.poll() is None:
                time.sleep(0.01)
            running.send_signal(signal.SIGINT)
            self.assertEqual(running.wait(TIMEOUT), 130)
        self.assertEqual(self.junit(report)[0], "interrupted")

    def test_a_link_that_is_lost_for_good(self):
        log, report = self.folder / "wire.log", self.folder / "r.xml"
        options = [self.script("02,C0,\n00,11,11\n00,,11\n`ENDM"), "--json", "--junit", report]
        self.assertEqual(run("script", "run", *options, KV4071, "--wire-log", log)[0], 0)
        self.assertEqual(run("script", "run", *options, "--replay", log)[0], 0)
        lost = re.sub(r"( out 0 01 06 51(?: [0-9A-F]{2}){61})\n.* in .*\n", r"\1 failed\n", log.read_text(), count=1)
        self.assertNotEqual(lost, log.read_text())
        log.write_text(lost)
        code, out, err = run("script", "run", *options, "--replay", log)
        self.assertEqual(code, 4, err)
        result = json.loads(out)
        self.assertEqual((result["ended"], result["verdict"]), ("link lost", "error"))
        self.assertEqual([row["verdict"] for row in result["passes"][0]["rows"]], ["ran", "error", "not reached"])
        self.assertEqual(self.junit(report)[0], "link lost")


if __name__ == "__main__":
    unittest.main()
