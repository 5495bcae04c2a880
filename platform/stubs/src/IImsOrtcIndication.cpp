#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpImsOrtcIndication.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcIndication.h>

#include "InterfaceImpl.h"

namespace subsys_stubs {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::BpImsOrtcIndication;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::IImsOrtcIndication;

template <>
std::shared_ptr<IImsOrtcIndication> proxyFor(const ndk::SpAIBinder& binder) {
    return ndk::SharedRefBase::make<BpImsOrtcIndication>(binder);
}
template class Interface<IImsOrtcIndication>;
template class Server<IImsOrtcIndication>;
template class Proxy<IImsOrtcIndication>;

}  // namespace subsys_stubs
