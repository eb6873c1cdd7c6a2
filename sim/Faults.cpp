#include "sim/Faults.h"

#include "link/reportLayout.h"

#include <algorithm>
#include <stdexcept>

namespace vrk::sim {

namespace {

struct KindName {
    const char* name;
    FaultKind kind;
};
constexpr KindName kKinds[] = {
    {"noReply", FaultKind::NoReply},
    {"lateReply", FaultKind::LateReply},
    {"errorByte", FaultKind::ErrorByte},
    {"writeFails", FaultKind::WriteFails},
    {"nak", FaultKind::Nak},
    {"stuckSda", FaultKind::StuckSda},
    {"missedStore", FaultKind::MissedStore},
    {"noise", FaultKind::Noise},
};

void require(int value, int low, int high, const char* what) {
    if (value < low || value > high) {
        throw std::invalid_argument(std::string(what) + " must be " + std::to_string(low) + " to " +
                                    std::to_string(high));
    }
}

void requireCommand(int command) {
    require(command, 0, report::kCommandCount - 1, "command");
}

constexpr int kMost = 1'000'000;

} // namespace

FaultKind faultKindFromName(const std::string& name) {
    std::string known;
    for (const KindName& entry : kKinds) {
        if (name == entry.name) {
            return entry.kind;
        }
        known += (known.empty() ? "" : ", ") + std::string(entry.name);
    }
    throw std::invalid_argument("unknown fault kind \"" + name + "\": one of " + known);
}

hid::Report zeroFilled(const std::vector<std::uint8_t>& bytes) {
    hid::Report report{};
    if (bytes.size() > report.size()) {
        throw std::invalid_argument("a report has 64 bytes at most");
    }
    std::copy(bytes.begin(), bytes.end(), report.begin());
    return report;
}

void Faults::add(const Fault& fault) {
    require(fault.times, 1, kMost, "times");
    require(fault.ms, 0, kMost, "ms");
    require(fault.value, 0, 255, "value");
    require(fault.counts, 0, 1023, "counts");
    if (fault.command) {
        requireCommand(*fault.command);
    }
    faults_.push_back(fault);
}

void Faults::addReply(int command, const std::vector<std::uint8_t>& bytes, int times) {
    requireCommand(command);
    require(times, 1, kMost, "times");
    replies_.push_back({static_cast<std::uint8_t>(command), zeroFilled(bytes), times});
}

void Faults::clear() {
    faults_.clear();
    replies_.clear();
}

std::optional<Fault> Faults::take(FaultKind kind) {
    const auto fault = std::find_if(faults_.begin(), faults_.end(), [&](const Fault& f) {
        return f.kind == kind && f.command.value_or(command_) == command_;
    });
    if (fault == faults_.end()) {
        return std::nullopt;
    }
    const Fault taken = *fault;
    if (--fault->times == 0) {
        faults_.erase(fault);
    }
    return taken;
}

std::optional<hid::Report> Faults::takeReply() {
    const auto reply =
        std::find_if(replies_.begin(), replies_.end(), [&](const Reply& r) { return r.command == command_; });
    if (reply == replies_.end()) {
        return std::nullopt;
    }
    const hid::Report taken = reply->report;
    if (--reply->times == 0) {
        replies_.erase(reply);
    }
    return taken;
}

bool Faults::waiting(FaultKind kind) const {
    return std::any_of(faults_.begin(), faults_.end(), [kind](const Fault& f) { return f.kind == kind; });
}

} // namespace vrk::sim
