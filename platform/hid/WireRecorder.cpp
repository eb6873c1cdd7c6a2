#include "platform/hid/WireRecorder.h"

namespace vrk::hid {

WireRecorder::WireRecorder(HidHost& host, const Clock& clock, std::uint16_t vendor, std::uint16_t product)
    : host_(host), clock_(clock), vendor_(vendor), product_(product) {}

void WireRecorder::meet(const std::string& path) {
    numbers_.try_emplace(path, static_cast<int>(numbers_.size()));
}

std::vector<DeviceInfo> WireRecorder::list() {
    auto devices = host_.list();
    foreign_.clear();
    // A board's number is its place in the list, as an instance's is; a path may be new after each plug.
    numbers_.clear();
    for (const DeviceInfo& device : devices) {
        if (device.vendor == vendor_ && device.product == product_)
            meet(device.path);
        else
            foreign_.insert(device.path);
    }
    return devices;
}

Handle WireRecorder::open(const std::string& path) {
    const Handle handle = host_.open(path);
    if (handle != kNoHandle && !foreign_.contains(path)) {
        meet(path);
        open_.insert_or_assign(handle, Board{numbers_.at(path), path});
    }
    return handle;
}

void WireRecorder::tell(Handle handle, WireEvent::Direction direction, const Report& report, bool failed) {
    const auto board = open_.find(handle);
    if (board == open_.end() || reports_.empty())
        return;
    try {
        reports_.emit({clock_.now(), direction, board->second.number, board->second.path, report, failed});
    } catch (...) {
        // The board has had its report; what went wrong in somebody's log must not look like a dead link.
    }
}

bool WireRecorder::write(Handle handle, const Report& report) {
    const bool taken = host_.write(handle, report);
    tell(handle, WireEvent::Direction::Out, report, !taken);
    return taken;
}

ReadResult WireRecorder::read(Handle handle, Report& report, std::chrono::milliseconds timeout) {
    const ReadResult result = host_.read(handle, report, timeout);
    if (result == ReadResult::Arrived)
        tell(handle, WireEvent::Direction::In, report, false);
    return result;
}

void WireRecorder::close(Handle handle) noexcept {
    open_.erase(handle);
    host_.close(handle);
}

} // namespace vrk::hid
