#pragma once

#include <atomic>
#include <cstdint>
#include <span>

namespace device {

// Linux only: what a message loop does, for whoever looks at it from another thread. The loop writes it; anybody may
// read it at any time. Each number is right by itself, but they may be of different moments.
struct LoopState {
    std::atomic<bool> isTaken{false};
    std::atomic<int32_t> thread{0};    // 0: no thread runs the loop
    std::atomic<uint32_t> waiting{0};  // messages that are due
    // The virtual table of the handler whose message runs, which names its class; null: none does.
    std::atomic<const void*> handler{nullptr};
    std::atomic<int64_t> since{0};  // when that message began: CLOCK_MONOTONIC in ns, a few ms early at most
};

// A place for the loop's state, which the loop gives back when it is gone. Loops for which there is no place share one
// that is not listed. Thread: any.
[[nodiscard]] LoopState& takeLoopState();
void giveBack(LoopState& state);

// All places, also those that are not taken. They are never destroyed. Thread: any.
[[nodiscard]] std::span<const LoopState> loopStates();

// For LoopState::since; reads no clock that costs a system call. Thread: any.
[[nodiscard]] int64_t coarseNanos();

}  // namespace device
