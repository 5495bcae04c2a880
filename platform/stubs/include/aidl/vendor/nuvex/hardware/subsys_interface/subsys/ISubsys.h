#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/CallInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccMetaReqInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccReqInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpDataInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpPubIpAddrInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsg.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcRoomInfo.h>
#include <android/binder_auto_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>

#include "stubs/Interface.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ISubsys : public ::subsys_stubs::Interface<ISubsys> {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ISubsys";
    static constexpr bool oneway = false;

    static constexpr uint32_t TRANSACTION_getSwtpStatus = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_setCallback = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_getLcdInfo = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_setMipiFreqClk = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_setOscFreqClk = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_getNvramData = FIRST_CALL_TRANSACTION + 5;
    static constexpr uint32_t TRANSACTION_setImsOrtcCallback = FIRST_CALL_TRANSACTION + 6;
    static constexpr uint32_t TRANSACTION_setCallInfo = FIRST_CALL_TRANSACTION + 7;
    static constexpr uint32_t TRANSACTION_setOrtcRoomInfo = FIRST_CALL_TRANSACTION + 8;
    static constexpr uint32_t TRANSACTION_sendImsRtpData = FIRST_CALL_TRANSACTION + 9;
    static constexpr uint32_t TRANSACTION_setImsRtpRemotePubIpAddr = FIRST_CALL_TRANSACTION + 10;
    static constexpr uint32_t TRANSACTION_setIccTuningState = FIRST_CALL_TRANSACTION + 11;
    static constexpr uint32_t TRANSACTION_setIccWifiAntState = FIRST_CALL_TRANSACTION + 12;
    static constexpr uint32_t TRANSACTION_setIccSatelliteAntState = FIRST_CALL_TRANSACTION + 13;
    static constexpr uint32_t TRANSACTION_getIccState = FIRST_CALL_TRANSACTION + 14;
    static constexpr uint32_t TRANSACTION_killProcess = FIRST_CALL_TRANSACTION + 15;
    static constexpr uint32_t TRANSACTION_sendIccCmd = FIRST_CALL_TRANSACTION + 16;
    static constexpr uint32_t TRANSACTION_sendIccMetaCmd = FIRST_CALL_TRANSACTION + 17;
    static constexpr uint32_t TRANSACTION_sendImsRtpRedunSignalMsg = FIRST_CALL_TRANSACTION + 18;

    virtual ::ndk::ScopedAStatus getSwtpStatus(int32_t in_serial) = 0;
    virtual ::ndk::ScopedAStatus setCallback(const std::shared_ptr<ISubsysResponse>& in_response,
                                             const std::shared_ptr<ISubsysIndication>& in_indication) = 0;
    virtual ::ndk::ScopedAStatus getLcdInfo(int32_t in_serial, int32_t in_type) = 0;
    virtual ::ndk::ScopedAStatus setMipiFreqClk(int32_t in_serial, int32_t in_id, int64_t in_freqClk) = 0;
    virtual ::ndk::ScopedAStatus setOscFreqClk(int32_t in_serial, int32_t in_id, int32_t in_freqClk) = 0;
    virtual ::ndk::ScopedAStatus getNvramData(int32_t in_serial, int32_t in_id, int32_t in_size) = 0;
    virtual ::ndk::ScopedAStatus setImsOrtcCallback(const std::shared_ptr<IImsOrtcResponse>& in_response,
                                                    const std::shared_ptr<IImsOrtcIndication>& in_indication) = 0;
    virtual ::ndk::ScopedAStatus setCallInfo(int32_t in_serial, const CallInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setOrtcRoomInfo(int32_t in_serial, const OrtcRoomInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus sendImsRtpData(int32_t in_serial, const ImsRtpDataInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setImsRtpRemotePubIpAddr(int32_t in_serial, const ImsRtpPubIpAddrInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus setIccTuningState(int32_t in_serial, int32_t in_technology, int32_t in_band,
                                                   int32_t in_antenna, int32_t in_state) = 0;
    virtual ::ndk::ScopedAStatus setIccWifiAntState(int32_t in_serial, int32_t in_antenna, int32_t in_state) = 0;
    virtual ::ndk::ScopedAStatus setIccSatelliteAntState(int32_t in_serial, int32_t in_technology, int32_t in_antenna,
                                                         int32_t in_state) = 0;
    virtual ::ndk::ScopedAStatus getIccState(int32_t in_serial) = 0;
    virtual ::ndk::ScopedAStatus killProcess(int32_t in_serial, int32_t in_pid, const std::string& in_name) = 0;
    virtual ::ndk::ScopedAStatus sendIccCmd(int32_t in_serial, const IccReqInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus sendIccMetaCmd(const IccMetaReqInfo& in_info,
                                                const std::shared_ptr<ISubsysIccMetaCallback>& in_callback) = 0;
    virtual ::ndk::ScopedAStatus sendImsRtpRedunSignalMsg(int32_t in_serial, const ImsRtpRedunSignalMsg& in_msg) = 0;

    static constexpr auto methods() {
        using ::subsys_stubs::method;
        return std::tuple(
            method(TRANSACTION_getSwtpStatus, "getSwtpStatus", &ISubsys::getSwtpStatus, "serial"),
            method(TRANSACTION_setCallback, "setCallback", &ISubsys::setCallback, "response", "indication"),
            method(TRANSACTION_getLcdInfo, "getLcdInfo", &ISubsys::getLcdInfo, "serial", "type"),
            method(TRANSACTION_setMipiFreqClk, "setMipiFreqClk", &ISubsys::setMipiFreqClk, "serial", "id", "freqClk"),
            method(TRANSACTION_setOscFreqClk, "setOscFreqClk", &ISubsys::setOscFreqClk, "serial", "id", "freqClk"),
            method(TRANSACTION_getNvramData, "getNvramData", &ISubsys::getNvramData, "serial", "id", "size"),
            method(TRANSACTION_setImsOrtcCallback, "setImsOrtcCallback", &ISubsys::setImsOrtcCallback, "response",
                   "indication"),
            method(TRANSACTION_setCallInfo, "setCallInfo", &ISubsys::setCallInfo, "serial", "info"),
            method(TRANSACTION_setOrtcRoomInfo, "setOrtcRoomInfo", &ISubsys::setOrtcRoomInfo, "serial", "info"),
            method(TRANSACTION_sendImsRtpData, "sendImsRtpData", &ISubsys::sendImsRtpData, "serial", "info"),
            method(TRANSACTION_setImsRtpRemotePubIpAddr, "setImsRtpRemotePubIpAddr", &ISubsys::setImsRtpRemotePubIpAddr,
                   "serial", "info"),
            method(TRANSACTION_setIccTuningState, "setIccTuningState", &ISubsys::setIccTuningState, "serial",
                   "technology", "band", "antenna", "state"),
            method(TRANSACTION_setIccWifiAntState, "setIccWifiAntState", &ISubsys::setIccWifiAntState, "serial",
                   "antenna", "state"),
            method(TRANSACTION_setIccSatelliteAntState, "setIccSatelliteAntState", &ISubsys::setIccSatelliteAntState,
                   "serial", "technology", "antenna", "state"),
            method(TRANSACTION_getIccState, "getIccState", &ISubsys::getIccState, "serial"),
            method(TRANSACTION_killProcess, "killProcess", &ISubsys::killProcess, "serial", "pid", "name"),
            method(TRANSACTION_sendIccCmd, "sendIccCmd", &ISubsys::sendIccCmd, "serial", "info"),
            method(TRANSACTION_sendIccMetaCmd, "sendIccMetaCmd", &ISubsys::sendIccMetaCmd, "info", "callback"),
            method(TRANSACTION_sendImsRtpRedunSignalMsg, "sendImsRtpRedunSignalMsg", &ISubsys::sendImsRtpRedunSignalMsg,
                   "serial", "msg"));
    }
};

class ISubsysDefault : public ::subsys_stubs::Default<ISubsys> {
public:
    ::ndk::ScopedAStatus getSwtpStatus(int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus setCallback(const std::shared_ptr<ISubsysResponse>&,
                                     const std::shared_ptr<ISubsysIndication>&) override {
        return unknown();
    }
    ::ndk::ScopedAStatus getLcdInfo(int32_t, int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus setMipiFreqClk(int32_t, int32_t, int64_t) override { return unknown(); }
    ::ndk::ScopedAStatus setOscFreqClk(int32_t, int32_t, int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus getNvramData(int32_t, int32_t, int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus setImsOrtcCallback(const std::shared_ptr<IImsOrtcResponse>&,
                                            const std::shared_ptr<IImsOrtcIndication>&) override {
        return unknown();
    }
    ::ndk::ScopedAStatus setCallInfo(int32_t, const CallInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setOrtcRoomInfo(int32_t, const OrtcRoomInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus sendImsRtpData(int32_t, const ImsRtpDataInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setImsRtpRemotePubIpAddr(int32_t, const ImsRtpPubIpAddrInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus setIccTuningState(int32_t, int32_t, int32_t, int32_t, int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus setIccWifiAntState(int32_t, int32_t, int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus setIccSatelliteAntState(int32_t, int32_t, int32_t, int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus getIccState(int32_t) override { return unknown(); }
    ::ndk::ScopedAStatus killProcess(int32_t, int32_t, const std::string&) override { return unknown(); }
    ::ndk::ScopedAStatus sendIccCmd(int32_t, const IccReqInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus sendIccMetaCmd(const IccMetaReqInfo&,
                                        const std::shared_ptr<ISubsysIccMetaCallback>&) override {
        return unknown();
    }
    ::ndk::ScopedAStatus sendImsRtpRedunSignalMsg(int32_t, const ImsRtpRedunSignalMsg&) override { return unknown(); }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
