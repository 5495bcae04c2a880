#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SubsysResponseInfo.h>

#include <cstdint>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// Fills the header of a response. A code that the interface doesn't know becomes GENERIC_FAILURE. Thread: any.
inline void populateResponseInfo(SubsysResponseInfo& info, int32_t serial, SUBSYS_Errno error) {
    constexpr uint32_t LAST_KNOWN = 9;
    info.type = 0;
    info.serial = serial;
    info.error = static_cast<uint32_t>(error) <= LAST_KNOWN ? error : SUBSYS_Errno::GENERIC_FAILURE;
}

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
