#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIndication.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Derive from it to serve ISubsysIndication; construct with ndk::SharedRefBase::make.
class BnSubsysIndication : public ::subsys_stubs::Server<ISubsysIndication> {};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
