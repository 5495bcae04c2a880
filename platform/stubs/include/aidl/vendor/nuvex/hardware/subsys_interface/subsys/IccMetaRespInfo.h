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

class IccMetaRespInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccMetaRespInfo";

    int32_t id = 0;
    int32_t token = 0;
    int8_t type = 0;
    bool result = false;
    std::vector<uint8_t> data;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"id", &IccMetaRespInfo::id}, Field{"token", &IccMetaRespInfo::token},
                          Field{"type", &IccMetaRespInfo::type}, Field{"result", &IccMetaRespInfo::result},
                          Field{"data", &IccMetaRespInfo::data});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccMetaRespInfo", *this); }
    auto operator<=>(const IccMetaRespInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
