#include "compliance/ReplyProbe.h"

#include <android/log.h>
#include <mindroid/Runnable.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define COMPLIANCE_ASAN
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define COMPLIANCE_ASAN
#endif
#endif
#if defined(COMPLIANCE_ASAN)
#include <sanitizer/asan_interface.h>
#endif

namespace compliance {

namespace {

std::atomic<int> sRefused = 0;

void watchLog(const __android_logger_data* data, const char* message) {
    if (std::strcmp(message, "a message can be sent only once") == 0) ++sRefused;
    if (data->priority < ANDROID_LOG_WARN) return;
    std::fprintf(stderr, "%s: %s\n", data->tag != nullptr ? data->tag : "", message);
}

}  // namespace

struct ReplyProbe::State {
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    Reply reply;  // guarded by mutex

    template <typename Change>
    void update(const Change& change) {
        const std::lock_guard lock(mutex);
        change(reply);
        changed.notify_all();
    }
};

ReplyProbe::ReplyProbe(const mindroid::sp<mindroid::Handler>& handler)
    : mState(std::make_shared<State>()), mMessage(handler->obtainMessage()) {
    // Lives as long as the message's callback, which the message lets go of when it is spent or dropped.
    const std::shared_ptr<void> alive(
        nullptr, [state = mState](void*) { state->update([](Reply& reply) { reply.isDropped = true; }); });
    // Borrowed: a reference would keep a dropped message.
    const mindroid::Message* const message = mMessage.get();
    mMessage->setCallback(new mindroid::Runnable([state = mState, alive, message] {
        state->update([&](Reply& reply) {
            ++reply.answers;
            reply.error = message->arg2;
            reply.value = message->obj;
        });
    }));
}

Reply ReplyProbe::await(std::chrono::milliseconds limit) const {
    std::unique_lock lock(mState->mutex);
    mState->changed.wait_for(lock, limit, [&] { return mState->reply.answers > 0 || mState->reply.isDropped; });
    return mState->reply;
}

Reply ReplyProbe::get() const {
    const std::lock_guard lock(mState->mutex);
    return mState->reply;
}

Verdict readable([[maybe_unused]] const void* bytes, [[maybe_unused]] size_t size) {
#if defined(COMPLIANCE_ASAN)
    const void* const end = __asan_region_is_poisoned(const_cast<void*>(bytes), size);
    if (end == nullptr) return ok();
    const auto readableSize = static_cast<const char*>(end) - static_cast<const char*>(bytes);
    return failed("a record of " + std::to_string(size) + " bytes", "an object with " + std::to_string(readableSize));
#else
    return notChecked("this build has no AddressSanitizer");
#endif
}

void startLogWatch() {
    __android_log_set_logger(watchLog);
    __android_log_set_minimum_priority(ANDROID_LOG_WARN);
}

int refusedMessages() {
    return sRefused;
}

}  // namespace compliance
