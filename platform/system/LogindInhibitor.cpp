#include "platform/system/LogindInhibitor.h"

#include <fcntl.h>
#include <memory>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace vrk {

std::shared_ptr<void> LogindInhibitor::keepAwake(const std::string& why) {
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0)
        return nullptr;
    const std::unique_ptr<sd_bus, void (*)(sd_bus*)> closes(
        bus, [](sd_bus* open) { sd_bus_flush_close_unref(open); });
    constexpr std::uint64_t kPatience = 2'000'000; // microseconds: a bus that hangs must not hang the run
    sd_bus_set_method_call_timeout(bus, kPatience);
    sd_bus_message* reply = nullptr;
    const int called = sd_bus_call_method(bus, "org.freedesktop.login1", "/org/freedesktop/login1",
                                          "org.freedesktop.login1.Manager", "Inhibit", nullptr, &reply,
                                          "ssss", "sleep:idle", program_.c_str(), why.c_str(), "block");
    const std::unique_ptr<sd_bus_message, sd_bus_message* (*)(sd_bus_message*)> frees(reply,
                                                                                      sd_bus_message_unref);
    int given = -1;
    if (called < 0 || sd_bus_message_read(reply, "h", &given) < 0)
        return nullptr;
    // The lock is this descriptor: it ends when the last copy is closed, with the program at the latest.
    const int lock = fcntl(given, F_DUPFD_CLOEXEC, 3);
    if (lock < 0)
        return nullptr;
    return {new int(lock), [](const int* held) {
                close(*held);
                delete held;
            }};
}

} // namespace vrk
