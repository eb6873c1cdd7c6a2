#include "platform/controls/Activities.h"

#include <algorithm>
#include <utility>

namespace vrk {

bool Activities::abort() {
    const auto found = std::find_if(running_.rbegin(), running_.rend(),
                                    [](const Activity* one) { return one->abortable(); });
    if (found == running_.rend())
        return false;
    (*found)->abort();
    return true;
}

Activity::Activity(Activities& all, std::string name, std::function<void()> abort)
    : all_(all), name_(std::move(name)), abort_(std::move(abort)), started_(all.clock_.now()) {
    all_.running_.push_back(this);
    all_.changed_.emit();
}

Activity::~Activity() {
    std::erase(all_.running_, this);
    all_.changed_.emit();
}

void Activity::progress(int done, int total) {
    done_ = done;
    total_ = total;
    all_.changed_.emit();
}

Milliseconds Activity::elapsed() const {
    return all_.clock_.now() - started_;
}

Milliseconds Activity::left() const {
    if (done_ <= 0 || total_ <= done_)
        return Milliseconds{0};
    return Milliseconds{elapsed().count() * (total_ - done_) / done_};
}

void Activity::abort() {
    if (!abort_ || std::exchange(aborting_, true))
        return;
    abort_();
    all_.changed_.emit();
}

} // namespace vrk
