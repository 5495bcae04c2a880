#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsysIccMetaCallback.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Derive from it to serve ISubsysIccMetaCallback; construct with ndk::SharedRefBase::make.
class BnSubsysIccMetaCallback : public ::subsys_stubs::Server<ISubsysIccMetaCallback> {};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
