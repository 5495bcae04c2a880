#include <mindroid/SystemClock.h>

#include "../testing/ManualClock.h"
#include "Clock.h"

#include <android/log.h>

#include <time.h>

#include <atomic>

namespace mindroid {

namespace {

constexpr int64_t NOT_MANUAL = -1;

// The time of the ManualClock, or NOT_MANUAL.
std::atomic<int64_t> sManualMillis{NOT_MANUAL};

uint64_t monotonicMillis() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1'000'000;
}

}  // namespace

uint64_t SystemClock::uptimeMillis() {
    const int64_t manual = sManualMillis.load(std::memory_order_relaxed);
    return manual == NOT_MANUAL ? monotonicMillis() : static_cast<uint64_t>(manual);
}

uint64_t clock::timeToLook(uint64_t uptimeMillis) {
    return sManualMillis.load(std::memory_order_relaxed) == NOT_MANUAL ? uptimeMillis : monotonicMillis() + 1;
}

ManualClock::ManualClock() {
    int64_t expected = NOT_MANUAL;
    if (!sManualMillis.compare_exchange_strong(expected, static_cast<int64_t>(monotonicMillis()))) {
        __android_log_assert(nullptr, "ManualClock", "there is a ManualClock already");
    }
}

ManualClock::~ManualClock() {
    sManualMillis.store(NOT_MANUAL);
}

void ManualClock::advance(uint64_t millis) {
    sManualMillis.fetch_add(static_cast<int64_t>(millis));
}

}  // namespace mindroid
