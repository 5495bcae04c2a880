#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIndication.h>

#include "InterfaceImpl.h"

namespace subsys_stubs {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::BpSubsysIndication;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsysIndication;

template <>
std::shared_ptr<ISubsysIndication> proxyFor(const ndk::SpAIBinder& binder) {
    return ndk::SharedRefBase::make<BpSubsysIndication>(binder);
}
template class Interface<ISubsysIndication>;
template class Server<ISubsysIndication>;
template class Proxy<ISubsysIndication>;

}  // namespace subsys_stubs
