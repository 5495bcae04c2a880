#include "tools/TraceRequests.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace subsysctl {

namespace {

using device::MarkKind;
using device::Trace;
using device::TraceMark;

using SectionKey = std::pair<std::string, int64_t>;

SectionKey keyOf(const TraceMark& mark) {
    return {mark.name, mark.value};
}
TracePoint pointOf(const TraceMark& mark) {
    return {mark.time, mark.thread};
}
bool endsAfter(const TraceSection& section, int64_t time) {
    return !section.end || section.end->time >= time;
}

// "operation #number"
std::optional<TracedRequest> asRequest(const TraceSection& section) {
    const size_t mark = section.name.rfind(" #");
    if (mark == std::string::npos) return std::nullopt;
    TracedRequest request{section.name.substr(0, mark), 0, section, {}};
    const char* end = section.name.data() + section.name.size();
    const auto parsed = std::from_chars(section.name.data() + mark + 2, end, request.number);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    return request;
}

// In the order of their begins.
std::vector<TraceSection> asyncSections(const Trace& trace) {
    std::vector<TraceSection> sections;
    std::multimap<SectionKey, size_t> begun;
    for (const TraceMark& mark : allMarks(trace)) {
        if (mark.kind == MarkKind::ASYNC_BEGIN) {
            begun.emplace(keyOf(mark), sections.size());
            sections.push_back({mark.name, mark.value, pointOf(mark), {}});
        } else if (mark.kind == MarkKind::ASYNC_END) {
            const auto at = begun.upper_bound(keyOf(mark));
            if (at == begun.begin() || std::prev(at)->first != keyOf(mark)) continue;
            sections[std::prev(at)->second].end = pointOf(mark);
            begun.erase(std::prev(at));
        }
    }
    // A thread that marks seldom keeps its begins in the ring when the ends on busier threads have left it.
    std::set<SectionKey> open;
    for (const TraceMark& mark : trace.open) open.insert(keyOf(mark));
    std::erase_if(sections, [&](const auto& each) { return !each.end && !open.contains({each.name, each.cookie}); });
    return sections;
}

// The request with the cookie that was open then.
TracedRequest* requestOf(std::multimap<int64_t, size_t>& byCookie, std::vector<TracedRequest>& requests,
                         const TraceSection& stage) {
    const auto [first, last] = byCookie.equal_range(stage.cookie);
    for (auto at = last; at != first;) {
        TracedRequest& request = requests[(--at)->second];
        if (endsAfter(request.section, stage.begin.time)) return &request;
    }
    return nullptr;
}

void addStage(TracedRequest& request, TraceSection stage) {
    const auto& end = request.section.end;
    if (end && endsAfter(stage, end->time)) stage.end = end;
    request.stages.push_back(std::move(stage));
}

}  // namespace

const TraceSection* TracedRequest::where() const {
    const auto open = std::find_if(stages.rbegin(), stages.rend(), [](const auto& stage) { return !stage.end; });
    return open == stages.rend() ? nullptr : &*open;
}

TracedSections tracedSections(const Trace& trace) {
    TracedSections sorted;
    std::multimap<int64_t, size_t> byCookie;
    for (TraceSection& section : asyncSections(trace)) {
        if (auto request = asRequest(section)) {
            byCookie.emplace(section.cookie, sorted.requests.size());
            sorted.requests.push_back(std::move(*request));
        } else if (TracedRequest* owner = requestOf(byCookie, sorted.requests, section)) {
            addStage(*owner, std::move(section));
        } else {
            sorted.others.push_back(std::move(section));
        }
    }
    return sorted;
}

std::vector<TraceMark> allMarks(const Trace& trace) {
    std::set<std::pair<int32_t, int64_t>> inRing;
    for (const TraceMark& mark : trace.marks) inRing.emplace(mark.thread, mark.time);
    std::vector<TraceMark> marks = trace.marks;
    for (const TraceMark& mark : trace.open) {
        if (!inRing.contains({mark.thread, mark.time})) marks.push_back(mark);
    }
    std::stable_sort(marks.begin(), marks.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
    return marks;
}

}  // namespace subsysctl
