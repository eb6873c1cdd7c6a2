#include "link/SupplyGuard.h"

#include "link/reportLayout.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
constexpr std::uint8_t kVcc = 0x20, kVminus = 0x40; ///< switches of the supplies: P2.5, P2.6
constexpr std::uint8_t kSupplies = kVcc | kVminus;
/// Both buses on their pins. Without them no part answers the next program, which does not write the
/// crossbar.
constexpr std::uint8_t kBuses = 0x06;

bool suppliesOff(std::uint8_t port2) {
    return (port2 & kSupplies) == 0;
}
bool busesOn(std::uint8_t crossbar) {
    return (crossbar & kBuses) == kBuses;
}

hid::Report writeOf(std::uint8_t address, std::uint8_t value) {
    hid::Report report{};
    report[report::kIdByte] = report::kReportId;
    report[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::SfrAccess);
    report[report::kSubCommandByte] = report::kWrite;
    report[report::kSfrAddress] = address;
    report[report::kSfrValue] = value;
    return report;
}
} // namespace

SupplyGuard::SupplyGuard(hid::WireRecorder& wire, std::function<void(const std::string& words)> tell)
    : wire_(wire),
      tell_(std::move(tell)),
      events_(wire.observe([this](const hid::WireEvent& event) { look(event); })) {}

SupplyGuard::~SupplyGuard() {
    events_.reset();
    for (const auto& [path, left] : left_) {
        if (leave_ || (suppliesOff(left.port2) && busesOn(left.crossbar)) || putRight(path, left))
            continue;
        const auto devices = wire_.list();
        const bool there = std::any_of(devices.begin(), devices.end(),
                                       [&path = path](const auto& device) { return device.path == path; });
        if (there) // a board that was pulled out has no supply
            tell_((suppliesOff(left.port2) ? "The buses of " + path + " may still be without their pins: "
                                           : "VCC of " + path + " may still be on: ") +
                  wire_.lastError());
    }
}

void SupplyGuard::look(const hid::WireEvent& event) {
    const std::uint8_t address = event.report[report::kSfrAddress];
    const std::uint8_t value = event.report[report::kSfrValue];
    const hid::Report wanted = writeOf(address, value); // what stands behind the value means nothing
    if (event.direction != hid::WireEvent::Direction::Out ||
        !std::equal(wanted.begin(), wanted.begin() + report::kSfrValue, event.report.begin()))
        return;
    // A report that the board refused may have reached it all the same: one that is to be put right counts,
    // one that has put right does not.
    if (address == report::sfr::P2 && !(event.failed && suppliesOff(value)))
        left_[event.boardPath].port2 = value;
    if (address == report::sfr::XBAR0 && !(event.failed && busesOn(value)))
        left_[event.boardPath].crossbar = value;
}

bool SupplyGuard::putRight(const std::string& path, const Left& left) noexcept {
    const hid::Handle handle = wire_.open(path);
    const auto write = [this, handle](std::uint8_t address, unsigned value) {
        constexpr int kTries = 3;
        bool taken = false;
        for (int attempt = 0; attempt < kTries && !taken && handle != hid::kNoHandle; ++attempt)
            taken = wire_.write(handle, writeOf(address, static_cast<std::uint8_t>(value)));
        return taken;
    };
    // The supply goes first: it is what may do harm.
    const bool off = suppliesOff(left.port2) || write(report::sfr::P2, left.port2 & ~unsigned{kSupplies});
    const bool on = busesOn(left.crossbar) || write(report::sfr::XBAR0, left.crossbar | unsigned{kBuses});
    wire_.close(handle);
    return off && on;
}

} // namespace vrk
