#pragma once

#include "platform/hid/WireLog.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>

namespace vrk::hid {

/// The boards of a wire log, played back: the same requests get the same replies, in the same order and
/// with the delays of the recording.
///
/// A reply belongs to the request before it in the log. A report that the recording had read before a
/// request and that nobody reads in the replay is dropped at that request. At the first request that
/// differs, and at the first reply that the recording has no more of, it is of no more use: from then on
/// writes fail and reads time out.
class ReplayHost final : public HidHost {
  public:
    struct Difference {
        int request = 0;                ///< which one of the recording, from 1
        std::optional<Report> recorded; ///< nothing if the recording has ended
        Report sent{};
        std::string text; ///< both reports byte by byte, and where they differ
    };

    /// \param vendor, product what the boards list as.
    /// \throws Fault if the file cannot be read or is no wire log.
    ReplayHost(const std::filesystem::path& log, Clock& clock, std::uint16_t vendor, std::uint16_t product);

    /// Called once, from the write that differs or the read that finds the recording's end.
    void onDifference(std::function<void(const Difference&)> handler) { onDifference_ = std::move(handler); }
    bool diverged() const { return diverged_; }
    /// True when every request of the recording has been made.
    bool finished() const;

    std::vector<DeviceInfo> list() override;
    Handle open(const std::string& path) override;
    bool write(Handle handle, const Report& report) override;
    ReadResult read(Handle handle, Report& report, std::chrono::milliseconds timeout) override;
    void close(Handle handle) noexcept override;
    std::string lastError() const override { return lastError_; }

  private:
    void diverge(const WireEvent* recorded, const Report& sent, const std::string& text);

    Clock& clock_;
    std::uint16_t vendor_;
    std::uint16_t product_;
    std::vector<WireEvent> events_;
    std::size_t next_ = 0;
    int boards_ = 1;
    int requests_ = 0;
    Report sent_{};          ///< the last request
    Milliseconds offset_{0}; ///< from the recording's time to ours, at the last request
    std::map<Handle, int> open_;
    Handle lastHandle_ = 0;
    bool diverged_ = false;
    std::string lastError_;
    std::function<void(const Difference&)> onDifference_;
};

} // namespace vrk::hid
