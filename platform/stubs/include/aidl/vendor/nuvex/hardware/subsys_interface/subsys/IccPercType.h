#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class IccPercType {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccPercType";

    int8_t value0 = 0;
    int8_t value1 = 0;
    int8_t value2 = 0;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"value0", &IccPercType::value0}, Field{"value1", &IccPercType::value1},
                          Field{"value2", &IccPercType::value2});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccPercType", *this); }
    auto operator<=>(const IccPercType&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
