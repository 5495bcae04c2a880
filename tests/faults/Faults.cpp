// Preloaded into a program, it counts the program's calls by kind and lets one of them fail:
//   FAULT_COUNTS  a file of one 64-bit count for each kind, in the order of `Kind`
//   FAULT_KIND    the index of a kind
//   FAULT_AT      which call of that kind fails, from 1; 0: none
//   FAULT_ERRNO   with which error

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What the C library itself allocates with.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
}

namespace {

enum Kind { MEMORY, THREAD, SOCKET, ACCEPT, SEND, RECV, OPEN, EPOLL_CTL, KINDS };
using Counts = std::atomic<uint64_t>[KINDS];

Counts* sCounts = nullptr;  // null while the program is being loaded
uint64_t sKind = KINDS;
uint64_t sAt = 0;
int sErrno = 0;

const char* textOf(const char* variable) {
    const char* text = getenv(variable);
    return text != nullptr ? text : "";
}

[[gnu::constructor]] void begin() {
    const int file = ::open(textOf("FAULT_COUNTS"), O_RDWR | O_CLOEXEC);
    void* const counts = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    sKind = strtoull(textOf("FAULT_KIND"), nullptr, 10);
    sAt = strtoull(textOf("FAULT_AT"), nullptr, 10);
    sErrno = static_cast<int>(strtol(textOf("FAULT_ERRNO"), nullptr, 10));
    if (counts == MAP_FAILED) abort();
    sCounts = static_cast<Counts*>(counts);
}

bool fails(Kind kind) {
    if (sCounts == nullptr || ++(*sCounts)[kind] != sAt || kind != sKind) return false;
    errno = sErrno;
    return true;
}

bool hasMode(int flags) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

}  // namespace

#define NEXT(name) reinterpret_cast<decltype(&::name)>(dlsym(RTLD_NEXT, #name))
// NOLINTBEGIN(bugprone-macro-parentheses)
#define WRAP(kind, failure, result, name, parameters, ...)      \
    result name parameters {                                    \
        return fails(kind) ? failure : NEXT(name)(__VA_ARGS__); \
    }
#define WRAP_OPEN(name, parameters, ...)                                \
    int name parameters {                                               \
        va_list rest;                                                   \
        va_start(rest, flags);                                          \
        const mode_t mode = hasMode(flags) ? va_arg(rest, mode_t) : 0;  \
        va_end(rest);                                                   \
        return fails(OPEN) ? -1 : NEXT(name)(__VA_ARGS__, flags, mode); \
    }
// NOLINTEND(bugprone-macro-parentheses)

extern "C" {

void* malloc(size_t size) {
    return fails(MEMORY) ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    return fails(MEMORY) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) {
    return fails(MEMORY) ? nullptr : __libc_realloc(memory, size);
}

WRAP(THREAD, sErrno, int, pthread_create,
     (pthread_t * thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument), thread, attributes,
     body, argument)
WRAP(SOCKET, -1, int, socket, (int domain, int type, int protocol), domain, type, protocol)
WRAP(SOCKET, -1, int, socketpair, (int domain, int type, int protocol, int* ends), domain, type, protocol, ends)
WRAP(ACCEPT, -1, int, accept4, (int fd, sockaddr* peer, socklen_t* size, int flags), fd, peer, size, flags)
WRAP(SEND, -1, ssize_t, send, (int fd, const void* bytes, size_t size, int flags), fd, bytes, size, flags)
WRAP(SEND, -1, ssize_t, sendmsg, (int fd, const msghdr* message, int flags), fd, message, flags)
WRAP(RECV, -1, ssize_t, recv, (int fd, void* bytes, size_t size, int flags), fd, bytes, size, flags)
WRAP(RECV, -1, ssize_t, recvmsg, (int fd, msghdr* message, int flags), fd, message, flags)
WRAP(EPOLL_CTL, -1, int, epoll_ctl, (int epoll, int operation, int fd, epoll_event* event), epoll, operation, fd, event)
// All that gives a new descriptor.
WRAP_OPEN(open, (const char* path, int flags, ...), path)
WRAP_OPEN(openat, (int folder, const char* path, int flags, ...), folder, path)
WRAP(OPEN, nullptr, FILE*, fopen, (const char* path, const char* mode), path, mode)
WRAP(OPEN, nullptr, FILE*, fopen64, (const char* path, const char* mode), path, mode)
WRAP(OPEN, -1, int, epoll_create1, (int flags), flags)
WRAP(OPEN, -1, int, eventfd, (unsigned value, int flags), value, flags)
WRAP(OPEN, -1, int, timerfd_create, (clockid_t clock, int flags), clock, flags)
WRAP(OPEN, -1, int, inotify_init1, (int flags), flags)
WRAP(OPEN, -1, int, memfd_create, (const char* name, unsigned flags), name, flags)

}  // extern "C"
