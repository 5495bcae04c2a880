#include <device/TraceFile.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <device/RuntimeFolder.h>

#include "TraceFolder.h"
#include "TraceLayout.h"

namespace device {

namespace {

using android::base::unique_fd;

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
std::optional<TraceMark> decode(const trace::Slot& slot) {
    const uint64_t kind = slot.origin >> 32 & 0xFF;
    const uint64_t bytes = slot.origin >> 40;
    if (slot.time == 0 || slot.time > MAX_TIME || kind < static_cast<uint64_t>(MarkKind::BEGIN) ||
        kind > static_cast<uint64_t>(MarkKind::COUNTER) || bytes > trace::NAME_BYTES) {
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

// Two copies of a file, the second begun when the first was complete.
class Copies {
public:
    // Why there are none, or null.
    const char* read(int fd) {
        if (!readTo(mFirst, fd) || !readTo(mSecond, fd)) return "it is shorter than a trace, or can't be read";
        return mFirst.magic == trace::MAGIC && mFirst.size == sizeof(mFirst) ? nullptr : "it is no trace";
    }
    [[nodiscard]] const trace::File& first() const { return mFirst; }

    [[nodiscard]] std::vector<TraceMark> marks() const {
        std::vector<TraceMark> marks;
        for (size_t i = 0; i < mFirst.ring.size(); ++i) add(mFirst.ring[i], mSecond.ring[i], marks);
        sortByTime(marks);
        return marks;
    }
    [[nodiscard]] std::vector<TraceMark> open() const {
        std::vector<TraceMark> open;
        for (size_t i = 0; i < trace::THREADS; ++i) {
            if (mFirst.threadOwners[i] != 0) addSections(mFirst.threads[i], mSecond.threads[i], open);
        }
        for (size_t i = 0; i < trace::PLACES; ++i) {
            const bool isOpen = mFirst.keys[i] > trace::TAKEN_KEY && mFirst.keys[i] == mSecond.keys[i];
            if (isOpen) add(mFirst.open[i], mSecond.open[i], open);
        }
        std::erase_if(open, [](const TraceMark& mark) { return !isBegin(mark.kind); });
        sortByTime(open);
        return open;
    }

private:
    static bool readTo(trace::File& file, int fd) {
        return android::base::ReadFullyAtOffset(fd, &file, sizeof(file), 0);
    }
    static bool isBegin(MarkKind kind) { return kind == MarkKind::BEGIN || kind == MarkKind::ASYNC_BEGIN; }

    static void add(const trace::Slot& first, const trace::Slot& second, std::vector<TraceMark>& marks) {
        if (memcmp(&first, &second, sizeof(first)) != 0) return;
        if (auto mark = decode(first)) marks.push_back(std::move(*mark));
    }
    static void addSections(const trace::Thread& first, const trace::Thread& second, std::vector<TraceMark>& open) {
        const uint64_t depth = std::min({first.depth, second.depth, uint64_t{trace::THREAD_SECTIONS}});
        for (size_t i = 0; i < depth; ++i) add(first.sections[i], second.sections[i], open);
    }

    trace::File mFirst;
    trace::File mSecond;
};

std::map<int32_t, std::string> threadNames(const trace::File& file) {
    std::map<int32_t, std::string> names;
    // Those that live last: an ended thread's number may be theirs now.
    for (const bool lives : {false, true}) {
        for (size_t i = 0; i < trace::THREADS; ++i) {
            const trace::Thread& thread = file.threads[i];
            if (thread.id == 0 || (file.threadOwners[i] != 0) != lives) continue;
            names[static_cast<int32_t>(thread.id)] = textIn(thread.name);
        }
    }
    return names;
}

Trace decode(const Copies& copies) {
    const trace::File& file = copies.first();
    Trace trace;
    trace.program = textIn(file.program);
    trace.pid = static_cast<int32_t>(file.pid);
    trace.startTime = atMost(MAX_TIME, file.startTime);
    trace.startWallTime = atMost(MAX_WALL_TIME, file.startWallTime);
    const auto unplaced = static_cast<int64_t>(file.begunWithoutPlace - file.endedWithoutPlace);
    trace.unplaced = static_cast<uint64_t>(std::max<int64_t>(unplaced, 0));
    trace.lostMarks = file.lostMarks;
    trace.threadNames = threadNames(file);
    trace.marks = copies.marks();
    trace.open = copies.open();
    return trace;
}

bool isLocked(const std::string& folder, std::string_view program) {
    const std::string path = folder + "/" + trace::fileName(trace::LOCK_PREFIX, program);
    const unique_fd file(open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    struct flock whole {};
    whole.l_type = F_WRLCK;
    return file >= 0 && fcntl(file, F_OFD_GETLK, &whole) == 0 && whole.l_type != F_UNLCK;
}

// What follows the prefix in the names of the folder's files, in order.
std::vector<std::string> programsIn(const std::string& folder, std::string_view prefix) {
    std::vector<std::string> programs;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        const std::string_view name(entry->d_name);
        if (name.starts_with(prefix)) programs.emplace_back(name.substr(prefix.size()));
    }
    std::sort(programs.begin(), programs.end());
    return programs;
}

// Also "program@2".
bool isOf(std::string_view candidate, std::string_view program) {
    return program.empty() || candidate.substr(0, candidate.find('@')) == program;
}

}  // namespace

std::optional<Trace> readTrace(const std::string& path, std::string& problem) {
    const unique_fd fd(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    // 8 MiB of plain words.
    const auto copies = std::make_unique_for_overwrite<Copies>();
    const char* reason = fd < 0 ? strerror(errno) : copies->read(fd);
    if (reason != nullptr) {
        problem = path + ": " + reason;
        return std::nullopt;
    }
    return decode(*copies);
}

std::vector<Trace> readTraces(bool last, const std::string& program, std::vector<std::string>& problems) {
    const std::string folder = runtimeFolder();
    const std::string_view prefix = last ? trace::LAST_PREFIX : trace::FILE_PREFIX;
    std::vector<Trace> traces;
    for (const std::string& each : programsIn(folder, prefix)) {
        if (!isOf(each, program)) continue;
        std::string problem;
        if (auto trace = readTrace(folder + "/" + trace::fileName(prefix, each), problem)) {
            trace->isAlive = !last && isLocked(folder, each);
            traces.push_back(std::move(*trace));
        } else {
            problems.push_back(problem);
        }
    }
    return traces;
}

}  // namespace device
