/// The sweep of a wiper: writes, reads and measures one position after the other.

#include "panels/blocks/ChannelBlock.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <cstdlib>

namespace vrk {

bool ChannelBlock::sweepPosition(int channel, int position) {
    showWriteValue(channel, position);
    moveControls(channel, position + 1);
    bool written = false;
    bool good = true;
    const Subscription outcome = observeTransfers([&written, &good, channel](const Transferred& transfer) {
        if (transfer.channel != channel)
            return;
        written = written || transfer.kind == Transfer::Write;
        good = good && transfer.good;
    });
    CMDxMIT_Click(channel);
    if (!written)
        return false; // VCC has gone meanwhile, which the user has been told
    if (good && !ChkAutoRead[channel].checked())
        cmdI2Read_Click(channel);
    return good && lblPotRead[channel].freshness()->state == Freshness::State::Fresh;
}

void ChannelBlock::sweepWiper(int channel, int from, int to, int step) {
    const int highest = wipers.TapCount;
    if (sweeping_)
        throw Fault("A sweep of this panel is under way.");
    if (step < 1 || from < 0 || to < 0 || from > highest || to > highest)
        throw Fault("A sweep goes from 0 to " + decimalText(highest) +
                    " at the most, in steps of at least 1.");
    if (!mayExchange())
        return; // told once, with what was typed left pending
    dropPending();
    if (!mayLoop(std::abs(to - from) / step + 2)) // the last position may come on top of the steps
        return;
    bool stopped = false;
    Activity activity(host().context().activities, "Sweep of channel " + decimalText(channel),
                      [&stopped] { stopped = true; });
    const DisabledWhile busy = channelBusy(channel);
    const DisabledWhile entries(
        {&Slider1[channel], &List1[channel], &txtHexDataWrt[channel], &txtDECDataWrt[channel]});
    sweeping_ = true;
    const OnScopeExit ended([this] { sweeping_ = false; });
    bool answered = true;
    const Subscription outcome = observeTransfers([&answered, channel](const Transferred& transfer) {
        if (transfer.channel == channel)
            answered = transfer.good;
    });
    const int length = std::abs(to - from);
    step = std::min(step, length + 1); // a longer one goes straight to the end as well
    const int count = (length + step - 1) / step + 1;
    for (int done = 0; done < count && !stopped; ++done) {
        const int distance = std::min(done * step, length); // the last position is always taken
        const int position = from <= to ? from + distance : from - distance;
        if (!sweepPosition(channel, position)) {
            host().tell(false, "Sweep ended at position " + decimalText(position),
                        answered ? lblPotRead[channel].freshness()->cause : "the transfer failed",
                        &lblPotRead[channel]);
            return;
        }
        activity.progress(done + 1, count);
        host().pump();
    }
    host().tell(!stopped, stopped ? "Sweep aborted" : "Sweep done",
                "channel " + decimalText(channel) + ", " + decimalText(activity.done()) + " positions",
                &lblPotRead[channel]);
}

} // namespace vrk
