#!/usr/bin/env python3
"""Makes a program's manual page from what it says of itself: --version and the --help of every subcommand.

usage: manpage.py PROGRAM OUTPUT DATE MANUAL   (MANUAL: where the user's manual will be installed)
"""

import pathlib
import re
import sys

from helptext import Help, said


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
