#include "PeerCosts.h"

#include "Limits.h"
#include "Log.h"

#include <device/Mutex.h>

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>

namespace binder {
namespace {

constexpr std::array<int, 3> MOST{MAX_GREETINGS, MAX_SESSIONS, MAX_SERVED};

struct Half {
    int fd;
    pid_t pid;
    size_t bytes;
};

struct Costs {
    device::Mutex lock;
    std::unordered_map<pid_t, std::array<int, MOST.size()>> units SUBSYS_GUARDED_BY(lock);
    uint64_t lastSince SUBSYS_GUARDED_BY(lock) = 0;
    std::map<uint64_t, Half> halves SUBSYS_GUARDED_BY(lock);  // the oldest first
};

Costs& costs() {
    static auto* const instance = new Costs;  // outlives the threads that still use it at exit
    return *instance;
}

// Whether the rest is the peer's to send: what has arrived is read soon.
bool isStalled(const Half& half) {
    int unread = 0;
    return ioctl(half.fd, FIONREAD, &unread) == 0 && unread == 0;
}

// Shuts down the oldest, one of `pid` unless that is negative, until those that are stalled are within `most`.
void shrink(std::map<uint64_t, Half>& halves, pid_t pid, size_t most) {
    const auto counts = [pid](const Half& each) { return (pid < 0 || each.pid == pid) && isStalled(each); };
    size_t sum = 0;
    for (const auto& [since, half] : halves) sum += counts(half) ? half.bytes : 0;
    std::erase_if(halves, [&](const auto& each) {
        const Half& half = each.second;
        if (sum <= most || !counts(half)) return false;
        warn("process %d sends too much half: a connection of it is closed", half.pid);
        shutdown(half.fd, SHUT_RDWR);
        sum -= std::min(sum, half.bytes);
        return true;
    });
}

}  // namespace

std::optional<Charge> Charge::take(pid_t pid, Cost cost) {
    const device::MutexLock lock(costs().lock);
    int& count = costs().units[pid][static_cast<size_t>(cost)];
    if (count == MOST[static_cast<size_t>(cost)]) return std::nullopt;
    ++count;
    return Charge(pid, cost);
}

Charge::~Charge() {
    if (mPid < 0) return;
    const device::MutexLock lock(costs().lock);
    const auto found = costs().units.find(mPid);
    --found->second[static_cast<size_t>(mCost)];
    if (found->second == std::array<int, MOST.size()>{}) costs().units.erase(found);
}

void HalfSent::set(size_t bytes) {
    if (bytes == 0 && mSince == 0) return;
    pause();
    if (bytes == 0) {
        mSince = 0;
        return;
    }
    const device::MutexLock lock(costs().lock);
    if (mSince == 0) mSince = ++costs().lastSince;
    costs().halves[mSince] = {mFd, mPid, bytes};
    shrink(costs().halves, mPid, MAX_HALF_SENT);
    shrink(costs().halves, -1, MAX_ALL_HALF_SENT);
}

void HalfSent::pause() {
    if (mSince == 0) return;
    const device::MutexLock lock(costs().lock);
    costs().halves.erase(mSince);
}

}  // namespace binder
