#pragma once

#include "platform/runtime/Clock.h"
#include "sim/SimulatedBus.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace vrk::sim {

inline std::vector<std::uint8_t> bytes(const std::string& hex) {
    std::vector<std::uint8_t> out;
    std::istringstream in(hex);
    for (unsigned value = 0; in >> std::hex >> value;) {
        out.push_back(static_cast<std::uint8_t>(value));
    }
    return out;
}

/// The first `count` bytes of a report, "01 00 5F".
inline std::string text(const hid::Report& report, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        char two[8];
        std::snprintf(two, sizeof two, i == 0 ? "%02X" : " %02X", report[i]);
        out += two;
    }
    return out;
}

/// A host at the wire: one handle on board 0, bytes as hexadecimal text. The first byte, 01, is left out of
/// commands.
class Bench : public testing::Test {
  protected:
    explicit Bench(bool zeroLatency = true) : bus(clock, {.zeroLatency = zeroLatency, .seed = 7}) {
        handle = bus.open(bus.list().at(0).path);
    }

    bool send(const std::string& command) { return bus.write(handle, zeroFilled(bytes("01 " + command))); }

    /// The reply's first bytes, as many as `count`; empty when none comes within 6 s.
    std::string reply(std::size_t count = 64) {
        hid::Report report{};
        const auto result = bus.read(handle, report, Milliseconds{6000});
        return result == hid::ReadResult::Arrived ? text(report, count) : "";
    }

    std::string ask(const std::string& command, std::size_t count) {
        EXPECT_TRUE(send(command));
        return reply(count);
    }

    /// VCC on, U5 at 5.0 V, part at its base address and not shut down.
    void powerPart() {
        send("12 00 A6 F8");
        send("12 00 A0 00"); // U5 selected
        send("09 00 00 00 00 03 50 C2 C0");
        send("09 00 00 00 00 03 50 C0 72");
        send("12 00 A0 30");
        send("12 00 80 02");
        send("12 00 90 04");
    }
    void cycleVcc() {
        send("12 00 A0 10");
        send("12 00 A0 30");
    }

    int convert() {
        const auto in = bytes(ask("11 00 00", 4));
        return in.size() == 4 ? in[2] * 256 + in[3] : -1;
    }
    /// Selects a channel against ground, drops one conversion, takes the next.
    int count(const std::string& channel) {
        send("10 00 01");
        send("0C 00 " + channel + " 1F");
        convert();
        return convert();
    }

    VirtualClock clock;
    SimulatedBus bus;
    hid::Handle handle = hid::kNoHandle;
};

} // namespace vrk::sim
