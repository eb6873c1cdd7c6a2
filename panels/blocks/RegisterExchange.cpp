#include "panels/blocks/RegisterExchange.h"

#include "panels/blocks/PortLines.h"
#include "panels/blocks/spiRow.h"
#include "platform/runtime/text.h"

#include <array>
#include <utility>

namespace vrk {

namespace {
constexpr int kFirstDataRegister = 0x10; ///< of a part with banks: 10, and 4 for each bank, and the pot
constexpr int kBankPots = 4;
constexpr int kBankSelectPin = 9; ///< P1.1: such a part hears the bus while it is high
constexpr Milliseconds kReadPinSettles{20};
constexpr int kQuiet = 1; ///< a part that does not answer is told by the status alone

std::uint8_t low(int value) {
    return static_cast<std::uint8_t>(value & 0xFF);
}
} // namespace

bool RegisterExchange::Result::good() const {
    return status == kLinkGood;
}

RegisterExchange::RegisterExchange(BenchServices& services, const RegisterMap& map,
                                   std::optional<int> address)
    : services_(services), map_(map), address_(address ? address : map.address) {}

RegisterExchange::Bytes RegisterExchange::split(const PartRegister& reg, int value) {
    return reg.width > 8 ? Bytes{low(value >> 8), low(value)} : Bytes{low(value)};
}

void RegisterExchange::prepare() {
    if (map_.bus != PartBus::I2C)
        return;
    // A part with instructions answers behind the instruction, without a second start.
    const bool instructions = map_.protocol == PartProtocol::Quad || map_.protocol == PartProtocol::TenBit;
    frmMainF340& console = services_.console();
    console.chk2WireRead.setValue(instructions ? 1 : 0);
    console.setI2Coptions(0);
    if (map_.protocol != PartProtocol::Banks)
        return;
    services_.board().chkPData[kBankSelectPin].setValue(1);
    services_.board().cmdWrtPipe1_Click();
}

RegisterExchange::Result RegisterExchange::read(const PartRegister& reg) {
    return map_.bus == PartBus::SPI ? spi(Way::Read, reg, 0) : i2c(Way::Read, reg, 0);
}

RegisterExchange::Result RegisterExchange::write(const PartRegister& reg, int value) {
    return map_.bus == PartBus::SPI ? spi(Way::Write, reg, value) : i2c(Way::Write, reg, value);
}

RegisterExchange::Result RegisterExchange::i2c(Way way, const PartRegister& reg, int value) {
    // A board that was away on the way has lost the raised pin, and its part the bank: a step that went well
    // behind Retry may have met another register. All of it is done again then.
    for (;;) {
        const unsigned before = services_.link.retries();
        const Result result = i2cOnce(way, reg, value);
        if (services_.link.retries() == before)
            return result;
    }
}

RegisterExchange::Result RegisterExchange::i2cOnce(Way way, const PartRegister& reg, int value) {
    const int bytes = reg.width > 8 ? 2 : 1;
    switch (map_.protocol) {
    case PartProtocol::Banks:
        return inBank(way, reg, value);
    case PartProtocol::Registers:
        return way == Way::Read ? readI2c(low(reg.address), bytes)
                                : writeI2c(low(reg.address), split(reg, value));
    case PartProtocol::Quad:
    case PartProtocol::TenBit:
        break;
    case PartProtocol::None:
        return {};
    }
    if (way == Way::Write)
        return writeI2c(low(reg.writeCommand), split(reg, value));
    if (map_.protocol == PartProtocol::TenBit)
        return readI2c(low(reg.readCommand), bytes);
    const PortLines port(services_);
    RaisedA0 raised(port);
    services_.console().context().clock().sleep(kReadPinSettles);
    const Result result = readI2c(low(reg.readCommand), bytes);
    raised.lower();
    return result;
}

RegisterExchange::Result RegisterExchange::inBank(Way way, const PartRegister& reg, int value) {
    const auto plain = [this, way, value](int number) {
        return way == Way::Read ? readI2c(low(number), 1) : writeI2c(low(number), {low(value)});
    };
    const PartRegister* status = map_.named("STATUS");
    if (status == nullptr || &reg == status)
        return plain(reg.address);
    const bool data = reg.address >= kFirstDataRegister;
    const int place = data ? reg.address - kFirstDataRegister : reg.address;
    const int wanted = data ? 1 + 2 * (place / kBankPots) : 0;
    const Result before = readI2c(low(status->address), 1);
    if (!before.good())
        return before;
    const auto select = [this, status](int bank) { return writeI2c(low(status->address), {low(bank)}); };
    if (const Result chosen = *before.value == wanted ? before : select(wanted); !chosen.good())
        return chosen;
    Result result = plain(place % kBankPots);
    if (*before.value != wanted)
        if (const Result back = select(*before.value); !back.good() && result.good())
            result = {back.status, {}}; // the part is left in another bank: no success
    return result;
}

RegisterExchange::Result RegisterExchange::readI2c(std::uint8_t lead, int count) {
    Bytes data(static_cast<std::size_t>(count));
    services_.link.purgeInputReports();
    const std::array<std::uint8_t, 1> registers{lead};
    services_.link.i2cAddress = low(address_.value_or(0));
    const int status = services_.link.readI2C(services_.link.i2cAddress, data, registers, kQuiet);
    if (status != kLinkGood)
        return {status, {}};
    int value = 0;
    for (const std::uint8_t byte : data)
        value = value * 256 + byte;
    return {status, value};
}

RegisterExchange::Result RegisterExchange::writeI2c(std::uint8_t lead, const Bytes& data) {
    services_.link.purgeInputReports();
    const std::array<std::uint8_t, 1> registers{lead};
    services_.link.i2cAddress = low(address_.value_or(0));
    return {services_.link.writeI2C(services_.link.i2cAddress, data, registers, kQuiet), {}};
}

RegisterExchange::Result RegisterExchange::spi(Way way, const PartRegister& reg, int value) {
    Bytes frame;
    const bool tenBitRead = way == Way::Read && map_.protocol == PartProtocol::TenBit;
    if (address_)
        frame.push_back(low(*address_ + (tenBitRead ? 1 : 0))); // bit 0 is such a part's read mark
    frame.push_back(low(way == Way::Read ? reg.readCommand : reg.writeCommand));
    Bytes data = split(reg, value);
    if (way == Way::Read)
        // Without an ID the answer comes in the second place of a second frame of two bytes.
        data.assign(address_ ? data.size() : 3, 0);
    const std::size_t answer = frame.size();
    frame.insert(frame.end(), data.begin(), data.end());
    const auto [status, reply] = spiFrame(frame);
    if (status != kLinkGood || way == Way::Write)
        return {status, {}};
    int read = 0;
    for (std::size_t place = address_ ? answer : reply.size() - 1; place < reply.size(); ++place)
        read = read * 256 + reply[place];
    return {status, read & reg.most()};
}

std::pair<int, RegisterExchange::Bytes> RegisterExchange::spiFrame(const Bytes& frame) {
    frmMotherboardDAQ2& board = services_.board();
    const auto own = [&board, &frame] {
        for (std::size_t place = 0; place < frame.size(); ++place)
            if (!spiReadRow(board).holds(static_cast<int>(place) + 1, byteToHex2(frame[place])))
                return false;
        return true;
    };
    // As on I2C an exchange that got no reply of its own is repeated once the link is back: what stands in
    // the fields is the discovery's then, or that of a register that was set anew behind it.
    do {
        board.txtSPIWrQty3.setText(decimalText(static_cast<long long>(frame.size())));
        for (std::size_t place = 0; place < frame.size(); ++place)
            board.txtSPIWrite3Data[static_cast<int>(place) + 1].setText(byteToHex2(frame[place]));
        board.cmdSPIOWrite3_Click();
    } while ((!services_.console().replied() || !own()) && services_.link.hidLinkCode == 0);
    if (services_.link.hidLinkCode == 4)
        return {kLinkWriteFailed, {}};
    if (services_.link.hidLinkCode != 0)
        return {kLinkReadFailed, {}};
    Bytes reply;
    for (int place = 0; place < static_cast<int>(frame.size()); ++place)
        reply.push_back(hexToByte(board.txtSPIORead3[place].text()));
    // A part sends back what it was told, one place later; nobody there leaves the line low.
    return {reply.at(1) == 0 ? kLinkError : kLinkGood, reply};
}

} // namespace vrk
