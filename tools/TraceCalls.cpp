#include "tools/TraceCalls.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace subsysctl {

namespace {

using device::MarkKind;
using device::TraceMark;

// "call to 4711, code 7, ..." becomes "call 10 4711, code 7, ..." in process 10, and in 4711 the "call from 10, ...".
std::optional<std::string> nameAtBothEnds(const TraceMark& mark, int32_t pid) {
    const std::string_view name = mark.name;
    for (const std::string_view kind : {"call ", "oneway "}) {
        if (!name.starts_with(kind)) continue;
        const std::string_view rest = name.substr(kind.size());
        const bool isSent = rest.starts_with("to ");
        const size_t end = rest.find(", ");
        if ((!isSent && !rest.starts_with("from ")) || end == std::string_view::npos) break;
        const size_t start = isSent ? 3 : 5;
        const std::string peer(rest.substr(start, end - start)), own = std::to_string(pid);
        const auto& [caller, callee] = isSent ? std::tie(own, peer) : std::tie(peer, own);
        return std::string(kind).append(caller).append(" ").append(callee).append(rest.substr(end));
    }
    return std::nullopt;
}

}  // namespace

bool isCall(const TraceMark& mark) {
    return nameAtBothEnds(mark, 0).has_value();
}

std::vector<TraceSection> tracedCalls(const device::Trace& trace) {
    constexpr size_t NONE = SIZE_MAX;
    std::vector<TraceSection> calls;
    std::map<int32_t, std::vector<size_t>> open;  // of each thread
    for (const TraceMark& mark : allMarks(trace)) {
        auto& stack = open[mark.thread];
        if (mark.kind == MarkKind::END && !stack.empty()) {
            if (stack.back() != NONE) calls[stack.back()].end = {mark.time, mark.thread};
            stack.pop_back();
        }
        if (mark.kind != MarkKind::BEGIN && mark.kind != MarkKind::INSTANT) continue;
        const auto name = nameAtBothEnds(mark, trace.pid);
        if (mark.kind == MarkKind::BEGIN) stack.push_back(name ? calls.size() : NONE);
        if (name) calls.push_back({*name, 0, {mark.time, mark.thread}, {}});
    }
    return calls;
}

}  // namespace subsysctl
