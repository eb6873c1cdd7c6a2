#include "platform/hid/HotPlugMonitor.h"

#include <libudev.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>

namespace vrk::hid {

bool systemPathIs(const std::string& path, std::uint16_t vendor, std::uint16_t product) {
    // ".../0003:F5C3:2034.0001/hidraw/hidraw0": bus, vendor, product, count
    char ids[16];
    std::snprintf(ids, sizeof ids, ":%04X:%04X.", static_cast<unsigned>(vendor),
                  static_cast<unsigned>(product));
    std::string upper = path;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return upper.find(ids) != std::string::npos;
}

void HotPlugMonitor::Unref::operator()(udev* context) const {
    udev_unref(context);
}
void HotPlugMonitor::Unref::operator()(udev_monitor* monitor) const {
    udev_monitor_unref(monitor);
}

HotPlugMonitor::HotPlugMonitor(std::uint16_t vendor, std::uint16_t product)
    : vendor_(vendor), product_(product), udev_(udev_new()) {
    if (!udev_)
        return;
    // The "udev" source speaks after the rules have run, so that the node has its permissions.
    monitor_.reset(udev_monitor_new_from_netlink(udev_.get(), "udev"));
    if (monitor_ && (udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), "hidraw", nullptr) < 0 ||
                     udev_monitor_enable_receiving(monitor_.get()) < 0))
        monitor_.reset();
}

HotPlugMonitor::~HotPlugMonitor() = default;

int HotPlugMonitor::fileDescriptor() const {
    return monitor_ ? udev_monitor_get_fd(monitor_.get()) : -1;
}

bool HotPlugMonitor::drain() {
    bool ours = false;
    while (monitor_) {
        udev_device* device = udev_monitor_receive_device(monitor_.get());
        if (!device)
            break;
        const char* action = udev_device_get_action(device);
        const char* path = udev_device_get_syspath(device);
        const std::string_view what = action ? action : "";
        ours = ours || ((what == "add" || what == "remove") && path && systemPathIs(path, vendor_, product_));
        udev_device_unref(device);
    }
    return ours;
}

} // namespace vrk::hid
