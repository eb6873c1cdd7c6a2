import fcntl
import json
import os
import re
import resource
import signal
import struct
import subprocess
import tempfile
import time
import unittest
import zlib
from pathlib import Path
from xml.etree import ElementTree

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, run

SIMULATED = ["--simulate=UPDN100", "--virtual-time"]


def written(path):
    """Bytes of a file that may come and go: a new journal's place is tried out first."""
    try:
        return path.stat().st_size
    except FileNotFoundError:
        return 0


class RunIn(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.journal = self.folder / "j"

    def runin(self, *args, **options):
        return run("runin", "run", *SIMULATED, "--journal", self.journal, *args, **options)

    def resume(self, *args):
        return run("runin", "resume", self.journal, *SIMULATED, *args)

    def report(self, *args):
        code, out, err = run("runin", "report", self.journal, "--json", *args)
        return code, json.loads(out) if out else None, err

    def scenario(self, *steps):
        path = self.folder / "scenario"
        path.write_text("".join(json.dumps(step) + "\n" for step in steps))
        return ["--scenario", path]

    def records(self):
        lines = self.journal.read_bytes().splitlines()
        for line in lines:
            self.assertEqual(int(line[:8], 16), zlib.crc32(line[9:]))
        return [json.loads(line[9:]) for line in lines]

    def test_run(self):
        code, out, err = self.runin("--steps", 2000, "--json", "--log", self.folder / "log", "--junit", self.folder / "x")
        self.assertEqual((code, err), (0, ""))
        lines = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([line["count"] for line in lines], [500, 1000, 1500, 2000, 2000])
        self.assertEqual(list(lines[0]), ["count", "fails", "position", "volts", "ms"])
        self.assertEqual({**lines[-1], "voltsPerStep": 0, "limit": 0},
                         {"ended": "completed", "count": 2000, "fails": 0, "judgements": 2002, "voltsPerStep": 0, "limit": 0})
        records = self.records()
        self.assertEqual([record["kind"] for record in records[:5]], ["header", "stage", "range", "stage", "stage"])
        self.assertEqual(records[-1], {"kind": "end", "ended": "completed"})
        log = (self.folder / "log").read_bytes()
        self.assertTrue(log.startswith(b"Trace File Data Acquisition ") and log.endswith(b"\r\n\r\nEND\r\n"))
        suite = ElementTree.parse(self.folder / "x").getroot()[0]
        self.assertEqual((suite.get("tests"), suite.get("failures")), ("5", "0"))
        self.assertEqual([case.get("name") for case in suite.iter("testcase")][:2], ["initial test", "steps 1 to 500"])
        code, report, _ = self.report()
        self.assertEqual((code, report["derived"], report["ended"], report["resumed"]), (0, False, "completed", 0))
        for refused in (self.runin(), self.resume()):
            self.assertEqual(refused[0], 5)

    def test_a_missed_store_fails_every_later_judgement(self):
        code, out, _ = self.runin("--steps", 2000, "--json",
                                  *self.scenario({"op": "fault", "kind": "missedStore", "stores": 1000}))
        last = json.loads(out.splitlines()[-1])
        self.assertEqual((code, last["count"], last["fails"]), (1, 2000, 1001))
        self.assertEqual([r["verdict"] for r in self.records() if r.get("loop", 0) >= 1000 and r["kind"] == "stage"], ["fail"] * 1001)

    def test_report_counts_again(self):
        code, _, err = run("runin", "run", *SIMULATED, "--steps", 40, *self.scenario({"op": "socket", "part": None, "atMs": 0}))
        self.assertEqual((code, "upper stop" in err), (1, True))  # an empty socket is always where it should be
        code, _, _ = self.runin("--steps", 500, *self.scenario({"op": "fault", "kind": "noise", "counts": 2, "times": 1000000, "atMs": 2000}))
        self.assertEqual(code, 0)
        code, report, _ = self.report("--tolerance", 0.1)
        self.assertEqual((code, report["derived"], report["tolerance"]), (1, True, 0.1))
        self.assertGreater(report["fails"], 10)
        rows = run("runin", "report", self.journal, "--csv")[1].splitlines()
        self.assertEqual((rows[0], len(rows)), ("loop,stage,tally,counts,volts,error,verdict,band,ms", 504))

    def test_killed_and_resumed(self):
        """Killed at many moments, the run counts in the end what one counts that was never killed."""
        memory = ["--sim-memory", self.folder / "memory"]
        whole = self.runin("--steps", 4000, *memory)
        self.assertEqual(whole[0], 0)
        size = self.journal.stat().st_size
        self.journal.unlink()
        command = ["run", "--steps", "4000", "--journal"]
        kills = 0
        for kill in range(20):
            process = subprocess.Popen([PROGRAM, "runin", *command, self.journal, *SIMULATED, *memory], env=ENVIRONMENT,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            while process.poll() is None and written(self.journal) < size * (kill + 1) / 25:
                time.sleep(0.001)
            process.kill()
            kills += process.wait() == -signal.SIGKILL
            command = ["resume"]
        self.assertGreater(kills, 15)
        code, _, err = self.resume(*memory)
        self.assertEqual(code, 0, err)
        code, report, _ = self.report()
        self.assertEqual((report["count"], report["judgements"], report["fails"]), (4000, 4002, 0))
        self.assertEqual(report["resumed"], kills)
        stages = [r["loop"] for r in self.records() if r["kind"] == "stage" and r["loop"]]
        self.assertEqual(stages, list(range(1, 4001)))

    def test_interrupted_and_resumed(self):
        process = subprocess.Popen([PROGRAM, "runin", "run", "--simulate=UPDN100", "--real-time", "--journal", self.journal,
                                    "--sim-memory", self.folder / "m"], env=ENVIRONMENT, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        while not self.journal.exists() or b'"loop":8,' not in self.journal.read_bytes():
            time.sleep(0.01)
        self.assertEqual(self.resume()[0], 5)  # in use
        self.assertEqual(self.report()[1]["ended"], "unfinished")
        process.send_signal(signal.SIGINT)
        out, err = process.communicate(timeout=TIMEOUT)
        self.assertEqual(process.returncode, 130)
        self.assertIn(b"interrupted:", out)
        self.assertEqual(self.report()[1]["ended"], "interrupted")
        # Another part in the socket than the one that was left.
        self.assertEqual(self.resume("--json", "--junit", self.folder / "x")[0], 1)
        self.assertEqual(self.report()[1]["ended"], "mismatch")
        self.assertEqual(ElementTree.parse(self.folder / "x").getroot()[0].get("failures"), "1")

    def test_a_board_that_goes_and_comes_back(self):
        gone = [{"op": "unplug", "atMs": 2000}, {"op": "plug", "atMs": 30000}]
        code, out, err = self.runin("--steps", 400, "--log-every", 100, "--json", *self.scenario(*gone))
        self.assertEqual((code, json.loads(out.splitlines()[-1])["judgements"]), (0, 402), err)
        events = [record["what"] for record in self.records() if record["kind"] == "event"]
        self.assertEqual(events[:2], ["link lost", "link back"])
        self.journal.unlink()
        # An edge that the board does not take is no fail of the part.
        code, out, err = self.runin("--steps", 400, "--log-every", 100, "--json", *self.scenario({"op": "fault", "kind": "writeFails", "command": 18, "atMs": 2000}))
        self.assertEqual((code, json.loads(out.splitlines()[-1])["judgements"]), (0, 402), err)
        self.journal.unlink()
        code, out, err = self.runin("--steps", 400, "--json", "--link-wait", 5, *self.scenario(gone[0]), "--junit", self.folder / "x")
        self.assertEqual((code, json.loads(out.splitlines()[-1])["ended"]), (4, "link lost"), err)
        self.assertEqual(self.report()[1]["ended"], "link lost")
        self.assertEqual(ElementTree.parse(self.folder / "x").getroot()[0].get("errors"), "1")

    def test_journals_that_cannot_be(self):
        self.assertEqual(self.runin("--steps", 40, "--log-every", 4)[0], 0)
        lines = self.journal.read_bytes().splitlines(keepends=True)
        header = json.loads(lines[0][9:])
        header["version"] = 2
        record = json.dumps(header).encode()
        other = b"%08x %s\n" % (zlib.crc32(record), record)
        flipped = bytearray(b"".join(lines[:-1]))
        flipped[len(flipped) // 2] ^= 4
        for content, resumed, reported, said in [
            (b"".join(lines[:-1]), 0, 0, "stage"),
            (b"".join(lines[:-1])[:-9], 0, 0, "torn"),
            (other + b"".join(lines[1:]), 5, 5, "version 2"),
            (bytes(flipped), 5, 0, "damaged behind line"),
            (b"no journal\n" * 3, 5, 5, "no whole header"),
            (b"", 5, 5, "no whole header"),
        ]:
            self.journal.write_bytes(content)
            code, out, err = run("runin", "report", self.journal)
            self.assertEqual(code, reported, said)
            if reported or said in ("torn", "damaged behind line"):
                self.assertEqual(err.count("\n"), 1)
                self.assertIn(said, err)
            code, _, err = self.resume("--on-mismatch", "continue")
            self.assertEqual(code == 5, resumed == 5, err)
        with open(self.journal, "wb") as used:
            fcntl.fcntl(used, 37, struct.pack("hhqqi4x", fcntl.F_WRLCK, 0, 0, 0, 0))  # F_OFD_SETLK
            code, _, err = self.runin()
            self.assertEqual((code, "in use" in err), (5, True), err)
        self.journal = self.folder / "no/such/folder"
        self.assertEqual(self.runin()[0], 5)

    def test_a_full_disk_ends_the_journal_and_not_the_run(self):
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))
        code, out, err = self.runin("--steps", 1000, preexec_fn=limit)
        self.assertEqual((code, err.count("the journal ends here")), (5, 1), err)
        self.assertIn("completed: 1000 steps, 0 fails", out)
        self.assertEqual(self.report()[1]["ended"], "unfinished")

    def test_entries_that_cannot_be(self):
        wire = self.folder / "wire"
        for args in [("--steps", 0), ("--steps", "x"), ("--log-every", 0), ("--positions", -1), ("--tolerance", 0), ("--tolerance", -1), ("--tolerance", "nan"), ("--tolerance", "inf"),
                     ("--stimulus", "1,2,3"), ("--stimulus", "1,2,3,4,5,6,x"), ("--vcc", "9"), ("--log", self.journal), ("--step", 4)]:
            code, _, err = self.runin("--wire-log", wire, *args)
            self.assertEqual(code, 2, (args, err))
            self.assertFalse(self.journal.exists(), args)
        self.assertEqual(run("runin", "run", "--simulate", "--steps", 4)[0], 2)
        for content in ["x", "[]", '{"op": "unplug"}', '{"op": "fly", "atMs": 1}', '{"op": "plug", "atMs": 1, "stores": 2}']:
            path = self.folder / "scenario"
            path.write_text(content)
            self.assertEqual(self.runin("--scenario", path)[0], 2)
        memory = self.folder / "memory"
        memory.write_text("UPDN100: 99 99\n")
        for args, code in [(["--scenario", self.folder / "none"], 5), (["--sim-memory", memory], 5), (["--sim-memory", self.folder], 5)]:
            self.assertEqual(self.runin(*args)[0], code, args)
        self.assertEqual(run("boards", "--sim-memory", memory)[0], 2)


if __name__ == "__main__":
    unittest.main()
