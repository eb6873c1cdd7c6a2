#include "platform/files/files.h"
#include "platform/files/SequentialInput.h"
#include "platform/runtime/Fault.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
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
    const fs::path file = folder / std::string(252, 'n'); // a temporary name cannot be longer
    appendFile(file, "old");
    // Left by killed saves of this file; what somebody else is writing stays.
    const std::string leftover = (folder / ("." + std::string(200, 'n') + ".vrkbench-")).string();
    appendFile(leftover + "dead00", "half");
    appendFile(leftover + "alive0", "half");
    const int alive = ::open((leftover + "alive0").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(alive, LOCK_EX), 0);
    failAtFileSizeLimit();
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    for (const rlim_t limit : {rlim_t{2}, rlim_t{5}}) { // of the addition two bytes fit
        const rlimit small{limit, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        const std::string fault =
            faultOf([&] { limit == 2 ? replaceFile(file, "new") : appendFile(file, "more"); });
        setrlimit(RLIMIT_FSIZE, &old);
        EXPECT_THAT(fault, HasSubstr("too large"));
    }
    EXPECT_EQ(readFile(file), "old");
    EXPECT_EQ(entries(), 2U);
    ::close(alive);
    replaceFile(file, "new");
    EXPECT_EQ(entries(), 1U);
    EXPECT_THAT(faultOf([&] { replaceFile(folder / "none" / "file", "new"); }), HasSubstr("No such file"));
    EXPECT_FALSE(fs::exists(folder / "none"));
    EXPECT_THAT(faultOf([&] { replaceFile(folder, "new"); }), HasSubstr("Is a directory"));
    EXPECT_THAT(faultOf([&] { replaceFile("/dev/full", "new"); }), HasSubstr("No space left"));
    EXPECT_THAT(faultOf([&] { replaceFile("", "new"); }), HasSubstr("without a name"));
    // What can be told ahead of a long work is.
    EXPECT_THAT(faultOf([&] { requireWritable(folder / "none" / "file"); }), HasSubstr("No such file"));
    EXPECT_THAT(faultOf([&] { requireWritable(folder); }), HasSubstr("Is a directory"));
    EXPECT_EQ(faultOf([&] { requireWritable(folder / "new"); }), "");
    EXPECT_EQ(entries(), 1U);
    EXPECT_THAT(faultOf([&] { readFile(folder / "none"); }), HasSubstr("Cannot open"));
    EXPECT_THAT(faultOf([&] { readFile(folder); }), HasSubstr("Is a directory"));
    EXPECT_THAT(faultOf([&] { appendFile(folder / "none" / "file", "x"); }), HasSubstr("No such file"));

    // None of these may keep the program waiting or eat its memory.
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const fs::path& special : {folder / "pipe", fs::path("/dev/zero")})
        EXPECT_THAT(faultOf([&] { readFile(special); }), HasSubstr("a pipe or a device"));
    for (const auto write : {replaceFile, appendFile}) {
        const fs::path pipe = folder / "pipe";
        EXPECT_THAT(faultOf([&] { write(pipe, "x"); }), HasSubstr("nobody reads"));
        const int reader = ::open(pipe.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        write(pipe, "bytes");
        std::string got(9, '\0');
        EXPECT_EQ(::read(reader, got.data(), got.size()), 5);
        ::close(reader);
    }
    fs::resize_file(file, kMostFileBytes);
    EXPECT_EQ(readFile(file).size(), kMostFileBytes);
    fs::resize_file(file, kMostFileBytes + 1);
    EXPECT_THAT(faultOf([&] { readFile(file); }), HasSubstr("16 MiB"));
    replaceFile(file, "\xEF\xBB\xBFgeneric");
    EXPECT_EQ(readFile(file), "generic");
    EXPECT_TRUE(sameFile(file, folder / "." / file.filename()));
    EXPECT_FALSE(sameFile(file, folder / "pipe"));
}

} // namespace
} // namespace vrk
