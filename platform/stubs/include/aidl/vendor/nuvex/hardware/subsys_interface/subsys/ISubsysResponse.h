#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccRespInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccStateInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SubsysResponseInfo.h>
#include <android/binder_auto_utils.h>

#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Interface.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ISubsysResponse : public ::subsys_stubs::Interface<ISubsysResponse> {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ISubsysResponse";
    static constexpr bool oneway = true;

    static constexpr uint32_t TRANSACTION_getSwtpStatusResponse = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_getLcdInfoResponse = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_setMipiFreqClkResponse = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_setOscFreqClkResponse = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_getNvramDataResponse = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_setIccTuningStateResponse = FIRST_CALL_TRANSACTION + 5;
    static constexpr uint32_t TRANSACTION_setIccWifiAntStateResponse = FIRST_CALL_TRANSACTION + 6;
    static constexpr uint32_t TRANSACTION_setIccSatelliteAntStateResponse = FIRST_CALL_TRANSACTION + 7;
    static constexpr uint32_t TRANSACTION_getIccStateResponse = FIRST_CALL_TRANSACTION + 8;
    static constexpr uint32_t TRANSACTION_killProcessResponse = FIRST_CALL_TRANSACTION + 9;
    static constexpr uint32_t TRANSACTION_sendIccCmdResponse = FIRST_CALL_TRANSACTION + 10;

    virtual ::ndk::ScopedAStatus getSwtpStatusResponse(const SubsysResponseInfo& in_info, int8_t in_status) = 0;
    virtual ::ndk::ScopedAStatus getLcdInfoResponse(const SubsysResponseInfo& in_info,
                                                    const std::string& in_lcdInfo) = 0;
    virtual ::ndk::ScopedAStatus setMipiFreqClkResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setOscFreqClkResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus getNvramDataResponse(const SubsysResponseInfo& in_info,
                                                      const std::string& in_data) = 0;
    virtual ::ndk::ScopedAStatus setIccTuningStateResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setIccWifiAntStateResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setIccSatelliteAntStateResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus getIccStateResponse(const SubsysResponseInfo& in_info,
                                                     const IccStateInfo& in_state) = 0;
    virtual ::ndk::ScopedAStatus killProcessResponse(const SubsysResponseInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus sendIccCmdResponse(const SubsysResponseInfo& in_info,
                                                    const IccRespInfo& in_respInfo) = 0;

    static constexpr auto methods() {
        using ::subsys_stubs::method;
        return std::tuple(method(TRANSACTION_getSwtpStatusResponse, "getSwtpStatusResponse",
                                 &ISubsysResponse::getSwtpStatusResponse, "info", "status"),
                          method(TRANSACTION_getLcdInfoResponse, "getLcdInfoResponse",
                                 &ISubsysResponse::getLcdInfoResponse, "info", "lcdInfo"),
                          method(TRANSACTION_setMipiFreqClkResponse, "setMipiFreqClkResponse",
                                 &ISubsysResponse::setMipiFreqClkResponse, "info"),
                          method(TRANSACTION_setOscFreqClkResponse, "setOscFreqClkResponse",
                                 &ISubsysResponse::setOscFreqClkResponse, "info"),
                          method(TRANSACTION_getNvramDataResponse, "getNvramDataResponse",
                                 &ISubsysResponse::getNvramDataResponse, "info", "data"),
                          method(TRANSACTION_setIccTuningStateResponse, "setIccTuningStateResponse",
                                 &ISubsysResponse::setIccTuningStateResponse, "info"),
                          method(TRANSACTION_setIccWifiAntStateResponse, "setIccWifiAntStateResponse",
                                 &ISubsysResponse::setIccWifiAntStateResponse, "info"),
                          method(TRANSACTION_setIccSatelliteAntStateResponse, "setIccSatelliteAntStateResponse",
                                 &ISubsysResponse::setIccSatelliteAntStateResponse, "info"),
                          method(TRANSACTION_getIccStateResponse, "getIccStateResponse",
                                 &ISubsysResponse::getIccStateResponse, "info", "state"),
                          method(TRANSACTION_killProcessResponse, "killProcessResponse",
                                 &ISubsysResponse::killProcessResponse, "info"),
                          method(TRANSACTION_sendIccCmdResponse, "sendIccCmdResponse",
                                 &ISubsysResponse::sendIccCmdResponse, "info", "respInfo"));
    }
};

class ISubsysResponseDefault : public ::subsys_stubs::Default<ISubsysResponse> {
public:
    ::ndk::ScopedAStatus getSwtpStatusResponse(const SubsysResponseInfo&, int8_t) override { return unknown(); }
    ::ndk::ScopedAStatus getLcdInfoResponse(const SubsysResponseInfo&, const std::string&) override {
        return unknown();
    }
    ::ndk::ScopedAStatus setMipiFreqClkResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setOscFreqClkResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus getNvramDataResponse(const SubsysResponseInfo&, const std::string&) override {
        return unknown();
    }
    ::ndk::ScopedAStatus setIccTuningStateResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setIccWifiAntStateResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setIccSatelliteAntStateResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus getIccStateResponse(const SubsysResponseInfo&, const IccStateInfo&) override {
        return unknown();
    }
    ::ndk::ScopedAStatus killProcessResponse(const SubsysResponseInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus sendIccCmdResponse(const SubsysResponseInfo&, const IccRespInfo&) override {
        return unknown();
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
