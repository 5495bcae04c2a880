#pragma once

#include <device/TraceFile.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Requests as the recorder of a process saw them. How they are marked is in platform/device/README.md. Times are those
// of the recorder: CLOCK_MONOTONIC in ns.
namespace subsysctl {

// Where and when a section began or ended.
struct TracePoint {
    int64_t time = 0;
    int32_t thread = 0;
};

// An asynchronous section, also a stage of a request.
struct TraceSection {
    std::string name;
    int64_t cookie = 0;
    TracePoint begin;
    std::optional<TracePoint> end;  // without one it is open
};

struct TracedRequest {
    std::string operation;
    int64_t number = 0;  // the serial, or the token
    TraceSection section;
    std::vector<TraceSection> stages;  // in the order of their begins, each within the request

    // The stage that has it: of the open ones the one that began last; null where there is none.
    [[nodiscard]] const TraceSection* where() const;
};

struct TracedSections {
    std::vector<TracedRequest> requests;  // oldest first
    std::vector<TraceSection> others;     // oldest first
};

// Sections whose begin the ring has lost, or whose end, are left out; those that are open never are.
[[nodiscard]] TracedSections tracedSections(const device::Trace& trace);

// The marks and, where the ring has lost them, the begins of the open sections; by time.
[[nodiscard]] std::vector<device::TraceMark> allMarks(const device::Trace& trace);

}  // namespace subsysctl
