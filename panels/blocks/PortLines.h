#pragma once

#include "panels/blocks/BenchServices.h"

#include <cstdint>
#include <optional>

namespace vrk {

/// Port P0 of the controller, on which the bus lines and the lowest address pins stand, and its crossbar.
class PortLines {
  public:
    explicit PortLines(BenchServices& services) : services_(services) {}

    /// The port as it stands; nothing if the board did not say, so that no pin may be driven by it.
    std::optional<std::uint8_t> read() const;
    /// Writes the port as the console does. \return false if the board may not have taken it
    bool set(std::uint8_t value) const;
    /// One report and nothing else: no trace, no test, no reply. \param address of a special function
    /// register. \return false if the board did not take it
    bool send(std::uint8_t address, std::uint8_t value) const;

  private:
    BenchServices& services_;
};

/// While it exists the part's A0 (P0.6) is high: a quad part has no read mark in its address, so that the
/// slave byte of a read fits it only then. Goes low on every way out.
class RaisedA0 {
  public:
    explicit RaisedA0(const PortLines& port);
    ~RaisedA0();
    RaisedA0(const RaisedA0&) = delete;
    RaisedA0& operator=(const RaisedA0&) = delete;
    void lower();

  private:
    const PortLines& port_;
    std::optional<std::uint8_t> raised_;
};

} // namespace vrk
