#include "sim/PinParts.h"

namespace vrk::sim {

namespace {
constexpr Pin kInc{1, 1}, kUpDown{1, 2};
constexpr Pin kUp{1, 1}, kDown{1, 2}, kStore{0, 7}, kMute{0, 2};

// A button held for a second goes on by itself, four steps a second.
constexpr Milliseconds kHeldAfter{1000};
constexpr Milliseconds kRepeat{250};
} // namespace

void UpDownPart::onPins(const PinLevels& before, const PinLevels& now) {
    if (rose(before, now, select_)) {
        if (isHigh(now, kInc)) {
            storeWiper();
        }
    } else if (!isHigh(now, select_) && !isHigh(before, select_) && fell(before, now, kInc)) {
        stepWiper(isHigh(before, kUpDown)); // the level that stood when the edge came
    }
}

void PushButtonPart::onPowerUp() {
    PinPart::onPowerUp();
    hold_.reset();
}

void PushButtonPart::onPins(const PinLevels& before, const PinLevels& now) {
    const bool up = !isHigh(now, kUp);
    const bool down = !isHigh(now, kDown);
    if (up == down) {
        hold_.reset();
    } else if (fell(before, now, up ? kUp : kDown)) {
        stepWiper(up);
        hold_ = Hold{up, this->now() + kHeldAfter + kRepeat};
    }
    if (fell(before, now, kStore)) {
        storeWiper();
    }
}

void PushButtonPart::onTime() {
    for (; hold_ && hold_->nextStep <= now(); hold_->nextStep += kRepeat) {
        stepWiper(hold_->up);
    }
}

double PushButtonPart::wiperRatio(int channel) const {
    const bool shutDown = !isHigh(pins(), kUp) && !isHigh(pins(), kDown);
    return shutDown || !isHigh(pins(), kMute) ? 0.0 : PinPart::wiperRatio(channel);
}

} // namespace vrk::sim
