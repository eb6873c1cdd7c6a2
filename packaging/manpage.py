#!/usr/bin/env python3
"""Makes a program's manual page from what it says of itself: --version and the --help of every subcommand.

usage: manpage.py PROGRAM OUTPUT DATE MANUAL   (MANUAL: where the user's manual will be installed)
"""

import os
import pathlib
import re
import subprocess
import sys

HEADING = re.compile(r"(\w[\w ]*):$")
ENTRY = re.compile(r"  (\S.*?)(?:  +(\S.*))?$")


def said(program, *arguments):
    environment = {**os.environ, "NO_COLOR": "1"}
    return subprocess.run([program, *arguments], check=True, capture_output=True, text=True, env=environment).stdout


class Help:
    """One help text: what it is for, the synopsis, lists of (term, text) under headings, and what stands behind."""

    def __init__(self, text):
        about, found, rest = text.partition("Usage: ")
        if not found:
            raise SystemExit("manpage.py: a help text without a \"Usage:\" line:\n" + text)
        self.about = " ".join(about.split())
        self.usage, _, rest = rest.partition("\n")
        self.lists, footer, entries = {}, [], None
        for line in rest.splitlines():
            if heading := HEADING.match(line):
                entries = self.lists.setdefault(heading[1], [])
            elif entries is not None and (entry := ENTRY.match(line)):
                entries.append([term(entry[1]), entry[2] or ""])
            elif entries and line.startswith("   "):
                entries[-1][1] = (entries[-1][1] + " " + line.strip()).strip()
            elif line:
                footer.append(line)
        self.footer = " ".join(footer)


def term(text):
    # A flag that may take a value is shown with its default in braces: "--simulate{KV4071} [=PART]".
    text = re.sub(r"\{[^}]*\} ?\[=", "[=", text)
    # Types say nothing that the text does not, and a positional's name stands in the synopsis too.
    text = re.sub(r"( (INT|FLOAT|TEXT))? REQUIRED$|:?(INT|FLOAT|TEXT):(?=\{)|:(INT|FLOAT|TEXT)\b", "", text)
    # What an option excludes, the program says itself when both are given.
    return re.sub(r" (Excludes|Needs): .*", "", text).replace(",--", ", --")


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-").replace('"', "\\(dq")
    return "\\&" + text if text.startswith((".", "'")) else text


def listed(entries):
    for name, text in entries:
        yield f".TP\n.B {roff(name)}\n{roff(text)}"


def commands(program, path, helped):
    """The section of each command that does something, in the order of the help text."""
    for name, _ in helped.lists.get("Subcommands", []):
        inner = Help(said(program, *path, name, "--help"))
        if "Subcommands" in inner.lists:
            yield from commands(program, [*path, name], inner)
            continue
        yield f".SS {roff(' '.join([*path, name]))}\n.B {roff(inner.usage)}\n.PP\n{roff(inner.about)}."
        for heading, entries in inner.lists.items():
            yield from listed(entry for entry in entries if heading != "Options" or "--help" not in entry[0])
        if inner.footer and " --help\"" not in inner.footer:
            yield f".PP\n{roff(inner.footer)}"


def page(program, date, manual):
    name = pathlib.Path(program).name
    helped = Help(said(program, "--help"))
    codes = re.search(r"Exit codes: ([^.]*)\.", helped.footer)
    if not codes:
        raise SystemExit(f"manpage.py: {name} --help does not tell the exit codes")
    summary = helped.about.rstrip(".")
    description = " ".join((helped.about + " " + helped.footer.replace(codes[0], "")).split())
    yield f'.TH {name.upper()} 1 {date} "{roff(said(program, "--version").strip())}" "User Commands"'
    yield f".SH NAME\n{name} \\- {roff(summary[0].lower() + summary[1:])}"
    yield f".SH SYNOPSIS\n.B {roff(helped.usage)}"
    yield f".SH DESCRIPTION\n{roff(description)}"
    yield ".SH OPTIONS"
    yield from listed(helped.lists["Options"])
    if "Subcommands" in helped.lists:
        yield ".SH COMMANDS"
        yield from commands(program, [], helped)
    yield ".SH EXIT STATUS"
    yield from listed(code.split(" ", 1) for code in codes[1].split(", "))
    others = [f".BR {other} (1)" for other in ("vrkbench", "vrkctl") if other != name]
    yield ".SH SEE ALSO\n" + ",\n".join(others) + f",\n.I {roff(manual)}"


def main():
    program, output, *rest = sys.argv[1:]
    pathlib.Path(output).write_text("\n".join(page(program, *rest)) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
