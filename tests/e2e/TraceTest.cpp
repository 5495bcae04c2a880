#include "tests/e2e/System.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace test {
namespace {

using nlohmann::json;

TEST_F(System, Trace_WhenAClientRecordsToo_ThenOneRequestIsFollowedThroughBothProcesses) {
    start();
    setenv("SUBSYS_TRACE", "1", 1);
    Client client("--serial 41 get-icc-state");
    const int clientPid = client.pid();
    EXPECT_EQ(client.wait(), 0) << client.output();
    unsetenv("SUBSYS_TRACE");
    const auto file = mDevice.path() / "trace.json";
    expectRun({"trace --output " + file.string(), 0, {"marks of 2 processes"}});
    std::set<std::string> ended;           // what was followed to its end
    std::set<std::pair<int, int>> arrows;  // from which process to which
    std::map<std::string, json> arrowStarts;
    const json trace = json::parse(std::ifstream(file));
    for (const json& event : trace.at("traceEvents")) {
        const std::string phase = event.at("ph");
        if (phase == "e") ended.insert(event.at("name"));
        if (phase == "s") arrowStarts[event.at("id")] = event;
        if (phase != "f") continue;
        const json& start = arrowStarts.at(event.at("id"));
        EXPECT_TRUE(start.at("pid") != event.at("pid") || start.at("tid") != event.at("tid")) << event;
        arrows.emplace(start.at("pid"), event.at("pid"));
    }
    for (const char* each : {"getIccState #41", "component", "plugin", "reply"}) {
        EXPECT_TRUE(ended.contains(each)) << each;
    }
    const int daemon = mDaemon->pid();
    EXPECT_TRUE(arrows.contains({clientPid, daemon}));
    EXPECT_TRUE(arrows.contains({daemon, clientPid}));
    EXPECT_TRUE(arrows.contains({daemon, daemon})) << "from thread to thread";
    Process drawing({TRACE_SVG, file.string(), "getIccState #41"});
    EXPECT_EQ(drawing.wait(), 0);
    EXPECT_THAT(drawing.output(), testing::ContainsRegex("^<svg .*subsysd: HandlerThread.*plugin .*</svg>\n$"));
}

}  // namespace
}  // namespace test
