#include "shell/Doco.h"

#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <cerrno>

namespace vrk {

Doco::Doco(PanelContext& context, Trace& trace) : Panel(context, "Doco", "Trace"), trace_(trace) {
    ChkTrace.setCaptions({"Show Address", "Show Reads", "Trace"});
    ChkTrace[2].setToolTip("Enables / Disables Tracing");
    chkTRDetail.setCaption("Detailed");
    chkTRDetail.setToolTip("Adds additional level to tracing for more detailed informaiton.");
    ChkVerbose.setCaption("Verbose");
    ChkBasIO.setCaption("Base I/O");
    chkAppend.setCaption("Append");
    txtFilePath.setCaption("File");
    cmdStartRec.setCaptions({"Write to Disk"});
    cmdBrowse.setCaption("Browse");
    cndTclear.setCaption("Clear");
    ChkTrace[2].showValue(trace.traceOn ? 1 : 0);
    ChkVerbose.showValue(trace.traceVerbose ? 1 : 0);
    chkTRDetail.showValue(trace.traceDetail ? 1 : 0);
    switches_ = trace.observeSwitches([this] {
        ChkTrace[2].showValue(trace_.traceOn ? 1 : 0);
        chkTRDetail.showValue(trace_.traceDetail ? 1 : 0);
    });

    wireClick(ChkTrace, &Doco::ChkTrace_Click);
    wireClick(chkTRDetail, &Doco::chkTRDetail_Click);
    wireClick(ChkVerbose, &Doco::ChkVerbose_Click);
    wireClick(ChkBasIO, &Doco::ChkBasIO_Click);
    wireClick(cmdStartRec, &Doco::cmdStartRec_Click);
    wireClick(cmdBrowse, &Doco::cmdBrowse_Click);
    wireClick(cndTclear, &Doco::cndTclear_Click);
}

void Doco::ChkTrace_Click(int index) {
    if (index == 2)
        trace_.setOn(ChkTrace[2].value() == 1);
}

void Doco::chkTRDetail_Click() {
    trace_.setDetail(chkTRDetail.value() == 1);
}

void Doco::ChkVerbose_Click() {
    trace_.traceVerbose = ChkVerbose.value() == 1;
}

void Doco::ChkBasIO_Click() {
    trace_.baseIo = ChkBasIO.value() == 1;
}

void Doco::cmdBrowse_Click() {
    FileRequest request;
    request.mode = FileRequest::Mode::Save;
    request.title = "Select File For Recording";
    request.filter = "All Files (*.*)|*.*|KV880x Trace Files(*.txt)|*.txt";
    request.defaultExtension = "*.txt";
    const auto path = context().dialogs.chooseFile(request);
    if (path && !path->empty())
        txtFilePath.setText(*path);
}

void Doco::cmdStartRec_Click(int /*index*/) {
    const WallTime now = context().clock().wallTime();
    const auto two = [](int value) { return (value < 10 ? "0" : "") + decimalText(value); };
    std::string content = "Trace File Data Acquisition " + decimalText(now.year) + "-" + two(now.month) +
                          "-" + two(now.day) + " " + two(now.hour) + ":" + two(now.minute) + "\r\n";
    content += rtxt1.text();
    // "END" has a line of its own, and no empty line before it where the text ended in a break.
    if (rtxt1.size() > 0 && !rtxt1.line(rtxt1.lineCount() - 1).empty())
        content += "\r\n";
    content += "END\r\n";
    try {
        if (txtFilePath.text().empty())
            throw fileFault("write", "", ENOENT);
        const auto path = context().workingFolder / txtFilePath.text();
        if (chkAppend.checked())
            appendFile(path, content);
        else
            replaceFile(path, content);
    } catch (const Fault& fault) {
        context().say(fault.what());
    }
}

void Doco::cndTclear_Click() {
    rtxt1.clear();
}

} // namespace vrk
