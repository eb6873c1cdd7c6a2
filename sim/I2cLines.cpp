#include "sim/I2cLines.h"

#include "sim/Part.h"

#include <utility>

namespace vrk::sim {

void I2cLines::reset(bool sda, bool scl) {
    *this = {};
    sda_ = sda;
    scl_ = scl;
}

void I2cLines::follow(bool sda, bool scl, Part& part) {
    const bool sdaBefore = std::exchange(sda_, sda);
    const bool sclBefore = std::exchange(scl_, scl);
    if (sclBefore && scl && sdaBefore != sda) {
        reset(sda, scl);
        if (sda) {
            part.i2cStop();
        } else {
            phase_ = Phase::Receiving;
            part.i2cStart();
        }
    } else if (!sclBefore && scl) {
        sampled_ = sda;
    } else if (sclBefore && !scl && sampled_) {
        clockFell(*std::exchange(sampled_, std::nullopt), part);
    }
}

void I2cLines::clockFell(bool bit, Part& part) {
    switch (phase_) {
    case Phase::Receiving:
        receive(bit, part);
        break;
    case Phase::Acknowledging:
        pullsLow_ = false;
        if (part.takesSteps()) {
            phase_ = Phase::Stepping;
        } else if (part.i2cSends()) {
            sendByte(part);
        } else {
            phase_ = Phase::Receiving;
        }
        break;
    case Phase::Sending:
        sendBit();
        break;
    case Phase::Acknowledged:
        part.i2cAcknowledged(!bit);
        if (bit) {
            phase_ = Phase::Idle;
        } else {
            sendByte(part);
        }
        break;
    case Phase::Stepping:
        part.step(bit);
        break;
    case Phase::Idle:
        break;
    }
}

void I2cLines::receive(bool bit, Part& part) {
    byte_ = static_cast<std::uint8_t>((byte_ << 1) | (bit ? 1 : 0));
    if (++bits_ < 8) {
        return;
    }
    bits_ = 0;
    pullsLow_ = part.i2cWrite(byte_);
    phase_ = pullsLow_ ? Phase::Acknowledging : Phase::Idle;
}

void I2cLines::sendByte(Part& part) {
    byte_ = part.i2cRead();
    bits_ = 0;
    phase_ = Phase::Sending;
    pullsLow_ = (byte_ & 0x80) == 0;
}

void I2cLines::sendBit() {
    ++bits_;
    pullsLow_ = bits_ < 8 && ((byte_ >> (7 - bits_)) & 1) == 0;
    if (bits_ == 8) {
        phase_ = Phase::Acknowledged;
    }
}

} // namespace vrk::sim
