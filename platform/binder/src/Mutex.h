#pragma once

// A mutex and a lock that clang's thread-safety analysis understands.

#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define BINDER_ATTRIBUTE(x) __attribute__((x))
#else
#define BINDER_ATTRIBUTE(x)
#endif
#define CAPABILITY(x) BINDER_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY BINDER_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) BINDER_ATTRIBUTE(guarded_by(x))
#define REQUIRES(...) BINDER_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) BINDER_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) BINDER_ATTRIBUTE(release_capability(__VA_ARGS__))

namespace binder {

class CAPABILITY("mutex") Mutex {
public:
    void lock() ACQUIRE() { mMutex.lock(); }
    void unlock() RELEASE() { mMutex.unlock(); }

private:
    friend class Lock;
    std::mutex mMutex;
};

class SCOPED_CAPABILITY Lock {
public:
    explicit Lock(Mutex& mutex) ACQUIRE(mutex) : mLock(mutex.mMutex) {}
    ~Lock() RELEASE() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void unlock() RELEASE() { mLock.unlock(); }
    void lock() ACQUIRE() { mLock.lock(); }
    // To be called in a loop that tests what is waited for.
    void wait(std::condition_variable& changed) { changed.wait(mLock); }

private:
    std::unique_lock<std::mutex> mLock;
};

}  // namespace binder
