#pragma once

#include <cstdint>
#include <memory>
#include <string>

struct udev;
struct udev_monitor;

namespace vrk::hid {

/// Tells when a board is plugged in or pulled out.
class HotPlugMonitor {
  public:
    HotPlugMonitor(std::uint16_t vendor, std::uint16_t product);
    ~HotPlugMonitor();

    /// Becomes readable when something happened; -1 where the system tells nothing, as in some containers.
    int fileDescriptor() const;

    /// Takes what has been told since the last call, without waiting.
    /// \return true if a board came or went.
    bool drain();

  private:
    struct Unref {
        void operator()(udev* context) const;
        void operator()(udev_monitor* monitor) const;
    };

    std::uint16_t vendor_;
    std::uint16_t product_;
    std::unique_ptr<udev, Unref> udev_;
    std::unique_ptr<udev_monitor, Unref> monitor_;
};

/// True if a hidraw device's place in /sys names this vendor and product. The place is all that is left to
/// ask once a device has gone.
bool systemPathIs(const std::string& path, std::uint16_t vendor, std::uint16_t product);

} // namespace vrk::hid
