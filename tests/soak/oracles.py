"""What must hold once the faults are over, whatever was done before."""

import re

from bench import BURST_SECONDS, Finding
from gestures import ABORTS, PANELS
from parts import PARTS, parameter_file

HANDLES = 2  # of the board, which the program keeps open
MEMORY_GROWTH = 64  # MiB from the end of the warm-up: freed memory that the allocator keeps for reuse is less
VOLT_STEP = 2 * 3.3 / 1023  # of the converter, behind the divider
# Depends on what was done, not on what failed: a row of the product table is in hand or not, an instruction that
# writes or one that reads, a part that has stored since its last step or not.
DEPENDS = {"ProductExec.cmdReturn", "frmVRK_UD1.cmdSequence(1)", "frmVRK_UD1.cmdSequence(3)"} | {
    f"{form}.{box}" for form in ("frm_q4410", "frm_q4420") for box in ("txtWriteValue", "lblReadValue")}
# What the user sets and what makes no difference to the board by itself.
ENTRIES = {"TextBox": "text", "CheckBox": "value", "OptionButton": "value", "ComboBox": "index"}
# Of the controller console: how transfers are made. Its other entries are what the board says.
BUS_OPTIONS = re.compile(r"frmMainF340\.(ch[kK](Random|2Wire|RepeatedStart|StoppedWrite|ExtendHold|FileWrite|SPI)|cboS|txtClockPhase)")


def paths_of(panel, entries):
    for entry in entries:
        if entry["kind"] in ("Action", "Value"):
            continue
        numbers = [None] if entry["first"] is None else range(entry["first"], entry["last"] + 1)
        for number in numbers:
            yield f"{panel}.{entry['name']}" + ("" if number is None else f"({number})")


def disabled(fresh, now):
    """Controls that are disabled though they are not in a fresh program."""
    return sorted(path for path, usable in fresh.items() if usable and not now.get(path, True) and path not in DEPENDS)


def wrong_positions(part, shown, wipers, vcc):
    """What a panel shows of each wiper, against where the part's wipers are. \\param shown (text, freshness)"""
    wrong = []
    for number, ((text, state), wiper) in enumerate(zip(shown, wipers)):
        if state != "fresh":
            wrong.append(f"wiper {number}: the reading \"{text}\" is {state}")
        elif part.last:
            if abs(float(text) - vcc * wiper / part.last) > 3 * VOLT_STEP:
                wrong.append(f"wiper {number}: {text} V are shown at position {wiper} of {part.last}, VCC {vcc:.3f} V")
        elif int(text, part.base) != wiper:
            wrong.append(f"wiper {number}: \"{text}\" is shown, the part is at {wiper}")
    if len(shown) > len(wipers):
        wrong.append(f"{len(shown)} wipers are shown, the part has {len(wipers)}")
    return wrong


class Oracles:
    """Judges one bench. A fresh one is settled first, for every part: what it shows then is what must come back."""

    def __init__(self, bench):
        self.bench = bench
        bench("select", path="frmStartup.cboVRKSelect", index=2)
        self.controls = {panel: bench("describe", panel=panel) for panel in PANELS}
        self.paths = [path for panel in PANELS for path in paths_of(panel, self.controls[panel])]
        self.usable = {}  # by part
        self.files_open = None
        self.warm = None  # MiB
        self.entries = self.entered(PANELS)  # of a fresh program
        for name in PARTS:
            self.usable[name] = self.settle(name)

    def entered(self, panels):
        paths = [path for path in self.paths if path.split(".")[0] in panels]
        return {path: aspects[ENTRIES[aspects["kind"]]] for path, aspects in zip(paths, self.bench("get", paths=paths))
                if aspects["kind"] in ENTRIES}

    def enabled(self):
        loaded = {panel["name"] for panel in self.bench("panels") if panel["loaded"]}
        paths = [path for path in self.paths if path.split(".")[0] in loaded]
        return {path: aspects["enabled"] for path, aspects in zip(paths, self.bench("get", paths=paths))}

    def load_all(self):
        for panel in PANELS:
            self.bench("describe", panel=panel)

    def put_back(self, panels):
        """The entries of a fresh program, as a user would who wants to begin anew."""
        for path, value in self.entered(panels).items():
            was = self.entries[path]
            mine = BUS_OPTIONS.match(path) or not path.startswith(("frmMainF340.", f"{path.split('.')[0]}.OptVCC"))
            if mine and was != value and was is not False:
                self.bench.tried("set", path=path, value=was)

    def calm(self):
        """Ends what the user could have left running, with a board that has no more faults and was plugged in anew."""
        bench = self.bench
        bench("sim", op="clear")
        bench("sim", op="boards", count=1)
        bench.tried("sim", op="unplug", board=0)
        bench("sim", op="plug", board=0)
        bench("answer", choices=["Retry"] * 4)  # to what the lost board was asked under
        bench.tried("click", path="frmMainF340.cmdReconnect")
        for path in ABORTS:
            bench.tried("click", path=path)
        bench.tried("close", panel="ProductExec")
        bench("advance", ms=20000, seconds=BURST_SECONDS)
        if running := bench("get", path="runningActivities"):
            raise Finding(f"still running after everything was aborted: {running}")

    def settle(self, name):
        """\\return which controls are enabled. \\throws Finding"""
        self.calm()
        self.load_all()
        self.bench.tried("close", panel="frmMotherboardDAQ2")
        self.bench("show", panel="frmMotherboardDAQ2")
        self.bench("click", path="frmMotherboardDAQ2.cmdSetMode")  # nothing else grounds the converter's other input
        self.bench("set", path="ADRef", value=3.3)  # one that was typed holds for good
        (self.bench.folder / "VRK_Cal_Data.txt").unlink(missing_ok=True)  # and one that was saved for every panel
        part = PARTS[name]
        for entry in ("frmVRK_User1.mnu_KV4071", "frmVRK_SPI1.mnuKV4180"):  # whatever part was chosen before
            self.bench("click", path=entry)
        self.put_back({part.panel, part.reader, "UPDN_Runin", "frmMainF340"})
        for form in ("frm_q4410", "frm_q4420"):  # what is enabled there follows from the instruction in hand
            self.bench.tried("click", path=f"{form}.cmdResetInstruction")
        self.read_part(name, part)
        self.check_resources()
        usable = self.enabled()
        if name in self.usable and (left := disabled(self.usable[name], usable)):
            raise Finding(f"left disabled: {', '.join(left)}")
        return usable

    def read_part(self, name, part):
        bench = self.bench
        bench("dialogs")
        bench("sim", op="socket", part=name)
        bench("show", panel="frmStartup")
        bench("select", path="frmStartup.cboVRKSelect", index=part.row)
        if part.table:
            self.choose_row(part)
        elif part.entry:
            bench("click", path=f"{part.panel}.{part.entry}")
        bench.tried("click", path=f"{part.panel}.OptVCC(1)")
        bench("click", path=f"{part.panel}.OptVCC(0)")
        for gesture in part.before:
            bench("click", path=f"{part.panel}.{gesture}")
        shown = []
        for number in range(part.wipers):
            bench("click", path=f"{part.reader}.{part.read.format(number)}")
            aspects = bench("get", path=f"{part.reader}.{part.shown.format(number)}")
            shown.append((aspects["caption"], aspects["state"]))
        state = bench("sim", op="state")
        if wrong := wrong_positions(part, shown, state["part"]["wipers"], state["vcc"]):
            boxes = [box["text"] for box in bench("dialogs")]
            raise Finding(f"{name} on {part.reader}: {'; '.join(wrong)}; boxes: {boxes}")

    def choose_row(self, part):
        """The file dialog comes by itself a tenth of a second after the table."""
        (self.bench.folder / "part.csv").write_text(parameter_file(part), encoding="ascii")
        self.bench("answer", files=["part.csv"])
        chosen = [(1, "click", {"path": f"{part.panel}.{part.entry}"}),
                  (1000, "select", {"path": "ProductExec.tGrid", "row": 1}),
                  (2000, "click", {"path": "ProductExec.cmdReturn"})]
        for ms, method, params in chosen:
            self.bench("at", ms=ms, request={"method": method, "params": params})
        self.bench("advance", ms=3000)

    def check_resources(self):
        state = self.bench("sim", op="state")
        if state["handles"] != HANDLES:
            raise Finding(f"{state['handles']} handles of the board are open, not {HANDLES}")
        memory, files = self.bench.figures()
        if self.files_open is None:
            self.files_open = files
        if files > self.files_open:
            raise Finding(f"{files} files are open, in the fresh program {self.files_open}")
        if self.warm is not None and memory > self.warm + MEMORY_GROWTH:
            raise Finding(f"{memory:.0f} MiB are in use, behind the warm-up {self.warm:.0f} MiB")

    def warmed_up(self):
        self.bench("click", path="Doco.cndTclear")
        self.warm = self.bench.figures()[0]
