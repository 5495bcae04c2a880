#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/CallInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpDataInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpPubIpAddrInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsg.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcRoomInfo.h>
#include <android/binder_auto_utils.h>
#include <mindroid/Handler.h>

#include <cstdint>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Hands the IMS ORTC requests to the component of that type, and its answers and events to the callback channels.
// Answers and events are turned into callbacks on its looper.
class ImsOrtcService final : public ::mindroid::Handler {
public:
    static constexpr const char* TAG = "ImsOrtcService";

    ImsOrtcService();

    // Subscribes to the events of the component. One that is added later is asked for every request, but its events
    // reach no client. Once. Thread: looper.
    void init();

    // Each returns OK at once; the outcome comes through ImsOrtcServiceResponse. Without a component the request is
    // dropped and never answered. Thread: binder.
    ::ndk::ScopedAStatus setCallInfo(int32_t serial, const CallInfo& info);
    ::ndk::ScopedAStatus setOrtcRoomInfo(int32_t serial, const OrtcRoomInfo& info);
    ::ndk::ScopedAStatus sendImsRtpData(int32_t serial, const ImsRtpDataInfo& info);
    ::ndk::ScopedAStatus setImsRtpRemotePubIpAddr(int32_t serial, const ImsRtpPubIpAddrInfo& info);
    ::ndk::ScopedAStatus sendImsRtpRedunSignalMsg(int32_t serial, const ImsRtpRedunSignalMsg& msg);
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
