#include "automation/descriptors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace vrk {

int writeWhole(int descriptor, std::string_view text, int stop) {
    while (!text.empty()) {
        std::array<pollfd, 2> ready = {{{descriptor, POLLOUT, 0}, {stop, POLLIN, 0}}};
        if (poll(ready.data(), ready.size(), -1) < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (ready[0].revents == 0)
            return ECANCELED;
        // A pipe that is ready has room for this much, so that the write cannot block.
        const auto written = ::write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || (errno != EINTR && errno != EAGAIN))
            return written == 0 ? EIO : errno;
    }
    return 0;
}

} // namespace vrk
