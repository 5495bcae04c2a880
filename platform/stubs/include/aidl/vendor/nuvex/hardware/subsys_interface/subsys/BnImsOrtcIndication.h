#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IImsOrtcIndication.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Derive from it to serve IImsOrtcIndication; construct with ndk::SharedRefBase::make.
class BnImsOrtcIndication : public ::subsys_stubs::Server<IImsOrtcIndication> {};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
