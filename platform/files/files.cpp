#include "platform/files/files.h"

#include "platform/files/OutputFile.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vrk {

namespace fs = std::filesystem;

namespace {

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

  private:
    int number_;
};

/// Adds to what is no file to be replaced. \throws Fault
void writeTo(const fs::path& path, OutputFile::Mode mode, std::string_view content) {
    OutputFile file(path, mode);
    int error = file.write(content);
    if (error == 0)
        error = file.close();
    if (error != 0)
        throw fileFault("write", path.string(), error);
}

} // namespace

bool fileExists(const std::filesystem::path& path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

std::string readFile(const std::filesystem::path& path) {
    // The open of a pipe would wait for somebody to write to it.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0)
        throw fileFault("open", path.string(), errno);
    if (S_ISDIR(status.st_mode))
        throw fileFault("read", path.string(), EISDIR);
    if (!S_ISREG(status.st_mode))
        throw Fault("Cannot read " + path.string() + ": it is a pipe or a device, no file");
    const auto tooLong = [&path] {
        return Fault("Cannot read " + path.string() + ": it is longer than " +
                     std::to_string(kMostFileBytes >> 20U) + " MiB");
    };
    if (static_cast<std::uintmax_t>(status.st_size) > kMostFileBytes)
        throw tooLong();
    std::string content;
    std::string block(65536, '\0');
    for (;;) {
        const ssize_t count = ::read(file.number(), block.data(), block.size());
        if (count == 0)
            break;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            throw fileFault("read", path.string(), errno);
        }
        content.append(block, 0, static_cast<std::size_t>(count));
        if (content.size() > kMostFileBytes) // it grows, or its size is not what the system says
            throw tooLong();
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (content.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0)
        content.erase(0, kByteOrderMark.size());
    return content;
}

namespace {

/// The name that the new content of `target` has until it takes its place. Short enough for any file system.
std::string temporaryName(const fs::path& target) {
    constexpr std::size_t kLongest = 200;
    return "." + target.filename().string().substr(0, kLongest) + ".vrkbench-";
}

/// Removes what killed saves of `target` have left: nobody holds the lock of such a file any more.
void removeLeftovers(const fs::path& target) {
    const std::string name = temporaryName(target);
    std::error_code error;
    for (fs::directory_iterator entry(target.parent_path().empty() ? "." : target.parent_path(), error), end;
         !error && entry != end; entry.increment(error)) {
        if (!startsWith(entry->path().filename().string(), name))
            continue;
        const Descriptor file(::open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        if (file.number() >= 0 && ::flock(file.number(), LOCK_EX | LOCK_NB) == 0)
            ::unlink(entry->path().c_str());
    }
}

/// Makes the file and takes its lock. \return its path; the descriptor is -1, with errno set, on failure.
std::pair<std::string, int> makeTemporary(const fs::path& target) {
    for (;;) {
        std::string path = (target.parent_path() / temporaryName(target)).string() + "XXXXXX";
        const int file = ::mkostemp(path.data(), O_CLOEXEC);
        struct stat status {};
        if (file < 0 ||
            (::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fstat(file, &status) == 0 && status.st_nlink > 0))
            return {path, file};
        // Another save has taken it for a leftover between the two calls.
        ::close(file);
    }
}

} // namespace

namespace {

/// Through a symbolic link: what it points to is replaced, the link stays.
fs::path behindLinks(const fs::path& path) {
    std::error_code error;
    if (!fs::is_symlink(path, error))
        return path;
    const auto real = fs::canonical(path, error);
    return error ? path : real;
}

} // namespace

void requireWritable(const fs::path& path) {
    if (path.empty())
        throw fileFault("write", "", ENOENT);
    const fs::path target = behindLinks(path);
    struct stat old {};
    const bool existed = ::stat(target.c_str(), &old) == 0;
    if (existed && S_ISDIR(old.st_mode))
        throw fileFault("write", path.string(), EISDIR);
    if (existed && ::access(target.c_str(), W_OK) != 0)
        throw fileFault("write", path.string(), errno);
    if (existed && !S_ISREG(old.st_mode))
        return; // the reader of a pipe would take the end of a trial for the end of the file
    const auto [temporary, number] = makeTemporary(target);
    const Descriptor file(number);
    if (file.number() < 0)
        throw fileFault("write", path.string(), errno);
    ::unlink(temporary.c_str());
}

void replaceFile(const std::filesystem::path& path, const std::string& content) {
    if (path.empty())
        throw fileFault("write", "", ENOENT);
    const fs::path target = behindLinks(path);
    struct stat old {};
    const bool existed = ::stat(target.c_str(), &old) == 0;
    if (existed && !S_ISREG(old.st_mode)) {
        // A pipe or a terminal cannot be replaced; it takes the bytes as they come.
        writeTo(target, OutputFile::Mode::Anew, content);
        return;
    }
    if (existed && ::access(target.c_str(), W_OK) != 0)
        throw fileFault("write", path.string(), errno);
    removeLeftovers(target);
    const auto [temporary, number] = makeTemporary(target);
    Descriptor file(number);
    if (file.number() < 0)
        throw fileFault("write", path.string(), errno);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    const mode_t mode = existed ? (old.st_mode & 07777U) : (0666U & ~mask);
    int error = writeAll(file.number(), content);
    if (error == 0 && (::fchmod(file.number(), mode) != 0 || ::fsync(file.number()) != 0 ||
                       ::rename(temporary.c_str(), target.c_str()) != 0))
        error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        throw fileFault("write", path.string(), error);
    }
}

void appendFile(const std::filesystem::path& path, const std::string& content) {
    struct stat before {};
    const bool existed = ::stat(path.c_str(), &before) == 0;
    try {
        writeTo(path, OutputFile::Mode::Append, content);
    } catch (const Fault&) {
        // A half would stand in front of the next addition, and of a script it would even be run.
        std::error_code ignored;
        if (existed && S_ISREG(before.st_mode))
            fs::resize_file(path, static_cast<std::uintmax_t>(before.st_size), ignored);
        else if (!existed)
            fs::remove(path, ignored);
        throw;
    }
}

bool sameFile(const fs::path& one, const fs::path& other) {
    std::error_code error;
    return fs::equivalent(one, other, error);
}

void failAtFileSizeLimit() {
    std::signal(SIGXFSZ, SIG_IGN);
}

fs::path userDataFolder() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return fs::path(value != nullptr ? value : "");
    };
    const fs::path data = variable("XDG_DATA_HOME");
    return (data.empty() ? variable("HOME") / ".local/share" : data) / "vrkbench";
}

fs::path programFolder(const fs::path& wanted) {
    if (!wanted.empty()) {
        if (!fs::is_directory(wanted))
            throw Fault("There is no folder " + wanted.string());
        return wanted;
    }
    std::error_code error;
    const fs::path beside = fs::read_symlink("/proc/self/exe", error).parent_path();
    if (!error && access(beside.c_str(), W_OK) == 0)
        return beside;
    const fs::path folder = userDataFolder();
    fs::create_directories(folder, error);
    return folder;
}

} // namespace vrk
