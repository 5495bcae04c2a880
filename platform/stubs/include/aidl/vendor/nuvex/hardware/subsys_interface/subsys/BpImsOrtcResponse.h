#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcResponse.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class BpImsOrtcResponse : public ::subsys_stubs::Proxy<IImsOrtcResponse> {
public:
    using Proxy::Proxy;

    ::ndk::ScopedAStatus setCallInfoResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setCallInfoResponse>(in_info);
    }
    ::ndk::ScopedAStatus setOrtcRoomInfoResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setOrtcRoomInfoResponse>(in_info);
    }
    ::ndk::ScopedAStatus sendImsRtpDataResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_sendImsRtpDataResponse>(in_info);
    }
    ::ndk::ScopedAStatus setImsRtpRemotePubIpAddrResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setImsRtpRemotePubIpAddrResponse>(in_info);
    }
    ::ndk::ScopedAStatus sendImsRtpRedunSignalMsgResponse(const SubsysResponseInfo& in_info,
                                                          const ImsRtpRedunSignalMsgRspInfo& in_rspInfo) override {
        return call<TRANSACTION_sendImsRtpRedunSignalMsgResponse>(in_info, in_rspInfo);
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
