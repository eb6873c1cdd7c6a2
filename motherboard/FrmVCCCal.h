#pragma once

#include "motherboard/CalibrationFile.h"
#include "motherboard/CalibrationSweep.h"
#include "motherboard/Motherboard.h"
#include "platform/controls/Panel.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// Calibrates the VCC supply: measures it at every code of its DAC, takes for each of seven levels the code
/// that comes closest, and keeps them in a file from which every panel takes its levels.
class FrmVCCCal final : public Panel, public SupplyPanel, private CalibrationRig {
  public:
    static constexpr int kTargets = CalibrationFile::kTargets;
    /// Distance of the real volts from the volts at the pin in lblTargetV.
    static constexpr int kDoubled = 8;

    struct Uses {
        PanelSlot<class frmMotherboardDAQ2>& board;
        Motherboard& motherboard;
        modHID& link;
        AnalogState& analog;
        PortState& ports;
        SupplyState& supply;
        CalibrationState& state;
        /// Hides this panel and shows the start panel.
        std::function<void()> returnToMenu;
    };

    /// What the last sweep of this panel came to.
    struct Run {
        std::vector<CalibrationPoint> points;
        CalibrationChoices choices{};
        std::optional<CalibrationEnd> end; ///< nothing while it runs, or when a fault ended it
        Milliseconds took{0};
        double reference = 0;                  ///< volts at full scale that it was measured with
        std::optional<CalibrationFile> before; ///< the file as it was when the sweep began
        bool completed() const { return end == CalibrationEnd::Completed; }
    };
    enum class Change { Began, Measured, Ended, Saved, FileRead };

    FrmVCCCal(PanelContext& context, Uses uses);
    ~FrmVCCCal() override;

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload() override;
    bool closeHides() const override { return true; }
    void Form_Unload() override;

    // Index 0 of the arrays, and 8 of the volts, is the heading of a column.
    ControlArray<Label> blbTargetV{*this, "blbTargetV", 0, kTargets};
    ControlArray<Label> lblTargetHex{*this, "lblTargetHex", 0, kTargets};
    ControlArray<Label> lblTargetV{*this, "lblTargetV", 0, kDoubled + kTargets};
    Label lblCalHex{*this, "lblCalHex"};
    Reading lblCalVolts{*this, "lblCalVolts"};
    TextLog rtxt1{*this, "rtxt1"};
    Label lblCal_header{*this, "lblCal_header"};
    Label lblCalStatus{*this, "lblCalStatus"};
    TextBox txtVrefCal{*this, "txtVrefCal"};
    Button cmdDoVCC_Cal{*this, "cmdDoVCC_Cal"};
    Button cmdAbort{*this, "cmdAbort"};
    Button cmdSaveCal{*this, "cmdSaveCal"};
    Button cdmRead_Cal_File{*this, "cdmRead_Cal_File"};
    Button cmdReturn{*this, "cmdReturn"};
    // The supplies as they are: the sweep switches them, and the motherboard's console.
    Frame fraSupply{*this, "fraSupply"};
    ControlArray<OptionButton> OptVM{*this, "OptVM", 0, 1};
    CheckBox ChkTrack{*this, "ChkTrack"};
    Lamp ShpVCCon{*this, "ShpVCCon"};
    Lamp ShVM{*this, "ShVM"};

    /// Runs the sweep to its end or to Abort. After an abort VCC stays as it is.
    void cmdDoVCC_Cal_Click();
    void cmdAbort_Click();
    /// Writes what the fields show. A file that cannot be written is told in lblCalStatus; the old one stays.
    void cmdSaveCal_Click();
    /// Fills the fields from the file, and VrefCal; waits for 300 ms first.
    void cdmRead_Cal_File_Click();
    void cmdReturn_Click();

    std::filesystem::path filePath() const { return context().programFolder / CalibrationFile::kName; }
    bool running() const { return running_; }
    const Run& lastRun() const { return run_; }
    /// What speaks for and against saving; empty unless the last sweep ran to its end.
    std::vector<CalibrationFinding> findings() const;
    /// No finding speaks against saving.
    bool sound() const;
    [[nodiscard]] Subscription observeRuns(std::function<void(Change)> observer) {
        return changed_.connect(std::move(observer));
    }

    Lamp* vccLamp() override { return &ShpVCCon; }
    Lamp* minusLamp() override { return &ShVM; }
    OptionButton* minusOption(int index) override { return &OptVM[index]; }
    CheckBox* trackBox() override { return &ChkTrack; }
    void suppliesMoved() override;

  private:
    // A sweep's rig.
    void setCode(int code) override;
    double convert() override;
    unsigned losses() const override { return uses_.link.retries() + uses_.link.refusals(); }
    void recover() override;
    bool undisturbed(int code) const override;
    bool aborted() const override { return uses_.state.CalRunning == 0; }
    void letEventsRun() override { pump(); }

    frmMotherboardDAQ2& board() const { return *uses_.board; }
    void wireFields();
    void showRows(const std::string& target, const std::string& result);
    void showTracking();
    void showSupplies();
    void setRunning(bool running);
    CalibrationEnd sweep();
    void showPoint(const CalibrationPoint& point);
    void showChoices();
    void completed();
    void stopped(CalibrationEnd end);
    void brokenOff();
    bool vccOn() const;
    /// Whatever Track says: the console's own switch needs it to take VCC off.
    void switchVccOff();
    void takeReference();
    CalibrationFile shownFile() const;

    Uses uses_;
    OptionGroup minusGroup_;
    Signal<Change> changed_;
    Run run_;
    bool running_ = false;
};

} // namespace vrk
