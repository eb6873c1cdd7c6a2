#include "motherboard/FrmVCCCal.h"

#include "link/readings.h"
#include "motherboard/calibrationDamage.h"
#include "platform/files/files.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk {

namespace {

static_assert(kCalibrationTargets.size() == CalibrationFile::kTargets);

constexpr int kVccOn = 0;
constexpr int kVccOff = 1;
constexpr int kCodeCell = 7;               ///< of the console's row that writes the DAC's data
constexpr Milliseconds kSettle{10};        ///< between two readings
constexpr Milliseconds kShowsCleared{300}; ///< so that the user sees the fields filled anew
constexpr unsigned kVccBit = 0x20;         ///< of P2, as frmMotherboardDAQ2::kPinVcc
constexpr const char* kVoltsFormat = "0.0000";
constexpr const char* kReference = "3.3";
constexpr const char* kNone = "--";

/// A number beyond all bounds is none either: with it every reading would be.
bool isReference(const std::string& text) {
    return isNumeric(text) && std::isfinite(leadingNumber(text));
}

std::string millivolts(double volts) {
    return decimalText(std::llround(volts * 1000)) + " mV";
}

} // namespace

FrmVCCCal::FrmVCCCal(PanelContext& context, Uses uses)
    : Panel(context, "FrmVCCCal", "VRK VCC Calibration"), uses_(std::move(uses)) {
    wireFields();
    wireClick(cmdDoVCC_Cal, &FrmVCCCal::cmdDoVCC_Cal_Click);
    wireClick(cmdAbort, &FrmVCCCal::cmdAbort_Click);
    wireClick(cmdSaveCal, &FrmVCCCal::cmdSaveCal_Click);
    wireClick(cdmRead_Cal_File, &FrmVCCCal::cdmRead_Cal_File_Click);
    wireClick(cmdReturn, &FrmVCCCal::cmdReturn_Click);
    txtVrefCal.onLostFocus([this] { takeReference(); });
}

FrmVCCCal::~FrmVCCCal() {
    if (uses_.link.activePanel == this)
        uses_.link.activePanel = nullptr;
}

void FrmVCCCal::wireFields() {
    blbTargetV[0].setCaption("Volts");
    lblTargetHex[0].setCaption("Hex");
    lblTargetV[0].setCaption("Actual V");
    lblTargetV[kDoubled].setCaption("V * 2");
    for (int row = 1; row <= kTargets; ++row) {
        blbTargetV[row].setCaption(
            formatNumber(kCalibrationTargets.at(static_cast<std::size_t>(row - 1)), "0.0"));
        lblTargetHex[row].setCaption(kNone);
        lblTargetV[row].setCaption("0.0000");
        lblTargetV[row + kDoubled].setCaption("0.0000");
    }
    lblCalHex.setCaption(kNone);
    lblCalVolts.setCaption("--------");
    txtVrefCal.setText(kReference);
    txtVrefCal.setCaption("VREF Voltage");
    txtVrefCal.setToolTip("Option to adjust VREF (VDD) value used in AD Calculations.");
    cmdDoVCC_Cal.setCaption("Run Calibrate");
    cmdAbort.setCaption("Abort Calibration");
    cmdAbort.setEnabled(false);
    cmdSaveCal.setCaption("Write Calibration File");
    cmdSaveCal.setEnabled(false);
    cdmRead_Cal_File.setCaption("Read Calibration File");
    cmdReturn.setCaption("Return to Menu");
    OptVM.setCaptions({"On", "Off"});
    for (auto& option : OptVM) {
        option->join(minusGroup_);
        option->setContainer(fraSupply);
    }
    ChkTrack.setCaption("Track V+");
    ChkTrack.setContainer(fraSupply);
    fraSupply.setEnabled(false);
    ShpVCCon.setCaption("VCC");
    ShVM.setCaption("V-");
}

void FrmVCCCal::Form_Load() {
    lblCalStatus.setCaption("----");
    showTracking();
}

void FrmVCCCal::Form_Activate() {
    uses_.link.activePanel = this;
    cmdSaveCal.setEnabled(false); // only what has just been measured may be written
    showSupplies();
}

void FrmVCCCal::Form_QueryUnload() {
    if (!running_ && vccOn())
        switchVccOff();
}

void FrmVCCCal::Form_Unload() {
    uses_.state.CalRunning = 0; // a sweep that is still on the stack must find its end
    if (uses_.link.activePanel == this)
        uses_.link.activePanel = nullptr;
}

void FrmVCCCal::showTracking() {
    ChkTrack.showValue(uses_.supply.TrackOn ? 1 : 0);
    for (auto& option : OptVM)
        option->setEnabled(!uses_.supply.TrackOn);
}

void FrmVCCCal::showSupplies() {
    showTracking();
    if (frmMotherboardDAQ2* console = uses_.board.loadedPanel())
        console->showSuppliesOn(*this);
}

void FrmVCCCal::suppliesMoved() {
    lblCalVolts.markStale("a supply was switched since");
}

void FrmVCCCal::showRows(const std::string& target, const std::string& result) {
    for (int row = 1; row <= kTargets; ++row) {
        blbTargetV[row].setCaption(
            target.empty() ? formatNumber(kCalibrationTargets.at(static_cast<std::size_t>(row - 1)), "0.0")
                           : target);
        for (Label* field : {&lblTargetHex[row], &lblTargetV[row], &lblTargetV[row + kDoubled]})
            field->setCaption(result);
    }
}

// ---- the sweep

void FrmVCCCal::setRunning(bool running) {
    running_ = running;
    for (Control* control :
         std::initializer_list<Control*>{&cmdDoVCC_Cal, &txtVrefCal, &cdmRead_Cal_File, &cmdReturn})
        control->setEnabled(!running);
    cmdSaveCal.setEnabled(false);
    cmdAbort.setEnabled(running);
}

void FrmVCCCal::cmdDoVCC_Cal_Click() {
    if (running_)
        throw Fault("A calibration is running.");
    setRunning(true);
    uses_.state.CalRunning = -1;
    try {
        const CalibrationEnd end = sweep();
        end == CalibrationEnd::Completed ? completed() : stopped(end);
    } catch (const Fault&) {
        brokenOff();
        throw;
    }
}

CalibrationEnd FrmVCCCal::sweep() {
    Activity activity(context().activities, "VCC calibration", [this] { uses_.state.CalRunning = 0; });
    const Milliseconds began = context().clock().now();
    run_ = {};
    if (fileExists(filePath())) {
        try {
            run_.before = CalibrationFile::read(filePath(), {});
        } catch (const Fault&) {
            // It only stands behind the new curve.
        }
    }
    changed_.emit(Change::Began);
    pump();
    lblCalStatus.setCaption("Calibration in Process");
    showRows({}, kNone);
    uses_.motherboard.showSupplyState(kVccOn);
    rtxt1.clear();
    board().Combo1.setListIndex(uses_.analog.MuxVCCIndex);
    pump();
    run_.reference = uses_.analog.ADRef;
    CalibrationSweep sweep(*this, [this, &activity](const CalibrationPoint& point) {
        activity.progress(point.code + 1, kCalibrationCodes);
        showPoint(point);
    });
    run_.end = sweep.run();
    run_.took = context().clock().now() - began;
    return *run_.end;
}

void FrmVCCCal::setCode(int code) {
    const std::string hex = byteToHex2(toByte(code));
    board().txtSPIwr[kCodeCell].setText(hex);
    lblCalHex.setCaption(hex);
    board().cmdSPIWrite2_Click();
    pump();
}

double FrmVCCCal::convert() {
    wait(kSettle);
    board().READ_AD();
    return uses_.analog.ADVolts;
}

void FrmVCCCal::recover() {
    // The list stands on the channel already, and would send nothing.
    board().Combo1_Click();
}

bool FrmVCCCal::undisturbed(int code) const {
    return board().OptVCC[kVccOn].value() && board().Combo1.listIndex() == uses_.analog.MuxVCCIndex &&
           board().txtSPIwr[kCodeCell].text() == byteToHex2(toByte(code));
}

void FrmVCCCal::showPoint(const CalibrationPoint& point) {
    const std::string volts = formatNumber(point.volts, "#0.000000");
    rtxt1.append(byteToHex2(toByte(point.code)) + "   ,  " + volts + "\r\n");
    run_.points.push_back(point);
    lblCalVolts.setCaption(volts);
    markReading(lblCalVolts, point.read);
    changed_.emit(Change::Measured);
}

void FrmVCCCal::showChoices() {
    showRows({}, kNone); // a file may have been read into them meanwhile, for a panel that was opened
    for (int row = 1; row <= kTargets; ++row) {
        const CalibrationChoice& choice = run_.choices.at(static_cast<std::size_t>(row - 1));
        lblTargetHex[row].setCaption(byteToHex2(toByte(choice.code)));
        lblTargetV[row].setCaption(formatNumber(choice.volts, kVoltsFormat));
        lblTargetV[row + kDoubled].setCaption(formatNumber(choice.vcc(), kVoltsFormat));
    }
}

void FrmVCCCal::completed() {
    run_.choices = chooseCodes(run_.points);
    showChoices();
    switchVccOff();
    setRunning(false);
    cmdSaveCal.setEnabled(true);
    pump();
    lblCalStatus.setCaption("Completed");
    if (sound()) {
        tell(true, "Calibrated, off by " + millivolts(worstResidual(run_.choices)) + " at most",
             "VCC switched off; not saved yet");
    } else {
        const auto all = findings();
        for (const CalibrationFinding& finding : all)
            if (!finding.good) {
                tell(false, "The supply cannot be calibrated", finding.text, &lblCalStatus);
                break;
            }
    }
    changed_.emit(Change::Ended);
}

void FrmVCCCal::stopped(CalibrationEnd end) {
    const std::string where = "at code " + lblCalHex.caption();
    if (end == CalibrationEnd::Disturbed && vccOn())
        switchVccOff();
    setRunning(false);
    uses_.state.CalRunning = 0;
    lblCalStatus.setCaption("Calibration Aborted");
    if (end == CalibrationEnd::Aborted)
        tell(false, "Calibration aborted " + where,
             vccOn() ? "VCC stays on; Return to Menu switches it off" : "VCC is off");
    else
        tell(false, "Calibration ended " + where, "another action or the board has moved the supply",
             &lblCalStatus);
    changed_.emit(Change::Ended);
}

void FrmVCCCal::brokenOff() {
    setRunning(false);
    uses_.state.CalRunning = 0;
    lblCalStatus.setCaption("Calibration Aborted");
    try {
        switchVccOff();
    } catch (const Fault&) {
        tell(false, "VCC may still be on", "the calibration was broken off", &lblCalStatus);
    }
    changed_.emit(Change::Ended);
}

bool FrmVCCCal::vccOn() const {
    return uses_.board.loaded() && (uses_.ports.PBuf[2] & kVccBit) != 0;
}

void FrmVCCCal::switchVccOff() {
    const bool shownOn = board().OptVCC[kVccOn].value();
    board().setPin(frmMotherboardDAQ2::kPinVcc, 0);
    uses_.motherboard.showSupplyState(kVccOff);
    if (!shownOn) // its switch has sent nothing
        board().cmdWrtPipe1_Click();
    showSupplies();
    lblCalVolts.markStale("VCC was switched off since");
}

void FrmVCCCal::cmdAbort_Click() {
    uses_.state.CalRunning = 0;
    pump();
}

std::vector<CalibrationFinding> FrmVCCCal::findings() const {
    if (!run_.completed())
        return {};
    auto all = judgeCalibration(run_.points, run_.choices);
    for (int row = 1; row <= kTargets; ++row)
        if (lblTargetHex[row].caption() !=
            byteToHex2(toByte(run_.choices.at(static_cast<std::size_t>(row - 1)).code))) {
            all.push_back({false, "the table no longer shows what was measured"});
            break;
        }
    // A text that is no number is saved as the built-in one.
    const std::string saved = isReference(txtVrefCal.text()) ? txtVrefCal.text() : kReference;
    if (CalibrationFile::volts(saved) != run_.reference)
        all.push_back({false, "measured with a reference of " + doubleText(run_.reference) +
                                  " V, but VREF Voltage is " + txtVrefCal.text()});
    all.push_back(vccOn() ? CalibrationFinding{false, "VCC is still on"}
                          : CalibrationFinding{true, "VCC is off again"});
    return all;
}

bool FrmVCCCal::sound() const {
    const auto all = findings();
    return run_.completed() && std::all_of(all.begin(), all.end(),
                                           [](const CalibrationFinding& finding) { return finding.good; });
}

// ---- the file

CalibrationFile FrmVCCCal::shownFile() const {
    CalibrationFile file;
    file.header = CalibrationFile::headerAt(context().clock().wallTime());
    file.reference = txtVrefCal.text();
    for (int row = 1; row <= kTargets; ++row)
        file.rows.at(static_cast<std::size_t>(row - 1)) = {
            blbTargetV[row].caption(), lblTargetHex[row].caption(), lblTargetV[row].caption(),
            lblTargetV[row + kDoubled].caption()};
    return file;
}

void FrmVCCCal::cmdSaveCal_Click() {
    uses_.state.CalRunning = 0;
    if (!isReference(txtVrefCal.text()))
        txtVrefCal.setText(kReference);
    uses_.analog.VrefCal = leadingNumber(txtVrefCal.text());
    const CalibrationFile file = shownFile();
    try {
        file.write(filePath());
    } catch (const Fault& fault) {
        lblCalStatus.setCaption("Cal File not written: " + std::string(fault.what()));
        tell(false, "The calibration file was not written", fault.what(), &lblCalStatus);
        return;
    }
    lblCal_header.setCaption(file.header);
    lblCalStatus.setCaption("Cal File Updated");
    tell(true, "Calibration file written", filePath().string());
    changed_.emit(Change::Saved);
}

void FrmVCCCal::cdmRead_Cal_File_Click() {
    showRows("x.x", kNone);
    txtVrefCal.setText("---");
    pump();
    wait(kShowsCleared);
    if (!fileExists(filePath())) {
        // The name in the message is another one than the file's; users know it so.
        context().say(context().programFolder.string() +
                      "\\VRK_Cal_Data2.txt ... VCC Calibration File does not exist");
        changed_.emit(Change::FileRead);
        return;
    }
    CalibrationFile file = shownFile(); // a file that ends early leaves the rest as cleared
    file.header.clear();
    try {
        file = CalibrationFile::read(filePath(), file);
        lblCalStatus.setCaption("Cal File Read");
        if (const std::string damage = calibrationDamage(file); !damage.empty())
            tell(false, "The calibration file is damaged", damage, &lblCalStatus);
    } catch (const Fault& fault) {
        // Without a box: a panel opens with this, and its levels say that they have no code.
        lblCalStatus.setCaption("Cal File not read: " + std::string(fault.what()));
        tell(false, "The calibration file was not read", fault.what(), &lblCalStatus);
    }
    lblCal_header.setCaption(file.header);
    txtVrefCal.setText(file.reference);
    uses_.analog.VrefCal = leadingNumber(file.reference);
    for (int row = 1; row <= kTargets; ++row) {
        const CalibrationFile::Row& fields = file.rows.at(static_cast<std::size_t>(row - 1));
        blbTargetV[row].setCaption(fields.target);
        lblTargetHex[row].setCaption(fields.hex);
        lblTargetV[row].setCaption(fields.volts);
        lblTargetV[row + kDoubled].setCaption(fields.vcc);
    }
    changed_.emit(Change::FileRead);
}

void FrmVCCCal::takeReference() {
    if (!isReference(txtVrefCal.text()))
        txtVrefCal.setText(kReference);
    uses_.analog.ADRef = uses_.analog.VrefCal = leadingNumber(txtVrefCal.text());
    if (uses_.analog.ADRef <= 0)
        tell(false, "VREF Voltage is not above 0", "every voltage will read 0 or less", &txtVrefCal);
}

void FrmVCCCal::cmdReturn_Click() {
    // After an abort VCC is still on, and no page behind this one has its switch.
    if (vccOn())
        switchVccOff();
    uses_.returnToMenu();
    pump();
}

} // namespace vrk
