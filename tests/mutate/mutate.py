#!/usr/bin/env python3
"""Seeds the faults of this folder's lists into a copy of the tree, one at a time, and sees whether a test notices.

A list is a TOML file with entries of
    [[fault]]
    file = "panels/blocks/StatusBlock.cpp"
    old = "LightRed"            # stands in the file exactly once
    new = "LightGreen"
    hurts = "what a user would suffer"

usage: mutate.py check                      every entry still fits the sources; builds nothing
       mutate.py run [OPTION]... [FOLDER]...
           FOLDER        only the faults of files under it; all without
           --copy C      folder for the copy and its build; kept, so that the next run builds little
           --preset P    debug (default) or asan
           --jobs N      build and test with so many processes
           --part K/N    every Nth fault beginning with the Kth: N runs with a copy each share the work
           --without T   leave out a test program, whose tests fail without any fault
Exit code: 0 when at least 80% of the faults were caught, 1 when not, 2 when the lists or the tree are broken.
"""

import argparse
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import time
import tomllib

LISTS = pathlib.Path(__file__).resolve().parent
ROOT = LISTS.parent.parent
WANTED = 0.8

# Lowest floor first. A folder's own tests run first, then those of the floors above, nearest first.
FLOORS = ["platform", "sim", "link", "motherboard", "panels", "script", "shell", "automation", "views", "apps"]
# Programs whose name does not tell their folder.
PROGRAM_FOLDER = {"test_hid": "platform", "test_hidapi": "platform", "test_windows": "views", "test_pages": "views"}
# The programs from outside; they are the last to run, as they are slow.
OUTSIDE_TESTS = "^terminal"  # an installation takes no shared libraries along
OUTSIDE_TARGETS = ("all",)
PROGRAM_SECONDS = 120  # a whole test program takes some 20
OUTSIDE_SECONDS = 600
MEMORY = 8 << 30  # a fault may fill the memory


class Broken(Exception):
    """The lists or the tree are not fit for a run."""


def read_faults():
    faults = []
    for path in sorted(LISTS.glob("*.toml")):
        for fault in tomllib.loads(path.read_text(encoding="utf-8"))["fault"]:
            fault["list"] = path.name
            faults.append(fault)
    return faults


def list_faults(faults, root):
    """What is wrong with the lists."""
    wrong = []
    for fault in faults:
        where = f"{fault['list']}: {fault.get('file')}: {fault.get('old', '')!r}"
        path = root / fault.get("file", "")
        if any(not fault.get(key) for key in ("file", "old", "hurts")) or "new" not in fault:
            wrong.append(f"{where}: not all of file, old, new and hurts are given")
        elif not path.is_file():
            wrong.append(f"{where}: there is no such file")
        elif fault["old"] == fault["new"]:
            wrong.append(f"{where}: changes nothing")
        elif (count := path.read_text(encoding="utf-8").count(fault["old"])) != 1:
            wrong.append(f"{where}: found {count} times, not once")
    return wrong


def sync(copy):
    """Makes the copy's sources those of the tree; files that did not change keep their time."""
    names = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "-z"], cwd=ROOT,
                           capture_output=True, check=True).stdout.decode().split("\0")
    wanted = {name for name in names if name and (ROOT / name).is_file()}
    for path in sorted(copy.rglob("*")):
        name = path.relative_to(copy).as_posix()
        if path.is_file() and not name.startswith("build/") and name not in wanted:
            path.unlink()
    for name in wanted:
        source, target = ROOT / name, copy / name
        if not target.is_file() or source.read_bytes() != target.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


class Tree:
    """The copy, its build and its tests."""

    def __init__(self, copy, preset, jobs, without):
        self.copy, self.preset, self.jobs = copy, preset, str(jobs)
        self.build_folder = copy / "build" / preset
        self.without = set(without)
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(copy), CCACHE_NOHASHDIR="1",
                                CCACHE_SLOPPINESS="pch_defines,time_macros", QT_QPA_PLATFORM="offscreen",
                                GTEST_FAIL_FAST="1", GTEST_COLOR="no", GTEST_BRIEF="1")
        self.environment["LSAN_OPTIONS"] = f"suppressions={copy}/tests/leaks.supp:print_suppressions=0"

    def configure(self):
        # What a fault leaves unused is no fault of its own.
        unused = " ".join(f"-Wno-unused-{what}" for what in ("variable", "parameter", "function", "but-set-variable"))
        flags = f"-O0 -g1 -D_GLIBCXX_ASSERTIONS {unused}"
        options = [f"-DCMAKE_CXX_FLAGS_{kind}={flags}" for kind in ("DEBUG", "RELWITHDEBINFO")]
        # A fault then costs one object and one library, and no test program is linked again.
        options += ["-DBUILD_SHARED_LIBS=ON", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        self.must(["cmake", "--preset", self.preset, *options])
        targets = self.must(["cmake", "--build", str(self.build_folder), "--target", "help"])
        self.programs = sorted(set(re.findall(r"^(test_\w+): phony", targets, re.MULTILINE)) - self.without)

    def must(self, command):
        done = subprocess.run(command, cwd=self.copy, env=self.environment, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise Broken(f"{' '.join(command)}:\n{(done.stdout + done.stderr)[-3000:]}")
        return done.stdout

    def build(self, *targets):
        """The compiler's words if that fails, else None."""
        command = ["cmake", "--build", str(self.build_folder), "--parallel", self.jobs, "--target", *targets]
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True, check=False)
        return None if done.returncode == 0 else (done.stdout + done.stderr)[-3000:]

    def order(self, folder):
        """The test programs in the order in which they will most likely notice a fault of a folder."""
        floor = FLOORS.index(folder)

        def distance(program):
            name = PROGRAM_FOLDER.get(program, program.removeprefix("test_"))
            above = FLOORS.index(name) - floor if name in FLOORS else len(FLOORS)
            return (above < 0, abs(above), program)
        return sorted(self.programs, key=distance)

    def stages(self, folder):
        stages = [(program, [program], None) for program in self.order(folder)]
        if "outside" not in self.without:
            outside = ("outside", OUTSIDE_TARGETS, ["ctest", "--test-dir", str(self.build_folder), "-R", OUTSIDE_TESTS,
                                                    "--parallel", self.jobs, "--stop-on-failure"])
            stages.insert(0 if folder == "apps" else len(stages), outside)  # the programs have hardly other tests
        return stages

    def run(self, name, command):
        """What failed, None if nothing did."""
        seconds = OUTSIDE_SECONDS if command else PROGRAM_SECONDS
        if not command:
            command = [str(next(path for path in self.build_folder.rglob(name) if path.is_file()))]
        limit = None
        if self.preset != "asan":  # whose shadow is larger than any limit
            limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))  # noqa: E731
        try:
            done = subprocess.run(command, cwd=self.copy, env=self.environment, capture_output=True, timeout=seconds,
                                  check=False, preexec_fn=limit)
        except subprocess.TimeoutExpired:
            return f"{name} hung"
        if done.returncode == 0:
            return None
        text = (done.stdout + done.stderr).decode(errors="replace")
        failed = re.search(r"\[  FAILED  \] ([\w./]+)|- (\S+) \((?:Failed|Timeout)", text)
        return f"{name} {failed.group(1) or failed.group(2)}" if failed else f"{name} ended with {done.returncode}"

    def verdict(self, folder):
        """The test that noticed; None if all passed. Throws Broken if the tree does not build."""
        for name, targets, command in self.stages(folder):
            if words := self.build(*targets):
                raise Broken(words)
            if failed := self.run(name, command):
                return failed
        return None


def seed(tree, fault):
    """Puts the fault into the copy, tests, and takes it out again. What noticed; None if it survived."""
    path = tree.copy / fault["file"]
    whole = path.read_text(encoding="utf-8")
    path.write_text(whole.replace(fault["old"], fault["new"]), encoding="utf-8")
    try:
        return tree.verdict(fault["file"].split("/")[0])
    finally:
        path.write_text(whole, encoding="utf-8")


def run(options):
    copy = pathlib.Path(options.copy).resolve()
    copy.mkdir(parents=True, exist_ok=True)
    faults = read_faults()
    if wrong := list_faults(faults, ROOT):
        raise Broken("\n".join(wrong))
    folders = [folder.strip("/") for folder in options.folder]
    chosen = [f for f in faults if not folders or any((f["file"] + "/").startswith(x + "/") for x in folders)]
    part, parts = (int(number) for number in options.part.split("/"))
    chosen = chosen[part - 1::parts]
    if not chosen:
        raise Broken(f"no fault of the lists is in {' '.join(folders)}")
    sync(copy)
    tree = Tree(copy, options.preset, options.jobs, options.without)
    tree.configure()
    print(f"{len(chosen)} faults; first the tree without any", flush=True)
    if failed := tree.verdict(FLOORS[0]):
        raise Broken(f"the tests fail without any fault: {failed}")
    caught, survived, broken = {}, [], []
    for number, fault in enumerate(chosen, 1):
        started = time.monotonic()
        head = f"[{number}/{len(chosen)}] {fault['file']}: {fault['hurts']}"
        try:
            noticed = seed(tree, fault)
        except Broken as words:
            broken.append(f"{fault['list']}: {fault['old']!r} does not build:\n{words}")
            print(f"{head}\n    does not build", flush=True)
            continue
        folder = caught.setdefault(fault["file"].split("/")[0], [0, 0])
        folder[0] += noticed is not None
        folder[1] += 1
        if noticed is None:
            survived.append(fault)
        seconds = f"{time.monotonic() - started:.0f} s"
        print(f"{head}\n    {'caught by ' + noticed if noticed else 'SURVIVED'}  ({seconds})", flush=True)
    for fault in survived:
        print(f"survived: {fault['file']}: {fault['old']!r} -> {fault['new']!r}: {fault['hurts']}")
    for folder, (good, count) in caught.items():
        print(f"{folder}: {good} of {count} caught")
    good, count = (sum(numbers) for numbers in zip(*caught.values())) if caught else (0, 0)
    print(f"{good} caught, {count - good} survived")
    if broken:
        raise Broken("\n".join(broken))
    return 0 if good >= WANTED * count else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("check")
    runs = commands.add_parser("run")
    runs.add_argument("--copy", default=str(ROOT / "build/mutate"))
    runs.add_argument("folder", nargs="*")
    runs.add_argument("--preset", choices=("debug", "asan"), default="debug")
    runs.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    runs.add_argument("--part", default="1/1")
    runs.add_argument("--without", action="append", default=[])
    options = parser.parse_args()
    try:
        if options.command == "check":
            if wrong := list_faults(read_faults(), ROOT):
                raise Broken("\n".join(wrong))
            return 0
        return run(options)
    except Broken as words:
        print(words, file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
