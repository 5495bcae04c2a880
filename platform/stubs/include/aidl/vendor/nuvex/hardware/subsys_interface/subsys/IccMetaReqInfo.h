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

class IccMetaReqInfo {
public:
    static constexpr const char* descriptor = "vendor.nuvex.hardware.subsys_interface.subsys.IccMetaReqInfo";

    int32_t id = 0;
    int32_t token = 0;
    int32_t type = 0;
    int32_t reqId = 0;
    std::vector<uint8_t> data;

    static constexpr auto fields() {
        using ::subsys_stubs::Field;
        return std::tuple(Field{"id", &IccMetaReqInfo::id}, Field{"token", &IccMetaReqInfo::token},
                          Field{"type", &IccMetaReqInfo::type}, Field{"reqId", &IccMetaReqInfo::reqId},
                          Field{"data", &IccMetaReqInfo::data});
    }

    binder_status_t readFromParcel(const AParcel* parcel) { return ::subsys_stubs::readFields(parcel, *this); }
    binder_status_t writeToParcel(AParcel* parcel) const { return ::subsys_stubs::writeFields(parcel, *this); }
    std::string toString() const { return ::subsys_stubs::describe("IccMetaReqInfo", *this); }
    auto operator<=>(const IccMetaReqInfo&) const = default;
};

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
