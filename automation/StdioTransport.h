#pragma once

#include "automation/RpcServer.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace vrk {

/// Reads lines from a file descriptor on a thread of its own, so that the bench's thread can look for one
/// without waiting.
class LineReader {
  public:
    /// What a client sends without a line's end until then is taken as one; the rest of the line is dropped.
    static constexpr std::size_t kLongestLine = std::size_t{16} << 20;

    struct Line {
        std::string text; ///< without the line's end
        bool tooLong = false;
    };

    /// \param stop becomes readable when the program is to end, and stays so; -1 for none.
    LineReader(int input, int stop);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Nothing if no line is there now.
    std::optional<Line> take();
    /// Lines that are there now.
    std::size_t waiting() const;
    /// Sleeps until a line is there, the input has ended or the time is over.
    void wait(std::optional<std::chrono::milliseconds> most);
    /// Sleeps until the input has ended or the time is over.
    void waitForEnd(std::optional<std::chrono::milliseconds> most);
    /// The input has ended; lines may be left to take.
    bool ended() const;
    /// True when the input has ended and every line is taken.
    bool finished() const;
    bool stopped() const;

  private:
    void readAll();
    bool full() const;
    void waitUntil(const std::function<bool()>& something, std::optional<std::chrono::milliseconds> most);
    void wake() noexcept;
    void addText(std::string_view text);
    void addLine();

    int input_;
    int stop_;
    int wakePipe_[2];
    std::string pending_; ///< of the reading thread: a line without its end as yet
    bool pendingTooLong_ = false;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Line> lines_;
    std::size_t waitingBytes_ = 0;
    bool ended_ = false;
    bool stopped_ = false;
    std::atomic<bool> leaving_{false};
    std::thread thread_;
};

/// Carries a server's messages over two file descriptors, a line each. Requests are served on the thread that
/// calls run(): between actions, and inside one when it lets events run, as a window's events would be.
class StdioTransport {
  public:
    /// \param stop becomes readable when the program is to end, and stays so: run() then ends soon, and an
    /// action under it the next time that it lets events run. -1 for none.
    StdioTransport(const BenchTarget& bench, int input, int output, int stop = -1);
    ~StdioTransport();

    /// Serves until the input ends and all that came is done, until a stop, or until an answer cannot be
    /// written.
    void run();

    /// Why an answer could not be written: the system's error number, ECANCELED for a stop; 0 if all were.
    int outputError() const { return outputError_; }

  private:
    void write(const std::string& line);
    /// \param most lines at the most
    void serveQueued(std::size_t most);
    void pumpInsideAction();
    /// An action stands until the user does something.
    void waitInsideAction(std::optional<Milliseconds> untilNext);
    bool stopping() const { return outputError_ != 0 || reader_.stopped(); }
    /// Nobody is left who could stop a running action.
    bool alone() const;

    EventLoop& events_;
    bool virtualTime_;
    int output_;
    int stop_;
    int outputError_ = 0;
    std::optional<Milliseconds> aloneSince_; ///< and no request or key was handled since
    std::uint64_t handledAlone_ = 0;
    LineReader reader_;
    RpcServer server_;
};

} // namespace vrk
