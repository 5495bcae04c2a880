// The ICC plugin of the benchmarks: every command succeeds at once, and ICC_BURST_COMMAND delivers numbered events.

#include "bench/support/IccBurst.h"
#include "bench/support/Stats.h"
#include "rf/IccPluginApi.h"

#include <array>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

namespace {

// Never destroyed: its thread serves until the process ends.
struct Events {
    std::mutex lock;
    std::condition_variable wanted;
    uint32_t pending = 0;
    void* context = nullptr;
    IccEventCallback callback = nullptr;
};

Events& events() {
    static Events& instance = *new Events;
    return instance;
}

// Four mode entries: eight bytes that hold the time.
IccStateInfoType stateRecord(uint8_t number) {
    constexpr size_t COUNT_OFFSET = 5;
    constexpr size_t MODES_OFFSET = 6;
    std::array<uint8_t, sizeof(IccStateInfoType)> bytes{};
    bytes[0] = number;
    bytes[COUNT_OFFSET] = 4;
    const int64_t now = bench::nowNanos();
    std::memcpy(&bytes[MODES_OFFSET], &now, sizeof now);
    IccStateInfoType record{};
    std::memcpy(&record, bytes.data(), bytes.size());
    return record;
}

void deliver() {
    for (uint8_t number = 0;;) {
        std::unique_lock lock(events().lock);
        events().wanted.wait(lock, [] { return events().pending != 0 && events().callback != nullptr; });
        const uint32_t count = std::exchange(events().pending, 0);
        lock.unlock();
        for (uint32_t i = 0; i < count; ++i) {
            IccStateInfoType record = stateRecord(number++);
            events().callback(ICC_EVENT_STATE_CHANGED, events().context, &record, sizeof record);
        }
    }
}

}  // namespace

extern "C" {

void iccApis_init(uint8_t, uint32_t, uint8_t) {}

ICC_APIS_RESULT registerIccEvent(IccEventType type, void* context, IccEventCallback callback) {
    if (type != ICC_EVENT_STATE_CHANGED) return ICC_APIS_RESULT{};
    const std::lock_guard guard(events().lock);
    events().context = context;
    events().callback = callback;
    static std::thread* thread = new std::thread(deliver);
    (void)thread;
    return ICC_APIS_RESULT{};
}

void iccSendReqSync(uint32_t reqId, void* req, uint32_t reqLen, void*, uint32_t, uint32_t) {
    if (reqId != static_cast<uint32_t>(bench::ICC_BURST_COMMAND) || reqLen < sizeof(uint32_t)) return;
    uint32_t count = 0;
    std::memcpy(&count, req, sizeof count);
    const std::lock_guard guard(events().lock);
    events().pending += count;
    events().wanted.notify_one();
}

}  // extern "C"
