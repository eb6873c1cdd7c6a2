#include "shell/ProductExec.h"

#include "platform/files/SequentialInput.h"
#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <utility>
#include <vector>

namespace vrk {

ProductExec::ProductExec(PanelContext& context, Uses uses)
    : Panel(context, "ProductExec", "VRK Product Selection Parameter Table"), uses_(std::move(uses)) {
    lblField.setCaptions({"Description", "Selected Part", "Channels", "Taps", "Bus Adr"});
    cmdLoadParam.setCaption("Re-Load");
    cmdSaveParam.setCaption("Save As");
    cmdReturn.setCaption("Return");
    cmdReturn.setEnabled(false); // until a row is chosen
    Frame1.setCaption("Parameters");
    tGrid.setContainer(Frame1);
    Timer1.setInterval(Milliseconds{100});
    wireClick(cmdLoadParam, &ProductExec::cmdLoadParam_Click);
    wireClick(cmdSaveParam, &ProductExec::cmdSaveParam_Click);
    wireClick(cmdReturn, &ProductExec::cmdReturn_Click);
    tGrid.onClick([this] { tGrid_Click(); });
    action("tGrid_Click", &ProductExec::tGrid_Click);
    action("ReadParameters", &ProductExec::ReadParameters);
    action("WriteParameters", &ProductExec::WriteParameters);
    Timer1.onTimer([this] {
        Timer1.setRunning(false);
        cmdLoadParam_Click();
    });
}

void ProductExec::Form_Load() {
    tGrid.setSize(kMostRows, columns());
    Frame1.setVisible(false);
    showBusFields();
}

void ProductExec::showBusFields() {
    for (int field = 14; field <= 17; ++field) {
        lblField[field].setVisible(uses_.mode.SPIBusMode);
        lblDeviceSel[field].setVisible(uses_.mode.SPIBusMode);
    }
}

void ProductExec::Form_Activate() {
    // Asks for a file as soon as the table stands there for the first time.
    if (!std::exchange(displayed_, true))
        Timer1.setRunning(true);
}

void ProductExec::Form_QueryUnload() {
    // Closing the window returns without a choice.
    uses_.goBack();
}

void ProductExec::Form_Unload() {
    // Whoever waits for the table must not wait for ever.
    forgetChoice();
    uses_.choice.ProductReturned = true;
}

void ProductExec::forgetChoice() {
    uses_.choice = {};
    tGrid.setSelection(0, 0); // the row that is marked is the row that is chosen
    cmdReturn.setEnabled(false);
    for (auto& label : lblDeviceSel)
        label->setCaption("");
}

void ProductExec::ReadParameters(const std::string& path) {
    // Read whole before anything is cleared.
    const std::string content = readFile(context().workingFolder / path);
    SequentialInput input(content);
    tGrid.setSize(kMostRows, columns());
    tGrid.clearCells();
    showBusFields();
    int row = 0;
    bool ended = false;
    for (; row < kMostRows && !ended; ++row) {
        for (int column = 0; column < columns() && !ended; ++column) {
            const auto text = input.next();
            if (!text) {
                // A file that ends inside a row keeps that row; one that ends behind a row has none here.
                ended = true;
                if (column > 0)
                    ++row;
                break;
            }
            tGrid.setCell(row, column, *text);
            // The mark counts in the first column alone; elsewhere the word is a value.
            ended = column == 0 && upperCase(*text) == "END";
        }
        if (ended)
            break;
        input.skipLineEnds();
    }
    // The last row is the one behind the data, behind a full table as well: else its last part is out of
    // reach.
    tGrid.setSize(row + 1, columns());
    for (int column = 5; column <= lastColumn(); ++column)
        lblField[column].setCaption(tGrid.cell(0, column));
}

void ProductExec::WriteParameters(const std::string& path) {
    std::string content;
    for (int row = 0; row < tGrid.rows(); ++row) {
        std::string line;
        bool blank = true;
        for (int column = 0; column < tGrid.columns(); ++column) {
            const std::string& text = tGrid.cell(row, column);
            blank = blank && text.empty();
            line += sequentialField(text) + ",";
        }
        // The row behind the data is no data: neither a blank one nor the end mark goes out.
        const bool behind = row == tGrid.rows() - 1;
        if (behind && (blank || upperCase(tGrid.cell(row, 0)) == "END"))
            break;
        content += line + " \r\n";
    }
    replaceFile(context().workingFolder / path, content);
}

void ProductExec::cmdLoadParam_Click() {
    FileRequest request;
    request.filter = "All Files (*.*)|*.*|Read Data File(*.csv)|*.csv";
    request.filterIndex = 2;
    request.name = defaultName();
    request.defaultExtension = ".csv";
    const auto path = context().dialogs.chooseFile(request);
    if (!path)
        return;
    try {
        ReadParameters(*path);
        Frame1.setVisible(true);
        // A choice made in another file is none in this one.
        forgetChoice();
    } catch (const Fault& fault) {
        context().say(fault.what());
    }
}

void ProductExec::cmdSaveParam_Click() {
    FileRequest request;
    request.mode = FileRequest::Mode::Save;
    request.filter = "All Files (*.*)|*.*|Save Data File(*.csv)|*.csv";
    request.filterIndex = 2;
    request.defaultExtension = ".csv";
    if (const auto path = context().dialogs.chooseFile(request)) {
        try {
            WriteParameters(*path);
        } catch (const Fault& fault) {
            context().say(fault.what());
        }
    }
}

void ProductExec::tGrid_Click() {
    const int row = tGrid.row();
    if (row == 0)
        return; // the headings
    if (row >= tGrid.rows() - 1) {
        uses_.choice.ParamSelected = false;
        uses_.choice.ParamChanged = false;
        cmdReturn.setEnabled(false);
        for (int field = 0; field <= 8; ++field)
            lblDeviceSel[field].setCaption("");
        return;
    }
    for (int column = 0; column <= lastColumn(); ++column)
        lblDeviceSel[column].setCaption(tGrid.cell(row, column));
    uses_.choice.ParamSelected = true;
    uses_.choice.ParamChanged = true;
    cmdReturn.setEnabled(true);
}

void ProductExec::cmdReturn_Click() {
    uses_.choice.ProductReturned = true;
    (uses_.mode.SPIBusMode ? uses_.state.reloadSPIList : uses_.state.reloadI2CList) = true;
    uses_.goBack();
    events().letEventsRun();
}

} // namespace vrk
