#include <cutils/trace.h>
#include <device/Recorder.h>
#include <device/TraceFile.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"
#include "tests/support/Threads.h"
#include "tools/TraceEvents.h"
#include "tools/TraceRequests.h"
#include "tools/TraceVerbs.h"

namespace subsysctl {
namespace {

using device::MarkKind;
using device::Trace;
using device::TraceMark;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int64_t kMilli = 1'000'000;
constexpr int32_t kBinder = 11;
constexpr int32_t kMain = 10;

// A trace of the daemon as it would be read; times in ms.
class Recording {
public:
    explicit Recording(int32_t pid = 10) {
        mTrace.program = "subsysd";
        mTrace.pid = pid;
        mTrace.isAlive = true;
        mTrace.startWallTime = 1'700'000'000'123 * kMilli;
        mTrace.threadNames = {{kMain, "subsysd"}, {kBinder, "binder 1"}};
    }
    Recording& mark(int64_t time, int32_t thread, MarkKind kind, const std::string& name = "", int64_t value = 0) {
        mTrace.marks.push_back({time * kMilli, thread, kind, value, name});
        return *this;
    }
    Recording& begin(int64_t time, int32_t thread, const std::string& name, int64_t cookie) {
        return mark(time, thread, MarkKind::ASYNC_BEGIN, name, cookie);
    }
    Recording& end(int64_t time, int32_t thread, const std::string& name, int64_t cookie) {
        return mark(time, thread, MarkKind::ASYNC_END, name, cookie);
    }
    // The last mark began what is open still.
    Recording& isOpen() {
        mTrace.open.push_back(mTrace.marks.back());
        return *this;
    }
    // The ring has lost the last mark.
    Recording& isLost() {
        mTrace.marks.pop_back();
        return *this;
    }
    // One that waits, since 1 ms, in the plugin; one that was answered; and work on threads.
    Recording& addTraffic() {
        begin(1, kBinder, "getIccState #-7", 1).isOpen().isLost();
        begin(2, kBinder, "component", 1).end(3, kMain, "component", 1).begin(3, kMain, "plugin", 1).isOpen();
        mark(4, kMain, MarkKind::BEGIN, "plugin iccGetState").isOpen();
        begin(5, kBinder, "getLcdInfo #8", 2).begin(6, kBinder, "component", 2).end(7, kMain, "component", 2);
        begin(8, kMain, "looper", 2).end(10, kMain, "looper", 2).end(10, kMain, "getLcdInfo #8", 2);
        return mark(11, kBinder, MarkKind::INSTANT, "client died").mark(12, kMain, MarkKind::COUNTER, "waiting", 3);
    }
    operator const Trace&() const { return mTrace; }  // NOLINT: it is one
    Trace& trace() { return mTrace; }

private:
    Trace mTrace;
};

std::string printed(const Trace& trace, const RequestsOptions& options) {
    setenv("TZ", "UTC", 1);
    std::ostringstream out;
    printRequests(trace, 100'000 * kMilli, options, out);
    return out.str();
}

json eventsOf(const std::vector<Trace>& traces) {
    std::ostringstream out;
    writeTraceEvents(out, traces);
    return json::parse(out.str()).at("traceEvents");
}

std::vector<json> withPhase(const json& events, const std::string& phase) {
    std::vector<json> found;
    for (const json& event : events) {
        if (event.at("ph") == phase) found.push_back(event);
    }
    return found;
}

// ---- The rules of the format. ----

using Track = std::pair<int, int>;

Track trackOf(const json& event) {
    return {event.at("pid").get<int>(), event.at("tid").get<int>()};
}

// Slices of a thread are properly nested: B with E, and X whose end is known.
class ThreadSlices {
public:
    void add(const json& event) {
        const double time = event.at("ts");
        const std::string phase = event.at("ph");
        while (!mOpen.empty() && mOpen.back() <= time) mOpen.pop_back();
        if (phase == "E") {
            ASSERT_FALSE(mOpen.empty()) << event;
            ASSERT_TRUE(std::isinf(mOpen.back())) << "an X ends after the B around it: " << event;
            mOpen.pop_back();
        } else {
            const double end = phase == "B" ? INFINITY : time + event.at("dur").get<double>();
            ASSERT_TRUE(mOpen.empty() || end <= mOpen.back()) << event;
            mOpen.push_back(end);
            mSlices.emplace_back(time, end);
        }
    }
    [[nodiscard]] bool haveAt(double time) const {
        return std::any_of(mSlices.begin(), mSlices.end(),
                           [time](const auto& slice) { return slice.first <= time && time <= slice.second; });
    }

private:
    std::vector<double> mOpen;  // their ends
    std::vector<std::pair<double, double>> mSlices;
};

class FormatRules {
public:
    void check(const json& events) {
        for (const json& event : events) checkEvent(event);
        for (const auto& [id, arrow] : mArrows) checkArrow(arrow);
    }

private:
    void checkEvent(const json& event) {
        ASSERT_TRUE(event.at("name").is_string() && event.at("pid").is_number_integer() &&
                    event.at("tid").is_number_integer())
            << event;
        const std::string phase = event.at("ph");
        if (phase == "M") {
            ASSERT_TRUE(event.at("name") == "process_name" || event.at("name") == "thread_name") << event;
            ASSERT_TRUE(event.at("args").at("name").is_string()) << event;
            return;
        }
        ASSERT_GE(event.at("ts").get<double>(), mTime) << "not by time: " << event;
        mTime = event.at("ts");
        checkPhase(phase, event);
    }

    void checkPhase(const std::string& phase, const json& event) {
        if (phase == "B" || phase == "E" || phase == "X") return mThreads[trackOf(event)].add(event);
        if (phase == "b" || phase == "e") return checkAsync(phase, event);
        if (phase == "s" || phase == "f") return mArrows[event.at("id")].push_back(event);
        if (phase == "i") {
            ASSERT_EQ(event.at("s"), "t") << event;
        } else {
            ASSERT_EQ(phase, "C") << event;
            ASSERT_TRUE(event.at("args").at("value").is_number()) << event;
        }
    }

    void checkAsync(const std::string& phase, const json& event) {
        const std::string id = event.at("id2").at("local");
        ASSERT_EQ(id.rfind("0x", 0), 0u) << event;
        auto& open = mAsync[{event.at("pid"), event.at("cat"), id}];
        if (phase == "b") return open.push_back(event.at("name"));
        ASSERT_FALSE(open.empty()) << event;
        ASSERT_EQ(open.back(), event.at("name")) << event;
        open.pop_back();
    }

    void checkArrow(const std::vector<json>& arrow) {
        ASSERT_THAT(arrow, SizeIs(2)) << arrow.front();
        ASSERT_EQ(arrow[0].at("ph"), "s") << arrow.front();
        ASSERT_EQ(arrow[1].at("bp"), "e") << arrow.front();
        for (const json& end : arrow) {
            ASSERT_EQ(std::tuple(end.at("name"), end.at("cat")), std::tuple(arrow[0].at("name"), arrow[0].at("cat")));
            ASSERT_TRUE(mThreads[trackOf(end)].haveAt(end.at("ts"))) << "no slice to hold on to: " << end;
        }
    }

    double mTime = 0;
    std::map<Track, ThreadSlices> mThreads;
    std::map<std::tuple<int, std::string, std::string>, std::vector<std::string>> mAsync;
    std::map<std::string, std::vector<json>> mArrows;
};

// ---- Requests. ----

TEST(TraceRequests, Sections_WhenMarksAreWholeOrLost_ThenRequestsWithTheirStages) {
    Recording recording;
    recording.addTraffic();
    recording.end(12, kMain, "setCallInfo #1", 9);       // its begin is lost
    recording.begin(13, kBinder, "setCallInfo #2", 10);  // its end is lost: it is not open
    recording.begin(14, kBinder, "not a request #x", 11).isOpen().begin(15, kBinder, "component", 12).isOpen();
    const auto [requests, others] = tracedSections(recording);
    ASSERT_THAT(requests, SizeIs(2));
    EXPECT_EQ(std::tuple(requests[0].operation, requests[0].number), std::tuple("getIccState", -7));
    EXPECT_FALSE(requests[0].section.end);
    EXPECT_EQ(requests[0].where()->name, "plugin");
    EXPECT_EQ(std::tuple(requests[1].operation, requests[1].number), std::tuple("getLcdInfo", 8));
    EXPECT_EQ(requests[1].section.end->time, 10 * kMilli);
    EXPECT_EQ(requests[1].where(), nullptr);
    ASSERT_THAT(requests[1].stages, SizeIs(2));
    EXPECT_EQ(requests[1].stages[1].name, "looper");
    ASSERT_THAT(others, SizeIs(2));
}

TEST(TraceRequests, Sections_WhenACookieComesAgain_ThenStagesBelongToTheRequestThatWasOpen) {
    Recording recording;
    recording.begin(1, kBinder, "a #1", 5).begin(2, kBinder, "component", 5).end(4, kMain, "a #1", 5);
    recording.begin(5, kBinder, "b #1", 5).begin(6, kBinder, "looper", 5).end(7, kMain, "component", 5).isOpen();
    recording.end(8, kMain, "looper", 5).end(9, kMain, "b #1", 5);
    const auto requests = tracedSections(recording).requests;
    ASSERT_THAT(requests, SizeIs(2));
    ASSERT_THAT(requests[0].stages, SizeIs(1));
    EXPECT_EQ(requests[0].stages[0].end->time, 4 * kMilli);  // not after its request
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
        R"("arrived":"2023-11-14 22:13:20.124","seconds":99.999,"where":"plugin","stages":[)"
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

TEST(TraceEvents, Write_WhenOfEveryKind_ThenByTheRulesAndNothingIsMissing) {
    Recording recording;
    recording.addTraffic().mark(20, kMain, MarkKind::END).mark(21, kMain, MarkKind::END);  // one too many
    const json events = eventsOf({recording});
    FormatRules().check(events);
    const std::map<std::string, size_t> expected = {{"M", 3}, {"B", 1}, {"E", 1}, {"i", 1},
                                                    {"C", 1}, {"b", 6}, {"e", 4}, {"X", 7}};
    for (const auto& [phase, count] : expected) EXPECT_THAT(withPhase(events, phase), SizeIs(count)) << phase;
    const json plugin = withPhase(events, "B").front();
    EXPECT_EQ(plugin.at("name"), "plugin iccGetState");
    EXPECT_EQ(plugin.at("ts"), 4'000);
    EXPECT_EQ(withPhase(events, "C").front().at("args").at("value"), 3);
}

TEST(TraceEvents, Write_WhenARequestChangesThreads_ThenArrowsFollowIt) {
    Recording recording;
    recording.addTraffic();
    std::vector<std::tuple<std::string, double, int>> ends;
    for (const json& event : eventsOf({recording})) {
        if (event.at("ph") == "s" || event.at("ph") == "f") ends.emplace_back(event["ph"], event["ts"], event["tid"]);
    }
    EXPECT_THAT(ends, ElementsAre(std::tuple("s", 2'000, kBinder), std::tuple("f", 3'000, kMain),
                                  std::tuple("s", 6'000, kBinder), std::tuple("f", 8'000, kMain)));
}

TEST(TraceEvents, Write_WhenAClientRecordsToo_ThenArrowsGoThereAndBack) {
    Recording client(77);
    client.begin(1, 77, "getLcdInfo #8", 8).end(20, 77, "getLcdInfo #8", 8);
    Recording later(78);
    later.begin(18, 78, "getLcdInfo #8", 8).end(30, 78, "getLcdInfo #8", 8);
    Recording daemon;
    daemon.begin(5, kBinder, "getLcdInfo #8", 2).end(10, kBinder, "getLcdInfo #8", 2);
    const json events = eventsOf({client, later, daemon});
    FormatRules().check(events);
    std::vector<std::pair<int, double>> ends;
    for (const char* phase : {"s", "f"}) {
        for (const json& event : withPhase(events, phase)) ends.emplace_back(event["pid"], event["ts"]);
    }
    EXPECT_THAT(ends,
                ElementsAre(std::pair(77, 1'000), std::pair(10, 10'000), std::pair(10, 5'000), std::pair(77, 20'000)));
}

TEST(TraceEvents, Write_WhenStagesCross_ThenTheTrackIsStillAStack) {
    Recording recording;
    recording.begin(1, kBinder, "a #1", 5).begin(2, kBinder, "one", 5).begin(3, kBinder, "two", 5);
    recording.end(4, kMain, "one", 5).end(5, kMain, "two", 5).end(6, kMain, "a #1", 5);
    const json events = eventsOf({recording});
    FormatRules().check(events);
    EXPECT_THAT(withPhase(events, "e"), SizeIs(3));
}

// ---- The verbs, and what a recorder really writes. ----

struct Result {
    int code;
    std::string text;
};

Result run(const std::string& arguments) {
    test::Process process({"/bin/sh", "-c", std::string(SUBSYSCTL) + " " + arguments + " 2>&1"});
    const int code = process.wait();
    return {code, process.output()};
}

json readJson(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return json::parse(stream);
}

class TraceVerbs : public testing::Test {
protected:
    const test::NamesFolder mNames;
    const std::string mFile = mNames.path() / "out.json";
};

TEST_F(TraceVerbs, AnyVerb_WhenNothingRecorded_Then69AndTheFolder) {
    const std::string folder = " in " + mNames.path().string() + "\n";
    for (const auto& [verb, what] : {std::pair("requests", "no recording of subsysd"),
                                     {"trace", "no recording"},
                                     {"trace --last", "no recording of a last run"}}) {
        const Result result = run(verb);
        EXPECT_EQ(result.code, 69);
        EXPECT_EQ(result.text, std::string("subsysctl: ") + what + folder);
    }
}

TEST_F(TraceVerbs, Trace_WhenThreadsPassRequestsOn_ThenByTheRules) {
    ASSERT_TRUE(device::startRecorder("subsysd"));
    test::inThreads(4, [](size_t thread) {
        for (int i = 0; i < 50; ++i) {
            const std::string name = "op #" + std::to_string(i);
            const int cookie = static_cast<int>(thread) * 100 + i;
            // What the thread before this one began, if it is that far.
            const int other = (cookie + 100) % 400;
            atrace_begin(ATRACE_TAG_HAL, "work");
            atrace_async_begin(ATRACE_TAG_HAL, name.c_str(), cookie);
            atrace_async_begin(ATRACE_TAG_HAL, "component", cookie);
            atrace_end(ATRACE_TAG_HAL);
            atrace_async_end(ATRACE_TAG_HAL, "component", other);
            atrace_async_end(ATRACE_TAG_HAL, name.c_str(), other);
        }
    });
    const Result result = run("trace --output " + mFile);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.text, "subsysctl: 1200 marks of 1 process\n");
    const json events = readJson(mFile).at("traceEvents");
    FormatRules().check(events);
    EXPECT_THAT(withPhase(events, "B"), SizeIs(200));
    EXPECT_GE(withPhase(events, "b").size(), 200u);
}

TEST_F(TraceVerbs, Trace_WhenForATimeOrOfTheLastRun_ThenOnlyThat) {
    ASSERT_TRUE(device::startRecorder("subsysd"));
    atrace_instant(ATRACE_TAG_HAL, "before");
    const Result result = run("trace --for 0.05");
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.text, testing::Not(HasSubstr("before")));
    std::filesystem::rename(mNames.path() / "trace@subsysd", mNames.path() / "trace-last@subsysd");
    EXPECT_THAT(run("trace --last").text, HasSubstr("before"));
    EXPECT_EQ(run("trace --last --output " + mNames.path().string()).code, 1);
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

TEST_F(TraceVerbs, Client_WhenAskedToRecord_ThenItsRequestsAreInTheTrace) {
    test::Process server({FAKE_SERVER});
    ASSERT_TRUE(server.awaitOutput("\n"));
    setenv("SUBSYS_TRACE", "1", 1);
    EXPECT_EQ(run("--serial 41 get-swtp-status").code, 0);
    unsetenv("SUBSYS_TRACE");
    EXPECT_EQ(run("trace --output " + mFile).code, 0);
    const json begins = withPhase(readJson(mFile).at("traceEvents"), "b");
    ASSERT_THAT(begins, SizeIs(1));
    EXPECT_EQ(begins[0].at("name"), "getSwtpStatus #41");
}

}  // namespace
}  // namespace subsysctl
