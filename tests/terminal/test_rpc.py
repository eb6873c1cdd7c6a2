import json
import signal
import subprocess
import unittest

from vrkctl import ENVIRONMENT, PROGRAM, TIMEOUT, Rpc, RpcFailure, RpcTest

CONVERTER_STEP = 2 * 3.3 / 1023  # volts; the board halves its inputs


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

    def test_the_same_from_a_pipe_in_one_batch(self):
        panel = self.panel
        batch = [{"id": 1, "method": "select", "params": {"path": "frmStartup.cboVRKSelect", "index": 2}},
                 {"id": 2, "method": "click", "params": {"path": panel + "OptVCC(0)"}},
                 {"id": 3, "method": "type", "params": {"path": panel + "txtHexDataWrt(0)", "text": "10\n"}},
                 {"id": 4, "method": "click", "params": {"path": panel + "cmdI2Read(0)"}},
                 {"id": 5, "method": "get", "params": {"path": panel + "lblPotRead(0)"}}]
        done = subprocess.run([PROGRAM, "rpc", "--simulate", "--virtual-time"], input=json.dumps(batch),
                              capture_output=True, text=True, timeout=TIMEOUT, env=ENVIRONMENT)
        answers = json.loads(done.stdout)
        self.assertEqual([answer["id"] for answer in answers], [1, 2, 3, 4, 5])
        self.assertEqual(answers[4]["result"]["caption"], "16")
        self.assertEqual(done.returncode, 0)
        self.assertIn("simulated board with KV4071 in virtual time", done.stderr)


class Link(RpcTest):
    # fault, answers, texts of the boxes, bus status, least time in ms
    CASES = [
        ({"kind": "lateReply", "ms": 5999}, [], [], 8, 5999),
        ({"kind": "lateReply", "ms": 6000}, ["Retry"], ["ReadFile error."], 8, 6000),
        ({"kind": "noReply"}, ["Retry"], ["ReadFile error."], 8, 6000),
        ({"kind": "writeFails"}, ["Retry"], ["WriteFile error."], 8, 0),
        ({"kind": "nak"}, ["Retry"], ["Invalid I2C address.", "Write VRK Error"], 1, 0),
    ]

    def test_dialogs_of_a_failing_link(self):
        self.openPanel()
        for fault, answers, boxes, status, least in self.CASES:
            with self.subTest(fault=fault):
                self.rpc("sim", op="fault", command=6, **fault)
                self.rpc("answer", choices=answers)
                before = self.rpc("now")["ms"]
                self.rpc("click", path=self.panel + "CMDxMIT(0)")
                self.assertGreaterEqual(self.rpc("now")["ms"] - before, least)
                shown = self.rpc("dialogs")
                self.assertEqual(len(shown), len(boxes), shown)
                for box, text in zip(shown, boxes):
                    self.assertIn(text, box["text"])
                self.assertEqual(self.rpc("get", path="i2cStatus"), status)

    def test_a_request_to_come_reaches_an_action_that_stands(self):
        self.openPanel()
        self.rpc("at", ms=400, request={"method": "close", "params": {"panel": "ProductExec"}})
        self.rpc("click", path=self.panel + "mnu_I2cList")  # stands until the table is left
        self.assertEqual([box["text"] for box in self.rpc("dialogs") if box["kind"] == "message"],
                         ["No Device was selected from the list"])
        self.assertTrue(self.rpc("get", path="ProductReturned"))

    def test_a_stale_report_is_no_reply(self):
        self.openPanel()
        self.rpc("sim", op="stale", hex="01 01 FF")
        self.rpc("click", path=self.panel + "cmdI2Read(0)")
        self.assertEqual(self.rpc.get(self.panel + "lblPotReadhex(0)", "caption"), "40")
        self.assertEqual(self.rpc("dialogs"), [])

    def test_a_board_comes_back_under_the_dialog(self):
        self.openPanel()
        self.rpc("sim", op="unplug", board=0)
        # It lost its power, so the part has no VCC and does not answer either.
        self.rpc("answer", choices=[{"choice": "Retry", "sim": {"op": "plug", "board": 0}}, "Retry"])
        self.rpc("click", path=self.panel + "CMDxMIT(0)")
        self.assertEqual([box["answer"] for box in self.rpc("dialogs")], ["Retry", "Retry", "OK"])
        self.assertTrue(self.rpc("get", path="BoardConnected"))

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

    def test_the_second_of_two_boards(self):
        self.rpc("sim", op="boards", count=2)
        self.rpc("select", path="frmStartup.cboVRKSelect", index=2)
        self.assertEqual(self.rpc.get("frmMainF340.cboEVBinstance", "rows"), ["0", "1"])
        self.rpc("select", path="frmMainF340.cboEVBinstance", index=1)
        self.rpc("wire", on=True)
        self.rpc.notes.clear()
        self.rpc("click", path="frmMainF340.chkLED(0)")
        self.assertEqual({note["params"]["board"] for note in self.rpc.notes}, {1})
        self.assertEqual([self.rpc("sim", op="state", board=board)["leds"]["green"] for board in (0, 1)], [False, True])


class Protocol(RpcTest):
    def test_bad_messages_leave_the_bench_as_it_was(self):
        self.openPanel()
        self.rpc("wire", on=True)
        cases = [("{nonsense", -32700), ({"id": 1, "method": "press"}, -32601),
                 ({"id": 1, "method": "click", "params": {"path": "frmNone.cmdRead"}}, -32602),
                 ({"id": 1, "method": "get", "params": {"path": "PBuf(11)"}}, -32602),
                 ({"id": 1, "method": "click", "params": {"path": self.panel + "OptVM(0)"}}, -32001),
                 ({"id": 1, "method": "set", "params": {"path": "PBuf(0)", "value": 256}}, -32002)]
        for message, code in cases:
            self.rpc.send(message)
            answer = self.rpc.receive()
            self.assertEqual(answer.get("error", {}).get("code"), code, (message, answer))
        self.assertEqual(self.rpc.notes, [])

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

    def test_a_signal_ends_it(self):
        self.rpc("now")
        self.rpc.process.send_signal(signal.SIGINT)
        self.assertEqual(self.rpc.process.wait(TIMEOUT), 130)
        self.rpc.close()

    def test_real_time_runs_by_itself(self):
        rpc = Rpc("--simulate")
        self.addCleanup(rpc.close)
        rpc("at", ms=30, request={"method": "now"})
        done = rpc.receive()
        self.assertEqual(done["method"], "done")
        self.assertGreaterEqual(done["params"]["ms"], 30)


if __name__ == "__main__":
    unittest.main()
