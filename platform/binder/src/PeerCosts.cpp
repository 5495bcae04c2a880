#include "PeerCosts.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

#include "Limits.h"
#include "Log.h"
#include "Mutex.h"

namespace binder {
namespace {

constexpr std::array<int, 3> kMost{kMaxGreetings, kMaxSessions, kMaxServed};

struct Half {
    const HalfSent* owner;
    int fd;
    pid_t pid;
    size_t bytes;
};

struct Costs {
    Mutex lock;
    std::unordered_map<pid_t, std::array<int, kMost.size()>> units GUARDED_BY(lock);
    std::vector<Half> halves GUARDED_BY(lock);  // the oldest first
};

Costs& costs() {
    static auto* const instance = new Costs;  // outlives the threads that still use it at exit
    return *instance;
}

size_t sumOf(const std::vector<Half>& halves, pid_t pid) {
    size_t sum = 0;
    for (const Half& each : halves) sum += pid < 0 || each.pid == pid ? each.bytes : 0;
    return sum;
}

// Shuts the oldest down, one of `pid` unless that is negative, until the rest is within `most`.
void shrink(std::vector<Half>& halves, pid_t pid, size_t most) {
    while (sumOf(halves, pid) > most) {
        const auto oldest =
            std::find_if(halves.begin(), halves.end(), [pid](const Half& each) { return pid < 0 || each.pid == pid; });
        warn("process %d sends too much half: a connection of it is closed", oldest->pid);
        shutdown(oldest->fd, SHUT_RDWR);
        halves.erase(oldest);
    }
}

}  // namespace

std::optional<Charge> Charge::take(pid_t pid, Cost cost) {
    const Lock lock(costs().lock);
    int& count = costs().units[pid][static_cast<size_t>(cost)];
    if (count == kMost[static_cast<size_t>(cost)]) return std::nullopt;
    ++count;
    return Charge(pid, cost);
}

Charge::~Charge() {
    if (mPid < 0) return;
    const Lock lock(costs().lock);
    const auto found = costs().units.find(mPid);
    --found->second[static_cast<size_t>(mCost)];
    if (found->second == std::array<int, kMost.size()>{}) costs().units.erase(found);
}

void HalfSent::set(size_t bytes) {
    if (mPid < 0 || bytes == mBytes) return;
    const Lock lock(costs().lock);
    auto& halves = costs().halves;
    const auto found =
        std::find_if(halves.begin(), halves.end(), [this](const Half& each) { return each.owner == this; });
    if (bytes == 0) {
        if (found != halves.end()) halves.erase(found);
    } else if (mBytes == 0) {
        halves.push_back({this, mFd, mPid, bytes});
    } else if (found != halves.end()) {
        found->bytes = bytes;
    }
    mBytes = bytes;
    shrink(halves, mPid, kMaxHalfSent);
    shrink(halves, -1, kMaxAllHalfSent);
}

}  // namespace binder
