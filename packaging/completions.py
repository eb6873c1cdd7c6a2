#!/usr/bin/env python3
"""Makes the shells' completions of vrkctl from what it says of itself.

usage: completions.py PROGRAM FOLDER   (writes FOLDER/vrkctl, _vrkctl and vrkctl.fish: bash, zsh, fish)
"""

import json
import pathlib
import re
import sys

from helptext import Help, said


def parts(program):
    request = {"id": 1, "method": "sim", "params": {"op": "parts"}}
    return json.loads(said(program, "rpc", "--simulate", "--virtual-time", text=json.dumps(request)))["result"]


def options(entries, parts):
    """(option, text, what may stand behind it: None, "file", "folder" or a list of words)"""
    for name, text in entries:
        if not (option := re.search(r"(--[\w-]+)(.*)", name)):
            continue
        behind = option[2].strip()
        values = {"": None, "FILE": "file", "DIR": "folder", "[=PART]": parts, "PART": parts}.get(behind, [])
        if behind == "LEVEL":
            values = re.findall(r"\d\.\d(?=[,;])|\b(?:Min|Mid|Max|off)\b", text.replace("never off", ""))
        if behind and (words := re.match(r"(\w+) or (\w+)\b", text)):
            values = list(words.groups())
        yield option[1], text, values


FILE_COMMANDS = set()


def commands(program, parts, path=()):
    """Each command: its words, its options, the (name, text) of those inside it; a file is one named "FILE" or "JOURNAL"."""
    helped = Help(said(program, *path, "--help"))
    inner = helped.lists.get("Subcommands", [])
    if any(name.startswith(("FILE", "JOURNAL")) for name, _ in helped.lists.get("Positionals", [])):
        FILE_COMMANDS.add(" ".join(path))
    yield " ".join(path), list(options(helped.lists["Options"], parts)), inner
    for name, _ in inner:
        yield from commands(program, parts, (*path, name))


def shell(text):
    return "'" + text.replace("'", "'\\''") + "'"


def bash(found):
    lines = ["# bash completion for vrkctl", "_vrkctl() {", '    local word="$2" before="$3" path="" words=""',
             "    local position", "    for ((position = 1; position < COMP_CWORD; ++position)); do",
             '        case "$path ${COMP_WORDS[position]}" in']
    for path, _, _ in found:
        if path:
            before, _, last = path.rpartition(" ")
            lines.append(f'            "{before} {last}") path="{path}" ;;')
    lines += ["        esac", "    done", '    [[ $before == "=" ]] && before="${COMP_WORDS[COMP_CWORD-2]}"',
              '    case "$before" in']
    values = {}
    for option, _, value in (option for _, all_options, _ in found for option in all_options):
        if value is not None:
            known = values.setdefault(option, value)
            if isinstance(value, list):  # a command may take more words than another
                values[option] = list(dict.fromkeys([*known, *value]))
    for option, value in values.items():
        how = {"file": "-f", "folder": "-d"}.get(value) if isinstance(value, str) else f'-W "{" ".join(value)}"'
        # Behind "--simulate" and a blank a command may follow as well.
        end = "[[ ${#COMPREPLY[@]} -gt 0 ]] && return" if option == "--simulate" else "return"
        if value:
            lines.append(f'        {option}) mapfile -t COMPREPLY < <(compgen {how} -- "${{word#=}}"); {end} ;;')
    lines.append("        " + "|".join(option for option, value in values.items() if not value) + ") return ;;")
    lines += ["    esac", '    case "$path" in']
    common = " ".join(option for option, _, _ in found[0][1])
    for path, all_options, inner in found:
        own = [name for name, _ in inner] + [option for option, _, _ in all_options if option not in common.split()]
        lines.append(f'        "{path}") words="{" ".join(own)}" ;;')
    lines += ["    esac", f'    mapfile -t COMPREPLY < <(compgen -W "$words {common}" -- "$word")']
    if FILE_COMMANDS:
        paths = "|".join(f'"{path}"' for path in sorted(FILE_COMMANDS))
        lines += ['    case "$path" in', f'        {paths}) mapfile -t -O "${{#COMPREPLY[@]}}" COMPREPLY < <(compgen -f -- "$word") ;;',
                  "    esac"]
    lines += ["}",
              "complete -F _vrkctl vrkctl"]
    return lines


def zsh(found):
    lines = ["#compdef vrkctl", "# zsh completion for vrkctl", 'local where="" word', "local -a inner all",
             "for word in ${words[2,CURRENT-1]}; do", '    case "$where $word" in']
    for path, _, _ in found:
        if path:
            before, _, last = path.rpartition(" ")
            lines.append(f'        "{before} {last}") where="{path}" ;;')
    lines += ["    esac", "done"]

    def described(entries):
        return " ".join(shell(f"{name.replace(':', chr(92) + ':')}:{text}") for name, text in entries)

    def specification(option, text, value):
        text = re.sub(r"[\[\]:]", "", text)
        action = {"file": ":file:_files", "folder": ":folder:_files -/"}.get(value) if isinstance(value, str) else None
        if isinstance(value, list):
            action = f":value:({' '.join(value)})" if value else ":value: "
        optional = ":" if option == "--simulate" else ""
        equals = "=-" if option == "--simulate" else ""
        return shell(f"{option}{equals}[{text}]{optional}{action or ''}")

    common = [specification(*option) for option in found[0][1]]
    lines.append("all=(" + " ".join(common) + ")")
    lines.append('case "$where" in')
    for path, all_options, inner in found:
        own = [specification(*option) for option in all_options]
        own = " ".join(option for option in own if option not in common)
        lines.append(f'    "{path}") inner=({described(inner)}); all+=({own}) ;;')
    files = "|".join(f'"{path}"' for path in sorted(FILE_COMMANDS)) or '"-"'
    lines += ["esac", "(( ${#inner} )) && _describe command inner", f'case "$where" in {files}) all+=("*:file:_files") ;; '
              '*) all+=("*: :_message argument") ;; esac', "_arguments -S $all"]
    return lines


def fish(found):
    lines = ["# fish completion for vrkctl", "complete -c vrkctl -f"]
    words = {path: path.split() for path, _, _ in found}
    for path, all_options, inner in found:
        seen = " ".join(f"; and __fish_seen_subcommand_from {word}" for word in words[path])
        if inner:
            below = " ".join(name for name, _ in inner)
            here = f"not __fish_seen_subcommand_from {below}{seen}"
            lines += [f"complete -c vrkctl -n {shell(here)} -a {name} -d {shell(text)}" for name, text in inner]
        if path in FILE_COMMANDS:
            lines.append(f"complete -c vrkctl -n {shell(seen.removeprefix('; and '))} -F")
        for option, text, value in all_options:
            if path and option in {name for name, _, _ in found[0][1]}:
                continue
            condition = f" -n {shell(seen.removeprefix('; and '))}" if path else ""
            after = {"file": " -r -F", "folder": " -x -a '(__fish_complete_directories)'"}.get(value, "") \
                if isinstance(value, str) else ""
            if isinstance(value, list) and option != "--simulate":
                after = " -x" + (f" -a {shell(' '.join(value))}" if value else "")
            lines.append(f"complete -c vrkctl{condition} -l {option[2:]}{after} -d {shell(text)}")
            if option == "--simulate":
                lines += [f"complete -c vrkctl -a --simulate={part} -d {shell('Simulated part')}" for part in value]
    return lines


def main():
    program, folder = sys.argv[1:]
    found = list(commands(program, parts(program)))
    for name, make in {"vrkctl": bash, "_vrkctl": zsh, "vrkctl.fish": fish}.items():
        pathlib.Path(folder, name).write_text("\n".join(make(found)) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
