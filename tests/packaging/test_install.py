"""Installs the build into a staging folder and looks at it as a distribution's package check would."""

import configparser
import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SOURCE = Path(os.environ["SOURCE"])
PROGRAMS = ("vrkbench", "vrkctl")
DOC = "share/doc/vrkbench"
COMPLETIONS = ("share/bash-completion/completions/vrkctl", "share/zsh/site-functions/_vrkctl",
               "share/fish/vendor_completions.d/vrkctl.fish")


def output_of(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    assert done.returncode == 0, f"{command}: {done.returncode}\n{done.stdout}"
    return done.stdout


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        stage = tempfile.TemporaryDirectory()
        cls.addClassCleanup(stage.cleanup)
        os.environ["DESTDIR"] = stage.name
        output_of(os.environ["CMAKE"], "--install", os.environ["BUILD"], "--prefix", "/usr")
        cls.root = Path(stage.name) / "usr"

    def test_every_file_is_in_its_place_and_no_other(self):
        wanted = {f"bin/{program}" for program in PROGRAMS}
        wanted |= {f"share/man/man1/{program}.1" for program in PROGRAMS}
        wanted |= set(COMPLETIONS)
        wanted |= {"lib/udev/rules.d/70-vrkbench.rules", "share/applications/vrkbench.desktop",
                   "share/icons/hicolor/scalable/apps/vrkbench.svg",
                   "share/metainfo/org.vrkbench.vrkbench.metainfo.xml", f"{DOC}/README.md", f"{DOC}/LICENSE"}
        wanted |= {f"{DOC}/{file.relative_to(SOURCE / 'docs')}" for file in (SOURCE / "docs").rglob("*.*")}
        wanted |= {f"{DOC}/{file.relative_to(SOURCE)}" for file in (SOURCE / "examples").glob("*.*")}
        wanted |= {f"share/vrkbench/registers/{file.name}" for file in (SOURCE / "examples/registers").iterdir()}
        installed = {file.relative_to(self.root).as_posix() for file in self.root.rglob("*") if not file.is_dir()}
        self.assertEqual(installed, wanted)
        self.assertIn(f"{DOC}/manual.md", installed)

    def test_the_programs_start_where_they_are(self):
        for program in PROGRAMS:
            path = self.root / "bin" / program
            self.assertRegex(output_of(path, "--version"), rf"^{program} \d+\.\d+\.\d+\n$")
            self.assertEqual(path.stat().st_mode & 0o777, 0o755)

    def test_the_register_maps_are_found_from_where_the_program_is(self):
        said = output_of(self.root / "bin/vrkctl", "register", "list", "--part", "KV6021")
        self.assertIn("02  ACR", said)
        os.rename(self.root / "share/vrkbench/registers", self.root / "share/vrkbench/away")
        self.addCleanup(os.rename, self.root / "share/vrkbench/away", self.root / "share/vrkbench/registers")
        gone = subprocess.run([self.root / "bin/vrkctl", "register", "list", "--part", "KV6021"], capture_output=True)
        self.assertEqual(gone.returncode, 5)

    def test_desktop_entry_metainfo_and_icon_belong_together(self):
        entry_file = self.root / "share/applications/vrkbench.desktop"
        metainfo_file = self.root / "share/metainfo/org.vrkbench.vrkbench.metainfo.xml"
        self.assertEqual(output_of("desktop-file-validate", entry_file), "")
        output_of("appstreamcli", "validate", "--no-net", metainfo_file)

        entry = configparser.ConfigParser(interpolation=None)
        entry.read(entry_file)
        for section in entry.sections():
            self.assertIn(entry[section]["Exec"].split()[0], PROGRAMS)
        metainfo = ElementTree.parse(metainfo_file).getroot()
        self.assertEqual(metainfo.findtext("launchable"), entry_file.name)
        self.assertEqual(metainfo.findtext("icon"), entry["Desktop Entry"]["Icon"])
        version = output_of(self.root / "bin/vrkctl", "--version").split()[1]
        self.assertEqual(metainfo.find("releases/release").get("version"), version)

        icon = ElementTree.parse(self.root / "share/icons/hicolor/scalable/apps/vrkbench.svg").getroot()
        _, _, width, height = icon.get("viewBox").split()
        self.assertEqual(width, height, "the desktops' icons are square")

    def test_manual_pages_are_well_formed_and_know_every_command(self):
        for program in PROGRAMS:
            page = self.root / f"share/man/man1/{program}.1"
            self.assertEqual(output_of("mandoc", "-T", "lint", "-W", "warning", page), "")
            shown = output_of("mandoc", "-T", "ascii", page)
            shown = re.sub(".\b", "", shown)
            for option in re.findall(r"^ +(?:-\w,)?(--[\w-]+)", output_of(self.root / "bin" / program, "--help"), re.M):
                self.assertIn(option, shown)
        for command in ("boards", "doctor", "rpc", "wiper read", "wiper sweep", "register write", "supply status"):
            self.assertRegex(shown, rf"(?m)^   {command}$")
        self.assertIn("/share/doc/vrkbench/manual.md", shown)

    def test_completions_know_commands_options_and_parts(self):
        for place in COMPLETIONS:
            text = (self.root / place).read_text()
            for word in ("sweep", "wire-log", "KV4071", "3.3"):
                self.assertIn(word, text, place)
        bash = self.root / COMPLETIONS[0]
        for words, wanted in [("vrkctl wip", "wiper"), ("vrkctl wiper sweep 0 --fr", "--from"),
                              ("vrkctl boards --simulate KV6", "KV6021"), ("vrkctl wiper read --vcc 3.", "3.0 3.3 3.5"),
                              ("vrkctl script run --bus s", "spi"),
                              ("vrkctl runin run --on-mismatch s", "stop"), (f"vrkctl script run {SOURCE}/READM", f"{SOURCE}/README.md")]:
            count = len(words.split())
            said = output_of("bash", "-c", f'. "$1"; COMP_WORDS=($2); COMP_CWORD={count - 1}; '
                             '_vrkctl vrkctl "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"; echo "${COMPREPLY[*]}"', "bash",
                             bash, words)
            self.assertEqual(said.strip(), wanted)

    def test_the_rule_names_the_board_as_udev_writes_it_and_comes_before_the_seats(self):
        rule = self.root / "lib/udev/rules.d/70-vrkbench.rules"
        self.assertLess(rule.name, "73-seat-late.rules")
        lines = [line for line in rule.read_text().splitlines() if line and not line.startswith("#")]
        self.assertEqual(lines, ['SUBSYSTEM=="hidraw", ATTRS{idVendor}=="f5c3", ATTRS{idProduct}=="2034", '
                                 'TAG+="uaccess"'])
        doctor = subprocess.run([self.root / "bin/vrkctl", "doctor"], stdout=subprocess.PIPE, text=True).stdout
        if re.search(r"rule installed +no", doctor):
            self.assertIn(lines[0], doctor)


if __name__ == "__main__":
    unittest.main()
