#pragma once

#include "service/channel/CallbackRef.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIndication.h>
#include <mindroid/Object.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// The one way by which an event reaches the client. Without a client the event is dropped with an error line; it is not
// kept for the next one. What the client's callback returns is not looked at. All: any, once the instance exists.
class SubsysServiceIndication : public ::mindroid::Object {
public:
    static constexpr const char* TAG = "SubsysServiceIndication";

    // Made on first use, which SubsysService's constructor sees to before there is a second thread.
    [[nodiscard]] static ::mindroid::sp<SubsysServiceIndication> getInstance();

    // Null clears it.
    void setCallback(const std::shared_ptr<ISubsysIndication>& callback) { mCallback.set(callback); }
    [[nodiscard]] std::shared_ptr<ISubsysIndication> getCallback() const { return mCallback.get(); }
    // Clears it, unless another one is stored by now.
    void clearCallback(const std::shared_ptr<ISubsysIndication>& callback) { mCallback.clearIf(callback); }
    [[nodiscard]] std::string describeClient() const { return mCallback.describe(); }

    // Any state but 0 is up.
    void sendSubsysStateChanged(uint8_t state);
    void sendSwtpStatusChanged(uint8_t status);
    void sendiccStateChanged(const IccStateInfo& info);
    void notifyIccPercStateChangedInd(const IccPerceptionInfo& info);
    void notifyIccInfoChanged(const IccIndInfo& info);

private:
    template <typename Method, typename Arg>
    void indicate(Method method, const Arg& arg);

    CallbackRef<ISubsysIndication> mCallback;

    static ::mindroid::sp<SubsysServiceIndication>& sInstance;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
