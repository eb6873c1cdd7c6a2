#include "shell/frmAbout2.h"

#include "platform/runtime/Fault.h"

#include <optional>
#include <string>
#include <utility>

namespace vrk {

namespace {

struct Library {
    const char* name;
    const char* purpose;
    const char* licence;
};
constexpr Library kUsed[frmAbout2::kLibraries] = {
    {"Qt 6", "windows, in vrkbench alone", "LGPL-3.0"},
    {"HIDAPI", "the board on USB", "BSD-3-Clause"},
    {"libudev", "boards that come and go", "LGPL-2.1-or-later"},
    {"libsystemd", "a system that stays awake during a run", "LGPL-2.1-or-later"},
    {"CLI11", "options of the command line", "BSD-3-Clause"},
    {"JSON for Modern C++", "automation and data", "MIT"},
    {"toml++", "register maps", "MIT"},
};

} // namespace

frmAbout2::frmAbout2(PanelContext& context, Uses uses)
    : Panel(context, "frmAbout2", "About this program"), uses_(std::move(uses)) {
    lblTitle.setCaption("Bench console for digitally controlled potentiometers");
    lblVersion.setCaption("Version " VRK_VERSION);
    lblLicence.setCaption("MIT License, (c) the vrkbench authors");
    for (int row = 0; row < kLibraries; ++row) {
        lblLibrary[row].setCaption(kUsed[row].name);
        lblPurpose[row].setCaption(kUsed[row].purpose);
        lblLibraryLicence[row].setCaption(kUsed[row].licence);
    }
    lblDisclaimer.setCaption(
        "For evaluation on the bench, by people who know its dangers. There is no warranty: check every "
        "setting "
        "before you rely on a measurement, and never let this program control what could hurt somebody or "
        "something when it stops.");
    cmdSysInfo.setCaption("System Info...");
    const std::optional<std::string> tool = uses_.tool == nullptr ? std::nullopt : uses_.tool->name();
    cmdSysInfo.setVisible(tool.has_value());
    cmdSysInfo.setToolTip("Opens " + tool.value_or("the system's information tool"));
    cmdOK.setCaption("OK");
    wireClick(cmdSysInfo, &frmAbout2::cmdSysInfo_Click);
    wireClick(cmdOK, &frmAbout2::cmdOK_Click);
}

void frmAbout2::cmdSysInfo_Click() {
    if (uses_.tool == nullptr)
        return;
    try {
        uses_.tool->open();
    } catch (const Fault& fault) {
        context().say(std::string("The system's information tool could not be opened: ") + fault.what());
    }
}

} // namespace vrk
