#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "IBinder.h"

namespace binder {

class Session;

// An object that lives in this process.
class LocalBinder final : public AIBinder {
public:
    LocalBinder(const AIBinder_Class* clazz, void* userData) : mClass(clazz), mUserData(userData) {}

    LocalBinder* local() override { return this; }
    [[nodiscard]] const AIBinder_Class* clazz() const override { return mClass; }
    [[nodiscard]] bool associate(const AIBinder_Class* clazz) override;
    binder_status_t transact(uint32_t code, std::unique_ptr<AParcel>& parcel, bool oneway) override;
    [[nodiscard]] void* userData() const { return mUserData; }

    // Runs a call, from this process when `caller` is null; `in` begins with the token. Thread: binder, or any.
    binder_status_t dispatch(Session* caller, uint32_t code, const AParcel& in, AParcel& out);

    // Runs a oneway call here, and those that come meanwhile, or leaves it to the thread that is at it already: one at
    // a time, in the order received. Thread: binder.
    void receiveOneway(const std::shared_ptr<Session>& session, uint32_t code, AParcel& in);

protected:
    ~LocalBinder() override = default;
    void onLastStrong() override { mClass->onDestroy(mUserData); }

private:
    struct OnewayCall {
        std::shared_ptr<Session> session;
        uint32_t code;
        AParcel in;

        [[nodiscard]] size_t size() const { return sizeof(OnewayCall) + in.size(); }
    };

    // True when the caller is to run it; queued otherwise.
    [[nodiscard]] bool enterOneway(const std::shared_ptr<Session>& session, uint32_t code, AParcel& in);
    [[nodiscard]] std::optional<OnewayCall> nextOneway();
    void runOneway(Session& session, uint32_t code, const AParcel& in);

    const AIBinder_Class* const mClass;
    void* const mUserData;

    std::mutex mOnewayLock;
    bool mOnewayRunning = false;
    std::deque<OnewayCall> mOneway;
};

}  // namespace binder
