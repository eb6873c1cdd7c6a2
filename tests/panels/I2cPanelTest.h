#pragma once

#include "tests/support/TestBench.h"

#include <string>
#include <vector>

namespace vrk {

/// The I2C panel with a part in the socket.
class I2cPanelTest : public TestBench {
  protected:
    using Entry = MenuEntry frmVRK_User1::*;

    /// Another part in the socket, chosen on the panel too.
    void choose(const std::string& name, Entry entry) {
        bus.socket(name);
        ASSERT_TRUE((i2c().*entry).userClick().done());
        wire.clear();
    }
    /// Has the product table filled with these fields of one part, up to "Data Size", chosen and returned
    /// from; returns what was said. Fields: part, channels, taps, address, control register and its byte,
    /// general register, four that the panel leaves alone, size of address and data.
    std::vector<std::string> chooseRow(const std::string& fields, int row = 1, int rows = 1) {
        std::string file =
            "Description,Part,Channels,Taps,Adr,ACR Adr,ACR,GP,a,b,c,d,Adr Size,Size,Notes\r\n";
        for (int copy = 1; copy <= rows; ++copy)
            file += "row " + decimalText(copy) + "," + fields + ",\r\n";
        return chooseFrom(i2c().mnu_I2cList, folder.write("parts.csv", file).string(), row);
    }
    /// Values that went to a port's latch, without repetitions.
    std::vector<int> latch(const char* address, int mask) {
        std::vector<int> values;
        for (const std::string& report : sent(report::Command::SfrAccess, 5))
            if (report.substr(0, 11) == std::string("01 12 00 ") + address) {
                const int value = hexToInt(report.substr(12)) & mask;
                if (values.empty() || values.back() != value)
                    values.push_back(value);
            }
        return values;
    }
    static Freshness::State stateOf(const Control& reading) { return reading.freshness()->state; }
    /// The I2C transfers that went out since the last call, each without the bytes behind its end.
    std::vector<std::string> transfers() {
        std::vector<std::string> cut = sent(report::Command::I2cTransfer, 64);
        for (std::string& report : cut) {
            const auto byteAt = [&report](int i) {
                return hexToInt(report.substr(3 * static_cast<std::size_t>(i), 2));
            };
            const int data = byteAt(2) % 2 == 0 ? byteAt(3) : 0;
            report.resize(static_cast<std::size_t>(3 * (5 + byteAt(4) + data) - 1));
        }
        return cut;
    }
    /// Volts of one converter step as the panel shows them: twice those at the pin.
    static constexpr double kStep = 2 * 3.3 / 1023;

    static constexpr const char* kInvalidAddress = "Invalid I2C address. Press Retry to return to GUI and "
                                                   "enter valid address or Cancel to close GUI. [Retry]";
    static constexpr const char* kWriteError =
        "Write VRK Error, Check Device Address, VCC & AVDD Power and I2C Connections  [OK]";
    static constexpr const char* kReadError =
        "Read VRK Error, Check Device Addreess, VCC & AVDD Power and I2C Connections  [OK]";
};

} // namespace vrk
