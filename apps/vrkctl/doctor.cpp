#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/TerminalDialogs.h"
#include "link/reportLayout.h"
#include "platform/hid/DeviceAccess.h"

#include <nlohmann/json.hpp>

namespace vrk {

namespace {
const char* yesNo(bool value) {
    return value ? "yes" : "no";
}

const char* accessText(const hid::DeviceAccess& device) {
    if (!device.exists)
        return "no such node";
    if (device.usable())
        return "may be used";
    return device.readable ? "may only be read" : "no permission";
}

void print(const hid::LinkDiagnosis& found, const std::vector<std::string>& advice) {
    putf("boards on the USB bus     %d\n", found.onUsb);
    putf("raw HID service (hidraw)  %s\n", yesNo(found.hidSystem));
    putf("udev rule installed       %s\n", yesNo(found.ruleInstalled));
    for (const hid::DeviceAccess& device : found.devices)
        putf("%-25s %s\n", device.path.c_str(), accessText(device));
    if (found.devices.empty())
        putf("device nodes of boards    none\n");
    for (const std::string& line : advice)
        putf("\n%s\n", line.c_str());
    if (found.good() && advice.empty())
        putf("\nAll is well.\n");
}

void printJson(const hid::LinkDiagnosis& found, const std::vector<std::string>& advice) {
    nlohmann::ordered_json devices = nlohmann::ordered_json::array();
    for (const hid::DeviceAccess& device : found.devices)
        devices.push_back({{"path", device.path},
                           {"exists", device.exists},
                           {"readable", device.readable},
                           {"writable", device.writable}});
    const nlohmann::ordered_json all = {
        {"onUsb", found.onUsb}, {"hidraw", found.hidSystem}, {"ruleInstalled", found.ruleInstalled},
        {"devices", devices},   {"good", found.good()},      {"advice", advice}};
    put(all.dump(2) + "\n");
}

/// A simulated board needs nothing of the computer: what is left to look at is whether it answers.
ExitCode doctorOfSimulation(const Options& options) {
    TerminalDialogs dialogs;
    Session session(options, dialogs, DefaultTime::VirtualIfPossible);
    nlohmann::ordered_json devices = nlohmann::ordered_json::array();
    for (const hid::DeviceInfo& device : session.boards()) {
        if (!options.json)
            putf("%-25s may be used\n", device.path.c_str());
        devices.push_back({{"path", device.path}, {"exists", true}, {"readable", true}, {"writable", true}});
    }
    const std::string advice = "The board is simulated: it needs no cable, no rule and no permission.";
    if (options.json)
        put(nlohmann::ordered_json(
                {{"simulated", true}, {"devices", devices}, {"good", true}, {"advice", {advice}}})
                .dump(2) +
            "\n");
    else
        put("\n" + advice + " All is well.\n");
    return ExitCode::Done;
}
} // namespace

ExitCode doctor(const Options& options) {
    if (!options.simulate.empty())
        return doctorOfSimulation(options);
    const auto found = hid::diagnoseLink(report::kVendorId, report::kProductId);
    auto advice = hid::linkAdvice(found);
    if (found.devices.empty() && found.onUsb == 0 && !found.ruleInstalled)
        advice.push_back("Before a board can be used without root, its udev rule is needed. Run: " +
                         hid::ruleCommand(report::kVendorId, report::kProductId));
    if (options.json)
        printJson(found, advice);
    else
        print(found, advice);
    if (found.good())
        return ExitCode::Done;
    return found.onUsb == 0 && found.devices.empty() ? ExitCode::NoBoard : ExitCode::CheckFailed;
}

} // namespace vrk
