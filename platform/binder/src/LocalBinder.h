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

    // Oneway calls run one at a time, in the order in which they entered. True when the caller is to run this one with
    // runOneways(); otherwise it is left to the thread that is at it already. Thread: binder.
    [[nodiscard]] bool enterOneway(const std::shared_ptr<Session>& session, uint32_t code, AParcel& in);
    // Runs the call, and those that enter meanwhile.
    void runOneways(Session& session, uint32_t code, const AParcel& in);

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

    [[nodiscard]] std::optional<OnewayCall> nextOneway();
    void runOneway(Session& session, uint32_t code, const AParcel& in);

    const AIBinder_Class* const mClass;
    void* const mUserData;

    std::mutex mOnewayLock;
    bool mOnewayRunning = false;
    std::deque<OnewayCall> mOneway;
};

}  // namespace binder
