#pragma once

#include "platform/hid/HidHost.h"

#include <map>
#include <memory>
#include <set>

struct hid_device_;

namespace vrk::hid {

/// The HID devices that are plugged into this computer. All calls from one thread at a time.
class HidapiHost final : public HidHost {
  public:
    /// \param vendor, \param product of the devices whose refusals are worth telling: the others are only
    /// looked at.
    HidapiHost(std::uint16_t vendor, std::uint16_t product);
    ~HidapiHost() override;

    std::vector<DeviceInfo> list() override;

    /// Takes only paths of the list. A device that has just been plugged in gets its permissions a moment
    /// after its node: while the node is younger than 2 s, a refusal is tried again until it is that old.
    Handle open(const std::string& path) override;
    bool write(Handle handle, const Report& report) override;
    ReadResult read(Handle handle, Report& report, std::chrono::milliseconds timeout) override;
    void close(Handle handle) noexcept override;
    std::string lastError() const override { return lastError_; }

  private:
    struct Close {
        void operator()(hid_device_* device) const noexcept;
    };
    struct Open {
        std::unique_ptr<hid_device_, Close> device;
        std::string path;
    };

    Handle tryOpen(const std::string& path);
    Open* find(Handle handle);
    void failed(const std::string& what, const Open& open);

    std::uint16_t vendor_;
    std::uint16_t product_;
    std::map<Handle, Open> open_;
    std::map<std::string, bool> listed_; ///< by path: is it one of ours
    Handle lastHandle_ = 0;              ///< numbers are not used again, so that a dead handle stays dead
    std::string lastError_;
    std::set<std::string> refusals_; ///< why devices of the last list could not be opened
};

} // namespace vrk::hid
