#pragma once

#include <mindroid/Handler.h>

#include <cstdint>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Decides when the client is told the state of the subsystem: when a client connects while none is connected, and
// when the state changes while one is.
//
// The newest tracker is the one that init and setHidlState act on, whichever object they are called on.
class SubsysServiceStateTracker : public ::mindroid::Handler {
public:
    static constexpr const char* TAG = "SubsysServiceStateTracker";

    SubsysServiceStateTracker();

    void handleMessage(const ::mindroid::sp<::mindroid::Message>& message) override;

    // Reports the subsystem as up: it counts as up from the start. Thread: any.
    void init();
    // 1 while a client is connected, else 0. Thread: any.
    void setHidlState(uint8_t state);

    // All: looper.
    void onHidlStateChanged(int32_t state);
    void onSubsysStateChanged(uint8_t state);
    // Tells the client the state: in any case when forced, else only if there is a client that does not know it yet.
    void notifySubsysState(bool force);
    [[nodiscard]] bool voteOnNotify() const;
    [[nodiscard]] uint8_t checkServiceState() const;

private:
    static void post(int32_t what, const ::mindroid::sp<::mindroid::Object>& state);

    uint8_t mHidlState = 0;
    uint8_t mSubsysState = 0;
    // A change of the subsystem state that no client was told yet.
    bool mPendingNotify = false;

    static ::mindroid::sp<SubsysServiceStateTracker>& sSubsysServiceStateTracker;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
