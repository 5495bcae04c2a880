#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class BpSubsys : public ::subsys_stubs::Proxy<ISubsys> {
public:
    using Proxy::Proxy;

    ::ndk::ScopedAStatus getSwtpStatus(int32_t in_serial) override {
        return call<TRANSACTION_getSwtpStatus>(in_serial);
    }
    ::ndk::ScopedAStatus setCallback(const std::shared_ptr<ISubsysResponse>& in_response,
                                     const std::shared_ptr<ISubsysIndication>& in_indication) override {
        return call<TRANSACTION_setCallback>(in_response, in_indication);
    }
    ::ndk::ScopedAStatus getLcdInfo(int32_t in_serial, int32_t in_type) override {
        return call<TRANSACTION_getLcdInfo>(in_serial, in_type);
    }
    ::ndk::ScopedAStatus setMipiFreqClk(int32_t in_serial, int32_t in_id, int64_t in_freqClk) override {
        return call<TRANSACTION_setMipiFreqClk>(in_serial, in_id, in_freqClk);
    }
    ::ndk::ScopedAStatus setOscFreqClk(int32_t in_serial, int32_t in_id, int32_t in_freqClk) override {
        return call<TRANSACTION_setOscFreqClk>(in_serial, in_id, in_freqClk);
    }
    ::ndk::ScopedAStatus getNvramData(int32_t in_serial, int32_t in_id, int32_t in_size) override {
        return call<TRANSACTION_getNvramData>(in_serial, in_id, in_size);
    }
    ::ndk::ScopedAStatus setImsOrtcCallback(const std::shared_ptr<IImsOrtcResponse>& in_response,
                                            const std::shared_ptr<IImsOrtcIndication>& in_indication) override {
        return call<TRANSACTION_setImsOrtcCallback>(in_response, in_indication);
    }
    ::ndk::ScopedAStatus setCallInfo(int32_t in_serial, const CallInfo& in_info) override {
        return call<TRANSACTION_setCallInfo>(in_serial, in_info);
    }
    ::ndk::ScopedAStatus setOrtcRoomInfo(int32_t in_serial, const OrtcRoomInfo& in_info) override {
        return call<TRANSACTION_setOrtcRoomInfo>(in_serial, in_info);
    }
    ::ndk::ScopedAStatus sendImsRtpData(int32_t in_serial, const ImsRtpDataInfo& in_info) override {
        return call<TRANSACTION_sendImsRtpData>(in_serial, in_info);
    }
    ::ndk::ScopedAStatus setImsRtpRemotePubIpAddr(int32_t in_serial, const ImsRtpPubIpAddrInfo& in_info) override {
        return call<TRANSACTION_setImsRtpRemotePubIpAddr>(in_serial, in_info);
    }
    ::ndk::ScopedAStatus setIccTuningState(int32_t in_serial, int32_t in_technology, int32_t in_band,
                                           int32_t in_antenna, int32_t in_state) override {
        return call<TRANSACTION_setIccTuningState>(in_serial, in_technology, in_band, in_antenna, in_state);
    }
    ::ndk::ScopedAStatus setIccWifiAntState(int32_t in_serial, int32_t in_antenna, int32_t in_state) override {
        return call<TRANSACTION_setIccWifiAntState>(in_serial, in_antenna, in_state);
    }
    ::ndk::ScopedAStatus setIccSatelliteAntState(int32_t in_serial, int32_t in_technology, int32_t in_antenna,
                                                 int32_t in_state) override {
        return call<TRANSACTION_setIccSatelliteAntState>(in_serial, in_technology, in_antenna, in_state);
    }
    ::ndk::ScopedAStatus getIccState(int32_t in_serial) override { return call<TRANSACTION_getIccState>(in_serial); }
    ::ndk::ScopedAStatus killProcess(int32_t in_serial, int32_t in_pid, const std::string& in_name) override {
        return call<TRANSACTION_killProcess>(in_serial, in_pid, in_name);
    }
    ::ndk::ScopedAStatus sendIccCmd(int32_t in_serial, const IccReqInfo& in_info) override {
        return call<TRANSACTION_sendIccCmd>(in_serial, in_info);
    }
    ::ndk::ScopedAStatus sendIccMetaCmd(const IccMetaReqInfo& in_info,
                                        const std::shared_ptr<ISubsysIccMetaCallback>& in_callback) override {
        return call<TRANSACTION_sendIccMetaCmd>(in_info, in_callback);
    }
    ::ndk::ScopedAStatus sendImsRtpRedunSignalMsg(int32_t in_serial, const ImsRtpRedunSignalMsg& in_msg) override {
        return call<TRANSACTION_sendImsRtpRedunSignalMsg>(in_serial, in_msg);
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
