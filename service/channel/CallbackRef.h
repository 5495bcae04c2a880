#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// False for null and for the callback of a process that is gone. One without a binder is of this process, which lives.
[[nodiscard]] inline bool isAlive(const std::shared_ptr<::ndk::ICInterface>& callback) {
    if (callback == nullptr) return false;
    const ::ndk::SpAIBinder binder = callback->asBinder();
    return binder.get() == nullptr || AIBinder_isAlive(binder.get());
}

// The client's callback, replaced by one thread while others use it. A caller works on the copy it got, so a callback
// that is replaced meanwhile stays alive until that call is done. All: any.
template <typename Interface>
class CallbackRef {
public:
    // The client is the process whose call the calling thread serves.
    void set(std::shared_ptr<Interface> callback) {
        mPid = AIBinder_getCallingPid();
        std::atomic_store(&mCallback, std::move(callback));
    }
    // Null without a client.
    [[nodiscard]] std::shared_ptr<Interface> get() const { return std::atomic_load(&mCallback); }
    // Clears it, unless another one than `callback` is stored by now.
    void clearIf(std::shared_ptr<Interface> callback) {
        std::atomic_compare_exchange_strong(&mCallback, &callback, std::shared_ptr<Interface>());
    }

    // Its process and whether that lives, or "none".
    [[nodiscard]] std::string describe() const {
        const auto callback = get();
        if (callback == nullptr) return "none";
        return "pid " + std::to_string(mPid) + (isAlive(callback) ? ", alive" : ", dead");
    }

private:
    std::shared_ptr<Interface> mCallback;
    std::atomic<pid_t> mPid = 0;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
