#include "link/SupplyGuard.h"

#include "link/reportLayout.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
constexpr std::uint8_t kVcc = 0x20, kVminus = 0x40; ///< switches of the supplies: P2.5, P2.6
constexpr std::uint8_t kSupplies = kVcc | kVminus;

hid::Report writeOfPort2(std::uint8_t value) {
    hid::Report report{};
    report[report::kIdByte] = report::kReportId;
    report[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::SfrAccess);
    report[report::kSubCommandByte] = report::kWrite;
    report[report::kSfrAddress] = report::sfr::P2;
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
    for (const auto& [path, value] : port2_) {
        if (leave_ || (value & kSupplies) == 0 || switchOff(path, value))
            continue;
        const auto devices = wire_.list();
        const bool there = std::any_of(devices.begin(), devices.end(),
                                       [&path = path](const auto& device) { return device.path == path; });
        if (there) // a board that was pulled out has no supply
            tell_("VCC of " + path + " may still be on: " + wire_.lastError());
    }
}

void SupplyGuard::look(const hid::WireEvent& event) {
    // A report that the board refused may have reached it all the same: one that switches on counts, one
    // that switches off does not.
    const std::uint8_t value = event.report[report::kSfrValue];
    const hid::Report wanted = writeOfPort2(value); // what stands behind the value means nothing
    if (event.direction != hid::WireEvent::Direction::Out ||
        !std::equal(wanted.begin(), wanted.begin() + report::kSfrValue, event.report.begin()))
        return;
    if (!event.failed || (value & kSupplies) != 0)
        port2_[event.boardPath] = value;
}

bool SupplyGuard::switchOff(const std::string& path, std::uint8_t port2) noexcept {
    constexpr int kTries = 3;
    const hid::Handle handle = wire_.open(path);
    bool off = false;
    for (int attempt = 0; attempt < kTries && !off && handle != hid::kNoHandle; ++attempt)
        off = wire_.write(handle, writeOfPort2(static_cast<std::uint8_t>(port2 & ~kSupplies)));
    wire_.close(handle);
    return off;
}

} // namespace vrk
