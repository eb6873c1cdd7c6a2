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

struct Step {
    const char* command;
    const char* reply = ""; ///< as many bytes as are given; none: the command gives no reply
};

/// A host at the wire: one handle on board 0, bytes as hexadecimal text. The first byte, 01, is left out of
/// commands.
class BoardTest : public testing::Test {
  protected:
    explicit BoardTest(bool zeroLatency = true) : bus(clock, {.zeroLatency = zeroLatency, .seed = 7}) {
        handle = bus.open(bus.list().at(0).path);
    }

    bool send(const std::string& command) { return bus.write(handle, zeroFilled(bytes("01 " + command))); }

    /// The reply's first bytes, as many as `count`; empty when none comes within 6 s.
    std::string reply(std::size_t count) {
        hid::Report report{};
        std::string out;
        if (bus.read(handle, report, Milliseconds{6000}) == hid::ReadResult::Arrived) {
            for (std::size_t i = 0; i < count; ++i) {
                char two[8];
                std::snprintf(two, sizeof two, i == 0 ? "%02X" : " %02X", report[i]);
                out += two;
            }
        }
        return out;
    }

    std::string ask(const std::string& command, std::size_t count) {
        EXPECT_TRUE(send(command));
        return reply(count);
    }
    void run(const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            if (*step.reply == '\0') {
                EXPECT_TRUE(send(step.command));
            } else {
                EXPECT_EQ(ask(step.command, bytes(step.reply).size()), step.reply) << step.command;
            }
        }
    }

    /// VCC on, U5 at 5.0 V, part at its base address and not shut down.
    void powerPart() {
        for (const char* command : {"12 00 A6 F8", "12 00 A0 00", // U5 selected
                                    "09 00 00 00 00 03 50 C2 C0", "09 00 00 00 00 03 50 C0 72", "12 00 A0 30",
                                    "12 00 80 02", "12 00 90 04"}) {
            send(command);
        }
    }
    void switchVcc(bool on) { send(on ? "12 00 A0 30" : "12 00 A0 10"); }
    void replug() {
        bus.unplug(0);
        bus.plug(0);
        handle = bus.open(bus.list().at(0).path);
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
