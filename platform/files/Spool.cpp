#include "platform/files/Spool.h"

#include "platform/runtime/Fault.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace vrk {

namespace {

constexpr char kWhere[] = "the temporary file";

int openNameless() {
    const char* folder = std::getenv("TMPDIR");
    std::string path =
        std::string(folder != nullptr && *folder != '\0' ? folder : "/var/tmp") + "/vrkbench-XXXXXX";
    const int file = ::mkostemp(path.data(), O_CLOEXEC);
    if (file < 0)
        throw fileFault("write", path, errno);
    ::unlink(path.c_str());
    return file;
}

} // namespace

Spool::~Spool() {
    clear();
}

void Spool::clear() {
    if (file_ >= 0)
        ::close(file_);
    file_ = -1;
    size_ = 0;
}

void Spool::append(std::string_view text) {
    if (file_ < 0)
        file_ = openNameless();
    // At its place: what a write that failed half-way has left is written over by the next.
    std::uint64_t at = size_;
    while (!text.empty()) {
        const ssize_t written = ::pwrite(file_, text.data(), text.size(), static_cast<off_t>(at));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            throw fileFault("write", kWhere, errno);
        }
        at += static_cast<std::uint64_t>(written);
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    size_ = at;
}

std::string Spool::read(std::uint64_t offset, std::size_t length) const {
    std::string text(length, '\0');
    std::size_t done = 0;
    while (done < length) {
        const ssize_t count =
            ::pread(file_, text.data() + done, length - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            throw fileFault("read", kWhere, count < 0 ? errno : EIO);
        done += static_cast<std::size_t>(count);
    }
    return text;
}

} // namespace vrk
