#include "platform/hid/HidapiHost.h"
#include "platform/hid/HotPlugMonitor.h"
#include "tests/platform/hid/fakeHidapi.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace vrk::hid {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

/// A node that exists and that this user must not touch, root included.
class ForbiddenNode {
  public:
    explicit ForbiddenNode(std::chrono::seconds age)
        : path_(testing::TempDir() + "hidraw-" + std::to_string(getpid())) {
        std::ofstream(path_).close();
        chmod(path_.c_str(), 0);
        const timespec made{std::time(nullptr) - age.count(), 0};
        const timespec times[] = {made, made};
        utimensat(AT_FDCWD, path_.c_str(), times, 0);
        if (root_ && seteuid(65534) != 0)
            ADD_FAILURE() << "cannot become another user";
    }
    ~ForbiddenNode() {
        if (root_ && seteuid(0) != 0)
            ADD_FAILURE() << "cannot become root again";
        std::filesystem::remove(path_);
    }
    const std::string& path() const { return path_; }

  private:
    bool root_ = geteuid() == 0;
    std::string path_;
};

class Hidapi : public testing::Test {
  protected:
    Hidapi() {
        fakeHidapi = {};
        fakeHidapi.listed = {"/dev/null", "/dev/null", "/dev/zero"};
        fakeHidapi.write = [](std::size_t length) { return static_cast<int>(length); };
    }

    static int fail(int error, const wchar_t* text) {
        fakeHidapi.error = text;
        errno = error;
        return -1;
    }

    HidapiHost host_{0xF5C3, 0x2034};
    Report report_{};
};

TEST_F(Hidapi, ListsEachDeviceOnceAndOpensNothingElse) {
    const auto devices = host_.list();
    ASSERT_EQ(devices.size(), 2u);
    EXPECT_EQ(devices[1].path, "/dev/zero");
    EXPECT_EQ(devices[1].vendor, 0xF5C3);
    EXPECT_EQ(host_.open("/dev/tty"), kNoHandle);
    EXPECT_EQ(fakeHidapi.openCalls, 0) << "the library must never see such a path";
    const Handle first = host_.open("/dev/zero");
    const Handle second = host_.open("/dev/zero");
    EXPECT_EQ(fakeHidapi.openDevices, 2);
    host_.close(first);
    host_.close(first);
    host_.close(kNoHandle);
    EXPECT_EQ(fakeHidapi.openDevices, 1);
    EXPECT_FALSE(host_.write(first, report_));
    EXPECT_EQ(host_.read(first, report_, 1s), ReadResult::Failed);
    EXPECT_TRUE(host_.write(second, report_));
}

TEST_F(Hidapi, SignalsDoNotEndAReadEarly) {
    const Handle board = host_.open("/dev/zero");
    std::vector<int> waits;
    fakeHidapi.read = [&](int wait) {
        waits.push_back(wait);
        std::this_thread::sleep_for(20ms);
        return waits.size() < 3 ? fail(EINTR, L"Interrupted system call") : waits.size() == 3 ? 10 : 64;
    };
    EXPECT_EQ(host_.read(board, report_, 1000ms), ReadResult::Arrived);
    EXPECT_EQ(report_[63], 63);
    ASSERT_EQ(waits.size(), 4u) << "two signals, a short report, the report";
    EXPECT_LE(waits[0], 1000);
    EXPECT_LE(waits[3], 940) << "the time that is left";

    fakeHidapi.read = [&](int wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds{wait} / 2 + 1ms);
        return fail(EINTR, L"Interrupted system call");
    };
    const auto start = SteadyClock::now();
    EXPECT_EQ(host_.read(board, report_, 50ms), ReadResult::TimedOut);
    EXPECT_GE(SteadyClock::now() - start, 50ms);

    fakeHidapi.read = [](int wait) {
        EXPECT_GE(wait, 0);
        return 0;
    };
    EXPECT_EQ(host_.read(board, report_, -1ms), ReadResult::TimedOut) << "never a wait without end";
}

TEST_F(Hidapi, FailuresComeBackAtOnceAndInWords) {
    const Handle board = host_.open("/dev/zero");
    fakeHidapi.read = [](int) {
        return fail(0, L"hid_read_timeout: unexpected poll error (device disconnected)");
    };
    EXPECT_EQ(host_.read(board, report_, 6000ms), ReadResult::Failed);
    EXPECT_EQ(host_.lastError(), "The device /dev/zero has been unplugged");
    fakeHidapi.write = [](std::size_t) { return fail(ETIMEDOUT, L"Connection timed out"); };
    EXPECT_FALSE(host_.write(board, report_));
    EXPECT_EQ(host_.lastError(), "Cannot write to /dev/zero: Connection timed out");
    fakeHidapi.write = [](std::size_t) { return 63; };
    EXPECT_FALSE(host_.write(board, report_));
    EXPECT_THAT(host_.lastError(), HasSubstr("63 of 64"));
}

TEST_F(Hidapi, PermissionOfAFreshNodeIsWaitedFor) {
    const ForbiddenNode fresh(0s);
    fakeHidapi.listed = {fresh.path()};
    fakeHidapi.opens = {false, false, true};
    EXPECT_NE(host_.open(fresh.path()), kNoHandle);
    EXPECT_EQ(fakeHidapi.openCalls, 3);
}

TEST_F(Hidapi, PermissionOfAnOldNodeIsRefusedAtOnce) {
    const ForbiddenNode old(10s);
    fakeHidapi.listed = {old.path(), "/no/such/node"};
    fakeHidapi.opens = {false, false};
    EXPECT_EQ(host_.open(old.path()), kNoHandle);
    EXPECT_EQ(fakeHidapi.openCalls, 1);
    EXPECT_EQ(host_.lastError(), "No permission to use " + old.path());
    EXPECT_FALSE(host_.write(kNoHandle, {}));
    EXPECT_EQ(host_.lastError(), "No permission to use " + old.path()) << "which is why it is not open";
    EXPECT_EQ(host_.open("/no/such/node"), kNoHandle);
    EXPECT_THAT(host_.lastError(), HasSubstr("unplugged"));
}

TEST(HotPlug, KnowsABoardByItsPlace) {
    const std::string usb = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/";
    EXPECT_TRUE(systemPathIs(usb + "0003:F5C3:2034.0001/hidraw/hidraw0", 0xF5C3, 0x2034));
    EXPECT_FALSE(systemPathIs(usb + "0003:F5C3:2035.0001/hidraw/hidraw0", 0xF5C3, 0x2034));
    EXPECT_FALSE(systemPathIs(usb + "0003:046D:C52B.F5C3/hidraw/hidraw0", 0xF5C3, 0x2034));
    HotPlugMonitor monitor(0xF5C3, 0x2034);
    EXPECT_FALSE(monitor.drain()) << "and comes back at once";
}

} // namespace
} // namespace vrk::hid
