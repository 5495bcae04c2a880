#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysResponse.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Derive from it to serve ISubsysResponse; construct with ndk::SharedRefBase::make.
class BnSubsysResponse : public ::subsys_stubs::Server<ISubsysResponse> {};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
