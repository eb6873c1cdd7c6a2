#include "motherboard/Motherboard.h"

#include "motherboard/FrmVCCCal.h"
#include "motherboard/consoleMirror.h"
#include "platform/files/files.h"

#include <array>
#include <utility>

namespace vrk {

namespace {

/// The built-in code table: U5's code for each row of the volts list.
constexpr std::array<std::pair<const char*, const char*>, 10> kVccRows = {{{"2.7", "2C"},
                                                                           {"3.0", "35"},
                                                                           {"3.3", "3E"},
                                                                           {"3.5", "44"},
                                                                           {"4.0", "54"},
                                                                           {"4.5", "63"},
                                                                           {"5.0", "72"},
                                                                           {"Min", "00"},
                                                                           {"Mid", "3F"},
                                                                           {"Max", "7F"}}};
constexpr int kStartRow = 6;

/// Of a damaged file: a text that is more than a byte would keep every panel from opening.
std::string codeThatFits(const std::string& hex) {
    try {
        (void)hexToByte(hex);
        return hex;
    } catch (const Fault&) {
        return "--";
    }
}

} // namespace

Motherboard::Motherboard(PanelContext& context, modHID& link, AnalogState& analog, SupplyState& supply,
                         PanelSlot<frmMotherboardDAQ2>& console, PanelSlot<FrmVCCCal>& calibration)
    : context_(context),
      link_(link),
      analog_(analog),
      supply_(supply),
      console_(console),
      calibration_(calibration),
      boardRead_(link.observeBoardRead([this] { followBoard(); })) {}

SupplyPanel* Motherboard::active() const {
    return dynamic_cast<SupplyPanel*>(link_.activePanel);
}

void Motherboard::showSupplyState(int state) {
    SupplyPanel none;
    SupplyPanel& panel = active() != nullptr ? *active() : none;
    const auto lamp = [](Lamp* field, Colour colour) {
        if (field != nullptr)
            field->setColour(colour);
    };
    if (state == 0)
        lamp(panel.vccLamp(), Colour::LightRed);
    console_->OptVCC[state == 0 ? 0 : 1].setValue(true);
    if (state != 0)
        lamp(panel.vccLamp(), Colour::Black);
    if (supply_.TrackOn) {
        lamp(panel.minusLamp(), state == 0 ? Colour::LightRed : Colour::Black);
        if (OptionButton* option = panel.minusOption(state == 0 ? 0 : 1))
            option->setValue(true);
    }
    for (const int index : {0, 1})
        if (OptionButton* option = panel.minusOption(index))
            option->setEnabled(!supply_.TrackOn);
}

void Motherboard::followBoard() {
    frmMotherboardDAQ2* board = console_.loadedPanel();
    if (board == nullptr || !link_.attached())
        return;
    const bool other = std::exchange(followed_, link_.instance()) != link_.instance();
    const bool moved = board->followSupplyPins();
    if (other)
        board->boardChosen();
    SupplyPanel* panel = active();
    // Before a device panel is there nothing has been told that could be forgotten.
    if (panel != nullptr && panel->vccLamp() != nullptr && !board->OptVCC[0].value())
        boardForgot_ = true;
    if (panel != nullptr) {
        if (moved || other)
            panel->suppliesMoved();
        board->showSuppliesOn(*panel);
    }
}

void Motherboard::prepareBoard() {
    // Cleared first, since a Retry on the way may find the board without power.
    if (!std::exchange(boardForgot_, false))
        return;
    console_->resendImage();
    setUpSupplyDac();
}

void Motherboard::setUpSupplyDac() {
    frmMotherboardDAQ2& board = *console_;
    for (const auto& bytes : {std::array{"00", "50", "C0", "5F"}, std::array{"00", "50", "C2", "C0"}}) {
        for (int cell = 0; cell < 4; ++cell)
            board.txtSPIwr[cell].setText(bytes.at(static_cast<std::size_t>(cell)));
        board.cmdSPIWrite_Click();
    }
}

void Motherboard::initSupplyDefaults() {
    frmMotherboardDAQ2& board = *console_;
    board.setPin(frmMotherboardDAQ2::kPinVcc, 0); // the switch alone leaves it in the image without Track
    alignConsole(board, link_); // a board that was plugged in behind the consoles' load was told no pins
    board.OptVCCMinus[1].setValue(true);
    board.OptVCCMinus_Click(1);
    board.OptVCC[1].setValue(true);
    board.OptVCC_Click(1);
    setUpSupplyDac();
    context_.events.letEventsRun();

    SupplyPanel* panel = active();
    ComboBox* list = panel != nullptr ? panel->vccList() : nullptr;
    std::vector<RowControl::Row> rows;
    for (std::size_t row = 0; row < kVccRows.size(); ++row) {
        rows.push_back({kVccRows.at(row).first, 0});
        supply_.VCCHex[static_cast<int>(row)] = kVccRows.at(row).second;
    }
    if (list != nullptr) {
        list->setRows(std::move(rows));
        list->setListIndex(kStartRow);
    }
    board.lblCal_header.setCaption("Defaults");
    if (fileExists(context_.programFolder / CalibrationFile::kName))
        applyCalibration();
}

void Motherboard::applyCalibration() {
    FrmVCCCal& calibration = *calibration_;
    calibration.cdmRead_Cal_File_Click();
    std::vector<RowControl::Row> rows;
    for (int row = 1; row <= FrmVCCCal::kTargets; ++row) {
        rows.push_back({calibration.blbTargetV[row].caption(), 0});
        supply_.VCCHex[row - 1] = codeThatFits(calibration.lblTargetHex[row].caption());
    }
    for (const int row : {7, 8, 9})
        rows.push_back({kVccRows.at(static_cast<std::size_t>(row)).first, 0});
    SupplyPanel* panel = active();
    if (ComboBox* list = panel != nullptr ? panel->vccList() : nullptr) {
        list->setRows(std::move(rows));
        list->setListIndex(kStartRow);
    }
    console_->lblCal_header.setCaption(calibration.lblCal_header.caption());
    // A file that is cut short or damaged must not take the converter's scale away.
    if (CalibrationFile::volts(calibration.txtVrefCal.text()))
        analog_.ADRef = analog_.VrefCal;
    context_.events.letEventsRun();
}

} // namespace vrk
