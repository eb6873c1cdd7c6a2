#include "platform/files/Journal.h"

#include "platform/runtime/Fault.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vrk {

namespace {

constexpr std::size_t kDigits = 8;

constexpr std::array<std::uint32_t, 256> crcTable() {
    constexpr std::uint32_t kPolynomial = 0xEDB88320;
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1U) != 0 ? (value >> 1U) ^ kPolynomial : value >> 1U;
        table[byte] = value;
    }
    return table;
}

/// The lock belongs to the open file and goes with it, however the process ends.
int lock(int file, int command, struct flock& range) {
    range = {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    return ::fcntl(file, command, &range);
}

void takeLock(int file, const std::filesystem::path& path) {
    struct flock range {};
    if (lock(file, F_OFD_SETLK, range) == 0)
        return;
    const int error = errno;
    ::close(file);
    if (error == EAGAIN || error == EACCES)
        throw Fault("The journal " + path.string() + " is in use by another process");
    throw fileFault("lock", path.string(), error);
}

/// The name of a new file is on the disk only when its folder is.
void flushFolderOf(const std::filesystem::path& path) {
    const auto folder = path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
    const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file >= 0) {
        ::fsync(file);
        ::close(file);
    }
}

/// The record of a line without its line break; nothing if the line is none.
std::optional<std::string_view> recordOf(std::string_view line) {
    if (line.size() <= kDigits + 1 || line[kDigits] != ' ')
        return std::nullopt;
    std::uint32_t told = 0;
    const auto digits = line.substr(0, kDigits);
    if (digits.find_first_not_of("0123456789abcdef") != std::string_view::npos)
        return std::nullopt;
    std::from_chars(digits.data(), digits.data() + kDigits, told, 16);
    const auto record = line.substr(kDigits + 1);
    if (crc32(record) != told)
        return std::nullopt;
    return record;
}

/// The lines of a file, one after the other, in blocks.
class Lines {
  public:
    explicit Lines(const std::filesystem::path& path) : path_(path) {
        file_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        struct stat status {};
        if (file_ < 0 || ::fstat(file_, &status) != 0)
            throw fileFault("open", path.string(), errno);
        if (!S_ISREG(status.st_mode)) {
            ::close(file_);
            throw Fault("Cannot read " + path.string() + ": it is no file");
        }
    }
    ~Lines() { ::close(file_); }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    /// \return false at the end. The view holds until the next call; its line break is part of it.
    bool next(std::string_view& line) {
        for (;;) {
            const auto end = text_.find('\n', at_);
            if (end != std::string::npos) {
                line = std::string_view(text_).substr(at_, end + 1 - at_);
                at_ = end + 1;
                return true;
            }
            // A file without line breaks is no journal, and must not fill the memory.
            if (text_.size() - at_ > kLongest || !more()) {
                line = std::string_view(text_).substr(at_);
                at_ = text_.size();
                return !line.empty();
            }
        }
    }

  private:
    static constexpr std::size_t kLongest = 1U << 20U;

    bool more() {
        constexpr std::size_t kBlock = 1U << 16U;
        text_.erase(0, std::exchange(at_, 0));
        const std::size_t kept = text_.size();
        text_.resize(kept + kBlock);
        ssize_t count = 0;
        do
            count = ::read(file_, text_.data() + kept, kBlock);
        while (count < 0 && errno == EINTR);
        text_.resize(kept + static_cast<std::size_t>(count < 0 ? 0 : count));
        if (count < 0)
            throw fileFault("read", path_.string(), errno);
        return count > 0;
    }

    std::filesystem::path path_;
    int file_ = -1;
    std::string text_;
    std::size_t at_ = 0;
};

} // namespace

std::uint32_t crc32(std::string_view bytes) {
    static constexpr auto kTable = crcTable();
    std::uint32_t value = 0xFFFFFFFF;
    for (const char byte : bytes)
        value = kTable[(value ^ static_cast<unsigned char>(byte)) & 0xFFU] ^ (value >> 8U);
    return ~value;
}

/// The open file, and a thread that has it flushed.
class JournalFile::Disk {
  public:
    explicit Disk(int number) : file(number) {}
    ~Disk() {
        {
            const std::lock_guard guard(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        if (thread_.joinable())
            thread_.join();
        ::close(file);
    }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    /// \return the system's error of what was flushed since the last call; 0 if all is well
    int flush(bool wait) {
        std::unique_lock guard(mutex_);
        if (!thread_.joinable())
            thread_ = std::thread([this] { work(); });
        wanted_ = true;
        changed_.notify_all();
        if (wait)
            changed_.wait(guard, [this] { return !wanted_ && !working_; });
        return std::exchange(error_, 0);
    }

    const int file;

  private:
    void work() {
        std::unique_lock guard(mutex_);
        for (;;) {
            changed_.wait(guard, [this] { return wanted_ || ending_; });
            if (!wanted_)
                return;
            wanted_ = false;
            working_ = true;
            guard.unlock();
            const int error = ::fdatasync(file) == 0 ? 0 : errno;
            guard.lock();
            working_ = false;
            if (error != 0)
                error_ = error;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::thread thread_;
    bool wanted_ = false;
    bool working_ = false;
    bool ending_ = false;
    int error_ = 0;
};

JournalFile JournalFile::create(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0666);
    if (file < 0 && errno == EEXIST)
        throw Fault(journalInUse(path)
                        ? "The journal " + path.string() + " is in use by another process"
                        : "The file " + path.string() + " exists; a journal never overwrites one");
    if (file < 0)
        throw fileFault("write", path.string(), errno);
    takeLock(file, path);
    flushFolderOf(path);
    return {path, file};
}

JournalFile JournalFile::open(const std::filesystem::path& path, std::uint64_t length) {
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        throw fileFault("write", path.string(), errno);
    takeLock(file, path);
    if (::ftruncate(file, static_cast<off_t>(length)) != 0) {
        const int error = errno;
        ::close(file);
        throw fileFault("write", path.string(), error);
    }
    return {path, file};
}

JournalFile::JournalFile(std::filesystem::path path, int file)
    : path_(std::move(path)), disk_(std::make_unique<Disk>(file)) {}

JournalFile::JournalFile(JournalFile&&) noexcept = default;
JournalFile& JournalFile::operator=(JournalFile&&) noexcept = default;
JournalFile::~JournalFile() = default;

void JournalFile::add(std::string_view record) {
    if (torn_)
        throw fileFault("write", path_.string(), EIO);
    std::array<char, kDigits> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), crc32(record), 16);
    line_.assign(kDigits - static_cast<std::size_t>(end - digits.data()), '0');
    line_.append(digits.data(), end);
    line_ += ' ';
    line_ += record;
    line_ += '\n';
    std::string_view rest = line_;
    while (!rest.empty()) {
        const ssize_t written = ::write(disk_->file, rest.data(), rest.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            // More behind a torn line would make damage of it.
            torn_ = true;
            throw fileFault("write", path_.string(), errno);
        }
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

void JournalFile::flush(bool wait) {
    if (const int error = disk_->flush(wait); error != 0)
        throw fileFault("write", path_.string(), error);
}

bool journalInUse(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return false;
    struct flock range {};
    const bool used = lock(file, F_OFD_GETLK, range) == 0 && range.l_type != F_UNLCK;
    ::close(file);
    return used;
}

JournalExtent readJournal(const std::filesystem::path& path,
                          const std::function<bool(std::string_view record)>& take) {
    Lines lines(path);
    JournalExtent extent;
    for (std::string_view line; lines.next(line);) {
        const bool ended = line.back() == '\n';
        const auto record = ended ? recordOf(line.substr(0, line.size() - 1)) : std::nullopt;
        if (!record) {
            std::string_view behind;
            (lines.next(behind) ? extent.damaged : extent.torn) = true;
            break;
        }
        extent.good += line.size();
        ++extent.line;
        if (!take(*record))
            break;
    }
    return extent;
}

} // namespace vrk
