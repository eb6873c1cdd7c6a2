#include "panels/blocks/StoreBlock.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QLabel>
#include <QLineEdit>

namespace vrk {

using namespace qt;

Section& addStoreSection(PageUi& page, StoreBlock& block) {
    PanelUi& ui = page.ui();
    auto* writes = ui.value(block.lblNvWrites, "0000000");
    writes->setAccessibleName("Non-volatile writes since the part was chosen");
    auto* budget = ui(block.txtNvBudget, 7);
    budget->setAlignment(Qt::AlignRight);
    auto* registers = ui(block.lblNvRegisters);
    keepWhole(page, block.lblNvRegisters, *registers);
    registers->setAccessibleName("Non-volatile writes by register");
    makeQuiet(*registers);
    auto* list = row({columnLabel("Registers"), registers});
    list->setStretch(1, 1); // as many lines as the section is wide
    Section& section = page.addSection("Non-volatile writes",
                                       qt::block(rows({row({columnLabel("So far"), writes, stretch,
                                                            smallCaption("Warn above", budget), budget}),
                                                       list})));
    const auto summary = [&block] { return QString::fromStdString(block.lblNvWrites.caption()); };
    summarise(page, section, summary, [] { return QString(); }, {&block.lblNvWrites});
    return section;
}

} // namespace vrk
