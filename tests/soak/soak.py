#!/usr/bin/env python3
"""Random gestures with random faults on the real vrkctl in virtual time; what must hold afterwards is judged.

usage: soak.py MINUTES [SEED]     until the time is over; each finding is told with its seed and a file to replay
       soak.py --bursts N [SEED]  so many bursts of one bench: the same each time
       soak.py --replay FILE      what a finding's file holds, once more
Findings are written to the folder that --findings names (build/soak). Exit code: 0 without a finding, 1 with one.
"""

import argparse
import json
import random
import shutil
import sys
import tempfile
import time
from pathlib import Path

from bench import BURST_SECONDS, ROOT, Bench, Finding, ProgramEnded, RpcFailure
from gestures import FILES, burst
from oracles import Oracles

BURSTS = 40  # of one bench
WARM_UP = 8
ANSWERS = 60  # for a burst's boxes, most of them about a link that has failed

SCRIPT = "02,C0,\n00,11,11\n`w250\n00,22,22\n`IE\n00,33,\n`ENDM\n`EISTART\n00,,33\n`EIEND\n"


def give_files(folder):
    (folder / "script.txt").write_text(SCRIPT, encoding="ascii")
    (folder / "fails.txt").write_text("00,22,33\n`A70\n00,,11\n`w\n`ENDM\n", encoding="ascii")
    shutil.copy(ROOT / "examples/parts-I2C.csv", folder / "table.csv")


def answers(rng):
    """Retry with the board plugged in, since nobody presses it for ever without looking at the plug."""
    plugged = {"choice": "Retry", "sim": {"op": "plug", "board": 0}}
    return [plugged if rng.random() < 0.97 else rng.choice(["Retry", "Yes", "OK"]) for _ in range(ANSWERS)]


class Soak:
    """One bench and what was done to it so far."""

    def __init__(self, folder):
        give_files(folder)
        self.bench = Bench(folder)
        self.steps = []  # what a replay does again
        self.oracles = None

    def begin(self):
        """\\throws Finding: a fresh program may be wrong already"""
        self.oracles = Oracles(self.bench)

    def step(self, kind, **what):
        self.steps.append({"kind": kind, **what})
        self.do(self.steps[-1])

    def do(self, step):
        if step["kind"] == "answer":
            self.flush_files()
            self.bench("answer", choices=step["choices"], files=step["files"])
        elif step["kind"] == "burst":
            self.run_burst(step["requests"])
        elif step["kind"] == "settle":
            self.flush_files()
            try:
                self.oracles.settle(step["part"])
            except RpcFailure as refused:
                raise Finding(f"{step['part']} cannot be worked any more: {refused}") from refused
        else:
            self.oracles.warmed_up()

    def flush_files(self):
        """File names that no dialog has taken must not fall into the hands of a later one."""
        self.bench("dialogs")
        while True:
            self.bench("click", path="Doco.cmdBrowse")
            if self.bench("dialogs")[-1]["answer"] is None:
                return

    def run_burst(self, requests):
        self.bench.done = 0
        for ms, request in requests:
            self.bench("at", ms=ms, request=request)
        self.bench("advance", ms=requests[-1][0] + 1000, seconds=BURST_SECONDS)
        if self.bench.done != len(requests):
            raise Finding(f"{len(requests)} requests were sent, {self.bench.done} answered")

    def random_burst(self, rng):
        self.step("answer", choices=answers(rng), files=[rng.choice(FILES) for _ in range(3)])
        part, requests = burst(rng, self.oracles.controls)
        self.step("burst", requests=requests)
        self.step("settle", part=part)


def live(soak, act):
    """Acts until it is done or the program has ended, and ends it. \\throws Finding"""
    try:
        act()
    except ProgramEnded:
        pass  # a gesture did it
    except BaseException:
        soak.bench.kill()
        raise
    if wrong := soak.bench.close():
        raise Finding(wrong)


def one_bench(seed, bursts, until, findings):
    """\\return bursts done and whether there was a finding"""
    rng = random.Random(seed)
    done = 0
    with tempfile.TemporaryDirectory(prefix="soak") as folder:
        soak = Soak(Path(folder))

        def act():
            nonlocal done
            soak.begin()
            for number in range(bursts):
                if time.monotonic() > until:
                    return
                if number == WARM_UP:
                    soak.step("warm")
                soak.random_burst(rng)
                done += 1

        try:
            live(soak, act)
        except Finding as finding:
            findings.mkdir(parents=True, exist_ok=True)
            file = findings / f"seed-{seed}.json"
            file.write_text(json.dumps({"seed": seed, "finding": str(finding), "steps": soak.steps}), encoding="utf-8")
            print(f"FINDING, seed {seed}, burst {done + 1}: {finding}\n  replay: ./dev soak --replay {file}", flush=True)
            return done, True
    return done, False


def replay(path):
    steps = json.loads(path.read_text(encoding="utf-8"))["steps"]
    with tempfile.TemporaryDirectory(prefix="soak") as folder:
        soak = Soak(Path(folder))
        try:
            live(soak, lambda: [soak.begin(), *(soak.do(step) for step in steps)])
        except Finding as finding:
            print(f"FINDING: {finding}")
            return 1
    print("no finding")
    return 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("numbers", nargs="*")
    parser.add_argument("--bursts", type=int)
    parser.add_argument("--replay", type=Path)
    parser.add_argument("--findings", type=Path, default=ROOT / "build/soak")
    options = parser.parse_args()
    if options.replay:
        return replay(options.replay)
    numbers = [float(number) for number in options.numbers]
    if options.bursts is None and not numbers:
        parser.error("MINUTES, --bursts or --replay")
    started = time.monotonic()
    until = started + 60 * numbers.pop(0) if options.bursts is None else float("inf")
    seed = int(numbers[0]) if numbers else random.randrange(10**9)
    print(f"seed {seed}", flush=True)
    benches = bursts = found = 0
    while time.monotonic() < until:
        left = BURSTS if options.bursts is None else options.bursts - bursts
        done, bad = one_bench(seed + benches, left, until, options.findings)
        benches, bursts, found = benches + 1, bursts + done, found + bad
        if options.bursts is not None and (bursts >= options.bursts or bad):
            break
    print(f"{bursts} bursts on {benches} benches in {time.monotonic() - started:.0f} s: {found} findings")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
