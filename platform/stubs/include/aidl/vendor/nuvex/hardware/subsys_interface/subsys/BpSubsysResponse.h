#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysResponse.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class BpSubsysResponse : public ::subsys_stubs::Proxy<ISubsysResponse> {
public:
    using Proxy::Proxy;

    ::ndk::ScopedAStatus getSwtpStatusResponse(const SubsysResponseInfo& in_info, int8_t in_status) override {
        return call<TRANSACTION_getSwtpStatusResponse>(in_info, in_status);
    }
    ::ndk::ScopedAStatus getLcdInfoResponse(const SubsysResponseInfo& in_info, const std::string& in_lcdInfo) override {
        return call<TRANSACTION_getLcdInfoResponse>(in_info, in_lcdInfo);
    }
    ::ndk::ScopedAStatus setMipiFreqClkResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setMipiFreqClkResponse>(in_info);
    }
    ::ndk::ScopedAStatus setOscFreqClkResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setOscFreqClkResponse>(in_info);
    }
    ::ndk::ScopedAStatus getNvramDataResponse(const SubsysResponseInfo& in_info, const std::string& in_data) override {
        return call<TRANSACTION_getNvramDataResponse>(in_info, in_data);
    }
    ::ndk::ScopedAStatus setIccTuningStateResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setIccTuningStateResponse>(in_info);
    }
    ::ndk::ScopedAStatus setIccWifiAntStateResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setIccWifiAntStateResponse>(in_info);
    }
    ::ndk::ScopedAStatus setIccSatelliteAntStateResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_setIccSatelliteAntStateResponse>(in_info);
    }
    ::ndk::ScopedAStatus getIccStateResponse(const SubsysResponseInfo& in_info, const IccStateInfo& in_state) override {
        return call<TRANSACTION_getIccStateResponse>(in_info, in_state);
    }
    ::ndk::ScopedAStatus killProcessResponse(const SubsysResponseInfo& in_info) override {
        return call<TRANSACTION_killProcessResponse>(in_info);
    }
    ::ndk::ScopedAStatus sendIccCmdResponse(const SubsysResponseInfo& in_info,
                                            const IccRespInfo& in_respInfo) override {
        return call<TRANSACTION_sendIccCmdResponse>(in_info, in_respInfo);
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
