#pragma once

// The short name of the interface's package in all that stands outside of it. Inside the package the bare names
// `subsys`, `nuvex` and `vendor` mean its own levels.
namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {}

namespace hal {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

}  // namespace hal
