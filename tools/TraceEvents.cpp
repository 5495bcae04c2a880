#include "tools/TraceEvents.h"

#include "tools/Json.h"
#include "tools/TraceCalls.h"
#include "tools/TraceRequests.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace subsysctl {

namespace {

using device::MarkKind;
using device::Trace;
using device::TraceMark;

// How long a mark that an arrow holds on to is drawn, at most.
constexpr int64_t ANCHOR_NANOS = 1'000;

// The format counts in microseconds.
double micros(int64_t nanos) {
    return static_cast<double>(nanos) / 1'000;
}

std::string hex(uint64_t number) {
    char text[24];
    std::snprintf(text, sizeof(text), "0x%llx", static_cast<unsigned long long>(number));
    return text;
}

// Collects the events of all processes.
class Events {
public:
    void add(int64_t time, Json event) { mEvents.emplace_back(time, std::move(event)); }
    // Numbers from one, for what an event has to be told from others by.
    uint64_t nextId() { return ++mLastId; }

    // Those without a time stand first. Each process adds its events in the order in which they nest.
    void write(std::ostream& out) {
        std::stable_sort(mEvents.begin(), mEvents.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        out << "{\"displayTimeUnit\":\"ns\",\"traceEvents\":[";
        const char* separator = "\n";
        for (const auto& [time, event] : mEvents) out << std::exchange(separator, ",\n") << dump(event);
        out << "\n]}\n";
    }

private:
    std::vector<std::pair<int64_t, Json>> mEvents;
    uint64_t mLastId = 0;
};

// A point of a request that arrows lead to and from.
struct Anchor {
    int32_t pid = 0;
    TracePoint point;
};

void addArrow(Events& events, const Anchor& from, const Anchor& to) {
    const std::string id = hex(events.nextId());
    const auto end = [&](const char* phase, const Anchor& at) {
        return Json{{"ph", phase},   {"name", "request"},      {"cat", "request"},           {"id", id},
                    {"pid", at.pid}, {"tid", at.point.thread}, {"ts", micros(at.point.time)}};
    };
    events.add(from.point.time, end("s", from));
    Json arrival = end("f", to);
    arrival["bp"] = "e";  // to the slice that encloses the point, not to the next one
    events.add(to.point.time, std::move(arrival));
}

// The events of one process.
class ProcessEvents {
public:
    ProcessEvents(const Trace& trace, Events& events) : mTrace(trace), mEvents(events), mMarks(allMarks(trace)) {
        for (const TraceMark& mark : mMarks) mTimes[mark.thread].push_back(mark.time);
    }

    void add(const TracedSections& sections) {
        addNames();
        for (const TraceMark& mark : mMarks) addMark(mark);
        for (const TraceSection& section : sections.others) addAsync("section", section, {});
        for (const TracedRequest& request : sections.requests) {
            addAsync("request", request.section, request.stages);
            addAnchors(request);
        }
    }

private:
    Json event(const char* phase, const std::string& name, const TracePoint& at) const {
        return {{"ph", phase}, {"name", name}, {"pid", mTrace.pid}, {"tid", at.thread}, {"ts", micros(at.time)}};
    }

    void addNames() {
        const auto add = [this](const char* what, int32_t thread, const std::string& name) {
            mEvents.add(
                INT64_MIN,
                {{"ph", "M"}, {"name", what}, {"pid", mTrace.pid}, {"tid", thread}, {"args", {{"name", name}}}});
        };
        add("process_name", mTrace.pid, mTrace.program);
        for (const auto& [thread, times] : mTimes) {
            const auto name = mTrace.threadNames.find(thread);
            if (name != mTrace.threadNames.end()) add("thread_name", thread, name->second);
        }
    }

    void addMark(const TraceMark& mark) {
        const TracePoint at{mark.time, mark.thread};
        switch (mark.kind) {
            case MarkKind::BEGIN:
                ++mDepths[mark.thread];
                return mEvents.add(mark.time, event("B", mark.name, at));
            case MarkKind::END:
                return addEnd(at);
            case MarkKind::INSTANT:
                if (isCall(mark)) addSlice(mark.name, at);
                return addWith(event("i", mark.name, at), mark.time, "s", "t");
            case MarkKind::COUNTER:
                return addWith(event("C", mark.name, at), mark.time, "args", {{"value", mark.value}});
            default:
                return;  // with the section
        }
    }

    // The ring may have lost the begin.
    void addEnd(const TracePoint& at) {
        int& depth = mDepths[at.thread];
        if (depth == 0) return;
        --depth;
        mEvents.add(at.time, event("E", "", at));
    }

    void addWith(Json event, int64_t time, const char* key, Json value) {
        event[key] = std::move(value);
        mEvents.add(time, std::move(event));
    }

    // A section and those within it, in the order of their begins. A track is a stack: a stage that would end after the
    // one around it is cut.
    void addAsync(const char* category, const TraceSection& section, const std::vector<TraceSection>& stages) {
        const std::string id = hex(mEvents.nextId());
        std::vector<TraceSection> stack;
        const auto end = [&] {
            if (const auto at = stack.back().end) addStep("e", category, id, stack.back().name, *at);
            stack.pop_back();
        };
        const auto begin = [&](TraceSection next) {
            while (!stack.empty() && stack.back().end && stack.back().end->time <= next.begin.time) end();
            const bool isCut =
                !stack.empty() && stack.back().end && (!next.end || next.end->time > stack.back().end->time);
            if (isCut) next.end = stack.back().end;
            addStep("b", category, id, next.name, next.begin);
            stack.push_back(std::move(next));
        };
        begin(section);
        for (const TraceSection& stage : stages) begin(stage);
        while (!stack.empty()) end();
    }

    void addStep(const char* phase, const char* category, const std::string& id, const std::string& name,
                 const TracePoint& at) {
        Json step = event(phase, name, at);
        step["cat"] = category;
        step["id2"] = {{"local", id}};
        mEvents.add(at.time, std::move(step));
    }

    // An arrow wants a slice at both its ends, which marks by themselves are not.
    void addAnchors(const TracedRequest& request) {
        const std::string& name = request.section.name;
        std::vector<std::pair<std::string, TracePoint>> points{{name, request.section.begin}};
        for (const TraceSection& stage : request.stages) points.emplace_back(name + ": " + stage.name, stage.begin);
        if (request.section.end) points.emplace_back(name + ": end", *request.section.end);
        for (size_t i = 0; i < points.size(); ++i) {
            const auto& [text, at] = points[i];
            addSlice(text, at);
            const bool isElsewhere = i > 0 && points[i - 1].second.thread != at.thread;
            if (isElsewhere) addArrow(mEvents, {mTrace.pid, points[i - 1].second}, {mTrace.pid, at});
        }
    }

    void addSlice(const std::string& name, const TracePoint& at) {
        addWith(event("X", name, at), at.time, "dur", micros(anchorNanos(at)));
    }

    // Over before the thread's next mark, where another slice may begin or end.
    int64_t anchorNanos(const TracePoint& at) const {
        const auto& times = mTimes.at(at.thread);
        const auto next = std::upper_bound(times.begin(), times.end(), at.time);
        return next == times.end() ? ANCHOR_NANOS : std::min(ANCHOR_NANOS, (*next - at.time) / 2);
    }

    const Trace& mTrace;
    Events& mEvents;
    const std::vector<TraceMark> mMarks;
    std::map<int32_t, std::vector<int64_t>> mTimes;
    std::map<int32_t, int> mDepths;
};

// A request or a call and its process, beside those of the same name in other processes.
struct Candidate {
    const TraceSection* section;
    int32_t pid;
};

bool contains(const Candidate& outer, const Candidate& inner) {
    const bool endsLater =
        !outer.section->end || (inner.section->end && inner.section->end->time <= outer.section->end->time);
    return outer.pid != inner.pid && outer.section->begin.time <= inner.section->begin.time && endsLater;
}

// From a caller's section to that of the called process, and from its end back.
void connect(Events& events, std::vector<Candidate>& sameName) {
    std::sort(sameName.begin(), sameName.end(),
              [](const auto& a, const auto& b) { return a.section->begin.time < b.section->begin.time; });
    for (const Candidate& inner : sameName) {
        const auto outer = std::find_if(sameName.rbegin(), sameName.rend(),
                                        [&](const Candidate& each) { return contains(each, inner); });
        if (outer == sameName.rend()) continue;
        addArrow(events, {outer->pid, outer->section->begin}, {inner.pid, inner.section->begin});
        if (!outer->section->end) continue;
        addArrow(events, {inner.pid, *inner.section->end}, {outer->pid, *outer->section->end});
    }
}

}  // namespace

void writeTraceEvents(std::ostream& out, const std::vector<Trace>& traces) {
    Events events;
    std::vector<TracedSections> sections;
    std::vector<std::vector<TraceSection>> calls;
    for (const Trace& trace : traces) {
        sections.push_back(tracedSections(trace));
        calls.push_back(tracedCalls(trace));
        ProcessEvents(trace, events).add(sections.back());
    }
    std::map<std::string_view, std::vector<Candidate>> byName;
    for (size_t i = 0; i < traces.size(); ++i) {
        for (const TracedRequest& request : sections[i].requests) {
            byName[request.section.name].push_back({&request.section, traces[i].pid});
        }
        for (const TraceSection& call : calls[i]) byName[call.name].push_back({&call, traces[i].pid});
    }
    for (auto& [name, sameName] : byName) connect(events, sameName);
    events.write(out);
}

}  // namespace subsysctl
