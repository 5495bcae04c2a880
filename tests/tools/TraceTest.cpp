#include "tests/support/NamesFolder.h"
#include "tests/tools/Program.h"
#include "tools/Text.h"
#include "tools/TraceEvents.h"
#include "tools/TraceRequests.h"
#include "tools/TraceVerbs.h"

#include <cutils/trace.h>
#include <device/Recorder.h>
#include <device/TraceFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace subsysctl {
namespace {

using device::MarkKind;
using device::Trace;
using nlohmann::json;
using test::Result;
using test::run;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

constexpr int64_t MILLI = 1'000'000;
constexpr int32_t BINDER = 11;
constexpr int32_t MAIN = 10;

// A trace of the daemon as it would be read; times in ms.
class Recording {
public:
    explicit Recording(int32_t pid = 10) {
        mTrace.program = "subsysd";
        mTrace.pid = pid;
        mTrace.isAlive = true;
        mTrace.startWallTime = 1'700'000'000'123 * MILLI;
        mTrace.threadNames = {{MAIN, "subsysd"}, {BINDER, "binder 1"}};
    }
    Recording& mark(double time, int32_t thread, MarkKind kind, const std::string& name = "", int64_t value = 0) {
        mTrace.marks.push_back({std::llround(time * MILLI), thread, kind, value, name});
        return *this;
    }
    Recording& begin(double time, int32_t thread, const std::string& name, int64_t cookie) {
        return mark(time, thread, MarkKind::ASYNC_BEGIN, name, cookie);
    }
    Recording& end(double time, int32_t thread, const std::string& name, int64_t cookie) {
        return mark(time, thread, MarkKind::ASYNC_END, name, cookie);
    }
    // The last mark began what is open still.
    Recording& isOpen() {
        mTrace.open.push_back(mTrace.marks.back());
        return *this;
    }
    // One that waits, since 1 ms, in the plugin; one that was answered; and work on threads.
    Recording& addTraffic() {
        begin(1, BINDER, "getIccState #-7", 1).isOpen();
        mTrace.marks.pop_back();  // the ring has lost it
        begin(2, BINDER, "component", 1).end(3, MAIN, "component", 1).begin(3, MAIN, "plugin", 1).isOpen();
        mark(4, MAIN, MarkKind::BEGIN, "plugin iccGetState").isOpen();
        begin(5, BINDER, "getLcdInfo #8", 2).begin(6, BINDER, "component", 2).end(7, MAIN, "component", 2);
        begin(8, MAIN, "looper", 2).end(10, MAIN, "looper", 2).end(10, MAIN, "getLcdInfo #8", 2);
        return mark(11, BINDER, MarkKind::INSTANT, "client died").mark(12, MAIN, MarkKind::COUNTER, "waiting", 3);
    }
    operator const Trace&() const { return mTrace; }  // NOLINT: it is one
    Trace& trace() { return mTrace; }

private:
    Trace mTrace;
};

std::string printed(const Trace& trace, const RequestsOptions& options) {
    setenv("TZ", "UTC", 1);
    std::ostringstream out;
    printRequests(trace, 100'000 * MILLI, options, out);
    return out.str();
}

std::string written(const std::vector<Trace>& traces) {
    std::ostringstream out;
    writeTraceEvents(out, traces);
    return out.str();
}

// Phase, process, time in ms and name of each event that is of one of these phases.
using Step = std::tuple<std::string, int, double, std::string>;
std::vector<Step> stepsOf(const std::string& text, const std::string& phases) {
    std::vector<Step> steps;
    const json trace = json::parse(text);
    for (const json& event : trace.at("traceEvents")) {
        const std::string phase = event.at("ph");
        if (phases.find(phase) == std::string::npos) continue;
        steps.emplace_back(phase, event["pid"], event["ts"].get<double>() / 1'000, event["name"]);
    }
    return steps;
}

// ---- Requests. ----

TEST(TraceRequests, Sections_WhenMarksAreWholeOrLost_ThenRequestsWithTheirStages) {
    Recording recording;
    recording.addTraffic();
    recording.end(12, MAIN, "setCallInfo #1", 9);       // its begin is lost
    recording.begin(13, BINDER, "setCallInfo #2", 10);  // its end is lost: it is not open
    recording.begin(14, BINDER, "not a request #x", 11).isOpen().begin(15, BINDER, "component", 12).isOpen();
    const auto [requests, others] = tracedSections(recording);
    ASSERT_THAT(requests, SizeIs(2));
    EXPECT_EQ(std::tuple(requests[0].operation, requests[0].number), std::tuple("getIccState", -7));
    EXPECT_FALSE(requests[0].section.end);
    EXPECT_EQ(requests[0].where()->name, "plugin");
    EXPECT_EQ(std::tuple(requests[1].operation, requests[1].number), std::tuple("getLcdInfo", 8));
    EXPECT_EQ(requests[1].section.end->time, 10 * MILLI);
    EXPECT_EQ(requests[1].where(), nullptr);
    ASSERT_THAT(requests[1].stages, SizeIs(2));
    EXPECT_EQ(requests[1].stages[1].name, "looper");
    ASSERT_THAT(others, SizeIs(2));
}

TEST(TraceRequests, Sections_WhenACookieComesAgain_ThenStagesBelongToTheRequestThatWasOpen) {
    Recording recording;
    recording.begin(1, BINDER, "a #1", 5).begin(2, BINDER, "component", 5).end(4, MAIN, "a #1", 5);
    recording.begin(5, BINDER, "b #1", 5).begin(6, BINDER, "looper", 5).end(7, MAIN, "component", 5).isOpen();
    recording.end(8, MAIN, "looper", 5).end(9, MAIN, "b #1", 5);
    const auto requests = tracedSections(recording).requests;
    ASSERT_THAT(requests, SizeIs(2));
    ASSERT_THAT(requests[0].stages, SizeIs(1));
    EXPECT_EQ(requests[0].stages[0].end->time, 4 * MILLI);  // not after its request
    ASSERT_THAT(requests[1].stages, SizeIs(1));
    EXPECT_EQ(requests[1].stages[0].name, "looper");
}

TEST(TraceRequests, Print_WhenSomeWait_ThenOldestFirstWithWhere) {
    Recording recording;
    recording.addTraffic().trace().unplaced = 3;
    EXPECT_EQ(printed(recording, {false, false}),
              "subsysd, pid 10: waiting requests, oldest first\n"
              "REQUEST      SERIAL  ARRIVED                  AGE      WHERE\n"
              "getIccState  -7      2023-11-14 22:13:20.124  100.0 s  plugin for 100.0 s\n"
              "and 3 more sections, for which there was no place\n"
              "\nthreads that are inside a section\n"
              "THREAD        FOR      INSIDE\n"
              "subsysd (10)  100.0 s  plugin iccGetState\n");
    EXPECT_THAT(printed(recording, {true, false}),
                HasSubstr("\nanswered, as far back as the recording goes\n"
                          "REQUEST     SERIAL  ARRIVED                  TOOK    STAGES\n"
                          "getLcdInfo  8       2023-11-14 22:13:20.128  5.0 ms  component 1.0 ms, looper 2.0 ms\n"));
    Recording idle;
    idle.trace().isAlive = false;
    EXPECT_EQ(printed(idle, {true, false}), "subsysd, pid 10, which has ended: no request waits\n");
}

TEST(TraceRequests, Print_WhenAsJson_ThenOneObjectALine) {
    Recording recording;
    recording.addTraffic();
    const std::string waiting =
        R"({"request":"getIccState","serial":-7,"state":"waiting","program":"subsysd","pid":10,)"
        R"("arrived":"2023-11-14T22:13:20.124Z","seconds":99.999,"where":"plugin","stages":[)"
        R"({"stage":"component","seconds":0.001,"open":false},{"stage":"plugin","seconds":99.997,"open":true}]})"
        "\n";
    EXPECT_EQ(printed(recording, {false, true}), waiting);
    EXPECT_THAT(printed(recording, {true, true}), HasSubstr(R"("state":"answered","program":"subsysd")"));
}

TEST(TraceRequests, DurationText_WhenOfEachLength_ThenInItsUnit) {
    const std::pair<double, const char*> cases[] = {{0, "0 us"},           {312e-6, "312 us"}, {0.0312, "31.2 ms"},
                                                    {4.12, "4.1 s"},       {725, "12 min"},    {26 * 3600, "26 h"},
                                                    {5 * 86400, "5 days"}, {1e9, "11574 days"}};
    for (const auto& [seconds, text] : cases) EXPECT_EQ(durationText(std::llround(seconds * 1e9)), text);
}

// ---- Events. ----

// A track of a thread is a stack, and an arrow holds on to a slice: that of a mark ends before the thread's next mark.
TEST(TraceEvents, Write_WhenOfEveryKind_ThenNestedByTimeAndArrowsFollowARequest) {
    Recording recording;
    recording.addTraffic().mark(10.0004, MAIN, MarkKind::BEGIN, "close");
    for (const int time : {20, 21, 22}) recording.mark(time, MAIN, MarkKind::END);  // one too many
    EXPECT_EQ(written({recording}), R"({"displayTimeUnit":"ns","traceEvents":[
{"ph":"M","name":"process_name","pid":10,"tid":10,"args":{"name":"subsysd"}},
{"ph":"M","name":"thread_name","pid":10,"tid":10,"args":{"name":"subsysd"}},
{"ph":"M","name":"thread_name","pid":10,"tid":11,"args":{"name":"binder 1"}},
{"ph":"b","name":"getIccState #-7","pid":10,"tid":11,"ts":1000.0,"cat":"request","id2":{"local":"0x1"}},
{"ph":"X","name":"getIccState #-7","pid":10,"tid":11,"ts":1000.0,"dur":1.0},
{"ph":"b","name":"component","pid":10,"tid":11,"ts":2000.0,"cat":"request","id2":{"local":"0x1"}},
{"ph":"X","name":"getIccState #-7: component","pid":10,"tid":11,"ts":2000.0,"dur":1.0},
{"ph":"s","name":"request","cat":"request","id":"0x2","pid":10,"tid":11,"ts":2000.0},
{"ph":"e","name":"component","pid":10,"tid":10,"ts":3000.0,"cat":"request","id2":{"local":"0x1"}},
{"ph":"b","name":"plugin","pid":10,"tid":10,"ts":3000.0,"cat":"request","id2":{"local":"0x1"}},
{"ph":"X","name":"getIccState #-7: plugin","pid":10,"tid":10,"ts":3000.0,"dur":1.0},
{"ph":"f","name":"request","cat":"request","id":"0x2","pid":10,"tid":10,"ts":3000.0,"bp":"e"},
{"ph":"B","name":"plugin iccGetState","pid":10,"tid":10,"ts":4000.0},
{"ph":"b","name":"getLcdInfo #8","pid":10,"tid":11,"ts":5000.0,"cat":"request","id2":{"local":"0x3"}},
{"ph":"X","name":"getLcdInfo #8","pid":10,"tid":11,"ts":5000.0,"dur":1.0},
{"ph":"b","name":"component","pid":10,"tid":11,"ts":6000.0,"cat":"request","id2":{"local":"0x3"}},
{"ph":"X","name":"getLcdInfo #8: component","pid":10,"tid":11,"ts":6000.0,"dur":1.0},
{"ph":"s","name":"request","cat":"request","id":"0x4","pid":10,"tid":11,"ts":6000.0},
{"ph":"e","name":"component","pid":10,"tid":10,"ts":7000.0,"cat":"request","id2":{"local":"0x3"}},
{"ph":"b","name":"looper","pid":10,"tid":10,"ts":8000.0,"cat":"request","id2":{"local":"0x3"}},
{"ph":"X","name":"getLcdInfo #8: looper","pid":10,"tid":10,"ts":8000.0,"dur":1.0},
{"ph":"f","name":"request","cat":"request","id":"0x4","pid":10,"tid":10,"ts":8000.0,"bp":"e"},
{"ph":"e","name":"looper","pid":10,"tid":10,"ts":10000.0,"cat":"request","id2":{"local":"0x3"}},
{"ph":"e","name":"getLcdInfo #8","pid":10,"tid":10,"ts":10000.0,"cat":"request","id2":{"local":"0x3"}},
{"ph":"X","name":"getLcdInfo #8: end","pid":10,"tid":10,"ts":10000.0,"dur":0.2},
{"ph":"B","name":"close","pid":10,"tid":10,"ts":10000.4},
{"ph":"i","name":"client died","pid":10,"tid":11,"ts":11000.0,"s":"t"},
{"ph":"C","name":"waiting","pid":10,"tid":10,"ts":12000.0,"args":{"value":3}},
{"ph":"E","name":"","pid":10,"tid":10,"ts":20000.0},
{"ph":"E","name":"","pid":10,"tid":10,"ts":21000.0}
]}
)");
}

TEST(TraceEvents, Write_WhenAClientRecordsToo_ThenArrowsGoThereAndBack) {
    Recording client(77), later(78), daemon;
    client.begin(1, 77, "getLcdInfo #8", 8).end(20, 77, "getLcdInfo #8", 8);
    later.begin(18, 78, "getLcdInfo #8", 8).end(30, 78, "getLcdInfo #8", 8);
    daemon.begin(5, BINDER, "getLcdInfo #8", 2).end(10, BINDER, "getLcdInfo #8", 2);
    EXPECT_THAT(stepsOf(written({client, later, daemon}), "sf"),
                ElementsAre(Step("s", 77, 1, "request"), Step("f", 10, 5, "request"), Step("s", 10, 10, "request"),
                            Step("f", 77, 20, "request")));
}

TEST(TraceEvents, Write_WhenStagesCross_ThenTheTrackIsStillAStack) {
    Recording recording;
    recording.begin(1, BINDER, "a #1", 5).begin(2, BINDER, "one", 5).begin(3, BINDER, "two", 5);
    recording.end(4, MAIN, "one", 5).end(5, MAIN, "two", 5).end(6, MAIN, "a #1", 5);
    EXPECT_THAT(stepsOf(written({recording}), "be"),
                ElementsAre(Step("b", 10, 1, "a #1"), Step("b", 10, 2, "one"), Step("b", 10, 3, "two"),
                            Step("e", 10, 4, "two"), Step("e", 10, 4, "one"), Step("e", 10, 6, "a #1")));
}

TEST(TraceEvents, Write_WhenProcessesCallEachOther_ThenArrowsGoFromCallToCall) {
    Recording client(77), daemon;
    client.mark(1, 77, MarkKind::BEGIN, "call to 10, code 4, 8 bytes").mark(9, 77, MarkKind::END);
    client.mark(20, 77, MarkKind::BEGIN, "call to 10, code 4, 8 bytes").isOpen();
    daemon.mark(2, BINDER, MarkKind::BEGIN, "call from 77, code 4, 8 bytes");
    daemon.mark(3, BINDER, MarkKind::BEGIN, "getLcdInfo #8").mark(4, BINDER, MarkKind::END);
    daemon.mark(5, BINDER, MarkKind::INSTANT, "oneway to 77, code 2, 64 bytes, at 200");
    daemon.mark(6, BINDER, MarkKind::INSTANT, "oneway to 77, code 2, 64 bytes, at 400");
    daemon.mark(8, BINDER, MarkKind::END);
    client.mark(7, 78, MarkKind::BEGIN, "oneway from 10, code 2, 64 bytes, at 400").mark(8, 78, MarkKind::END);
    EXPECT_THAT(stepsOf(written({client, daemon}), "sf"),
                ElementsAre(Step("s", 77, 1, "request"), Step("f", 10, 2, "request"), Step("s", 10, 6, "request"),
                            Step("f", 77, 7, "request"), Step("s", 10, 8, "request"), Step("f", 77, 9, "request")));
}

// ---- The verbs, and what a recorder really writes. ----

class TraceVerbs : public testing::Test {
protected:
    const test::NamesFolder mNames;
};

TEST_F(TraceVerbs, AnyVerb_WhenNothingRecorded_Then69AndTheFolder) {
    const std::string folder = " in " + mNames.path().string() + "\n";
    for (const auto& [verb, what] : {std::pair("requests", "requests: no recording of subsysd"),
                                     {"trace", "trace: no recording"},
                                     {"trace --last", "trace: no recording of a last run"}}) {
        const Result result = run(verb);
        EXPECT_EQ(result.code, 69);
        EXPECT_EQ(result.text, std::string("subsysctl: ") + what + folder);
    }
}

TEST_F(TraceVerbs, Trace_WhenForATimeOrOfTheLastRun_ThenOnlyThat) {
    ASSERT_TRUE(device::startRecorder("subsysd"));
    atrace_instant(ATRACE_TAG_HAL, "before");
    const Result result = run("trace --for 0.05");
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.text, testing::Not(HasSubstr("before")));
    std::filesystem::rename(mNames.path() / "trace@subsysd", mNames.path() / "trace-last@subsysd");
    EXPECT_THAT(run("trace --last").text, HasSubstr("before"));
    const std::string output = "trace --last --output " + mNames.path().string();
    const Result unwritten = run(output);
    EXPECT_EQ(unwritten.code, 1);
    EXPECT_THAT(unwritten.text, HasSubstr("can't write " + mNames.path().string() + ": Is a directory"));
    EXPECT_THAT(run(output + "/file").text, testing::MatchesRegex("subsysctl: [0-9]+ marks of 1 process\n"));
    EXPECT_EQ(run("trace").code, 69);
}

TEST_F(TraceVerbs, Requests_WhenTheDaemonRunsAgain_ThenOfTheLivingOneAlone) {
    test::Process({"/bin/sh", "-c", std::string("SUBSYS_TRACE=1 ") + SUBSYSCTL + " trace"}).wait();
    std::filesystem::rename(mNames.path() / "trace@subsysctl", mNames.path() / "trace@subsysd@2");
    EXPECT_THAT(run("requests").text, HasSubstr("which has ended: no request waits"));
    ASSERT_TRUE(device::startRecorder("subsysd"));
    atrace_async_begin(ATRACE_TAG_HAL, "getLcdInfo #8", 1);
    atrace_async_begin(ATRACE_TAG_HAL, "component", 1);
    const Result result = run("requests");
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.text, HasSubstr("subsysd, pid " + std::to_string(getpid()) + ": waiting requests"));
    EXPECT_THAT(result.text, testing::ContainsRegex("\ngetLcdInfo  8 .*component for "));
    EXPECT_EQ(json::parse(run("--json requests --all").text).at("where"), "component");
}

}  // namespace
}  // namespace subsysctl
