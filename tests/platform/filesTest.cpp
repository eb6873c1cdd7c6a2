#include "platform/files/files.h"
#include "platform/files/SequentialInput.h"
#include "platform/runtime/Fault.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace vrk {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

std::vector<std::string> fieldsOf(const std::string& text) {
    std::vector<std::string> fields;
    SequentialInput input(text);
    while (const auto field = input.next())
        fields.push_back(*field);
    return fields;
}

TEST(SequentialInputTest, Fields) {
    using Row = std::pair<const char*, std::vector<std::string>>;
    for (const auto& [text, fields] : {Row{"", {}}, Row{"a", {"a"}}, Row{"a,b\r\nc\n", {"a", "b", "c"}},
                                       Row{" a b ,\tc\t\r\n", {"a b", "c"}}, Row{"a,,b", {"a", "", "b"}},
                                       Row{"a\r\n\r\nb", {"a", "", "b"}}, Row{"a\rb", {"a", "b"}},
                                       Row{"\"x, \"\"y\"\"\" ,z", {"x, \"y\"", "z"}},
                                       Row{"\"\",b", {"", "b"}}, Row{"\"open, end", {"open, end"}}})
        EXPECT_EQ(fieldsOf(text), fields) << text;
}

RC_GTEST_PROP(SequentialInputTest, QuotedFieldsComeBack, ()) {
    const auto field = rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab ,\"\t\r\n0")));
    const auto fields = *rc::gen::container<std::vector<std::string>>(field);
    std::string text;
    for (const std::string& content : fields)
        text += sequentialField(content) + ",";
    RC_ASSERT(fieldsOf(text) == fields);
}

class FilesTest : public ::testing::Test {
  protected:
    FilesTest() {
        std::string pattern = (fs::temp_directory_path() / "vrk-files-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }
    ~FilesTest() override { fs::remove_all(folder); }
    std::size_t entries() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
    static std::string faultOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const Fault& fault) {
            return fault.what();
        }
        return {};
    }
    fs::path folder;
};

TEST_F(FilesTest, ReplaceKeepsPermissionsAndLinks) {
    const fs::path file = folder / "table.csv";
    replaceFile(file, std::string("a\0b\r\n", 5));
    EXPECT_EQ(readFile(file), std::string("a\0b\r\n", 5));
    ::chmod(file.c_str(), 0640);
    fs::create_symlink("table.csv", folder / "link.csv");
    replaceFile(folder / "link.csv", "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link.csv"));
    EXPECT_EQ(readFile(file), "new");
    EXPECT_EQ(fs::status(file).permissions(), static_cast<fs::perms>(0640));
    EXPECT_EQ(entries(), 2U); // nothing left beside them
    appendFile(file, "er");
    appendFile(folder / "made.txt", "x");
    EXPECT_EQ(readFile(file) + readFile(folder / "made.txt"), "newerx");
    EXPECT_TRUE(fileExists(file));
    EXPECT_FALSE(fileExists(folder));
    EXPECT_FALSE(fileExists(folder / "none"));
}

TEST_F(FilesTest, FailureKeepsTheOldFile) {
    // So long a name that the new file cannot stand beside the old one.
    const fs::path file = folder / std::string(252, 'n');
    appendFile(file, "old");
    EXPECT_THAT(faultOf([&] { replaceFile(file, "new"); }), HasSubstr("Cannot write"));
    EXPECT_EQ(readFile(file), "old");
    EXPECT_EQ(entries(), 1U);
    EXPECT_THAT(faultOf([&] { replaceFile(folder / "none" / "file", "new"); }), HasSubstr("No such file"));
    EXPECT_FALSE(fs::exists(folder / "none"));
    EXPECT_THAT(faultOf([&] { replaceFile(folder, "new"); }), HasSubstr("Is a directory"));
    EXPECT_THAT(faultOf([&] { replaceFile("/dev/full", "new"); }), HasSubstr("No space left"));
    EXPECT_THAT(faultOf([&] { replaceFile("", "new"); }), HasSubstr("without a name"));
    EXPECT_THAT(faultOf([&] { readFile(folder / "none"); }), HasSubstr("Cannot open"));
    EXPECT_THAT(faultOf([&] { readFile(folder); }), HasSubstr("Is a directory"));
    EXPECT_THAT(faultOf([&] { appendFile(folder / "none" / "file", "x"); }), HasSubstr("No such file"));
}

} // namespace
} // namespace vrk
