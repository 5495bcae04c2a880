#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Derive from it to serve ISubsys; construct with ndk::SharedRefBase::make.
class BnSubsys : public ::subsys_stubs::Server<ISubsys> {};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
