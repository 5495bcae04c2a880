#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/SUBSYS_Errno.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class SubsysResponseInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.SubsysResponseInfo";

    int32_t type = 0;
    int32_t serial = 0;
    SUBSYS_Errno error = SUBSYS_Errno::SUCCESS;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"type", &SubsysResponseInfo::type}, Field{"serial", &SubsysResponseInfo::serial},
                          Field{"error", &SubsysResponseInfo::error});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("SubsysResponseInfo", *this); }
    auto operator<=>(const SubsysResponseInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
