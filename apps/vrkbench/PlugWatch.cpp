#include "apps/vrkbench/PlugWatch.h"

#include "link/reportLayout.h"

#include <algorithm>

namespace vrk {

bool isBoard(const hid::DeviceInfo& device) {
    return device.vendor == report::kVendorId && device.product == report::kProductId;
}

PlugWatch::PlugWatch(hid::HidHost& host, EventLoop& events)
    : host_(host), events_(events), monitor_(report::kVendorId, report::kProductId) {
    retry_.setSingleShot(true);
    QObject::connect(&retry_, &QTimer::timeout, &retry_, [this] { count(); });
    if (monitor_.fileDescriptor() < 0)
        return;
    notifier_.emplace(monitor_.fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, &retry_, [this] {
        if (monitor_.drain())
            count();
    });
}

void PlugWatch::count() {
    constexpr int kRetryMs = 200;
    if (events_.held()) { // the host is busy with an exchange
        retry_.start(kRetryMs);
        return;
    }
    const auto devices = host_.list();
    *plugged_ = static_cast<int>(std::count_if(devices.begin(), devices.end(), isBoard));
}

} // namespace vrk
