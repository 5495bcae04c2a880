#include "TraceDecoder.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace device::trace {

namespace {

// Leaves room for sums and differences.
constexpr uint64_t MAX_TIME = uint64_t{1} << 60;
constexpr uint64_t MAX_WALL_TIME = uint64_t{1} << 62;

std::string printable(std::string_view bytes) {
    std::string text(bytes);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

// The text in a field that ends with it or with a NUL.
template <typename Field>
std::string textIn(const Field& field) {
    const std::string_view bytes(static_cast<const char*>(static_cast<const void*>(field.data())), sizeof(field));
    return printable(bytes.substr(0, bytes.find('\0')));
}

int64_t atMost(uint64_t limit, uint64_t word) {
    return static_cast<int64_t>(std::min(word, limit));
}

// The mark in a slot; nothing where the words can't be those of a recorder.
std::optional<TraceMark> decode(const Slot& slot) {
    const uint64_t kind = slot.origin >> 32 & 0xFF;
    const uint64_t bytes = slot.origin >> 40;
    if (slot.time == 0 || slot.time > MAX_TIME || kind < static_cast<uint64_t>(MarkKind::BEGIN) ||
        kind > static_cast<uint64_t>(MarkKind::COUNTER) || bytes > NAME_BYTES) {
        return std::nullopt;
    }
    const std::string_view name(static_cast<const char*>(static_cast<const void*>(slot.name.data())), bytes);
    return TraceMark{.time = static_cast<int64_t>(slot.time),
                     .thread = static_cast<int32_t>(slot.origin),
                     .kind = static_cast<MarkKind>(kind),
                     .value = static_cast<int64_t>(slot.value),
                     .name = printable(name)};
}

void sortByTime(std::vector<TraceMark>& marks) {
    std::stable_sort(marks.begin(), marks.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
}

void add(const Slot& first, const Slot& second, std::vector<TraceMark>& marks) {
    if (memcmp(&first, &second, sizeof(first)) != 0) return;
    if (auto mark = decode(first)) marks.push_back(std::move(*mark));
}

void addSections(const Thread& first, const Thread& second, std::vector<TraceMark>& open) {
    const uint64_t depth = std::min({first.depth, second.depth, uint64_t{THREAD_SECTIONS}});
    for (size_t i = 0; i < depth; ++i) add(first.sections[i], second.sections[i], open);
}

std::vector<TraceMark> marks(const File& first, const File& second) {
    std::vector<TraceMark> marks;
    for (size_t i = 0; i < first.ring.size(); ++i) add(first.ring[i], second.ring[i], marks);
    sortByTime(marks);
    return marks;
}

std::vector<TraceMark> open(const File& first, const File& second) {
    std::vector<TraceMark> open;
    for (size_t i = 0; i < THREADS; ++i) {
        if (first.threadOwners[i] != 0) addSections(first.threads[i], second.threads[i], open);
    }
    for (size_t i = 0; i < PLACES; ++i) {
        const bool isOpen = first.keys[i] > TAKEN_KEY && first.keys[i] == second.keys[i];
        if (isOpen) add(first.open[i], second.open[i], open);
    }
    std::erase_if(open,
                  [](const auto& each) { return each.kind != MarkKind::BEGIN && each.kind != MarkKind::ASYNC_BEGIN; });
    sortByTime(open);
    return open;
}

std::map<int32_t, std::string> threadNames(const File& file) {
    std::map<int32_t, std::string> names;
    // Those that live last: an ended thread's number may be theirs now.
    for (const bool lives : {false, true}) {
        for (size_t i = 0; i < THREADS; ++i) {
            const Thread& thread = file.threads[i];
            if (thread.id == 0 || (file.threadOwners[i] != 0) != lives) continue;
            names[static_cast<int32_t>(thread.id)] = textIn(thread.name);
        }
    }
    return names;
}

}  // namespace

Trace decode(const File& first, const File& second) {
    Trace trace;
    trace.program = textIn(first.program);
    trace.pid = static_cast<int32_t>(first.pid);
    trace.startTime = atMost(MAX_TIME, first.startTime);
    trace.startWallTime = atMost(MAX_WALL_TIME, first.startWallTime);
    const auto unplaced = static_cast<int64_t>(first.begunWithoutPlace - first.endedWithoutPlace);
    trace.unplaced = static_cast<uint64_t>(std::max<int64_t>(unplaced, 0));
    trace.lostMarks = first.lostMarks;
    trace.threadNames = threadNames(first);
    trace.marks = marks(first, second);
    trace.open = open(first, second);
    return trace;
}

}  // namespace device::trace
