#include "panels/blocks/ShellControl.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"
#include "script/ScriptLine.h"
#include "script/ScriptStep.h"

#include <algorithm>
#include <array>
#include <vector>

/// The transfers of a row. The places of bytes in the work buffer, the three entries ahead of the data and
/// the single byte of a register included, are those that users' scripts have always run with.
namespace vrk {

using Text = ScriptFields::Text;

namespace {

/// A text that is no hexadecimal number ("SPI", an empty cell) is address 0.
int addressValue(const std::string& text) {
    if (text.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
        return 0;
    return hexToInt(text) & 0xFFFF;
}

/// Two characters as a byte; what lies behind the text's end is 0.
std::uint8_t byteAt(const std::string& text, std::size_t at) {
    return at < text.size() ? hexToByte(text.substr(at, 2)) : std::uint8_t{0};
}

/// `count` characters of the register text, two at a time: a register of two bytes gives its first alone.
std::size_t putRegister(std::vector<std::uint8_t>& buffer, std::size_t next, const std::string& reg,
                        int count) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(std::max(0, count)); at += 2, ++next)
        if (next < buffer.size())
            buffer[next] = byteAt(reg, at);
    return next;
}

std::size_t sized(int bytes) {
    return static_cast<std::size_t>(std::max(0, bytes));
}

} // namespace

void ScriptRun::transfer(Step& step) {
    ScriptState& script = uses_.script;
    const int address = addressValue(step.address);
    if (address >= 255) {
        inError(step.row, "the address " + step.address + " is none");
        uses_.host.say("Illegal I2C address Script Row " + numberToText(step.row) +
                       " Value = " + step.address);
        return;
    }
    uses_.bus.setAddress(static_cast<std::uint8_t>(address));
    const StepSizes sizes = script.table.sizes(step.row);
    script.AdrBytes = sizes.RegCount;
    script.WrTotal = sizes.WrCount == 0 ? 0 : toInt16(sizes.RegCount + sizes.WrCount);
    script.RdTotal = sizes.RdCount == 0 ? 0 : toInt16(sizes.RegCount + sizes.RdCount);
    if (script.WrTotal == 0 && script.RdTotal == 0)
        return;
    if (step.address == kGpioAddress) {
        setPorts(step);
        letEventsRun(step.generation);
        return;
    }
    transferI2c(step);
    transferSpi(step);
}

void ScriptRun::transferI2c(Step& step) {
    if (!uses_.mode.I2CBusMode)
        return;
    ScriptState& script = uses_.script;
    const int count = script.table.sizes(step.row).RdCount;
    if (script.WrTotal > 0)
        writeI2c(step);
    setActual(step, "");
    if (script.RdTotal <= 0)
        return;
    readI2c(step);
    std::string actual;
    for (std::size_t at = 0; at < sized(count); ++at)
        actual += byteToHex2(script.buffered(at));
    setActual(step, actual);
    compare(step);
}

void ScriptRun::writeI2c(Step& step) {
    constexpr std::size_t kFirstRegister = 2; // behind the count and an entry that stays 0
    constexpr std::size_t kFirstData = 3;     // fixed: a row without register byte loses its first data byte
    ScriptState& script = uses_.script;
    const StepSizes sizes = script.table.sizes(step.row);
    std::vector<std::uint8_t>& buffer = script.ByteBuffer;
    buffer.assign(sized(script.WrTotal) + 2, 0);
    buffer[0] = toByte(script.WrTotal);
    std::size_t next = putRegister(buffer, kFirstRegister, step.reg, sizes.RegCount);
    for (std::size_t at = 0; at < 2 * sized(sizes.WrCount); at += 2, ++next)
        if (next < buffer.size())
            buffer[next] = byteAt(step.write, at);
    uses_.bus.purge();
    std::vector<std::uint8_t> data;
    for (std::size_t at = 0; at < sized(script.WrTotal - script.AdrBytes); ++at)
        data.push_back(script.buffered(at + kFirstData));
    std::vector<std::uint8_t> registers;
    for (std::size_t at = 0; uses_.bus.sendsRegister() && at < sized(script.AdrBytes); ++at)
        registers.push_back(script.buffered(at + kFirstRegister));
    if (uses_.bus.writeI2C(data, registers) != ScriptBus::kGood) {
        script.table.setColour(step.row, ScriptColumn::Write, CellColour::Red);
        inError(step.row, "the write got no good answer");
    }
}

void ScriptRun::readI2c(Step& step) {
    ScriptState& script = uses_.script;
    const StepSizes sizes = script.table.sizes(step.row);
    uses_.bus.clearReadBoxes();
    std::vector<std::uint8_t>& buffer = script.ByteBuffer;
    buffer.assign(sized(sizes.RegCount + sizes.RdCount), 0);
    if (!buffer.empty())
        buffer[0] = toByte(sizes.RdCount);
    putRegister(buffer, 1, step.reg, sizes.RegCount);
    uses_.bus.purge();
    // One register byte goes out, whatever the size of the register says.
    std::array<std::uint8_t, 1> reg{};
    const bool random = uses_.bus.sendsRegister();
    if (random)
        reg[0] = script.buffered(1);
    std::vector<std::uint8_t> data(sized(sizes.RdCount));
    const int status = uses_.bus.readI2C(data, std::span<const std::uint8_t>(reg.data(), random ? 1U : 0U));
    if (status != ScriptBus::kGood)
        inError(step.row, "the read got no good answer");
    if (status == ScriptBus::kRefused)
        return; // the buffer stays as it was prepared, and is what the row compares
    // The console's boxes bound the copy: behind them the row compares what the buffer held.
    for (std::size_t k = 0; k < data.size() && reg[0] + k < ScriptBus::kReadBoxes; ++k) {
        buffer[k] = data[k];
        uses_.bus.showRead(static_cast<int>(reg[0] + k), data[k]);
    }
    if (status != ScriptBus::kGood)
        script.table.setColour(step.row, ScriptColumn::Expected, CellColour::Red);
}

void ScriptRun::transferSpi(Step& step) {
    constexpr Milliseconds kSettle{20};
    ScriptState& script = uses_.script;
    if (!uses_.mode.SPIBusMode || script.WrTotal <= 0)
        return;
    const StepSizes sizes = script.table.sizes(step.row);
    std::vector<std::string> bytes;
    for (std::size_t at = 0; at < 2 * sized(sizes.WrCount); at += 2)
        bytes.push_back(at < step.write.size() ? step.write.substr(at, 2) : "");
    uses_.bus.prepareSpi(script.WrTotal, bytes);
    letEventsRun(step.generation);
    uses_.host.hold(kSettle);
    if (!uses_.bus.exchangeSpi())
        inError(step.row, "the transfer got no good answer");
    setActual(step, "");
    if (script.RdTotal <= 0)
        return;
    std::string actual;
    for (std::size_t at = 0; at < sized(sizes.RdCount); ++at) {
        const std::string text = uses_.bus.readBox(static_cast<int>(at));
        const bool any = step.expected.size() >= 2 * at && step.expected.compare(2 * at, 2, "XX") == 0;
        actual += any ? "XX" : std::string(2 - std::min<std::size_t>(2, text.size()), '0') + text;
    }
    setActual(step, actual);
    compare(step);
}

void ScriptRun::setPorts(Step& step) {
    constexpr std::size_t kPortEntries = 11;
    ScriptState& script = uses_.script;
    uses_.fields.setText(Text::IDefault, step.write);
    for (std::size_t k = 0; 2 * k < step.write.size() && k < kPortEntries; ++k)
        uses_.bus.setPort(static_cast<int>(k), byteAt(step.write, 2 * k));
    script.GPWrText = step.write;
    uses_.fields.setText(Text::LastRead, script.GPRdText);
    setActual(step, script.GPRdText);
    compare(step);
    uses_.fields.flipSampleLamp();
}

} // namespace vrk
