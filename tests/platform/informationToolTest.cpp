#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "platform/system/DesktopInformationTool.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace vrk {
namespace {

using ::testing::ElementsAre;
namespace fs = std::filesystem;

std::string entry(const std::string& lines) {
    return "#!/usr/bin/env xdg-open\n[Desktop Entry]\nType=Application\nName=Info "
           "Center\nName[de]=Auskunft\n" +
           lines + "\n[Desktop Action x]\nExec=other\nName=Other\n";
}

TEST(InformationToolTest, CommandsAreReadAsTheDesktopReadsThem) {
    const auto command = [](const std::string& exec) {
        const auto read = readDesktopEntry(entry("Exec=" + exec));
        return read ? read->command : std::vector<std::string>();
    };
    EXPECT_THAT(command("info --page %U  %%1 %i"), ElementsAre("info", "--page", "%1"));
    EXPECT_THAT(command(R"("/opt/my tools/info" "a \\"b\\" \\$c" d)"),
                ElementsAre("/opt/my tools/info", "a \"b\" $c", "d"));
    EXPECT_EQ(readDesktopEntry(entry("Exec=info\r"))->name, "Info Center");
    for (const char* lines : {"", "Exec=info\nHidden=true", "Exec=info\nTerminal=true", "Exec=%f", "Exec="})
        EXPECT_FALSE(readDesktopEntry(entry(lines))) << lines;
    EXPECT_FALSE(readDesktopEntry("Exec=info\nName=x\nType=Application\n"));
    const auto shown = readDesktopEntry(entry("Exec=info\nOnlyShowIn=GNOME;KDE;\nNotShowIn=X-Old;"));
    EXPECT_TRUE(shown->isFor("ubuntu:GNOME"));
    EXPECT_FALSE(shown->isFor("XFCE"));
    EXPECT_FALSE(shown->isFor(""));
    EXPECT_FALSE(shown->isFor("KDE:X-Old"));
}

TEST(InformationToolTest, TheUsersFolderStandsBeforeTheSystems) {
    const fs::path top = fs::path(::testing::TempDir()) / "informationTool";
    fs::remove_all(top);
    const auto write = [&top](const char* home, const char* file, const std::string& text) {
        fs::create_directories(top / home / "applications");
        replaceFile(top / home / "applications" / file, text);
    };
    setenv("XDG_DATA_HOME", (top / "mine").c_str(), 1);
    setenv("XDG_DATA_DIRS", ("relative:" + (top / "system").string()).c_str(), 1);
    DesktopInformationTool tool;
    EXPECT_EQ(tool.name(), std::nullopt);
    EXPECT_THROW(tool.open(), Fault);
    write("system", "hardinfo.desktop", entry("Exec=no-such-program-anywhere"));
    EXPECT_EQ(tool.name(), std::nullopt); // it was removed and has left its file
    const fs::path proof = top / "proof";
    write("system", "hardinfo.desktop", entry("Exec=touch " + proof.string()));
    EXPECT_EQ(tool.name(), "Info Center");
    tool.open();
    for (int turn = 0; turn < 500 && !fs::exists(proof); ++turn)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(fs::exists(proof));
    write("mine", "hardinfo.desktop", entry("Exec=touch\nHidden=true"));
    EXPECT_EQ(tool.name(), std::nullopt);
}

} // namespace
} // namespace vrk
