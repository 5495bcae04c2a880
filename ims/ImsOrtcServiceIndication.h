#pragma once

#include "ims/ImsOrtcChannel.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcIndication.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

struct ImsOrtcIndicationTraits {
    using Callback = IImsOrtcIndication;
    static constexpr const char* TAG = "ImsOrtcServiceIndication";
    static constexpr const char* HOLDER_NAME = "ImsOrtcServiceIndicationObj";
    // Deliberate: the channel's tag, unlike the response holder's. Readers of the log know the two so.
    static constexpr const char* HOLDER_TAG = "ImsOrtcServiceIndication";
    static constexpr bool LOCKS_ON_DEATH = true;
};

using ImsOrtcServiceIndicationObj = ImsOrtcHolder<ImsOrtcIndicationTraits>;

// Carries the events of the IMS ORTC component to the clients: each to both of them. Events
// arrive in the order of the calls, and are lost where there is no client. Thread: any.
class ImsOrtcServiceIndication final : public ImsOrtcChannel<ImsOrtcIndicationTraits> {
public:
    // The one channel, made on first use: by the thread that starts the service, before others ask. Thread: any,
    // after that.
    [[nodiscard]] static ::mindroid::sp<ImsOrtcServiceIndication> getInstance();

    void LocalPubIpAddrChanged(const ImsRtpPubIpAddrInfo& info);
    void recvImsRtpData(const ImsRtpDataInfo& info);
    void notifyOrtcStatus(const OrtcStatus& status);
    void notifyConnectInfo(const OrtcConnectInfo& info);
    void recvImsRtpRedunSignalMsgInd(const ImsRtpRedunSignalMsg& msg);
    void notifyImsRtpRedunDataLinkStateInd(const ImsRtpRedunDataLinkStateInfo& info);

private:
    ImsOrtcServiceIndication() = default;

    static ::mindroid::sp<ImsOrtcServiceIndication>& sInstance;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
