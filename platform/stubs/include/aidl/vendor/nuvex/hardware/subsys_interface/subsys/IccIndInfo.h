#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <compare>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "stubs/Codec.h"

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

class IccIndInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccIndInfo";

    int32_t id = 0;
    std::vector<uint8_t> data;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"id", &IccIndInfo::id}, Field{"data", &IccIndInfo::data});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccIndInfo", *this); }
    auto operator<=>(const IccIndInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
