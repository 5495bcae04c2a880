#pragma once

#include "ims/ImsOrtcChannel.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsgRspInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SubsysResponseInfo.h>

#include <cstdint>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

struct ImsOrtcResponseTraits {
    using Callback = IImsOrtcResponse;
    static constexpr const char* TAG = "ImsOrtcServiceResponse";
    static constexpr const char* HOLDER_NAME = "ImsOrtcServiceResponseObj";
    // Deliberate: not the channel's tag, unlike the indication holder's. Readers of the log know the two so.
    static constexpr const char* HOLDER_TAG = "ImsOrtcServiceResponseObj";
    // Deliberate: the response channel frees slots without the lock. It never waits for a registration.
    static constexpr bool LOCKS_ON_DEATH = false;
};

using ImsOrtcServiceResponseObj = ImsOrtcHolder<ImsOrtcResponseTraits>;

// Fills the header of a response. An error outside 0..9 becomes GENERIC_FAILURE. Thread: any.
void populateImsOrtcResponseInfo(SubsysResponseInfo& info, int32_t serial, SUBSYS_Errno error);

// Carries the answers to IMS ORTC requests to the clients: each to both of them, whoever asked. The operations always
// succeed, and answers arrive in the order of the calls. Thread: any.
class ImsOrtcServiceResponse final : public ImsOrtcChannel<ImsOrtcResponseTraits> {
public:
    // The one channel, made on first use: by the thread that starts the service, before others ask. Thread: any,
    // after that.
    [[nodiscard]] static ::mindroid::sp<ImsOrtcServiceResponse> getInstance();

    ::ndk::ScopedAStatus setCallInfoResponse(int32_t serial, SUBSYS_Errno error);
    ::ndk::ScopedAStatus setOrtcRoomInfoResponse(int32_t serial, SUBSYS_Errno error);
    ::ndk::ScopedAStatus sendImsRtpDataResponse(int32_t serial, SUBSYS_Errno error);
    ::ndk::ScopedAStatus setImsRtpRemotePubIpAddrResponse(int32_t serial, SUBSYS_Errno error);
    ::ndk::ScopedAStatus sendImsRtpRedunSignalMsgResponse(int32_t serial, SUBSYS_Errno error,
                                                          const ImsRtpRedunSignalMsgRspInfo& rspInfo);

private:
    ImsOrtcServiceResponse() = default;

    static ::mindroid::sp<ImsOrtcServiceResponse>& sInstance;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
