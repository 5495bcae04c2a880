#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// The client's callback, replaced by one thread while others use it. A caller works on the copy it got, so a callback
// that is replaced meanwhile stays alive until that call is done. All: any.
template <typename Interface>
class CallbackRef {
public:
    void set(std::shared_ptr<Interface> callback) { std::atomic_store(&mCallback, std::move(callback)); }
    // Null without a client.
    [[nodiscard]] std::shared_ptr<Interface> get() const { return std::atomic_load(&mCallback); }
    // Clears it, unless another one than `callback` is stored by now.
    void clearIf(std::shared_ptr<Interface> callback) {
        std::atomic_compare_exchange_strong(&mCallback, &callback, std::shared_ptr<Interface>());
    }

private:
    std::shared_ptr<Interface> mCallback;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
