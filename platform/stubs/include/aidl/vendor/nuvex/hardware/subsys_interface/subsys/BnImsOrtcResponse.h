#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcResponse.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Derive from it to serve IImsOrtcResponse; construct with ndk::SharedRefBase::make.
class BnImsOrtcResponse : public ::subsys_stubs::Server<IImsOrtcResponse> {};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
