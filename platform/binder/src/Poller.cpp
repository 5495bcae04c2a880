#include "Poller.h"

#include <poll.h>

#include <cerrno>
#include <new>
#include <utility>

namespace binder {
namespace {

int fdOf(PollKey key) {
    return static_cast<int>(key & UINT32_MAX);
}

int control(const UniqueFd& epoll, int operation, PollKey key, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.u64 = key;
    return epoll_ctl(epoll.get(), operation, fdOf(key), &event);
}

}  // namespace

bool Poller::open() {
    if (!mEpoll.isValid()) mEpoll = UniqueFd(epoll_create1(EPOLL_CLOEXEC));
    return mEpoll.isValid();
}

bool Poller::hasReady() const {
    pollfd epoll{mEpoll.get(), POLLIN, 0};
    return poll(&epoll, 1, 0) > 0;
}

bool Poller::add(const std::shared_ptr<Pollable>& pollable, uint32_t events, PollKey& key) {
    const auto fd = static_cast<size_t>(pollable->fd());
    {
        const device::MutexLock lock(mLock);
        if (mSlots.size() <= fd) mSlots.resize(fd + 1);
        key = PollKey{++mSlots[fd].generation} << 32 | fd;
        mSlots[fd].pollable = pollable;
    }
    if (control(mEpoll, EPOLL_CTL_ADD, key, events) == 0) return true;
    const int reason = errno;
    remove(std::exchange(key, 0));
    errno = reason;
    return false;
}

Poller::Slot* Poller::find(PollKey key) {
    Slot& slot = mSlots[static_cast<size_t>(fdOf(key))];
    return slot.generation == key >> 32 && slot.pollable != nullptr ? &slot : nullptr;
}

bool Poller::arm(PollKey key, uint32_t events) {
    const device::MutexLock lock(mLock);
    // The number of its descriptor may be another one's by now.
    if (find(key) != nullptr) return control(mEpoll, EPOLL_CTL_MOD, key, events) == 0;
    errno = ENOENT;
    return false;
}

void Poller::remove(PollKey key) {
    if (key == 0) return;
    std::shared_ptr<Pollable> kept;  // destroyed without the lock
    const device::MutexLock lock(mLock);
    Slot* const slot = find(key);
    if (slot == nullptr) return;
    kept = std::exchange(slot->pollable, nullptr);
    control(mEpoll, EPOLL_CTL_DEL, key, 0);
}

void Poller::Ready::report() const {
    if (pollable == nullptr) return;
    try {
        pollable->onReady(events);
    } catch (const std::bad_alloc&) {
        pollable->onNoMemory();
    }
}

Poller::Ready Poller::wait(int timeout) {
    epoll_event event{};
    if (epoll_wait(mEpoll.get(), &event, 1, timeout) <= 0) return {};
    const PollKey key = event.data.u64;
    const device::MutexLock lock(mLock);
    const Slot* const slot = find(key);
    return slot != nullptr ? Ready{slot->pollable, event.events} : Ready{};
}

}  // namespace binder
