#include "apps/vrkctl/WiperBench.h"

#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/entries.h"
#include "platform/files/RegisterMapFile.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vrk {

namespace {
using Model = sim::PartFacts::Model;

/// What manual set-up can be told; more taps need two data bytes, which no part of manual set-up has.
constexpr std::array kManualTaps = {16, 32, 64, 100, 128, 256};
constexpr int kManualChannels = 4;

bool goesByInstructions(const sim::PartFacts* facts) {
    return facts != nullptr && (facts->model == Model::I2cInstructions ||
                                facts->model == Model::SpiInstructions || facts->model == Model::Banks);
}

int tapsOf(const sim::PartFacts* facts, const WiperOptions& wiper) {
    if (!wiper.taps)
        return facts != nullptr ? facts->positions : 128;
    if (goesByInstructions(facts))
        throw usage("--taps: " + std::string(facts->name) + " has " + std::to_string(facts->positions) +
                    " and no other number");
    if (std::find(kManualTaps.begin(), kManualTaps.end(), *wiper.taps) == kManualTaps.end())
        throw usage("--taps: " + std::to_string(*wiper.taps) + " is none of 16, 32, 64, 100, 128, 256");
    return *wiper.taps;
}

void checkChannel(const sim::PartFacts* facts, int channel) {
    const int channels = facts != nullptr ? facts->pots : kManualChannels;
    if (channel >= 0 && channel < channels)
        return;
    throw usage("there is no channel " + std::to_string(channel) +
                (channels == 1 ? "; " + std::string(facts->name) + " has channel 0 alone"
                               : "; the channels are 0 to " + std::to_string(channels - 1)));
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
      facts_(partOf(options, wiper.part)),
      taps_(tapsOf(facts_, wiper)),
      bus_(facts_ != nullptr ? busOf(*facts_) : PartBus::I2C),
      bench_(options) {
    checkChannel(facts_, wiper_.channel);
    if (wiper_.address && facts_ != nullptr && !facts_->address)
        throw usage("--address: " + partName() + " has none");
    if (wiper_.address)
        parseAddress(*wiper_.address);
    if (wiper_.vcc)
        requireLevel(*wiper_.vcc);
}

void WiperBench::leavePowered() {
    if (wiper_.powered())
        bench_.leavePowered("a volatile position would be lost with it");
}

std::string WiperBench::address() {
    if (byMap())
        return wiper_.address.value_or(map_->address ? hexText(*map_->address, 2) : "");
    const auto* open = dynamic_cast<const WiperPanel*>(bench_.bench().devicePanel());
    return open == nullptr ? wiper_.address.value_or("") : open->txtDeviceAdr.text();
}

void WiperBench::requirePosition(int position, const std::string& what) const {
    if (position < 0 || position >= taps_)
        throw usage(what + ": " + std::to_string(position) + " is no position of " + std::to_string(taps_) +
                    " taps; they are 0 to " + std::to_string(taps_ - 1));
}

void WiperBench::open() {
    bench_.open(bus_);
    if (!choosePart()) {
        map_ = shippedRegisterMap(partName());
        if (!map_)
            throw CommandError(ExitCode::File,
                               "the register map of " + partName() + " is not where the programs are");
        const std::optional<int> address =
            wiper_.address ? std::optional(parseAddress(*wiper_.address)) : std::nullopt;
        exchange_.emplace(bench_.bench().services(), *map_, address);
        if (wiper_.channel > 0) // the panel measures the channels that it shows
            bench_.done(bench_.panel().OptChans[2].userClick(), "choosing the channels");
    }
    if (wiper_.powered())
        bench_.switchVccOn(wiper_.vcc.value_or("on"));
    if (byMap())
        bench_.act("preparing the bus", [this] { exchange_->prepare(); });
}

bool WiperBench::choosePart() {
    WiperPanel& panel = bench_.panel();
    bool chosen = facts_ == nullptr;
    for (MenuEntry* entry : panel.partEntries())
        if (facts_ != nullptr && entry->caption() == facts_->name) {
            bench_.done(entry->userClick(), "choosing the part");
            chosen = true;
        }
    if (!chosen)
        return false;
    if (wiper_.taps)
        for (auto& taps : panel.OptTaps)
            if (taps->caption() == std::to_string(taps_))
                bench_.done(taps->userClick(), "choosing the taps");
    if (facts_ == nullptr && wiper_.channel > 0)
        bench_.done(panel.OptChans[wiper_.channel == 1 ? 1 : 2].userClick(), "choosing the channels");
    if (wiper_.address)
        bench_.enter(panel.txtDeviceAdr, *wiper_.address, "typing the address");
    return true;
}

const PartRegister& WiperBench::wiperRegister() const {
    const std::string number = std::to_string(wiper_.channel);
    const PartRegister* counter = map_->named("WCR" + number);
    return counter != nullptr ? *counter : *map_->named("WR" + number);
}

int WiperBench::panelStatus(bool good) {
    if (bus_ == PartBus::I2C)
        return bench_.bench().link().i2cStatus;
    const int code = bench_.bench().link().hidLinkCode;
    if (code == 0)
        return good ? kLinkGood : kLinkError;
    return code == kLinkWriteFailed ? kLinkWriteFailed : kLinkReadFailed;
}

bool WiperBench::transferred(ChannelBlock::Transfer kind, const std::function<void()>& gesture) {
    bool good = false;
    bool unanswered = false;
    const frmMainF340& console = *bench_.bench().frmMainF340;
    const Subscription transfers =
        bench_.panel().observeTransfers([&](const ChannelBlock::Transferred& transfer) {
            if (transfer.kind != kind)
                return;
            good = transfer.good;
            unanswered = !good && bus_ == PartBus::SPI && !console.replied();
        });
    do {
        unanswered = false;
        gesture();
    } while (unanswered);
    return good;
}

std::optional<double> WiperBench::measured() {
    const Reading& volts = bench_.panel().lblWiperVolts[wiper_.channel];
    const auto& worth = volts.freshness();
    if (!worth || worth->state != Freshness::State::Fresh)
        return std::nullopt; // the conversion got no reply of its own
    return leadingNumber(volts.caption());
}

WiperResult WiperBench::write(int value) {
    WiperResult result{.channel = wiper_.channel, .written = position(value)};
    if (byMap()) {
        bench_.act("writing the wiper",
                   [&] { result.status = exchange_->write(wiperRegister(), value).status; });
        bench_.requireLink(result.status, "writing the wiper");
    } else {
        const bool good = transferred(ChannelBlock::Transfer::Write, [&] {
            bench_.enter(bench_.panel().txtHexDataWrt[wiper_.channel], hexText(value), "writing the wiper");
        });
        result.status = panelStatus(good);
    }
    if (result.status != kLinkGood)
        return result;
    const WiperResult back = read();
    result.read = back.read;
    result.volts = back.volts;
    result.status = back.status;
    return result;
}

WiperResult WiperBench::read() {
    WiperResult result{.channel = wiper_.channel};
    WiperPanel& panel = bench_.panel();
    if (byMap()) {
        bench_.act("reading the wiper", [&] {
            const RegisterExchange::Result read = exchange_->read(wiperRegister());
            result.status = read.status;
            if (read.value)
                result.read = position(*read.value);
        });
        bench_.requireLink(result.status, "reading the wiper");
        if (!result.read)
            return result;
        bench_.done(panel.cmdSampleWiper[wiper_.channel].userClick(), "measuring the wiper");
        result.volts = measured();
        return result;
    }
    (void)transferred(ChannelBlock::Transfer::Read,
                      [&] { bench_.done(panel.cmdI2Read[wiper_.channel].userClick(), "reading the wiper"); });
    const Reading& shown = panel.lblPotRead[wiper_.channel];
    const auto& freshness = shown.freshness();
    result.status = panelStatus(freshness && freshness->state == Freshness::State::Fresh);
    if (result.status != kLinkGood)
        return result;
    result.read = position(decimalInt(shown.caption()));
    result.volts = measured();
    return result;
}

void WiperBench::explain(const WiperResult& result) {
    bench_.tellMessages();
    const std::string where = address();
    const bool addressed = !where.empty() && where != "NA" && (bus_ == PartBus::I2C || where != "0");
    if (!result.read)
        tell("channel " + std::to_string(result.channel) + ": the part" +
             (addressed ? " at address " + where : "") +
             (wiper_.powered() ? " does not answer" : " does not answer without VCC") +
             " (bus: " + statusText(result.status) + ")");
    else if (!result.good())
        tell("channel " + std::to_string(result.channel) + ": wrote " +
             std::to_string(result.written->value) + " but read " + std::to_string(result.read->value) +
             " back");
}

} // namespace vrk
