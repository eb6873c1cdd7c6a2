#pragma once

#include "platform/hid/HidHost.h"
#include "platform/hid/HotPlugMonitor.h"
#include "platform/runtime/EventLoop.h"

#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <optional>

namespace vrk {

/// True for one of our boards.
bool isBoard(const hid::DeviceInfo& device);

/// Keeps count of the boards that are plugged in, where the system tells when that changes.
class PlugWatch {
  public:
    PlugWatch(hid::HidHost& host, EventLoop& events);
    std::shared_ptr<const std::optional<int>> plugged() const { return plugged_; }

  private:
    void count();

    hid::HidHost& host_;
    EventLoop& events_;
    hid::HotPlugMonitor monitor_;
    std::optional<QSocketNotifier> notifier_;
    QTimer retry_;
    std::shared_ptr<std::optional<int>> plugged_ = std::make_shared<std::optional<int>>();
};

} // namespace vrk
