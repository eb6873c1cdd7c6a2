#pragma once

#include "platform/runtime/Clock.h"
#include "platform/runtime/Signal.h"

#include <functional>
#include <string>
#include <vector>

namespace vrk {

class Activity;

/// Which long actions run, the outermost first. The window's band shows the innermost that can be aborted,
/// with its progress, and gives it the Abort button and Esc.
class Activities {
  public:
    explicit Activities(Clock& clock) : clock_(clock) {}
    Activities(const Activities&) = delete;
    Activities& operator=(const Activities&) = delete;

    const std::vector<Activity*>& running() const { return running_; }
    /// The innermost; nullptr while nothing runs.
    Activity* current() const { return running_.empty() ? nullptr : running_.back(); }
    /// Asks the innermost one that can be aborted to stop. \return false if there is none.
    bool abort();
    [[nodiscard]] Subscription observe(std::function<void()> observer) {
        return changed_.connect(std::move(observer));
    }

  private:
    friend class Activity;
    Clock& clock_;
    std::vector<Activity*> running_;
    Signal<> changed_;
};

/// One long action, for as long as it exists.
class Activity {
  public:
    /// \param abort asks the action to stop at its next step; empty if it cannot be.
    Activity(Activities& all, std::string name, std::function<void()> abort = {});
    ~Activity();
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    const std::string& name() const { return name_; }
    /// \param total 0 while the length is not known.
    void progress(int done, int total);
    int done() const { return done_; }
    int total() const { return total_; }
    Milliseconds elapsed() const;
    /// From the mean of the steps so far; 0 while it cannot be told.
    Milliseconds left() const;
    bool abortable() const { return static_cast<bool>(abort_); }
    /// True once the user asked to stop.
    bool aborting() const { return aborting_; }
    void abort();

  private:
    Activities& all_;
    std::string name_;
    std::function<void()> abort_;
    Milliseconds started_;
    int done_ = 0;
    int total_ = 0;
    bool aborting_ = false;
};

} // namespace vrk
