#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccIndInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccPerceptionInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccStateInfo.h>
#include <android/binder_auto_utils.h>

#include <cstdint>
#include <tuple>

#include "stubs/Interface.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ISubsysIndication : public ::subsys_stubs::Interface<ISubsysIndication> {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ISubsysIndication";
    static constexpr bool oneway = true;

    static constexpr uint32_t TRANSACTION_sendSubsysStateChanged = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_sendSwtpStatusChanged = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_sendiccStateChanged = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_notifyIccPercStateChangedInd = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_notifyIccInfoChanged = FIRST_CALL_TRANSACTION + 4;

    virtual ::ndk::ScopedAStatus sendSubsysStateChanged(bool in_state) = 0;
    virtual ::ndk::ScopedAStatus sendSwtpStatusChanged(int8_t in_status) = 0;
    virtual ::ndk::ScopedAStatus sendiccStateChanged(const IccStateInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus notifyIccPercStateChangedInd(const IccPerceptionInfo& in_info) = 0;
    virtual ::ndk::ScopedAStatus notifyIccInfoChanged(const IccIndInfo& in_info) = 0;

    static constexpr auto methods() {
        using ::subsys_stubs::method;
        return std::tuple(method(TRANSACTION_sendSubsysStateChanged, "sendSubsysStateChanged",
                                 &ISubsysIndication::sendSubsysStateChanged, "state"),
                          method(TRANSACTION_sendSwtpStatusChanged, "sendSwtpStatusChanged",
                                 &ISubsysIndication::sendSwtpStatusChanged, "status"),
                          method(TRANSACTION_sendiccStateChanged, "sendiccStateChanged",
                                 &ISubsysIndication::sendiccStateChanged, "info"),
                          method(TRANSACTION_notifyIccPercStateChangedInd, "notifyIccPercStateChangedInd",
                                 &ISubsysIndication::notifyIccPercStateChangedInd, "info"),
                          method(TRANSACTION_notifyIccInfoChanged, "notifyIccInfoChanged",
                                 &ISubsysIndication::notifyIccInfoChanged, "info"));
    }
};

class ISubsysIndicationDefault : public ::subsys_stubs::Default<ISubsysIndication> {
public:
    ::ndk::ScopedAStatus sendSubsysStateChanged(bool) override { return unknown(); }
    ::ndk::ScopedAStatus sendSwtpStatusChanged(int8_t) override { return unknown(); }
    ::ndk::ScopedAStatus sendiccStateChanged(const IccStateInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus notifyIccPercStateChangedInd(const IccPerceptionInfo&) override { return unknown(); }
    ::ndk::ScopedAStatus notifyIccInfoChanged(const IccIndInfo&) override { return unknown(); }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
