#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <optional>

namespace vrk {

/// Ctrl-C and the quit key of a terminal, a closed terminal and the system's request to end, as events of the
/// window: the program then ends as it does by its menu, and the supplies go off.
class SignalWatch final : public QObject {
  public:
    /// One at a time. \param came called for every one of these signals.
    explicit SignalWatch(std::function<void()> came);
    ~SignalWatch() override;

    /// 128 and the number of the first signal; nothing while none has come.
    std::optional<int> exitCode() const;

  private:
    std::function<void()> came_;
    std::optional<QSocketNotifier> notifier_;
};

} // namespace vrk
