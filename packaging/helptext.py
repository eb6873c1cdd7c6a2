"""What a program says of itself: --version and the --help of every subcommand, as data."""

import os
import re
import subprocess

HEADING = re.compile(r"(\w[\w ]*):$")
ENTRY = re.compile(r"  (\S.*?)(?:  +(\S.*))?$")


def said(program, *arguments, text=None):
    environment = {**os.environ, "NO_COLOR": "1"}
    return subprocess.run([program, *arguments], check=True, capture_output=True, text=True, input=text,
                          env=environment).stdout


class Help:
    """One help text: what it is for, the synopsis, lists of (term, text) under headings, and what stands behind."""

    def __init__(self, text):
        about, found, rest = text.partition("Usage: ")
        if not found:
            raise SystemExit("a help text without a \"Usage:\" line:\n" + text)
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
