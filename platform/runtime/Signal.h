#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vrk {

/// Ends its connection when it goes. Safe to outlive the signal.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    ~Subscription() { reset(); }

    void reset() {
        if (auto end = std::exchange(end_, nullptr))
            end();
    }

  private:
    std::function<void()> end_;
};

/// Calls every connected function in the order of connection. A function may connect or disconnect others
/// and itself while it runs; one that is connected meanwhile is called from the next time on.
template <class... Args>
class Signal {
  public:
    using Slot = std::function<void(Args...)>;

    [[nodiscard]] Subscription connect(Slot slot) {
        auto entry = std::make_shared<Slot>(std::move(slot));
        slots_->push_back(entry);
        return Subscription([list = std::weak_ptr(slots_), weak = std::weak_ptr(entry)] {
            auto slots = list.lock();
            auto gone = weak.lock();
            if (!slots || !gone)
                return;
            *gone = nullptr;
            std::erase(*slots, gone);
        });
    }

    bool empty() const { return slots_->empty(); }

    void emit(Args... args) const {
        if (slots_->empty())
            return;
        const auto snapshot = *slots_;
        for (const auto& slot : snapshot)
            if (*slot)
                (*slot)(args...);
    }

  private:
    std::shared_ptr<std::vector<std::shared_ptr<Slot>>> slots_ =
        std::make_shared<std::vector<std::shared_ptr<Slot>>>();
};

} // namespace vrk
