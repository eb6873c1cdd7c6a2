#include "apps/vrkctl/PanelBench.h"

#include "apps/rehearsal/benchSteps.h"
#include "apps/vrkctl/CommandLine.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Terminal.h"
#include "link/modHID.h"
#include "motherboard/calibrationDamage.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <charconv>

namespace vrk {

namespace {
constexpr int kVccOn = 0;
} // namespace

CommandError usage(const std::string& text) {
    return {ExitCode::Usage, text};
}

int parseAddress(const std::string& text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size() || value < 2 || value > 0xFE ||
        value % 2 != 0)
        throw usage("--address: '" + text + "' is no even hexadecimal address from 02 to FE");
    return value;
}

PartBus busOf(const sim::PartFacts& facts) {
    using Model = sim::PartFacts::Model;
    switch (facts.model) {
    case Model::SpiRegisters:
    case Model::SpiInstructions:
        return PartBus::SPI;
    case Model::UpDown:
    case Model::PushButton:
        return PartBus::Pins;
    case Model::I2cRegisters:
    case Model::Banks:
    case Model::I2cInstructions:
        break;
    }
    return PartBus::I2C;
}

const sim::PartFacts* partOf(const Options& options, const std::string& part) {
    const std::string& wanted = part.empty() ? options.simulate : part;
    if (wanted.empty())
        return nullptr;
    std::vector<std::string> names;
    for (const std::string& name : sim::partNames())
        if (busOf(sim::partFacts(name)) != PartBus::Pins)
            names.push_back(name);
    if (const std::string* name = nameInAnyCase(wanted, names))
        return &sim::partFacts(*name);
    if (part.empty())
        (void)simulatedPart(wanted); // tells an unknown one as an error of its own option
    throw usage("'" + wanted + "' is no part on a bus" + didYouMean(wanted, names) +
                "; parts: " + listed(names));
}

std::string statusText(int status) {
    switch (status) {
    case kLinkGood:
        return "ok";
    case kLinkError:
        return "no acknowledge";
    case kLinkReadFailed:
        return "no reply";
    case kLinkWriteFailed:
        return "not sent";
    default:
        return "unknown";
    }
}

CommandError PanelBench::linkLost(const std::string& what) const {
    requireReplayed();
    const std::string why = session_.wire().lastError();
    return {ExitCode::LinkLost, "the link to the board was lost while " + what + ": " +
                                    (why.empty() ? "the board sent no reply" : why)};
}

void PanelBench::requireLink(int status, const std::string& what) const {
    if (status == kLinkReadFailed || status == kLinkWriteFailed)
        throw linkLost(what);
}

void PanelBench::done(const Outcome& outcome, const std::string& what) {
    session_.runEvents();
    if (session_.events().ended())
        throw linkLost(what);
    if (outcome.refused())
        throw CommandError(ExitCode::CheckFailed, "the panel refused " + what);
    if (outcome.kind == Outcome::Kind::Faulted)
        throw CommandError(ExitCode::CheckFailed, what + ": " + outcome.fault);
}

void PanelBench::act(const std::string& what, const std::function<void()>& action) {
    done(session_.events().deliver(action), what);
}

void PanelBench::enter(TextBox& box, const std::string& text, const std::string& what) {
    done(box.userType(text), what);
    done(box.userEnter(), what);
}

WiperPanel& PanelBench::panel() {
    return dynamic_cast<WiperPanel&>(*bench().devicePanel());
}

void PanelBench::open(PartBus bus) {
    const bool spi = bus == PartBus::SPI;
    openRow(spi ? frmStartup::kSPI : frmStartup::kI2C,
            spi ? "opening the SPI panel" : "opening the I2C panel");
    session_.workBegins();
}

void PanelBench::openRow(int row, const std::string& what) {
    session_.requireBoard(options_.board);
    done(bench().start(), "starting");
    if (options_.board > 0)
        chooseInstance();
    done(bench().frmStartup->cboVRKSelect.userSelect(row), what);
    const auto& panels = bench().panelTable();
    const auto wanted = std::find_if(panels.begin(), panels.end(),
                                     [row](const PanelRow& panel) { return panel.startRow == row; });
    if (wanted == panels.end() || !wanted->slot->visible())
        throw CommandError(ExitCode::NoBoard, "the board cannot be used: another program may have it open");
    if (const auto signalled = interrupt::requested())
        throw CommandError(*signalled, "interrupted; nothing was written");
}

void PanelBench::openConsole() {
    session_.requireBoard(options_.board);
    act("reading the board", [this] {
        bench().frmMainF340.load();
        bench().frmMainF340->cboEVBinstance.setListIndex(options_.board);
    });
    if (const auto signalled = interrupt::requested())
        throw CommandError(*signalled, "interrupted");
    session_.workBegins();
}

void PanelBench::chooseInstance() {
    // The consoles come up on the first board. The motherboard console is closed, so that it loads again, and
    // puts pins and supplies right, on the board that is meant.
    done(bench().frmStartup->cboVRKSelect.userSelect(frmStartup::kConsolesOnly), "looking for the boards");
    done(bench().frmMainF340->cboEVBinstance.userSelect(options_.board), "choosing the board");
    done(bench().frmMotherboardDAQ2.userClose(), "choosing the board");
}

void PanelBench::switchVccOn(const std::string& level) {
    DevicePanel& device = *bench().devicePanel();
    ComboBox& levels = device.CboVCC;
    bool found = level == "on";
    for (int row = 0; row < levels.rowCount() && !found; ++row)
        if ((found = sameLevel(levels.rows().at(static_cast<std::size_t>(row)).text, level)))
            done(levels.userSelect(row), "choosing VCC's level");
    if (!found)
        throw CommandError(ExitCode::CheckFailed, "the calibration file has no level " + level);
    const std::string code = bench().services().supply.VCCHex[levels.listIndex()];
    if (!isSupplyCode(code))
        throw CommandError(ExitCode::CheckFailed, "the calibration file is damaged: level '" + levels.text() +
                                                      "' has the code '" + code + "'");
    done(device.OptVCC[kVccOn].userClick(), "switching VCC on");
    if (const auto signalled = interrupt::requested())
        throw CommandError(*signalled, "interrupted; nothing was written");
}

void PanelBench::leavePowered(const std::string& why) {
    session_.leaveSupplies();
    tell("VCC stays on" + (why.empty() ? "" : ": " + why));
}

void PanelBench::tellMessages() {
    for (const std::string& message : dialogs_.takeMessages())
        tell(message);
}

void PanelBench::requireReplayed() const {
    if (session_.replay() != nullptr && session_.replay()->diverged())
        throw CommandError(ExitCode::CheckFailed, "the exchanges are not those of the recording");
}

} // namespace vrk
