#include "platform/hid/DeviceAccess.h"

#include "platform/hid/HotPlugMonitor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>

namespace vrk::hid {

namespace fs = std::filesystem;

namespace {

constexpr const char* kRule = "70-vrkbench.rules";

std::vector<fs::path> entries(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        found.push_back(entry->path());
    std::sort(found.begin(), found.end());
    return found;
}

/// A number of the kernel's, in four hexadecimal digits; -1 if it is not there.
int hexAttribute(const fs::path& file) {
    std::string text;
    std::ifstream(file) >> text;
    int value = -1;
    std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return value;
}

std::string idText(const LinkDiagnosis& diagnosis) {
    char text[16];
    std::snprintf(text, sizeof text, "%04x:%04x", static_cast<unsigned>(diagnosis.vendor),
                  static_cast<unsigned>(diagnosis.product));
    return text;
}

std::string denied(const DeviceAccess& device) {
    if (device.readable)
        return "written";
    return device.writable ? "read" : "read or written";
}

} // namespace

DeviceAccess accessOf(const std::string& path) {
    DeviceAccess access;
    access.path = path;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return access;
    access.exists = true;
    access.readable = faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
    access.writable = faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
    // A node's modification time is when it was made, or when its rules last ran: writing to the device does
    // not touch it.
    const auto made =
        std::chrono::seconds{status.st_mtim.tv_sec} + std::chrono::nanoseconds{status.st_mtim.tv_nsec};
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    access.age = std::chrono::duration_cast<std::chrono::milliseconds>(now - made);
    // The day's clock was set back: it cannot tell, so the node counts as old.
    if (access.age < std::chrono::milliseconds{0})
        access.age = std::chrono::milliseconds::max();
    return access;
}

bool LinkDiagnosis::good() const {
    return !devices.empty() && std::all_of(devices.begin(), devices.end(),
                                           [](const DeviceAccess& device) { return device.usable(); });
}

LinkDiagnosis diagnoseLink(std::uint16_t vendor, std::uint16_t product, const fs::path& root) {
    LinkDiagnosis diagnosis;
    diagnosis.vendor = vendor;
    diagnosis.product = product;
    for (const fs::path& device : entries(root / "sys/bus/usb/devices"))
        if (hexAttribute(device / "idVendor") == vendor && hexAttribute(device / "idProduct") == product)
            ++diagnosis.onUsb;

    std::error_code error;
    const fs::path hidraw = root / "sys/class/hidraw";
    diagnosis.hidSystem = fs::is_directory(hidraw, error);
    for (const fs::path& device : entries(hidraw))
        if (systemPathIs(fs::weakly_canonical(device / "device", error).string(), vendor, product))
            diagnosis.devices.push_back(accessOf((root / "dev" / device.filename()).string()));

    for (const char* folder : {"etc/udev/rules.d", "run/udev/rules.d", "usr/local/lib/udev/rules.d",
                               "usr/lib/udev/rules.d", "lib/udev/rules.d"})
        diagnosis.ruleInstalled = diagnosis.ruleInstalled || fs::exists(root / folder / kRule, error);
    return diagnosis;
}

std::string ruleCommand(std::uint16_t vendor, std::uint16_t product) {
    char rule[128];
    std::snprintf(rule, sizeof rule,
                  R"(SUBSYSTEM=="hidraw", ATTRS{idVendor}=="%04x", ATTRS{idProduct}=="%04x", TAG+="uaccess")",
                  static_cast<unsigned>(vendor), static_cast<unsigned>(product));
    return "echo '" + std::string(rule) + "' | sudo tee /etc/udev/rules.d/" + kRule +
           " && sudo udevadm control --reload";
}

std::vector<std::string> linkAdvice(const LinkDiagnosis& diagnosis) {
    if (diagnosis.devices.empty()) {
        if (diagnosis.onUsb == 0)
            return {
                "No board is on the USB bus: no device has the ID " + idText(diagnosis) +
                ". Plug the board in and try another cable or port. In a virtual machine, pass the device "
                "through to it."};
        if (!diagnosis.hidSystem)
            return {"The board is on the USB bus, but the kernel has no raw HID devices. Run: sudo modprobe "
                    "usbhid"};
        return {
            "The board is on the USB bus, but the kernel made no HID device of it. Unplug it and plug it in "
            "again; \"dmesg\" tells why if it stays so."};
    }
    std::vector<std::string> advice;
    for (const DeviceAccess& device : diagnosis.devices) {
        if (device.usable())
            continue;
        if (!device.exists) {
            advice.push_back("The kernel knows the board as " + device.path +
                             ", but there is no such node. In a container, pass the device in.");
            continue;
        }
        std::string text = device.path + " cannot be " + denied(device) + " by this user. ";
        if (!diagnosis.ruleInstalled)
            text += "Install the rule: " + ruleCommand(diagnosis.vendor, diagnosis.product) +
                    ", then plug the board in again.";
        else
            text += "The rule is installed: plug the board in again. It serves the user at the screen; for a "
                    "remote "
                    "login, add GROUP=\"plugdev\", MODE=\"0660\" to it and yourself to that group.";
        advice.push_back(std::move(text));
    }
    return advice;
}

} // namespace vrk::hid
