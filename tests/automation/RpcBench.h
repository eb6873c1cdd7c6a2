#pragma once

#include "automation/RpcServer.h"
#include "link/reportLayout.h"
#include "platform/clipboard/Clipboard.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

namespace vrk::test {

/// A panel with one control of each kind, and actions that do what panels' actions do: ask, fail, wait, end.
class ProbePanel final : public Panel {
  public:
    explicit ProbePanel(PanelContext& context) : Panel(context, "frmProbe", "Probe") {
        for (auto& option : optMode)
            option->join(modes);
        chkHidden.setContainer(fraHidden);
        fraHidden.setVisible(false);
        cmdDisabled.setEnabled(false);
        txtHex.setMaxLength(4);
        txtHex.onKeyPress([this](int key) {
            if (key == kEnterKey) {
                events().letEventsRun();
                ++entered;
            }
            return hexKeyFilter(key);
        });
        cboRate.setRows({{"100", 240}, {"400", 60}});
        lstRows.setRows({{"0", 0}, {"1", 0}, {"2", 0}});
        sldWiper.setRange(1, 128);
        sldWiper.onMouseUp([this] { heard += "up "; });
        sldWiper.onScroll([this] { heard += "scroll "; });
        txtHex.onLostFocus([this] { heard += "left "; });
        grdTable.setSize(3, 2);
        wireClick(cmdLong, &ProbePanel::cmdLong_Click);
        wireClick(cmdAbort, &ProbePanel::cmdAbort_Click);
        wireClick(cmdAsk, &ProbePanel::cmdAsk_Click);
        wireClick(cmdFault, &ProbePanel::cmdFault_Click);
        wireClick(cmdEnd, &ProbePanel::cmdEnd_Click);
        wireClick(cmdNest, &ProbePanel::cmdNest_Click);
        action("twice", &ProbePanel::twice);
    }

    void cmdLong_Click() {
        aborted = false;
        while (!aborted) {
            context().clock().sleep(Milliseconds{10});
            events().letEventsRun();
        }
    }
    void cmdAbort_Click() { aborted = true; }
    void cmdAsk_Click() {
        FileRequest request;
        request.filter = "Text|*.txt";
        do
            lblAnswer.setCaption(
                choiceName(context().dialogs.show({"Retry?", "Link", {Choice::Retry, Choice::Cancel}})));
        while (lblAnswer.caption() == "Retry");
        lblFile.setCaption(context().dialogs.chooseFile(request).value_or("none"));
    }
    void cmdFault_Click() { throw subscriptOutOfRange(); }
    void cmdEnd_Click() { events().endProgram(); }
    void cmdNest_Click() {
        deepest = std::max(deepest, ++depth);
        ++clicks;
        events().letEventsRun();
        --depth;
    }
    int twice(int value) { return value * 2; }

    CheckBox chkBox{*this, "chkBox"};
    OptionGroup modes;
    ControlArray<OptionButton> optMode{*this, "optMode", 0, 1};
    TextBox txtHex{*this, "txtHex"};
    ControlArray<TextBox> txtRow{*this, "txtRow", 1, 3};
    Button cmdLong{*this, "cmdLong"}, cmdAbort{*this, "cmdAbort"}, cmdAsk{*this, "cmdAsk"};
    Button cmdFault{*this, "cmdFault"}, cmdEnd{*this, "cmdEnd"}, cmdDisabled{*this, "cmdDisabled"};
    Button cmdNest{*this, "cmdNest"};
    Frame fraHidden{*this, "fraHidden"};
    CheckBox chkHidden{*this, "chkHidden"};
    ComboBox cboRate{*this, "cboRate"};
    ListBox lstRows{*this, "lstRows"};
    Slider sldWiper{*this, "sldWiper"};
    ProgressBar prgDone{*this, "prgDone"};
    Label lblAnswer{*this, "lblAnswer"}, lblFile{*this, "lblFile"};
    Lamp shpGood{*this, "shpGood"};
    Grid grdTable{*this, "grdTable"};
    TextLog rtxLog{*this, "rtxLog"};
    Timer tmrBlink{*this, "tmrBlink"};
    Picture picBoard{*this, "picBoard"};
    std::string heard; ///< gestures that have handlers of their own
    bool aborted = false;
    int entered = 0;
    int depth = 0, deepest = 0, clicks = 0;
    Reading lblVolts{*this, "lblVolts"};
};

/// A bench of that one panel, served in process.
struct RpcBench {
    VirtualClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    PanelContext context{events, dialogs, clipboard};
    PanelSlot<ProbePanel> frmProbe{context, "frmProbe", "Probe",
                                   [this] { return std::make_shared<ProbePanel>(context); }};
    std::vector<PanelSlotBase*> panels{&frmProbe};
    std::vector<std::int64_t> bytes = std::vector<std::int64_t>(3);
    int tapCount = 128, probeTaps = 256;
    SharedValues values;
    std::vector<Panel::NamedAction> actions{{"initAll", [this](const ActionArgs& args) -> ActionValue {
                                                 return bytes[0] = wholeArgument(args, 0);
                                             }}};
    sim::SimulatedBus bus{clock};
    hid::WireRecorder recorder{bus, clock, report::kVendorId, report::kProductId};
    std::vector<std::string> logged;
    BenchTarget target{.events = events,
                       .dialogs = dialogs,
                       .clipboard = clipboard,
                       .panels = panels,
                       .values = values,
                       .moduleActions = actions,
                       .results = context.results,
                       .virtualClock = &clock,
                       .simulated = &bus,
                       .wire = &recorder,
                       .log = [this](const std::string& line) { logged.push_back(line); }};
    std::deque<Json> sent;
    RpcServer server{target, [this](const std::string& line) { sent.push_back(Json::parse(line)); }};

    RpcBench() {
        events.setFaultHandler([this](const std::string& text) { context.say(text, "Fault"); });
        values.add({"PBuf", 0, 2, [this](int index) -> ActionValue { return bytes.at(index); },
                    [this](int index, const ActionValue& value) {
                        bytes.at(index) = toByte(wholeArgument({value}, 0));
                    }});
        values.scalar("TapCount", tapCount);
        values.scalar("TapCount", probeTaps, "frmProbe");
    }

    Json next() {
        if (sent.empty())
            return "nothing was sent";
        Json message = sent.front();
        sent.pop_front();
        return message;
    }
    Json ask(const std::string& method, const Json& params = Json::object()) {
        server.handle(Json{{"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", params}}.dump());
        events.runDue();
        return next();
    }
    /// The result; the whole answer, so that a test shows it, if there is none.
    Json result(const std::string& method, const Json& params = Json::object()) {
        const Json answer = ask(method, params);
        return answer.contains("result") ? answer["result"] : answer;
    }
    int error(const std::string& method, const Json& params = Json::object()) {
        const Json answer = ask(method, params);
        return answer.contains("error") ? answer["error"]["code"].get<int>() : 0;
    }
    Json aspect(const std::string& path, const char* name) {
        return result("get", {{"path", path}}).value(name, Json());
    }
};

} // namespace vrk::test
