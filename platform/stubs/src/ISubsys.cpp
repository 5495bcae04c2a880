#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnSubsys.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpSubsys.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

#include "InterfaceImpl.h"

namespace subsys_stubs {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::BpSubsys;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::ISubsys;

template <>
std::shared_ptr<ISubsys> proxyFor(const ndk::SpAIBinder& binder) {
    return ndk::SharedRefBase::make<BpSubsys>(binder);
}
template class Interface<ISubsys>;
template class Server<ISubsys>;
template class Proxy<ISubsys>;

}  // namespace subsys_stubs
