"""What a user without a plan does, and what goes wrong meanwhile: random requests, each at its time."""

from parts import PARTS, UP_DOWN

# They end the program, which is a matter of its own: rare, so that a bench lives for more than a burst.
ENDINGS = {"frmMainF340.cmdQuit", "frmMainF340.mnuExit"}
# What ends each long action. Actions nest, and each of these ends the innermost of its kind.
ABORTS = ["frmScriptOps.cmdAbort", "FrmVCCCal.cmdAbort", "frmScriptOps.cmdRecordStop", "UPDN_Runin.cmdAbortRun",
          "frmVRK_UD1.cmdAbortIncr(0)", "frmVRK_UD1.cmdAbortIncr(1)", "frmVRK_PB1.cmdAbortIncr", "frmMainF340.cmdStopScan",
          "frmMotherboardDAQ2.cmdEndSampling", "frm_q4410.cmdIncrWip(2)", "frm_q4420.cmdIncrWip(2)"]
FILES = ["script.txt", "fails.txt", "table.csv", "out.txt", "none/none.txt"]
CONSOLES = ["frmMainF340", "frmMotherboardDAQ2"]
PANELS = CONSOLES + ["frmVRK_User1", "frmVRK_SPI1", "frm_q4410", "frm_q4420", "Frm3310", "frmVRK_UD1", "frmVRK_PB1",
                     "UPDN_Runin", "FrmVCCCal", "ProductExec", "frmScriptOps", "Doco", "frmAbout2", "frmStartup"]


def request(method, **params):
    return {"method": method, "params": params}


def fault(rng):
    kind = rng.choice(["noReply", "noReply", "lateReply", "lateReply", "errorByte", "writeFails", "nak", "stuckSda",
                       "missedStore", "noise", "stale", "reply", "input", "unplug", "plug", "plug", "boards"])
    if kind in ("unplug", "plug"):
        return request("sim", op=kind, board=0)
    if kind == "boards":
        return request("sim", op=kind, count=rng.choice([1, 1, 2]))
    if kind == "stale":
        return request("sim", op=kind, hex=rng.choice(["01", "01003F", "0107"]), count=rng.choice([1, 3, 70]))
    if kind == "reply":
        return request("sim", op=kind, command=rng.randrange(20), hex="01" + rng.randbytes(6).hex(), times=rng.randrange(1, 4))
    if kind == "input":
        return request("sim", op=kind, channel=rng.randrange(16), count=rng.randrange(1024))
    extra = {"lateReply": {"ms": rng.choice([5, 5999, 6000, 9000])}, "errorByte": {"value": rng.choice([1, 255])},
             "noise": {"counts": rng.randrange(1, 40)}}.get(kind, {})
    if rng.random() < 0.5:
        extra["command"] = rng.choice([3, 6, 9, 17, 18])
    return request("sim", op="fault", kind=kind, times=rng.choice([1, 1, 2, 5]), **extra)


def typed(rng):
    return rng.choice(["0", "1", "7F", "3F\n", "FF\n", "100", "128\n", "3FF\n", "50", "A0\n", "0x", "", "-1", "1e9", "3.3",
                       "65536\n", "zz\n", "12,5"]) if rng.random() < 0.9 else str(rng.randrange(10000))


def on_control(rng, panel, entry):
    path = f"{panel}.{entry['name']}"
    if entry["first"] is not None:
        path += f"({rng.randint(entry['first'], entry['last'])})"
    if path in ENDINGS and rng.random() < 0.98:
        return None
    kind = entry["kind"]
    if kind in ("CheckBox", "OptionButton", "Button", "MenuEntry"):
        return request("click", path=path)
    if kind == "TextBox":
        return request(rng.choice(["enter", "focus", "leave"]), path=path) if rng.random() < 0.2 else \
            request("type", path=path, text=typed(rng))
    if kind in ("ComboBox", "ListBox"):
        return request("select", path=path, index=rng.randrange(rng.choice([4, 10, 128])))
    if kind == "Slider":
        return request("drag", path=path, value=rng.randrange(128))
    if kind == "Grid":
        return request("select", path=path, row=rng.randrange(1, 12), column=0)
    return request("doubleClick", path=path) if kind == "Picture" else None


def gesture(rng, controls, near):
    chance = rng.random()
    if chance < 0.04:
        panel = rng.choice(near + PANELS)
        return request("close" if rng.random() < 0.2 and panel not in ENDING_PANELS else "show", panel=panel)
    if chance < 0.06:
        return request("select", path="frmStartup.cboVRKSelect", index=rng.randrange(2, 10))
    panel = rng.choice(near) if chance < 0.8 else rng.choice(PANELS)
    return on_control(rng, panel, rng.choice(controls[panel]))


# Closing their windows ends the program.
ENDING_PANELS = {"frmStartup", "frmMainF340"} | {part.panel for part in PARTS.values()}


def opening(rng, name):
    """How a user who knows the part would begin."""
    part = PARTS[name]
    steps = [request("sim", op="socket", part=name), request("show", panel="frmStartup"),
             request("select", path="frmStartup.cboVRKSelect", index=part.row)]
    if part.entry and not part.table:
        steps.append(request("click", path=f"{part.panel}.{part.entry}"))
    steps.append(request("click", path=f"{part.panel}.OptVCC(0)"))
    if rng.random() < 0.5:
        panel = "UPDN_Runin" if part.row == UP_DOWN else "frmScriptOps"
        steps.append(request("show", panel=panel))
    return steps


def burst(rng, controls):
    """Requests with their times in ms: gestures and faults, then what ends everything that may still run."""
    name = rng.choice(sorted(PARTS))
    part = PARTS[name]
    near = [part.panel] * 4 + [part.reader] * 2 + ["UPDN_Runin" if part.row == UP_DOWN else "frmScriptOps"] * 2 + CONSOLES
    steps, at = [], 1  # what is due at once would begin before the rest is known
    faulty = rng.choice([0, 0.05, 0.2])
    for step in opening(rng, name):
        steps.append((at, step))
        at += 700
    for _ in range(rng.randrange(10, 60)):
        at += rng.choice([0, 0, 1, 20, 100, 400, 1000])
        step = fault(rng) if rng.random() < faulty else gesture(rng, controls, near)
        if step:
            steps.append((at, step))
    return name, steps + ending(at + 1000)


def ending(at):
    """An action that waits for a reply takes its 6 s before it hears of anything."""
    steps = [(at, request("sim", op="clear")), (at, request("sim", op="plug", board=0)),
             (at, request("sim", op="boards", count=1))]
    for turn in range(12):
        steps += [(at + 7000 + 1500 * turn, request("click", path=path)) for path in ABORTS]
        steps.append((at + 7000 + 1500 * turn, request("close", panel="ProductExec")))
    # A discovery that kept losing replies may have held a table or a loop back beyond all of these.
    steps += [(at + 600_000, request("click", path=path)) for path in ABORTS]
    return steps + [(at + 600_000, request("close", panel="ProductExec"))]
