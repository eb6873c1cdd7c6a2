#include "panels/discrete/frmVRK_UD1.h"
#include "views/blocks/blocks.h"
#include "views/pages/pageMakers.h"
#include "views/pages/plainPage.h"
#include "views/workspace/Band.h"
#include "views/workspace/Page.h"

namespace vrk {

void makeUpDownPage(PageUi& page, frmVRK_UD1& p) {
    page.setHelpPage("Up/Down");
    addSupplySection(page, p);
    addStatusSection(page, p);
    page.setBand(bandOf(p));
    page.setContent(everyControl(page));
}

} // namespace vrk
