/// The recorder of the script panel, and the reports of its runs.

#include "script/frmScriptOps.h"

#include "link/modHID.h"
#include "link/reportLayout.h"
#include "platform/files/files.h"
#include "script/ScriptReports.h"

#include <array>
#include <utility>

namespace vrk {

namespace {

struct ReportKind {
    const char* caption;
    const char* filter;
    const char* extension;
};
constexpr std::array<ReportKind, 3> kReports = {{
    {"JUnit", "JUnit (*.xml)|*.xml|All Files (*.*)|*.*", ".xml"},
    {"JSON", "JSON (*.json)|*.json|All Files (*.*)|*.*", ".json"},
    {"CSV", "CSV (*.csv)|*.csv|All Files (*.*)|*.*", ".csv"},
}};

constexpr const char* kEndOfMainPart = "`ENDM";

} // namespace

void frmScriptOps::wireRecording() {
    cmdRecord.setCaption("Record");
    cmdRecord.setToolTip("Writes down what you do on the I2C panel as rows of a new script");
    cmdRecordStop.setCaption("Stop");
    cmdRecordSave.setCaption("Save");
    wireClick(cmdRecord, &frmScriptOps::cmdRecord_Click);
    wireClick(cmdRecordStop, &frmScriptOps::cmdRecordStop_Click);
    wireClick(cmdRecordSave, &frmScriptOps::cmdRecordSave_Click);
    for (std::size_t kind = 0; kind < kReports.size(); ++kind)
        cmdReport[static_cast<int>(kind)].setCaption(kReports.at(kind).caption);
    for (auto& report : cmdReport)
        report->setEnabled(false); // until a run has begun
    wireClick(cmdReport, &frmScriptOps::cmdReport_Click);
    modHID& link = uses_.services.link;
    transfers_ = link.observeSent([this, &link](const hid::Report& request, int status) {
        if (request[report::kCommandByte] == static_cast<std::uint8_t>(report::Command::I2cTransfer))
            record(I2cTransfer::of(request, link.reportBuffer, status));
    });
    showRecording();
}

void frmScriptOps::showRecording() {
    cmdRecord.setEnabled(!recording_ && !script_.ScriptRunning);
    cmdRecordStop.setEnabled(recording_);
    cmdRecordSave.setEnabled(!recording_ && unsaved_);
    mnuScript_Read.setEnabled(!recording_);
}

bool frmScriptOps::mayDiscard() {
    return !unsaved_ || context().dialogs.show({"The recorded script is not saved. Click OK to discard it, "
                                                "Cancel to keep it",
                                                {},
                                                {Choice::Ok, Choice::Cancel}}) == Choice::Ok;
}

void frmScriptOps::cmdRecord_Click() {
    if (recording_ || script_.ScriptRunning || !mayDiscard())
        return;
    const WallTime now = context().clock().wallTime();
    recording_ = unsaved_ = true;
    recorder_ = {};
    recorded_ = {"# recorded " + shortDate(now) + " " + shortTime(now)};
    chosenPath_.clear();
    loadedPath_.clear();
    script_.ScriptLoaded = false;
    takeLines(recorded_, "recording");
    showRecording();
    tell(true, "Recording", "what is done on the I2C panel becomes rows", &vbalGrid1);
}

void frmScriptOps::record(const I2cTransfer& transfer) {
    // The rows of a script are no gestures of the user's.
    if (!recording_ || !openRows_.empty())
        return;
    constexpr std::size_t kRoom = ScriptTable::kMostLines - 1; // the end marker has the last line
    std::vector<std::string> lines = recorder_.lines(transfer, context().clock().now());
    const bool full = recorded_.size() + lines.size() > kRoom;
    if (!full)
        recorded_.insert(recorded_.end(), lines.begin(), lines.end());
    takeLines(recorded_, "recording");
    if (full) {
        cmdRecordStop_Click();
        tell(false, "The recording has stopped", "a script has at most 1000 lines", &vbalGrid1);
    }
}

void frmScriptOps::cmdRecordStop_Click() {
    if (!std::exchange(recording_, false))
        return;
    recorded_.emplace_back(kEndOfMainPart);
    takeLines(recorded_, "recorded, not saved");
    showRecording();
    tell(true, "Recorded", decimalText(script_.TotalLines) + " lines", &vbalGrid1);
}

void frmScriptOps::cmdRecordSave_Click() {
    FileRequest request;
    request.mode = FileRequest::Mode::Save;
    request.title = "Save Recorded Script";
    request.filter = "Script (*.txt)|*.txt|All Files (*.*)|*.*";
    request.defaultExtension = "*.txt";
    const auto path = context().dialogs.chooseFile(request);
    if (recording_ || !unsaved_ || !path || path->empty())
        return;
    std::string content;
    for (const std::string& line : script_.ScriptRaw)
        content += line + "\r\n";
    try {
        replaceFile(inWorkingFolder(*path), content);
    } catch (const Fault& fault) {
        context().say(fault.what());
        return;
    }
    unsaved_ = false;
    chosenPath_ = loadedPath_ = *path;
    script_.ScriptLoaded = true;
    cmdReload2.setEnabled(!script_.ScriptRunning);
    keepBreakpoints();
    showLoaded();
    showRecording();
    tell(true, "Script written", *path, &vbalGrid1);
}

void frmScriptOps::cmdReport_Click(int index) {
    const ReportKind& kind = kReports.at(static_cast<std::size_t>(index));
    FileRequest request;
    request.mode = FileRequest::Mode::Save;
    request.title = std::string("Save ") + kind.caption + " Report";
    request.filter = kind.filter;
    request.defaultExtension = std::string("*") + kind.extension;
    request.name = std::filesystem::path(loadedPath_).stem().string() + kind.extension;
    const auto path = context().dialogs.chooseFile(request);
    if (!path || path->empty())
        return;
    const std::string content = index == 0   ? junitReport(results())
                                : index == 1 ? jsonReport(results())
                                             : csvReport(results());
    try {
        replaceFile(inWorkingFolder(*path), content);
        tell(true, "Report written", *path, &cmdReport[index]);
    } catch (const Fault& fault) {
        context().say(fault.what());
    }
}

} // namespace vrk
