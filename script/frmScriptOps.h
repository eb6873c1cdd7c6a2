#pragma once

#include "motherboard/SupplyPanel.h"
#include "panels/blocks/BenchServices.h"
#include "script/ConsoleBus.h"
#include "script/LoopHost.h"
#include "script/ScriptCheck.h"
#include "script/ScriptDebugger.h"
#include "script/ScriptFile.h"
#include "script/ScriptRecorder.h"
#include "script/ScriptRehearsal.h"
#include "script/ScriptResults.h"
#include "script/ScriptRun.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// The script panel: loads a script into the step table, runs it, saves it with what was read.
class frmScriptOps final : public Panel, public SupplyPanel, private ScriptFields, private ScriptObserver {
  public:
    struct Uses {
        BenchServices& services;
        const BusMode& mode; ///< set by the panel that opens this one
        RunState& run;
        ScriptState& script;
        /// Address on the I2C panel if it lives, else "50": a script never loads that panel.
        std::function<std::string()> deviceAddress;
        /// Makes a simulated bench for rehearsals; empty: there are none.
        RehearsalFactory rehearsalBench{};
        /// Where breakpoints outlive the program; nullptr: they go with it.
        BreakpointStore* breakpoints = nullptr;
        /// The device panel behind this one, which shows the supplies of the part; nullptr: none.
        std::function<SupplyPanel*()> supplied{};
    };

    frmScriptOps(PanelContext& context, Uses uses);
    ~frmScriptOps() override;

    void Form_Load() override;
    void Form_Activate() override { showBus(); }
    /// The headings are those of the bus that the panel was opened for.
    void showBus();
    void Form_Unload() override;
    bool closeHides() const override { return true; }

    // This panel counts as the one in front from a run on, and shows no supply: what moves one meanwhile is
    // shown on the device panel, where the user switches it.
    Lamp* vccLamp() override { return behind().vccLamp(); }
    Lamp* minusLamp() override { return behind().minusLamp(); }
    OptionButton* vccOption(int index) override { return behind().vccOption(index); }
    OptionButton* minusOption(int index) override { return behind().minusOption(index); }
    bool switchesVcc() override { return behind().switchesVcc(); }
    CheckBox* trackBox() override { return behind().trackBox(); }
    void suppliesMoved() override { behind().suppliesMoved(); }

    /// The window's heading: which script is loaded.
    Label lblCaption{*this, "lblCaption"};
    /// Rows from 1 under a row of headings, columns from 1: column 0 holds nothing.
    Grid vbalGrid1{*this, "vbalGrid1"};
    MenuEntry mnuScript_Read{*this, "mnuScript_Read"};
    TextBox txtI2CAdr{*this, "txtI2CAdr"};
    Button cmdReload2{*this, "cmdReload2"};
    /// Where and why the last load ended early, or what file could not be read.
    Label lblLoadStatus{*this, "lblLoadStatus"};
    TextBox txtScriptLine1{*this, "txtScriptLine1"};

    Frame frmScriptExec{*this, "frmScriptExec"};
    Button cmdExecAll{*this, "cmdExecAll"};
    Button cmdRunContinuous{*this, "cmdRunContinuous"};
    Button cmdAbort{*this, "cmdAbort"};
    Button cmdGo{*this, "cmdGo"};
    Button cmdStep{*this, "cmdStep"};
    CheckBox chkAOF{*this, "chkAOF"};
    CheckBox chkPauseOnFail{*this, "chkPauseOnFail"};
    TextBox txtRunning{*this, "txtRunning"};
    TextBox txtTotLines{*this, "txtTotLines"};
    TextBox txttotReads{*this, "txttotReads"};
    TextBox txtRdPass{*this, "txtRdPass"};
    TextBox txtRdFails{*this, "txtRdFails"};
    TextBox txtLoopCount{*this, "txtLoopCount"};

    Frame frameInterrupt{*this, "frameInterrupt"};
    CheckBox chkISample{*this, "chkISample"};
    Button cmdISample{*this, "cmdISample"};
    TextBox txtIstart{*this, "txtIstart"};
    TextBox txtIend{*this, "txtIend"};
    TextBox txtIexec{*this, "txtIexec"};
    TextBox txtIdetectStep{*this, "txtIdetectStep"};
    TextBox txtIEnableStep{*this, "txtIEnableStep"};
    TextBox txtIDisableStep{*this, "txtIDisableStep"};
    TextBox txtLastRead{*this, "txtLastRead"};
    TextBox txtIDefault{*this, "txtIDefault"};
    ControlArray<Lamp> shpISample{*this, "shpISample", 0, 0};

    Frame frmDataRecord{*this, "frmDataRecord"};
    TextBox txtFilePath{*this, "txtFilePath"};
    Button cmdBrowse{*this, "cmdBrowse"};
    CheckBox chkAppend{*this, "chkAppend"};
    ControlArray<Button> cmdStartRec{*this, "cmdStartRec", 0, 0};
    Label Label18{*this, "Label18"};

    Button cmdRehearse{*this, "cmdRehearse"};
    Label lblRehearsal{*this, "lblRehearsal"};

    // What is done on the I2C panel, as rows of a new script
    Button cmdRecord{*this, "cmdRecord"};
    Button cmdRecordStop{*this, "cmdRecordStop"};
    Button cmdRecordSave{*this, "cmdRecordSave"};

    /// Reports of the last run: JUnit, JSON, CSV
    ControlArray<Button> cmdReport{*this, "cmdReport", 0, 2};

    /// Asks for a file and loads it; what stops the load is told in lblLoadStatus.
    void ReadScriptFile();
    /// The same of a file that is known.
    void openFile(const std::string& path);
    /// Loads the file chosen. \throws Fault; a file that cannot be read leaves the script that is loaded
    void LoadScriptFile();
    void cmdReload2_Click();
    void txtI2CAdr_Enter();
    void cmdBrowse_Click();
    void cmdStartRec_Click(int index);
    void UpdateExpected();
    void Auto_Script_Save();

    void cmdExecAll_Click();
    void cmdRunContinuous_Click();
    void cmdAbort_Click();
    /// Selects a row and runs it; the column is where the user pointed.
    void ExecStep(int row, int column);
    void cmdISample_Click();
    void chkISample_Click();
    /// The click on a row of the table.
    void vbalGrid1_Click();

    void cmdGo_Click();
    void cmdStep_Click();
    void chkPauseOnFail_Click();
    void RunFromHere(int row);
    void RunSelection(int first, int last);
    /// Runs a row again; the result that it had stays in the list.
    void RetryRow(int row);
    ScriptDebugger& debugger() { return debugger_; }
    const ScriptDebugger& debugger() const { return debugger_; }

    /// What a window asks ahead of a gesture that cannot be undone. Called by name, an action does as told.
    enum class Question {
        SaveUnread, ///< rows that were never read would be written as "--"
        ManyWrites  ///< the rehearsal says that the run wears the part's non-volatile cells
    };
    /// Gets the question and what to do once the user agrees. Empty: nobody asks.
    std::function<void(Question question, std::function<void()> goOn)> ask;
    std::string questionText(Question question) const;
    /// The gestures behind a window's own buttons: with the question, where there is one.
    void userRunFromHere(int row);
    void userRunSelection(int first, int last);

    void cmdRecord_Click();
    void cmdRecordStop_Click();
    void cmdRecordSave_Click();
    bool recording() const { return recording_; }
    /// What was recorded is in no file.
    bool unsavedRecording() const { return unsaved_; }
    void cmdReport_Click(int index);

    /// Runs the script on a simulated part. Its way out is that of a run: cmdAbort, or the band's Abort.
    void cmdRehearse_Click();
    /// Of the script as it is loaded; nothing if it was not rehearsed.
    const std::optional<Rehearsal>& rehearsal() const { return rehearsal_; }

    const ScriptResults& results() const { return collector_.results(); }
    /// As in ResultCollector.
    const RowResult* latest(int row) const { return collector_.latest(row); }
    int rowRuns(int row) const { return collector_.runs(row); }
    /// The innermost row that has begun and not ended; 0: none.
    int rowInProgress() const { return openRows_.empty() ? 0 : openRows_.back(); }
    int lastOfMainPart() const { return script_.EndMainStep - 1; }
    const std::vector<ScriptFinding>& findings() const { return findings_; }
    /// The file in the table, empty if there is none.
    const std::string& scriptPath() const { return loadedPath_; }
    /// Rows that hold expected data and have never been read: saving now would write "--" there.
    int unreadRows() const;
    /// The table, its findings or the results have changed. Once a pass and a load, not once a row.
    [[nodiscard]] Subscription observeScript(std::function<void()> observer) {
        return scriptChanged_.connect(std::move(observer));
    }
    /// A row begins, or has ended. Rows nest.
    [[nodiscard]] Subscription observeRows(std::function<void(int row, bool began)> observer) {
        return rowSteps_.connect(std::move(observer));
    }

  private:
    SupplyPanel& behind();
    void wireRuns();
    void wireFiles();
    void wireRecording();
    void takeLines(const std::vector<std::string>& lines, const std::string& title);
    void showLoaded();
    void showRecording();
    void record(const I2cTransfer& transfer);
    /// A recording that was never saved is asked for. \return true if it may go
    bool mayDiscard();
    std::string pathOfScript() const;
    void keepBreakpoints();
    void takeBreakpoints();
    void askForRun(bool endless, std::function<void()> run);
    Rehearsal rehearsed(std::function<bool()> goOn) const;
    void rehearseAhead();
    void showRehearsal(Rehearsal found);
    void debuggerMoved();
    void tellFail(int row);
    void mirror(int row, int column);
    void mirrorAll();
    void showLoadFault(const std::string& reason);
    void setRunButtons(bool enabled);
    /// Runs passes as one run: its results, its place in the band, its way for the debugger.
    void withRun(bool stepping, const std::function<ScriptEnd()>& passes);
    std::filesystem::path inWorkingFolder(const std::string& path) const {
        return context().workingFolder / path;
    }

    TextBox& box(Text field);
    const TextBox& box(Text field) const { return const_cast<frmScriptOps*>(this)->box(field); }
    std::string text(Text field) const override { return box(field).text(); }
    void setText(Text field, const std::string& text) override { box(field).setText(text); }
    bool sampling() const override { return chkISample.checked(); }
    void setSampling(bool on) override { chkISample.showValue(on ? 1 : 0); }
    bool abortOnFail() const override { return chkAOF.checked(); }
    void flipSampleLamp() override { shpISample[0].blinkGood(); }
    void darkenSampleLamp() override { shpISample[0].setColour(Colour::Black); }
    void passBegan(int first, int last) override;
    void passEnded(ScriptEnd end) override;
    void rowBegan(int row) override;
    void rowEnded(int row) override;

    Uses uses_;
    SupplyPanel nothing_; ///< stands for a device panel that is not there
    ScriptState& script_;
    ConsoleBus bus_;
    LoopHost host_;
    ScriptDebugger debugger_;
    ResultCollector collector_;
    ScriptRun run_;
    std::string chosenPath_; ///< of the last file dialog, what a reload reads
    std::string loadedPath_;
    bool loadedForSpi_ = false;
    std::vector<ScriptFinding> findings_;
    std::optional<Rehearsal> rehearsal_;
    bool rehearsedStopping_ = false; ///< chkAOF as the rehearsal had it
    bool rehearsing_ = false;
    bool stopRehearsal_ = false;
    std::vector<std::unique_ptr<Activity>> activities_; ///< one for each run on the stack
    ScriptRecorder recorder_;
    std::vector<std::string> recorded_;
    bool recording_ = false;
    bool unsaved_ = false; ///< what was recorded is in no file
    std::vector<int> openRows_;
    std::string breakpointPath_; ///< of the script that the breakpoints belong to
    int firstRow_ = 1;
    int lastRow_ = 0;
    Subscription debuggerWatch_;
    Subscription breakpointWatch_;
    Subscription transfers_;
    Signal<> scriptChanged_;
    Signal<int, bool> rowSteps_;
};

} // namespace vrk
