#pragma once

#include "UniqueFd.h"

#include <device/Mutex.h>

#include <sys/epoll.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace binder {

// A descriptor that a poller watches.
class Pollable {
public:
    virtual ~Pollable() = default;
    [[nodiscard]] virtual int fd() const = 0;
    // What is watched for has happened, or the descriptor is broken, as `events` says; sometimes nothing has.
    virtual void onReady(uint32_t events) = 0;
    // onReady() ran out of memory.
    virtual void onNoMemory() = 0;
};

// Names what add() took; never used twice. 0 names nothing.
using PollKey = uint64_t;

// An epoll with the objects that it watches. An event finds its object through the key, so a thread may remove one
// while another is about to report it. Thread: any.
class Poller {
public:
    // Before anything else. False, with errno, when the system refuses; it may be tried again.
    [[nodiscard]] bool open();
    // Whether something is ready that nobody has taken.
    [[nodiscard]] bool hasReady() const;
    // Keeps `pollable` until it is removed; `key` is set before the first event. False, with errno and key 0, when the
    // system refuses.
    [[nodiscard]] bool add(const std::shared_ptr<Pollable>& pollable, uint32_t events, PollKey& key);
    // Watches for `events` from now on; false, with errno, when the system refuses or it was removed.
    [[nodiscard]] bool arm(PollKey key, uint32_t events);
    // To be called before the descriptor is closed. May destroy the object. Key 0 is allowed.
    void remove(PollKey key);
    struct Ready {
        std::shared_ptr<Pollable> pollable;
        uint32_t events = 0;

        // Tells the object; nothing when there is none.
        void report() const;
    };
    // The next one that is ready, or none after `timeout` milliseconds, and sometimes before.
    [[nodiscard]] Ready wait(int timeout);

private:
    struct Slot {
        uint32_t generation = 0;
        std::shared_ptr<Pollable> pollable;
    };

    // Of what is watched; null when it was removed.
    [[nodiscard]] Slot* find(PollKey key) SUBSYS_REQUIRES(mLock);

    UniqueFd mEpoll;
    device::Mutex mLock;
    std::vector<Slot> mSlots SUBSYS_GUARDED_BY(mLock);  // by descriptor
};

}  // namespace binder
