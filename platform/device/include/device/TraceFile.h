#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Linux only: reads what a recorder wrote (device/Recorder.h), while its process runs, hangs or has ended.
namespace device {

enum class MarkKind : uint8_t { BEGIN = 1, END, ASYNC_BEGIN, ASYNC_END, INSTANT, COUNTER };

struct TraceMark {
    int64_t time = 0;  // CLOCK_MONOTONIC in ns
    int32_t thread = 0;
    MarkKind kind = MarkKind::INSTANT;
    int64_t value = 0;  // the cookie of an asynchronous section, the value of a counter
    std::string name;   // printable ASCII; other bytes have become '?'. Empty for END.
};

// What one process recorded.
struct Trace {
    std::string program;
    int32_t pid = 0;
    bool isAlive = false;       // its process still runs, or hangs
    int64_t startTime = 0;      // CLOCK_MONOTONIC in ns, 0 to 2^60
    int64_t startWallTime = 0;  // CLOCK_REALTIME in ns, of the same moment, 0 to 2^62

    std::vector<TraceMark> marks;  // the latest, by time
    std::vector<TraceMark> open;   // the begins of the sections that are open, by time
    uint64_t unplaced = 0;         // sections that are open and found no place in `open`
    uint64_t lostMarks = 0;
    std::map<int32_t, std::string> threadNames;
};

// The file may hold anything: what makes no sense in it is left out. Without a trace the problem says why.
[[nodiscard]] std::optional<Trace> readTrace(const std::string& path, std::string& problem);

// The traces of all programs in the runtime folder, or those of the last run of each; of one program, when it is named.
// They are in the order of their names: "subsysd", "subsysd@2". A file that can't be read adds a line to the problems.
[[nodiscard]] std::vector<Trace> readTraces(bool last, const std::string& program, std::vector<std::string>& problems);

}  // namespace device
