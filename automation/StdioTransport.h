#pragma once

#include "automation/RpcServer.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace vrk {

/// Reads lines from a file descriptor on a thread of its own, so that the bench's thread can look for one
/// without waiting.
class LineReader {
  public:
    explicit LineReader(int input);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Without the line's end; nothing if none is there now.
    std::optional<std::string> take();
    /// Sleeps until a line is there, the input has ended, wake() was called or the time is over.
    void wait(std::optional<std::chrono::milliseconds> most);
    /// True when the input has ended and every line is taken.
    bool finished() const;
    /// Ends a wait. May be called from a signal handler.
    void wake() noexcept;

  private:
    void readAll();

    int input_;
    int wakePipe_[2];
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    bool ended_ = false;
    bool woken_ = false;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

/// Carries a server's messages over two file descriptors, a line each. Requests are served on the thread that
/// calls run(): between actions, and inside one when it lets events run, as a window's events would be.
class StdioTransport {
  public:
    StdioTransport(const BenchTarget& bench, int input, int output);
    ~StdioTransport();

    /// Serves until the input ends and all that came is done, or until stop().
    void run();

    /// Ends run() soon, and an action under it the next time that it lets events run. May be called from a
    /// signal handler.
    void stop() noexcept;

  private:
    void write(const std::string& line);
    void serveQueued();
    void pumpInsideAction();
    /// An action stands until the user does something.
    void waitInsideAction(std::optional<Milliseconds> untilNext);
    bool stopping() const { return stop_.load() || clientGone_; }

    EventLoop& events_;
    bool virtualTime_;
    int output_;
    bool clientGone_ = false;
    std::atomic<bool> stop_{false};
    std::optional<Milliseconds> aloneSince_;
    LineReader reader_;
    RpcServer server_;
};

} // namespace vrk
