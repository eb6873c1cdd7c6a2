#pragma once

#include "views/workspace/signs.h"

#include <QString>

#include <vector>

namespace vrk {

class PageUi;
class Panel;

/// Where a page stands.
enum class PagePlace {
    Page, ///< in the middle, with an entry in the rail
    Dock, ///< a tab of the dock
    Sheet ///< over the page that opened it
};

/// One panel as the workspace knows it.
struct PageRow {
    const char* slot;  ///< "frmVRK_User1"
    const char* name;  ///< one name for rail, head, menu and manual
    const char* group; ///< heading in the rail; empty for home
    Sign sign;
    int startRow; ///< row of the start panel's list that opens it; 0 if it opens by itself
    void (*make)(PageUi& page, Panel& panel);
    PagePlace place = PagePlace::Page;
    /// Device panel that this one works beside, as it switches the supplies: it is opened first.
    const char* beside = "";
};

/// In the order of the rail.
const std::vector<PageRow>& pageRows();
/// nullptr for a slot without a page.
const PageRow* findPageRow(const std::string& slot);

} // namespace vrk
