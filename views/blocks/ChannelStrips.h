#pragma once

#include <QWidget>

#include <array>
#include <functional>

namespace vrk {

class ChannelBlock;
class ChannelStrip;
class PageUi;
class WiperPanel;

/// The channels in use, in their order: one laid wide, several upright beside one another. Gives the page its
/// keys for reading, writing and for going to a channel.
class ChannelStrips final : public QWidget {
  public:
    ChannelStrips(PageUi& page, WiperPanel& panel);
    ~ChannelStrips() override;
    /// The channel that has the keyboard, or had it last; 0 at first.
    int inHand() const { return inHand_; }
    /// Called when another channel has come to hand.
    std::function<void(int channel)> onInHand;
    QWidget* entry() const;

  private:
    void addKeys(PageUi& page, ChannelBlock& block);
    void showUsed(const ChannelBlock& block);
    void setInHand(int channel);

    std::array<ChannelStrip*, 4> strips_{};
    int inHand_ = 0;
};

} // namespace vrk
