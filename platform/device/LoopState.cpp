#include <device/LoopState.h>

#include <time.h>

#include <algorithm>
#include <array>

namespace device {
namespace {

constinit std::array<LoopState, 64> sStates;
constinit LoopState sUnlisted;

}  // namespace

LoopState& takeLoopState() {
    const auto free =
        std::find_if(sStates.begin(), sStates.end(), [](auto& each) { return !each.isTaken.exchange(true); });
    return free == sStates.end() ? sUnlisted : *free;
}

void giveBack(LoopState& state) {
    state.thread = 0;
    state.waiting = 0;
    state.handler = nullptr;
    state.isTaken = false;
}

std::span<const LoopState> loopStates() {
    return sStates;
}

int64_t coarseNanos() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace device
