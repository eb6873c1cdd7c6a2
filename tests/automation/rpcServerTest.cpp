#include "tests/automation/RpcBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vrk;
using namespace vrk::test;
using testing::HasSubstr;

namespace {
constexpr int kParseError = -32700, kInvalidRequest = -32600, kMethodNotFound = -32601,
              kInvalidParams = -32602;
constexpr int kRefused = -32001, kFaulted = -32002, kEnded = -32003;

Json click(const std::string& control) {
    return {{"path", "frmProbe." + control}};
}

TEST(RpcErrors, brokenMessages) {
    RpcBench bench;
    const std::tuple<const char*, int, const char*> kCases[] = {
        {"{", kParseError, "no JSON"},
        {"[]", kInvalidRequest, "object"},
        {"7", kInvalidRequest, "object"},
        {R"({"id":1,"method":7})", kInvalidRequest, "method"},
        {R"({"id":[],"method":"now"})", kInvalidRequest, "id"},
        {R"({"jsonrpc":"1.0","id":1,"method":"now"})", kInvalidRequest, "jsonrpc"},
        {R"({"id":1,"method":"get","params":["PBuf"]})", kInvalidParams, "by name"},
    };
    for (const auto& [line, code, says] : kCases) {
        bench.server.handle(line);
        const Json answer = bench.next();
        EXPECT_EQ(answer["error"]["code"], code) << line;
        EXPECT_THAT(answer["error"]["message"].get<std::string>(), HasSubstr(says));
    }
}

TEST(RpcErrors, aLineNestedTooDeepIsRefusedNotACrash) {
    RpcBench bench;
    constexpr std::size_t kLevels = 200'000;
    bench.server.handle(std::string(kLevels, '[') + std::string(kLevels, ']'));
    EXPECT_EQ(bench.next()["error"]["code"], kParseError);
}

TEST(RpcErrors, anObjectWithoutEndIsRefusedBeforeItCosts) {
    RpcBench bench;
    std::string line = R"({"id":1,"method":"now","params":{)";
    for (int member = 0; member < 100'000; ++member)
        line += (member == 0 ? "\"" : ",\"") + std::to_string(member) + "\":0";
    bench.server.handle(line + "}}");
    EXPECT_EQ(bench.next()["error"]["code"], kInvalidRequest);
}

TEST(RpcErrors, sayWhatWasWrong) {
    RpcBench bench;
    bench.frmProbe.load();
    const struct {
        const char* method;
        const char* params;
        const char* says;
        int code = kInvalidParams;
    } kCases[] = {
        {"press", R"~({})~", "unknown method 'press'; methods: panels, describe", kMethodNotFound},
        {"get", R"~({})~", "'path' is missing"},
        {"get", R"~({"path":"frmNone.chkBox"})~", "panels: frmProbe"},
        {"get", R"~({"path":"frmProbe.chkbox"})~", "mean chkBox?"},
        {"get", R"~({"path":"frmProbe.chkBox(0)"})~", "takes no index"},
        {"get", R"~({"path":"frmProbe.txtRow"})~", "index, 1 to 3"},
        {"get", R"~({"path":"frmProbe.txtRow(4)"})~", "index 4"},
        {"get", R"~({"path":"frmProbe.twice"})~", "call"},
        {"get", R"~({"path":"frmProbe.txtRow(-1)"})~", "no path"},
        {"get", R"~({"path":"pBuf(0)"})~", "mean PBuf?"},
        {"get", R"~({"path":"PBuf(3)"})~", "0 to 2"},
        {"get", R"~({"paths":"PBuf(0)"})~", "list"},
        {"set", R"~({"path":"frmProbe.chkBox","value":"x"})~", "\"x\""},
        {"set", R"~({"path":"frmProbe.shpGood","value":"lime"})~", "lime"},
        {"set", R"~({"path":"frmProbe.chkBox","value":1,"aspect":"colour"})~", "no aspect 'colour'"},
        {"type", R"~({"path":"frmProbe.chkBox","text":"1"})~", "is a CheckBox"},
        {"select", R"~({"path":"frmProbe.cboRate","index":2})~", "0 to 1"},
        {"drag", R"~({"path":"frmProbe.sldWiper","value":129})~", "1 to 128"},
        {"call", R"~({"path":"frmProbe.thrice"})~", "no action 'thrice'"},
        {"call", R"~({"path":"initall"})~", "mean initAll?"},
        {"call", R"~({"path":"initAll","args":[[1]]})~", "a list"},
        {"call", R"~({"path":"frmProbe.twice"})~", "takes 1 arguments, not 0"},
        {"call", R"~({"path":"frmProbe.twice","args":["x"]})~", "argument 1 must be a number"},
        {"set", R"~({"path":"PBuf(0)","value":"x"})~", "must be a number"},
        {"advance", R"~({"ms":1.5})~", "1.5"},
        {"at", R"~({"ms":1,"request":{"method":"press"}})~", "press", kMethodNotFound},
        {"answer", R"~({"choices":["Abort"]})~", "Abort"},
        {"wire", R"~({"on":"yes"})~", "true or false"},
        {"sim", R"~({"op":"explode"})~", "ops: parts"},
        {"sim", R"~({"op":"socket","part":"KV1"})~", "KV1"},
        {"sim", R"~({"op":"fault","kind":"smoke"})~", "noReply"},
        {"sim", R"~({"op":"unplug","board":3})~", "board"},
        {"sim", R"~({"op":"stale","hex":"0"})~", "hexadecimal"},
        {"sim", R"~({"op":"stale","hex":"00","count":1001})~", "1 to 1000"},
        {"get", R"~({"path":"frmProbe.PBuf"})~", "no control 'PBuf'"},
        {"get", R"~({"path":"frmProbe.TapCount(1)"})~", "takes no index"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(test.method) + " " + test.params);
        const Json answer = bench.ask(test.method, Json::parse(test.params));
        ASSERT_TRUE(answer.contains("error")) << answer;
        EXPECT_EQ(answer["error"]["code"], test.code);
        EXPECT_THAT(answer["error"]["message"].get<std::string>(), HasSubstr(test.says));
    }
    EXPECT_TRUE(bench.sent.empty());
    EXPECT_TRUE(bench.dialogs.takeShown().empty()) << "a slip of the client is no fault of the program";
}

TEST(RpcErrors, whatThisRunCannotServe) {
    RpcBench bench;
    bench.target.virtualClock = nullptr;
    bench.target.simulated = nullptr;
    bench.target.wire = nullptr;
    std::vector<Json> answers;
    RpcServer real(bench.target, [&](const std::string& line) { answers.push_back(Json::parse(line)); });
    for (const char* request : {R"({"id":1,"method":"advance","params":{"ms":1}})",
                                R"({"id":1,"method":"sim","params":{"op":"state"}})",
                                R"({"id":1,"method":"wire","params":{"on":true}})"})
        real.handle(request);
    ASSERT_EQ(answers.size(), 3u);
    for (const Json& answer : answers)
        EXPECT_EQ(answer["error"]["code"], kMethodNotFound) << answer;
}

TEST(RpcFields, assignmentShowsInTheAspectsOfItsKind) {
    RpcBench bench;
    bench.frmProbe.load();
    const std::tuple<const char*, const char*, const char*> kCases[] = {
        {"chkBox", R"({"value":1})",
         R"({"kind":"CheckBox","enabled":true,"visible":true,"tip":"","value":1,"caption":""})"},
        {"optMode(1)", R"({"value":true})", R"({"value":true})"},
        {"txtHex", R"({"value":"12345"})", R"({"text":"1234"})"},
        {"txtRow(3)", R"({"value":7})", R"({"text":"7"})"},
        {"cmdLong", R"({"value":"&Go"})", R"({"caption":"&Go"})"},
        {"cboRate", R"({"value":1})", R"({"rows":["100","400"],"itemData":[240,60],"index":1})"},
        {"sldWiper", R"({"value":900})", R"({"value":128,"min":1,"max":128,"tick":1})"},
        {"prgDone", R"({"value":40})", R"({"value":40,"max":100})"},
        {"shpGood", R"({"value":"light green"})", R"({"colour":"light green"})"},
        {"grdTable", R"({"value":"5A","row":1,"column":1})",
         R"({"rows":3,"columns":2,"firstRow":0,"firstColumn":0,"row":0,"cells":[["",""],["","5A"],["",""]]})"},
        {"rtxLog", R"({"value":"a\r\nb"})", R"({"text":"a\r\nb"})"},
        {"tmrBlink", R"({"value":250,"aspect":"interval"})", R"({"interval":250,"running":false})"},
        {"lblAnswer", R"({"value":false,"aspect":"visible"})", R"({"visible":false})"},
    };
    for (const auto& [path, set, aspects] : kCases) {
        SCOPED_TRACE(path);
        Json params = Json::parse(set);
        params["path"] = std::string("frmProbe.") + path;
        EXPECT_EQ(bench.result("set", params), nullptr);
        const Json got = bench.result("get", {{"path", params["path"]}});
        const Json wanted = Json::parse(aspects);
        for (const auto& [name, value] : wanted.items())
            EXPECT_EQ(got.value(name, Json("missing")), value) << name;
    }
    EXPECT_EQ(bench.result("get", {{"paths", {"frmProbe.optMode(0)", "PBuf(0)"}}})[0]["value"], false);
}

TEST(RpcFields, sharedValuesAndActionsByBareName) {
    RpcBench bench;
    EXPECT_EQ(bench.result("set", {{"path", "PBuf(2)"}, {"value", 200}}), nullptr);
    EXPECT_EQ(bench.result("get", {{"path", "PBuf(2)"}}), 200);
    EXPECT_EQ(bench.error("set", {{"path", "PBuf(2)"}, {"value", 256}}), kFaulted);
    EXPECT_EQ(bench.result("get", {{"path", "PBuf(2)"}}), 200);
    EXPECT_EQ(bench.result("call", {{"path", "initAll"}, {"args", {9}}}), 9);
    EXPECT_EQ(bench.result("call", {{"path", "frmProbe.twice"}, {"args", {"21"}}}), 42);
}

TEST(RpcPanels, readingLoadsNothingAndUseLoads) {
    RpcBench bench;
    EXPECT_EQ(bench.error("get", {{"path", "frmProbe.chkBox"}}), kInvalidParams);
    EXPECT_EQ(bench.error("close", {{"panel", "frmProbe"}}), kInvalidParams);
    EXPECT_EQ(bench.result("panels")[0]["loaded"], false);
    const Json description = bench.result("describe", {{"panel", "frmProbe"}});
    EXPECT_EQ(bench.result("panels")[0]["loaded"], true);
    const Json wanted = Json::parse(
        R"([{"name":"txtRow","kind":"TextBox","first":1,"last":3,"caption":"","tip":""},
            {"name":"twice","kind":"Action","first":null,"last":null,"caption":"","tip":""}])");
    for (const Json& entry : wanted)
        EXPECT_NE(std::find(description.begin(), description.end(), entry), description.end()) << entry;

    EXPECT_EQ(bench.result("show", {{"panel", "frmProbe"}}), nullptr);
    EXPECT_EQ(bench.result("panels")[0]["visible"], true);
    bench.frmProbe.panel()->setEnabled(false);
    EXPECT_EQ(bench.error("close", {{"panel", "frmProbe"}}), kRefused);
    bench.frmProbe.panel()->setEnabled(true);
    EXPECT_EQ(bench.result("close", {{"panel", "frmProbe"}}), nullptr);
    EXPECT_EQ(bench.result("panels")[0]["loaded"], false);
}

TEST(RpcGestures, refusedAndFaulted) {
    RpcBench bench;
    EXPECT_EQ(bench.result("click", click("chkBox")), nullptr);
    EXPECT_EQ(bench.aspect("frmProbe.chkBox", "value"), 1);

    EXPECT_EQ(bench.error("click", click("cmdDisabled")), kRefused);
    EXPECT_EQ(bench.error("click", click("chkHidden")), kRefused);
    EXPECT_THAT(bench.ask("click", click("chkHidden"))["error"]["message"].get<std::string>(),
                HasSubstr("group"));
    EXPECT_EQ(bench.aspect("frmProbe.chkHidden", "value"), 0);
    EXPECT_EQ(bench.error("type", {{"path", "frmProbe.cmdDisabled"}, {"text", "1"}}), kInvalidParams);

    bench.frmProbe.panel()->setEnabled(false);
    EXPECT_THAT(bench.ask("click", click("chkBox"))["error"]["message"].get<std::string>(),
                HasSubstr("panel that is disabled"));
    bench.frmProbe.panel()->setEnabled(true);

    const std::tuple<const char*, const char*, const char*> kHeard[] = {
        {"leave", R"({"path":"frmProbe.txtHex"})", "left "}, // scrolling takes the keyboard
        {"scroll", R"({"path":"frmProbe.sldWiper","value":9})", "scroll "},
        {"drag", R"({"path":"frmProbe.sldWiper","value":90})", "scroll up "}};
    EXPECT_EQ(bench.result("focus", click("txtHex")), nullptr);
    for (const auto& [gesture, params, heard] : kHeard) {
        bench.frmProbe->heard.clear();
        EXPECT_EQ(bench.result(gesture, Json::parse(params)), nullptr);
        EXPECT_EQ(bench.frmProbe->heard, heard) << gesture;
    }

    const Json fault = bench.ask("click", click("cmdFault"));
    EXPECT_EQ(fault["error"], Json({{"code", kFaulted}, {"message", "Subscript out of range"}}));
    EXPECT_EQ(bench.result("dialogs")[0]["text"], "Subscript out of range");
}

TEST(RpcGestures, typingPassesTheFilterAndAnswersBehindTheLastKey) {
    RpcBench bench;
    bench.frmProbe.load();
    bench.result("set", {{"path", "frmProbe.txtHex"}, {"value", "99"}});
    bench.server.handle(R"({"id":5,"method":"type","params":{"path":"frmProbe.txtHex","text":"3xf\n"}})");
    EXPECT_TRUE(bench.sent.empty()) << "the keys are not handled yet";
    bench.server.handle(R"({"id":6,"method":"get","params":{"path":"frmProbe.txtHex"}})");
    EXPECT_EQ(bench.next()["result"]["text"], "99") << "selected, not yet replaced";
    bench.events.runDue();
    EXPECT_EQ(bench.next()["id"], 5);
    EXPECT_EQ(bench.aspect("frmProbe.txtHex", "text"), "3F");
    EXPECT_EQ(bench.frmProbe->entered, 1);

    bench.server.handle(R"({"id":7,"method":"type","params":{"path":"frmProbe.txtHex","text":"AB"}})");
    bench.frmProbe->txtHex.setEnabled(false);
    bench.events.runDue();
    EXPECT_EQ(bench.next()["error"]["code"], kRefused);
    EXPECT_EQ(bench.aspect("frmProbe.txtHex", "text"), "3F");
}

TEST(RpcTime, aRequestRunsAtItsTimeInsideARunningAction) {
    RpcBench bench;
    for (const auto& [ms, control] : {std::pair{3000, "cmdAbort"}, {1000, "cmdFault"}})
        EXPECT_EQ(
            bench.result("at", {{"ms", ms}, {"request", {{"method", "click"}, {"params", click(control)}}}}),
            nullptr);
    bench.server.handle(R"({"id":9,"method":"click","params":{"path":"frmProbe.cmdLong"}})");
    const Json fault = bench.next();
    EXPECT_EQ(fault["method"], "done");
    EXPECT_EQ(fault["params"]["ms"], 1000);
    EXPECT_EQ(fault["params"]["error"]["code"], kFaulted);
    const Json done = bench.next();
    EXPECT_EQ(done["params"], Json({{"id", 1}, {"ms", 3000}, {"result", nullptr}}));
    EXPECT_EQ(bench.next()["id"], 9);
    EXPECT_EQ(bench.result("now"), Json({{"ms", 3000}, {"date", "2020-01-01"}, {"time", "12:00:03"}}));
}

TEST(RpcTime, advanceDeliversWhatFallsDue) {
    RpcBench bench;
    bench.ask("at", {{"ms", 86'400'000}, {"request", {{"method", "now"}}}});
    EXPECT_EQ(bench.result("advance", {{"ms", 86'399'999}})["date"], "2020-01-02");
    EXPECT_TRUE(bench.sent.empty());
    bench.server.handle(R"({"id":2,"method":"advance","params":{"ms":1}})");
    EXPECT_EQ(bench.next()["params"]["result"]["time"], "12:00:00");
    EXPECT_EQ(bench.next()["id"], 2);
}

TEST(RpcDialogs, answersAreTakenInOrderAndTheBoardChangesUnderABox) {
    RpcBench bench;
    EXPECT_EQ(bench.error("answer", {{"choices", {"Retry", "Perhaps"}}}), kInvalidParams);
    EXPECT_EQ(bench.result(
                  "answer",
                  {{"choices", {{{"choice", "Retry"}, {"sim", {{"op", "boards"}, {"count", 3}}}}, "Cancel"}},
                   {"files", {"a.txt", nullptr}}}),
              nullptr);
    bench.ask("click", click("cmdAsk"));
    EXPECT_EQ(bench.bus.boards(), 3);
    EXPECT_EQ(bench.aspect("frmProbe.lblFile", "caption"), "a.txt");
    const Json shown = bench.result("dialogs");
    ASSERT_EQ(shown.size(), 3u) << shown;
    EXPECT_EQ(shown[0], Json::parse(R"({"kind":"message","text":"Retry?","title":"Link",
        "buttons":["Retry","Cancel"],"answer":"Retry","filter":null,"name":null})"));
    EXPECT_EQ(shown[1]["answer"], "Cancel") << "what was refused whole queued nothing";
    EXPECT_EQ(shown[2]["filter"], "Text|*.txt");
    bench.ask("click", click("cmdAsk"));
    EXPECT_EQ(bench.result("dialogs")[1]["answer"], nullptr) << "a cancelled file dialog";
    EXPECT_TRUE(bench.result("dialogs").empty());

    bench.ask("answer", {{"choices", {{{"choice", "Cancel"}, {"sim", {{"op", "plug"}, {"board", 3}}}}}}});
    EXPECT_EQ(bench.ask("click", click("cmdAsk"))["result"], nullptr)
        << "a slip in the operation spares the action";
    EXPECT_EQ(bench.logged.size(), 1u);
}

TEST(RpcTime, requestsThatAreDueTogetherNestNoDeeperThanTheyMay) {
    RpcBench bench;
    constexpr int kRequests = 200;
    for (int request = 0; request < kRequests; ++request)
        bench.result("at", {{"ms", 1}, {"request", {{"method", "click"}, {"params", click("cmdNest")}}}});
    bench.server.handle(R"({"id":"advance","method":"advance","params":{"ms":5000}})");
    EXPECT_EQ(bench.sent.size(), kRequests + 1u);
    EXPECT_EQ(bench.frmProbe->clicks, kRequests);
    EXPECT_EQ(bench.frmProbe->deepest, RpcServer::kDeepest - 1) << "advance is one of them";
}

TEST(RpcFields, aReadingTellsWhatItIsWorthAndAPanelWhatIsItsOwn) {
    RpcBench bench;
    Reading& volts = bench.frmProbe->lblVolts;
    const auto worth = [&bench] {
        const Json aspects = bench.result("get", {{"path", "frmProbe.lblVolts"}});
        return std::pair(aspects["state"].get<std::string>(), aspects["ageMs"]);
    };
    EXPECT_EQ(worth(), std::pair(std::string("never"), Json()));
    volts.showRead("2.5");
    bench.clock.sleep(Milliseconds{40});
    EXPECT_EQ(worth(), std::pair(std::string("fresh"), Json(40)));
    volts.markStale("the address changed since");
    EXPECT_EQ(worth(), std::pair(std::string("stale"), Json(40)));
    EXPECT_FALSE(bench.result("get", {{"path", "frmProbe.lblFile"}}).contains("state"));

    EXPECT_EQ(bench.result("set", {{"path", "frmProbe.TapCount"}, {"value", 64}}), nullptr);
    EXPECT_EQ(bench.result("get", {{"paths", {"frmProbe.TapCount", "TapCount"}}}), Json({64, 128}));
}

TEST(RpcLog, tellsWhatTheSessionCameTo) {
    RpcBench bench;
    for (const char* text : {"Wrote 3F to wiper 0", "Read 3E from wiper 0"})
        bench.context.results.add({.good = text[0] == 'W',
                                   .text = text,
                                   .detail = "2.470 V",
                                   .field = "frmProbe.txtHex",
                                   .time = {}});
    const Json line =
        Json::parse(R"({"number":2,"good":false,"text":"Read 3E from wiper 0","detail":"2.470 V",
        "field":"frmProbe.txtHex","date":"2020-01-01","time":"12:00:00"})");
    EXPECT_EQ(bench.result("log", {{"since", 1}}), Json::array({line}));
    EXPECT_EQ(bench.result("log").size(), 2u);
}

TEST(RpcDialogs, whatNobodyAskedForIsDroppedAndTold) {
    RpcBench bench;
    constexpr std::size_t kOver = 3;
    for (std::size_t box = 0; box < ScriptedDialogs::kKept + kOver; ++box)
        bench.dialogs.show({std::to_string(box), "", {Choice::Ok}});
    EXPECT_EQ(bench.result("dialogs")[0]["text"], std::to_string(kOver));
    EXPECT_THAT(bench.logged.at(0), HasSubstr("3 dialogs"));
    for (int answer = 0; answer < 100'000; ++answer)
        bench.dialogs.answer({Choice::Ok, {}});
    EXPECT_EQ(bench.error("answer", {{"files", {nullptr}}}), kInvalidParams);
}

TEST(RpcEnd, everythingButDialogsTellsOfTheEnd) {
    RpcBench bench;
    bench.server.handle(R"({"id":"later","method":"at","params":{"ms":50,"request":{"method":"now"}}})");
    bench.server.handle(R"({"id":"keys","method":"type","params":{"path":"frmProbe.txtHex","text":"1"}})");
    bench.next();
    bench.server.handle(R"({"id":"end","method":"click","params":{"path":"frmProbe.cmdEnd"}})");
    EXPECT_EQ(bench.next()["error"]["code"], kEnded) << "the action did not get to its end";
    EXPECT_EQ(bench.next()["params"]["error"]["code"], kEnded);
    EXPECT_EQ(bench.next()["id"], "keys");
    EXPECT_EQ(bench.error("get", {{"path", "PBuf(0)"}}), kEnded);
    EXPECT_EQ(bench.error("press"), kEnded);
    EXPECT_EQ(bench.result("dialogs"), Json::array());
}

TEST(RpcBatch, runsOneBehindTheOtherAndAnswersTogether) {
    RpcBench bench;
    int enteredWhenClicked = 0;
    bench.frmProbe->chkBox.onClick([&] { enteredWhenClicked = bench.frmProbe->entered; });
    bench.server.handle(R"([
        {"id":1,"method":"type","params":{"path":"frmProbe.txtHex","text":"3F\n"}},
        {"method":"click","params":{"path":"frmProbe.chkBox"}},
        {"id":2,"method":"get","params":{"path":"frmProbe.txtHex"}}, 5])");
    EXPECT_TRUE(bench.sent.empty());
    bench.events.runDue();
    const Json answers = bench.next();
    ASSERT_EQ(answers.size(), 3u) << answers;
    EXPECT_EQ(answers[1]["result"]["text"], "3F");
    EXPECT_EQ(enteredWhenClicked, 1) << "the action of Enter lets events run, and is over all the same";
    EXPECT_EQ(answers[2]["error"]["code"], kInvalidRequest);
    EXPECT_TRUE(bench.frmProbe->chkBox.checked());

    bench.server.handle(R"([{"method":"now"}])");
    EXPECT_TRUE(bench.sent.empty()) << "notifications have no answer";
}

TEST(RpcWire, reportsComeAsNotificationsWhileItIsOn) {
    RpcBench bench;
    hid::Report request{};
    request[0] = 1;
    const auto exchange = [&](hid::Handle handle) {
        bench.recorder.write(handle, request);
        return bench.recorder.read(handle, request, Milliseconds{100});
    };
    const hid::Handle handle = bench.recorder.open(bench.recorder.list().at(0).path);
    exchange(handle);
    EXPECT_TRUE(bench.sent.empty());
    bench.ask("wire", {{"on", true}});
    const auto began = bench.clock.now().count();
    request = {1};
    exchange(handle);
    const Json out = bench.next();
    EXPECT_EQ(out["method"], "wire");
    EXPECT_GE(out["params"]["ms"], began);
    EXPECT_EQ(out["params"]["dir"], "out");
    EXPECT_EQ(out["params"]["board"], 0);
    EXPECT_EQ(out["params"]["hex"], "01" + std::string(126, '0'));
    EXPECT_FALSE(out["params"].contains("failed"));
    EXPECT_EQ(bench.next()["params"]["dir"], "in");
    bench.ask("sim", {{"op", "fault"}, {"kind", "writeFails"}});
    exchange(handle);
    EXPECT_EQ(bench.next()["params"]["failed"], true);
    bench.ask("wire", {{"on", false}});
    exchange(handle);
    EXPECT_TRUE(bench.sent.empty());
}

TEST(RpcSim, operationsReachTheBoards) {
    RpcBench bench;
    EXPECT_THAT(bench.result("sim", {{"op", "parts"}}).dump(), HasSubstr("KV4071"));
    for (const Json& params : {Json{{"op", "socket"}, {"part", "KV4074"}, {"address", "A8"}},
                               Json{{"op", "foreign"}, {"count", 2}}, Json{{"op", "boards"}, {"count", 2}},
                               Json{{"op", "unplug"}, {"board", 1}},
                               Json{{"op", "reply"}, {"command", 17}, {"hex", "01 00 03 FF"}, {"times", 2}},
                               Json{{"op", "input"}, {"channel", "0A"}, {"volts", 1.65}},
                               Json{{"op", "fault"}, {"kind", "lateReply"}, {"ms", 5999}, {"command", 6}}})
        EXPECT_EQ(bench.result("sim", params), nullptr) << params;
    EXPECT_EQ(bench.bus.list().size(), 3u) << "one board and two foreign devices";
    const Json state = bench.result("sim", {{"op", "state"}});
    EXPECT_EQ(state["part"]["name"], "KV4074");
    EXPECT_EQ(state["part"]["wipers"].size(), 4u);
    EXPECT_EQ(state["vcc"], 0.0);
    EXPECT_TRUE(state["sfr"].contains("80"));
    EXPECT_TRUE(state["pins"].contains("P0"));
    EXPECT_EQ(state["leds"].size(), 2u);
    EXPECT_EQ(bench.result("sim", {{"op", "socket"}, {"part", nullptr}}), nullptr);
    EXPECT_EQ(bench.result("sim", {{"op", "state"}})["part"], nullptr);
    EXPECT_EQ(bench.result("clipboard", {{"text", "5A"}}), "5A");
    EXPECT_EQ(bench.clipboard.text(), "5A");
}
} // namespace
