#include "script/frmScriptOps.h"

#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vrk {

namespace {

/// Passes whose rows stay to be looked at; a script may loop for days.
constexpr std::size_t kPassesKept = 100;

/// How the words begin that a table gets which was read for the other bus.
constexpr const char* kReadAs = "Read as an ";

/// Stands in the field for an address that no script can use.
constexpr const char* kAddressInstead = "60";

std::string titleOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

Colour shown(CellColour colour) {
    switch (colour) {
    case CellColour::White:
        return Colour::White;
    case CellColour::Red:
        return Colour::PureRed;
    case CellColour::Green:
        return Colour::PureGreen;
    case CellColour::None:
        break;
    }
    return Colour::Black;
}

} // namespace

frmScriptOps::frmScriptOps(PanelContext& panelContext, Uses uses)
    : Panel(panelContext, "frmScriptOps", "Script IC Send / Receive"),
      uses_(std::move(uses)),
      script_(uses_.script),
      bus_(uses_.services),
      host_(panelContext.events, panelContext.dialogs, [this] { Auto_Script_Save(); }),
      debugger_(host_, uses_.run.ScriptAbort),
      collector_(script_, *this, host_, kPassesKept),
      run_({script_, uses_.mode, uses_.run.ScriptAbort, *this, bus_, host_, &debugger_}) {
    run_.observe(collector_);
    run_.observe(*this);
    wireFiles();
    wireRuns();
    wireRecording();
    showBus();
}

frmScriptOps::~frmScriptOps() {
    if (uses_.services.link.activePanel == this)
        uses_.services.link.activePanel = nullptr;
}

SupplyPanel& frmScriptOps::behind() {
    SupplyPanel* const panel = uses_.supplied ? uses_.supplied() : nullptr;
    return panel != nullptr ? *panel : nothing_;
}

void frmScriptOps::wireFiles() {
    mnuScript_Read.setCaption("Open Script File");
    txtI2CAdr.setCaption("I2C Adr");
    cmdReload2.setCaption("Re-Load");
    cmdReload2.setEnabled(false); // until a file is chosen
    txtScriptLine1.setCaption("Last Load");
    frmDataRecord.setCaption("Update Expected Read Data && Save Script to File");
    for (Control* control : {static_cast<Control*>(&txtFilePath), static_cast<Control*>(&cmdBrowse),
                             static_cast<Control*>(&chkAppend), static_cast<Control*>(&cmdStartRec[0]),
                             static_cast<Control*>(&Label18)})
        control->setContainer(frmDataRecord);
    txtFilePath.setCaption("File");
    cmdBrowse.setCaption("Browse");
    chkAppend.setCaption("Append");
    cmdStartRec.setCaptions({"Write to Disk"});
    frmDataRecord.setEnabled(false); // until a run has ended

    mnuScript_Read.onClick([this] { ReadScriptFile(); });
    action("ReadScriptFile", &frmScriptOps::ReadScriptFile);
    action("LoadScriptFile", &frmScriptOps::LoadScriptFile);
    wireClick(cmdReload2, &frmScriptOps::cmdReload2_Click);
    wireClick(cmdBrowse, &frmScriptOps::cmdBrowse_Click);
    wireClick(cmdStartRec, &frmScriptOps::cmdStartRec_Click);
    cmdStartRec[0].onClick([this] {
        if (ask && unreadRows() > 0)
            ask(Question::SaveUnread, [this] { cmdStartRec_Click(0); });
        else
            cmdStartRec_Click(0);
    });
    action("UpdateExpected", &frmScriptOps::UpdateExpected);
    action("Auto_Script_Save", &frmScriptOps::Auto_Script_Save);
    txtI2CAdr.onKeyPress([this](int key) {
        if (key == kEnterKey)
            txtI2CAdr_Enter();
        return key;
    });
}

void frmScriptOps::showBus() {
    static constexpr const char* kHeadings[] = {"",        "Line",   "I2C Adr",   "Reg Adr", "Data_Wr",
                                                "Data_Rd", "Act_Rd", "Operation", "Comment"};
    vbalGrid1.setSize(std::max(1, vbalGrid1.rows()), ScriptRow::kColumns + 1);
    for (int column = 0; column <= ScriptRow::kColumns; ++column) {
        const bool ofI2c = column == static_cast<int>(ScriptColumn::Address) ||
                           column == static_cast<int>(ScriptColumn::Register);
        vbalGrid1.setCell(0, column, ofI2c && uses_.mode.SPIBusMode ? "" : kHeadings[column]);
    }
    if (script_.table.rows() > 0 && loadedForSpi_ != uses_.mode.SPIBusMode)
        lblLoadStatus.setCaption(std::string(kReadAs) + (loadedForSpi_ ? "SPI" : "I2C") +
                                 " script: " + cmdReload2.caption() + " reads it for the other bus");
    else if (startsWith(lblLoadStatus.caption(), kReadAs))
        lblLoadStatus.setCaption(""); // back on the bus that it was read for
}

void frmScriptOps::Form_Load() {
    // What an earlier panel had loaded is gone with it, but for the sizes of the rows.
    script_.table.restart();
    script_.ScriptRaw.clear();
    script_.EndMainStep = script_.IntStartStep = script_.IntEndStep = 0;
    script_.table.setWatcher([this](int row, int column) { mirror(row, column); });
    txtI2CAdr.setText(uses_.deviceAddress ? uses_.deviceAddress() : "50");
    try {
        script_.setBase(hexToByte(txtI2CAdr.text()));
    } catch (const Fault&) { // a device panel takes up to 100 hexadecimal, which is none on the bus
        tell(false, "A script cannot address " + txtI2CAdr.text(),
             std::string(kAddressInstead) + " is used until another is entered", &txtI2CAdr);
        txtI2CAdr.setText(kAddressInstead);
        script_.setBase(hexToByte(kAddressInstead));
    }
    lblCaption.setCaption("No Script File Selected");
    showBus();
}

void frmScriptOps::Form_Unload() {
    // A run that stands on the stack ends at its next row.
    uses_.run.ScriptAbort = true;
    stopRehearsal_ = true;
    debugger_.go();
    script_.table.setWatcher({});
    script_.ScriptLoaded = false;
}

void frmScriptOps::mirror(int row, int column) {
    if (column == 0) {
        vbalGrid1.setSelection(row, 1);
        return;
    }
    const auto place = static_cast<ScriptColumn>(column);
    vbalGrid1.setCell(row, column, script_.table.text(row, place));
    vbalGrid1.setCellColour(row, column, shown(script_.table.row(row).colour(place)));
}

void frmScriptOps::mirrorAll() {
    const int rows = script_.table.rows();
    vbalGrid1.setSize(1, ScriptRow::kColumns + 1);
    showBus();
    vbalGrid1.setSelection(0, 0);
    vbalGrid1.setSize(rows + 1, ScriptRow::kColumns + 1);
    for (int row = 1; row <= rows; ++row)
        for (int column = 1; column <= ScriptRow::kColumns; ++column)
            mirror(row, column);
}

void frmScriptOps::ReadScriptFile() {
    txtRunning.setText("");
    script_.ScriptLoaded = false;
    FileRequest request;
    request.title = "Select Script File to Open";
    request.filter = "Tessmark Script Files |*.txt|All Files|*.*";
    request.defaultExtension = "*.txt";
    const auto path = context().dialogs.chooseFile(request);
    if (path && !path->empty() && mayDiscard())
        openFile(*path);
}

void frmScriptOps::openFile(const std::string& path) {
    chosenPath_ = path;
    script_.ScriptLoaded = true;
    try {
        LoadScriptFile();
    } catch (const Fault& fault) {
        showLoadFault(fault.what());
    }
    cmdReload2.setEnabled(true);
}

void frmScriptOps::showLoadFault(const std::string& reason) {
    lblLoadStatus.setCaption(reason);
    tell(false, titleOf(chosenPath_) + " is not loaded", reason, &lblLoadStatus);
}

void frmScriptOps::LoadScriptFile() {
    // Read whole before anything is touched: a file that is no script leaves the one that is loaded.
    const std::vector<std::string> lines = scriptLines(readFile(inWorkingFolder(chosenPath_)));
    const std::string title = titleOf(chosenPath_);
    if (lines.empty())
        throw Fault(title + " is empty");
    unsaved_ = false;
    showRecording();
    loadedPath_ = chosenPath_;
    takeLines(lines, title);
    cmdReload2.setEnabled(true);
    tell(true, title + " loaded", decimalText(script_.TotalLines) + " lines", &vbalGrid1);
}

void frmScriptOps::takeLines(const std::vector<std::string>& lines, const std::string& title) {
    uses_.run.ScriptAbort = uses_.run.ScriptAbort || script_.ScriptRunning;
    debugger_.go();
    setRunButtons(false);
    cmdAbort.setEnabled(false); // a run that stands on the stack ends by itself: its rows are gone
    cmdReload2.setEnabled(false);
    frmDataRecord.setEnabled(false);
    lblLoadStatus.setCaption("");
    lblCaption.setCaption("[ " + title + " ]    Loading Script File .. Please Wait");
    txtScriptLine1.setText(shortTime(context().clock().wallTime()));
    rehearsal_.reset();
    lblRehearsal.setCaption("");
    loadedForSpi_ = uses_.mode.SPIBusMode;
    collector_.newTable();
    for (auto& report : cmdReport)
        report->setEnabled(!results().passes.empty());
    takeBreakpoints();
    {
        // Also what was read ahead of a line that stops the load.
        const OnScopeExit show([this] {
            mirrorAll();
            findings_ = checkScript(script_, uses_.mode);
            scriptChanged_.emit();
        });
        loadScript(script_, *this, lines, uses_.mode);
    }
    frmScriptExec.setEnabled(true);
    lblCaption.setCaption("[ " + title + " ]    Script IC Send / Receive");
    setRunButtons(!recording_);
}

void frmScriptOps::showLoaded() {
    lblCaption.setCaption("[ " + titleOf(loadedPath_) + " ]    Script IC Send / Receive");
}

std::string frmScriptOps::pathOfScript() const {
    return loadedPath_.empty() ? std::string() : inWorkingFolder(loadedPath_).lexically_normal().string();
}

void frmScriptOps::takeBreakpoints() {
    const std::string path = pathOfScript();
    if (path == breakpointPath_ && !path.empty())
        return; // the same file again
    if (path.empty() && recorded_.size() > 1)
        return; // the recording goes on
    breakpointPath_ = path;
    debugger_.setBreakpoints(uses_.breakpoints != nullptr && !path.empty()
                                 ? uses_.breakpoints->breakpoints(path)
                                 : std::set<int>());
}

void frmScriptOps::keepBreakpoints() {
    breakpointPath_ = pathOfScript();
    if (uses_.breakpoints != nullptr && !breakpointPath_.empty())
        uses_.breakpoints->keepBreakpoints(breakpointPath_, debugger_.breakpoints());
}

void frmScriptOps::setRunButtons(bool enabled) {
    for (Button* button : {&cmdExecAll, &cmdRunContinuous, &cmdStep})
        button->setEnabled(enabled);
}

void frmScriptOps::cmdReload2_Click() {
    uses_.run.ScriptAbort = false;
    if (!script_.ScriptLoaded)
        return;
    const bool runs = cmdExecAll.enabled();
    const bool steps = cmdStep.enabled(); // also while a run stands
    setRunButtons(false);
    cmdAbort.setEnabled(false);
    txtRdFails.setText("");
    txtRdPass.setText("");
    try {
        LoadScriptFile();
    } catch (const ScriptLoadFault& fault) {
        showLoadFault(fault.what());
    } catch (const Fault& fault) {
        showLoadFault(fault.what());
        setRunButtons(runs); // the script that is loaded stays, and its run, if there is one
        cmdStep.setEnabled(steps);
        cmdAbort.setEnabled(script_.ScriptRunning);
    }
    cmdReload2.setEnabled(true); // the user can mend the file
}

void frmScriptOps::txtI2CAdr_Enter() {
    txtI2CAdr.setText(upperCase(txtI2CAdr.text()));
    constexpr int kFirstRefused = 255;
    int address = kFirstRefused;
    try {
        address = hexToInt(txtI2CAdr.text());
    } catch (const Fault&) {
        address = kFirstRefused; // more digits than any address has
    }
    if (address < 0 || address >= kFirstRefused) {
        txtI2CAdr.setText(kAddressInstead);
        return;
    }
    script_.setBase(static_cast<std::uint8_t>(address));
    cmdReload2_Click();
}

void frmScriptOps::cmdBrowse_Click() {
    FileRequest request;
    request.mode = FileRequest::Mode::Save;
    request.title = "Select File For Update";
    request.filter = "All Files (*.*)|*.*|Script(*.txt)|*.txt";
    request.defaultExtension = "*.txt";
    const auto path = context().dialogs.chooseFile(request);
    if (path && !path->empty())
        txtFilePath.setText(*path);
}

void frmScriptOps::UpdateExpected() {
    updateExpected(script_);
}

int frmScriptOps::unreadRows() const {
    return vrk::unreadRows(script_);
}

void frmScriptOps::cmdStartRec_Click(int /*index*/) {
    try {
        UpdateExpected(); // of the table also where there is no file to write
        if (txtFilePath.text().empty())
            throw fileFault("write", "", ENOENT);
        const WallTime now = context().clock().wallTime();
        saveScript(script_, inWorkingFolder(txtFilePath.text()), chkAppend.checked(), now,
                   txtLoopCount.text());
        Label18.setCaption(numberToText(script_.ScriptRawNext()) + " Script written: " + shortDate(now) +
                           " " + shortTime(now));
        tell(true, "Script written", txtFilePath.text(), &Label18);
    } catch (const Fault& fault) {
        context().say(fault.what());
    }
}

void frmScriptOps::Auto_Script_Save() {
    txtFilePath.setText(savedScriptPath(loadedPath_));
    chkAppend.setValue(1);
    cmdStartRec_Click(0);
}

} // namespace vrk
