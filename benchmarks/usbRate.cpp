// Exchanges a second with the first board: the bare library, and the whole stack with the same command.
//
// usage: usb_rate MILLISECONDS   for each way and round

#include "link/reportLayout.h"
#include "platform/clipboard/Clipboard.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/hid/HidapiHost.h"
#include "platform/hid/PatientHost.h"
#include "platform/hid/WireRecorder.h"
#include "platform/runtime/Clock.h"
#include "platform/runtime/EventLoop.h"
#include "shell/Bench.h"

#include <hidapi/hidapi.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <utility>

namespace vrk {
namespace {

constexpr int kReplyTimeout = 6000; // ms
constexpr int kDrainStep = 1;       // ms, as the link drains stale reports before a command
constexpr std::uint8_t kRegister = 0x80;

/// What a program of a few lines would do. \param drain whether it guards against stale replies.
class Bare {
  public:
    explicit Bare(bool drain)
        : drain_(drain), device_(hid_open(report::kVendorId, report::kProductId, nullptr), &hid_close) {
        if (!device_)
            throw std::runtime_error("the board cannot be opened");
    }

    void exchange() {
        hid::Report report{};
        while (drain_ && hid_read_timeout(device_.get(), report.data(), report.size(), kDrainStep) > 0) {
        }
        report = {report::kReportId, static_cast<std::uint8_t>(report::Command::SfrAccess), report::kRead,
                  kRegister};
        if (hid_write(device_.get(), report.data(), report.size()) != hid::kReportSize ||
            hid_read_timeout(device_.get(), report.data(), report.size(), kReplyTimeout) != hid::kReportSize)
            throw std::runtime_error("the bare loop lost the board");
    }

  private:
    bool drain_;
    std::unique_ptr<hid_device, decltype(&hid_close)> device_;
};

/// A user's click on the console, down to the wire. \param patient with the worker thread of the desktop.
class Stack {
  public:
    explicit Stack(bool patient) {
        if (patient)
            patient_ = std::make_unique<hid::PatientHost>(hidapi_, events_, [] {});
        recorder_ =
            std::make_unique<hid::WireRecorder>(patient_ ? static_cast<hid::HidHost&>(*patient_) : hidapi_,
                                                clock_, report::kVendorId, report::kProductId);
        bench_ = std::make_unique<Bench>(Bench::Parts{events_, dialogs_, clipboard_, *recorder_,
                                                      std::filesystem::temp_directory_path(),
                                                      std::filesystem::temp_directory_path()});
        console().txtSFRAddress.setText("80");
    }

    void exchange() {
        if (!console().cmdGetSDFValue.userClick().done() || console().lblSFRBuf[0].caption() == "--")
            throw std::runtime_error("the stack lost the board");
    }

  private:
    frmMainF340& console() { return *bench_->frmMainF340; }

    RealClock clock_;
    EventLoop events_{clock_};
    ScriptedDialogs dialogs_;
    MemoryClipboard clipboard_;
    hid::HidapiHost hidapi_{report::kVendorId, report::kProductId};
    std::unique_ptr<hid::PatientHost> patient_;
    std::unique_ptr<hid::WireRecorder> recorder_;
    std::unique_ptr<Bench> bench_;
};

/// Exchanges a second of a newly opened way; two ways open at once would read each other's replies.
template <class Way>
double rate(bool option, std::chrono::milliseconds length) {
    using Clock = std::chrono::steady_clock;
    Way way(option);
    const auto begun = Clock::now();
    int count = 0;
    for (; Clock::now() - begun < length; ++count)
        way.exchange();
    return count / std::chrono::duration<double>(Clock::now() - begun).count();
}

void compare(std::chrono::milliseconds length) {
    constexpr int kRounds = 3; // in turn, so that a busy moment of the machine meets all of them
    double bare = 0, draining = 0, terminal = 0, desktop = 0;
    for (int round = 0; round < kRounds; ++round) {
        bare += rate<Bare>(false, length) / kRounds;
        draining += rate<Bare>(true, length) / kRounds;
        terminal += rate<Stack>(false, length) / kRounds;
        desktop += rate<Stack>(true, length) / kRounds;
    }
    std::printf("bare loop                       %7.0f exchanges a second\n", bare);
    std::printf("bare loop that drains for 1 ms  %7.0f\n", draining);
    for (const auto& [name, ours] :
         {std::pair("our stack, terminal", terminal), std::pair("our stack, desktop", desktop)})
        std::printf("%-31s %7.0f  ratio %.2f of the bare loop, %.2f of the draining one\n", name, ours,
                    ours / bare, ours / draining);
}

} // namespace
} // namespace vrk

int main(int argc, char** argv) {
    try {
        vrk::compare(std::chrono::milliseconds(argc > 1 ? std::atoi(argv[1]) : 1000));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "usb_rate: %s\n", error.what());
        return 1;
    }
}
