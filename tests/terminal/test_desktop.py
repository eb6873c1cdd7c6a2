import os
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["VRKBENCH"]
ENVIRONMENT = {**os.environ, "QT_QPA_PLATFORM": "offscreen"}


def run(*args, seconds=60):
    """Starts the desktop program; gives exit code and stderr, None if it still ran after `seconds`."""
    try:
        done = subprocess.run([PROGRAM, *args], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=seconds, env=ENVIRONMENT)
        return done.returncode, done.stderr
    except subprocess.TimeoutExpired:
        return None, ""


class CommandLine(unittest.TestCase):
    def test_what_cannot_be_started_is_said(self):
        with tempfile.TemporaryDirectory() as folder:
            broken = os.path.join(folder, "broken.log")
            with open(broken, "w", encoding="utf-8") as log:
                log.write("no wire log\n")
            for args, code, text in [
                (["--simulate=NONE"], 2, "KV4071"),
                (["--nothing"], 2, "--nothing"),
                (["/x"], 2, "/x"),
                (["--replay", os.path.join(folder, "missing")], 5, "missing"),
                (["--replay", broken], 5, "broken.log"),
                (["--simulate", "--wire-log", os.path.join(folder, "no", "log")], 5, "log"),
                (["--simulate", "--folder", os.path.join(folder, "no")], 5, "no folder"),
            ]:
                with self.subTest(args=args):
                    self.assertEqual(run(*args)[0], code)
                    self.assertIn(text, run(*args)[1])

    def test_it_starts_and_stays(self):
        # The old shortcuts' switch changes nothing.
        self.assertEqual(run("--simulate", "/d", seconds=3), (None, ""))


if __name__ == "__main__":
    unittest.main()
