#!/usr/bin/env python3
"""Runs clang-tidy over the tree's sources, a process a core.

Most of the time goes into the headers of Qt and of the standard library, so sources with one command line are checked
together, as one source that includes them, where the names that each keeps to itself do not meet. A group with findings,
or one that does not compile as one, is checked once more in halves, down to the file.

A file that passed is not checked again until it, a project header that it includes, its command line or the
checks change: a stamp in the build folder remembers that.

usage: tidy.py BUILD_FOLDER STAMP_FOLDER
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TOGETHER = 24
# The compiler's precompiled headers are of no use to clang.
PRECOMPILED = re.compile(r'-Winvalid-pch -include \S+cmake_pch\.hxx ')
# What differs between the command lines of one target.
OWN = re.compile(r' -o \S+ -c \S+$')
# What the build compiles in place of several sources.
SEVERAL = re.compile(r'/unity_\d+_\w+\.cxx$')
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)
# A name that begins a definition in the first column, as the formatter leaves it within a namespace.
DEFINED = re.compile(r'^(?:(?:class|struct|enum class|enum) (\w+)|using (\w+) =|'
                     r'(?!using |namespace )(?:[\w:][\w:<>*&,\[\] ]*[ *&])?(\w+)(?=[({\[;=]| =))', re.MULTILINE)
USING = re.compile(r'^using [\w:]+::(\w+);', re.MULTILINE)
ALIAS = re.compile(r'^using (\w+) =', re.MULTILINE)
TEST_MACROS = {"TEST", "TEST_F", "TEST_P"}
UNNAMED = re.compile(r'^namespace \{$(.*?)^\} // namespace$', re.MULTILINE | re.DOTALL)


class Source:
    """A file that is due, and what marks it as done."""

    def __init__(self, path, command, stamp, key):
        self.path, self.stamp, self.key = path, stamp, key
        self.command = OWN.sub("", command)
        text = path.read_text(encoding="utf-8")
        own = {"".join(names) for part in UNNAMED.findall(text) for names in DEFINED.findall(part)}
        self.own_names = own - TEST_MACROS
        self.used_names = set(USING.findall(text)) | {name for name in ALIAS.findall(text) if name not in own}

    def meets(self, other):
        return bool(self.own_names & (other.own_names | other.used_names) or self.used_names & other.own_names)

    def passed(self):
        self.stamp.write_text(self.key, encoding="utf-8")


def project_includes(source, known):
    """The text of a file and of all project headers under it, as one digest."""
    pending, seen = [source], set()
    digest = hashlib.sha256()
    while pending:
        path = pending.pop()
        if path in seen:
            continue
        seen.add(path)
        if path not in known:
            text = path.read_text(encoding="utf-8")
            known[path] = (hashlib.sha256(text.encode()).digest(), INCLUDE.findall(text))
        own, includes = known[path]
        digest.update(own)
        pending += sorted(p for p in (ROOT / name for name in includes) if p.is_file())
    return digest.hexdigest()


def one_by_one(entries):
    """The commands of single sources, also of those that the build compiles several at a time."""
    for entry in entries:
        if SEVERAL.search(entry["file"]):
            text = pathlib.Path(entry["directory"], entry["file"]).read_text(encoding="utf-8")
            command = OWN.sub("", entry["command"])
            for name in INCLUDE.findall(text):
                yield {**entry, "file": name, "command": f"{command} -o {name}.o -c {name}"}
        else:
            yield entry


def grouped(due):
    """Sources with one command line whose own names differ, a few at a time."""
    groups = []
    for source in due:
        for group in groups:
            if len(group) < TOGETHER and group[0].command == source.command and not any(map(source.meets, group)):
                group.append(source)
                break
        else:
            groups.append([source])
    return sorted(groups, key=len, reverse=True)


def findings(file, options):
    """What clang-tidy says of a file, None if nothing."""
    run = subprocess.run(["clang-tidy", "--quiet", "--extra-arg=-Wno-unknown-warning-option", str(file), *options],
                         capture_output=True, text=True, check=False)
    return None if run.returncode == 0 else run.stdout  # stderr only counts what was found outside the tree


def main():
    build, stamps = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()
    stamps.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    checks = version + (ROOT / ".clang-tidy").read_text(encoding="utf-8")
    known, due = {}, []
    entries = list(one_by_one(json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))))
    for entry in entries:
        entry["command"] = PRECOMPILED.sub("", entry.get("command", ""))
        source = pathlib.Path(entry["directory"], entry["file"]).resolve()
        if not source.is_relative_to(ROOT) or source.is_relative_to(build.resolve()):
            continue  # generated
        command = entry["command"]
        key = hashlib.sha256((checks + command + project_includes(source, known)).encode()).hexdigest()
        stamp = stamps / hashlib.sha256(str(source.relative_to(ROOT)).encode()).hexdigest()
        if not stamp.is_file() or stamp.read_text(encoding="utf-8") != key:
            due.append(Source(source, command, stamp, key))
    groups = grouped(due)
    (stamps / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")

    def found(sources):
        """What clang-tidy says of sources, as one if they are several; None if nothing."""
        if len(sources) == 1:
            return findings(sources[0].path, ["-p", str(stamps)])
        together = sources[0].stamp.with_suffix(".cpp")
        together.write_text("".join(f'#include "{s.path}"\n' for s in sources), encoding="utf-8")
        # What one file keeps to itself may well have the name of a member in the next one.
        return findings(together, ["--", *shlex.split(sources[0].command)[1:], "-Wno-shadow"])

    def check(sources):
        """How many files of a group have findings."""
        words = found(sources)
        if words is None:
            for source in sources:
                source.passed()
            return 0
        if len(sources) > 1:
            half = len(sources) // 2
            return check(sources[:half]) + check(sources[half:])
        print(words, flush=True)
        return 1

    print(f"clang-tidy: {len(due)} files to check, in {len(groups)} groups", flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        failed = sum(pool.map(check, groups))
    if failed:
        print(f"clang-tidy: {failed} files with findings")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
