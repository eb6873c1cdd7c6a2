#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vrk::hid {

/// What this user may do with a device's node.
struct DeviceAccess {
    std::string path;
    bool exists = false;
    bool readable = false;
    bool writable = false;
    std::chrono::milliseconds age{0}; ///< since the system last set up the node

    bool usable() const { return readable && writable; }
};

DeviceAccess accessOf(const std::string& path);

/// Everything between the plug and this program, from the plug up.
struct LinkDiagnosis {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    int onUsb = 0;                     ///< boards that the USB bus sees
    bool hidSystem = false;            ///< the kernel's raw HID service is there
    std::vector<DeviceAccess> devices; ///< nodes of the boards
    bool ruleInstalled = false;        ///< of the udev rule that gives the seated user the boards

    /// True if at least one board is there and every board can be used.
    bool good() const;
};

/// Looks at the computer. \param root the file system's root; another one in tests.
LinkDiagnosis diagnoseLink(std::uint16_t vendor, std::uint16_t product,
                           const std::filesystem::path& root = "/");

/// The command that gives the seated user the boards: it holds the udev rule's text, so that it works
/// wherever the program was installed, or was not.
std::string ruleCommand(std::uint16_t vendor, std::uint16_t product);

/// What is missing and how to mend it, a sentence or two each; empty if nothing is.
std::vector<std::string> linkAdvice(const LinkDiagnosis& diagnosis);

} // namespace vrk::hid
