#include "panels/blocks/tableRows.h"
#include "panels/spi/frmVRK_SPI1.h"
#include "platform/runtime/text.h"

#include <array>

namespace vrk {

namespace {

/// Columns of the product table that are this bus's own.
enum Column : int {
    kAcr = 6,
    kWriteBytes = 14,
    kReadBytes = 15,
};

/// Where a command of the table goes.
struct CommandColumn {
    int column;
    bool mayBeMissing; ///< a part need not have the register, but it has a wiper
    TextBox& (*box)(frmVRK_SPI1& panel);
};
constexpr std::array<CommandColumn, 6> kCommands = {{
    {5, true, [](frmVRK_SPI1& p) -> TextBox& { return p.txtACRAddress[1]; }},
    {7, true, [](frmVRK_SPI1& p) -> TextBox& { return p.txtACRAddress[0]; }},
    {8, true, [](frmVRK_SPI1& p) -> TextBox& { return p.txtGPAddress[1]; }},
    {9, true, [](frmVRK_SPI1& p) -> TextBox& { return p.txtGPAddress[0]; }},
    {10, false, [](frmVRK_SPI1& p) -> TextBox& { return p.txtBaseVRKWriteAddress; }},
    {11, false, [](frmVRK_SPI1& p) -> TextBox& { return p.txtBaseVRKReadAddress; }},
}};

bool hasNoId(const std::string& id) {
    return id.empty() || id == "NA";
}

} // namespace

std::string frmVRK_SPI1::tableRowFault(const ProductTable& table) const {
    if (std::string fault = sizesFault(table); !fault.empty())
        return fault;
    if (!hasNoId(table.field(kTableAddress)) && !isHexByte(table.field(kTableAddress)))
        return cellFault(table, kTableAddress, "an ID of two hexadecimal digits or NA");
    for (const auto& [column, mayBeMissing, box] : kCommands)
        if (!(mayBeMissing && table.field(column) == "NA") && !isHexByte(table.field(column)))
            return cellFault(table, column,
                             mayBeMissing ? "a command of two hexadecimal digits or NA"
                                          : "a command of two hexadecimal digits");
    if (table.field(kAcr) != "NA" && !isHexByte(table.field(kAcr)))
        return cellFault(table, kAcr, "a byte of two hexadecimal digits or NA");
    for (const int column : {kWriteBytes, kReadBytes})
        if (!isWholeBetween(table.field(column), 1, kMostSpiBytes))
            return cellFault(table, column, "a frame of 1 to 5 bytes");
    return {};
}

void frmVRK_SPI1::mnu_SPI_List_Click() {
    if (companions_.tenBit.visible())
        companions_.tenBit.hide();
    chooseFromTable();
}

void frmVRK_SPI1::takeTableRow(const ProductTable& table) {
    leaveFamily();
    const std::string id = table.field(kTableAddress);
    chkSendID.setValue(hasNoId(id) ? 0 : 1);
    lblProduct.setCaption(table.field(kTableProduct));
    wipers.channelCount = decimalInt(table.field(kTableChannels));
    wipers.TapCount = decimalInt(table.field(kTableTaps));
    txtDeviceAdr.setText(twoDigits(id));
    for (const CommandColumn& command : kCommands)
        command.box(*this).setText(twoDigits(table.field(command.column)));
    txtACR[0].setText(twoDigits(table.field(kAcr)));
    txtSPIWrCount.setText(table.field(kWriteBytes));
    txtSPIRDQuantity.setText(table.field(kReadBytes));
    cboRegSize.setListIndex(1);
    cboDataSize.setListIndex(1);
    selectSizes();
    applyFamily();
    tell(true, lblProduct.caption() + " chosen from the table",
         hasNoId(id) ? "no ID" : "ID " + txtDeviceAdr.text() + " hex", &lblProduct);
}

void frmVRK_SPI1::setBusOptions(const BusOptions& options) {
    console().chk2WireRead.setValue(options.twoWireRead);
    console().chkRandom.setValue(options.random);
}

void frmVRK_SPI1::takeBusOptions() {
    if (optionsBefore_)
        return; // taken already; what the user has set on the console since stays
    optionsBefore_ = BusOptions{console().chk2WireRead.value(), console().chkRandom.value()};
    setBusOptions({.twoWireRead = 1, .random = 0});
}

void frmVRK_SPI1::leaveFamily() {
    if (companions_.tenBit.visible())
        companions_.tenBit.hide();
    Frq4410Show.setVisible(false);
    for (Frame* frame : {&fraADDRSelect, &SSFrame2, &FrmShutdown, &frmRegisterWrite})
        frame->setVisible(true);
    numberChannels();
    beforeMenu();
}

void frmVRK_SPI1::applyFamily() {
    const bool tenBit = productStarts("Q3310/1");
    const bool quad = productStarts("Q4420/1");
    if (!quad)
        hideInstructions();
    if (!tenBit && !quad)
        return;
    for (Frame* frame : {&frmRegisterWrite, &fraADDRSelect, &SSFrame2, &FrmShutdown})
        frame->setVisible(false);
    lblChanSend[0].setCaption("A0");
    lblChanRcvr[0].setCaption(tenBit ? "80" : "90");
    if (tenBit) {
        companions_.tenBit->frq331x.setCaption("Q3310/0 Table 3 Instruction Set");
        companions_.tenBit.show();
        return;
    }
    prepareInstructions(loadInstructions());
    Frq4410Show.setVisible(true);
    takeBusOptions();
}

} // namespace vrk
