#pragma once

#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/TerminalDialogs.h"

#include <nlohmann/json.hpp>

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

    /// The bus status for people: "ok", "no acknowledge" ...
    std::string statusText() const;
    /// The part answered, and where something was written the same came back.
    bool good() const { return read && (!written || written->value == read->value); }
    nlohmann::ordered_json json() const;
};

/// The start panel and the I2C panel, worked by the gestures of a user. VCC goes off when it ends, unless
/// told otherwise. A signal ends it between two steps.
class WiperBench {
  public:
    /// Checks the options and sends nothing. \throws CommandError
    WiperBench(const Options& options, const WiperOptions& wiper);

    const std::string& partName() const { return part_; }
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
    void requireReplayed() const;

  private:
    void chooseInstance();
    void choosePart();
    void switchVccOn();
    /// Runs what a gesture has queued. \throws CommandError unless the gesture was carried out.
    void done(const Outcome& outcome, const std::string& what);
    frmVRK_User1& panel() { return *session_.bench().frmVRK_User1; }
    int linkStatus() { return session_.bench().link().i2cStatus; }

    Options options_;
    WiperOptions wiper_;
    std::string part_;
    int taps_;
    TerminalDialogs dialogs_;
    Session session_;
};

/// A whole number, decimal or hexadecimal behind 0x. \throws CommandError (usage)
int parsePosition(const std::string& text);

} // namespace vrk
