#include "platform/hid/DeviceAccess.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

namespace vrk::hid {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// A small file system as the kernel shows a computer with one board and a mouse.
class Computer : public testing::Test {
  protected:
    Computer() : root_(testing::TempDir() + "vrk-computer-" + std::to_string(getpid())) {
        fs::remove_all(root_);
    }
    ~Computer() override { fs::remove_all(root_); }

    void put(const std::string& path, const std::string& text = "") {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path) << text;
    }
    void plugUsb() {
        put("sys/bus/usb/devices/1-1/idVendor", "f5c3\n");
        put("sys/bus/usb/devices/1-1/idProduct", "2034\n");
        put("sys/bus/usb/devices/1-2/idVendor", "f5c3\n");
        put("sys/bus/usb/devices/1-2/idProduct", "0001\n");
    }
    void plugHid(const std::string& node, const std::string& id) {
        fs::create_directories(root_ / "sys/devices" / id);
        fs::create_directories(root_ / "sys/class/hidraw" / node);
        fs::create_symlink("../../../devices/" + id, root_ / "sys/class/hidraw" / node / "device");
        put("dev/" + node);
    }
    LinkDiagnosis look() const { return diagnoseLink(0xF5C3, 0x2034, root_); }

    fs::path root_;
};

TEST_F(Computer, IsReadFromThePlugUp) {
    EXPECT_EQ(look().onUsb, 0);
    EXPECT_THAT(linkAdvice(look()).at(0), HasSubstr("f5c3:2034"));
    plugUsb();
    EXPECT_EQ(look().onUsb, 1);
    EXPECT_THAT(linkAdvice(look()).at(0), HasSubstr("modprobe"));
    plugHid("hidraw0", "0003:046D:C52B.0001");
    EXPECT_TRUE(look().hidSystem);
    EXPECT_TRUE(look().devices.empty());
    EXPECT_FALSE(look().good());
    EXPECT_THAT(linkAdvice(look()).at(0), HasSubstr("no HID device of it"));
    plugHid("hidraw1", "0003:F5C3:2034.0002");
    ASSERT_EQ(look().devices.size(), 1u);
    EXPECT_EQ(look().devices[0].path, (root_ / "dev/hidraw1").string());
    EXPECT_TRUE(look().good());
    EXPECT_TRUE(linkAdvice(look()).empty());
    EXPECT_FALSE(look().ruleInstalled);
    for (const char* folder : {"etc/udev/rules.d/", "usr/local/lib/udev/rules.d/"}) {
        put(folder + std::string("70-vrkbench.rules"));
        EXPECT_TRUE(look().ruleInstalled) << folder;
        fs::remove(root_ / folder / "70-vrkbench.rules");
    }
    fs::remove(root_ / "dev/hidraw1");
    EXPECT_THAT(linkAdvice(look()).at(0), HasSubstr("no such node"));
}

TEST(LinkAdvice, TellsWhatIsDeniedAndWhichRuleMendsIt) {
    LinkDiagnosis diagnosis;
    diagnosis.devices = {{"/dev/hidraw0", true, true, false, {}}, {"/dev/hidraw1", true, true, true, {}}};
    for (const auto& [readable, writable, words] : {std::tuple{true, false, "cannot be written by"},
                                                    {false, true, "cannot be read by"},
                                                    {false, false, "cannot be read or written by"}}) {
        diagnosis.devices[0].readable = readable;
        diagnosis.devices[0].writable = writable;
        EXPECT_THAT(linkAdvice(diagnosis),
                    testing::ElementsAre(testing::AllOf(HasSubstr(std::string("/dev/hidraw0 ") + words),
                                                        HasSubstr("Install the rule"))));
    }
    diagnosis.ruleInstalled = true;
    EXPECT_THAT(linkAdvice(diagnosis).at(0), HasSubstr("plugdev"));
    EXPECT_FALSE(diagnosis.good());
}

} // namespace
} // namespace vrk::hid
