#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsysResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsysResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysResponse.h>

#include "InterfaceImpl.h"

namespace subsys_stubs {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::BpSubsysResponse;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsysResponse;

template <>
std::shared_ptr<ISubsysResponse> proxyFor(const ndk::SpAIBinder& binder) {
    return ndk::SharedRefBase::make<BpSubsysResponse>(binder);
}
template class Interface<ISubsysResponse>;
template class Server<ISubsysResponse>;
template class Proxy<ISubsysResponse>;

}  // namespace subsys_stubs
