#pragma once

#include "IBinder.h"
#include "Parcel.h"

#include <device/Mutex.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace binder {

class Session;

struct OnewayCall {
    std::shared_ptr<Session> session;
    uint32_t code;
    AParcel in;
    uint64_t place;  // where it ends in the channel
};

// An object that lives in this process.
class LocalBinder final : public AIBinder {
public:
    LocalBinder(const AIBinder_Class* clazz, void* userData) : mClass(clazz), mUserData(userData) {}

    LocalBinder* local() override { return this; }
    [[nodiscard]] const AIBinder_Class* clazz() const override { return mClass; }
    [[nodiscard]] bool associate(const AIBinder_Class* clazz) override;
    binder_status_t transact(uint32_t code, AParcel& parcel, bool oneway) override;
    [[nodiscard]] void* userData() const { return mUserData; }

    // Runs a call; `in` begins with the token. Thread: binder, or any for a call from this process.
    binder_status_t dispatch(uint32_t code, const AParcel& in, AParcel& out);

    // Oneway calls run one at a time, in the order in which they entered. True when the caller is to run this one with
    // runOneways(); otherwise it was moved to the thread that is at it already. Thread: binder.
    [[nodiscard]] bool enterOneway(OnewayCall& call);
    // Runs the call, and those that enter meanwhile.
    void runOneways(OnewayCall& call);

    // The object that goes with this one, or null.
    [[nodiscard]] ndk::SpAIBinder extension();
    void setExtension(ndk::SpAIBinder extension);

protected:
    ~LocalBinder() override = default;
    void onLastStrong() override { mClass->onDestroy(mUserData); }

private:
    [[nodiscard]] binder_status_t dispatchOwn(uint32_t code, const AParcel& in, AParcel& out);
    [[nodiscard]] std::optional<OnewayCall> nextOneway();
    void runOneway(OnewayCall& call);

    const AIBinder_Class* const mClass;
    void* const mUserData;

    device::Mutex mLock;
    bool mIsOnewayRunning SUBSYS_GUARDED_BY(mLock) = false;
    std::deque<OnewayCall> mOneways SUBSYS_GUARDED_BY(mLock);
    ndk::SpAIBinder mExtension SUBSYS_GUARDED_BY(mLock);
};

}  // namespace binder
