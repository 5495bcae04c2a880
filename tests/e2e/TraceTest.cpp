#include "tests/e2e/System.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

// What the daemon and a client recorded together, held against the rules of the trace-event format.
namespace test {
namespace {

using nlohmann::json;

// A track and a name or id.
using Place = std::pair<std::string, std::string>;

std::string trackOf(const json& event) {
    return event.at("pid").dump() + "/" + event.at("tid").dump();
}

class Rules {
public:
    void take(const json& event) {
        const std::string phase = event.at("ph");
        if (phase == "M") return;
        EXPECT_GE(event.at("ts"), mLast) << "by time";
        mLast = event.at("ts");
        if (phase == "B") ++mDepths[trackOf(event)];
        if (phase == "E") --mDepths[trackOf(event)];
        EXPECT_GE(mDepths[trackOf(event)], 0) << event;
        if (phase == "b") mAsync[idOf(event)].push_back(event.at("name"));
        if (phase == "e") takeAsyncEnd(event);
        if (phase == "s") mArrows[event.at("id")] = event;
        if (phase == "f") takeArrowEnd(event);
    }
    // Where requests were answered, and from which process to which arrows lead.
    std::set<std::string> ended;
    std::set<std::pair<int, int>> arrows;

private:
    static Place idOf(const json& event) { return {event.at("pid").dump(), event.at("id2").at("local")}; }

    void takeAsyncEnd(const json& event) {
        auto& stack = mAsync[idOf(event)];
        ASSERT_FALSE(stack.empty()) << event;
        EXPECT_EQ(stack.back(), event.at("name"));
        stack.pop_back();
        ended.insert(event.at("name"));
    }
    void takeArrowEnd(const json& event) {
        ASSERT_TRUE(mArrows.contains(event.at("id"))) << event;
        const json& start = mArrows[event.at("id")];
        EXPECT_NE(trackOf(start), trackOf(event));
        arrows.emplace(start.at("pid"), event.at("pid"));
    }

    double mLast = 0;
    std::map<std::string, int> mDepths;
    std::map<Place, std::vector<std::string>> mAsync;
    std::map<std::string, json> mArrows;
};

TEST_F(System, Trace_WhenAClientRecordsToo_ThenOneRequestIsFollowedThroughBothProcesses) {
    start();
    setenv("SUBSYS_TRACE", "1", 1);
    Client client("--serial 41 get-icc-state");
    const int clientPid = client.pid();
    EXPECT_EQ(client.wait(), 0) << client.output();
    unsetenv("SUBSYS_TRACE");
    const auto file = mDevice.path() / "trace.json";
    expectRun({"trace --output " + file.string(), 0, {"marks of 2 processes"}});
    Rules rules;
    const json trace = json::parse(std::ifstream(file));
    for (const json& event : trace.at("traceEvents")) rules.take(event);
    for (const char* each : {"getIccState #41", "component", "plugin", "reply"}) {
        EXPECT_TRUE(rules.ended.contains(each)) << each;
    }
    const int daemon = mDaemon->pid();
    EXPECT_TRUE(rules.arrows.contains({clientPid, daemon}));
    EXPECT_TRUE(rules.arrows.contains({daemon, clientPid}));
    EXPECT_TRUE(rules.arrows.contains({daemon, daemon})) << "from thread to thread";
}

}  // namespace
}  // namespace test
