import json
import re
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, Rpc, RpcFailure, RpcTest

CONVERTER_STEP = 2 * 3.3 / 1023  # volts; the board halves its inputs


class Ends(unittest.TestCase):
    def test_the_supplies_go_off_whatever_ends_it(self):
        with tempfile.TemporaryDirectory() as folder:
            log = Path(folder) / "wire.log"
            for end, code in [("input", 0), ("output", 141), (signal.SIGINT, 130), (signal.SIGTERM, 143),
                              (signal.SIGHUP, 129)]:
                with self.subTest(end=end):
                    rpc = Rpc("--simulate", "--virtual-time", "--wire-log", str(log))
                    rpc("select", path="frmStartup.cboVRKSelect", index=2)
                    rpc("click", path="frmVRK_User1.OptVCC(0)")
                    for name, text in (("txtSFRAddress", "E1"), ("txtSFRWRData", "02")):
                        rpc("set", path="frmMainF340." + name, value=text)
                    rpc("call", path="frmMainF340.cmdSetSFR_Click")
                    # More answers than a pipe holds, which nobody reads: the server is in a write when the end comes.
                    if end not in ("input", "output"):
                        for _ in range(50):
                            rpc.send({"id": 1, "method": "describe", "params": {"panel": "frmVRK_User1"}})
                        rpc.process.send_signal(end)
                    elif end == "output":
                        rpc.process.stdout.close()
                        rpc.send({"id": 1, "method": "now"})
                    else:
                        rpc.process.stdin.close()
                    self.assertEqual(rpc.process.wait(TIMEOUT), code)
                    for stream in (rpc.process.stdin, rpc.process.stdout, rpc.process.stderr):
                        stream.close()
                    port2 = [int(value, 16) & 0x60 for value in
                             re.findall(r" out 0 01 12 00 A0 ([0-9A-F]{2})", log.read_text())]
                    self.assertEqual((max(port2), port2[-1]), (0x60, 0))
                    self.assertEqual(re.findall(r" out 0 01 12 00 E1 (..)", log.read_text()), ["02", "06"])

    def test_an_answer_that_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM, "rpc", "--simulate"], input=b'{"id":1,"method":"now"}', stdout=full,
                                  stderr=subprocess.PIPE, timeout=TIMEOUT, check=False)
        self.assertEqual(done.returncode, 5)


class MainJob(RpcTest):
    def test_a_wiper_is_written_read_back_and_measured(self):
        self.openPanel()
        box = self.panel + "txtHexDataWrt(0)"
        self.rpc("click", path=self.panel + "ChkAutoRead(0)")
        self.rpc("type", path=box, text="3F")
        wire = self.wired("enter", path=box)
        self.assertEqual(wire[:4], [("out", "0106500101003F"), ("in", "01"), ("out", "0106510101"), ("in", "01003F")])
        # then the converter switched on and read, twice: the first conversion is thrown away
        self.assertEqual([bytes_ for way, bytes_ in wire if way == "out"][2:],
                         ["01100001", "0111", "01100001", "0111"])
        self.assertEqual(self.rpc.get(self.panel + "Shape1(1)", "colour"), "light green")
        self.rpc("enter", path=box)
        self.assertEqual(self.rpc.get(self.panel + "Shape1(1)", "colour"), "green")
        self.assertEqual(self.rpc.get(self.panel + "lblPotReadhex(0)", "caption"), "3F")
        vcc = self.rpc("sim", op="state")["vcc"]
        self.assertAlmostEqual(float(self.rpc.get(self.panel + "lblVCCVolts", "caption")), vcc, delta=CONVERTER_STEP)
        self.assertAlmostEqual(float(self.rpc.get(self.panel + "lblWiperVolts(0)", "caption")), vcc * 63 / 128,
                               delta=2 * CONVERTER_STEP)
        self.assertEqual(self.rpc("sim", op="state")["part"]["wipers"], [63])
        self.assertEqual(self.rpc("dialogs"), [])


class Pipe(unittest.TestCase):
    """A script that writes its requests, closes the pipe and reads the answers."""

    def serve(self, text):
        done = subprocess.run([PROGRAM, "rpc", "--simulate", "--virtual-time"], input=text, capture_output=True,
                              text=True, timeout=TIMEOUT, env=ENVIRONMENT)
        self.assertEqual(done.returncode, 0)
        self.assertIn("simulated board with KV4071 in virtual time", done.stderr)
        return [json.loads(line) for line in done.stdout.splitlines()]

    def test_what_came_before_the_end_of_input_is_finished(self):
        box = '"params":{"path":"Doco.txtFilePath"'
        lines = self.serve(f'{{"id":1,"method":"type",{box},"text":"3F"}}}}\r\n\n{{"id":2,"method":"get",{box}}}}}\n'
                           'nonsense\n{"id":3,"method":"now"}')  # a last line needs no line end
        self.assertEqual([line["id"] for line in lines], [1, 2, None, 3])
        self.assertEqual(lines[1]["result"]["text"], "3F", "keys are handled before the next request")
        self.assertEqual(lines[2]["error"]["code"], -32700)

    def test_a_closed_output_ends_it(self):
        rpc = Rpc("--simulate")
        rpc.process.stdout.close()
        rpc.send({"id": 1, "method": "now"})
        self.assertEqual(rpc.process.wait(TIMEOUT), 141)
        rpc.close()

    def test_no_number_of_requests_overflows_the_stack(self):
        vcc_on = '{"method":"select","params":{"path":"frmStartup.cboVRKSelect","index":2}},' \
                 '{"method":"click","params":{"path":"frmVRK_User1.OptVCC(0)"}}'
        action = '"method":"call","params":{"path":"initSupplyDefaults"}'
        enters = json.dumps({"id": 1, "method": "type", "params": {"path": "frmVRK_User1.txtHexDataWrt(0)",
                                                                    "text": "\n" * 20000}})
        for text, answers in [("".join(f'{{"id":{number},{action}}}\n' for number in range(6000)), 6000),
                              (f'{{"method":"at","params":{{"ms":5,"request":{{{action}}}}}}}\n' * 10000 +
                               '{"id":1,"method":"advance","params":{"ms":5}}\n', 10001),
                              (f"[{vcc_on},{enters}]\n", 1)]:
            answered = self.serve(text)
            self.assertEqual(len(answered), answers)
            self.assertNotIn("error", str(answered))

    def test_a_line_without_end_is_refused_and_the_next_one_served(self):
        long, last = self.serve('{"id":1,"method":"now","params":{"x":"' + "x" * (17 << 20) + '"}}\n{"id":2,"method":"now"}')
        self.assertEqual((long["error"]["code"], last["id"]), (-32600, 2))


class Protocol(RpcTest):
    def test_cancel_ends_the_program(self):
        self.openPanel()
        self.rpc("sim", op="unplug", board=0)
        self.rpc("answer", choices=["Cancel"])
        for method, params in [("click", {"path": self.panel + "CMDxMIT(0)"}), ("get", {"path": "i2cStatus"})]:
            with self.assertRaises(RpcFailure) as failure:
                self.rpc(method, **params)
            self.assertEqual(failure.exception.code, -32003)
        self.assertEqual(self.rpc("dialogs")[0]["answer"], "Cancel")
        self.assertEqual(self.rpc.close(), 0)

    def test_a_running_action_is_served_and_ends_when_nobody_is_left_to_stop_it(self):
        sampling = {"id": 0, "method": "click", "params": {"path": "frmMotherboardDAQ2.cmdSample"}}
        self.rpc("describe", panel="frmMotherboardDAQ2")
        self.rpc("wire", on=True)
        self.rpc.send(sampling)
        self.rpc.receive()  # its first report
        self.rpc("wire", on=False)
        self.rpc("click", path="frmMotherboardDAQ2.cmdEndSampling")
        self.assertEqual(self.rpc.receive(), {"jsonrpc": "2.0", "id": 0, "result": None})
        self.rpc.send(sampling)
        self.rpc.process.stdin.close()
        self.assertEqual(self.rpc.receive()["error"]["code"], -32003)
        self.assertEqual(self.rpc.close(), 0)

    def test_every_panel_is_described_and_read(self):
        self.openPanel()
        for panel in self.rpc("panels"):
            entries = self.rpc("describe", panel=panel["name"])
            self.assertTrue(any(entry["kind"] == "Action" for entry in entries), panel)
            controls = [entry for entry in entries if entry["kind"] != "Action"]
            names = [entry["name"] for entry in controls]
            self.assertEqual(len(names), len(set(names)), "an array in two pieces")
            paths = [f"{panel['name']}.{entry['name']}" + ("" if entry["first"] is None else f"({entry['first']})")
                     for entry in controls]
            for aspects, entry in zip(self.rpc("get", paths=paths), controls):
                self.assertEqual(aspects["kind"], entry["kind"])
        for entry in self.rpc("describe"):
            if entry["kind"] == "Value":
                self.rpc("get", path=entry["name"] + ("" if entry["first"] is None else f"({entry['last']})"))
        self.assertEqual(self.rpc("dialogs"), [])

    def test_every_shared_value_is_one_of_its_own(self):
        paths = [entry["name"] + ("" if entry["first"] is None else f"({entry['last']})")
                 for entry in self.rpc("describe") if entry["kind"] == "Value"]
        self.openPanel()
        before = self.rpc("get", paths=paths)
        for place, path in enumerate(paths):
            old = before[place]
            new = not old if isinstance(old, bool) else old + "1" if isinstance(old, str) else old + 1
            new = "01" * 64 if path == "reportBuffer" else new
            try:
                self.rpc("set", path=path, value=new)
            except RpcFailure as failure:
                self.assertIn("only be read", str(failure))
                continue
            after = self.rpc("get", paths=paths)
            self.assertEqual([paths[at] for at in range(len(paths)) if after[at] != before[at]], [path])
            self.assertEqual(after[place], new)
            self.rpc("set", path=path, value=old)

    def test_real_time_runs_by_itself(self):
        rpc = Rpc("--simulate")
        self.addCleanup(rpc.close)
        rpc("at", ms=30, request={"method": "now"})
        done = rpc.receive()
        self.assertEqual(done["method"], "done")
        self.assertGreaterEqual(done["params"]["ms"], 30)


if __name__ == "__main__":
    unittest.main()
