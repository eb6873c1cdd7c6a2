#include "automation/RpcServer.h"

#include "automation/gestures.h"
#include "automation/parameters.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

namespace {
/// The methods that answer later, change the server itself, or are gestures; BenchMethods has the rest.
constexpr std::array kOwnMethods = {"type",  "at",    "wire",   "click",  "key",  "enter",
                                    "focus", "leave", "select", "scroll", "drag", "doubleClick"};

Json failure(RpcCode code, const std::string& text) {
    return {{"error", {{"code", static_cast<int>(code)}, {"message", text}}}};
}

Json success(Json result) {
    Json outcome;
    outcome["result"] = std::move(result);
    return outcome;
}

/// Runs `act`, which gives a result or throws, and makes an outcome of it.
template <class Act>
Json outcomeOf(const Act& act) {
    try {
        return success(act());
    } catch (const RpcError& error) {
        return failure(error.code(), error.what());
    } catch (const std::exception& fault) {
        return failure(RpcCode::Faulted, fault.what());
    }
}

Json answerWith(const Json& id, const Json& outcome) {
    Json answer = {{"jsonrpc", "2.0"}, {"id", id}};
    answer.update(outcome);
    return answer;
}

bool isKnown(const std::string& method) {
    return BenchMethods::find(method) != nullptr ||
           std::find(kOwnMethods.begin(), kOwnMethods.end(), method) != kOwnMethods.end();
}

RpcError unknownMethod(const std::string& method) {
    std::string all;
    for (const std::string& name : BenchMethods::names())
        all += name + ", ";
    for (const char* name : kOwnMethods)
        all += std::string(name) + (name == kOwnMethods.back() ? "" : ", ");
    return {RpcCode::MethodNotFound, "unknown method '" + method + "'; methods: " + all};
}

const Json kNoParams = Json::object();

/// Each key and each request to come is an event that is kept.
constexpr std::size_t kMostKeys = 100'000;
constexpr int kMostToCome = 100'000;

/// The parameters of a request. \throws RpcError unless they go by name.
const Json& paramsOf(const Json& request) {
    const Json* params = findParameter(request, "params");
    if (params != nullptr && !params->is_object())
        throw invalidParams("parameters go by name, in an object");
    return params == nullptr ? kNoParams : *params;
}

/// What is wrong with the frame of a request; empty if nothing is.
std::string frameError(const Json& message) {
    if (!message.is_object())
        return "a request is an object";
    if (const Json* version = findParameter(message, "jsonrpc"); version != nullptr && *version != "2.0")
        return "'jsonrpc' must be \"2.0\"";
    if (const Json* method = findParameter(message, "method"); method == nullptr || !method->is_string())
        return "'method' must be a text";
    if (const Json* id = findParameter(message, "id"); id != nullptr && !id->is_string() && !id->is_number())
        return "'id' must be a text or a number";
    return {};
}
} // namespace

/// Requests of one line. Each begins when the one before it is answered.
struct RpcServer::Batch {
    std::vector<Json> messages;
    std::size_t next = 0;
    Json answers = Json::array();
    bool looping = false;
    bool waits = false;
};

/// A text on its way into a box.
struct RpcServer::Typing {
    Path path;
    std::size_t keysLeft = 0;
    std::optional<Json> failed{}; ///< what became of the first key that did not pass
};

RpcServer::RpcServer(const BenchTarget& bench, Send send)
    : bench_(bench), methods_(bench), send_(std::move(send)) {}

void RpcServer::send(const Json& message) const {
    // Texts may come from files of any encoding: what is no UTF-8 must not stop an answer.
    send_(message.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void RpcServer::notify(const char* method, const Json& params) const {
    send({{"jsonrpc", "2.0"}, {"method", method}, {"params", params}});
}

namespace {
/// What a line may hold. Copies and texts of a value go as deep as the value does, and the stack must bear
/// it; an object is searched member by member, for each member that is added.
class LineLimits {
  public:
    bool accept(int depth, Json::parse_event_t event) {
        constexpr int kDeepestValue = 64;
        constexpr std::size_t kMostMembers = 256;
        const auto level = static_cast<std::size_t>(depth);
        if (depth > kDeepestValue) {
            code_ = RpcCode::ParseError;
            broken_ = "the line is nested too deep";
        } else if (event == Json::parse_event_t::object_start) {
            members_.resize(std::max(members_.size(), level + 2));
            members_[level + 1] = 0;
        } else if (event == Json::parse_event_t::key && ++members_[level] > kMostMembers) {
            code_ = RpcCode::InvalidRequest;
            broken_ = "an object has more than " + std::to_string(kMostMembers) + " members";
        }
        return broken_.empty();
    }
    /// What is wrong with the line; empty if nothing is.
    const std::string& broken() const { return broken_; }
    RpcCode code() const { return code_; }

  private:
    std::vector<std::size_t> members_; ///< of the object that is open at a depth
    std::string broken_;
    RpcCode code_ = RpcCode::ParseError;
};

/// Counts for as long as it lives.
class Nesting {
  public:
    explicit Nesting(int& count) : count_(count) { ++count_; }
    ~Nesting() { --count_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

  private:
    int& count_;
};
} // namespace

void RpcServer::refuseLine(const std::string& why) {
    send(answerWith(nullptr, failure(RpcCode::InvalidRequest, why)));
}

void RpcServer::handle(const std::string& line) {
    {
        const Nesting nesting(nesting_);
        take(line);
    }
    postOverdue();
    settle();
}

void RpcServer::take(const std::string& line) {
    LineLimits limits;
    Json message = Json::parse(
        line, [&limits](int depth, Json::parse_event_t event, Json&) { return limits.accept(depth, event); },
        false);
    if (!limits.broken().empty()) {
        send(answerWith(nullptr, failure(limits.code(), limits.broken())));
    } else if (message.is_discarded()) {
        send(answerWith(nullptr, failure(RpcCode::ParseError, "the line is no JSON")));
    } else if (message.is_array() && !message.empty()) {
        auto batch = std::make_shared<Batch>();
        batch->messages = std::move(message.get_ref<Json::array_t&>());
        runBatch(batch);
    } else {
        serve(message, [this](const Json& answer) {
            if (!answer.is_null())
                send(answer);
        });
    }
}

void RpcServer::runBatch(const std::shared_ptr<Batch>& batch) {
    batch->looping = true;
    while (!batch->waits && batch->next < batch->messages.size()) {
        batch->waits = true;
        serve(batch->messages[batch->next++], [this, batch](const Json& answer) {
            batch->waits = false;
            if (!answer.is_null())
                batch->answers.push_back(answer);
            if (!batch->looping)
                runBatch(batch);
        });
    }
    batch->looping = false;
    if (!batch->waits && !batch->answers.empty())
        send(batch->answers);
}

void RpcServer::serve(const Json& message, const std::function<void(const Json&)>& answer) {
    if (const std::string wrong = frameError(message); !wrong.empty()) {
        answer(answerWith(nullptr, failure(RpcCode::InvalidRequest, wrong)));
        return;
    }
    const bool wanted = message.contains("id");
    const Json id = wanted ? message["id"] : Json();
    const Answer give = [answer, wanted, id](const Json& outcome) {
        answer(wanted ? answerWith(id, outcome) : Json());
    };
    try {
        run(message["method"].get<std::string>(), paramsOf(message), id, give);
    } catch (const RpcError& error) {
        give(failure(error.code(), error.what()));
    }
}

void RpcServer::run(const std::string& method, const Json& params, const Json& id, const Answer& answer) {
    ++handled_;
    // Errors of the two that answer by themselves come as exceptions, before they have answered.
    if (bench_.events.ended() && method != "dialogs")
        throw RpcError(RpcCode::Ended, "the program has ended");
    if (method == "type")
        type(params, answer);
    else if (method == "at")
        runAt(params, id, answer);
    else
        answer(outcomeOf([&] { return runNow(method, params); }));
}

Json RpcServer::runNow(const std::string& method, const Json& params) {
    Json result;
    if (isGesture(method))
        result = methods_.gesture(method, params);
    else if (method == "wire")
        switchWire(flagParameter(params, "on"));
    else if (const BenchMethods::Method found = BenchMethods::find(method))
        result = (methods_.*found)(params);
    else
        throw unknownMethod(method);
    // The program may have ended under a request that was served while it ran.
    if (bench_.events.ended() && method != "dialogs")
        throw RpcError(RpcCode::Ended, "the program has ended");
    return result;
}

void RpcServer::switchWire(bool on) {
    if (bench_.wire == nullptr)
        throw RpcError(RpcCode::MethodNotFound, "this run does not record the wire");
    wire_.reset();
    if (!on)
        return;
    wire_ = bench_.wire->observe([this](const hid::WireEvent& event) {
        Json params = {{"ms", event.at.count()},
                       {"dir", event.direction == hid::WireEvent::Direction::Out ? "out" : "in"},
                       {"board", event.board},
                       {"hex", hexOfBytes(event.report.data(), event.report.size())}};
        if (event.failed)
            params["failed"] = true;
        notify("wire", params);
    });
}

void RpcServer::runAt(const Json& params, const Json& id, const Answer& answer) {
    constexpr std::int64_t kTenYears = std::int64_t{10} * 366 * 86'400'000;
    const Milliseconds delay(wholeParameter(params, "ms", 0, kTenYears));
    const Json* request = findParameter(params, "request");
    if (request == nullptr)
        throw invalidParams("parameter 'request' is missing");
    if (const std::string wrong = frameError(*request); !wrong.empty())
        throw invalidParams("parameter 'request': " + wrong);
    const std::string method = request->at("method");
    if (!isKnown(method))
        throw unknownMethod(method);
    if (requestsToCome_ >= kMostToCome)
        throw invalidParams("at most " + std::to_string(kMostToCome) + " requests may be still to come");
    const Ticket ticket = keep([this, id](const Json& outcome) {
        Json done = {{"id", id}, {"ms", bench_.events.clock().now().count()}};
        done.update(outcome);
        notify("done", done);
    });
    bench_.events.postAfter(
        delay, [this, alive = std::weak_ptr(alive_), ticket, method, id, inner = paramsOf(*request)] {
            if (alive.expired())
                return;
            --requestsToCome_;
            runDueRequest([this, ticket, method, id, inner] {
                try {
                    run(method, inner, id, [this, ticket](const Json& outcome) { give(ticket, outcome); });
                } catch (const RpcError& error) {
                    give(ticket, failure(error.code(), error.what()));
                }
            });
        });
    ++requestsToCome_;
    answer(success(nullptr));
}

void RpcServer::runDueRequest(std::function<void()> request) {
    overdue_.push_back(std::move(request));
    if (overdue_.size() == 1)
        runOverdue();
}

void RpcServer::runOverdue() {
    if (overdue_.empty() || nesting_ >= kDeepest)
        return;
    const auto request = std::move(overdue_.front());
    overdue_.pop_front();
    // The next one may be what this one's action waits for.
    postOverdue();
    {
        const Nesting nesting(nesting_);
        request();
    }
    postOverdue();
}

void RpcServer::postOverdue() {
    if (overdue_.empty() || nesting_ >= kDeepest || std::exchange(overduePosted_, true))
        return;
    bench_.events.post([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired())
            return;
        overduePosted_ = false;
        runOverdue();
    });
}

void RpcServer::type(const Json& params, const Answer& answer) {
    const auto typing = std::make_shared<Typing>(Typing{parsePath(textParameter(params, "path"))});
    const std::string& text = textParameter(params, "text");
    if (text.size() > kMostKeys)
        throw invalidParams("parameter 'text' takes at most " + std::to_string(kMostKeys) + " characters");
    TextBox& box = asTextBox(methods_.usedControl(typing->path), "type");
    requireDone(box.userType({}), &box);
    const Ticket ticket = keep(answer);
    if (text.empty())
        give(ticket, success(nullptr));
    typing->keysLeft = text.size();
    for (const char c : text) {
        const int key = c == '\n' ? kEnterKey : static_cast<unsigned char>(c);
        bench_.events.post([this, alive = std::weak_ptr(alive_), typing, ticket, key] {
            if (alive.expired())
                return;
            typeKey(*typing, key);
            // A key may start an action that lets the keys behind it in: the last to return is the last
            // handled.
            if (--typing->keysLeft == 0)
                give(ticket, typing->failed.value_or(success(nullptr)));
        });
    }
}

void RpcServer::typeKey(Typing& typing, int key) {
    ++handled_;
    // The panel may have gone since the key was queued.
    const Json outcome = outcomeOf([&]() -> Json {
        TextBox& box = asTextBox(methods_.loadedControl(typing.path), "type");
        requireDone(box.userKey(key), &box);
        return nullptr;
    });
    if (outcome.contains("error") && !typing.failed)
        typing.failed = outcome;
}

RpcServer::Ticket RpcServer::keep(Answer answer) {
    waiting_.emplace(nextTicket_, std::move(answer));
    return nextTicket_++;
}

void RpcServer::give(Ticket ticket, const Json& outcome) {
    if (auto waiting = waiting_.extract(ticket))
        waiting.mapped()(outcome);
}

void RpcServer::settle() {
    if (!bench_.events.ended())
        return;
    while (!waiting_.empty())
        give(waiting_.begin()->first, failure(RpcCode::Ended, "the program has ended"));
}

} // namespace vrk
