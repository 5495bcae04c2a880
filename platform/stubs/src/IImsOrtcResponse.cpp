#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BnImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/BpImsOrtcResponse.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcResponse.h>

#include "InterfaceImpl.h"

namespace subsys_stubs {

using aidl::vendor::nuvex::hardware::subsys_interface::subsys::BpImsOrtcResponse;
using aidl::vendor::nuvex::hardware::subsys_interface::subsys::IImsOrtcResponse;

template <>
std::shared_ptr<IImsOrtcResponse> proxyFor(const ndk::SpAIBinder& binder) {
    return ndk::SharedRefBase::make<BpImsOrtcResponse>(binder);
}
template class Interface<IImsOrtcResponse>;
template class Server<IImsOrtcResponse>;
template class Proxy<IImsOrtcResponse>;

}  // namespace subsys_stubs
