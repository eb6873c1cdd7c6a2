#include "tests/support/TestBench.h"

#include <cstdlib>
#include <fstream>
#include <utility>

namespace vrk {

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vrk-test-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::write(const std::string& name, const std::string& content) const {
    const auto file = path_ / name;
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

TestBench::TestBench() {
    recording_ = recorder.observe([this](const hid::WireEvent& event) { wire.push_back(event); });
}

TestBench::~TestBench() = default;

void TestBench::TearDown() {
    for (const std::string& box : boxes())
        ADD_FAILURE() << "a box that the test did not expect: " << box;
}

void TestBench::loadConsoles() {
    ASSERT_TRUE(bench.start().done());
    ASSERT_TRUE(startup().cboVRKSelect.userSelect(1).done());
    wire.clear();
}

void TestBench::openI2c(bool vccOn) {
    ASSERT_TRUE(bench.start().done());
    ASSERT_TRUE(startup().cboVRKSelect.userSelect(frmStartup::kI2C).done());
    if (vccOn) {
        ASSERT_TRUE(i2c().OptVCC[0].userClick().done());
    }
    wire.clear();
}

void TestBench::openSpi(bool vccOn) {
    ASSERT_TRUE(bench.start().done());
    ASSERT_TRUE(startup().cboVRKSelect.userSelect(frmStartup::kSPI).done());
    if (vccOn) {
        ASSERT_TRUE(spi().OptVCC[0].userClick().done());
    }
    wire.clear();
}

std::vector<std::string> TestBench::chooseFrom(MenuEntry& list, const std::string& file, int row) {
    dialogs.answerFile(file);
    at(200, [this, row] {
        (void)bench.ProductExec->cmdLoadParam.userClick();
        (void)bench.ProductExec->tGrid.userSelect(row, 0);
        (void)bench.ProductExec->cmdReturn.userClick();
    });
    EXPECT_TRUE(list.userClick().done());
    std::vector<std::string> said = boxes();
    std::erase_if(said, [](const std::string& box) {
        return box.find("[") == 0 || box.find(".csv]") != std::string::npos || box == " []";
    });
    return said;
}

void TestBench::type(TextBox& box, const std::string& text) {
    ASSERT_TRUE(box.userType(text).done()) << box.path();
    pump();
}

std::vector<std::string> TestBench::boxes() {
    std::vector<std::string> texts;
    for (const auto& shown : dialogs.takeShown())
        texts.push_back(
            (shown.kind == ScriptedDialogs::Shown::Kind::Message ? shown.box.text : shown.file.title) + " [" +
            shown.answer + "]");
    return texts;
}

void TestBench::fault(sim::FaultKind kind, int times, std::optional<int> command, int value) {
    bus.fault({.kind = kind,
               .times = times,
               .command = command,
               .ms = value,
               .value = static_cast<std::uint8_t>(value)});
}

std::vector<std::string> TestBench::sent(int bytes) {
    std::vector<std::string> reports;
    for (const auto& event : std::exchange(wire, {})) {
        if (event.direction != hid::WireEvent::Direction::Out)
            continue;
        std::string hex;
        for (int i = 0; i < bytes; ++i)
            hex += (i > 0 ? " " : "") + byteToHex2(event.report.at(static_cast<std::size_t>(i)));
        reports.push_back(hex);
    }
    return reports;
}

std::vector<std::string> TestBench::sent(report::Command command, int bytes) {
    std::vector<std::string> reports = sent(bytes);
    const std::string code = byteToHex2(static_cast<std::uint8_t>(command));
    std::erase_if(reports, [&code](const std::string& report) { return report.substr(3, 2) != code; });
    return reports;
}

} // namespace vrk
