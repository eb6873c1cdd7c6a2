import os
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["VRKBENCH"]
ENVIRONMENT = {**os.environ, "QT_QPA_PLATFORM": "offscreen"}


def run(*args):
    """Starts the desktop program; gives exit code and stderr."""
    done = subprocess.run([PROGRAM, *args], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
                          env=ENVIRONMENT)
    return done.returncode, done.stderr


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
                    ended, said = run(*args)
                    self.assertEqual(ended, code)
                    self.assertIn(text, said)


if __name__ == "__main__":
    unittest.main()
