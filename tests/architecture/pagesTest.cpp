#include "views/pages.h"
#include "platform/files/files.h"
#include "tests/support/TestBench.h"

#include <QString>

#include <filesystem>

namespace vrk {
namespace {

/// A panel is a slot, a row of the shell and a row of the pages: none of the three may be forgotten.
TEST(PanelTableTest, EveryPanelHasItsPageAndItsHeadingInTheManual) {
    class Rig : public TestBench {
        void TestBody() override {}
    } rig;
    const std::string manual = readFile(VRK_MANUAL);
    ASSERT_FALSE(rig.bench.panels().empty());
    EXPECT_EQ(rig.bench.panels().size(), rig.bench.panelTable().size());
    for (const PanelRow& panel : rig.bench.panelTable()) {
        const std::string& name = panel.slot->name();
        EXPECT_NE(manual.find(std::string("\n## ") + panel.manualPage + "\n"), std::string::npos)
            << name << ": docs/manual.md has no heading \"" << panel.manualPage << '"';
        const std::size_t chapter = manual.find(std::string("\n## ") + panel.manualPage + "\n\n[![");
        const std::size_t picture = manual.find("](pictures/", chapter);
        ASSERT_NE(picture, std::string::npos) << name << ": its chapter does not begin with a picture";
        const std::string file = manual.substr(picture + 2, manual.find(')', picture) - picture - 2);
        EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(VRK_MANUAL).parent_path() / file)) << file;
        const PageRow* const page = findPageRow(name);
        if (page == nullptr || page->make == nullptr) {
            ADD_FAILURE() << name << " has no page";
            continue;
        }
        // Rail and start panel's list open the same.
        EXPECT_EQ(page->startRow, panel.startRow == PanelRow::kNoRow ? 0 : panel.startRow) << name;
    }
    for (const PageRow& page : pageRows())
        EXPECT_EQ(page.make != nullptr, rig.bench.findPanel(page.slot) != nullptr) << page.name;
}

} // namespace
} // namespace vrk
