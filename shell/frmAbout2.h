#pragma once

#include "platform/controls/Panel.h"
#include "platform/runtime/InformationTool.h"

#include <functional>

namespace vrk {

/// The about box: which version this is, under which licence it and its libraries are, what it does not
/// promise, and the way to the system's own information tool.
class frmAbout2 final : public Panel {
  public:
    struct Uses {
        InformationTool* tool = nullptr; ///< nullptr: nobody can say whether there is one
        std::function<void()> close;
    };
    static constexpr int kLibraries = 7;

    frmAbout2(PanelContext& context, Uses uses);

    Label lblTitle{*this, "lblTitle"};
    Label lblVersion{*this, "lblVersion"};
    Label lblLicence{*this, "lblLicence"};
    ControlArray<Label> lblLibrary{*this, "lblLibrary", 0, kLibraries - 1};
    /// What the library is for
    ControlArray<Label> lblPurpose{*this, "lblPurpose", 0, kLibraries - 1};
    ControlArray<Label> lblLibraryLicence{*this, "lblLibraryLicence", 0, kLibraries - 1};
    Label lblDisclaimer{*this, "lblDisclaimer"};
    /// Out of sight where the system has no such tool
    Button cmdSysInfo{*this, "cmdSysInfo"};
    Button cmdOK{*this, "cmdOK"};

    /// A tool that cannot be started is told in a box.
    void cmdSysInfo_Click();
    void cmdOK_Click() { uses_.close(); }

  private:
    Uses uses_;
};

} // namespace vrk
