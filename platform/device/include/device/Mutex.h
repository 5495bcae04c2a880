#pragma once

#include <condition_variable>
#include <mutex>

// A mutex that clang's thread-safety analysis knows. Data stands beside the mutex that guards it:
//
//     device::Mutex mLock;
//     int mCount SUBSYS_GUARDED_BY(mLock) = 0;
//
// Other compilers see std::mutex. On a device this header comes along with this folder.
#if defined(__clang__)
#define SUBSYS_THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define SUBSYS_THREAD_ANNOTATION(attribute)
#endif

// Data that is only touched with the mutex held.
#define SUBSYS_GUARDED_BY(mutex) SUBSYS_THREAD_ANNOTATION(guarded_by(mutex))
// A function whose caller holds the mutex.
#define SUBSYS_REQUIRES(mutex) SUBSYS_THREAD_ANNOTATION(requires_capability(mutex))
// A function that the analysis does not look into.
#define SUBSYS_NO_THREAD_ANALYSIS SUBSYS_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace device {

class SUBSYS_THREAD_ANNOTATION(capability("mutex")) Mutex final {
public:
    constexpr Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() SUBSYS_THREAD_ANNOTATION(acquire_capability()) { mMutex.lock(); }
    void unlock() SUBSYS_THREAD_ANNOTATION(release_capability()) { mMutex.unlock(); }

private:
    friend class MutexLock;
    std::mutex mMutex;
};

// Holds the mutex to the end of the scope, but between unlock() and lock().
class SUBSYS_THREAD_ANNOTATION(scoped_lockable) MutexLock final {
public:
    explicit MutexLock(Mutex& mutex) SUBSYS_THREAD_ANNOTATION(acquire_capability(mutex)) : mLock(mutex.mMutex) {}
    ~MutexLock() SUBSYS_THREAD_ANNOTATION(release_capability()) = default;
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void unlock() SUBSYS_THREAD_ANNOTATION(release_capability()) { mLock.unlock(); }
    void lock() SUBSYS_THREAD_ANNOTATION(acquire_capability()) { mLock.lock(); }

    // To be called in a loop that tests what is waited for.
    void wait(std::condition_variable& changed) { changed.wait(mLock); }
    template <class TimePoint>
    void waitUntil(std::condition_variable& changed, TimePoint until) {
        changed.wait_until(mLock, until);
    }

private:
    std::unique_lock<std::mutex> mLock;
};

}  // namespace device
