#include "platform/files/OutputFile.h"

#include "platform/runtime/Fault.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace vrk {

int writeAll(int descriptor, std::string_view bytes) {
    constexpr int kPatienceMs = 5000;
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd room{.fd = descriptor, .events = POLLOUT, .revents = 0};
            if (::poll(&room, 1, kPatienceMs) == 0)
                return ETIMEDOUT;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

OutputFile::OutputFile(const std::filesystem::path& path, Mode mode)
    : file_(::open(path.c_str(),
                   O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK |
                       (mode == Mode::Append ? O_APPEND : O_TRUNC),
                   0666)) {
    if (file_ >= 0)
        return;
    const int error = errno;
    std::error_code ignored;
    if (error == ENXIO && std::filesystem::is_fifo(path, ignored))
        throw Fault("Cannot open \"" + path.string() + "\": it is a pipe that nobody reads");
    throw fileFault("open", path.string(), error);
}

OutputFile::~OutputFile() {
    (void)close();
}

int OutputFile::close() {
    const int file = std::exchange(file_, -1);
    return file < 0 || ::close(file) == 0 ? 0 : errno;
}

} // namespace vrk
