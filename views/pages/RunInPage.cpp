#include "panels/discrete/UPDN_Runin.h"
#include "views/pages/pageMakers.h"
#include "views/pages/plainPage.h"
#include "views/workspace/Page.h"

namespace vrk {

void makeRunInPage(PageUi& page, UPDN_Runin&) {
    page.setHelpPage("Run-in");
    page.withoutDock();
    page.startsWithInspectorFolded();
    page.setContent(everyControl(page));
}

} // namespace vrk
