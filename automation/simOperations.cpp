#include "automation/simOperations.h"

#include "automation/parameters.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace vrk {

namespace {
using Operation = std::function<Json()>;
using Prepare = Operation (*)(sim::SimulatedBus&, const Json&);

constexpr int kMostTimes = 1'000'000;

int whole(const Json& params, const char* name, int least, int most) {
    return static_cast<int>(wholeParameter(params, name, least, most));
}

int whole(const Json& params, const char* name, int least, int most, int ifAbsent) {
    return static_cast<int>(wholeParameter(params, name, least, most, ifAbsent));
}

int boardOf(const Json& params) {
    return whole(params, "board", 0, sim::SimulatedBus::kMostBoards - 1, 0);
}

/// A byte as a number, or as hexadecimal text, the way the panels show it.
std::optional<int> optionalByte(const Json& params, const char* name) {
    const Json* value = findParameter(params, name);
    if (value == nullptr)
        return std::nullopt;
    if (value->is_string()) {
        const auto bytes = bytesParameter(params, name, 1);
        if (bytes.empty())
            throw invalidParams(std::string("parameter '") + name + "' is empty");
        return bytes.front();
    }
    return whole(params, name, 0, 255);
}

int byteOf(const Json& params, const char* name) {
    const auto value = optionalByte(params, name);
    if (!value)
        throw invalidParams(std::string("parameter '") + name + "' is missing");
    return *value;
}

Operation plain(std::function<void()> act) {
    return [act = std::move(act)]() -> Json {
        act();
        return nullptr;
    };
}

Json partState(const sim::PartState& part) {
    return {{"name", part.name},
            {"wipers", part.wipers},
            {"nonvolatile", part.nonvolatile},
            {"registers", part.registers},
            {"nonvolatileWrites", part.nonvolatileWrites}};
}

Json boardState(const sim::BoardState& state) {
    return {{"vcc", state.vcc},
            {"vminus", state.vminus},
            {"code", state.code},
            {"sfr", state.sfr},
            {"pins", state.pins},
            {"leds", {{"green", state.leds.green}, {"red", state.leds.red}}},
            {"plugged", state.plugged},
            {"handles", state.handles},
            {"part", state.part ? partState(*state.part) : Json()},
            {"part2", state.part2 ? partState(*state.part2) : Json()}};
}

Operation parts(sim::SimulatedBus&, const Json&) {
    return [] { return Json(sim::SimulatedBus::partNames()); };
}

Operation socketPart(sim::SimulatedBus& bus, const Json& params) {
    const auto part = optionalText(params, "part");
    const auto names = sim::SimulatedBus::partNames();
    if (part && std::find(names.begin(), names.end(), *part) == names.end())
        throw invalidParams("unknown part '" + *part + "'; the operation 'parts' lists them");
    return plain([&bus, part, address = optionalByte(params, "address"), board = boardOf(params)] {
        bus.socket(part, address, board);
    });
}

Operation boards(sim::SimulatedBus& bus, const Json& params) {
    return plain(
        [&bus, count = whole(params, "count", 0, sim::SimulatedBus::kMostBoards)] { bus.setBoards(count); });
}

Operation foreign(sim::SimulatedBus& bus, const Json& params) {
    return plain([&bus, count = whole(params, "count", 0, sim::SimulatedBus::kMostForeign)] {
        bus.setForeign(count);
    });
}

Operation unplug(sim::SimulatedBus& bus, const Json& params) {
    return plain([&bus, board = boardOf(params)] { bus.unplug(board); });
}

Operation plug(sim::SimulatedBus& bus, const Json& params) {
    return plain([&bus, board = boardOf(params)] { bus.plug(board); });
}

Operation fault(sim::SimulatedBus& bus, const Json& params) {
    sim::Fault fault;
    fault.kind = sim::faultKindFromName(textParameter(params, "kind"));
    fault.times = whole(params, "times", 1, kMostTimes, 1);
    if (findParameter(params, "command") != nullptr)
        fault.command = whole(params, "command", 0, 19);
    if (fault.kind == sim::FaultKind::LateReply)
        fault.ms = whole(params, "ms", 0, kMostTimes);
    if (fault.kind == sim::FaultKind::ErrorByte)
        fault.value = whole(params, "value", 0, 255, fault.value);
    if (fault.kind == sim::FaultKind::Noise)
        fault.counts = whole(params, "counts", 0, 1023, fault.counts);
    return plain([&bus, fault] { bus.fault(fault); });
}

Operation stale(sim::SimulatedBus& bus, const Json& params) {
    constexpr int kMostStale = 1000;
    return plain([&bus, bytes = bytesParameter(params, "hex", hid::kReportSize), board = boardOf(params),
                  count = whole(params, "count", 1, kMostStale, 1)] {
        for (int queued = 0; queued < count; ++queued)
            bus.stale(bytes, board);
    });
}

Operation reply(sim::SimulatedBus& bus, const Json& params) {
    return plain([&bus, command = whole(params, "command", 0, 19),
                  bytes = bytesParameter(params, "hex", hid::kReportSize),
                  times = whole(params, "times", 1, kMostTimes, 1)] { bus.reply(command, bytes, times); });
}

Operation input(sim::SimulatedBus& bus, const Json& params) {
    std::optional<double> volts;
    std::optional<int> count;
    if (findParameter(params, "volts") != nullptr)
        volts = numberParameter(params, "volts");
    if (findParameter(params, "count") != nullptr)
        count = whole(params, "count", 0, 1023);
    return plain(
        [&bus, channel = byteOf(params, "channel"), volts, count] { bus.input(channel, volts, count); });
}

Operation state(sim::SimulatedBus& bus, const Json& params) {
    return [&bus, board = boardOf(params)] { return boardState(bus.state(board)); };
}

Operation clear(sim::SimulatedBus& bus, const Json&) {
    return plain([&bus] { bus.clear(); });
}

const std::vector<std::pair<std::string, Prepare>>& operations() {
    static const std::vector<std::pair<std::string, Prepare>> kOperations = {
        {"parts", parts},   {"socket", socketPart}, {"boards", boards}, {"foreign", foreign},
        {"unplug", unplug}, {"plug", plug},         {"fault", fault},   {"stale", stale},
        {"reply", reply},   {"input", input},       {"state", state},   {"clear", clear}};
    return kOperations;
}

/// What the bus says about a value that it does not take goes to the client.
template <class Act>
auto told(const Act& act) {
    try {
        return act();
    } catch (const std::invalid_argument& wrong) {
        throw invalidParams(wrong.what());
    }
}
} // namespace

std::function<Json()> prepareSimOperation(sim::SimulatedBus& bus, const Json& params) {
    if (!params.is_object())
        throw invalidParams("an operation on the simulated board is an object with 'op'");
    const std::string& op = textParameter(params, "op");
    std::string all;
    for (const auto& [name, prepare] : operations()) {
        if (name == op)
            return [run = told([&, make = prepare] { return make(bus, params); })] { return told(run); };
        all += (all.empty() ? "" : ", ") + name;
    }
    throw invalidParams("unknown op '" + op + "'; ops: " + all);
}

} // namespace vrk
