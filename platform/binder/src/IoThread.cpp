#include "IoThread.h"

#include "Log.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace binder {
namespace {

constexpr size_t STACK = size_t{512} * 1024;

class Wake final : public Pollable {
public:
    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t) override {}
    void onNoMemory() override {}

private:
    const UniqueFd mFd{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

// Connections are descriptors: the soft limit is for programs that use select.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

int startThread(const char* name, void* (*body)(void*), void* argument) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes, STACK);
    pthread_t thread{};
    const int error = pthread_create(&thread, &attributes, body, argument);
    if (error == 0) pthread_setname_np(thread, name);
    pthread_attr_destroy(&attributes);
    return error;
}

IoThread& IoThread::instance() {
    static auto* const instance = new IoThread;  // outlives the threads that still use it at exit
    return *instance;
}

bool IoThread::start() {
    const device::MutexLock lock(mLock);
    if (mStarted) return true;
    raiseDescriptorLimit();
    if (!mPoller.open()) return false;
    if (mWake == nullptr) {
        auto wake = std::make_shared<Wake>();
        PollKey key = 0;
        if (wake->fd() < 0 || !mPoller.add(wake, EPOLLIN | EPOLLET, key)) return false;
        mWake = std::move(wake);
    }
    errno = startThread(
        "binder-io", [](void* self) -> void* { static_cast<IoThread*>(self)->run(); }, this);
    mStarted = errno == 0;
    return mStarted;
}

void IoThread::addTicker(Ticker ticker) {
    for (auto& each : mTickers) {
        Ticker known = nullptr;
        if (each.compare_exchange_strong(known, ticker) || known == ticker) break;
    }
    wake();
}

void IoThread::wake() const {
    if (mWake == nullptr) return;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(mWake->fd(), &one, sizeof(one));
}

void IoThread::run() {
    for (;;) {
        mPoller.wait(tick()).report();
    }
}

int IoThread::tick() {
    int next = -1;
    for (const auto& each : mTickers) {
        const Ticker ticker = each.load();
        const int wanted = ticker == nullptr ? -1 : ticker();
        if (wanted >= 0) next = next < 0 ? wanted : std::min(next, wanted);
    }
    return next;
}

}  // namespace binder
