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

class IccRespInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccRespInfo";

    int8_t reqId = 0;
    std::vector<uint8_t> data;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"reqId", &IccRespInfo::reqId}, Field{"data", &IccRespInfo::data});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccRespInfo", *this); }
    auto operator<=>(const IccRespInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
