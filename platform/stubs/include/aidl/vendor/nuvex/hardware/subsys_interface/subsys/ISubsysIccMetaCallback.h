#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccMetaRespInfo.h>
#include <android/binder_auto_utils.h>

#include <cstdint>
#include <tuple>

#include "stubs/Interface.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class ISubsysIccMetaCallback : public ::subsys_stubs::Interface<ISubsysIccMetaCallback> {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.ISubsysIccMetaCallback";
    static constexpr bool oneway = true;

    static constexpr uint32_t TRANSACTION_onIccMetaResp = FIRST_CALL_TRANSACTION + 0;

    virtual ::ndk::ScopedAStatus onIccMetaResp(const IccMetaRespInfo& in_info) = 0;

    static constexpr auto methods() {
        using ::subsys_stubs::method;
        return std::tuple(
            method(TRANSACTION_onIccMetaResp, "onIccMetaResp", &ISubsysIccMetaCallback::onIccMetaResp, "info"));
    }
};

class ISubsysIccMetaCallbackDefault : public ::subsys_stubs::Default<ISubsysIccMetaCallback> {
public:
    ::ndk::ScopedAStatus onIccMetaResp(const IccMetaRespInfo&) override { return unknown(); }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
