#pragma once

#include "link/Trace.h"
#include "platform/controls/Panel.h"

namespace vrk {

/// The trace panel: the text of what the link did, its level switches, and saving it to a file.
class Doco final : public Panel {
  public:
    Doco(PanelContext& context, Trace& trace);

    TextLog rtxt1{*this, "rtxt1"};
    /// 2 is the master switch; 0 and 1 are captions that no line depends on.
    ControlArray<CheckBox> ChkTrace{*this, "ChkTrace", 0, 2};
    CheckBox chkTRDetail{*this, "chkTRDetail"};
    CheckBox ChkVerbose{*this, "ChkVerbose"};
    CheckBox ChkBasIO{*this, "ChkBasIO"};
    CheckBox chkAppend{*this, "chkAppend"};
    TextBox txtFilePath{*this, "txtFilePath"};
    ControlArray<Button> cmdStartRec{*this, "cmdStartRec", 0, 0};
    Button cmdBrowse{*this, "cmdBrowse"};
    Button cndTclear{*this, "cndTclear"};

    /// Its text grows until the program ends, whether somebody looks at it or not.
    bool closeHides() const override { return true; }

    void ChkTrace_Click(int index);
    void chkTRDetail_Click();
    void ChkVerbose_Click();
    void ChkBasIO_Click();
    void cmdBrowse_Click();
    /// Saves the trace. A path that cannot be written is told in a box; the text survives.
    void cmdStartRec_Click(int index);
    void cndTclear_Click();

  private:
    Trace& trace_;
    Subscription switches_;
};

} // namespace vrk
