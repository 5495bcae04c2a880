#pragma once

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccPercType.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class IccPerceptionInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccPerceptionInfo";

    std::vector<IccPercType> percTypes;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"percTypes", &IccPerceptionInfo::percTypes});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccPerceptionInfo", *this); }
    auto operator<=>(const IccPerceptionInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
