#include <device/Recorder.h>

#include "TraceFolder.h"
#include "TraceWriter.h"

#include <android/log.h>
#include <device/RuntimeFolder.h>

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace device {

namespace {

using android::base::unique_fd;

constexpr int MAX_PROCESSES = 16;

// The lock's descriptor; errno is EAGAIN while another process has it.
unique_fd lock(int folder, const std::string& program) {
    const std::string name = trace::fileName(trace::LOCK_PREFIX, program);
    unique_fd file(openat(folder, name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    struct flock whole {};
    whole.l_type = F_WRLCK;
    return file >= 0 && fcntl(file, F_OFD_SETLK, &whole) == 0 ? std::move(file) : unique_fd();
}

// The name under which this process records: the program's or, while others have that, the next that is free. It stays
// taken until the process ends. Empty, with errno, where there is none.
std::string takeName(int folder, const std::string& program) {
    std::string name = program;
    for (int i = 2; i <= MAX_PROCESSES + 1; ++i) {
        if (lock(folder, name).release() >= 0) return name;
        if (errno != EAGAIN) return "";
        name = program + "@" + std::to_string(i);
    }
    return "";
}

int64_t nanos(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void writeHeader(trace::File& file, const std::string& program) {
    file.size = sizeof(file);
    file.pid = static_cast<uint64_t>(getpid());
    file.startTime = static_cast<uint64_t>(nanos(CLOCK_MONOTONIC));
    file.startWallTime = static_cast<uint64_t>(nanos(CLOCK_REALTIME));
    snprintf(file.program.data(), file.program.size(), "%s", program.c_str());
    std::atomic_ref(file.magic).store(trace::MAGIC, std::memory_order_release);
}

// The blocks are there before the first mark: where a file system is full, a write to a hole would kill the process.
trace::File* map(int file) {
    if (const int error = posix_fallocate(file, 0, sizeof(trace::File))) {
        errno = error;
        return nullptr;
    }
    void* memory = mmap(nullptr, sizeof(trace::File), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<trace::File*>(memory);
}

// The file of a name that this process has taken.
trace::File* create(int folder, const std::string& program) {
    const std::string name = trace::fileName(trace::FILE_PREFIX, program);
    renameat(folder, name.c_str(), folder, trace::fileName(trace::LAST_PREFIX, program).c_str());
    const unique_fd file(openat(folder, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    trace::File* mapped = file < 0 ? nullptr : map(file);
    if (mapped == nullptr && file >= 0) {
        const int error = errno;
        unlinkat(folder, name.c_str(), 0);
        errno = error;
    }
    return mapped;
}

trace::File* start(const std::string& program) {
    std::string trouble;
    const unique_fd folder(makeRuntimeFolder(trouble));
    const std::string name = folder < 0 ? "" : takeName(folder, program);
    trace::File* file = name.empty() ? nullptr : create(folder, name);
    if (file != nullptr) writeHeader(*file, name);
    return file;
}

}  // namespace

bool startRecorder(std::string_view program) {
    trace::File* file = start(std::string(program));
    if (file == nullptr) {
        __android_log_print(ANDROID_LOG_WARN, "Recorder", "nothing is recorded in %s: %s", runtimeFolder().c_str(),
                            strerror(errno));
        return false;
    }
    pthread_atfork(nullptr, nullptr, [] { trace::setWriter(nullptr); });
    trace::setWriter(new trace::TraceWriter(*file));
    return true;
}

bool startRecorderWhenAsked(std::string_view program) {
    const char* asked = getenv("SUBSYS_TRACE");
    return asked != nullptr && std::string_view(asked) == "1" && startRecorder(program);
}

}  // namespace device
