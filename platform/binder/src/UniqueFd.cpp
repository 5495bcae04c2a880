#include "UniqueFd.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace binder {
namespace {

// One bit for each open descriptor; higher ones than these are left to a forked child.
std::array<std::atomic<uint64_t>, 1024> sOpen;

bool isKnown(int fd) {
    return fd >= 0 && static_cast<size_t>(fd) < 64 * sOpen.size();
}

std::atomic<uint64_t>& wordOf(int fd) {
    return sOpen[static_cast<size_t>(fd) / 64];
}

uint64_t bitOf(int fd) {
    return uint64_t{1} << (fd % 64);
}

void closeInChild() {
    for (size_t i = 0; i < sOpen.size(); ++i) {
        for (uint64_t bits = sOpen[i].exchange(0); bits != 0; bits &= bits - 1) {
            close(static_cast<int>(64 * i) + std::countr_zero(bits));
        }
    }
}

[[maybe_unused]] const int sInstalled = pthread_atfork(nullptr, nullptr, closeInChild);

}  // namespace

UniqueFd::UniqueFd(int fd) : mFd(fd) {
    if (isKnown(fd)) wordOf(fd).fetch_or(bitOf(fd), std::memory_order_relaxed);
}

UniqueFd::~UniqueFd() {
    if (mFd < 0) return;
    const uint64_t open = isKnown(mFd) ? wordOf(mFd).fetch_and(~bitOf(mFd), std::memory_order_relaxed) : ~uint64_t{0};
    if ((open & bitOf(mFd)) != 0) close(mFd);
}

}  // namespace binder
