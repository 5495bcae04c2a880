#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test {

enum EchoCode : transaction_code_t {
    ECHO = 1,  // bytes -> the same bytes
    STATUS,    // int -> fails with it
    KEEP,      // object -> whether it is the one that is kept; keeps it
    GIVE,      // -> the kept object
    DROP,      // forgets the kept object
    CALLBACK,  // bytes -> ECHO of the kept object
    POST,      // int n -> n oneway NOTE(i) to the kept object
    CALLER,    // -> pid and uid of the caller
    NOTE,      // int: what `onNote` was given
    LARGE,     // int n -> n bytes
    OPEN,      // name -> status of a call with the kept object to that service
    LAST,      // -> the value of the last NOTE
    MAKE,      // -> a new object
    BOUNCE,    // int n -> NOTE(n), synchronous, to the kept object
    UNKNOWN,
};

/** An object of the class below, whose behaviour the tests drive. */
struct Echo {
    /** What NOTE calls from now on. */
    void onNote(std::function<void(int32_t)> action) {
        const std::lock_guard lock(mLock);
        mOnNote = std::move(action);
    }
    void note(int32_t value) const {
        std::unique_lock lock(mLock);
        const auto action = mOnNote;
        lock.unlock();
        action(value);
    }
    std::function<void()> onDestroy = [] {};
    std::atomic<int32_t> last{0};
    ndk::SpAIBinder kept() const {
        const std::lock_guard lock(mLock);
        return mKept;
    }
    /** What was kept before. */
    ndk::SpAIBinder keep(ndk::SpAIBinder object) {
        const std::lock_guard lock(mLock);
        return std::exchange(mKept, std::move(object));
    }

private:
    mutable std::mutex mLock;
    ndk::SpAIBinder mKept;
    std::function<void(int32_t)> mOnNote = [](int32_t) {};
};

extern const char* const ECHO_DESCRIPTOR;
const AIBinder_Class* echoClass();
const AIBinder_Class* otherClass();
/** Takes `echo`. */
ndk::SpAIBinder newEcho(Echo* echo);

/** A call: arguments written, result read, each by a function; its status. */
using Write = std::function<void(AParcel*)>;
using Read = std::function<void(const AParcel*)>;
binder_status_t call(const ndk::SpAIBinder& target, transaction_code_t code, const Write& write = {},
                     const Read& read = {}, binder_flags_t flags = 0);

/** Writes the number. */
Write int32(int32_t value);
/** What a parcel without objects holds. */
std::vector<uint8_t> contentOf(const AParcel* parcel);
/** What a call to an Echo begins with. */
std::vector<uint8_t> token();
int32_t callForInt(const ndk::SpAIBinder& target, transaction_code_t code, const Write& write = {});
/** The object of the reply, associated with its class. */
ndk::SpAIBinder callForObject(const ndk::SpAIBinder& target, transaction_code_t code);
binder_status_t keep(const ndk::SpAIBinder& target, const ndk::SpAIBinder& object);
/** The bytes come back, or the status that says why not. */
binder_status_t echo(const ndk::SpAIBinder& target, size_t size);
/** The service, associated with its class; null when it is not there. */
ndk::SpAIBinder service(const char* name);

}  // namespace test
