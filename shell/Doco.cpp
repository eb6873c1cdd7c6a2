#include "shell/Doco.h"

#include "platform/controls/recording.h"

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
    chooseRecording(context(), txtFilePath);
}

void Doco::cmdStartRec_Click(int /*index*/) {
    if (saveRecording(context(), rtxt1, txtFilePath.text(), chkAppend.checked()))
        tell(true, "Saved the trace", txtFilePath.text());
}

void Doco::cndTclear_Click() {
    rtxt1.clear();
}

} // namespace vrk
