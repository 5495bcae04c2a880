#pragma once

#include "component/RequestTrace.h"
#include "service/channel/CallbackRef.h"

#include <android/binder_interface_utils.h>
#include <device/Mutex.h>
#include <mindroid/Handler.h>
#include <mindroid/Log.h>
#include <mindroid/Message.h>
#include <utils/DeathMonitor.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Both IMS ORTC callback channels are this one mechanism; `Traits` holds all that they differ in:
//   Callback        the interface that a client implements
//   TAG             the channel's log tag
//   HOLDER_NAME     what its holders call themselves in the log
//   HOLDER_TAG      the holders' log tag
//   LOCKS_ON_DEATH  whether freeing the slots of dead clients takes the registration lock

// One client slot: free, or a client's callback and the watch on its process. The channel serialises
// registration. Thread: any.
template <typename Traits>
class ImsOrtcHolder final : public ::mindroid::Object {
public:
    using Callback = typename Traits::Callback;

    ImsOrtcHolder() : mMonitor(new ::subsys_utils::DeathMonitor()) {
        ::mindroid::Log::d(Traits::HOLDER_TAG, "%s", Traits::HOLDER_NAME);
    }
    ~ImsOrtcHolder() override { ::mindroid::Log::d(Traits::HOLDER_TAG, "~%s", Traits::HOLDER_NAME); }

    [[nodiscard]] const ::mindroid::sp<::subsys_utils::DeathMonitor>& getMonitor() const { return mMonitor; }

    // Null frees the slot; any other callback is watched from now on.
    void setCallback(const std::shared_ptr<Callback>& callback) {
        mCallback.set(callback);
        if (callback != nullptr) mMonitor->init(callback);
    }
    // A copy: the slot may change at any time, the copy stays valid.
    [[nodiscard]] std::shared_ptr<Callback> getCallback() const { return mCallback.get(); }
    // Whether the slot can take a client: it is free, or its client is dead.
    [[nodiscard]] bool isClientDeath() const;
    [[nodiscard]] std::string describe() const { return mCallback.describe(); }
    // Frees the slot, unless another callback than `dead` is in it by now.
    void release(std::shared_ptr<Callback> dead) { mCallback.clearIf(std::move(dead)); }

private:
    const ::mindroid::sp<::subsys_utils::DeathMonitor> mMonitor;
    CallbackRef<Callback> mCallback;
};

// Two client slots, which hold two clients at once. Lives for the whole process: its monitors hold it.
template <typename Traits>
class ImsOrtcChannel : public ::mindroid::Handler {
public:
    using Callback = typename Traits::Callback;

    // Puts a client into the first slot that is free or whose client is dead. Null changes nothing. Thread: binder.
    void setCallback(std::shared_ptr<Callback> callback);
    // Frees the slots whose clients are dead. Thread: looper.
    void onClientDeath(const ::mindroid::sp<::mindroid::Message>& msg);
    void handleMessage(const ::mindroid::sp<::mindroid::Message>& msg) override;

    // The process in each slot and whether it lives. Thread: any.
    [[nodiscard]] std::array<std::string, 2> describeClients() const {
        return {mSlots[0]->describe(), mSlots[1]->describe()};
    }

protected:
    ImsOrtcChannel();

    // Calls the method on every client. A call that fails concerns that client alone.
    template <typename... Params, typename... Args>
    void callClients(::ndk::ScopedAStatus (Callback::*method)(Params...), const Args&... args) const;

private:
    using Holder = ImsOrtcHolder<Traits>;
    static constexpr int32_t MSG_CLIENT_DEATH = 0;

    void freeDeadSlots();

    const std::array<::mindroid::sp<Holder>, 2> mSlots;
    // Serialises registration, and death handling where Traits::LOCKS_ON_DEATH says so.
    ::device::Mutex mLock;
};

template <typename Traits>
bool ImsOrtcHolder<Traits>::isClientDeath() const {
    const auto callback = getCallback();
    if (callback != nullptr && AIBinder_isAlive(callback->asBinder().get())) return false;
    ::mindroid::Log::d(Traits::HOLDER_TAG, "cb is dead");
    return true;
}

template <typename Traits>
ImsOrtcChannel<Traits>::ImsOrtcChannel() : mSlots{new Holder(), new Holder()} {
    // Deliberate: one message for both slots. A death makes the channel look at both, as its lines in the log show.
    for (const auto& slot : mSlots) slot->getMonitor()->registerClientDeathEvent(this, MSG_CLIENT_DEATH, nullptr);
}

template <typename Traits>
void ImsOrtcChannel<Traits>::setCallback(std::shared_ptr<Callback> callback) {
    if (callback == nullptr) return;
    const ::device::MutexLock lock(mLock);
    for (size_t slot = 0; slot < mSlots.size(); ++slot) {
        if (!mSlots[slot]->isClientDeath()) continue;
        ::mindroid::Log::d(Traits::TAG, "set cb:%d", static_cast<int>(slot));
        atrace_instant(::hal::TRACE_TAG, "IMS client set");
        mSlots[slot]->setCallback(callback);
        return;
    }
    // Deliberate: a third live client is ignored without a line. The first two keep their slots.
}

template <typename Traits>
void ImsOrtcChannel<Traits>::onClientDeath(const ::mindroid::sp<::mindroid::Message>&) {
    if constexpr (Traits::LOCKS_ON_DEATH) {
        const ::device::MutexLock lock(mLock);
        freeDeadSlots();
    } else {
        freeDeadSlots();
    }
}

template <typename Traits>
void ImsOrtcChannel<Traits>::freeDeadSlots() {
    for (size_t slot = 0; slot < mSlots.size(); ++slot) {
        // Read before it is judged: a client that registers in between, where no lock is held, stays.
        auto dead = mSlots[slot]->getCallback();
        if (!mSlots[slot]->isClientDeath()) continue;
        // The line comes for a slot that was free already, too.
        ::mindroid::Log::d(Traits::TAG, "client death:%d", static_cast<int>(slot));
        atrace_instant(::hal::TRACE_TAG, "IMS client died");
        mSlots[slot]->release(std::move(dead));
    }
}

template <typename Traits>
void ImsOrtcChannel<Traits>::handleMessage(const ::mindroid::sp<::mindroid::Message>& msg) {
    if (msg->what == MSG_CLIENT_DEATH) onClientDeath(msg);
}

template <typename Traits>
template <typename... Params, typename... Args>
void ImsOrtcChannel<Traits>::callClients(::ndk::ScopedAStatus (Callback::*method)(Params...),
                                         const Args&... args) const {
    for (const auto& slot : mSlots) {
        const auto callback = slot->getCallback();
        if (callback != nullptr) static_cast<void>((callback.get()->*method)(args...));
    }
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
