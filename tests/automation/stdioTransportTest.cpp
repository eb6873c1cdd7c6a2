#include "automation/StdioTransport.h"
#include "tests/automation/RpcBench.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <future>
#include <unistd.h>

using namespace vrk;
using namespace vrk::test;

namespace {
struct Pipe {
    std::array<int, 2> ends{};
    Pipe() {
        if (pipe(ends.data()) != 0)
            ends = {-1, -1};
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    void closeEnd(std::size_t which) {
        if (ends[which] >= 0)
            ::close(std::exchange(ends[which], -1));
    }
    void write(const std::string& text) const {
        EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Everything until the other end closes.
    std::vector<Json> readAll() const {
        std::string all;
        std::array<char, 4096> block{};
        for (ssize_t count; (count = ::read(ends[0], block.data(), block.size())) > 0;)
            all.append(block.data(), static_cast<std::size_t>(count));
        std::vector<Json> lines;
        std::size_t from = 0;
        for (std::size_t end; (end = all.find('\n', from)) != std::string::npos; from = end + 1)
            lines.push_back(Json::parse(all.substr(from, end - from)));
        return lines;
    }
};

/// Serves `input` to its end and gives what came out.
std::vector<Json> served(RpcBench& bench, const std::string& input) {
    Pipe in;
    Pipe out;
    in.write(input);
    in.closeEnd(1);
    {
        StdioTransport transport(bench.target, in.ends[0], out.ends[1]);
        transport.run();
    }
    out.closeEnd(1);
    return out.readAll();
}

TEST(StdioTransport, finishesWhatCameBeforeTheEndOfInput) {
    RpcBench bench;
    const auto lines = served(
        bench,
        "{\"id\":1,\"method\":\"type\",\"params\":{\"path\":\"frmProbe.txtHex\",\"text\":\"3F\"}}\r\n\n"
        "{\"id\":2,\"method\":\"get\",\"params\":{\"path\":\"frmProbe.txtHex\"}}\nnonsense\n"
        "{\"id\":3,\"method\":\"now\"}");
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0]["id"], 1) << "keys are handled before the next request";
    EXPECT_EQ(lines[1]["result"]["text"], "3F");
    EXPECT_EQ(lines[2]["error"]["code"], -32700);
    EXPECT_EQ(lines[3]["id"], 3) << "a last line needs no line end";
}

TEST(StdioTransport, servesRequestsInsideARunningAction) {
    RpcBench bench;
    const auto lines =
        served(bench, "{\"id\":1,\"method\":\"click\",\"params\":{\"path\":\"frmProbe.cmdLong\"}}\n"
                      "{\"id\":2,\"method\":\"click\",\"params\":{\"path\":\"frmProbe.cmdAbort\"}}\n");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["id"], 2);
    EXPECT_EQ(lines[1]["id"], 1);
    EXPECT_TRUE(lines[1].contains("result"));
}

TEST(StdioTransport, anEndlessActionEndsWhenNobodyIsLeftToStopIt) {
    RpcBench bench;
    const auto lines =
        served(bench, "{\"id\":1,\"method\":\"click\",\"params\":{\"path\":\"frmProbe.cmdLong\"}}\n");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]["error"]["code"], -32003);
    EXPECT_TRUE(bench.events.ended());
}

TEST(StdioTransport, stopAndAClosedOutputEndIt) {
    std::signal(SIGPIPE, SIG_IGN);
    for (const bool byStop : {true, false}) {
        RpcBench bench;
        Pipe in;
        Pipe out;
        StdioTransport transport(bench.target, in.ends[0], out.ends[1]);
        auto running = std::async(std::launch::async, [&] { transport.run(); });
        if (byStop) {
            transport.stop();
        } else {
            out.closeEnd(0);
            in.write("{\"id\":1,\"method\":\"now\"}\n");
        }
        EXPECT_EQ(running.wait_for(std::chrono::seconds(20)), std::future_status::ready);
        in.closeEnd(1);
    }
}
} // namespace
