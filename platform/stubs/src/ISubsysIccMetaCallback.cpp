#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysIccMetaCallback.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIccMetaCallback.h>

#include "InterfaceImpl.h"

namespace subsys_stubs {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::BpSubsysIccMetaCallback;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsysIccMetaCallback;

template <>
std::shared_ptr<ISubsysIccMetaCallback> proxyFor(const ndk::SpAIBinder& binder) {
    return ndk::SharedRefBase::make<BpSubsysIccMetaCallback>(binder);
}
template class Interface<ISubsysIccMetaCallback>;
template class Server<ISubsysIccMetaCallback>;
template class Proxy<ISubsysIccMetaCallback>;

}  // namespace subsys_stubs
