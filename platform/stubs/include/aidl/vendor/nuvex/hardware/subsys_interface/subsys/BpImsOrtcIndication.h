#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcIndication.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class BpImsOrtcIndication : public ::subsys_stubs::Proxy<IImsOrtcIndication> {
public:
    using Proxy::Proxy;

    ::ndk::ScopedAStatus LocalPubIpAddrChanged(const ImsRtpPubIpAddrInfo& in_info) override {
        return call<TRANSACTION_LocalPubIpAddrChanged>(in_info);
    }
    ::ndk::ScopedAStatus recvImsRtpData(const ImsRtpDataInfo& in_info) override {
        return call<TRANSACTION_recvImsRtpData>(in_info);
    }
    ::ndk::ScopedAStatus notifyOrtcStatus(const OrtcStatus& in_status) override {
        return call<TRANSACTION_notifyOrtcStatus>(in_status);
    }
    ::ndk::ScopedAStatus notifyConnectInfo(const OrtcConnectInfo& in_info) override {
        return call<TRANSACTION_notifyConnectInfo>(in_info);
    }
    ::ndk::ScopedAStatus recvImsRtpRedunSignalMsgInd(const ImsRtpRedunSignalMsg& in_msg) override {
        return call<TRANSACTION_recvImsRtpRedunSignalMsgInd>(in_msg);
    }
    ::ndk::ScopedAStatus notifyImsRtpRedunDataLinkStateInd(const ImsRtpRedunDataLinkStateInfo& in_info) override {
        return call<TRANSACTION_notifyImsRtpRedunDataLinkStateInd>(in_info);
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
