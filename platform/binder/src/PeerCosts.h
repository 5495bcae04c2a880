#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace binder {

// What each process costs this one, counted here and nowhere else. The limits stand in Limits.h. Thread: any.
enum class Cost { Greeting, Session, Served };

// One unit of a cost of a process, for as long as this lives.
class Charge {
public:
    // Nothing when the process has as many as it may.
    [[nodiscard]] static std::optional<Charge> take(pid_t pid, Cost cost);
    Charge(Charge&& other) noexcept : mPid(std::exchange(other.mPid, -1)), mCost(other.mCost) {}
    Charge& operator=(Charge&&) = delete;
    ~Charge();

private:
    Charge(pid_t pid, Cost cost) : mPid(pid), mCost(cost) {}

    pid_t mPid;
    Cost mCost;
};

// The bytes of a frame that has not arrived whole on a connection. When a process, or all together, hold too many
// without sending the rest, the connection that has been half sent longest is shut down.
class HalfSent {
public:
    // The descriptor stays open as long as bytes are counted.
    HalfSent(int fd, pid_t pid) : mFd(fd), mPid(pid) {}
    HalfSent(const HalfSent&) = delete;
    HalfSent& operator=(const HalfSent&) = delete;
    ~HalfSent() { set(0); }

    // So many bytes wait for the rest; 0: none do.
    void set(size_t bytes);
    // The rest is being read. To be followed by set().
    void pause();

private:
    const int mFd;
    const pid_t mPid;
    uint64_t mSince = 0;  // a number for when it was half sent first; 0: it is not
};

}  // namespace binder
