#include "platform/hid/HidapiHost.h"

#include "platform/hid/DeviceAccess.h"

#include <hidapi/hidapi.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

namespace vrk::hid {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPermissionWait{2000};
constexpr std::chrono::milliseconds kPermissionStep{50};
constexpr std::chrono::milliseconds kLongestRead{1'000'000'000};

/// The library's own words. Its texts are ASCII but for what the system's language adds; what does not fit
/// becomes a question mark.
std::string errorText(hid_device* device) {
    const wchar_t* text = hid_error(device);
    std::string narrow;
    for (; text && *text; ++text)
        narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
    return narrow;
}

/// True if the call was broken off by a signal before it did anything.
bool interrupted(hid_device* device, int error) {
    return error == EINTR || errorText(device) == std::strerror(EINTR);
}

} // namespace

void HidapiHost::Close::operator()(hid_device_* device) const noexcept {
    hid_close(device);
}

HidapiHost::HidapiHost(std::uint16_t vendor, std::uint16_t product) : vendor_(vendor), product_(product) {
    hid_init();
}

HidapiHost::~HidapiHost() = default;

std::vector<DeviceInfo> HidapiHost::list() {
    std::vector<DeviceInfo> devices;
    listed_.clear();
    refusals_.clear();
    const std::unique_ptr<hid_device_info, decltype(&hid_free_enumeration)> all(hid_enumerate(0, 0),
                                                                                &hid_free_enumeration);
    for (const hid_device_info* info = all.get(); info; info = info->next) {
        // A device with several usages comes once for each of them.
        const bool ours = info->vendor_id == vendor_ && info->product_id == product_;
        if (info->path && listed_.emplace(info->path, ours).second)
            devices.push_back({info->vendor_id, info->product_id, info->path});
    }
    return devices;
}

Handle HidapiHost::open(const std::string& path) {
    const Handle handle = tryOpen(path);
    if (handle != kNoHandle)
        lastError_.clear();
    else if (const auto listed = listed_.find(path); listed != listed_.end() && listed->second)
        refusals_.insert(lastError_);
    return handle;
}

Handle HidapiHost::tryOpen(const std::string& path) {
    if (!listed_.contains(path))
        list();
    // The library reads freed memory when it opens a node that is no HID device.
    if (!listed_.contains(path)) {
        lastError_ = "There is no HID device " + path;
        return kNoHandle;
    }
    while (true) {
        if (hid_device* device = hid_open_path(path.c_str())) {
            open_.emplace(++lastHandle_, Open{std::unique_ptr<hid_device_, Close>(device), path});
            return lastHandle_;
        }
        lastError_ = "Cannot open " + path + ": " + errorText(nullptr);
        const DeviceAccess access = accessOf(path);
        if (!access.exists) {
            lastError_ = "The device " + path + " has been unplugged";
            return kNoHandle;
        }
        if (access.usable())
            return kNoHandle;
        lastError_ = "No permission to use " + path;
        if (access.age >= kPermissionWait)
            return kNoHandle;
        std::this_thread::sleep_for(kPermissionStep);
    }
}

HidapiHost::Open* HidapiHost::find(Handle handle) {
    const auto found = open_.find(handle);
    if (found != open_.end())
        return &found->second;
    // Who works on with a device that could not be opened wants to know why that was.
    lastError_.clear();
    for (const std::string& refusal : refusals_)
        lastError_ += (lastError_.empty() ? "" : "; ") + refusal;
    if (handle != kNoHandle || lastError_.empty())
        lastError_ = "The device is not open";
    return nullptr;
}

void HidapiHost::failed(const std::string& what, const Open& open) {
    const std::string text = errorText(open.device.get());
    const bool gone = text.find("disconnected") != std::string::npos || text == std::strerror(ENODEV);
    lastError_ = gone || !accessOf(open.path).exists ? "The device " + open.path + " has been unplugged"
                                                     : "Cannot " + what + ' ' + open.path + ": " + text;
}

bool HidapiHost::write(Handle handle, const Report& report) {
    Open* open = find(handle);
    if (!open)
        return false;
    int written = -1;
    do {
        errno = 0;
        written = hid_write(open->device.get(), report.data(), report.size());
    } while (written < 0 && interrupted(open->device.get(), errno));
    if (written == kReportSize) {
        // A reply that does not come is no failure of this one's: an old one must not pass for its cause.
        lastError_.clear();
        return true;
    }
    if (written < 0)
        failed("write to", *open);
    else
        lastError_ = "The device " + open->path + " took " + std::to_string(written) + " of 64 bytes";
    return false;
}

ReadResult HidapiHost::read(Handle handle, Report& report, std::chrono::milliseconds timeout) {
    Open* open = find(handle);
    if (!open)
        return ReadResult::Failed;
    // A negative wait would be one without end to the library.
    const auto end = SteadyClock::now() + std::clamp(timeout, std::chrono::milliseconds{0}, kLongestRead);
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
        const int wait = static_cast<int>(std::max(left, std::chrono::milliseconds{0}).count());
        Report arrived{};
        errno = 0;
        const int count = hid_read_timeout(open->device.get(), arrived.data(), arrived.size(), wait);
        if (count == kReportSize) {
            report = arrived;
            return ReadResult::Arrived;
        }
        if (count < 0 && !interrupted(open->device.get(), errno)) {
            failed("read from", *open);
            return ReadResult::Failed;
        }
        // Broken off by a signal, or a report that is none of ours: wait on with the time that is left.
        if (SteadyClock::now() >= end)
            return ReadResult::TimedOut;
    }
}

void HidapiHost::close(Handle handle) noexcept {
    open_.erase(handle);
}

} // namespace vrk::hid
