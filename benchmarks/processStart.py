#!/usr/bin/env python3
"""Start of the desktop console to its first paint against a Qt program with an empty main window, each a whole
process, in pairs, so that whatever else the machine does meets both alike.

usage: processStart.py BUILD_FOLDER [PAIRS]
"""

import os
import pathlib
import statistics
import sys
import tempfile
import time

SECONDS = 20


def start(command, environment):
    """Processor and wall time of one start, in ms."""
    begun = time.monotonic()
    # Without a desktop Qt warns at each start that it has none.
    quiet = [(os.POSIX_SPAWN_OPEN, 2, os.devnull, os.O_WRONLY, 0)]
    process = os.posix_spawn(command[0], command, environment, file_actions=quiet)
    while True:
        done, status, usage = os.wait4(process, os.WNOHANG)
        if done:
            break
        if time.monotonic() - begun > SECONDS:
            os.kill(process, 9)
            os.wait4(process, 0)
            sys.exit(f"{command[0]} painted nothing within {SECONDS} s")
        time.sleep(0.0005)
    if status != 0:
        sys.exit(f"{command[0]} ended with status {status}")
    return (usage.ru_utime + usage.ru_stime) * 1000, (time.monotonic() - begun) * 1000


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    pairs = int(sys.argv[2]) if len(sys.argv) > 2 else 20
    commands = {"empty window": [str(build / "benchmarks/vrk_bench_empty")],
                "console": [str(build / "apps/vrkbench/vrkbench"), "--simulate"]}
    times = {name: [] for name in commands}
    with tempfile.TemporaryDirectory() as home:
        environment = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home, QT_QPA_GENERIC_PLUGINS="firstpaint",
                           QT_PLUGIN_PATH=str(build / "benchmarks/plugins"))
        environment.setdefault("QT_QPA_PLATFORM", "offscreen")
        for command in commands.values():
            start(command, environment)  # the first one reads the files from the disk
        for _ in range(pairs):
            for name, command in commands.items():
                times[name].append(start(command, environment))
    for name, all_times in times.items():
        processor, wall = (statistics.median(column) for column in zip(*all_times))
        print(f"{name:13} {processor:6.1f} ms processor time, {wall:6.1f} ms in all (median of {pairs})")
    ratios = [ours[0] / empty[0] for ours, empty in zip(times["console"], times["empty window"])]
    print(f"console over empty window, processor time: {statistics.median(ratios):.2f}")


if __name__ == "__main__":
    main()
