#include "apps/vrkctl/LinkWait.h"

#include "apps/rehearsal/benchSteps.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"
#include "link/reportLayout.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
/// Between two looks at the system's list. A board that is listed but silent is tried at this pace at most.
constexpr Milliseconds kLookAgain{250};
/// A request that is repeated and gets no reply again is back within its time-out of 6 s. What comes later is
/// a loss of its own, also where the request of the one before was never sent again.
constexpr Milliseconds kSameLoss{10'000};

std::string seconds(Milliseconds duration) {
    return formatNumber(static_cast<double>(duration.count()) / 1000.0, "#0.0") + " s";
}
} // namespace

LinkWait::LinkWait(const Uses& uses)
    : uses_(uses),
      replies_(uses_.wire.observe([this](const hid::WireEvent& event) { look(event); })),
      // Behind the bench's own observer, which has shown the supplies as they are now.
      readings_(uses_.bench.link().observeBoardRead([this] { boardRead(); })) {}

bool LinkWait::waitForBoard() {
    const Clock& clock = uses_.events.clock();
    if (lostAt_ && clock.now() - triedAt_ > kSameLoss)
        lostAt_.reset();
    if (!lostAt_) {
        lostAt_ = clock.now();
        lost_ = command_;
        const frmMotherboardDAQ2* supplies = uses_.bench.frmMotherboardDAQ2.loadedPanel();
        vccWasOn_ = vccWasOn_ || (supplies != nullptr && supplies->OptVCC[0].value());
        const std::string why = uses_.wire.lastError();
        if (uses_.limit > Milliseconds{0})
            tell("the link to the board is lost (" + (why.empty() ? "no reply" : why) + "); waiting up to " +
                 seconds(uses_.limit) + " for it");
    }
    while (clock.now() - *lostAt_ < uses_.limit) {
        uses_.events.clock().sleep(std::min(kLookAgain, uses_.limit - (clock.now() - *lostAt_)));
        uses_.events.letEventsRun();
        if (interrupt::requested())
            return false;
        if (static_cast<int>(boardsOf(uses_.wire).size()) > uses_.board) {
            triedAt_ = clock.now();
            return true;
        }
    }
    return false;
}

void LinkWait::look(const hid::WireEvent& event) {
    if (event.direction == hid::WireEvent::Direction::Out) {
        command_ = event.report[report::kCommandByte];
        return;
    }
    // A board may answer all but what it is wanted for: then the discovery's replies are no end of the loss.
    if (!lostAt_ || command_ != lost_)
        return;
    tell("the link is back after " + seconds(uses_.events.clock().now() - *lostAt_));
    lostAt_.reset();
}

void LinkWait::boardRead() {
    if (uses_.board > 0 && uses_.bench.link().retries() > 0 && uses_.bench.link().instance() == 0) {
        // A discovery chooses the first board; what is under way belongs to another one.
        uses_.bench.frmMainF340->cboEVBinstance.setListIndex(uses_.board);
        return;
    }
    // A run-in test compares the part's position behind a loss, and switches on where that fits.
    if (const UPDN_Runin* runIn = uses_.bench.UPDN_Runin.loadedPanel(); runIn != nullptr && runIn->running())
        return;
    const frmMotherboardDAQ2* supplies = uses_.bench.frmMotherboardDAQ2.loadedPanel();
    if (!std::exchange(vccWasOn_, false) || supplies == nullptr || supplies->OptVCC[0].value())
        return;
    tell("the board was without power: VCC is switched on again, the part has lost its volatile values");
    switchVccOn(uses_.bench);
}

} // namespace vrk
