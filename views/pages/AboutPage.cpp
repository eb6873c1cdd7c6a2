#include "platform/qt/theme.h"
#include "shell/frmAbout2.h"
#include "views/pages/boxes.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QLabel>
#include <QPushButton>

namespace vrk {

using namespace qt;

void makeAboutPage(PageUi& page, frmAbout2& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("About");
    auto* title = ui(p.lblTitle);
    title->setFont(textFont(kNameScale, true));
    auto* disclaimer = ui(p.lblDisclaimer);
    for (QLabel* text : {title, disclaimer})
        text->setWordWrap(true);
    auto* version = ui(p.lblVersion);
    QLabel* last = nullptr;
    std::vector<std::vector<Item>> libraries;
    for (int row = 0; row < frmAbout2::kLibraries; ++row) {
        auto* purpose = ui(p.lblPurpose[row]);
        makeQuiet(*purpose);
        last = ui(p.lblLibraryLicence[row]);
        libraries.push_back({ui(p.lblLibrary[row]), purpose, last});
    }
    // Places for the keyboard all the way down: in a low window the page scrolls by them.
    for (QLabel* text : {version, disclaimer, last}) {
        text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        text->setFocusPolicy(Qt::StrongFocus);
    }

    auto* ok = ui(p.cmdOK);
    makeAccent(*ok);
    page.onWrite("Close the about box", [ok] { ok->click(); });
    page.onAbort("Close the about box", [ok] { ok->click(); });
    page.addHeadItem(ui(p.cmdSysInfo));
    page.addHeadItem(ok);
    page.setContent(block(column({
        title,
        row({version, gap, ui(p.lblLicence), stretch}),
        disclaimer,
        box("Libraries", grid(libraries), BoxFrame::Ground::Base),
        stretch,
    })));
    page.setFirstFocus(ok);
}

} // namespace vrk
