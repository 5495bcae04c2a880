#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIndication.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class BpSubsysIndication : public ::subsys_stubs::Proxy<ISubsysIndication> {
public:
    using Proxy::Proxy;

    ::ndk::ScopedAStatus sendSubsysStateChanged(bool in_state) override {
        return call<TRANSACTION_sendSubsysStateChanged>(in_state);
    }
    ::ndk::ScopedAStatus sendSwtpStatusChanged(int8_t in_status) override {
        return call<TRANSACTION_sendSwtpStatusChanged>(in_status);
    }
    ::ndk::ScopedAStatus sendiccStateChanged(const IccStateInfo& in_info) override {
        return call<TRANSACTION_sendiccStateChanged>(in_info);
    }
    ::ndk::ScopedAStatus notifyIccPercStateChangedInd(const IccPerceptionInfo& in_info) override {
        return call<TRANSACTION_notifyIccPercStateChangedInd>(in_info);
    }
    ::ndk::ScopedAStatus notifyIccInfoChanged(const IccIndInfo& in_info) override {
        return call<TRANSACTION_notifyIccInfoChanged>(in_info);
    }
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
