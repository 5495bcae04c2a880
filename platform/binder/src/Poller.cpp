#include "Poller.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <thread>

#include "Log.h"

namespace binder {
namespace {

constexpr uint32_t kBroken = EPOLLHUP | EPOLLERR;

// Connections are descriptors: the soft limit is for programs that use select.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

int control(int epoll, int operation, int fd, uint32_t interest) {
    epoll_event event{};
    event.events = interest | EPOLLONESHOT;
    event.data.fd = fd;
    return epoll_ctl(epoll, operation, fd, &event);
}

}  // namespace

Poller& Poller::instance() {
    static auto* const instance = new Poller;  // outlives the threads that still use it at exit
    return *instance;
}

Poller::Poller() : mEpoll(epoll_create1(EPOLL_CLOEXEC)), mWake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    raiseDescriptorLimit();
    epoll_event event{};
    event.events = EPOLLIN | EPOLLET;
    event.data.fd = mWake.get();
    if (!mEpoll.isValid() || epoll_ctl(mEpoll.get(), EPOLL_CTL_ADD, mWake.get(), &event) != 0) {
        __android_log_assert(nullptr, "Binder", "no poller: the process is out of descriptors");
    }
    std::thread([this] { run(); }).detach();
}

void Poller::addTicker(Ticker ticker) {
    {
        std::lock_guard lock(mLock);
        mTickers.push_back(std::move(ticker));
    }
    wake();
}

bool Poller::add(const std::shared_ptr<Pollable>& pollable, uint32_t interest) {
    {
        std::lock_guard lock(mLock);
        mPollables[pollable->fd()] = pollable;
    }
    std::unique_lock lock(pollable->mArmLock);
    pollable->mArmed = interest;
    if (control(mEpoll.get(), EPOLL_CTL_ADD, pollable->fd(), interest) == 0) return true;
    lock.unlock();
    remove(*pollable);
    return false;
}

void Poller::arm(Pollable& pollable, uint32_t interest) {
    std::lock_guard lock(pollable.mArmLock);
    pollable.mArmed |= interest;
    control(mEpoll.get(), EPOLL_CTL_MOD, pollable.fd(), pollable.mArmed);
}

void Poller::remove(Pollable& pollable) {
    std::shared_ptr<Pollable> kept;  // destroyed without the lock
    std::lock_guard lock(mLock);
    const auto found = mPollables.find(pollable.fd());
    if (found == mPollables.end() || found->second.get() != &pollable) return;
    epoll_ctl(mEpoll.get(), EPOLL_CTL_DEL, pollable.fd(), nullptr);
    kept = std::move(found->second);
    mPollables.erase(found);
}

void Poller::wake() {
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(mWake.get(), &one, sizeof(one));
}

void Poller::run() {
    std::array<epoll_event, 32> events{};
    for (;;) {
        const int count = epoll_wait(mEpoll.get(), events.data(), static_cast<int>(events.size()), tick());
        for (int i = 0; i < count; ++i)
            report(events[static_cast<size_t>(i)].data.fd, events[static_cast<size_t>(i)].events);
    }
}

int Poller::tick() {
    std::vector<Ticker> tickers;
    {
        std::lock_guard lock(mLock);
        tickers = mTickers;
    }
    int next = -1;
    for (const Ticker& ticker : tickers) {
        const int wanted = ticker();
        if (wanted >= 0) next = next < 0 ? wanted : std::min(next, wanted);
    }
    return next;
}

void Poller::report(int fd, uint32_t events) {
    std::shared_ptr<Pollable> pollable;
    {
        std::lock_guard lock(mLock);
        const auto found = mPollables.find(fd);
        if (found == mPollables.end()) return;
        pollable = found->second;
    }
    uint32_t ready = 0;
    {
        std::lock_guard lock(pollable->mArmLock);
        ready = pollable->mArmed & ((events & kBroken) != 0 ? EPOLLIN | EPOLLOUT : events);
        pollable->mArmed &= ~ready;
        if (pollable->mArmed != 0) control(mEpoll.get(), EPOLL_CTL_MOD, fd, pollable->mArmed);
    }
    if (ready != 0) pollable->onReady(ready);
}

}  // namespace binder
