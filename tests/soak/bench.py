"""A bench in virtual time under test: the real vrkctl, with a limit in real time for every answer."""

import json
import os
import sys
import threading
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/terminal"))
from vrkctl import Rpc, RpcFailure  # noqa: E402

ENDED = -32003
ANSWER_SECONDS = 120  # an answer takes milliseconds; a machine under load must not make findings
BURST_SECONDS = 600  # the actions of half a minute of bench time, under the sanitizers


class Finding(Exception):
    """Something that must never happen, in words."""


class ProgramEnded(Exception):
    """A gesture has ended the program, as it may."""


class Bench:
    """`folder` is its working folder and its home, so that nothing it writes lands elsewhere."""

    def __init__(self, folder, part="KV4071"):
        self.folder = folder
        self.errors = folder / "stderr.txt"
        self.stderr = open(self.errors, "ab")
        sanitizers = {"ASAN_OPTIONS": "detect_stack_use_after_return=1:strict_string_checks=1:quarantine_size_mb=8",
                      "UBSAN_OPTIONS": "print_stacktrace=1:halt_on_error=1",
                      "LSAN_OPTIONS": f"suppressions={ROOT}/tests/leaks.supp:print_suppressions=0"}
        places = {name: str(folder) for name in ("HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME")}
        self.rpc = Rpc(f"--simulate={part}", "--virtual-time", "--folder", str(folder), cwd=folder, stderr=self.stderr,
                       env={**os.environ, **sanitizers, **places})
        self.pid = self.rpc.process.pid
        self.done = 0  # requests of `at` that have been answered

    def __call__(self, method, seconds=ANSWER_SECONDS, **params):
        late = threading.Event()

        def give_up():
            late.set()
            self.rpc.process.kill()

        watch = threading.Timer(seconds, give_up)
        watch.start()
        try:
            return self.rpc(method, **params)
        except RpcFailure as failure:
            if failure.code == ENDED:
                raise ProgramEnded from failure
            raise
        except (AssertionError, OSError, json.JSONDecodeError) as gone:
            if late.is_set():
                raise Finding(f"{method} {params} was not answered within {seconds} s") from gone
            raise Finding(f"the process died under {method} {params}: {self.last_words()}") from gone
        finally:
            watch.cancel()
            self.done += sum(note["method"] == "done" for note in self.rpc.notes)
            self.rpc.notes.clear()

    def tried(self, method, **params):
        """A gesture that may be refused, or meet a fault of the bench. Its result, None if it failed."""
        try:
            return self(method, **params)
        except RpcFailure:
            return None

    def get(self, path, aspect):
        return self("get", path=path)[aspect]

    def figures(self):
        """Resident memory in MiB and open files of the process."""
        status = Path(f"/proc/{self.pid}/status").read_text(encoding="ascii")
        memory = int(status.split("VmRSS:")[1].split()[0]) / 1024
        return memory, len(os.listdir(f"/proc/{self.pid}/fd"))

    def last_words(self):
        return self.errors.read_text(errors="replace")[-3000:]

    def close(self):
        """Ends it in good order. \\return what was wrong with its end, or None"""
        try:
            code = self.rpc.close()
        except Exception as why:  # noqa: BLE001: whatever keeps it from ending is the finding
            self.kill()
            return f"it did not end when its input did: {why}"
        self.stderr.close()
        return None if code == 0 else f"it ended with {code}: {self.last_words()}"

    def kill(self):
        self.rpc.process.kill()
        self.rpc.process.wait()
        for stream in (self.rpc.process.stdin, self.rpc.process.stdout, self.stderr):
            try:
                stream.close()
            except OSError:
                pass  # what it had not read is lost with it
