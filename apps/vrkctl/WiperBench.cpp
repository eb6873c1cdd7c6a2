#include "apps/vrkctl/WiperBench.h"

#include "apps/vrkctl/CommandLine.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Terminal.h"
#include "link/reportLayout.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vrk {

namespace {
constexpr int kI2cRow = 2;      ///< of the start panel
constexpr int kConsolesRow = 1; ///< loads the consoles and stays
constexpr int kVccOn = 0;
/// Rows of the panel's supply list.
constexpr std::array kLevels = {"2.7", "3.0", "3.3", "3.5", "4.0", "4.5", "5.0", "Min", "Mid", "Max"};

struct PartFacts {
    const char* name; ///< caption of its entry in the device menu
    int taps;
    int channels;
};
constexpr std::array<PartFacts, 4> kParts = {
    {{"KV4071", 128, 1}, {"KV4074", 128, 4}, {"KV4078", 256, 4}, {"KV6021", 128, 1}}};
/// What manual set-up can be told; more taps need two data bytes, which no part of manual set-up has.
constexpr std::array kManualTaps = {16, 32, 64, 100, 128, 256};
constexpr int kManualChannels = 4;

const PartFacts* factsOf(const std::string& part) {
    const auto found =
        std::find_if(kParts.begin(), kParts.end(), [&](const auto& facts) { return part == facts.name; });
    return found == kParts.end() ? nullptr : &*found;
}

CommandError usage(const std::string& text) {
    return {ExitCode::Usage, text};
}

/// The part that the options name, by itself or through the simulated socket.
std::string partOf(const Options& options, const WiperOptions& wiper) {
    const bool simulated = wiper.part.empty();
    const std::string part = !simulated                 ? wiper.part
                             : options.simulate.empty() ? std::string()
                                                        : simulatedPart(options.simulate);
    std::vector<std::string> names;
    for (const PartFacts& facts : kParts)
        names.emplace_back(facts.name);
    if (part.empty())
        return part;
    if (const std::string* name = nameInAnyCase(part, names))
        return *name;
    throw usage("'" + part + "' is no part of the I2C panel" + didYouMean(part, names) +
                "; parts: " + listed(names));
}

int tapsOf(const std::string& part, const WiperOptions& wiper) {
    const PartFacts* facts = factsOf(part);
    if (!wiper.taps)
        return facts != nullptr ? facts->taps : 128;
    if (std::find(kManualTaps.begin(), kManualTaps.end(), *wiper.taps) == kManualTaps.end())
        throw usage("--taps: " + std::to_string(*wiper.taps) + " is none of 16, 32, 64, 100, 128, 256");
    return *wiper.taps;
}

void checkChannel(const std::string& part, int channel) {
    const PartFacts* facts = factsOf(part);
    const int channels = facts != nullptr ? facts->channels : kManualChannels;
    if (channel >= 0 && channel < channels)
        return;
    throw usage("there is no channel " + std::to_string(channel) +
                (channels == 1 ? "; " + part + " has channel 0 alone"
                               : "; the channels are 0 to " + std::to_string(channels - 1)));
}

void checkAddress(const std::string& text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size() || value < 2 || value > 0xFE ||
        value % 2 != 0)
        throw usage("--address: '" + text + "' is no even hexadecimal address from 02 to FE");
}

/// "5" and "5.0" are one level, "min" and "Min" too.
bool sameLevel(const std::string& one, const std::string& other) {
    if (isNumeric(one) && isNumeric(other))
        return leadingNumber(one) == leadingNumber(other);
    return upperCase(one) == upperCase(other);
}

void checkVcc(const std::string& vcc) {
    std::string all;
    for (const char* level : kLevels) {
        if (sameLevel(vcc, level))
            return;
        all += std::string(level) + ", ";
    }
    if (vcc != "on" && vcc != "off")
        throw usage("--vcc: '" + vcc + "' is no level; levels: " + all + "off");
}

nlohmann::ordered_json json(const std::optional<Position>& position) {
    if (!position)
        return nullptr;
    return {{"value", position->value}, {"hex", position->hex}};
}

Position position(int value) {
    return {value, hexText(value, 2)};
}
} // namespace

nlohmann::ordered_json WiperResult::json() const {
    nlohmann::ordered_json all = {{"channel", channel}};
    if (written)
        all["written"] = vrk::json(written);
    all["read"] = vrk::json(read);
    all["volts"] = volts ? nlohmann::ordered_json(*volts) : nlohmann::ordered_json();
    all["status"] = status;
    return all;
}

std::string WiperResult::statusText() const {
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

int parsePosition(const std::string& text) {
    const bool hex = startsWith(text, "0x") || startsWith(text, "0X");
    const char* first = text.data() + (hex ? 2 : 0);
    const char* last = text.data() + text.size();
    int value = -1;
    const auto [end, error] = std::from_chars(first, last, value, hex ? 16 : 10);
    if (error != std::errc() || end != last || value < 0)
        throw usage("'" + text + "' is no position: write 63 or 0x3F");
    return value;
}

WiperBench::WiperBench(const Options& options, const WiperOptions& wiper)
    : options_(options),
      wiper_(wiper),
      part_(partOf(options, wiper)),
      taps_(tapsOf(part_, wiper)),
      session_(options, dialogs_, DefaultTime::VirtualIfPossible) {
    checkChannel(part_, wiper_.channel);
    if (wiper_.address)
        checkAddress(*wiper_.address);
    if (wiper_.vcc)
        checkVcc(*wiper_.vcc);
}

void WiperBench::leavePowered() {
    if (!wiper_.powered())
        return;
    session_.leaveSupplies();
    tell("VCC stays on: a volatile position would be lost with it");
}

std::string WiperBench::address() {
    const auto* open = session_.bench().frmVRK_User1.loadedPanel();
    return open == nullptr ? wiper_.address.value_or("") : open->txtDeviceAdr.text();
}

void WiperBench::requirePosition(int position, const std::string& what) const {
    if (position < 0 || position >= taps_)
        throw usage(what + ": " + std::to_string(position) + " is no position of " + std::to_string(taps_) +
                    " taps; they are 0 to " + std::to_string(taps_ - 1));
}

void WiperBench::done(const Outcome& outcome, const std::string& what) {
    session_.runEvents();
    if (session_.events().ended()) {
        requireReplayed();
        const std::string why = session_.wire().lastError();
        throw CommandError(ExitCode::LinkLost, "the link to the board was lost while " + what + ": " +
                                                   (why.empty() ? "the board sent no reply" : why));
    }
    if (outcome.refused())
        throw CommandError(ExitCode::CheckFailed, "the panel refused " + what);
    if (outcome.kind == Outcome::Kind::Faulted)
        throw CommandError(ExitCode::CheckFailed, what + ": " + outcome.fault);
}

void WiperBench::open() {
    session_.requireBoard(options_.board);
    Bench& bench = session_.bench();
    done(bench.start(), "starting");
    if (options_.board > 0)
        chooseInstance();
    done(bench.frmStartup->cboVRKSelect.userSelect(kI2cRow), "opening the I2C panel");
    if (!bench.frmVRK_User1.visible())
        throw CommandError(ExitCode::NoBoard, "the board cannot be used: another program may have it open");
    choosePart();
    if (wiper_.powered())
        switchVccOn();
    if (const auto signalled = interrupt::requested())
        throw CommandError(*signalled, "interrupted; nothing was written");
}

void WiperBench::chooseInstance() {
    // The consoles come up on the first board. The motherboard console is closed, so that it loads again, and
    // puts pins and supplies right, on the board that is meant.
    Bench& bench = session_.bench();
    done(bench.frmStartup->cboVRKSelect.userSelect(kConsolesRow), "looking for the boards");
    done(bench.frmMainF340->cboEVBinstance.userSelect(options_.board), "choosing the board");
    done(bench.frmMotherboardDAQ2.userClose(), "choosing the board");
}

void WiperBench::choosePart() {
    frmVRK_User1& i2c = panel();
    for (Control* control : i2c.controls())
        if (control->kind() == Control::Kind::MenuEntry && !part_.empty() && control->caption() == part_)
            done(static_cast<MenuEntry*>(control)->userClick(), "choosing the part");
    if (wiper_.taps)
        for (auto& taps : i2c.OptTaps)
            if (taps->caption() == std::to_string(taps_))
                done(taps->userClick(), "choosing the taps");
    if (part_.empty() && wiper_.channel > 0)
        done(i2c.OptChans[wiper_.channel == 1 ? 1 : 2].userClick(), "choosing the channels");
    if (wiper_.address) {
        done(i2c.txtDeviceAdr.userType(*wiper_.address), "typing the address");
        done(i2c.txtDeviceAdr.userEnter(), "typing the address");
    }
}

void WiperBench::switchVccOn() {
    ComboBox& levels = panel().CboVCC;
    const std::string level = wiper_.vcc.value_or("on");
    bool found = level == "on";
    for (int row = 0; row < levels.rowCount() && !found; ++row)
        if ((found = sameLevel(levels.rows().at(static_cast<std::size_t>(row)).text, level)))
            done(levels.userSelect(row), "choosing VCC's level");
    if (!found)
        throw CommandError(ExitCode::CheckFailed, "the calibration file has no level " + level);
    done(panel().OptVCC[kVccOn].userClick(), "switching VCC on");
}

WiperResult WiperBench::write(int value) {
    frmVRK_User1& i2c = panel();
    TextBox& box = i2c.txtHexDataWrt[wiper_.channel];
    done(box.userType(hexText(value)), "typing the position");
    done(box.userEnter(), "writing the wiper");
    WiperResult result{.channel = wiper_.channel, .written = position(value), .status = linkStatus()};
    if (result.status != kLinkGood)
        return result;
    const WiperResult back = read();
    result.read = back.read;
    result.volts = back.volts;
    result.status = back.status;
    return result;
}

WiperResult WiperBench::read() {
    frmVRK_User1& i2c = panel();
    done(i2c.cmdI2Read[wiper_.channel].userClick(), "reading the wiper");
    WiperResult result{.channel = wiper_.channel, .status = linkStatus()};
    if (result.status != kLinkGood)
        return result;
    result.read = position(decimalInt(i2c.lblPotRead[wiper_.channel].caption()));
    result.volts = leadingNumber(i2c.lblWiperVolts[wiper_.channel].caption());
    return result;
}

void WiperBench::explain(const WiperResult& result) {
    for (const std::string& message : dialogs_.takeMessages())
        tell(message);
    if (!result.read)
        tell("channel " + std::to_string(result.channel) + ": the part at address " + address() +
             (wiper_.powered() ? " does not answer" : " does not answer without VCC") +
             " (bus: " + result.statusText() + ")");
    else if (!result.good())
        tell("channel " + std::to_string(result.channel) + ": wrote " +
             std::to_string(result.written->value) + " but read " + std::to_string(result.read->value) +
             " back");
}

void WiperBench::requireReplayed() const {
    if (session_.replay() != nullptr && session_.replay()->diverged())
        throw CommandError(ExitCode::CheckFailed, "the exchanges are not those of the recording");
}

} // namespace vrk
