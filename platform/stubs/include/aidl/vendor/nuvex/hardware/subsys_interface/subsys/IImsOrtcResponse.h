#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsgRspInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SubsysResponseInfo.h>
#include <android/binder_auto_utils.h>

#include <cstdint>
#include <tuple>

#include "stubs/Interface.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class IImsOrtcResponse : public ::subsys_stubs::Interface<IImsOrtcResponse> {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IImsOrtcResponse";
    static constexpr bool oneway = true;

    static constexpr uint32_t TRANSACTION_setCallInfoResponse = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_setOrtcRoomInfoResponse = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_sendImsRtpDataResponse = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_setImsRtpRemotePubIpAddrResponse = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_sendImsRtpRedunSignalMsgResponse = FIRST_CALL_TRANSACTION + 4;

    virtual ::ndk::ScopedAStatus setCallInfoResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setOrtcRoomInfoResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus sendImsRtpDataResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setImsRtpRemotePubIpAddrResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus sendImsRtpRedunSignalMsgResponse(const SubsysResponseInfo& in_info,
                                                                  const ImsRtpRedunSignalMsgRspInfo& in_rspInfo) = 0;

    static constexpr auto methods() {
        using ::subsys_stubs::method;
        return std::tuple(method(TRANSACTION_setCallInfoResponse, "setCallInfoResponse",
                                 &IImsOrtcResponse::setCallInfoResponse, "info"),
                          method(TRANSACTION_setOrtcRoomInfoResponse, "setOrtcRoomInfoResponse",
                                 &IImsOrtcResponse::setOrtcRoomInfoResponse, "info"),
                          method(TRANSACTION_sendImsRtpDataResponse, "sendImsRtpDataResponse",
                                 &IImsOrtcResponse::sendImsRtpDataResponse, "info"),
                          method(TRANSACTION_setImsRtpRemotePubIpAddrResponse, "setImsRtpRemotePubIpAddrResponse",
                                 &IImsOrtcResponse::setImsRtpRemotePubIpAddrResponse, "info"),
                          method(TRANSACTION_sendImsRtpRedunSignalMsgResponse, "sendImsRtpRedunSignalMsgResponse",
                                 &IImsOrtcResponse::sendImsRtpRedunSignalMsgResponse, "info", "rspInfo"));
    }
};

class IImsOrtcResponseDefault : public ::subsys_stubs::Default<IImsOrtcResponse> {
public:
    ::ndk::ScopedAStatus setCallInfoResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setOrtcRoomInfoResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus sendImsRtpDataResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setImsRtpRemotePubIpAddrResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus sendImsRtpRedunSignalMsgResponse(const SubsysResponseInfo&,
                                                          const ImsRtpRedunSignalMsgRspInfo&) override {
        return unknown();
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
