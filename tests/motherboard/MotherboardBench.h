#pragma once

#include "tests/support/TestBench.h"

#include <string>

namespace vrk {

/// Short forms that the tests of this folder share.
class MotherboardBench : public TestBench {
  protected:
    const SharedValues::Value& value(const char* name) { return *bench.sharedValues().find(name); }
    int byteOf(const char* name, int index) {
        return static_cast<int>(std::get<std::int64_t>(value(name).get(index)));
    }
    double number(const char* name) { return std::get<double>(value(name).get(kNoIndex)); }
    void assign(const char* name, int index, std::int64_t number) { value(name).set(index, number); }
    /// PBuf(0..5) in hexadecimal.
    std::string image() {
        std::string text;
        for (int reg = 0; reg < 6; ++reg)
            text += (reg > 0 ? " " : "") + byteToHex2(static_cast<std::uint8_t>(byteOf("PBuf", reg)));
        return text;
    }
    /// The buttons of the lock that are available, of thirteen.
    int unlocked() {
        frmMotherboardDAQ2& b = board();
        int count = 0;
        for (const Button* button :
             {&b.cmdWrtPipe1, &b.cmdReadPipe1, &b.cmdSPIOWrite2, &b.cmdSPIOWrite3, &b.cmdSPIWrite,
              &b.cmdSPIWrite2, &b.cmdSPRRdReg, &b.cmdSPIReadData, &b.CMDI2CWrite, &b.cmdI2CRead,
              &b.cmdSetMode, &b.cmdSample, &b.cmdSampleVCC})
            count += button->enabled() ? 1 : 0;
        return count;
    }
};

} // namespace vrk
