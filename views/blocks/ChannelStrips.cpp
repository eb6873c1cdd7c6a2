#include "views/blocks/ChannelStrips.h"

#include "panels/WiperPanel.h"
#include "platform/qt/theme.h"
#include "views/blocks/ChannelStrip.h"
#include "views/workspace/Page.h"

#include <QApplication>
#include <QBoxLayout>

#include <utility>

namespace vrk {

using namespace qt;

ChannelStrips::ChannelStrips(PageUi& page, WiperPanel& panel) {
    ChannelBlock& block = panel;
    setObjectName("strips");
    static_assert(std::tuple_size_v<decltype(strips_)> == ChannelBlock::kChannels);
    std::vector<Item> items;
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel) {
        auto*& strip = strips_.at(static_cast<std::size_t>(channel));
        strip = new ChannelStrip(page, panel, channel);
        items.emplace_back(strip);
    }
    setLayout(row(items));
    for (Frame* frame : {&block.SSFrame3[1], &block.SSFrame4[1], &block.SSFrame4[2], &block.SSFrame4[3],
                         &block.SSFrame3[2], &block.SSFrame3[3], &block.SSFrame3[0], &block.SSFrame4[0]})
        page.ui().watch(*frame, [this, &block] { showUsed(block); });
    addKeys(page, block);
    connect(qApp, &QApplication::focusChanged, this, [this] {
        for (int channel = 0; channel < ChannelBlock::kChannels; ++channel)
            if (strips_.at(static_cast<std::size_t>(channel))->hasKeyboard())
                setInHand(channel);
    });
}

ChannelStrips::~ChannelStrips() {
    // A strip that goes with the keyboard on it moves the focus, when the strips before it are gone already.
    disconnect(qApp, nullptr, this, nullptr);
}

void ChannelStrips::setInHand(int channel) {
    if (std::exchange(inHand_, channel) != channel && onInHand)
        onInHand(channel);
}

void ChannelStrips::showUsed(const ChannelBlock& block) {
    int used = 0;
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel) {
        const bool shown = block.SSFrame3[channel].visible() || block.SSFrame4[channel].visible();
        setShown(*strips_.at(static_cast<std::size_t>(channel)), shown);
        used += shown ? 1 : 0;
        if (!shown && inHand_ == channel)
            setInHand(0);
    }
    for (ChannelStrip* strip : strips_)
        if (strip->wide() != (used <= 1))
            strip->setWide(used <= 1);
}

QWidget* ChannelStrips::entry() const {
    return strips_.front()->entry();
}

void ChannelStrips::addKeys(PageUi& page, ChannelBlock& block) {
    page.onRead("Read the channel that has the keyboard",
                [this, &block] { (void)block.cmdI2Read[inHand_].userClick(); });
    page.onWrite("Write the channel that has the keyboard",
                 [this, &block] { (void)block.CMDxMIT[inHand_].userClick(); });
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel)
        page.addKey(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + channel)),
                    QString("Go to channel %1").arg(channel),
                    [strip = strips_.at(static_cast<std::size_t>(channel))] { strip->focusEntry(); });
}

} // namespace vrk
