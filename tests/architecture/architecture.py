#!/usr/bin/env python3
"""Holds the walls of the house: which folder may include which, and what the programs link.

usage: architecture.py includes SOURCE_FOLDER
       architecture.py messages SOURCE_FOLDER                (each is explained in docs/manual.md)
       architecture.py links NM READELF PROGRAM LIBRARY...   (the program without Qt, the model libraries)
       architecture.py self-test
"""

import pathlib
import re
import subprocess
import sys
import tempfile

# Lowest floor first. A folder includes itself and the floors below; folders of one floor do not know each other.
FLOORS = [["platform"], ["link", "sim"], ["motherboard"], ["panels"], ["script"], ["shell"], ["automation"],
          ["views"], ["apps"]]
FLOOR_OF = {folder: floor for floor, folders in enumerate(FLOORS) for folder in folders}

# Floors inside a folder; "." is the files that stand in the folder itself.
SUB_FLOORS = {
    "platform": [["runtime"], ["files", "dialogs", "clipboard", "system"], ["controls", "hid"], ["qt"]],
    "panels": [["blocks"], ["."], ["instruction"], ["i2c", "spi", "discrete"]],
}
SUB_FLOOR_OF = {folder: {name: floor for floor, names in enumerate(floors) for name in names}
                for folder, floors in SUB_FLOORS.items()}

# The simulated board stands in for the hardware: all that it shares with the link is what goes over the wire.
SIM_MAY_INCLUDE = ("sim/", "platform/", "link/reportLayout.h")

QT_FOLDERS = ("platform/qt/", "views/", "apps/vrkbench/")
HID_FOLDER = "platform/hid/"
TOML_READER = "platform/files/RegisterMapFile.cpp"
# Folders that run anywhere: the standard library and the project's own headers, nothing else.
MODELS = ("platform/runtime/", "platform/controls/", "platform/dialogs/", "platform/clipboard/", "link/", "sim/",
          "motherboard/", "panels/", "script/", "shell/")

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore
set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view syncstream
system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector
version
""".split())

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
QT_HEADER = re.compile(r"(Qt\w+/)?Q[A-Z]\w*$|Qt\w+/")
HID_HEADER = re.compile(r"hidapi|libudev|linux/(hidraw|hiddev|usb)")

FOREIGN_SYMBOL = re.compile(r"\bU (?:\w+ for )?(Q[A-Z][a-z]\w*(?:::|\(|$)|qt_\w+|hid_[a-z_]+$|udev_\w+|libusb_\w+)")
QT_LIBRARY = re.compile(r"\(NEEDED\).*\[(libQt[^\]]*)\]")


def sub_fault(folder, file, header):
    """The same inside one folder."""
    floor_of = SUB_FLOOR_OF.get(folder)
    if not floor_of:
        return None
    own, target = (path.split("/")[1] if path.count("/") > 1 else "." for path in (file, header))
    for name in (own, target):
        if name not in floor_of:
            return f"stands in {folder}/{name}, which is on no floor"
    return None if own == target or floor_of[target] < floor_of[own] else "looks up or sideways"


def include_fault(file, kind, header):
    """What is wrong with a file's include line; None if nothing is. Paths are relative to the repository."""
    if QT_HEADER.match(header):
        return None if file.startswith(QT_FOLDERS) else "knows Qt"
    if HID_HEADER.search(header):
        return None if file.startswith(HID_FOLDER) else "knows the system's HID services"
    if header.startswith("toml++/"):
        return None if file == TOML_READER else "knows TOML"
    if kind == "<":
        model = file.startswith(MODELS)
        return "goes beyond the standard library" if model and header not in STANDARD else None
    if header.endswith(".moc"):
        return None
    if header.startswith("platform/qt/") and not file.startswith(QT_FOLDERS):
        return "knows the rendering"
    folder, target = file.split("/")[0], header.split("/")[0]
    if folder == target:
        return sub_fault(folder, file, header)
    if target not in FLOOR_OF:
        return "is not written from the repository's top"
    if folder == "sim":
        return None if header.startswith(SIM_MAY_INCLUDE) else "knows more of the host than the wire"
    return None if FLOOR_OF[target] < FLOOR_OF[folder] else "looks up or sideways"


def check_includes(root):
    faults, files = [], 0
    for folder in FLOOR_OF:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            files += 1
            name = path.relative_to(root).as_posix()
            for kind, header in INCLUDE.findall(path.read_text(encoding="utf-8")):
                fault = include_fault(name, kind, header)
                if not fault and kind == '"' and not header.endswith(".moc") and not (root / header).is_file():
                    fault = "names a file that is not there"
                if fault:
                    faults.append(f"{name}: #include {header}: {fault}")
    if files == 0:
        faults.append(f"{root} holds no sources")
    return faults


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def symbol_faults(listing):
    """Symbols of Qt and the HID libraries in nm's demangled list of what a library lacks."""
    return [match.group(1) for match in map(FOREIGN_SYMBOL.search, listing.splitlines()) if match]


def check_links(nm, readelf, program, *libraries):
    faults = [f"{program} links {name}" for name in QT_LIBRARY.findall(output_of(readelf, "-d", program))]
    if not libraries:
        faults.append("no model libraries were given")
    for library in libraries:
        symbols = symbol_faults(output_of(nm, "--undefined-only", "--demangle", library))
        faults += [f"{library} needs {symbol}" for symbol in sorted(set(symbols))]
    return faults


# Ways in which a model says something to the user.
SAYS = re.compile(r"\b(?:say|askRetry|confirm|dialogs\.show)\(\s*\{?\s*(?=[^;]*?\")([^;]*)")
LITERALS = re.compile(r'"(?:[^"\\\n]|\\.)*"(?:\s*"(?:[^"\\\n]|\\.)*")*')


def said_in(source):
    """The constant pieces of what a source says, without those of a word or two."""
    for call in SAYS.findall(source):
        for run in LITERALS.findall(call):
            text = " ".join("".join(re.findall(r'"((?:[^"\\]|\\.)*)"', run)).replace("\\r\\n", " ").replace("\\\\", "\\").split())
            if len(text) > 12 and " " in text:
                yield text


def check_messages(root, manual):
    """A message that the manual does not explain leaves the user alone with it."""
    known = " ".join(manual.split())
    said = {(text, path.name) for folder in ("link", "motherboard", "panels", "script", "shell")
            for path in sorted((root / folder).rglob("*.*")) if path.suffix in (".cpp", ".h")
            for text in said_in(path.read_text(encoding="utf-8"))}
    faults = [f"{name}: the manual does not explain {text!r}" for text, name in sorted(said) if text not in known]
    return faults or ([] if len(said) > 10 else ["no messages were found"])


def self_test():
    """The walls hold against those who would go through them."""
    refused = [
        ("link/a.cpp", '"', "panels/DevicePanel.h"), ("link/a.cpp", '"', "sim/Ports.h"),
        ("sim/a.cpp", '"', "link/modHID.h"), ("panels/a.h", '"', "shell/Bench.h"), ("shell/a.h", "<", "QWidget"),
        ("automation/a.h", '"', "platform/qt/theme.h"), ("apps/vrkctl/main.cpp", "<", "QApplication"),
        ("automation/a.cpp", "<", "QtWidgets/QWidget"), ("automation/a.cpp", "<", "hidapi/hidapi.h"),
        ("platform/controls/a.h", "<", "unistd.h"), ("link/a.cpp", '"', "modHID.h"),
        ("platform/runtime/a.h", '"', "link/modHID.h"),
        ("panels/blocks/a.h", '"', "panels/DevicePanel.h"), ("panels/blocks/a.h", '"', "panels/i2c/frmVRK_User1.h"),
        ("panels/WiperPanel.h", '"', "panels/instruction/frmInstructions.h"),
        ("panels/instruction/a.h", '"', "panels/i2c/frmVRK_User1.h"), ("panels/i2c/a.h", '"', "panels/spi/a.h"),
        ("panels/discrete/a.h", '"', "panels/i2c/i2cParts.h"), ("panels/new/a.h", '"', "panels/DevicePanel.h"),
        ("platform/runtime/a.h", '"', "platform/controls/Panel.h"),
        ("platform/files/a.h", '"', "platform/dialogs/Dialogs.h"),
        ("platform/hid/a.h", '"', "platform/controls/Panel.h"), ("views/blocks/a.cpp", "<", "toml++/toml.h"),
    ]
    passed = [
        ("sim/a.cpp", '"', "link/reportLayout.h"), ("views/a.cpp", "<", "QWidget"), ("views/a.cpp", '"', "a.moc"),
        ("platform/hid/a.cpp", "<", "hidapi/hidapi.h"), ("apps/vrkctl/main.cpp", "<", "CLI/CLI.hpp"),
        ("shell/a.cpp", '"', "panels/i2c/frmVRK_User1.h"), ("link/a.h", "<", "vector"),
        ("panels/WiperPanel.h", '"', "panels/blocks/StatusBlock.h"), ("panels/a.h", '"', "panels/DevicePanel.h"),
        ("panels/spi/a.h", '"', "panels/instruction/a.h"), ("platform/hid/a.h", '"', "platform/files/files.h"),
        (TOML_READER, "<", "toml++/toml.h"),
        ("platform/qt/a.h", '"', "platform/controls/Panel.h"), ("platform/runtime/a.h", '"', "platform/runtime/text.h"),
    ]
    faults = [f"not refused: {case}" for case in refused if not include_fault(*case)]
    faults += [f"refused: {case}" for case in passed if include_fault(*case)]
    listing = ("   U QWidget::show()\n   U qt_version_tag\n   U hid_write\n   U vrk::hid::HidHost::~HidHost()\n"
               "   U vrk::Queue::take()\n   U vtable for QObject\n   U typeinfo for QObject\n")
    if symbol_faults(listing) != ["QWidget::", "qt_version_tag", "hid_write", "QObject", "QObject"]:
        faults.append(f"symbols: {symbol_faults(listing)}")
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "link").mkdir()
        (root / "link/a.cpp").write_text('#include "link/gone.h"\n  # include <QString>\n', encoding="utf-8")
        if len(check_includes(root)) != 2:
            faults.append(f"includes: {check_includes(root)}")
        (root / "link/b.cpp").write_text('context().say("Nobody explains " +\n  name + "what it is\\r\\n"\n  "for.");',
                                         encoding="utf-8")
        if check_messages(root, "what it  is for.") != ["b.cpp: the manual does not explain 'Nobody explains'"]:
            faults.append(f"messages: {check_messages(root, 'what it  is for.')}")
    return faults


def main():
    command, arguments = sys.argv[1], sys.argv[2:]
    if command == "includes":
        faults = check_includes(pathlib.Path(arguments[0]))
    elif command == "messages":
        root = pathlib.Path(arguments[0])
        faults = check_messages(root, (root / "docs/manual.md").read_text(encoding="utf-8"))
    elif command == "links":
        faults = check_links(*arguments)
    else:
        faults = self_test()
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
