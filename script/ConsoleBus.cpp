#include "script/ConsoleBus.h"

#include "link/readings.h"

namespace vrk {

namespace {
/// P2.4 high keeps the supply DAC off the bus while the socket's part is spoken to.
constexpr int kSpiPort = 2;
constexpr int kDacSelect = 4;
} // namespace

int ConsoleBus::writeI2C(std::span<const std::uint8_t> data, std::span<const std::uint8_t> registers) {
    return services_.link.writeI2C(services_.link.i2cAddress, data, registers, 0);
}

int ConsoleBus::readI2C(std::span<std::uint8_t> data, std::span<const std::uint8_t> registers) {
    const int status = services_.link.readI2C(services_.link.i2cAddress, data, registers, 0);
    good_ = status == kGood;
    return status;
}

void ConsoleBus::showRead(int box, std::uint8_t value) {
    TextBox& shown = services_.console().txtReadVal[box];
    shown.setText(byteToHex2(value));
    markReading(shown, good_);
}

void ConsoleBus::prepareSpi(int count, std::span<const std::string> bytes) {
    frmMainF340& console = services_.console();
    retries_ = services_.link.retries();
    console.chkGPvalueP2[kDacSelect].setValue(1);
    console.cmdWrGPData_Click(kSpiPort);
    console.cmdRdGPData_Click(kSpiPort);
    console.chkSPIread.setValue(1);
    console.txtNumToWrite.setText(numberToText(count));
    int box = 0;
    for (const std::string& byte : bytes)
        console.txtWriteVal[box++].setText(byte);
}

bool ConsoleBus::exchangeSpi() {
    services_.console().cmdSPIWrite_Click();
    // Goes back to 0 with a reply alone; a failed write and a lost reply leave their codes. Behind a Retry it
    // is the discovery's replies that have put it back: the transfer itself is not repeated.
    return services_.console().replied() && services_.link.hidLinkCode == 0 &&
           services_.link.retries() == retries_;
}

} // namespace vrk
