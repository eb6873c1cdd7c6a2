#pragma once

#include "panels/blocks/BenchServices.h"
#include "script/ScriptHost.h"

namespace vrk {

/// A script's bus through the controller console: its switches hold for scripts too, and its boxes show what
/// they moved.
class ConsoleBus final : public ScriptBus {
  public:
    explicit ConsoleBus(BenchServices& services) : services_(services) {}

    void setAddress(std::uint8_t address) override { services_.link.i2cAddress = address; }
    bool sendsRegister() const override { return services_.console().chkRandom.checked(); }
    void purge() override { services_.link.purgeInputReports(); }
    int writeI2C(std::span<const std::uint8_t> data, std::span<const std::uint8_t> registers) override;
    int readI2C(std::span<std::uint8_t> data, std::span<const std::uint8_t> registers) override;
    void clearReadBoxes() override { services_.console().cmdClearReadTextBoxes_Click(); }
    void showRead(int box, std::uint8_t value) override;
    void prepareSpi(int count, std::span<const std::string> bytes) override;
    bool exchangeSpi() override;
    std::string readBox(int box) override { return services_.console().txtReadVal[box].text(); }
    void setPort(int index, std::uint8_t value) override { services_.ports.PBuf[index] = value; }

  private:
    BenchServices& services_;
    bool good_ = false;    ///< the last I2C read
    unsigned retries_ = 0; ///< as the SPI transfer began
};

} // namespace vrk
