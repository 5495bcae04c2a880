#include "host/StderrLog.h"

#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

char letterOf(int32_t priority) {
    constexpr const char LETTERS[] = "??VDIWEF";
    return priority >= 0 && priority < 8 ? LETTERS[priority] : '?';
}

// What a reader that stands still would block; set before other threads log.
bool sMayBlock = false;

std::mutex sLock;
size_t sDropped = 0;  // guarded by sLock

// A pipe that can be written to takes PIPE_BUF bytes; the lock keeps that room for who asked.
bool hasRoom() {
    pollfd out{STDERR_FILENO, POLLOUT, 0};
    return !sMayBlock || poll(&out, 1, 0) > 0;
}

// One system call takes the whole line. A log that can't be written is no reason to stop.
void put(const iovec* parts, int count) {
    [[maybe_unused]] const ssize_t ignored = writev(STDERR_FILENO, parts, count);
}

void sayDropped() {
    char text[80];
    const int length =
        snprintf(text, sizeof(text), "subsysd: %zu log lines were dropped\n", std::exchange(sDropped, 0));
    const iovec line{text, static_cast<size_t>(length)};
    put(&line, 1);
}

void putOrDrop(const iovec* parts, int count) {
    const std::lock_guard lock(sLock);
    if (sDropped > 0 && hasRoom()) sayDropped();
    if (hasRoom()) {
        put(parts, count);
    } else {
        ++sDropped;
    }
}

// No allocation.
void write(const __android_logger_data* data, const char* message) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const char* tag = data->tag != nullptr ? data->tag : "";
    char head[160];
    const int length = snprintf(head, sizeof(head), "%02d:%02d:%02d.%03ld %6d %c %.80s: ", local.tm_hour, local.tm_min,
                                local.tm_sec, now.tv_nsec / 1'000'000, gettid(), letterOf(data->priority), tag);
    size_t size = strnlen(message, PIPE_BUF - length - 1);
    if (size > 0 && message[size - 1] == '\n') --size;  // some messages bring their own
    const iovec line[] = {
        {head, static_cast<size_t>(length)}, {const_cast<char*>(message), size}, {const_cast<char*>("\n"), 1}};
    putOrDrop(line, 3);
}

bool isPipeOrSocket(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

}  // namespace

void startStderrLog(android_LogPriority lowest) {
    sMayBlock = isPipeOrSocket(STDERR_FILENO);
    __android_log_set_logger(write);
    __android_log_set_minimum_priority(lowest);
}
