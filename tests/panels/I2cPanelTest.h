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
    /// Types over the whole text, then Enter.
    void enter(TextBox& box, const std::string& text) {
        type(box, text);
        (void)box.userEnter();
    }
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
