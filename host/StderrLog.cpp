#include "host/StderrLog.h"

#include <device/Escape.h>
#include <device/Mutex.h>

#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>
#include <utility>

namespace {

// What a reader that stands still would block; set before other threads log.
bool sMayBlock = false;

constinit device::Mutex sLock;
size_t sDropped SUBSYS_GUARDED_BY(sLock) = 0;

// A pipe that can be written to takes PIPE_BUF bytes; the lock keeps that room for who asked.
bool hasRoom() {
    pollfd out{STDERR_FILENO, POLLOUT, 0};
    return !sMayBlock || poll(&out, 1, 0) > 0;
}

// One system call takes the whole line. A log that can't be written is no reason to stop.
void put(const char* line, size_t size) {
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, line, size);
}

void sayDropped() SUBSYS_REQUIRES(sLock) {
    char line[80];
    const int length =
        snprintf(line, sizeof(line), "subsysd: %zu log lines were dropped\n", std::exchange(sDropped, 0));
    put(line, static_cast<size_t>(length));
}

void putOrDrop(const char* line, size_t size) {
    const device::MutexLock lock(sLock);
    if (sDropped > 0 && hasRoom()) sayDropped();
    if (hasRoom()) {
        put(line, size);
    } else {
        ++sDropped;
    }
}

char letterOf(int32_t priority) {
    constexpr const char LETTERS[] = "??VDIWEF";
    return priority >= 0 && priority < 8 ? LETTERS[priority] : '?';
}

// Writes time, thread and level; returns the length.
int writeHead(char* out, size_t size, int32_t priority) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    return snprintf(out, size, "%02d:%02d:%02d.%03ld %6d %c ", local.tm_hour, local.tm_min, local.tm_sec,
                    now.tv_nsec / 1'000'000, gettid(), letterOf(priority));
}

// No allocation.
void writeLine(const __android_logger_data* data, const char* message) {
    std::string_view text = message;
    if (text.ends_with('\n')) text.remove_suffix(1);  // some messages bring their own
    char line[PIPE_BUF];
    const char* const end = line + sizeof(line) - 1;
    char* out = line + writeHead(line, sizeof(line), data->priority);
    out = device::escape(data->tag != nullptr ? data->tag : "", out, end);
    out = device::escape(": ", out, end);
    out = device::escape(text, out, end);
    *out++ = '\n';
    putOrDrop(line, static_cast<size_t>(out - line));
}

bool isPipeOrSocket(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

}  // namespace

void startStderrLog(android_LogPriority lowest) {
    sMayBlock = isPipeOrSocket(STDERR_FILENO);
    __android_log_set_logger(writeLine);
    __android_log_set_minimum_priority(lowest);
}
