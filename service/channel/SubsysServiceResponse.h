#pragma once

#include "service/channel/CallbackRef.h"
#include "service/channel/ResponseInfo.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <mindroid/Object.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// The one way by which an answer reaches the client. Without a client the answer is dropped, silently. The status is
// always success; what the client's callback returns is not looked at. All: any, once the instance exists.
class SubsysServiceResponse : public ::mindroid::Object {
public:
    static constexpr const char* TAG = "SubsysServiceResponse";

    // Made on first use, which SubsysService's constructor sees to before there is a second thread.
    [[nodiscard]] static ::mindroid::sp<SubsysServiceResponse> getInstance();

    // Null clears it.
    void setCallback(const std::shared_ptr<ISubsysResponse>& callback) { mCallback.set(callback); }
    [[nodiscard]] std::shared_ptr<ISubsysResponse> getCallback() const { return mCallback.get(); }
    // Clears it, unless another one is stored by now.
    void clearCallback(const std::shared_ptr<ISubsysResponse>& callback) { mCallback.clearIf(callback); }
    [[nodiscard]] std::string describeClient() const { return mCallback.describe(); }

    ndk::ScopedAStatus getSwtpStatusResponse(int32_t serial, SUBSYS_Errno error, uint8_t status);
    ndk::ScopedAStatus getLcdInfoResponse(int32_t serial, SUBSYS_Errno error, const std::string& lcdInfo);
    ndk::ScopedAStatus setMipiFreqClkResponse(int32_t serial, SUBSYS_Errno error);
    ndk::ScopedAStatus setOscFreqClkResponse(int32_t serial, SUBSYS_Errno error);
    // Deliberate: the bytes travel as a string of the same length, zero bytes included. Clients read them so. What the
    // binder refuses in a string is lost.
    ndk::ScopedAStatus getNvramDataResponse(int32_t serial, SUBSYS_Errno error, const uint8_t* buffer, uint32_t length);
    ndk::ScopedAStatus setIccTuningStateResponse(int32_t serial, SUBSYS_Errno error);
    ndk::ScopedAStatus setIccWifiAntStateResponse(int32_t serial, SUBSYS_Errno error);
    ndk::ScopedAStatus setIccSatelliteAntStateResponse(int32_t serial, SUBSYS_Errno error);
    ndk::ScopedAStatus getIccStateResponse(int32_t serial, SUBSYS_Errno error, const IccStateInfo& state);
    ndk::ScopedAStatus killProcessResponse(int32_t serial, SUBSYS_Errno error);
    // Deliberate: only the low byte of the request id travels. Clients match answers by serial.
    ndk::ScopedAStatus sendIccCmdResponse(int32_t serial, SUBSYS_Errno error, int32_t reqId, const uint8_t* buffer,
                                          uint32_t length);

private:
    template <typename Method, typename... Args>
    ndk::ScopedAStatus respond(Method method, int32_t serial, SUBSYS_Errno error, const Args&... args);

    CallbackRef<ISubsysResponse> mCallback;

    static ::mindroid::sp<SubsysServiceResponse>& sInstance;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
