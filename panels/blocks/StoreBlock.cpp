#include "panels/blocks/StoreBlock.h"

#include "link/reportLayout.h"
#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

namespace {
constexpr int kMostBudget = 1000000; ///< above what any such memory stands
}

StoreBlock::StoreBlock(Panel& panel, BenchServices& services) : PanelBlock(panel), services_(services) {
    lblNvWrites.setCaption("0");
    lblNvWrites.setToolTip(
        "Non-volatile writes since the part was chosen, as far as they were sent from here");
    lblNvRegisters.setCaption("none");
    txtNvBudget.setCaption("Warn above");
    txtNvBudget.setText(decimalText(NonvolatileWrites::kDefaultBudget));
    txtNvBudget.setMaxLength(7);
    txtNvBudget.setToolTip("A loop of the program is asked about, once, before it makes more such writes");
    txtNvBudget.onKeyPress([this](int key) {
        const int passed = decimalKeyFilter(key);
        if (passed == kEnterKey)
            takeBudget();
        return passed;
    });
    txtNvBudget.onLostFocus([this] { takeBudget(); });
    counted_ = writes_.observe([this] { showCounts(); });
    sent_ =
        services_.link.observeSent([this](const hid::Report& report, int status) { look(report, status); });
}

StoreBlock::~StoreBlock() {
    if (question_)
        host().events().cancel(*question_);
}

void StoreBlock::look(const hid::Report& sent, int status) {
    using report::Command;
    const auto command = static_cast<Command>(sent[report::kCommandByte]);
    if (command != Command::SfrAccess && command != Command::I2cTransfer && command != Command::SpiTransfer)
        return;
    const int before = writes_.total();
    writes_.look(sent, status, storeRules(), drivesPins());
    // A run that is left alone stores until its end, as its entries say: a box would stand there all night.
    if (writes_.total() == before || question_ || host().context().activities.current() == nullptr ||
        services_.link.unattended() || !writes_.shouldWarn(1))
        return;
    // A loop that did not say what it would store: it is asked as soon as it lets events run, as no event may
    // run inside an exchange.
    question_ = host().events().post([this] {
        question_.reset();
        if (!askToGoOn(""))
            host().context().activities.abort();
    });
}

void StoreBlock::showCounts() {
    lblNvWrites.setCaption(decimalText(writes_.total()));
    std::string all;
    for (const auto& [name, number] : writes_.byRegister())
        all += (all.empty() ? "" : ", ") + name + "  " + decimalText(number);
    lblNvRegisters.setCaption(all.empty() ? "none" : all);
}

void StoreBlock::takeBudget() {
    const double typed = isNumeric(txtNvBudget.text()) ? leadingNumber(txtNvBudget.text()) : 0;
    if (typed < 1 || typed > kMostBudget)
        txtNvBudget.setText(decimalText(writes_.budget())); // what is no budget leaves the one before
    else
        writes_.setBudget(static_cast<int>(typed));
}

bool StoreBlock::mayStore(int more) {
    return more <= 0 || !writes_.shouldWarn(more) || askToGoOn(decimalText(more) + " more would follow. ");
}

bool StoreBlock::askToGoOn(const std::string& what) {
    return host().context().dialogs.show(
               {"The part has had " + decimalText(writes_.total()) +
                    (writes_.total() == 1 ? " non-volatile write" : " non-volatile writes") +
                    " since it was chosen. " + what + "The limit set for loops is " +
                    decimalText(writes_.budget()) + ".\r\nGo on?",
                "Non-volatile memory",
                {Choice::Ok, Choice::Cancel}}) == Choice::Ok;
}

} // namespace vrk
