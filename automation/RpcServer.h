#pragma once

#include "automation/BenchMethods.h"
#include "automation/BenchTarget.h"
#include "automation/RpcError.h"
#include "automation/paths.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// Serves a bench by JSON-RPC 2.0, one message a line, whatever carries the lines. Lives on the thread of the
/// event loop; messages may come from inside a running action, when it lets events run.
class RpcServer {
  public:
    using Send = std::function<void(const std::string& line)>;

    /// \param send gets each answer and notification, without the line's end.
    RpcServer(const BenchTarget& bench, Send send);
    RpcServer(const RpcServer&) = delete;
    RpcServer& operator=(const RpcServer&) = delete;

    /// Takes one message: a request, a notification or a batch, whose requests run one after the other. An
    /// answer may come later, while other messages are taken.
    void handle(const std::string& line);
    /// Answers a line that is not to be read.
    void refuseLine(const std::string& why);

    /// Requests that run inside one another's actions, at most: each stands on the stack until the one inside
    /// it is over.
    static constexpr int kDeepest = 64;
    /// False while the requests that run are nested as deep as they may: lines wait then.
    bool mayTake() const { return nesting_ < kDeepest && !bench_.events.full(); }

    /// Once the program has ended no event runs any more: answers what still waits for one.
    void settle();

    /// Grows with each request and key that was handled: work goes on, and no action stands alone.
    std::uint64_t handled() const { return handled_; }
    /// A request of `at` is still to come.
    bool expectsRequest() const { return requestsToCome_ > 0; }

  private:
    /// Takes {"result": ...} or {"error": ...}, once.
    using Answer = std::function<void(const Json& outcome)>;
    using Ticket = std::uint64_t;
    struct Batch;
    struct Typing;

    void take(const std::string& line);
    /// \param answer gets the whole answer, null where none is due.
    void serve(const Json& message, const std::function<void(const Json& answer)>& answer);
    void runBatch(const std::shared_ptr<Batch>& batch);
    void run(const std::string& method, const Json& params, const Json& id, const Answer& answer);
    Json runNow(const std::string& method, const Json& params);
    void runAt(const Json& params, const Json& id, const Answer& answer);
    /// A request whose time has come. It waits behind those before it while too many run.
    void runDueRequest(std::function<void()> request);
    void runOverdue();
    void postOverdue();
    void type(const Json& params, const Answer& answer);
    void typeKey(Typing& typing, int key);
    void switchWire(bool on);

    void send(const Json& message) const;
    void notify(const char* method, const Json& params) const;

    /// Keeps an answer until it is given, so that settle() finds it.
    Ticket keep(Answer answer);
    void give(Ticket ticket, const Json& outcome);

    BenchTarget bench_;
    BenchMethods methods_;
    Send send_;
    Ticket nextTicket_ = 1;
    std::uint64_t handled_ = 0;
    int requestsToCome_ = 0;
    int nesting_ = 0;
    bool overduePosted_ = false;
    std::deque<std::function<void()>> overdue_; ///< requests of `at` that wait for others to end
    std::map<Ticket, Answer> waiting_;
    Subscription wire_;
    /// Events that are still queued when the server goes find that it is gone.
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

} // namespace vrk
