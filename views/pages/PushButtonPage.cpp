#include "panels/discrete/frmVRK_PB1.h"
#include "views/blocks/blocks.h"
#include "views/pages/pageMakers.h"
#include "views/pages/plainPage.h"
#include "views/workspace/Band.h"
#include "views/workspace/Page.h"

namespace vrk {

void makePushButtonPage(PageUi& page, frmVRK_PB1& p) {
    page.setHelpPage("Push Button");
    addSupplySection(page, p);
    addStatusSection(page, p);
    page.setBand(bandOf(p));
    page.setContent(everyControl(page));
}

} // namespace vrk
