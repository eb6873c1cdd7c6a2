#!/usr/bin/env python3
"""Runs clang-tidy over the tree's sources, a process a core.

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
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# The compiler's precompiled headers are of no use to clang.
PRECOMPILED = re.compile(r'-Winvalid-pch -include \S+cmake_pch\.hxx ')
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


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


def main():
    build, stamps = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    stamps.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    checks = version + (ROOT / ".clang-tidy").read_text(encoding="utf-8")
    known, due = {}, []
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    for entry in entries:
        entry["command"] = PRECOMPILED.sub("", entry.get("command", ""))
    (stamps / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")
    for entry in entries:
        source = pathlib.Path(entry["directory"], entry["file"]).resolve()
        if not source.is_relative_to(ROOT) or source.is_relative_to(build.resolve()):
            continue  # generated
        command = entry["command"]
        key = hashlib.sha256((checks + command + project_includes(source, known)).encode()).hexdigest()
        stamp = stamps / hashlib.sha256(str(source.relative_to(ROOT)).encode()).hexdigest()
        if not stamp.is_file() or stamp.read_text(encoding="utf-8") != key:
            due.append((source, stamp, key))

    def check(item):
        source, stamp, key = item
        run = subprocess.run(
            ["clang-tidy", "--quiet", "-p", str(stamps), "--extra-arg=-Wno-unknown-warning-option", str(source)],
            capture_output=True, text=True, check=False)
        if run.returncode == 0:
            stamp.write_text(key, encoding="utf-8")
            return True
        print(run.stdout, flush=True)  # stderr only counts what was found outside the tree
        return False

    print(f"clang-tidy: {len(due)} files to check", flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        failed = sum(not good for good in pool.map(check, due))
    if failed:
        print(f"clang-tidy: {failed} files with findings")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
