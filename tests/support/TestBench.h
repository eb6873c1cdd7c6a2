#pragma once

#include "link/reportLayout.h"
#include "platform/hid/WireRecorder.h"
#include "platform/runtime/text.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vrk {

/// A folder that goes with the test.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path write(const std::string& name, const std::string& content) const;

  private:
    std::filesystem::path path_;
};

/// A whole bench on a simulated board, with a clock that jumps and boxes that are answered from a queue. A
/// box that the test did not take with boxes() fails it, so that no fault passes unseen.
class TestBench : public ::testing::Test {
  public:
    TestBench();
    ~TestBench() override;
    void TearDown() override;

    TemporaryFolder folder;
    VirtualClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    sim::SimulatedBus bus{clock};
    hid::WireRecorder recorder{bus, clock, report::kVendorId, report::kProductId};
    Bench bench{{events, dialogs, clipboard, recorder, folder.path(), folder.path()}};

    frmStartup& startup() { return *bench.frmStartup; }
    frmMainF340& console() { return *bench.frmMainF340; }
    frmMotherboardDAQ2& board() { return *bench.frmMotherboardDAQ2; }
    frmVRK_User1& i2c() { return *bench.frmVRK_User1; }
    frmVRK_SPI1& spi() { return *bench.frmVRK_SPI1; }
    modHID& link() { return bench.link(); }

    /// Starts, and loads both consoles as a selection does.
    void loadConsoles();
    /// Starts, opens the I2C panel, and switches VCC on unless told otherwise.
    void openI2c(bool vccOn = true);
    /// The same for the SPI panel.
    void openSpi(bool vccOn = true);

    /// Runs code as an action, so that its end of the program or its fault is caught as a window would.
    Outcome act(const std::function<void()>& action) { return events.deliver(action); }
    /// A gesture of the user `ms` from now, also in the middle of an action.
    void at(int ms, std::function<void()> gesture) { events.postAfter(Milliseconds(ms), std::move(gesture)); }
    /// Types and lets every key be handled.
    void type(TextBox& box, const std::string& text);
    /// Types over the whole text, then Enter.
    void enter(TextBox& box, const std::string& text) {
        type(box, text);
        (void)box.userEnter();
    }
    /// Has the product table read the file, the row chosen and returned from. \return what was said
    std::vector<std::string> chooseFrom(MenuEntry& list, const std::string& file, int row);
    void pump() { events.runDue(); }
    void answer(Choice choice, std::function<void()> before = {}) {
        dialogs.answer({choice, std::move(before)});
    }
    /// Texts of the boxes since the last call, each with the answer it got: "VCC is not turned on. [OK]".
    std::vector<std::string> boxes();
    void fault(sim::FaultKind kind, int times = 1, std::optional<int> command = std::nullopt, int value = 1);

    /// Reports that went out since the last call, as the hexadecimal of their first `bytes` bytes.
    std::vector<std::string> sent(int bytes = 8);
    /// The same, of one command alone.
    std::vector<std::string> sent(report::Command command, int bytes = 8);
    std::vector<hid::WireEvent> wire; ///< everything since the last sent()

  private:
    Subscription recording_;
};

} // namespace vrk
