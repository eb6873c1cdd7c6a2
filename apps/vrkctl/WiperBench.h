#pragma once

#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/PanelBench.h"
#include "panels/blocks/RegisterExchange.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <optional>
#include <string>

namespace vrk {

/// A position as people and parts write it.
struct Position {
    int value = 0;
    std::string hex; ///< at least two digits
};

/// What one write, read-back and measurement gave.
struct WiperResult {
    int channel = 0;
    std::optional<Position> written{};
    std::optional<Position> read{}; ///< nothing: the part did not answer
    std::optional<double> volts{};  ///< at the wiper
    int status = 0;                 ///< of the bus: 8 good, 1 no acknowledge

    /// The part answered, and where something was written the same came back.
    bool good() const { return read && (!written || written->value == read->value); }
    nlohmann::ordered_json json() const;
};

/// The wipers of one part. A part of the panel's menu, and one set up by hand, is worked through the panel,
/// as a user would; any other by its register map.
class WiperBench {
  public:
    /// Checks the options and sends nothing. \throws CommandError
    WiperBench(const Options& options, const WiperOptions& wiper);

    std::string partName() const { return facts_ != nullptr ? facts_->name : ""; }
    std::string address();
    int taps() const { return taps_; }

    /// \throws CommandError (usage) unless the part has this position.
    void requirePosition(int position, const std::string& what) const;

    /// Opens the panel on the board, chooses the part and switches VCC on. \throws CommandError
    void open();
    /// Writes, and if the part took it reads back and measures.
    WiperResult write(int position);
    WiperResult read();
    /// VCC stays on when this ends, so that the position stays, and the user is told so.
    void leavePowered();

    /// Tells what the panel has said, and why a result is not good.
    void explain(const WiperResult& result);
    /// \throws CommandError if a replay did not go as recorded.
    void requireReplayed() const { bench_.requireReplayed(); }

  private:
    /// \return false if the panel's menu has no such part.
    bool choosePart();
    bool byMap() const { return exchange_.has_value(); }
    const PartRegister& wiperRegister() const;
    /// The bus status after a write or read of the panel: what the I2C bus said, or what the panel made of
    /// the bytes that the SPI bus gave.
    int panelStatus(bool good);
    /// Makes a gesture of the panel that writes or reads the wiper, once more behind a loss of the link: the
    /// SPI panel tells a frame without a reply as a failure, where the I2C panel repeats its transfer by
    /// itself. \return true if the part took it
    bool transferred(ChannelBlock::Transfer kind, const std::function<void()>& gesture);
    /// Nothing unless the volts were measured with the position.
    std::optional<double> measured();

    Options options_;
    WiperOptions wiper_;
    const sim::PartFacts* facts_; ///< nullptr: manual set-up
    int taps_;
    PartBus bus_;
    PanelBench bench_;
    std::optional<RegisterMap> map_;
    std::optional<RegisterExchange> exchange_; ///< of a part that goes by its map
};

/// A whole number, decimal or hexadecimal behind 0x. \throws CommandError (usage)
int parsePosition(const std::string& text);

} // namespace vrk
