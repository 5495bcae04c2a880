#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpDataInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpPubIpAddrInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunDataLinkStateInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ImsRtpRedunSignalMsg.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcConnectInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/OrtcStatus.h>
#include <android/binder_auto_utils.h>

#include <cstdint>
#include <tuple>

#include "stubs/Interface.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class IImsOrtcIndication : public ::subsys_stubs::Interface<IImsOrtcIndication> {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IImsOrtcIndication";
    static constexpr bool oneway = true;

    static constexpr uint32_t TRANSACTION_LocalPubIpAddrChanged = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_recvImsRtpData = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_notifyOrtcStatus = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_notifyConnectInfo = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_recvImsRtpRedunSignalMsgInd = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_notifyImsRtpRedunDataLinkStateInd = FIRST_CALL_TRANSACTION + 5;

    virtual ::ndk::ScopedAStatus LocalPubIpAddrChanged(const ImsRtpPubIpAddrInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus recvImsRtpData(const ImsRtpDataInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus notifyOrtcStatus(const OrtcStatus& in_status) = 0;
    virtual ::ndk::ScopedAStatus notifyConnectInfo(const OrtcConnectInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus recvImsRtpRedunSignalMsgInd(const ImsRtpRedunSignalMsg& in_msg) = 0;
    virtual ::ndk::ScopedAStatus notifyImsRtpRedunDataLinkStateInd(const ImsRtpRedunDataLinkStateInfo& in_info) = 0;

    static constexpr auto methods() {
        using ::subsys_stubs::method;
        return std::tuple(
            method(TRANSACTION_LocalPubIpAddrChanged, "LocalPubIpAddrChanged",
                   &IImsOrtcIndication::LocalPubIpAddrChanged, "info"),
            method(TRANSACTION_recvImsRtpData, "recvImsRtpData", &IImsOrtcIndication::recvImsRtpData, "info"),
            method(TRANSACTION_notifyOrtcStatus, "notifyOrtcStatus", &IImsOrtcIndication::notifyOrtcStatus, "status"),
            method(TRANSACTION_notifyConnectInfo, "notifyConnectInfo", &IImsOrtcIndication::notifyConnectInfo, "info"),
            method(TRANSACTION_recvImsRtpRedunSignalMsgInd, "recvImsRtpRedunSignalMsgInd",
                   &IImsOrtcIndication::recvImsRtpRedunSignalMsgInd, "msg"),
            method(TRANSACTION_notifyImsRtpRedunDataLinkStateInd, "notifyImsRtpRedunDataLinkStateInd",
                   &IImsOrtcIndication::notifyImsRtpRedunDataLinkStateInd, "info"));
    }
};

class IImsOrtcIndicationDefault : public ::subsys_stubs::Default<IImsOrtcIndication> {
public:
    ::ndk::ScopedAStatus LocalPubIpAddrChanged(const ImsRtpPubIpAddrInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus recvImsRtpData(const ImsRtpDataInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus notifyOrtcStatus(const OrtcStatus&) override { return unknown(); }
    ::ndk::ScopedAStatus notifyConnectInfo(const OrtcConnectInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus recvImsRtpRedunSignalMsgInd(const ImsRtpRedunSignalMsg&) override { return unknown(); }
    ::ndk::ScopedAStatus notifyImsRtpRedunDataLinkStateInd(const ImsRtpRedunDataLinkStateInfo&) override {
        return unknown();
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
