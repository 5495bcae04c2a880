#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIccMetaCallback.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class BpSubsysIccMetaCallback : public ::subsys_stubs::Proxy<ISubsysIccMetaCallback> {
public:
    using Proxy::Proxy;

    ::ndk::ScopedAStatus onIccMetaResp(const IccMetaRespInfo& in_info) override {
        return call<TRANSACTION_onIccMetaResp>(in_info);
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
