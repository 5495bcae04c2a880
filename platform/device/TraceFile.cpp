#include <device/TraceFile.h>

#include "TraceDecoder.h"
#include "TraceFolder.h"

#include <device/RuntimeFolder.h>

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace device {

namespace {

using android::base::unique_fd;

// Two copies of a file, the second begun when the first was complete.
struct Copies {
    trace::File first;
    trace::File second;

    // Why there are none, or null.
    const char* read(int fd) {
        if (!readTo(first, fd) || !readTo(second, fd)) return "it is shorter than a trace, or can't be read";
        return first.magic == trace::MAGIC && first.size == sizeof(first) ? nullptr : "it is no trace";
    }
    static bool readTo(trace::File& file, int fd) {
        return android::base::ReadFullyAtOffset(fd, &file, sizeof(file), 0);
    }
};

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
    return trace::decode(copies->first, copies->second);
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
