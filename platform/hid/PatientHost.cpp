#include "platform/hid/PatientHost.h"

#include <utility>

namespace vrk::hid {

namespace {

/// A wait this short is not worth two changes of thread. The drain of stale reports waits 1 ms a step.
constexpr std::chrono::milliseconds kDirectRead{1};

constexpr const char* kBusy = "Another exchange with the board is under way";

} // namespace

PatientHost::PatientHost(HidHost& host, EventLoop& events, std::function<void()> paintOnly)
    : host_(host), events_(events), paintOnly_(std::move(paintOnly)), worker_([this] { work(); }) {}

PatientHost::~PatientHost() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    worker_.join();
}

void PatientHost::work() {
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return call_ || stopping_; });
        if (!call_)
            return;
        const auto* call = call_;
        lock.unlock();
        (*call)();
        lock.lock();
        call_ = nullptr;
        done_.notify_one();
    }
}

void PatientHost::paint() noexcept {
    try {
        if (paintOnly_)
            paintOnly_();
    } catch (...) {
        // The exchange must come to its end whatever becomes of the picture.
    }
}

void PatientHost::run(const std::function<void()>& call) {
    inFlight_ = true;
    {
        std::unique_lock lock(mutex_);
        call_ = &call;
        wake_.notify_one();
        const auto isDone = [this] { return call_ == nullptr; };
        if (!done_.wait_for(lock, kOutright, isDone)) {
            const EventLoop::Hold hold(events_);
            do {
                lock.unlock();
                paint();
                lock.lock();
            } while (!done_.wait_for(lock, kPaintInterval, isDone));
        }
    }
    inFlight_ = false;
    for (const Handle handle : std::exchange(toClose_, {}))
        host_.close(handle);
}

std::vector<DeviceInfo> PatientHost::list() {
    std::vector<DeviceInfo> devices;
    if (!inFlight_)
        run([&] { devices = host_.list(); });
    return devices;
}

Handle PatientHost::open(const std::string& path) {
    Handle handle = kNoHandle;
    if (!inFlight_)
        run([&] { handle = host_.open(path); });
    return handle;
}

bool PatientHost::write(Handle handle, const Report& report) {
    bool taken = false;
    if (!inFlight_)
        run([&] { taken = host_.write(handle, report); });
    return taken;
}

ReadResult PatientHost::read(Handle handle, Report& report, std::chrono::milliseconds timeout) {
    if (inFlight_)
        return ReadResult::TimedOut;
    if (timeout <= kDirectRead)
        return host_.read(handle, report, timeout);
    ReadResult result = ReadResult::Failed;
    run([&] { result = host_.read(handle, report, timeout); });
    return result;
}

void PatientHost::close(Handle handle) noexcept {
    if (inFlight_)
        toClose_.push_back(handle);
    else
        host_.close(handle);
}

std::string PatientHost::lastError() const {
    return inFlight_ ? std::string(kBusy) : host_.lastError();
}

} // namespace vrk::hid
