#pragma once

#include "platform/hid/HidHost.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vrk::sim {

enum class FaultKind { NoReply, LateReply, ErrorByte, WriteFails, Nak, StuckSda, MissedStore, Noise };

/// \throws std::invalid_argument naming the kinds ("noReply", "lateReply" ...).
FaultKind faultKindFromName(const std::string& name);

/// A fault on demand, for the next commands that can meet it.
struct Fault {
    FaultKind kind = FaultKind::NoReply;
    int times = 1;
    std::optional<int> command = std::nullopt; ///< none: any command
    int ms = 0;                                ///< LateReply: from the end of the host's write
    int value = 1;                             ///< ErrorByte
    int counts = 1;                            ///< Noise: largest error
};

/// The faults and prepared replies that wait for their command.
class Faults {
  public:
    /// \throws std::invalid_argument naming the values that are allowed.
    void add(const Fault& fault);
    void addReply(int command, const std::vector<std::uint8_t>& bytes, int times);
    void clear();

    /// From now on this command meets the faults.
    void begin(std::uint8_t command) { command_ = command; }
    /// The oldest fault of this kind that the present command meets; one of its times is used up.
    std::optional<Fault> take(FaultKind kind);
    std::optional<hid::Report> takeReply();
    /// Whether a fault of this kind waits for any command.
    bool waiting(FaultKind kind) const;

  private:
    struct Reply {
        std::uint8_t command = 0;
        hid::Report report{};
        int times = 1;
    };
    std::uint8_t command_ = 0;
    std::vector<Fault> faults_;
    std::vector<Reply> replies_;
};

/// Bytes as a report, zero-filled. \throws std::invalid_argument above 64 bytes.
hid::Report zeroFilled(const std::vector<std::uint8_t>& bytes);

} // namespace vrk::sim
